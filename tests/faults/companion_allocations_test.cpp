// Every helper that allocates, with each of its allocations failing in turn: it must say so, leave nothing
// behind, and change nothing.
#include <gtest/gtest.h>
#include <syslog.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "companion/log.h"
#include "companion/users.h"
#include "support/failing_allocations.h"
#include "support/user_database.h"
#include "wmq/companion.h"

namespace wmq::testing {
namespace {

class FailingAllocations : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!allocationsCanFail()) GTEST_SKIP() << "allocations cannot be made to fail here";
  }

  // Runs `operation` with its first allocation failing, then with its second, until none fails any more.
  // `operation` returns whether it has succeeded, and leaves nothing behind either way.
  template <class Operation>
  static void eachFailureIsReported(int numAllocations, Operation operation) {
    for (int nth = 1; nth <= numAllocations + 1; ++nth) {
      const int before = allocationsLeft();
      bool succeeded = false;
      bool reached = false;
      {
        const FailingAllocation failing(nth);
        succeeded = operation();
        reached = failing.hasFailed();
      }
      EXPECT_EQ(reached, nth <= numAllocations) << "allocation " << nth;
      EXPECT_EQ(succeeded, !reached) << "allocation " << nth;
      EXPECT_EQ(allocationsLeft(), before) << "allocation " << nth;
    }
  }
};

TEST_F(FailingAllocations, AreReportedForACopiedString) {
  eachFailureIsReported(1, [] {
    char *const copy = putstr_("text");
    std::free(copy);
    return copy != nullptr;
  });
}

TEST_F(FailingAllocations, AreReportedForACompressedHostList) {
  eachFailureIsReported(3, [] {
    char a[] = "a";
    char b[] = "2*b";
    char *hosts[] = {a, a, b};
    int count = -1;
    char **shorter = hosts;
    const int result = compressHostList(3, hosts, &count, &shorter);
    const bool consistent =
        result == 0 ? count == 2 : result == WMQE_NO_MEM && count == 0 && shorter == nullptr;
    for (int i = 0; i < count; ++i) std::free(shorter[i]);
    std::free(shorter);
    return consistent && result == 0;
  });
}

TEST_F(FailingAllocations, LeaveAHostListAsItWas) {
  const char *const names[] = {"2*a", "b", "3*c"};
  auto **hosts = static_cast<char **>(std::malloc(sizeof names));
  for (size_t i = 0; i < 3; ++i) hosts[i] = putstr_(names[i]);
  int count = 3;

  for (int nth = 1; nth <= 6; ++nth) {
    const int before = allocationsLeft();
    const FailingAllocation failing(nth);
    const int result = uncompressHostList(&count, &hosts);
    EXPECT_TRUE(failing.hasFailed());
    EXPECT_EQ(result, WMQE_NO_MEM);
    EXPECT_EQ(allocationsLeft(), before);
    ASSERT_EQ(count, 3);
    for (size_t i = 0; i < 3; ++i) EXPECT_STREQ(hosts[i], names[i]);
  }
  EXPECT_EQ(uncompressHostList(&count, &hosts), 0);
  EXPECT_EQ(count, 6);
  for (int i = 0; i < count; ++i) std::free(hosts[i]);
  std::free(hosts);
}

TEST_F(FailingAllocations, MakeAWriteFail) {
  FILE *const sink = std::fopen("/dev/null", "w");
  ASSERT_NE(sink, nullptr);
  std::setvbuf(sink, nullptr, _IONBF, 0);
  const std::string text(1000, 'x');
  eachFailureIsReported(1, [&] { return addQStr(sink, text.c_str()) == 0; });
  eachFailureIsReported(1, [&] { return writeHostList(sink, 0, nullptr) == 0; });
  const FailingAllocation failing(1);
  EXPECT_EQ(writeHostList(sink, 0, nullptr), -1);
  std::fclose(sink);
}

TEST_F(FailingAllocations, LeaveASubmissionExtensionAsItWas) {
  submitExt *extension = nullptr;
  for (int nth = 1; nth <= 3; ++nth) {
    const int before = allocationsLeft();
    const FailingAllocation failing(nth);
    EXPECT_EQ(add_pair2submit_ext(&extension, 1, "a"), WMQE_NO_MEM);
    EXPECT_TRUE(failing.hasFailed());
    EXPECT_EQ(extension, nullptr);
    EXPECT_EQ(allocationsLeft(), before);
  }
  ASSERT_EQ(add_pair2submit_ext(&extension, 1, "a"), 0);
  for (int nth = 1; nth <= 2; ++nth) {
    const int before = allocationsLeft();
    const FailingAllocation failing(nth);
    EXPECT_EQ(add_pair2submit_ext(&extension, 2, "b"), WMQE_NO_MEM);
    EXPECT_TRUE(failing.hasFailed());
    EXPECT_EQ(extension->numPairs, 1);
    EXPECT_EQ(allocationsLeft(), before);
  }
  freeSubmitExt(extension);
  std::free(extension);
}

TEST_F(FailingAllocations, AreReportedForAnAffinityAllocation) {
  eachFailureIsReported(6, [] {
    affinityAlloc *const allocation = parseAffinityAllocField("a:0-3;b:7");
    freeupAffinityJobData(allocation);
    std::free(allocation);
    return allocation != nullptr;
  });
  eachFailureIsReported(1, [] {
    char name[] = "a";
    affinityHost host = {name, 0, nullptr};
    const affinityAlloc allocation = {1, &host};
    char *const text = convertAffinityAlloc2Str(&allocation);
    std::free(text);
    return text != nullptr;
  });
}

TEST_F(FailingAllocations, AreReportedForANetworkAllocation) {
  eachFailureIsReported(3, [] {
    int32_t count = -1;
    networkAlloc *allocations = nullptr;
    const int result = getNetworkAllocFromString("a=1;b=2", &count, &allocations);
    const bool consistent =
        result == 0 ? count == 2 : result == WMQE_NO_MEM && count == 0 && allocations == nullptr;
    freeNetworkAlloc(count, allocations);
    std::free(allocations);
    return consistent && result == 0;
  });
  eachFailureIsReported(1, [] {
    char name[] = "a";
    const networkAlloc allocation = {name, 1};
    char *const text = getNetworkAllocAsString(1, &allocation);
    std::free(text);
    return text != nullptr;
  });
}

TEST_F(FailingAllocations, SetTheErrorNumberOfTheLineReader) {
  char content[] = "line\n";
  FILE *const file = fmemopen(content, std::strlen(content), "r");
  ASSERT_NE(file, nullptr);
  std::setvbuf(file, nullptr, _IONBF, 0);
  _getNextLine_(nullptr, nullptr, 0);

  {
    const FailingAllocation failing(1);
    EXPECT_EQ(_getNextLine_(file, nullptr, 0), nullptr);
    EXPECT_TRUE(failing.hasFailed());
  }
  EXPECT_EQ(wmc_errno, WMCE_NO_MEM);

  EXPECT_STREQ(_getNextLine_(file, nullptr, 0), "line");
  EXPECT_EQ(wmc_errno, 0);
  _getNextLine_(nullptr, nullptr, 0);
  std::fclose(file);
}

TEST_F(FailingAllocations, AreReportedForALongEntryOfAUser) {
  databaseFailure = [](size_t room) { return room < 5000 ? ERANGE : ENOENT; };
  forgetUsers();
  errno = 0;
  {
    char name[60];
    const FailingAllocation failing(1);
    EXPECT_NE(getWMXUserByUid_(7, name, sizeof name), 0);
    EXPECT_EQ(errno, ENOMEM);
    EXPECT_TRUE(failing.hasFailed());
    EXPECT_NE(getWMXUserByUid_(7, name, sizeof name), 0);
    EXPECT_EQ(errno, ENOENT) << "it is asked again";
  }
  databaseFailure = nullptr;
  forgetUsers();
}

TEST_F(FailingAllocations, CutALogMessage) {
  static char message[2000];
  wmq::logSink = [](int, const char *text) { std::strncpy(message, text, sizeof message - 1); };
  const std::string text(5000, 'x');
  {
    const FailingAllocation failing(1);
    wmc_syslog(LOG_INFO, "%s", text.c_str());
  }
  wmq::logSink = nullptr;
  EXPECT_EQ(message, std::string(1023, 'x'));
}

}  // namespace
}  // namespace wmq::testing
