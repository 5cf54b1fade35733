#include "unpacker.h"

#include <zlib.h>
#include <zstd.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <new>

namespace wmq::tool {

namespace {

class Gunzip final : public Unpacker {
 public:
  Gunzip() {
    // 15 is the largest window, 16 more asks for the gzip format and its checksum.
    if (inflateInit2(&state, 15 + 16) != Z_OK) throw std::bad_alloc();
  }
  Gunzip(const Gunzip &) = delete;
  Gunzip &operator=(const Gunzip &) = delete;
  ~Gunzip() override { inflateEnd(&state); }

  Step step(const char *from, size_t size, char *into, size_t room) override {
    Step done;
    if (betweenMembers) {
      // Tapes and block devices leave zeros behind the last member.
      while (done.consumed < size && from[done.consumed] == '\0') ++done.consumed;
      padded = padded || done.consumed > 0;
      if (done.consumed == size) return done;
      if (padded) {
        done.fault = "there is something else behind the gzip data";
        return done;
      }
      inflateReset(&state);
      betweenMembers = false;
    }
    const auto *input = reinterpret_cast<const Bytef *>(from + done.consumed);
    state.next_in = const_cast<Bytef *>(input);
    state.avail_in = clamp(size - done.consumed);
    state.next_out = reinterpret_cast<Bytef *>(into);
    state.avail_out = clamp(room);
    uInt offered = state.avail_in;
    uInt space = state.avail_out;
    int result = inflate(&state, Z_NO_FLUSH);
    done.consumed += offered - state.avail_in;
    done.produced = space - state.avail_out;
    if (result == Z_STREAM_END) {
      betweenMembers = true;
    } else if (result == Z_MEM_ERROR) {
      throw std::bad_alloc();
    } else if (result != Z_OK && result != Z_BUF_ERROR) {
      done.fault = state.msg ? state.msg : "the gzip data is damaged";
    }
    return done;
  }

  bool complete() const override { return betweenMembers; }
  const char *name() const override { return "gzip"; }

 private:
  static uInt clamp(size_t size) { return static_cast<uInt>(std::min<size_t>(size, INT_MAX)); }

  z_stream state{};
  bool betweenMembers = false;
  bool padded = false;
};

class Unzstd final : public Unpacker {
 public:
  Unzstd() : state(ZSTD_createDStream()) {
    if (!state) throw std::bad_alloc();
    ZSTD_initDStream(state);
  }
  Unzstd(const Unzstd &) = delete;
  Unzstd &operator=(const Unzstd &) = delete;
  ~Unzstd() override { ZSTD_freeDStream(state); }

  Step step(const char *from, size_t size, char *into, size_t room) override {
    // Asked again behind the last frame, the library would wait for another one.
    if (betweenFrames && size == 0) return {};
    ZSTD_inBuffer input{from, size, 0};
    ZSTD_outBuffer output{into, room, 0};
    size_t result = ZSTD_decompressStream(state, &output, &input);
    Step done{input.pos, output.pos, nullptr};
    if (ZSTD_isError(result)) {
      done.fault = ZSTD_getErrorName(result);
    } else {
      betweenFrames = result == 0;
    }
    return done;
  }

  bool complete() const override { return betweenFrames; }
  const char *name() const override { return "zstd"; }

 private:
  ZSTD_DStream *state;
  bool betweenFrames = false;
};

}  // namespace

std::unique_ptr<Unpacker> unpackerFor(const char *bytes, size_t size) {
  if (size >= 2 && std::memcmp(bytes, "\x1f\x8b", 2) == 0) return std::make_unique<Gunzip>();
  if (size >= 4) {
    bool frame = std::memcmp(bytes, "\x28\xb5\x2f\xfd", 4) == 0;
    // Parallel compressors put a skippable frame first: 0x184D2A50 to 0x184D2A5F, low byte first.
    bool skippable = (bytes[0] & 0xf0) == 0x50 && std::memcmp(bytes + 1, "\x2a\x4d\x18", 3) == 0;
    if (frame || skippable) return std::make_unique<Unzstd>();
  }
  return nullptr;
}

}  // namespace wmq::tool
