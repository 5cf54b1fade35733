#include "help.h"

#include <string_view>
#include <vector>

namespace wmq::tool {

namespace {

constexpr size_t lineWidth = 79;
constexpr size_t textColumn = 22;

// `text` in lines that begin at textColumn, behind `head`.
std::string entry(const std::string &head, std::string_view text) {
  std::string out = "  " + head;
  // A man page tells head and text apart by two blanks.
  if (out.size() + 2 > textColumn) {
    out += "\n" + std::string(textColumn, ' ');
  } else {
    out.resize(textColumn, ' ');
  }
  size_t column = textColumn;
  while (!text.empty()) {
    size_t blank = text.find(' ');
    std::string_view word = text.substr(0, blank);
    text.remove_prefix(blank == std::string_view::npos ? text.size() : blank + 1);
    if (column > textColumn && column + 1 + word.size() > lineWidth) {
      out += "\n" + std::string(textColumn, ' ');
      column = textColumn;
    } else if (column > textColumn) {
      out += ' ';
      ++column;
    }
    out += word;
    column += word.size();
  }
  return out + "\n";
}

std::string optionHead(const CLI::Option &option) {
  std::string head;
  for (const std::string &name : option.get_snames()) head += (head.empty() ? "-" : ", -") + name;
  if (head.empty()) head = "    ";
  bool first = option.get_snames().empty();
  for (const std::string &name : option.get_lnames()) {
    head += (first ? "--" : ", --") + name;
    first = false;
  }
  if (!option.get_type_name().empty()) head += "=" + option.get_type_name();
  return head;
}

std::string usage(const CLI::App &app, const std::string &name) {
  if (!app.get_subcommands({}).empty()) return "Usage: " + name + " COMMAND [OPTION]... [ARGUMENT]...\n";
  std::string text = "Usage: " + name + " [OPTION]...";
  for (const CLI::Option *option : app.get_options())
    if (option->get_required() && option->nonpositional())
      text += " -" + option->get_snames().front() + " " + option->get_type_name();
  for (const CLI::Option *option : app.get_options()) {
    if (!option->get_positional()) continue;
    std::string word = option->get_name(true);
    text += option->get_required() ? " " + word : " [" + word + "]";
    if (option->get_expected_max() > 1) text += "...";
  }
  return text + "\n";
}

std::string options(const CLI::App &app) {
  std::string text = "\nOptions:\n";
  for (const CLI::Option *option : app.get_options())
    if (option->nonpositional()) text += entry(optionHead(*option), option->get_description());
  return text;
}

std::string firstSentence(const std::string &text) { return text.substr(0, text.find('.')); }

std::string commandHelp(const CLI::App &app, const std::string &name) {
  std::string text = usage(app, name) + "\n" + app.get_description() + "\n" + options(app);
  if (!app.get_footer().empty()) text += "\n" + app.get_footer() + "\n";
  return text;
}

}  // namespace

std::string HelpFormatter::make_help(const CLI::App *app, std::string, CLI::AppFormatMode mode) const {
  const CLI::App *program = app->get_parent();
  if (program) return commandHelp(*app, program->get_name() + " " + app->get_name());

  std::string text = usage(*app, app->get_name()) + "\n" + app->get_description() + "\n\nCommands:\n";
  for (const CLI::App *command : app->get_subcommands({}))
    text += entry(command->get_name(), firstSentence(command->get_description()));
  text += options(*app) + "\n" + app->get_footer() + "\n";
  if (mode == CLI::AppFormatMode::All)
    for (const CLI::App *command : app->get_subcommands({}))
      text += "\n" + commandHelp(*command, app->get_name() + " " + command->get_name());
  return text;
}

}  // namespace wmq::tool
