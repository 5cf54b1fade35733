// Help texts in the form that people know from other programs and that man pages are made from.
#ifndef WMQ_TOOL_HELP_H
#define WMQ_TOOL_HELP_H

#include <CLI/CLI.hpp>
#include <string>

namespace wmq::tool {

class HelpFormatter final : public CLI::Formatter {
 public:
  std::string make_help(const CLI::App *app, std::string name, CLI::AppFormatMode mode) const override;
};

}  // namespace wmq::tool

#endif
