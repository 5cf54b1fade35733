// Writing, reading and closing, as all three streams do it.
#ifndef WMQ_STREAM_STREAM_FRAMES_H
#define WMQ_STREAM_STREAM_FRAMES_H

#include "wmq.stream/line_format.h"
#include "wmq.stream/stream_file.h"

namespace wmq {

// What writing to a stream goes by.
struct Writing {
  PutLine *putLine;
  int &writes;        // calls since the last size check; lives as long as the process
  bool tellsRemoval;  // wmq_errno says whether old files were removed
};

// What the exported functions do with their arguments.
int writeRecord(streamFile *file, const Writing &how, eventRecord *record);

// Appends `count` records as that many calls would, each 100th of which looks at the size before it, but
// collects lines and hands over many in one write. Stops at the first failure. `*written` is how many
// records, from the first, have been dealt with and are in the file whole; `written` may be null.
int writeBatch(streamFile *file, const Writing &how, eventRecord *const *records, size_t count,
               size_t *written);

eventRecord *readRecord(streamFile *file, int *lineNum);

// Brings what was written to the disk; 0, or -1 with wmq_errno.
int syncStream(streamFile *file);

// Closes what is open and sets `file` to null; -1 when nothing is.
int closeStream(streamFile *&file);

}  // namespace wmq

#endif
