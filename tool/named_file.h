// Which file a name on the command line stands for.
#ifndef WMQ_TOOL_NAMED_FILE_H
#define WMQ_TOOL_NAMED_FILE_H

#include <sys/types.h>

#include <optional>
#include <string>
#include <utility>

namespace wmq::tool {

class NamedFile {
 public:
  // "-" stands for this descriptor.
  NamedFile(const std::string &name, int standardDescriptor);

  // The same file by whatever names and links, or, where there is none yet, the same path.
  bool operator==(const NamedFile &other) const;

  // A device, a pipe, a directory: nothing that is written to it comes to stand in it.
  bool isSpecial() const { return special; }

  // Whether a stream of that path counts it among its old files.
  bool isOldFileOf(const NamedFile &stream) const;

 private:
  std::optional<std::pair<dev_t, ino_t>> file;  // a regular file that exists
  bool special = false;
  std::string path;       // with all links resolved
  std::string directory;  // with all links resolved; "" for a standard stream
  std::string base;       // the name in it
};

// Throws CLI::ValidationError when a command would read what it writes. "-" stands for standard input and
// standard output.
void refuseInputAsOutput(const std::string &input, const std::string &output);

}  // namespace wmq::tool

#endif
