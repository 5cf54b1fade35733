#include "companion/users.h"

#include <gtest/gtest.h>
#include <nss.h>
#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "support/user_database.h"
#include "wmq/companion.h"

namespace {

using wmq::testing::databaseFailure;

int questions;
int64_t now;

// A database in which user N has the name "userN"; from 1000 on there is nobody, from 2000 on a name is long,
// and user 3000 cannot be asked for.
int lookUp(int32_t uid, char *name, size_t size) {
  ++questions;
  if (uid == 3000) return EIO;
  if (uid >= 1000 && uid < 2000) return ENOENT;
  const std::string found = (uid >= 2000 ? std::string(100, 'x') : "user") + std::to_string(uid);
  if (found.size() >= size) return ERANGE;
  std::memcpy(name, found.c_str(), found.size() + 1);
  return 0;
}

class UserNames : public testing::Test {
 protected:
  UserNames() {
    wmq::userLookup = lookUp;
    wmq::userClock = [] { return now; };
    questions = 0;
    now = 5000;
    wmq::forgetUsers();
  }
  ~UserNames() override {
    wmq::userLookup = systemLookup;
    wmq::userClock = systemClock;
    wmq::forgetUsers();
  }

  static std::string nameOf(int32_t uid, size_t size = 60) {
    std::vector<char> name(size, '?');
    errno = 0;
    return getWMXUserByUid_(uid, name.data(), size) == 0 ? name.data() : "no name";
  }

 private:
  int (*systemLookup)(int32_t, char *, size_t) = wmq::userLookup;
  int64_t (*systemClock)() = wmq::userClock;
};

TEST_F(UserNames, AreAskedForOnce) {
  EXPECT_EQ(nameOf(7), "user7");
  EXPECT_EQ(nameOf(8), "user8");
  EXPECT_EQ(nameOf(7), "user7");
  EXPECT_EQ(nameOf(8), "user8");
  EXPECT_EQ(questions, 2);
}

TEST_F(UserNames, AreAskedForAgainAfterAMinute) {
  nameOf(7);
  now += 59;
  nameOf(7);
  EXPECT_EQ(questions, 1);
  now += 1;
  EXPECT_EQ(nameOf(7), "user7");
  EXPECT_EQ(questions, 2);
}

TEST_F(UserNames, AreAskedForAgainOnceForgotten) {
  nameOf(7);
  wmq::forgetUsers();
  nameOf(7);
  EXPECT_EQ(questions, 2);
}

TEST_F(UserNames, AreRightWhateverPlaceInTheCacheTheyShare) {
  for (int round = 0; round < 2; ++round) {
    for (const int32_t uid : {1, 257, 513, -255, INT32_MIN + 1})
      EXPECT_EQ(nameOf(uid), "user" + std::to_string(uid));
  }
}

TEST_F(UserNames, AreRefusedForUsersThatDoNotExist) {
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(nameOf(1500), "no name");
    EXPECT_EQ(errno, ENOENT);
  }
  EXPECT_EQ(questions, 1);
}

TEST_F(UserNames, AreAskedForAgainAfterAFailureOfTheDatabase) {
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(nameOf(3000), "no name");
    EXPECT_EQ(errno, EIO);
  }
  EXPECT_EQ(questions, 2);
}

TEST_F(UserNames, AreRefusedWhereTheyDoNotFit) {
  EXPECT_EQ(nameOf(7, 6), "user7");
  EXPECT_EQ(nameOf(7, 5), "no name");
  EXPECT_EQ(errno, ERANGE);
  EXPECT_EQ(nameOf(7, 0), "no name");
  EXPECT_EQ(nameOf(2000), "no name");
  EXPECT_EQ(errno, ERANGE);
  EXPECT_NE(getWMXUserByUid_(7, nullptr, 60), 0);
}

TEST_F(UserNames, MayBeLongerThanTheCacheHolds) {
  EXPECT_EQ(nameOf(2000, 200), std::string(100, 'x') + "2000");
}

TEST_F(UserNames, MayBeAskedForByManyThreads) {
  wmq::userLookup = [](int32_t uid, char *name, size_t size) {
    std::snprintf(name, size, "u%d", uid);
    return 0;
  };
  std::vector<int> wrong(4);
  std::vector<std::thread> threads;
  threads.reserve(wrong.size());
  for (int &count : wrong) {
    threads.emplace_back([&count] {
      for (int32_t i = 0; i < 2000; ++i) {
        const int32_t uid = i % 600;
        count += nameOf(uid) == "u" + std::to_string(uid) ? 0 : 1;
      }
    });
  }
  for (std::thread &thread : threads) thread.join();
  EXPECT_EQ(wrong, std::vector<int>(4));
}

// Of all sources of user names only the file is asked: others are plug-ins, which stay in memory.
class SystemUsers : public testing::Test {
 protected:
  SystemUsers() {
    __nss_configure_lookup("passwd", "files");
    wmq::forgetUsers();
  }
  ~SystemUsers() override { databaseFailure = nullptr; }

  static std::string nameOfRoot() {
    char name[60];
    errno = 0;
    return getWMXUserByUid_(0, name, sizeof name) == 0 ? name : "no name";
  }
};

TEST_F(SystemUsers, AreThoseOfTheUserDatabase) {
  char name[60];
  ASSERT_EQ(getWMXUserByUid_(0, name, sizeof name), 0);
  EXPECT_STREQ(name, getpwuid(0)->pw_name);
}

TEST_F(SystemUsers, DoNotIncludeAnInventedOne) {
  int32_t uid = 1'999'999'999;
  while (getpwuid(static_cast<uid_t>(uid)) != nullptr) --uid;
  char name[60];
  EXPECT_NE(getWMXUserByUid_(uid, name, sizeof name), 0);
  EXPECT_EQ(errno, ENOENT);
}

TEST_F(SystemUsers, MayHaveEntriesOfAnyLengthUpToAMebibyte) {
  const std::string root = nameOfRoot();
  for (const size_t needed : {2049, 5000, 1 << 20}) {
    wmq::forgetUsers();
    databaseFailure = [needed](size_t room) { return room < needed ? ERANGE : 0; };
    EXPECT_EQ(nameOfRoot(), root) << needed;
  }
  wmq::forgetUsers();
  databaseFailure = [](size_t room) { return room <= size_t{1} << 20 ? ERANGE : 0; };
  EXPECT_EQ(nameOfRoot(), "no name");
  EXPECT_EQ(errno, ERANGE);
}

TEST_F(SystemUsers, AreAskedForAgainAfterAnInterruption) {
  const std::string root = nameOfRoot();
  wmq::forgetUsers();
  int interruptions = 3;
  databaseFailure = [&](size_t) { return interruptions-- > 0 ? EINTR : 0; };
  EXPECT_EQ(nameOfRoot(), root);
  EXPECT_LT(interruptions, 0);
}

TEST_F(SystemUsers, AreNotToldWhereTheDatabaseFails) {
  databaseFailure = [](size_t) { return EIO; };
  EXPECT_EQ(nameOfRoot(), "no name");
  EXPECT_EQ(errno, EIO);
}

}  // namespace
