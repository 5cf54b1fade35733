// The commands of the program. Each adds itself with its options; when the command line chooses it, it puts
// into `run` what is then to be done and gives the exit status.
#ifndef WMQ_TOOL_COMMANDS_H
#define WMQ_TOOL_COMMANDS_H

#include <CLI/CLI.hpp>
#include <functional>

namespace wmq::tool {

using Run = std::function<int()>;

void addDecodeCommand(CLI::App &program, Run &run);
void addEncodeCommand(CLI::App &program, Run &run);
void addReplayCommand(CLI::App &program, Run &run);
void addStatsCommand(CLI::App &program, Run &run);
void addFollowCommand(CLI::App &program, Run &run);
void addVerifyCommand(CLI::App &program, Run &run);
void addSchemaCommand(CLI::App &program, Run &run);

}  // namespace wmq::tool

#endif
