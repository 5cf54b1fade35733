// Writing, reading and closing, as all three streams do it.
#ifndef WMQ_STREAM_STREAM_FRAMES_H
#define WMQ_STREAM_STREAM_FRAMES_H

#include "wmq.stream/line_format.h"
#include "wmq.stream/stream_file.h"

namespace wmq {

// Appends what `putLine` makes of the record, after the size check that every 100th write brings. `writes`
// counts them. `filesRemoved` tells whether this call removed old files.
int writeRecord(streamFile *file, int &writes, eventRecord *record, PutLine *putLine, bool &filesRemoved);

eventRecord *readRecord(streamFile *file, int *lineNum);

// Brings what was written to the disk; 0, or -1 with wmq_errno.
int syncStream(streamFile *file);

// Closes what is open and sets `file` to null; -1 when nothing is.
int closeStream(streamFile *&file);

}  // namespace wmq

#endif
