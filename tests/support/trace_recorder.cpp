#include "support/trace_recorder.h"

namespace wmq::testing {

static TraceRecorder *current = nullptr;

TraceRecorder::TraceRecorder() { current = this; }

TraceRecorder::~TraceRecorder() { current = nullptr; }

int TraceRecorder::record(const char *message) {
  if (current == nullptr) return 0;
  current->messages.emplace_back(message);
  current->lastText = message;
  if (current->whenReported) current->whenReported();
  return -1;  // streams take no notice of it
}

}  // namespace wmq::testing
