#include "tool/input.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>
#include <zstd.h>

#include <string>
#include <thread>

#include "support/temporary_directory.h"
#include "support/text_files.h"

namespace wmq::tool {
namespace {

using wmq::testing::makeFile;
using wmq::testing::TemporaryDirectory;

std::string gzipped(std::string text) {
  z_stream state{};
  deflateInit2(&state, Z_DEFAULT_COMPRESSION, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY);
  std::string packed(deflateBound(&state, text.size()) + 64, '\0');
  state.next_in = reinterpret_cast<Bytef *>(text.data());
  state.avail_in = static_cast<uInt>(text.size());
  state.next_out = reinterpret_cast<Bytef *>(packed.data());
  state.avail_out = static_cast<uInt>(packed.size());
  EXPECT_EQ(deflate(&state, Z_FINISH), Z_STREAM_END);
  packed.resize(state.total_out);
  deflateEnd(&state);
  return packed;
}

std::string zstded(const std::string &text) {
  std::string packed(ZSTD_compressBound(text.size()), '\0');
  packed.resize(ZSTD_compress(packed.data(), packed.size(), text.data(), text.size(), 3));
  return packed;
}

// Text that no compressor makes much smaller than a few buffers.
std::string longText() {
  std::string text;
  uint32_t state = 1;
  while (text.size() < 1'000'000) {
    state = state * 1664525 + 1013904223;
    text += std::to_string(state);
    text += '\n';
  }
  return text;
}

class InputFiles : public ::testing::Test {
 protected:
  // All that comes out, and in `trouble` and `troubleText` how it ended.
  std::string contentOf(const std::string &name, size_t step = 100'000) {
    Input input(name);
    std::string content;
    std::string part(step, '\0');
    while (size_t count = input.read(part.data(), part.size())) content.append(part, 0, count);
    trouble = input.trouble();
    troubleText = input.troubleText();
    return content;
  }

  std::string unpacked(const std::string &bytes, size_t step = 100'000) {
    makeFile(directory / "input", bytes);
    return contentOf(directory / "input", step);
  }

  // The same through a named pipe that gets `chunk` bytes at a time.
  std::string throughPipe(const std::string &bytes, size_t chunk) {
    std::string name = directory / "pipe";
    EXPECT_EQ(mkfifo(name.c_str(), 0600), 0);
    std::thread writer([&] {
      int descriptor = open(name.c_str(), O_WRONLY);
      for (size_t at = 0; at < bytes.size(); at += chunk)
        if (write(descriptor, bytes.data() + at, std::min(chunk, bytes.size() - at)) < 0) break;
      close(descriptor);
    });
    std::string content = contentOf(name);
    writer.join();
    unlink(name.c_str());
    return content;
  }

  TemporaryDirectory directory;
  Input::Trouble trouble = Input::Trouble::none;
  std::string troubleText;
};

TEST_F(InputFiles, ArePassedOnWhenPlain) {
  for (const std::string text : {"", "a", "ab", "\x1f", "(", "one\ntwo\n"}) {
    EXPECT_EQ(unpacked(text), text);
    EXPECT_EQ(trouble, Input::Trouble::none);
  }
  EXPECT_EQ(unpacked(longText()), longText());
}

TEST_F(InputFiles, AreUnpackedByTheirContent) {
  std::string text = longText();
  EXPECT_EQ(unpacked(gzipped(text)), text);
  EXPECT_EQ(trouble, Input::Trouble::none);
  EXPECT_EQ(unpacked(zstded(text)), text);
  EXPECT_EQ(trouble, Input::Trouble::none);
  EXPECT_EQ(unpacked(gzipped("")), "");
  EXPECT_EQ(trouble, Input::Trouble::none);
  EXPECT_EQ(unpacked(zstded("")), "");
  EXPECT_EQ(trouble, Input::Trouble::none);
}

TEST_F(InputFiles, AreOneTextWhenPackedInParts) {
  EXPECT_EQ(unpacked(gzipped("one\n") + gzipped("") + gzipped("two\n")), "one\ntwo\n");
  EXPECT_EQ(trouble, Input::Trouble::none);
  EXPECT_EQ(unpacked(zstded("one\n") + zstded("") + zstded("two\n")), "one\ntwo\n");
  EXPECT_EQ(trouble, Input::Trouble::none);
}

TEST_F(InputFiles, MayBeReadInTheSmallestSteps) {
  EXPECT_EQ(unpacked(gzipped("one\n") + gzipped("two\n"), 1), "one\ntwo\n");
  EXPECT_EQ(unpacked(zstded("one\n") + zstded("two\n"), 1), "one\ntwo\n");
  EXPECT_EQ(unpacked("one\ntwo\n", 1), "one\ntwo\n");
}

TEST_F(InputFiles, MayBeginWithASkippableFrame) {
  std::string skippable("\x5f\x2a\x4d\x18\x03\x00\x00\x00xyz", 11);
  EXPECT_EQ(unpacked(skippable + zstded("text")), "text");
  EXPECT_EQ(trouble, Input::Trouble::none);
}

TEST_F(InputFiles, MayBePipesThatBringByteByByte) {
  EXPECT_EQ(throughPipe("plain\n", 1), "plain\n");
  EXPECT_EQ(throughPipe(gzipped("packed\n"), 1), "packed\n");
  EXPECT_EQ(throughPipe(zstded("packed\n"), 1), "packed\n");
  EXPECT_EQ(throughPipe(longText(), 1000), longText());
}

TEST_F(InputFiles, KeepWhatCameBeforeTheyAreCutShort) {
  for (const std::string &packed : {gzipped(longText()), zstded(longText())}) {
    std::string content = unpacked(packed.substr(0, packed.size() / 2));
    EXPECT_EQ(trouble, Input::Trouble::damaged);
    EXPECT_NE(troubleText.find("is cut short"), std::string::npos) << troubleText;
    EXPECT_GT(content.size(), 100'000U);
    EXPECT_EQ(content, longText().substr(0, content.size()));
  }
}

TEST_F(InputFiles, AreReportedWhenDamaged) {
  std::string packed = gzipped(longText());
  packed[packed.size() / 2] = static_cast<char>(~packed[packed.size() / 2]);
  unpacked(packed);
  EXPECT_EQ(trouble, Input::Trouble::damaged);
  EXPECT_EQ(troubleText.rfind("gzip data: ", 0), 0U) << troubleText;

  packed = zstded(longText());
  packed[8] = static_cast<char>(~packed[8]);
  unpacked(packed);
  EXPECT_EQ(trouble, Input::Trouble::damaged);
  EXPECT_EQ(troubleText.rfind("zstd data: ", 0), 0U) << troubleText;
}

TEST_F(InputFiles, MayEndInZerosBehindGzipDataButInNothingElse) {
  EXPECT_EQ(unpacked(gzipped("text") + std::string(5000, '\0')), "text");
  EXPECT_EQ(trouble, Input::Trouble::none);
  EXPECT_EQ(unpacked(gzipped("text") + std::string(5, '\0') + "rest"), "text");
  EXPECT_EQ(troubleText, "gzip data: there is something else behind the gzip data");
  EXPECT_EQ(unpacked(gzipped("text") + "rest"), "text");
  EXPECT_EQ(trouble, Input::Trouble::damaged);
}

TEST_F(InputFiles, TellWhyTheyCannotBeRead) {
  contentOf(directory / "missing");
  EXPECT_EQ(trouble, Input::Trouble::system);
  EXPECT_EQ(troubleText, "No such file or directory");
  contentOf(directory.path());
  EXPECT_EQ(trouble, Input::Trouble::system);
  EXPECT_EQ(troubleText, "Is a directory");
}

TEST_F(InputFiles, TellBeforeTheyWaitForAPipe) {
  std::string name = directory / "pipe";
  ASSERT_EQ(mkfifo(name.c_str(), 0600), 0);
  int readerFirst = open(name.c_str(), O_RDONLY | O_NONBLOCK);
  int writer = open(name.c_str(), O_WRONLY);
  ASSERT_EQ(write(writer, "one\n", 4), 4);

  Input input(name);
  bool waited = false;
  input.beforeWaiting([&] {
    waited = true;
    close(writer);
  });
  char buffer[16];
  EXPECT_FALSE(input.wouldWait());
  EXPECT_EQ(input.read(buffer, sizeof buffer), 4U);
  EXPECT_TRUE(input.wouldWait());
  EXPECT_FALSE(waited);
  EXPECT_EQ(input.read(buffer, sizeof buffer), 0U);
  EXPECT_TRUE(waited);
  close(readerFirst);
}

}  // namespace
}  // namespace wmq::tool
