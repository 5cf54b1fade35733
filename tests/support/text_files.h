// Files of a test, as texts.
#ifndef WMQ_TESTS_TEXT_FILES_H
#define WMQ_TESTS_TEXT_FILES_H

#include <string>
#include <string_view>
#include <vector>

namespace wmq::testing {

// The whole of a file; "(missing)" for one that cannot be opened.
std::string contentOf(const std::string &path);

// Creates or replaces a file.
void makeFile(const std::string &path, std::string_view content = "");

void appendTo(const std::string &path, std::string_view content);

bool exists(const std::string &path);

// What a directory holds, sorted.
std::vector<std::string> namesIn(const std::string &directory);

// Permission bits of a file.
unsigned permissionsOf(const std::string &path);

// Descriptors that this process has open.
int openDescriptors();

}  // namespace wmq::testing

#endif
