#include "support/golden_file.h"

#include <rapidjson/document.h>
#include <rapidjson/error/en.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace wmq::testing {
namespace {

using Value = rapidjson::Value;

std::string describe(const Value &value) {
  if (value.IsString()) return '"' + std::string(value.GetString(), value.GetStringLength()) + '"';
  if (value.IsObject()) return "an object";
  if (value.IsArray()) return "an array of " + std::to_string(value.Size());
  if (value.IsNull()) return "null";
  return value.IsBool() ? "a boolean" : std::to_string(value.GetDouble());
}

// Numbers are compared by value: integers exactly, others as the doubles they are.
bool sameNumber(const Value &a, const Value &b) {
  if (a.IsInt64() && b.IsInt64()) return a.GetInt64() == b.GetInt64();
  return a.GetDouble() == b.GetDouble();
}

std::string difference(const std::string &path, const Value &expected, const Value &actual) {
  std::string differs = path + ": expected " + describe(expected) + ", got " + describe(actual);
  if (expected.IsNumber() && actual.IsNumber()) return sameNumber(expected, actual) ? "" : differs;
  if (expected.GetType() != actual.GetType()) return differs;
  if (expected.IsString()) return expected == actual ? "" : differs;
  if (expected.IsArray()) {
    if (expected.Size() != actual.Size()) return differs;
    for (rapidjson::SizeType i = 0; i < expected.Size(); ++i)
      if (auto found = difference(path + '[' + std::to_string(i) + ']', expected[i], actual[i]);
          !found.empty())
        return found;
  }
  if (expected.IsObject()) {
    for (const auto &member : expected.GetObject()) {
      const auto other = actual.FindMember(member.name);
      if (other == actual.MemberEnd()) return path + '.' + member.name.GetString() + ": missing";
      if (auto found = difference(path + '.' + member.name.GetString(), member.value, other->value);
          !found.empty())
        return found;
    }
    for (const auto &member : actual.GetObject())
      if (!expected.HasMember(member.name)) return path + '.' + member.name.GetString() + ": not expected";
  }
  return "";
}

}  // namespace

std::string jsonDifference(const std::string &expected, const std::string &actual) {
  rapidjson::Document want;
  rapidjson::Document got;
  constexpr unsigned flags = rapidjson::kParseFullPrecisionFlag;
  if (want.Parse<flags>(expected.c_str(), expected.size()).HasParseError())
    return std::string("expected JSON: ") + rapidjson::GetParseError_En(want.GetParseError()) + " at byte " +
           std::to_string(want.GetErrorOffset());
  if (got.Parse<flags>(actual.c_str(), actual.size()).HasParseError())
    return std::string("actual JSON: ") + rapidjson::GetParseError_En(got.GetParseError()) + " at byte " +
           std::to_string(got.GetErrorOffset());
  return difference("", want, got);
}

std::vector<std::string> goldenFiles() {
  std::vector<std::string> paths;
  for (const auto &entry : std::filesystem::directory_iterator(WMQ_TEST_DATA "/golden"))
    if (entry.path().extension() == ".golden") paths.push_back(entry.path());
  std::sort(paths.begin(), paths.end());
  return paths;
}

std::vector<GoldenCase> readGoldenFile(const std::string &path) {
  std::ifstream in(path, std::ios::binary);
  std::vector<GoldenCase> cases;
  std::string comment;
  std::string text;
  int number = 0;
  const auto refuse = [&](const char *why) -> void {
    throw std::runtime_error(path + ':' + std::to_string(number) + ": " + why);
  };
  const auto begin = [&] {
    cases.push_back({.file = path, .line = number, .comment = comment});
    comment.clear();
  };
  while (std::getline(in, text)) {
    ++number;
    if (text.empty()) continue;
    const std::string content = text.size() > 2 ? text.substr(2) : "";
    if (text.size() > 1 && text[0] != '#' && text[1] != ' ') refuse("a blank is missing behind the mark");
    switch (text[0]) {
      case '#':
        comment += content + ' ';
        break;
      case '>':
        begin();
        cases.back().read = content;
        break;
      case '=':
        if (cases.empty() || cases.back().json || cases.back().error || !cases.back().read) begin();
        cases.back().json = content;
        break;
      case '!': {
        if (cases.empty() || cases.back().json || !cases.back().read) refuse("\"!\" without \">\"");
        cases.back().error = std::atoi(content.c_str());
        if (const auto blank = content.find(' '); blank != std::string::npos)
          cases.back().field = content.substr(blank + 1);
        break;
      }
      case '<':
        if (cases.empty() || !cases.back().json || cases.back().written) refuse("\"<\" without \"=\"");
        if (content.empty() && !cases.back().read) refuse("\"<\" alone without \">\"");
        cases.back().written = content.empty() ? *cases.back().read : content;
        break;
      default:
        refuse("neither #, >, =, ! nor <");
    }
  }
  if (cases.empty()) refuse("no case");
  return cases;
}

}  // namespace wmq::testing
