#include "line_feed.h"

namespace wmq::tool {

LineFeed::LineFeed(const std::vector<std::string> &names) {
  for (const std::string &name : names) files.push_back({name, nullptr});
  if (names.empty()) files.push_back({"-", nullptr});
}

bool LineFeed::fill(LinePart &part) {
  if (files.empty()) return false;
  File &file = files.front();
  if (!file.opened) file.opened = std::make_shared<Blocks>(file.name);
  part.source = file.opened;
  if (!part.source->next(part.block)) files.pop_front();
  part.bytesTaken = part.source->source().bytesTaken();
  return true;
}

void PartReport::add(const LinePart &part, const std::function<void(const BadLine &)> &before) {
  if (part.block.empty()) {
    part.source->reportEnd(linesBefore, faults);
    progress.fileDone(part.bytesTaken);
    linesBefore = 0;
    return;
  }
  progress.reached(part.bytesTaken);
  for (const BadLine &line : part.badLines) {
    if (before) before(line);
    faults.badInput(part.source->name(), linesBefore + line.number, line.why.error, line.why.text);
  }
  linesBefore += part.numLines;
}

}  // namespace wmq::tool
