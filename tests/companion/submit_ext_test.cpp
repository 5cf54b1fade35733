#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "wmq/companion.h"

namespace {

struct Extension {
  submitExt *value = nullptr;
  ~Extension() {
    freeSubmitExt(value);
    std::free(value);
  }
};

TEST(SubmissionExtension, IsCreatedByItsFirstPair) {
  Extension extension;
  ASSERT_EQ(add_pair2submit_ext(&extension.value, 7, "seven"), 0);
  ASSERT_NE(extension.value, nullptr);
  ASSERT_EQ(extension.value->numPairs, 1);
  EXPECT_EQ(extension.value->pairs[0].key, 7);
  EXPECT_STREQ(extension.value->pairs[0].value, "seven");
}

TEST(SubmissionExtension, KeepsPairsInTheOrderOfTheirAdding) {
  Extension extension;
  for (int32_t key = 0; key < 1000; ++key)
    ASSERT_EQ(add_pair2submit_ext(&extension.value, -key, std::to_string(key).c_str()), 0);
  ASSERT_EQ(extension.value->numPairs, 1000);
  for (int32_t key = 0; key < 1000; ++key) {
    ASSERT_EQ(extension.value->pairs[key].key, -key);
    ASSERT_EQ(extension.value->pairs[key].value, std::to_string(key));
  }
}

TEST(SubmissionExtension, KeepsTheSameKeyTwice) {
  Extension extension;
  ASSERT_EQ(add_pair2submit_ext(&extension.value, 1, "a"), 0);
  ASSERT_EQ(add_pair2submit_ext(&extension.value, 1, "b"), 0);
  EXPECT_EQ(extension.value->numPairs, 2);
}

TEST(SubmissionExtension, TakesAMissingValueForAnEmptyOne) {
  Extension extension;
  ASSERT_EQ(add_pair2submit_ext(&extension.value, 1, nullptr), 0);
  EXPECT_STREQ(extension.value->pairs[0].value, "");
}

// An array that a caller has built has exactly the room of its pairs.
TEST(SubmissionExtension, GrowsAnArrayThatTheCallerHasBuilt) {
  Extension extension;
  extension.value = static_cast<submitExt *>(std::calloc(1, sizeof(submitExt)));
  extension.value->numPairs = 3;
  extension.value->pairs = static_cast<submitExtPair *>(std::calloc(3, sizeof(submitExtPair)));
  for (int32_t key = 3; key < 9; ++key) ASSERT_EQ(add_pair2submit_ext(&extension.value, key, "x"), 0);
  ASSERT_EQ(extension.value->numPairs, 9);
  EXPECT_EQ(extension.value->pairs[2].value, nullptr);
  EXPECT_EQ(extension.value->pairs[8].key, 8);
}

TEST(SubmissionExtension, StaysAsItIsWhereItsCountMakesNoSense) {
  submitExt extension{};
  for (const int32_t count : {-1, INT32_MIN, INT32_MAX}) {
    extension.numPairs = count;
    submitExt *given = &extension;
    EXPECT_EQ(add_pair2submit_ext(&given, 1, "x"), WMQE_NO_MEM);
    EXPECT_EQ(extension.numPairs, count);
    EXPECT_EQ(extension.pairs, nullptr);
  }
}

TEST(SubmissionExtension, NeedsAPlaceToStandIn) {
  EXPECT_EQ(add_pair2submit_ext(nullptr, 1, "x"), WMQE_BAD_ARG);
}

TEST(SubmissionExtension, IsEmptyAfterItsRelease) {
  Extension extension;
  ASSERT_EQ(add_pair2submit_ext(&extension.value, 1, "x"), 0);
  freeSubmitExt(extension.value);
  EXPECT_EQ(extension.value->pairs, nullptr);
  EXPECT_EQ(extension.value->numPairs, 0);
  freeSubmitExt(nullptr);
}

}  // namespace
