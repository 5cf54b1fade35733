#include "checked_files.h"

#include <unistd.h>

#include <deque>

#include "line_feed.h"
#include "pipeline.h"

namespace wmq::tool {

namespace {

// A file that was listed may be removed by the limit before its turn comes.
bool isGone(Blocks &file) {
  return file.source().trouble() == Input::Trouble::system && access(file.name().c_str(), F_OK) != 0;
}

void take(const CheckedPart &part, StreamCheck &check, PartReport &report) {
  if (part.block.empty() && isGone(*part.source)) return check.addGone();
  report.add(part);
  if (part.block.empty() && part.source->source().trouble() == Input::Trouble::damaged) check.addDamage();
  check.add(part);
}

}  // namespace

void checkFiles(const std::vector<StreamFile> &files, unsigned threads, StreamCheck &check, Faults &faults,
                Progress &progress) {
  std::deque<LineFeed::File> sources;
  for (const StreamFile &file : files) sources.push_back({file.path, file.opened});
  LineFeed feed(std::move(sources));
  PartReport report(faults, progress);
  Pipeline<CheckedPart>(threads, {.fill = [&](CheckedPart &part) { return feed.fill(part); },
                                  .work = checkLines,
                                  .use =
                                      [&](const CheckedPart &part) {
                                        take(part, check, report);
                                        return faults.exitStatus() != exitFailure;
                                      },
                                  .idle = [] {}})
      .run();
  check.finish();
}

}  // namespace wmq::tool
