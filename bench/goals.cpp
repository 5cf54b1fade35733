// goals OUTPUT.json RUN.json...: the medians of runs of the benchmarks as a table, what the library is to
// reach and what it does, and both as JSON.
#include <rapidjson/document.h>
#include <rapidjson/istreamwrapper.h>
#include <rapidjson/ostreamwrapper.h>
#include <rapidjson/prettywriter.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <fstream>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

struct Measured {
  double nanoseconds = 0;  // of one iteration
  double bytesPerSecond = 0;
  double itemsPerSecond = 0;
  double peakKilobytes = 0;
};
using Results = std::map<std::string, Measured>;
using Repetitions = std::map<std::string, std::vector<Measured>>;

double numberOf(const rapidjson::Value &object, const char *name) {
  const auto found = object.FindMember(name);
  return found == object.MemberEnd() ? 0 : found->value.GetDouble();
}

double nanosecondsIn(const std::string &unit) {
  return unit == "s" ? 1e9 : unit == "ms" ? 1e6 : unit == "us" ? 1e3 : 1;
}

// Null for what holds no results.
rapidjson::Document runIn(const char *path) {
  std::ifstream file(path);
  rapidjson::IStreamWrapper stream(file);
  rapidjson::Document run;
  run.ParseStream(stream);
  if (run.HasParseError() || !run.IsObject() || !run.HasMember("benchmarks")) run.SetNull();
  return run;
}

void addRun(const rapidjson::Document &run, Repetitions &repetitions) {
  for (const rapidjson::Value &entry : run["benchmarks"].GetArray()) {
    if (std::string(entry["run_type"].GetString()) != "iteration") continue;
    const double unit = nanosecondsIn(entry["time_unit"].GetString());
    // Time of the processor where one thread works: what others do on the machine does not count.
    const std::string name = entry["run_name"].GetString();
    const bool elapsed =
        name.find("real_time") != std::string::npos || name.find("manual_time") != std::string::npos;
    repetitions[name].push_back({unit * numberOf(entry, elapsed ? "real_time" : "cpu_time"),
                                 numberOf(entry, "bytes_per_second"), numberOf(entry, "items_per_second"),
                                 numberOf(entry, "peak_kilobytes")});
  }
}

double medianOf(const std::vector<Measured> &repetitions, double Measured::*quantity) {
  std::vector<double> values;
  for (const Measured &measured : repetitions) values.push_back(measured.*quantity);
  const auto middle = values.begin() + static_cast<ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  if (values.size() % 2 != 0) return *middle;
  return (*middle + *std::max_element(values.begin(), middle)) / 2;
}

Results medians(const Repetitions &repetitions) {
  Results results;
  for (const auto &[name, measured] : repetitions)
    for (const auto quantity : {&Measured::nanoseconds, &Measured::bytesPerSecond, &Measured::itemsPerSecond,
                                &Measured::peakKilobytes})
      results[name].*quantity = medianOf(measured, quantity);
  return results;
}

struct Goal {
  std::string figure;
  double bound;
  bool atLeast;
  std::string unit;
  std::optional<double> reached;

  bool isMet() const { return reached && (atLeast ? *reached >= bound : *reached <= bound); }
};

class Goals {
 public:
  explicit Goals(const Results &measured) : results(measured) {}

  // How many times the time of `other` is that of `own`.
  void times(bool atLeast, double bound, const std::string &figure, const std::string &dividend,
             const std::string &divisor) {
    add(figure, bound, atLeast, "times", ratio(dividend, divisor, &Measured::nanoseconds));
  }
  void rates(bool atLeast, double bound, const std::string &figure, const std::string &dividend,
             const std::string &divisor, double Measured::*rate) {
    add(figure, bound, atLeast, "times", ratio(dividend, divisor, rate));
  }
  void megabytes(double bound, const std::string &figure, const std::string &name) {
    const auto found = results.find(name);
    add(figure, bound, true, "MB/s",
        found == results.end() ? std::nullopt : std::optional(found->second.bytesPerSecond / 1e6));
  }
  void add(const std::string &figure, double bound, bool atLeast, const char *unit,
           std::optional<double> reached) {
    goals.push_back({figure, bound, atLeast, unit, reached});
  }

  std::optional<double> ratio(const std::string &dividend, const std::string &divisor,
                              double Measured::*quantity) const {
    const auto above = results.find(dividend);
    const auto below = results.find(divisor);
    if (above == results.end() || below == results.end()) return std::nullopt;
    return above->second.*quantity / (below->second.*quantity);
  }

  std::vector<Goal> goals;

 private:
  const Results &results;
};

std::vector<Goal> goalsOf(const Results &results) {
  Goals goals(results);
  const std::string read = "read/";
  for (const auto &[type, json, scanned] :
       {std::tuple{"JOB_FINISH", 2.2, 6.5}, std::tuple{"JOB_NEW", 2.2, 6.5},
        std::tuple{"JOB_STATUS", 2.0, 8.0}}) {
    const std::string own = read + type + "/wmqstream";
    goals.times(true, json, std::string("read ") + type + ", as fast as simdjson on demand",
                read + type + "/simdjson_ondemand", own);
    goals.times(true, scanned, std::string("read ") + type + ", as fast as the sscanf reader",
                read + type + "/sscanf", own);
  }
  goals.times(false, 1.6, "read JOB_FINISH, time of malloc and free alone", "read/JOB_FINISH/wmqstream",
              "read/JOB_FINISH/malloc_free");
  // The rate falls as the time of a byte grows.
  goals.rates(false, 1.2, "read, time of a byte at 1,000,000 hosts as at 1,000",
              "read/JOB_START_1000/wmqstream", "read/JOB_START_1000000/wmqstream", &Measured::bytesPerSecond);
  goals.rates(false, 1.2, "write, time of a byte at 1,000,000 hosts as at 1,000",
              "write/JOB_START_1000/null/wmqstream", "write/JOB_START_1000000/null/wmqstream",
              &Measured::bytesPerSecond);
  goals.rates(true, 1.85, "read JOB_FINISH, records of two threads as of one",
              "read/JOB_FINISH/threads/real_time/threads:2", "read/JOB_FINISH/threads/real_time/threads:1",
              &Measured::itemsPerSecond);
  goals.times(false, 1.15, "file on disk to records, time of lines in memory to records",
              "file/JOB_FINISH/disk/wmqstream", "file/JOB_FINISH/lines_in_memory");
  goals.times(false, 1.6, "write JOB_FINISH to disk, time of bare write(2)",
              "write/JOB_FINISH/disk/wmqstream", "write/JOB_FINISH/disk/bare_write");
  goals.times(false, 1.25, "write JOB_STATUS to disk, time of bare write(2)",
              "write/JOB_STATUS/disk/wmqstream", "write/JOB_STATUS/disk/bare_write");
  goals.times(false, 0.7, "write JOB_FINISH to disk, time of fmt", "write/JOB_FINISH/disk/wmqstream",
              "write/JOB_FINISH/disk/fmt");
  auto batch =
      goals.ratio("write/JOB_STATUS/shm/batch", "write/JOB_STATUS/shm/wmqstream", &Measured::nanoseconds);
  if (batch) *batch /= 1000;
  goals.add("batch of 1,000 JOB_STATUS on /dev/shm, time of a record as of one written alone", 0.3, false,
            "times", batch);
  goals.megabytes(1000, "wmq stats", "tool/stats/large/iterations:1/manual_time");
  // Grows as the samples of the same users do, up to a bound for each.
  goals.rates(false, 1.25, "wmq stats, peak memory for the whole stream as for its beginning",
              "tool/stats/large/iterations:1/manual_time", "tool/stats/small/iterations:1/manual_time",
              &Measured::peakKilobytes);
  goals.megabytes(300, "wmq decode", "tool/decode/large/iterations:1/manual_time");
  return goals.goals;
}

std::string timeText(double nanoseconds) {
  const auto [unit, length] = nanoseconds < 999.5     ? std::pair{"ns", 1.0}
                              : nanoseconds < 999.5e3 ? std::pair{"µs", 1e3}
                              : nanoseconds < 999.5e6 ? std::pair{"ms", 1e6}
                                                      : std::pair{"s", 1e9};
  char text[32];
  std::snprintf(text, sizeof text, "%.3g %s", nanoseconds / length, unit);
  return text;
}

// Without how it was measured.
std::string shortened(std::string name) {
  for (const std::string part : {"/iterations:1", "/manual_time", "/real_time", "threads:"})
    if (const size_t at = name.find(part); at != std::string::npos) name.erase(at, part.size());
  return name;
}

void printTable(const Results &results, const std::vector<Goal> &goals) {
  std::printf("| benchmark | median | MB/s | peak memory |\n|---|---:|---:|---:|\n");
  for (const auto &[name, measured] : results) {
    std::printf("| %s | %s | ", shortened(name).c_str(), timeText(measured.nanoseconds).c_str());
    if (measured.bytesPerSecond > 0) std::printf("%.0f ", measured.bytesPerSecond / 1e6);
    std::printf("|");
    if (measured.peakKilobytes > 0) std::printf(" %.1f MB", measured.peakKilobytes / 1e3);
    std::printf(" |\n");
  }
  std::printf("\n| figure | goal | reached | |\n|---|---:|---:|---|\n");
  for (const Goal &goal : goals) {
    std::printf("| %s | %s %g %s | ", goal.figure.c_str(), goal.atLeast ? "at least" : "at most", goal.bound,
                goal.unit.c_str());
    if (goal.reached)
      std::printf("%.*f | %s |\n", *goal.reached < 100 ? 2 : 0, *goal.reached,
                  goal.isMet() ? "met" : "missed");
    else
      std::printf("not measured | |\n");
  }
}

void writeJson(const std::string &path, const Results &results, const std::vector<Goal> &goals) {
  std::ofstream file(path);
  rapidjson::OStreamWrapper stream(file);
  rapidjson::PrettyWriter<rapidjson::OStreamWrapper> writer(stream);
  writer.StartObject();
  writer.Key("medians");
  writer.StartObject();
  for (const auto &[name, measured] : results) {
    writer.Key(name.c_str());
    writer.StartObject();
    writer.Key("nanoseconds");
    writer.Double(measured.nanoseconds);
    writer.Key("bytesPerSecond");
    writer.Double(measured.bytesPerSecond);
    writer.Key("peakKilobytes");
    writer.Double(measured.peakKilobytes);
    writer.EndObject();
  }
  writer.EndObject();
  writer.Key("goals");
  writer.StartArray();
  for (const Goal &goal : goals) {
    writer.StartObject();
    writer.Key("figure");
    writer.String(goal.figure.c_str());
    writer.Key(goal.atLeast ? "atLeast" : "atMost");
    writer.Double(goal.bound);
    writer.Key("unit");
    writer.String(goal.unit.c_str());
    writer.Key("reached");
    if (goal.reached && std::isfinite(*goal.reached))
      writer.Double(*goal.reached);
    else
      writer.Null();
    writer.Key("met");
    writer.Bool(goal.isMet());
    writer.EndObject();
  }
  writer.EndArray();
  writer.EndObject();
}

}  // namespace

int main(int argc, char **argv) {
  if (argc < 3) {
    std::fprintf(stderr, "usage: goals OUTPUT.json RUN.json...\n");
    return 2;
  }
  Repetitions repetitions;
  for (int i = 2; i < argc; ++i) {
    const rapidjson::Document run = runIn(argv[i]);
    if (run.IsNull()) {
      std::fprintf(stderr, "goals: %s holds no results\n", argv[i]);
      return 1;
    }
    addRun(run, repetitions);
  }
  const Results results = medians(repetitions);
  const std::vector<Goal> goals = goalsOf(results);
  printTable(results, goals);
  writeJson(argv[1], results, goals);
}
