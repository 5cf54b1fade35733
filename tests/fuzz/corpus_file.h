// A corpus as one text file: an input on a line, with C's escapes for what is not printable ASCII.
#ifndef WMQ_TESTS_CORPUS_FILE_H
#define WMQ_TESTS_CORPUS_FILE_H

#include <string>
#include <string_view>
#include <vector>

namespace wmq::testing {

std::string escaped(std::string_view input);

// Throws std::runtime_error for an escape that `escaped` does not write.
std::string unescaped(std::string_view text);

// The inputs of a corpus file; lines that begin with "#" and empty ones are none. Throws std::runtime_error
// for a file that cannot be read.
std::vector<std::string> readCorpus(const std::string &path);

}  // namespace wmq::testing

#endif
