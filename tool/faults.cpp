#include "faults.h"

#include <algorithm>
#include <cstdio>
#include <string>

#include "text.h"
#include "wmq/wmq.h"

namespace wmq::tool {

void Faults::print(std::string_view message) {
  if (handOver) handOver();
  if (progress) progress->erase();
  std::string line = printable(message) + "\n";
  std::fwrite(line.data(), 1, line.size(), stderr);
}

void Faults::badInput(std::string_view file, uint64_t line, int number, std::string_view text) {
  std::string message(file);
  message +=
      ":" + std::to_string(line) + ": error " + std::to_string(number) + " " + wmq_errname(number) + ": ";
  message += text;
  print(message);
  ++numBad;
  status = std::max<int>(status, exitBadInput);
}

void Faults::refused(std::string_view file, uint64_t line, int number) {
  std::string_view detail = wmq_errdetail();
  badInput(file, line, number, detail.empty() ? wmq_strerror(number) : detail);
}

void Faults::failure(std::string_view subject, std::string_view text) {
  std::string message = "wmq: ";
  message += subject;
  message += ": ";
  message += text;
  print(message);
  status = exitFailure;
}

}  // namespace wmq::tool
