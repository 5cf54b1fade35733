#include "progress.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "terminal.h"
#include "text.h"

namespace wmq::tool {

namespace {

// Work that ends sooner needs no bar.
constexpr auto quietTime = std::chrono::milliseconds(700);
constexpr auto redrawTime = std::chrono::milliseconds(200);

std::string megabytes(double bytes) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.1f MB", bytes / 1e6);
  return text.data();
}

}  // namespace

uint64_t totalSize(const std::vector<std::string> &files) {
  uint64_t total = 0;
  for (const std::string &name : files) {
    struct stat status {};
    int result = name == "-" ? fstat(STDIN_FILENO, &status) : stat(name.c_str(), &status);
    if (result != 0) continue;  // opening it will tell
    if (!S_ISREG(status.st_mode)) return 0;
    total += static_cast<uint64_t>(status.st_size);
  }
  return total;
}

std::string progressText(uint64_t done, uint64_t total, double seconds) {
  double rate = seconds > 0 ? static_cast<double>(done) / seconds : 0;
  if (total == 0) return megabytes(static_cast<double>(done)) + "  " + megabytes(rate) + "/s";

  // A file may grow while it is read.
  double share = std::min(1.0, static_cast<double>(done) / static_cast<double>(total));
  constexpr size_t width = 30;
  auto filled = static_cast<size_t>(share * width);
  std::array<char, 16> percent{};
  std::snprintf(percent.data(), percent.size(), "%3d%%", static_cast<int>(share * 100));
  std::string text = percent.data();
  text += " [" + std::string(filled, '#') + std::string(width - filled, '.') + "] " + megabytes(rate) + "/s";
  if (rate > 0) {
    double left = static_cast<double>(total - std::min(done, total)) / rate;
    text += ", " + clockText(std::llround(std::min(left, 1e9))) + " left";
  }
  return text;
}

Progress::Progress(const std::vector<std::string> &files, bool usesOutput) {
  shown = isCapableTerminal(STDERR_FILENO) && !(usesOutput && isatty(STDOUT_FILENO));
  if (shown) total = totalSize(files);
  begin = Clock::now();
}

void Progress::draw(uint64_t bytesDone, Clock::time_point now) {
  if (now - begin < quietTime || now - lastDrawn < redrawTime) return;
  std::chrono::duration<double> elapsed = now - begin;
  std::string text = "\r" + progressText(doneBefore + bytesDone, total, elapsed.count()) + "\x1b[K";
  std::fwrite(text.data(), 1, text.size(), stderr);
  std::fflush(stderr);
  drawn = true;
  lastDrawn = now;
}

void Progress::erase() {
  if (!drawn) return;
  std::fputs("\r\x1b[K", stderr);
  std::fflush(stderr);
  drawn = false;
}

}  // namespace wmq::tool
