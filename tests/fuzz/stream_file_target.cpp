// A stream file under operations in any order, some of them by others who write to its directory, against a
// model that holds all files in memory.
#include <cstdio>
#include <filesystem>

#include "fuzz/fuzz_target.h"
#include "fuzz/input_reader.h"
#include "fuzz/record_checks.h"
#include "fuzz/requirement.h"
#include "fuzz/stream_model.h"
#include "support/record_text.h"
#include "support/sampler.h"
#include "support/scripted_clock.h"
#include "support/temporary_directory.h"
#include "support/text_files.h"
#include "wmq/stream.h"

namespace wmq::testing {
namespace {

constexpr int kCallsPerCheck = 100;
constexpr int kDroppedType = 61;
constexpr int64_t kBegin = 1000;

// Calls are counted through the whole process; each input begins where that count is 0.
int callsSinceCheck = 0;

bool isBareHeader(int32_t type) {
  return type == EVENT_JOB_OCCUPY_REQ || type == EVENT_JOB_VACATED || type == EVENT_JOB_STATUS2;
}

class Trial {
 public:
  explicit Trial(const std::string &directory) : directory_(directory), path_(directory + "/s") {
    open(0, 0);
    while (callsSinceCheck != 0) writeNothing();
    close();
  }
  ~Trial() {
    wmq_closestream();
    wmq_readstreamline("");  // releases the record that the library keeps
    for (const std::string &name : namesIn(directory_)) std::filesystem::remove(directory_ + '/' + name);
  }
  Trial(const Trial &) = delete;
  Trial &operator=(const Trial &) = delete;

  void step(InputReader &input);
  void checkFiles() const;

 private:
  void open(int32_t size, int32_t oldFiles);
  void close();
  void write(eventRecord record);
  void writeNothing();
  void writeText(const std::string &text);
  void read();
  void append(const std::string &bytes);
  void putOldFile(int64_t suffix);

  std::string directory_;
  std::string path_;
  ScriptedClock clock_{kBegin};
  StreamModel model_;
  int lineNum_ = 0;
};

void Trial::open(int32_t size, int32_t oldFiles) {
  streamParams params{};
  params.fileName = path_.data();
  params.maxStreamSize = size;
  params.maxStreamFileNum = oldFiles;
  require(wmq_openstream(&params) == 0, "a stream opens");
  model_.open(size > 0 ? size : 1000000000, oldFiles);
}

void Trial::close() {
  require(wmq_closestream() == (model_.isOpen() ? 0 : -1), "an open stream closes, and no other");
  model_.close();
}

// The line without a stream is what the stream gets.
void Trial::write(eventRecord record) {
  eventRecord copy = record;
  const std::string bytes = format(copy);
  const int error = wmq_errno;
  const bool wasOpen = model_.isOpen();
  bool expected = false;
  if (wasOpen) {
    callsSinceCheck = (callsSinceCheck + 1) % kCallsPerCheck;
    expected = model_.write(bytes, callsSinceCheck == 0, clock_.now) && error == 0;
    // A bare header leaves the error number alone, and succeeds only if that is 0.
    if (isBareHeader(record.type) && model_.hasRemovedFiles()) expected = false;
  }
  wmq_errno = 0;
  require((wmq_writestream(&record) == 0) == expected, "a write succeeds when the model's does");
}

void Trial::writeNothing() { write(bareRecord(kDroppedType)); }

void Trial::writeText(const std::string &text) {
  const OwnedRecord record(static_cast<eventRecord *>(std::calloc(1, sizeof(eventRecord))));
  record->type = EVENT_GRP_STATUS;
  record->eventTime = kEventTime;
  record->eventLog.jgrpStatusLog.grpStatusStr = ownedCopy(text);
  write(*record);
}

void Trial::read() {
  wmq_errno = 0;
  const int before = lineNum_;
  eventRecord *record = wmq_readstream(&lineNum_);
  const int error = wmq_errno;
  if (!model_.isOpen())
    return require(record == nullptr && error == WMQE_BAD_ARG, "nothing is read when closed");
  require(lineNum_ == before + 1, "every read counts");
  const std::optional<std::string> line = model_.nextLine();
  if (!line) return require(record == nullptr && error == WMQE_EOF, "a read at the end finds it");

  if (line->find('\0') != std::string::npos)
    return require(record == nullptr && error == WMQE_BAD_FORMAT, "a line with a NUL is malformed", *line);
  const OwnedRecord expected = parseExactly(*line);
  require((record == nullptr) == (expected == nullptr), "the stream reads what a line alone does", *line);
  if (expected == nullptr) return require(error == wmq_errno, "and fails as it does", *line);
  const std::string found = jsonOf(*record);
  wmq_freekept(record);  // the library's own release leaves it
  require(found == jsonOf(*expected), "and finds the same", *line + '\n' + found);
}

void Trial::append(const std::string &bytes) {
  appendTo(path_, bytes);
  model_.append(bytes);
}

void Trial::putOldFile(int64_t suffix) {
  makeFile(path_ + '.' + std::to_string(suffix), "old");
  model_.putOldFile(suffix, "old");
}

void Trial::step(InputReader &input) {
  switch (input.below(12)) {
    case 0:
      return open(static_cast<int32_t>(input.byte() * 64), static_cast<int32_t>(input.below(5)) - 1);
    case 1:
      return close();
    case 2:
      for (uint32_t count = input.below(16); count > 0; --count) read();
      return;
    case 3:
      for (uint32_t count = input.below(128); count > 0; --count)
        write(logSwitch(static_cast<int32_t>(count)));
      return;
    case 4:
      for (uint32_t count = input.below(128); count > 0; --count) writeNothing();
      return;
    case 5:
      return writeText(input.text());
    case 6: {
      const uint32_t type = input.byte();
      const OwnedRecord sample = sampleRecord(static_cast<int32_t>(type), {.value = input.byte(), .size = 2});
      if (sample != nullptr) write(*sample);
      return;
    }
    case 7:
      return append(input.text());
    case 8:
      return append("\"LOG_SWITCH\" \"10.1\" 5 6\n");
    case 9:
      return putOldFile(input.below(4) == 0 ? input.number() : kBegin + input.below(8));
    case 10:
      clock_.now += static_cast<int64_t>(input.below(8)) - 3;
      return;
    default:
      wmq_readstream(nullptr);  // drops what was read ahead, and no line
  }
}

void Trial::checkFiles() const {
  require(contentOf(path_) == model_.current, "the file holds what the model does",
          contentOf(path_) + "\n---\n" + model_.current);
  size_t others = 1;
  for (const auto &[suffix, content] : model_.oldFiles) {
    const std::string path = path_ + '.' + std::to_string(suffix);
    require(contentOf(path) == content, "an old file holds what the model's does", path);
    ++others;
  }
  require(namesIn(directory_).size() == others, "there are no other files");
}

}  // namespace

void tryInput(std::string_view input) {
  static const TemporaryDirectory directory;
  Trial trial(directory.path());
  InputReader reader(input);
  while (!reader.atEnd()) trial.step(reader);
  trial.checkFiles();
}

std::vector<std::string> seeds() {
  const auto input = [](std::initializer_list<int> bytes) {
    std::string text;
    for (const int byte : bytes) text += static_cast<char>(byte);
    return text;
  };
  return {input({0, 2, 3, 3, 120, 2, 15, 3, 120, 2, 15, 1, 0, 2, 3, 2, 15}),  // two rotations, reading
          input({0, 1, 2, 3, 99, 3, 101, 10, 0, 3, 100, 9, 0, 255, 255, 255, 255, 3, 100}),  // odd old files
          input({0, 1, 0, 3, 110}),  // nothing is ever rotated
          input({0, 0, 3, 7, 3, 'a', '\n', 'b', 8, 2, 4, 5, 2, '"', '\n', 2, 5, 7, 1, 0, 2, 3}),
          input({0, 0, 3, 6, 1, 1, 6, 10, 2, 6, 34, 1, 6, 29, 1, 2, 9, 11, 2, 3}),
          input({2, 1, 3, 5, 0, 4, 3, 9, 1, 9, 2, 9, 3, 4, 100, 1})};
}

}  // namespace wmq::testing
