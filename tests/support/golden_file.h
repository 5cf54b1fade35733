// Golden files: lines of a stream written by hand, and what they mean.
//
//   # text            says what the next case shows
//   > LINE            a line as it stands in a stream, without its line end
//   = JSON            what reading it gives, all members of the log structure
//   ! NUMBER [FIELD]  instead: the error number, and the field at which reading fails
//   < LINE            what writing the JSON gives, without the line end; alone: the bytes of the ">" line
//
// A case begins with ">" (then "=" or "!", perhaps "<") or, for writing only, with "=" (then "<"). Lines are
// bytes: some are deliberately not UTF-8.
#ifndef WMQ_TESTS_GOLDEN_FILE_H
#define WMQ_TESTS_GOLDEN_FILE_H

#include <optional>
#include <string>
#include <vector>

namespace wmq::testing {

struct GoldenCase {
  std::string file;
  int line = 0;  // of the file where the case begins
  std::string comment;
  std::optional<std::string> read;
  std::optional<std::string> json;
  int error = 0;
  std::string field;
  std::optional<std::string> written;
};

// All cases of one file; throws std::runtime_error naming the place of what it does not understand.
std::vector<GoldenCase> readGoldenFile(const std::string &path);

// The paths of all golden files, sorted.
std::vector<std::string> goldenFiles();

// "" when both texts are the same JSON by value, members in any order; else the path and values that differ.
std::string jsonDifference(const std::string &expected, const std::string &actual);

}  // namespace wmq::testing

#endif
