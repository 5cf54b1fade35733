// Tables of aligned columns, and bars in them.
#ifndef WMQ_TOOL_TABLE_H
#define WMQ_TOOL_TABLE_H

#include <string>
#include <vector>

namespace wmq::tool {

class Table {
 public:
  enum class Align { left, right };
  struct Column {
    std::string title;
    Align align = Align::left;
  };

  explicit Table(std::vector<Column> columns);

  // One cell for each column; cells are UTF-8 without control characters.
  void row(std::vector<std::string> cells);

  // The table, each line ended. With `emphasis` the titles are set off by terminal escape sequences.
  std::string text(bool emphasis) const;

 private:
  std::vector<Column> columns;
  std::vector<std::vector<std::string>> rows;
};

// A bar of up to `width` characters for a share of 0 to 1, drawn to an eighth of a character. Any share above
// 0 is seen.
std::string bar(double share, size_t width);

}  // namespace wmq::tool

#endif
