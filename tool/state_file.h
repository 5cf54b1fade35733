// A position kept in a file.
#ifndef WMQ_TOOL_STATE_FILE_H
#define WMQ_TOOL_STATE_FILE_H

#include <optional>
#include <string>

namespace wmq::tool {

class StateFile {
 public:
  explicit StateFile(std::string path) : name(std::move(path)) {}

  // What was saved last; nothing when there is no such file. With another failure `error` is its errno.
  std::optional<std::string> load(int &error);

  // Puts the new position in the place of the old one, on the disk: whatever happens, one of the two is
  // there. False with errno. The same position is not written twice.
  bool save(const std::string &position);

 private:
  std::string name;
  std::string saved;
};

}  // namespace wmq::tool

#endif
