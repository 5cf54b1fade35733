// Standard output, buffered, with its failures kept in mind.
#ifndef WMQ_TOOL_OUTPUT_H
#define WMQ_TOOL_OUTPUT_H

#include <string>
#include <string_view>

#include "faults.h"

namespace wmq::tool {

class Output {
 public:
  Output() = default;
  Output(const Output &) = delete;
  Output &operator=(const Output &) = delete;

  // Both return false once anything could not be written; what follows is dropped.
  bool write(std::string_view bytes);
  bool flush();

  // For who decides when to write: keeps the bytes, however many there are.
  void append(std::string_view bytes) { waiting += bytes; }

  // Writes no more than so many bytes, in one piece, and none where that would have to wait.
  bool flush(size_t most);

  size_t size() const { return waiting.size() - written; }  // what has not been written

  // Hands over the rest and reports a failure, if there was any.
  void finish(Faults &faults);

 private:
  bool handOver(std::string_view rest);

  std::string waiting;
  size_t written = 0;  // of it, from its beginning
  int error = 0;       // errno of the first failure
};

}  // namespace wmq::tool

#endif
