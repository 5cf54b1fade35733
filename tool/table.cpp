#include "table.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "text.h"

namespace wmq::tool {

namespace {

void appendCell(std::string &line, const std::string &cell, size_t width, Table::Align align) {
  std::string padding(width - characterCount(cell), ' ');
  line += align == Table::Align::left ? cell + padding : padding + cell;
}

void trimEnd(std::string &line) { line.resize(line.find_last_not_of(' ') + 1); }

}  // namespace

Table::Table(std::vector<Column> withColumns) : columns(std::move(withColumns)) {}

void Table::row(std::vector<std::string> cells) { rows.push_back(std::move(cells)); }

std::string Table::text(bool emphasis) const {
  std::vector<size_t> widths;
  for (size_t i = 0; i < columns.size(); ++i) {
    size_t width = characterCount(columns[i].title);
    for (const auto &cells : rows) width = std::max(width, characterCount(cells[i]));
    widths.push_back(width);
  }

  std::string head;
  for (size_t i = 0; i < columns.size(); ++i) {
    if (i > 0) head += "  ";
    appendCell(head, columns[i].title, widths[i], columns[i].align);
  }
  trimEnd(head);
  std::string text = emphasis ? "\x1b[1m" + head + "\x1b[0m\n" : head + "\n";

  for (const auto &cells : rows) {
    std::string line;
    for (size_t i = 0; i < columns.size(); ++i) {
      if (i > 0) line += "  ";
      appendCell(line, cells[i], widths[i], columns[i].align);
    }
    trimEnd(line);
    text += line + "\n";
  }
  return text;
}

std::string bar(double share, size_t width) {
  static constexpr std::array<const char *, 8> parts{"", "▏", "▎", "▍", "▌", "▋", "▊", "▉"};
  if (!(share > 0)) return "";
  auto eighths = static_cast<size_t>(std::lround(std::min(share, 1.0) * static_cast<double>(8 * width)));
  eighths = std::max<size_t>(eighths, 1);
  std::string text;
  for (size_t i = 0; i < eighths / 8; ++i) text += "█";
  return text + parts[eighths % 8];
}

}  // namespace wmq::tool
