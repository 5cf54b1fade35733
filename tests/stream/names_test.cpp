#include <gtest/gtest.h>

#include <set>
#include <string>

#include "stream/expected_types.h"
#include "wmq/wmq.h"

namespace wmq::testing {
namespace {

TEST(TypeNames, AreThoseOfTheirCodes) {
  for (const ExpectedType &type : kExpectedTypes) {
    if (type.name == nullptr) {
      EXPECT_EQ(wmq_typename(type.code), nullptr) << type.code;
    } else {
      EXPECT_STREQ(wmq_typename(type.code), type.name);
    }
  }
  EXPECT_EQ(wmq_typename(INT32_MAX), nullptr);
  EXPECT_EQ(wmq_typename(INT32_MIN), nullptr);
}

TEST(TypeNames, LeadBackToTheirCodes) {
  for (const ExpectedType &type : kExpectedTypes) {
    if (type.name != nullptr) {
      EXPECT_EQ(wmq_typecode(type.name), type.code) << type.name;
    }
  }
}

TEST(TypeNames, ThatAreUnknownHaveNoCode) {
  for (const char *name : {"", " ", "JOB", "job_new", "JOB_NEW ", " JOB_NEW", "JOB_NEW2", "EVENT_JOB_NEW",
                           "1", "ADRSV_FINISH", "HGHOST_CTRL", "(none)"})
    EXPECT_EQ(wmq_typecode(name), -1) << name;
  EXPECT_EQ(wmq_typecode(std::string(100000, 'X').c_str()), -1);
  EXPECT_EQ(wmq_typecode(nullptr), -1);
}

TEST(TypeNames, StandBehindConstants) {
  EXPECT_EQ(wmq_typecode("JOB_NEW"), EVENT_JOB_NEW);
  EXPECT_EQ(wmq_typecode("EVENT_ADRSV_FINISH"), EVENT_ADRSV_FINISH);
  EXPECT_EQ(wmq_typecode("EVENT_HGHOST_CTRL"), EVENT_HGHOST_CTRL);
  EXPECT_EQ(wmq_typecode("JOB_PROV_HOST"), EVENT_JOB_PROV_HOST);
  EXPECT_EQ(WMQ_MAX_EVENT_TYPE, EVENT_JOB_PROV_HOST);
}

constexpr int kErrors[] = {0, 35, 45, 46, 47, 53, 54, 55, 98, 743};

TEST(ErrorNumbers, HaveTheirNames) {
  EXPECT_STREQ(wmq_errname(0), "0");
  EXPECT_STREQ(wmq_errname(35), "WMQE_BAD_ARG");
  EXPECT_STREQ(wmq_errname(45), "WMQE_BAD_EVENT");
  EXPECT_STREQ(wmq_errname(46), "WMQE_BAD_FORMAT");
  EXPECT_STREQ(wmq_errname(47), "WMQE_EOF");
  EXPECT_STREQ(wmq_errname(53), "WMQE_NO_USER");
  EXPECT_STREQ(wmq_errname(54), "WMQE_SYS");
  EXPECT_STREQ(wmq_errname(55), "WMQE_NO_MEM");
  EXPECT_STREQ(wmq_errname(98), "WMCE_NO_MEM");
  EXPECT_STREQ(wmq_errname(743), "WMQE_FILES_REMOVED");
  for (const int number : {-1, 1, 34, 744, INT32_MAX, INT32_MIN})
    EXPECT_STREQ(wmq_errname(number), "unknown");
}

TEST(ErrorNumbers, HaveAMeaningOfTheirOwn) {
  std::set<std::string> meanings;
  for (const int number : kErrors) meanings.insert(wmq_strerror(number));
  EXPECT_EQ(meanings.size(), std::size(kErrors)) << "each is different";
  EXPECT_EQ(meanings.count(""), 0U);
  meanings.insert(wmq_strerror(12345));
  EXPECT_EQ(meanings.size(), std::size(kErrors) + 1);
  EXPECT_STREQ(wmq_strerror(12345), wmq_strerror(-1));
}

TEST(ErrorNumbers, CanBeAssigned) {
  wmq_errno = 12;
  int *const place = &wmq_errno;
  *place = WMQE_EOF;
  EXPECT_EQ(wmq_errno, WMQE_EOF);
  wmq_errno = 0;
}

TEST(LibraryVersion, IsThatOfItsHeaders) {
  EXPECT_STREQ(wmq_version(), WMQ_VERSION);
  const std::string parts = std::to_string(WMQ_VERSION_MAJOR) + '.' + std::to_string(WMQ_VERSION_MINOR) +
                            '.' + std::to_string(WMQ_VERSION_PATCH);
  EXPECT_EQ(parts, WMQ_VERSION);
  EXPECT_EQ(WMQ_VERSION_NUMBER, WMQ_VERSION_MAJOR * 10000 + WMQ_VERSION_MINOR * 100 + WMQ_VERSION_PATCH);
}

}  // namespace
}  // namespace wmq::testing
