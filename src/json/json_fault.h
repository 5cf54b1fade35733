// What a JSON text is refused for, kept for wmq_jsonerror.
#ifndef WMQ_JSON_FAULT_H
#define WMQ_JSON_FAULT_H

#include <cstddef>

namespace wmq {

// Where in a record a value belongs. A chain on the stack, so that a path costs nothing until it is printed.
struct Place {
  const Place *up;
  const char *name;   // of a member; null for an element
  std::size_t index;  // of an element
};

// Sets wmq_errno to `number` and the text to "PATH: MESSAGE" (the message alone without a place).
// Returns false, so that a refusal is one statement.
[[gnu::format(printf, 3, 4)]] bool fault(int number, const Place *place, const char *format, ...);

// The beginning of a text from outside, made fit for a message of one line.
struct Excerpt {
  char text[64];
  Excerpt(const char *from, std::size_t length);
};

}  // namespace wmq

#endif
