// Reading: a line in memory to a full record, and its release.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>

#include "peers.h"
#include "suites.h"

namespace wmq::bench {
namespace {

struct Peer {
  const char *name;
  Reader (*make)(const eventRecord &sample);
};

Reader ownReader(const eventRecord &sample) {
  auto line = std::make_shared<std::string>(lineOf(sample));
  return [line] { return Record(wmq_readstreamlineMT(line->c_str())); };
}

constexpr Peer kPeers[] = {
    {"wmqstream", ownReader},
    {"simdjson_ondemand", simdjsonOnDemandReader},
    {"simdjson_tree", simdjsonTreeReader},
    {"rapidjson_insitu", rapidjsonInSituReader},
    {"protobuf", protobufReader},
    {"capnproto", capnprotoReader},
    {"sscanf", sscanfReader},
};

void report(benchmark::State &state, size_t bytes) {
  state.SetBytesProcessed(static_cast<int64_t>(bytes) * state.iterations());
}

void addPeers(const std::string &name, const std::shared_ptr<eventRecord> &sample) {
  const std::string line = lineOf(*sample);
  for (const Peer &peer : kPeers) {
    const Reader reader = peer.make(*sample);
    // All fill the same members, or they could not be compared.
    if (lineOf(*reader()) != line)
      throw std::runtime_error(std::string(peer.name) + " reads another " + name);
    benchmark::RegisterBenchmark(("read/" + name + '/' + peer.name).c_str(),
                                 [reader, size = line.size()](benchmark::State &state) {
                                   for (auto _ : state) benchmark::DoNotOptimize(reader());
                                   report(state, size);
                                 });
  }
}

void addOwn(const std::string &name, const std::shared_ptr<std::string> &line) {
  benchmark::RegisterBenchmark(("read/" + name + "/wmqstream").c_str(), [line](benchmark::State &state) {
    for (auto _ : state) benchmark::DoNotOptimize(Record(wmq_readstreamlineMT(line->c_str())));
    report(state, line->size());
  });
}

// The blocks of a record and nothing else: what no reader that fills the structures can do without.
void addAllocation(const eventRecord &sample) {
  benchmark::RegisterBenchmark("read/JOB_FINISH/malloc_free",
                               [sizes = blocksOf(sample)](benchmark::State &state) {
                                 std::vector<void *> blocks(sizes.size());
                                 for (auto _ : state) {
                                   for (size_t i = 0; i < sizes.size(); ++i) {
                                     blocks[i] = std::malloc(sizes[i]);
                                     benchmark::DoNotOptimize(blocks[i]);
                                   }
                                   for (void *block : blocks) std::free(block);
                                 }
                               });
}

void addThreads(const eventRecord &sample) {
  auto line = std::make_shared<std::string>(lineOf(sample));
  for (const int threads : {1, 2})
    benchmark::RegisterBenchmark("read/JOB_FINISH/threads",
                                 [line](benchmark::State &state) {
                                   for (auto _ : state)
                                     benchmark::DoNotOptimize(Record(wmq_readstreamlineMT(line->c_str())));
                                   state.SetItemsProcessed(state.iterations());
                                   report(state, line->size());
                                 })
        ->Threads(threads)
        ->UseRealTime();
}

// A stream of the record's lines, in a file for as long as the program runs.
class StreamFile {
 public:
  StreamFile(const std::string &line, int count) : numLines(count) {
    const int descriptor = mkstemp(path);
    if (descriptor < 0) throw std::runtime_error("no temporary file");
    close(descriptor);
    std::ofstream file(path);
    for (int i = 0; i < count; ++i) file << line << '\n';
    size = static_cast<size_t>(file.tellp());
  }
  ~StreamFile() { unlink(path); }
  StreamFile(const StreamFile &) = delete;
  StreamFile &operator=(const StreamFile &) = delete;

  char path[32] = "/dev/shm/wmq-bench-XXXXXX";
  int numLines;
  size_t size = 0;
};

void addFile(const eventRecord &sample) {
  const std::string line = lineOf(sample);
  auto file = std::make_shared<StreamFile>(line, 20000);
  benchmark::RegisterBenchmark("file/JOB_FINISH/wmqstream", [file](benchmark::State &state) {
    streamParams params{};
    params.fileName = file->path;
    for (auto _ : state) {
      wmq_openstream(&params);
      int lineNum = 0;
      while (wmq_readstream(&lineNum) != nullptr) {
      }
      wmq_closestream();
      if (lineNum != file->numLines + 1) throw std::runtime_error("records are missing");
    }
    state.SetItemsProcessed(state.iterations() * file->numLines);
    report(state, file->size);
  });
  // As many bytes, and not one line again and again, which would never leave the processor's first cache.
  benchmark::RegisterBenchmark("file/JOB_FINISH/lines_in_memory", [file, line](benchmark::State &state) {
    const size_t lineBytes = line.size() + 1;
    std::vector<char> lines;
    for (int i = 0; i < file->numLines; ++i)
      lines.insert(lines.end(), line.c_str(), line.c_str() + lineBytes);
    for (auto _ : state)
      for (size_t at = 0; at < lines.size(); at += lineBytes)
        benchmark::DoNotOptimize(Record(wmq_readstreamlineMT(lines.data() + at)));
    state.SetItemsProcessed(state.iterations() * file->numLines);
    report(state, file->size);
  });
  benchmark::RegisterBenchmark("file/JOB_FINISH/getline", [file](benchmark::State &state) {
    for (auto _ : state) {
      FILE *input = std::fopen(file->path, "r");
      char *text = nullptr;
      size_t capacity = 0;
      while (getline(&text, &capacity, input) >= 0) benchmark::DoNotOptimize(text);
      std::free(text);
      std::fclose(input);
    }
    report(state, file->size);
  });
  benchmark::RegisterBenchmark("file/JOB_FINISH/memchr", [file](benchmark::State &state) {
    std::vector<char> bytes(file->size);
    for (auto _ : state) {
      FILE *input = std::fopen(file->path, "r");
      const size_t size = std::fread(bytes.data(), 1, bytes.size(), input);
      std::fclose(input);
      for (const char *at = bytes.data(), *end = at + size; at != nullptr && at != end;) {
        at = static_cast<const char *>(std::memchr(at, '\n', static_cast<size_t>(end - at)));
        benchmark::DoNotOptimize(at);
        if (at != nullptr) ++at;
      }
    }
    report(state, file->size);
  });
}

}  // namespace

void addReading() {
  const auto share = [](Record record) { return std::shared_ptr<eventRecord>(std::move(record)); };
  const auto finish = share(jobFinish());
  addPeers("JOB_FINISH", finish);
  addPeers("JOB_NEW", share(jobNew()));
  addPeers("JOB_STATUS", share(jobStatus()));
  addAllocation(*finish);
  addThreads(*finish);
  addFile(*finish);
  addOwn("JOB_FINISH2", std::make_shared<std::string>(lineOf(*jobFinish2())));
  for (const int32_t hosts : {10, 1000, 100000, 1000000})
    addOwn("JOB_START_" + std::to_string(hosts), std::make_shared<std::string>(lineOf(*jobStart(hosts))));
}

}  // namespace wmq::bench
