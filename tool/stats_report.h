// The statistics of a stream for people and for programs.
#ifndef WMQ_TOOL_STATS_REPORT_H
#define WMQ_TOOL_STATS_REPORT_H

#include <string>

#include "stream_statistics.h"

namespace wmq::tool {

// Users that are listed, those with the most core-hours.
constexpr size_t biggestUsers = 10;

// Aligned text; with `coloured`, titles and bars are set off by terminal escape sequences.
std::string statsText(const StreamStatistics &statistics, size_t numFiles, bool coloured);

// One JSON object and a line end.
std::string statsJson(const StreamStatistics &statistics, size_t numFiles);

}  // namespace wmq::tool

#endif
