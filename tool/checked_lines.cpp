#include "checked_lines.h"

#include <cstring>

#include "line_parts.h"
#include "records.h"
#include "text.h"

namespace wmq::tool {

namespace {

void takeJob(const eventRecord &record, LineFact &fact) {
  switch (record.type) {
    case EVENT_JOB_NEW:
      fact.job = record.eventLog.jobNewLog.jobId;
      break;
    case EVENT_JOB_START:
      fact.job = record.eventLog.jobStartLog.jobId;
      break;
    case EVENT_JOB_FINISH:
      fact.job = record.eventLog.jobFinishLog.jobId;
      fact.wasStarted = record.eventLog.jobFinishLog.startTime > 0;
      break;
    case EVENT_JOB_CLEAN:
      fact.job = record.eventLog.jobCleanLog.jobId;
      break;
    default:
      break;
  }
}

std::string tornText(std::string_view text, bool atEnd) {
  wmqLineHeader header;
  std::string type;
  if (wmq_peekline(text.data(), &header) == 0) type = std::string(wmq_typename(header.type)) + ", ";
  return type + counted(text.size(), "byte") + (atEnd ? " without a line end" : " of a record");
}

// Returns what is wrong with it; "" for a record. `atEnd`: the file ends behind it, without a line end.
std::string tell(std::string_view text, bool isTorn, bool atEnd, LineFact &fact) {
  fact.kind = LineFact::Kind::torn;
  if (isTorn) return tornText(text, false);
  Refusal why;
  eventRecord record;
  const bool isRecord = checkRecord(text, record, why);
  if (atEnd && !(isRecord && wmq_leavesopen(record.type) != 0)) return tornText(text, true);
  if (!isRecord) {
    fact.kind = LineFact::Kind::malformed;
    return "error " + std::to_string(why.error) + " " + wmq_errname(why.error) + ": " + why.text;
  }
  fact.kind = LineFact::Kind::record;
  fact.type = record.type;
  fact.time = record.eventTime;
  std::memcpy(fact.version, record.version, sizeof fact.version);
  takeJob(record, fact);
  return "";
}

}  // namespace

void checkLines(CheckedPart &part) {
  part.facts.clear();
  part.troubles.clear();
  part.bytes = 0;
  part.numLines = part.block.eachLine([&](std::string_view line, uint64_t number, uint64_t bytes) {
    const bool lineEnds = bytes > line.size();
    size_t taken = 0;
    eachRecordText(line, [&](std::string_view text, bool isTorn) {
      LineFact &fact = part.facts.emplace_back();
      fact.line = number;
      fact.offset = part.bytes + taken;
      taken += text.size();
      const bool isLast = taken == line.size();
      fact.joined = !isLast && !isTorn;
      std::string trouble = tell(text, isTorn, isLast && !lineEnds, fact);
      if (fact.kind != LineFact::Kind::record) part.troubles.push_back(std::move(trouble));
    });
    part.bytes += bytes;
    return true;
  });
}

}  // namespace wmq::tool
