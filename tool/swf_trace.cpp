#include "swf_trace.h"

#include <array>
#include <charconv>
#include <cmath>
#include <optional>

#include "text.h"

namespace wmq::tool {

namespace {

constexpr std::string_view blanks = " \t\r";

std::string_view trimmed(std::string_view text) {
  size_t begin = text.find_first_not_of(blanks);
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(blanks) + 1 - begin);
}

// Takes the first word off the front of `rest`.
std::string_view takeWord(std::string_view &rest) {
  rest = rest.substr(std::min(rest.find_first_not_of(blanks), rest.size()));
  std::string_view word = rest.substr(0, rest.find_first_of(blanks));
  rest.remove_prefix(word.size());
  return word;
}

template <typename Number>
std::optional<Number> numberFrom(std::string_view word) {
  Number value{};
  auto [stop, error] = std::from_chars(word.data(), word.data() + word.size(), value);
  if (error != std::errc() || stop != word.data() + word.size()) return std::nullopt;
  return value;
}

struct Column {
  const char *name;
  int64_t SwfJob::*member;  // null: the one column that may hold fractions
};

constexpr std::array<Column, 18> columns{{{"job number", &SwfJob::number},
                                          {"submit time", &SwfJob::submitTime},
                                          {"wait time", &SwfJob::waitTime},
                                          {"run time", &SwfJob::runTime},
                                          {"allocated processors", &SwfJob::allocatedProcessors},
                                          {"average CPU time", nullptr},
                                          {"used memory", &SwfJob::usedMemory},
                                          {"requested processors", &SwfJob::requestedProcessors},
                                          {"requested time", &SwfJob::requestedTime},
                                          {"requested memory", &SwfJob::requestedMemory},
                                          {"status", &SwfJob::status},
                                          {"user", &SwfJob::user},
                                          {"group", &SwfJob::group},
                                          {"application", &SwfJob::application},
                                          {"queue", &SwfJob::queue},
                                          {"partition", &SwfJob::partition},
                                          {"preceding job", &SwfJob::precedingJob},
                                          {"think time", &SwfJob::thinkTime}}};

bool readColumn(const Column &column, std::string_view word, SwfJob &job) {
  if (column.member) {
    std::optional<int64_t> value = numberFrom<int64_t>(word);
    if (value) job.*column.member = *value;
    return value.has_value();
  }
  std::optional<double> value = numberFrom<double>(word);
  if (!value || !std::isfinite(*value)) return false;
  job.averageCpuTime = *value;
  return true;
}

SwfLine readJob(std::string_view line, SwfJob &job, std::string &why) {
  for (size_t i = 0; i < columns.size(); ++i) {
    std::string_view word = takeWord(line);
    if (word.empty()) {
      why = "a job line has 18 columns, this one has " + std::to_string(i);
      return SwfLine::bad;
    }
    if (!readColumn(columns[i], word, job)) {
      why = "column " + std::to_string(i + 1) + " (" + columns[i].name + ") is no number: '";
      why += excerpt(word) + "'";
      return SwfLine::bad;
    }
  }
  if (takeWord(line).empty()) return SwfLine::job;
  why = "a job line has 18 columns, this one has more";
  return SwfLine::bad;
}

// "  3  normal  ": the name of number 3. Some numbers have none.
void readName(std::string_view value, std::map<int64_t, std::string> &names) {
  std::optional<int64_t> number = numberFrom<int64_t>(takeWord(value));
  std::string_view name = trimmed(value);
  if (number && !name.empty()) names[*number] = name;
}

// Labels that a replay has no use for are free text.
SwfLine readHeader(std::string_view line, SwfHeader &header, std::string &why) {
  size_t colon = line.find(':');
  if (colon == std::string_view::npos) return SwfLine::header;
  std::string_view label = trimmed(line.substr(1, colon - 1));
  std::string_view value = trimmed(line.substr(colon + 1));

  if (label == "Queue") readName(value, header.queues);
  if (label == "Partition") readName(value, header.partitions);

  int64_t *number = label == "UnixStartTime" ? &header.startTime
                    : label == "MaxNodes"    ? &header.maxNodes
                    : label == "MaxProcs"    ? &header.maxProcessors
                                             : nullptr;
  if (!number) return SwfLine::header;
  // Remarks may stand behind the number.
  std::optional<int64_t> found = numberFrom<int64_t>(takeWord(value));
  if (!found) {
    why = "the header's " + std::string(label) + " is no number";
    return SwfLine::bad;
  }
  if (*found < -1) {
    why = "the header's " + std::string(label) + " is negative";
    return SwfLine::bad;
  }
  *number = *found;
  return SwfLine::header;
}

}  // namespace

SwfLine readSwfLine(std::string_view line, SwfHeader &header, SwfJob &job, std::string &why) {
  line = trimmed(line);
  if (line.empty()) return SwfLine::header;
  if (line.front() == ';') return readHeader(line, header, why);
  job = {};
  return readJob(line, job, why);
}

}  // namespace wmq::tool
