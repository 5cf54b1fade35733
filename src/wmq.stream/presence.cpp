#include "wmq.stream/presence.h"

#include <bit>
#include <limits>

namespace wmq {

// A gate that is open is open at every smaller threshold, so that halving finds the last one. The bits of
// floats from 0 on are in their order.
static float lastOpen(wmqGate kind, float version) {
  if (!gateOpen(Gate{kind, 0}, version)) return -1;
  uint32_t open = 0;
  auto closed = std::bit_cast<uint32_t>(std::numeric_limits<float>::infinity());
  const auto look = [&](uint32_t bits) {
    if (bits <= open || bits >= closed) return;
    (gateOpen(Gate{kind, std::bit_cast<float>(bits)}, version) ? open : closed) = bits;
  };
  // It is the version, give or take its tolerance of 84 to 168 floats.
  constexpr uint32_t beyondTolerance = 256;
  const auto itself = std::bit_cast<uint32_t>(version);
  look(itself - beyondTolerance);
  look(itself + beyondTolerance);
  while (closed - open > 1) look(open + (closed - open) / 2);
  return std::bit_cast<float>(open);
}

const OpenGates &openGatesOf(float version) {
  static thread_local constinit float last = 0;
  static thread_local constinit OpenGates open{};
  if (version != last) {
    last = version;
    open = {lastOpen(WMQ_GATE_AT_LEAST, version), lastOpen(WMQ_GATE_ABOVE, version)};
  }
  return open;
}

}  // namespace wmq
