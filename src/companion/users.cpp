#include "companion/users.h"

#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <iterator>
#include <mutex>

#include "wmq/companion.h"

namespace wmq {

namespace {

constexpr size_t maxCachedName = 64;
constexpr size_t maxUserEntry = size_t{1} << 20;
constexpr int64_t secondsKept = 60;

// An answer, "no such user" included: a stream full of a deleted user's jobs asks for it as often.
struct Answer {
  bool known = false;
  int32_t uid = 0;
  int error = 0;
  int64_t expires = 0;
  char name[maxCachedName] = "";
};

constinit std::mutex answersMutex;
constinit Answer answers[256];

int copyName(const char *from, char *name, size_t size) {
  const size_t needed = std::strlen(from) + 1;
  if (needed > size) return ERANGE;
  std::memcpy(name, from, needed);
  return 0;
}

// ERANGE from the database means that its entry needs more than `room`; `tooLong` tells this from a name that
// does not fit.
int askDatabase(int32_t uid, char *room, size_t roomSize, char *name, size_t size, bool &tooLong) {
  passwd entry;
  passwd *found = nullptr;
  int error;
  do {
    error = getpwuid_r(static_cast<uid_t>(uid), &entry, room, roomSize, &found);
  } while (error == EINTR);
  tooLong = error == ERANGE;
  if (error != 0) return error;
  return found == nullptr ? ENOENT : copyName(found->pw_name, name, size);
}

int lookUpSystemUser(int32_t uid, char *name, size_t size) {
  char small[2048];
  bool tooLong;
  int error = askDatabase(uid, small, sizeof small, name, size, tooLong);
  for (size_t roomSize = 2 * sizeof small; tooLong && roomSize <= maxUserEntry; roomSize *= 2) {
    auto *const room = static_cast<char *>(std::malloc(roomSize));
    if (room == nullptr) return ENOMEM;
    error = askDatabase(uid, room, roomSize, name, size, tooLong);
    std::free(room);
  }
  return error;
}

int64_t monotonicSeconds() {
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return now.tv_sec;
}

Answer &slotOf(int32_t uid) { return answers[static_cast<uint32_t>(uid) % std::size(answers)]; }

bool answeredBefore(int32_t uid, int64_t now, Answer &answer) {
  const std::lock_guard lock(answersMutex);
  answer = slotOf(uid);
  return answer.known && answer.uid == uid && now < answer.expires;
}

void keep(const Answer &answer) {
  const std::lock_guard lock(answersMutex);
  slotOf(answer.uid) = answer;
}

// 0 when `name` has been filled, else an error number.
int findUser(int32_t uid, char *name, size_t size) {
  const int64_t now = userClock();
  Answer answer;
  if (!answeredBefore(uid, now, answer)) {
    answer = {.known = true, .uid = uid, .expires = now + secondsKept};
    answer.error = userLookup(uid, answer.name, sizeof answer.name);
    if (answer.error == ERANGE) return userLookup(uid, name, size);
    if (answer.error != 0 && answer.error != ENOENT) return answer.error;
    keep(answer);
  }
  return answer.error != 0 ? answer.error : copyName(answer.name, name, size);
}

}  // namespace

int (*userLookup)(int32_t uid, char *name, size_t size) = lookUpSystemUser;
int64_t (*userClock)() = monotonicSeconds;

void forgetUsers() {
  const std::lock_guard lock(answersMutex);
  for (Answer &answer : answers) answer.known = false;
}

}  // namespace wmq

extern "C" int getWMXUserByUid_(int32_t uid, char *name, size_t size) {
  const int error = name == nullptr ? EINVAL : wmq::findUser(uid, name, size);
  if (error == 0) return 0;
  errno = error;
  return -1;
}
