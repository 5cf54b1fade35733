// Streaming decompression.
#ifndef WMQ_TOOL_UNPACKER_H
#define WMQ_TOOL_UNPACKER_H

#include <cstddef>
#include <memory>
#include <string>

namespace wmq::tool {

class Unpacker {
 public:
  virtual ~Unpacker() = default;

  struct Step {
    size_t consumed = 0;
    size_t produced = 0;
    const char *fault = nullptr;  // what is wrong with the data, or null
  };

  // Unpacks what fits of [from, from + size) into [into, into + room). Members or frames that follow each
  // other are one text.
  virtual Step step(const char *from, size_t size, char *into, size_t room) = 0;

  // True when the data may end here.
  virtual bool complete() const = 0;

  virtual const char *name() const = 0;
};

// Bytes needed to tell the kinds apart.
constexpr size_t signatureSize = 4;

// The unpacker for content that begins with `bytes`; null when it is plain.
std::unique_ptr<Unpacker> unpackerFor(const char *bytes, size_t size);

}  // namespace wmq::tool

#endif
