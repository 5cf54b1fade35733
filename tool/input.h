// The bytes of an input file, unpacked when its content is gzip or zstd.
#ifndef WMQ_TOOL_INPUT_H
#define WMQ_TOOL_INPUT_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace wmq::tool {

class Unpacker;

class Input {
 public:
  enum class Trouble {
    none,
    system,  // the file could not be opened or read
    damaged  // packed content is broken or cut short
  };

  // "-" is standard input. Whether opening went well shows in trouble().
  explicit Input(const std::string &name);
  Input(const Input &) = delete;
  Input &operator=(const Input &) = delete;
  ~Input();

  // Whether the next read would wait for a pipe or a terminal.
  bool wouldWait() const;

  // Called before a read that has to wait for a pipe or a terminal, so that output need not wait with it.
  void beforeWaiting(std::function<void()> action) { onWait = std::move(action); }

  // Puts at most `room` bytes at `into`. Returns how many; 0 at the end and from the first trouble on.
  size_t read(char *into, size_t room);

  // Whether what was read so far had to be unpacked.
  bool isPacked() const { return unpacker != nullptr; }

  Trouble trouble() const { return kindOfTrouble; }
  const std::string &troubleText() const { return textOfTrouble; }

  // Bytes taken from the file, before unpacking.
  uint64_t bytesTaken() const { return taken; }

 private:
  size_t readRaw(char *into, size_t room);
  bool refill();
  void chooseUnpacker();
  void fail(Trouble kind, std::string text);

  int descriptor = -1;
  bool mayWait = false;
  bool ended = false;  // no more bytes come from the file
  bool chosen = false;
  uint64_t taken = 0;
  Trouble kindOfTrouble = Trouble::none;
  std::string textOfTrouble;
  std::function<void()> onWait;
  std::unique_ptr<Unpacker> unpacker;
  std::unique_ptr<char[]> buffer;  // raw bytes not yet handed on: [next, end)
  size_t next = 0;
  size_t end = 0;
};

}  // namespace wmq::tool

#endif
