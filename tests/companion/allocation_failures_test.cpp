// Every helper that allocates, with each of its allocations failing in turn: it must say so, leave nothing
// behind, and change nothing. The sanitizers bring an allocator of their own and see this file empty.
#include <gtest/gtest.h>
#include <syslog.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "companion/log.h"
#include "wmq/companion.h"

#ifdef __has_feature
#define SANITIZED (__has_feature(address_sanitizer) || __has_feature(thread_sanitizer))
#elif defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define SANITIZED 1
#else
#define SANITIZED 0
#endif

#if !SANITIZED

namespace {

// The allocation to fail, counted from 1; 0 for none. Volatile, because compilers take it for granted that
// allocation functions touch nothing that a program looks at.
thread_local volatile int allocationToFail = 0;
thread_local volatile int allocationsLeft = 0;

bool failsNow() {
  if (allocationToFail == 0) return false;
  allocationToFail = allocationToFail - 1;
  if (allocationToFail != 0) return false;
  errno = ENOMEM;
  return true;
}

void *counted(void *memory) {
  allocationsLeft = allocationsLeft + (memory == nullptr ? 0 : 1);
  return memory;
}

}  // namespace

// The C library itself must find them, for getline's sake.
#pragma GCC visibility push(default)
extern "C" {
void *__libc_malloc(size_t size) noexcept;
void *__libc_calloc(size_t count, size_t size) noexcept;
void *__libc_realloc(void *memory, size_t size) noexcept;
void __libc_free(void *memory) noexcept;

void *malloc(size_t size) noexcept { return failsNow() ? nullptr : counted(__libc_malloc(size)); }

void *calloc(size_t count, size_t size) noexcept {
  return failsNow() ? nullptr : counted(__libc_calloc(count, size));
}

void *realloc(void *memory, size_t size) noexcept {
  if (failsNow()) return nullptr;
  return memory == nullptr ? counted(__libc_malloc(size)) : __libc_realloc(memory, size);
}

void free(void *memory) noexcept {
  allocationsLeft = allocationsLeft - (memory == nullptr ? 0 : 1);
  __libc_free(memory);
}
}
#pragma GCC visibility pop

namespace {

class FailingAllocations : public testing::Test {
 protected:
  // Some tools put their own functions in the place of those above.
  void SetUp() override {
    allocationToFail = 1;
    void *volatile probe = std::malloc(1);
    allocationToFail = 0;
    if (probe != nullptr) {
      std::free(probe);
      GTEST_SKIP() << "allocations cannot be made to fail here";
    }
  }

  // Runs `operation` with its first allocation failing, then with its second, until none fails any more.
  // `operation` returns whether it has succeeded, and leaves nothing behind either way.
  template <class Operation>
  static void eachFailureIsReported(int numAllocations, Operation operation) {
    for (int nth = 1; nth <= numAllocations + 1; ++nth) {
      const int before = allocationsLeft;
      allocationToFail = nth;
      const bool succeeded = operation();
      const bool reached = allocationToFail == 0;
      allocationToFail = 0;
      EXPECT_EQ(reached, nth <= numAllocations) << "allocation " << nth;
      EXPECT_EQ(succeeded, !reached) << "allocation " << nth;
      EXPECT_EQ(allocationsLeft, before) << "allocation " << nth;
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
  for (size_t i = 0; i < 3; ++i) hosts[i] = strdup(names[i]);
  int count = 3;

  for (int nth = 1; nth <= 6; ++nth) {
    const int before = allocationsLeft;
    allocationToFail = nth;
    const int result = uncompressHostList(&count, &hosts);
    EXPECT_EQ(allocationToFail, 0);
    allocationToFail = 0;
    EXPECT_EQ(result, WMQE_NO_MEM);
    EXPECT_EQ(allocationsLeft, before);
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
  std::fclose(sink);
}

TEST_F(FailingAllocations, LeaveASubmissionExtensionAsItWas) {
  submitExt *extension = nullptr;
  for (int nth = 1; nth <= 3; ++nth) {
    const int before = allocationsLeft;
    allocationToFail = nth;
    EXPECT_EQ(add_pair2submit_ext(&extension, 1, "a"), WMQE_NO_MEM);
    EXPECT_EQ(allocationToFail, 0);
    EXPECT_EQ(extension, nullptr);
    EXPECT_EQ(allocationsLeft, before);
  }
  ASSERT_EQ(add_pair2submit_ext(&extension, 1, "a"), 0);
  for (int nth = 1; nth <= 2; ++nth) {
    const int before = allocationsLeft;
    allocationToFail = nth;
    EXPECT_EQ(add_pair2submit_ext(&extension, 2, "b"), WMQE_NO_MEM);
    EXPECT_EQ(allocationToFail, 0);
    EXPECT_EQ(extension->numPairs, 1);
    EXPECT_EQ(allocationsLeft, before);
  }
  allocationToFail = 0;
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

  allocationToFail = 1;
  const char *const line = _getNextLine_(file, nullptr, 0);
  const bool reached = allocationToFail == 0;
  allocationToFail = 0;
  EXPECT_TRUE(reached);
  EXPECT_EQ(line, nullptr);
  EXPECT_EQ(wmc_errno, WMCE_NO_MEM);

  EXPECT_STREQ(_getNextLine_(file, nullptr, 0), "line");
  EXPECT_EQ(wmc_errno, 0);
  _getNextLine_(nullptr, nullptr, 0);
  std::fclose(file);
}

TEST_F(FailingAllocations, CutALogMessage) {
  static char message[2000];
  wmq::logSink = [](int, const char *text) { std::strncpy(message, text, sizeof message - 1); };
  const std::string text(5000, 'x');
  allocationToFail = 1;
  wmc_syslog(LOG_INFO, "%s", text.c_str());
  allocationToFail = 0;
  wmq::logSink = nullptr;
  EXPECT_EQ(message, std::string(1023, 'x'));
}

}  // namespace

#endif
