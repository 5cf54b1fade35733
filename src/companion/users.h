// User names by user id, with a cache in front: old streams ask for the same few users a million times.
#ifndef WMQ_COMPANION_USERS_H
#define WMQ_COMPANION_USERS_H

#include <cstddef>
#include <cstdint>

namespace wmq {

// What getWMXUserByUid_ asks behind its cache: copies the name of `uid` into `name` and returns 0, or returns
// an error number, ENOENT when there is no such user. Starts as the system's user database; a program that
// replaces it calls forgetUsers.
extern int (*userLookup)(int32_t uid, char *name, size_t size);

// Seconds of the clock that ages the cache. Starts as the system's monotonic clock.
extern int64_t (*userClock)();

// Empties the cache.
void forgetUsers();

}  // namespace wmq

#endif
