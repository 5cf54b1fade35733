// Counts the finished jobs of each queue in a stream file, and shows the last one as JSON.
//
//   c++ -std=c++17 jobs_per_queue.cpp $(pkg-config --cflags --libs wmqjson) -o jobs_per_queue
//   ./jobs_per_queue ./events
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <string>

#include "wmq/json.h"
#include "wmq/wmq.h"

struct Release {
  void operator()(eventRecord *record) const {
    wmq_freekept(record);
    wmq_freelogrec(record);
  }
  void operator()(char *text) const { std::free(text); }
};
using Record = std::unique_ptr<eventRecord, Release>;

static std::unique_ptr<char, Release> json(const eventRecord &record) {
  char *text = nullptr;
  size_t capacity = 0;
  wmq_record2json(&record, 1, &text, &capacity);
  return std::unique_ptr<char, Release>(text);
}

int main(int argc, char **argv) {
  std::ifstream stream(argc > 1 ? argv[1] : "./events");
  if (!stream) {
    std::cerr << "cannot read the stream\n";
    return 1;
  }

  std::map<std::string, int> jobs;
  Record last;
  int lineNum = 0;
  for (std::string line; std::getline(stream, line);) {
    ++lineNum;
    Record record(wmq_readstreamlineMT(line.c_str()));
    if (!record) {
      std::cerr << "line " << lineNum << ": " << wmq_errdetail() << '\n';
    } else if (record->type == EVENT_JOB_FINISH) {
      ++jobs[record->eventLog.jobFinishLog.queue];
      last = std::move(record);
    }
  }

  for (const auto &[queue, count] : jobs) std::printf("%-20s %6d\n", queue.c_str(), count);
  if (const auto text = last ? json(*last) : nullptr) std::puts(text.get());
  return 0;
}
