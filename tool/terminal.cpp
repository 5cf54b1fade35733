#include "terminal.h"

#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace wmq::tool {

bool isCapableTerminal(int descriptor) {
  if (!isatty(descriptor)) return false;
  const char *kind = std::getenv("TERM");
  return kind && *kind && std::string_view(kind) != "dumb";
}

bool wantsColour(int descriptor) {
  const char *refused = std::getenv("NO_COLOR");
  return isCapableTerminal(descriptor) && !(refused && *refused);
}

}  // namespace wmq::tool
