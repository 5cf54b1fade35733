#include "support/handmade_stream.h"

#include <ctime>
#include <filesystem>

#include "support/small_records.h"
#include "support/text_files.h"

namespace wmq::testing {

const std::string endLine = "\"END_OF_STREAM\" \"10.1\" 1700000002\n";
const std::string vacated = "\"JOB_VACATED\" \"10.1\" 1700000000";
const std::string sbdStatus = "\"SBD_JOB_STATUS\" \"10.1\" 1700000000 7 0 0 0 0 0 0 0 0 0 0 0 0 3";

std::string lines(int first, int last) {
  std::string text;
  for (int number = first; number <= last; ++number) text += logSwitchLine(number);
  return text;
}

void HandmadeStream::append(const std::string &text) const { appendTo(path, text); }

void HandmadeStream::rotate(int suffix) const {
  append(endLine);
  std::filesystem::rename(path, old(suffix));
  append("");
}

void HandmadeStream::settle() {
  timespec before{};
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &before);
  do {
    clock_gettime(CLOCK_REALTIME_COARSE, &now);
  } while (now.tv_sec < before.tv_sec || (now.tv_sec == before.tv_sec && now.tv_nsec <= before.tv_nsec));
}

void HandmadeStream::remove(int suffix) const { std::filesystem::remove(old(suffix)); }

}  // namespace wmq::testing
