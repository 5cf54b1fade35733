#include "times.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cstdio>

namespace wmq::tool {

namespace {

// Takes what it is asked for off the front of a text.
struct Scanner {
  std::string_view rest;

  bool character(std::string_view oneOf) {
    if (rest.empty() || oneOf.find(rest.front()) == std::string_view::npos) return false;
    rest.remove_prefix(1);
    return true;
  }

  // Exactly `digits` of them, up to `most`.
  std::optional<int> number(size_t digits, int most) {
    if (rest.size() < digits) return std::nullopt;
    int value = 0;
    for (char c : rest.substr(0, digits)) {
      if (c < '0' || c > '9') return std::nullopt;
      value = 10 * value + (c - '0');
    }
    if (value > most) return std::nullopt;
    rest.remove_prefix(digits);
    return value;
  }
};

std::optional<int64_t> scanDate(Scanner &scan, bool &extended) {
  std::optional<int> year = scan.number(4, 9999);
  if (!year) return std::nullopt;
  extended = scan.character("-");
  std::optional<int> month = scan.number(2, 12);
  if (!month || (extended && !scan.character("-"))) return std::nullopt;
  std::optional<int> day = scan.number(2, 31);
  if (!day) return std::nullopt;
  std::chrono::year_month_day date{std::chrono::year(*year),
                                   std::chrono::month(static_cast<unsigned>(*month)),
                                   std::chrono::day(static_cast<unsigned>(*day))};
  if (!date.ok()) return std::nullopt;
  return std::chrono::sys_days(date).time_since_epoch().count() * int64_t{86400};
}

// Minutes and seconds may be left out. 24:00:00 is the end of a day, second 60 a leap second.
std::optional<int64_t> scanClock(Scanner &scan, bool extended) {
  std::optional<int> hour = scan.number(2, 24);
  if (!hour) return std::nullopt;
  int minute = 0;
  int second = 0;
  auto unitFollows = [&] {
    if (extended) return scan.character(":");
    return !scan.rest.empty() && scan.rest.front() >= '0' && scan.rest.front() <= '9';
  };
  if (unitFollows()) {
    std::optional<int> value = scan.number(2, 59);
    if (!value) return std::nullopt;
    minute = *value;
    if (unitFollows()) {
      value = scan.number(2, 60);
      if (!value) return std::nullopt;
      second = *value;
    }
  }
  if (*hour == 24 && (minute != 0 || second != 0)) return std::nullopt;
  return *hour * int64_t{3600} + minute * int64_t{60} + second;
}

// Seconds east of Greenwich.
std::optional<int64_t> scanZone(Scanner &scan) {
  if (scan.character("Zz")) return 0;
  bool west = !scan.rest.empty() && scan.rest.front() == '-';
  if (!scan.character("+-")) return std::nullopt;
  std::optional<int> hours = scan.number(2, 23);
  if (!hours) return std::nullopt;
  std::optional<int> minutes = 0;
  if (scan.character(":") || !scan.rest.empty()) minutes = scan.number(2, 59);
  if (!minutes) return std::nullopt;
  int64_t offset = *hours * int64_t{3600} + *minutes * int64_t{60};
  return west ? -offset : offset;
}

}  // namespace

std::optional<int64_t> parseTime(std::string_view text, std::string &why) {
  int64_t seconds = 0;
  auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
  if (error == std::errc() && stop == text.data() + text.size()) return seconds;

  auto refuse = [&](const char *reason) {
    why = reason;
    return std::nullopt;
  };
  Scanner scan{text};
  bool extended = false;
  std::optional<int64_t> date = scanDate(scan, extended);
  if (!date) return refuse("neither seconds since 1970 nor a date such as 2023-11-14T22:13:20Z");
  if (!scan.character("Tt ")) return refuse("a time of day is missing, such as T22:13:20Z");
  std::optional<int64_t> clock = scanClock(scan, extended);
  if (!clock) return refuse("the time of day is malformed; it looks like 22:13:20");
  if (scan.rest.empty()) return refuse("the time zone is missing: add Z or an offset such as +01:00");
  std::optional<int64_t> zone = scanZone(scan);
  if (!zone || !scan.rest.empty()) return refuse("the time zone is malformed; it looks like Z or +01:00");
  return *date + *clock - *zone;
}

std::string timeText(int64_t seconds) {
  std::chrono::sys_seconds point{std::chrono::seconds(seconds)};
  auto day = std::chrono::floor<std::chrono::days>(point);
  std::chrono::year_month_day date(day);
  std::chrono::hh_mm_ss clock(point - day);
  std::array<char, 48> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02dZ", static_cast<int>(date.year()),
                static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                static_cast<int>(clock.seconds().count()));
  return text.data();
}

}  // namespace wmq::tool
