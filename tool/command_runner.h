// Runs a command for each record.
#ifndef WMQ_TOOL_COMMAND_RUNNER_H
#define WMQ_TOOL_COMMAND_RUNNER_H

#include <string>
#include <string_view>

namespace wmq::tool {

// Runs `command` by the shell, with `input` on its standard input and WMQ_POSITION in its environment, and
// waits for its end. Returns an empty text when its exit status is 0, else what went wrong. That it does not
// read its input is no fault.
std::string runCommand(const std::string &command, std::string_view input, const std::string &position);

}  // namespace wmq::tool

#endif
