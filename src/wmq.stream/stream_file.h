// A stream's file: opening, the size limit, rotation into old files, their removal, closing. Three streams
// stand side by side, each with a descriptor of its own.
#ifndef WMQ_STREAM_STREAM_FILE_H
#define WMQ_STREAM_STREAM_FILE_H

#include <dirent.h>

#include <cstdio>

#include "wmq.stream/line_source.h"
#include "wmq/stream.h"

namespace wmq {

// What differs from stream to stream in texts.
struct StreamKind {
  const char *noun;  // in trace messages
  const char *defaultPath;
  const char *openLabel;
  const char *resetLabel;
  const char *closeLabel;
  int32_t type;           // the one type that a side stream carries; 0 for the event stream
  bool keepsDefaultPath;  // never copied when used, and a copy of it given by the caller is never released
};

struct streamFile {
  char *fileName;
  FILE *fp;  // null after a failed rotation
  int32_t maxStreamSize;
  int32_t maxStreamFileNum;
  int32_t trace;
  int (*traceFunc)(const char *message);
  const StreamKind *kind;
  bool namesSynced;       // since the file was opened or rotated
  int64_t firstUnsynced;  // smallest suffix of the files rotated since the last sync; 0: none was
  LineSource lines;
};

extern const StreamKind eventStreamKind;
extern streamFile *stream;  // the event stream; null when closed

// A new descriptor with its file open; null with wmq_errno.
streamFile *openFile(const StreamKind &kind, const char *fileName, const streamParams &params);

// Closes the file and releases the descriptor.
void closeFile(streamFile *file);

// Appends the bytes to the file in one write. Returns how many went in; less than `length` comes with errno.
size_t append(const streamFile &file, const char *bytes, size_t length);

// Whether the file has reached its size, or will have with `waiting` bytes more: 1 or 0, -1 with wmq_errno
// when that cannot be told.
int isFull(const streamFile &file, size_t waiting);

// Rotates the file: 0 when all went well, else negative with wmq_errno as set.
int resetstream(streamFile &file);

// Removes the oldest old files so that fewer than `maxFileNum` remain. 0; -1 for a null name, a limit below 1
// (wmq_errno untouched), no memory or a directory that cannot be listed; -2 for a file that cannot be
// removed.
int checkstreamfilenum(const char *fileName, int32_t maxFileNum);

// Brings to the disk what was appended since opening: of the file, of those that it was rotated into, and
// their names. False with errno.
bool syncFile(streamFile &file);

// The directory in which the file stands and its old files come to stand; null with errno.
DIR *listDirectoryOf(const char *fileName);

// The name without its directory.
const char *baseName(const char *fileName);

// The text behind the last dot, if what stands before it is `prefix` and it is a whole number.
const char *suffixOf(const char *name, const char *prefix);

// Rotation counts on from the largest suffix that is not above this one.
inline constexpr int64_t kLastSuffix = INT32_MAX - 2;

// True for a regular file, links not followed.
bool isOldFile(DIR *directory, const char *entry);

// The suffix for the file that is rotated now.
bool nextSuffix(const char *fileName, int64_t now, int64_t &suffix);

// What time rotation goes by, in seconds since the epoch; tests set it.
using Clock = int64_t();
extern Clock *currentTime;

// The next line that is no comment; on failure no line, with wmq_errno.
Line nextRecordLine(streamFile &file);

}  // namespace wmq

#endif
