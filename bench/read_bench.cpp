// Reading: a line in memory to a full record, and its release.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>

#include "peers.h"
#include "places.h"
#include "suites.h"

namespace wmq::bench {
namespace {

using namespace std::string_literals;

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
  StreamFile(const Place &place, const std::string &line, int count) : path(place.path), numLines(count) {
    std::ofstream file(path);
    for (int i = 0; i < count; ++i) file << line << '\n';
    size = static_cast<size_t>(file.tellp());
    if (!file.flush()) throw std::runtime_error("cannot write " + path);
    readAhead();
  }
  ~StreamFile() { unlink(path.c_str()); }
  StreamFile(const StreamFile &) = delete;
  StreamFile &operator=(const StreamFile &) = delete;

  std::string path;
  int numLines;
  size_t size = 0;

 private:
  // Has the system forget the file and read it again, in pages as large as it likes: who reads streams does
  // so long after they were written. What has just been written bit by bit lies in small pages, and takes as
  // long to copy as from /dev/shm, which cannot forget.
  void readAhead() const {
    const int file = open(path.c_str(), O_RDONLY);
    if (file < 0 || fsync(file) != 0 || posix_fadvise(file, 0, 0, POSIX_FADV_DONTNEED) != 0)
      throw std::runtime_error("cannot bring to the disk " + path);
    std::vector<char> block(size_t{128} << 10);
    while (read(file, block.data(), block.size()) > 0) {
    }
    close(file);
  }
};

void addFile(const Place &place, const std::string &line, int count) {
  auto file = std::make_shared<StreamFile>(place, line, count);
  const auto add = [&](const char *reader, const auto &readAll) {
    benchmark::RegisterBenchmark(("file/JOB_FINISH/"s + place.name + '/' + reader).c_str(),
                                 [file, readAll](benchmark::State &state) {
                                   for (auto _ : state) readAll(*file);
                                   state.SetItemsProcessed(state.iterations() * file->numLines);
                                   report(state, file->size);
                                 });
  };
  add("wmqstream", [](StreamFile &stream) {
    streamParams params{};
    params.fileName = stream.path.data();
    wmq_openstream(&params);
    int lineNum = 0;
    while (wmq_readstream(&lineNum) != nullptr) {
    }
    wmq_closestream();
    if (lineNum != stream.numLines + 1) throw std::runtime_error("records are missing");
  });
  add("getline", [](const StreamFile &stream) {
    FILE *input = std::fopen(stream.path.c_str(), "r");
    char *text = nullptr;
    size_t capacity = 0;
    while (getline(&text, &capacity, input) >= 0) benchmark::DoNotOptimize(text);
    std::free(text);
    std::fclose(input);
  });
  // What no reader of lines can do without: the bytes, block by block, and where the lines end.
  add("memchr", [](const StreamFile &stream) {
    std::vector<char> block(size_t{128} << 10);
    const int input = open(stream.path.c_str(), O_RDONLY);
    for (ssize_t got = 0; (got = read(input, block.data(), block.size())) > 0;)
      for (const char *at = block.data(), *end = at + got; at != nullptr && at != end;) {
        at = static_cast<const char *>(std::memchr(at, '\n', static_cast<size_t>(end - at)));
        benchmark::DoNotOptimize(at);
        if (at != nullptr) ++at;
      }
    close(input);
  });
}

// As many bytes as in the files, and not one line again and again, which would never leave the processor's
// first cache.
void addLinesInMemory(const std::string &line, int count) {
  benchmark::RegisterBenchmark("file/JOB_FINISH/lines_in_memory", [line, count](benchmark::State &state) {
    const size_t lineBytes = line.size() + 1;
    std::vector<char> lines;
    for (int i = 0; i < count; ++i) lines.insert(lines.end(), line.c_str(), line.c_str() + lineBytes);
    for (auto _ : state)
      for (size_t at = 0; at < lines.size(); at += lineBytes)
        benchmark::DoNotOptimize(Record(wmq_readstreamlineMT(lines.data() + at)));
    state.SetItemsProcessed(state.iterations() * count);
    report(state, lines.size());
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
  const std::string line = lineOf(*finish);
  constexpr int numLines = 20000;
  addLinesInMemory(line, numLines);
  for (const Place &place : {onDisk("read"), inMemory("read")}) addFile(place, line, numLines);
  addOwn("JOB_FINISH2", std::make_shared<std::string>(lineOf(*jobFinish2())));
  for (const int32_t hosts : {10, 1000, 100000, 1000000})
    addOwn("JOB_START_" + std::to_string(hosts), std::make_shared<std::string>(lineOf(*jobStart(hosts))));
}

}  // namespace wmq::bench
