// Writers of a line as most would write them: one call of fprintf, or of fmt, for each field.
#include <fmt/format.h>

#include <cstdio>
#include <cstring>

#include "peers.h"

namespace wmq::bench {
namespace {

struct FprintfLine {
  FILE *file;

  void number(int64_t value) { std::fprintf(file, " %lld", static_cast<long long>(value)); }
  void fixed(float value, int precision) {
    std::fprintf(file, " %.*f", precision, static_cast<double>(value));
  }
  void real(double value) { std::fprintf(file, " %.15g", value); }
  void text(const char *value) {
    std::fputs(" \"", file);
    for (; *value != '\0'; ++value) {
      if (*value == '\n') {
        std::fputs("\"n", file);
      } else {
        if (*value == '"') std::putc('"', file);
        std::putc(*value, file);
      }
    }
    std::putc('"', file);
  }
};

struct FmtLine {
  fmt::memory_buffer buffer{};

  void number(int64_t value) { fmt::format_to(std::back_inserter(buffer), " {}", value); }
  void fixed(float value, int precision) {
    fmt::format_to(std::back_inserter(buffer), " {:.{}f}", value, precision);
  }
  void real(double value) { fmt::format_to(std::back_inserter(buffer), " {}", value); }
  void text(const char *value) {
    if (std::strpbrk(value, "\"\n") == nullptr) {
      fmt::format_to(std::back_inserter(buffer), " \"{}\"", value);
      return;
    }
    std::string escaped;
    for (; *value != '\0'; ++value) {
      if (*value == '"' || *value == '\n') escaped += '"';
      escaped += *value == '\n' ? 'n' : *value;
    }
    fmt::format_to(std::back_inserter(buffer), " \"{}\"", escaped);
  }
};

#define NUMBER(n, member) line.number(log.member);
#define REAL(n, member) line.fixed(log.member, 4);
#define TEXT(n, member) line.text(log.member);
#define NAME TEXT
#define USAGE(n, member) \
  for (const double value : valuesOf(log.member)) line.real(value);
#define NUMBERS(n, member) \
  for (const int32_t value : log.member) line.number(value);
#define TEXTS(n, count, member) \
  line.number(log.count);       \
  for (int32_t i = 0; i < log.count; ++i) line.text(log.member[i]);

void writeMembers(auto &line, const jobFinishLog &log) {
#include "job_finish_members.inc"
}
void writeMembers(auto &line, const jobNewLog &log) {
#include "job_new_members.inc"
}
void writeMembers(auto &line, const jobStatusLog &log) {
#include "job_status_members.inc"
}

}  // namespace

void printRecord(FILE *file, const eventRecord &record) {
  std::fprintf(file, "\"%s\" \"%s\" %d", wmq_typename(record.type), record.version, record.eventTime);
  FprintfLine line{file};
  withLog(record, [&](const auto &log) { writeMembers(line, log); });
  std::putc('\n', file);
}

Formatter fmtFormatter(const eventRecord &record) {
  auto line = std::make_shared<FmtLine>();
  return [line, &record]() -> std::string_view {
    line->buffer.clear();
    fmt::format_to(std::back_inserter(line->buffer), "\"{}\" \"{}\" {}", wmq_typename(record.type),
                   static_cast<const char *>(record.version), record.eventTime);
    withLog(record, [&](const auto &log) { writeMembers(*line, log); });
    line->buffer.push_back('\n');
    return {line->buffer.data(), line->buffer.size()};
  };
}

}  // namespace wmq::bench
