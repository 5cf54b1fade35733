#include "support/stream_follower.h"

#include <filesystem>
#include <sstream>

#include "support/small_records.h"
#include "wmq/stream.h"

namespace wmq::testing {

StreamFollower::StreamFollower(const std::string &path, int32_t from, int poll) {
  const wmqFollowParams params{path.c_str(), from, nullptr, poll};
  follower.reset(wmq_followopen(&params));
}

StreamFollower::StreamFollower(const std::string &path, const std::string &position, int poll) {
  const wmqFollowParams params{path.c_str(), WMQ_FROM_POSITION, position.c_str(), poll};
  follower.reset(wmq_followopen(&params));
}

std::string StreamFollower::noticeInWords() const {
  const wmqFollowDetail &told = detail();
  switch (told.notice) {
    case WMQ_NOTICE_ROTATED:
      return "rotated";
    case WMQ_NOTICE_END_IN_MIDDLE:
      return "end in the middle";
    case WMQ_NOTICE_TORN:
      return "torn: " + std::string(told.text, static_cast<size_t>(told.textLength));
    case WMQ_NOTICE_TRUNCATED:
      return "truncated";
    case WMQ_NOTICE_GAP:
      break;
    default:
      return "notice " + std::to_string(told.notice);
  }
  std::string names;
  std::istringstream lines(told.missingFiles);
  for (std::string name; std::getline(lines, name);)
    names += (names.empty() ? " of " : ",") + std::filesystem::path(name).filename().string();
  return "gap" + names + (told.missingBytes < 0 ? "" : ": " + std::to_string(told.missingBytes));
}

std::string StreamFollower::next(int timeout) {
  eventRecord *given = nullptr;
  const int result = wmq_follownext(get(), &given, timeout);
  const OwnedRecord record(given);
  return inWords(result, given);
}

std::string StreamFollower::inWords(int result, const eventRecord *record) const {
  switch (result) {
    case WMQ_FOLLOW_NOTHING:
      return "";
    case WMQ_FOLLOW_RECORD:
      return record->type == EVENT_LOG_SWITCH ? std::to_string(record->eventLog.logSwitchLog.lastJobId)
                                              : wmq_typename(record->type);
    case WMQ_FOLLOW_LINE:
      return std::string("line: ") + detail().text;
    case WMQ_FOLLOW_NOTICE:
      return noticeInWords();
    default:
      return std::string("failed ") + wmq_errname(wmq_errno);
  }
}

std::vector<std::string> StreamFollower::rest(int timeout) {
  std::vector<std::string> all;
  for (std::string one = next(timeout); !one.empty(); one = next(timeout)) {
    all.push_back(one);
    if (one.starts_with("failed")) break;
  }
  return all;
}

std::string StreamFollower::position() const {
  char text[WMQ_POSITION_SIZE];
  return wmq_followposition(get(), text) == 0 ? text : "";
}

}  // namespace wmq::testing
