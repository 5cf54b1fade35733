#include "hostile/hostile_lines.h"

#include "support/record_lines.h"

namespace wmq::testing {
namespace {

std::string repeated(const std::string &unit, size_t times) {
  std::string text;
  text.reserve(unit.size() * times);
  for (; times > 0; --times) text += unit;
  return text;
}

// Behind `beginning` a count, and as many units as make up the size.
std::string counted(const std::string &type, const std::string &beginning, const std::string &unit,
                    size_t bytes, const std::string &rest = "") {
  const size_t count = bytes / unit.size();
  return line(type, "10.1", beginning + std::to_string(count) + repeated(unit, count) + rest);
}

std::string start(size_t count, const std::string &hosts) {
  return line("JOB_START", "2.1", "7 1 2 3 1.0 " + std::to_string(count) + hosts);
}

std::string oneString(size_t bytes) {
  return line("CAL_NEW", "10.1", "5 9 \"" + std::string(bytes, 'x') + "\" \"b\" \"c\"");
}
std::string escapesOnly(size_t bytes) {
  return line("CAL_NEW", "10.1", "5 9 \"" + repeated("\"n", bytes / 2) + "\" \"b\" \"c\"");
}
std::string noClosingQuote(size_t bytes) {
  return line("CAL_NEW", "10.1", "5 9 \"" + std::string(bytes, 'x'));
}
std::string noQuote(size_t bytes) { return line("CAL_NEW", "10.1", "5 9 " + std::string(bytes, 'x')); }
std::string emptyStringsOnly(size_t bytes) {
  return line("CAL_NEW", "10.1", "5 9" + repeated(" \"\"", bytes / 3));
}
std::string typeName(size_t bytes) { return line(std::string(bytes, 'x'), "10.1", ""); }
std::string hostName(size_t bytes) {
  return line("HOST_CTRL", "10.1", "1 \"" + std::string(bytes, 'x') + "\" 0 \"root\" \"\"");
}
std::string blanksOnly(size_t bytes) { return line("LOG_SWITCH", "10.1", std::string(bytes, ' ')); }
std::string digitsOnly(size_t bytes) { return line("LOG_SWITCH", "10.1", std::string(bytes, '9')); }
std::string digitsOfReal(size_t bytes) {
  return line("JOB_STATUS", "2.1", "1 2 3 4 0." + std::string(bytes, '9') + " 6 0");
}
std::string entries(size_t bytes) {
  return counted("EVENT_ADRSV_FINISH", "1 2 3 \"\" \"\" \"\" \"\" 4 ", " \"\" 1", bytes, " \"\" \"\"");
}
std::string groups(size_t bytes) {
  return counted("JOB_STATUS", "1 2 3 4 5 6 0 7 8 9 \"\" 0 \"\" 0 0 0 ", " \"g\" 1 \"k\" \"v\"", bytes);
}
std::string submissionPairs(size_t bytes) {
  return counted(
      "JOB_FINISH",
      "1 2 0 4 5 6 7 8 \"u\" \"q\" \"\" \"\" \"\" \"h\" \"\" \"\" \"\" \"\" \"\" 0 0 64 1.0 \"\" \"\"" +
          repeated(" 0", 19) +
          " \"\" \"\" 0 1 \"\" \"\" 0 0 0 \"\" \"\" \"\" \"\" 0 \"\" 0 \"\" 0 \"\" \"\" \"\" \"\" 0 \"\" "
          "\"\" 0 \"\" ",
      " 1 \"\"", bytes, " 0 0 0 0 \"\" \"\" 0 \"\" 0 0 \"\" \"\" 0 \"\" 0 0 0 0");
}
std::string ranges(size_t bytes) { return counted("JOB_CLEAN", "1 2 ", " 1 2 3", bytes); }
std::string numbers(size_t bytes) { return counted("JOB_CHUNK", "", " 1", bytes, " 0 0"); }
std::string pairs(size_t bytes) { return counted("JOB_STATUS2", "7 ", " \"queue\" \"q\"", bytes); }
std::string unknownPairs(size_t bytes) { return counted("JOB_STARTLIMIT", "7 ", " \"x\" \"1\"", bytes); }
std::string affinityTexts(size_t bytes) {
  return counted("JOB_FINISH2", "7 ", " \"affinityAllocInfo\" \"h:0-1048575\"", bytes);
}
std::string gpuPairs(size_t bytes) {
  const std::string unit = " \"k\" \"v\"";
  return line("JOB_FINISH2", "10.1",
              "7 1 \"numGPURusages\" \"1\" \"GPUhostname\" \"h\" \"numGPUkvs\" \"" +
                  std::to_string(bytes / unit.size()) + '"' + repeated(unit, bytes / unit.size()));
}

}  // namespace

std::string lineOfHosts(size_t count) { return start(count, repeated(" \"h\"", count)); }

std::string lineOfTimes(const std::string &times) { return start(1, " \"" + times + "*host\""); }

const std::vector<HostileLine> &hostileLines() {
  static const std::vector<HostileLine> all = {
      {"one-string", oneString, 0},
      {"escapes-only", escapesOnly, 0},
      {"no-closing-quote", noClosingQuote, WMQE_BAD_FORMAT},
      {"no-quote", noQuote, WMQE_BAD_FORMAT},
      {"empty-strings-only", emptyStringsOnly, 0},
      {"type-name", typeName, WMQE_BAD_FORMAT},
      {"host-name", hostName, WMQE_BAD_FORMAT},
      {"blanks-only", blanksOnly, WMQE_BAD_FORMAT},
      {"digits-only", digitsOnly, 0},
      {"digits-of-real", digitsOfReal, 0},
      {"entries", entries, 0},
      {"groups", groups, 0},
      {"submission-pairs", submissionPairs, 0},
      {"ranges", ranges, 0},
      {"numbers", numbers, 0},
      {"pairs", pairs, 0},
      {"unknown-pairs", unknownPairs, 0},
      {"affinity-texts", affinityTexts, WMQE_BAD_FORMAT},
      {"gpu-pairs", gpuPairs, 0},
  };
  return all;
}

}  // namespace wmq::testing
