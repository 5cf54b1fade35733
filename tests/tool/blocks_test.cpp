#include "tool/blocks.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <sys/stat.h>
#include <unistd.h>

#include <sstream>

#include "support/temporary_directory.h"
#include "support/text_files.h"

namespace wmq::tool {
namespace {

using Texts = std::vector<std::string>;

Texts textsOf(Block &block) {
  Texts texts;
  block.eachLine([&](std::string_view text, uint64_t number, uint64_t bytes) {
    texts.emplace_back(text);
    EXPECT_EQ(number, texts.size());
    EXPECT_EQ(text.data()[text.size()], '\0');
    EXPECT_LE(bytes - text.size(), 1U);
    return true;
  });
  return texts;
}

class BlocksOfAFile : public ::testing::Test {
 protected:
  std::string file(const std::string &content) {
    wmq::testing::makeFile(directory / "file", content);
    return directory / "file";
  }

  static Texts all(Blocks &blocks) {
    Texts texts;
    Block block;
    while (blocks.next(block))
      for (std::string &text : textsOf(block)) texts.push_back(std::move(text));
    EXPECT_TRUE(block.empty());
    return texts;
  }

  wmq::testing::TemporaryDirectory directory;
};

TEST_F(BlocksOfAFile, HoldItsLinesEmptyOnesIncluded) {
  Blocks blocks(file("one\n\nthree\n"));
  EXPECT_EQ(all(blocks), (Texts{"one", "", "three"}));
}

TEST_F(BlocksOfAFile, NeedNoLineEndAtTheEnd) {
  Blocks blocks(file("one\nlast"));
  EXPECT_EQ(all(blocks), (Texts{"one", "last"}));
  Blocks none(file(""));
  EXPECT_EQ(all(none), Texts());
}

TEST_F(BlocksOfAFile, TellTheBytesOfEachLine) {
  Blocks blocks(file("one\n\nlast"));
  Block block;
  ASSERT_TRUE(blocks.next(block));
  std::vector<uint64_t> sizes;
  EXPECT_EQ(block.eachLine([&](std::string_view, uint64_t, uint64_t bytes) {
    sizes.push_back(bytes);
    return true;
  }),
            3U);
  EXPECT_EQ(sizes, (std::vector<uint64_t>{4, 1, 4}));
}

TEST_F(BlocksOfAFile, CanBeGoneThroughInPartAndAgain) {
  Blocks blocks(file("one\ntwo\nthree\n"));
  Block block;
  ASSERT_TRUE(blocks.next(block));
  EXPECT_EQ(block.eachLine([](std::string_view, uint64_t number, uint64_t) { return number < 2; }), 2U);
  EXPECT_EQ(textsOf(block), (Texts{"one", "two", "three"}));
}

TEST_F(BlocksOfAFile, HoldLinesOfAnyLength) {
  for (const size_t length : {262'142, 262'143, 262'144, 262'145, 3'000'000}) {
    const std::string longLine(length, 'x');
    Blocks blocks(file("one\n" + longLine + "\ntwo\n" + longLine));
    EXPECT_EQ(all(blocks), (Texts{"one", longLine, "two", longLine})) << length;
  }
}

TEST_F(BlocksOfAFile, HoldWhatGetlineFinds) {
  EXPECT_TRUE(rc::check([&] {
    std::string content;
    const auto lines = *rc::gen::container<std::vector<int>>(rc::gen::inRange(0, 60'000));
    for (const int length : lines) content += std::string(static_cast<size_t>(length), 'x') + '\n';
    if (*rc::gen::arbitrary<bool>()) content += "rest";
    Texts expected;
    std::istringstream stream(content);
    for (std::string line; std::getline(stream, line);) expected.push_back(line);
    Blocks blocks(file(content));
    RC_ASSERT(all(blocks) == expected);
  }));
}

TEST_F(BlocksOfAFile, CanBeLookedAtBeforeTheyAreTaken) {
  std::string content;
  Texts expected;
  for (int i = 0; i < 100'000; ++i) {
    expected.push_back("line " + std::to_string(i));
    content += expected.back() + '\n';
  }
  Blocks blocks(file(content));
  int looks = 0;
  blocks.lookAhead([&](Block &block) {
    EXPECT_FALSE(block.empty());
    return ++looks == 2;
  });
  EXPECT_EQ(looks, 2);
  EXPECT_EQ(all(blocks), expected);

  Blocks again(directory / "file");
  again.lookAhead([](Block &) { return false; });
  EXPECT_EQ(all(again), expected) << "when there is nothing more to look at";
}

TEST_F(BlocksOfAFile, DoNotKeepLinesBackThatAPipeHasBrought) {
  const std::string name = directory / "pipe";
  ASSERT_EQ(mkfifo(name.c_str(), 0600), 0);
  const int readerFirst = open(name.c_str(), O_RDONLY | O_NONBLOCK);
  const int writer = open(name.c_str(), O_WRONLY);
  ASSERT_EQ(::write(writer, "one\ntwo\nthr", 11), 11);
  Blocks blocks(name);
  Block block;
  ASSERT_TRUE(blocks.next(block));
  EXPECT_EQ(textsOf(block), (Texts{"one", "two"}));
  ASSERT_EQ(::write(writer, "ee\n", 3), 3);
  ASSERT_TRUE(blocks.next(block));
  EXPECT_EQ(textsOf(block), (Texts{"three"}));
  close(writer);
  EXPECT_FALSE(blocks.next(block));
  close(readerFirst);
}

}  // namespace
}  // namespace wmq::tool
