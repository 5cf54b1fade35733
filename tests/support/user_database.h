// The system's user database, as a test wants it to answer.
#ifndef WMQ_TESTS_USER_DATABASE_H
#define WMQ_TESTS_USER_DATABASE_H

#include <cstddef>
#include <functional>

namespace wmq::testing {

// The error number that it answers a request with so much room with, 0 for what it really says; unset: it
// really says everything. getpwuid_r(3) of the whole program asks here.
extern std::function<int(size_t room)> databaseFailure;

}  // namespace wmq::testing

#endif
