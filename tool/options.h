// Options that several commands have.
#ifndef WMQ_TOOL_OPTIONS_H
#define WMQ_TOOL_OPTIONS_H

#include <CLI/CLI.hpp>
#include <cstdint>
#include <string>
#include <vector>

#include "record_sink.h"

namespace wmq::tool {

// An option whose value is a list with commas, and that may come more than once. It takes one argument only,
// so that file names can follow.
CLI::Option *addListOption(CLI::App &command, const std::string &name, std::vector<std::string> &values,
                           const std::string &valueName, const std::string &description);

// A point in time.
CLI::Option *addTimeOption(CLI::App &command, const std::string &name, int64_t &seconds,
                           const std::string &description);

// What is given must not be the empty text, as of a variable that is not set.
void refuseEmpty(CLI::Option &option, const std::string &what);

// PATH: a stream's current file.
void addStreamPath(CLI::App &command, std::string &path);

// -j: how many threads work.
void addThreadsOption(CLI::App &command, unsigned &threads);

// -o, --max-size, --max-files, --sync.
void addSinkOptions(CLI::App &command, SinkOptions &sink, const std::string &description, bool required);

}  // namespace wmq::tool

#endif
