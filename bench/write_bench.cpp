// Writing: a record to the file, with a flush each time.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "peers.h"
#include "places.h"
#include "suites.h"

namespace wmq::bench {
namespace {

// Files are made anew each time: nothing grows beyond one run.
std::vector<Place> places() { return {onDisk("written"), inMemory("written"), {"null", "/dev/null"}}; }

class Descriptor {
 public:
  explicit Descriptor(const Place &place) : place_(place) {
    number = open(place.path.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
    if (number < 0) throw std::runtime_error("cannot open " + place.path);
  }
  ~Descriptor() {
    close(number);
    if (place_.path != "/dev/null") unlink(place_.path.c_str());
  }
  Descriptor(const Descriptor &) = delete;
  Descriptor &operator=(const Descriptor &) = delete;

  void put(std::string_view bytes) const {
    if (write(number, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()))
      throw std::runtime_error("cannot write");
    rewindLarge(bytes.size());
  }

  int number;

 private:
  // A file of gigabytes would measure the disk.
  void rewindLarge(size_t bytes) const {
    written_ += bytes;
    if (written_ < size_t{64} << 20) return;
    written_ = 0;
    if (ftruncate(number, 0) != 0 && place_.path != "/dev/null") throw std::runtime_error("cannot truncate");
  }

  const Place place_;
  mutable size_t written_ = 0;
};

// The stream, held as short as the other writers' file is.
class OpenStream {
 public:
  explicit OpenStream(const Place &place) : path_(place.path), isFile_(place.path != "/dev/null") {
    streamParams params{};
    params.fileName = path_.data();
    if (wmq_openstream(&params) != 0) throw std::runtime_error("cannot open " + path_);
  }
  ~OpenStream() {
    wmq_closestream();
    if (isFile_) unlink(path_.c_str());
  }
  OpenStream(const OpenStream &) = delete;
  OpenStream &operator=(const OpenStream &) = delete;

  void took(size_t bytes) {
    written_ += bytes;
    if (written_ < size_t{64} << 20 || !isFile_) return;
    written_ = 0;
    if (truncate(path_.c_str(), 0) != 0) throw std::runtime_error("cannot truncate");
  }

 private:
  std::string path_;
  bool isFile_;
  size_t written_ = 0;
};

using Shared = std::shared_ptr<eventRecord>;

void add(const std::string &name, const char *how, const Place &place,
         const std::function<void(benchmark::State &)> &run) {
  benchmark::RegisterBenchmark(("write/" + name + '/' + place.name + '/' + how).c_str(), run);
}

void report(benchmark::State &state, size_t bytes) {
  state.SetBytesProcessed(static_cast<int64_t>(bytes) * state.iterations());
}

void addFormatter(const std::string &name, const char *how, const Place &place, const Shared &record,
                  Formatter (*make)(const eventRecord &)) {
  add(name, how, place, [=](benchmark::State &state) {
    const Descriptor file(place);
    const Formatter format = make(*record);
    for (auto _ : state) file.put(format());
    report(state, format().size());
  });
}

void addOwn(const std::string &name, const Place &place, const Shared &record) {
  add(name, "wmqstream", place, [=](benchmark::State &state) {
    const size_t size = lineOf(*record).size() + 1;
    OpenStream stream(place);
    for (auto _ : state) {
      if (wmq_writestream(record.get()) != 0) throw std::runtime_error(wmq_errdetail());
      stream.took(size);
    }
    report(state, size);
  });
}

void addWriters(const std::string &name, const Place &place, const Shared &record) {
  addOwn(name, place, record);
  add(name, "bare_write", place, [=](benchmark::State &state) {
    const std::string line = lineOf(*record) + '\n';
    const Descriptor file(place);
    for (auto _ : state) file.put(line);
    report(state, line.size());
  });
  add(name, "fprintf", place, [=](benchmark::State &state) {
    const size_t size = lineOf(*record).size() + 1;
    const Descriptor file(place);
    FILE *stream = fdopen(dup(file.number), "a");
    for (auto _ : state) {
      printRecord(stream, *record);
      std::fflush(stream);
      file.put({});
    }
    std::fclose(stream);
    report(state, size);
  });
  addFormatter(name, "fmt", place, record, fmtFormatter);
  addFormatter(name, "rapidjson", place, record, rapidjsonFormatter);
  addFormatter(name, "protobuf", place, record, protobufFormatter);
  if (place.path == "/dev/null") return;  // spdlog wants a file of its own
  add(name, "spdlog", place, [=](benchmark::State &state) {
    const Formatter format = fmtFormatter(*record);
    const std::string path = place.path + ".spdlog";
    {
      spdlog::logger logger("bench", std::make_shared<spdlog::sinks::basic_file_sink_st>(path));
      logger.set_pattern("%v");
      logger.flush_on(spdlog::level::info);
      for (auto _ : state) {
        std::string_view line = format();
        line.remove_suffix(1);
        logger.info(line);
      }
    }
    unlink(path.c_str());
    report(state, format().size());
  });
}

void addBatch(const Place &place, const Shared &record) {
  add("JOB_STATUS", "batch", place, [=](benchmark::State &state) {
    const size_t size = lineOf(*record).size() + 1;
    const std::vector<eventRecord *> records(1000, record.get());
    OpenStream stream(place);
    for (auto _ : state) {
      if (wmq_writestreambatch(records.data(), records.size(), nullptr) != 0)
        throw std::runtime_error(wmq_errdetail());
      stream.took(records.size() * size);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(records.size()));
    report(state, records.size() * size);
  });
}

}  // namespace

void addWriting() {
  const Shared finish = jobFinish();
  const Shared status = jobStatus();
  for (const Place &place : places()) {
    addWriters("JOB_FINISH", place, finish);
    addWriters("JOB_NEW", place, jobNew());
    addWriters("JOB_STATUS", place, status);
    addBatch(place, status);
  }
  for (const int32_t hosts : {10, 1000, 100000, 1000000})
    addOwn("JOB_START_" + std::to_string(hosts), places().back(), jobStart(hosts));
}

}  // namespace wmq::bench
