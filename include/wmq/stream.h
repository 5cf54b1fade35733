// Streams: open, write, read, close; lines without a stream; release of records.
//
// Threads. The state of the streams is process-wide, and the caller serialises what uses it: of the following
// only one call at a time may run in a process, whichever of the streams it is for.
//   wmq_openstream, wmq_writestream, wmq_writestreambatch, wmq_syncstream, wmq_readstream, wmq_closestream
//   and their like for the side streams;
//   wmq_readstreamline, which keeps its record where the reads do;
//   wmq_checkstatusfilenum.
// wmq_readstreamlineMT, wmq_formatrecord and its like, wmq_freelogrec and the rest of the operations on
// records and lines may be called from any number of threads at once, also beside those above, with lines of
// any mixture of versions; a record is used by one thread at a time. `wmq_errno`, wmq_errdetail and the
// version of the line being parsed belong to the thread.
#ifndef WMQ_STREAM_H
#define WMQ_STREAM_H

#include "wmq/event_record.h"

#ifdef __cplusplus
extern "C" {
#endif

// ------------------------------------------------------------ the event stream

// Parameters of a stream, for all three kinds. The caller keeps the strings only for the call.
typedef struct streamParams {
  char *fileName;         // path of the event stream; null: "/tmp/wmq.stream"
  int32_t maxStreamSize;  // bytes at or above which the file is rotated; 0 or less: 1000000000
  int32_t
      maxStreamFileNum;  // old files kept. With 0 or less nothing is ever rotated, and from the moment the
                         // file has reached its size every 100th write fails
  int32_t trace;         // not 0: report open, rotation, removal and close through traceFunc
  int (*traceFunc)(const char *message);  // may be null; the text stands until the next message
  char *statusFileName;                   // path of the status stream; null: "/tmp/wmq.status"
  char *pendingReasonsFileName;  // path of the pending-reasons stream; null: "/tmp/wmq.pendingreasons"
} streamParams;

// Opens the event stream for appending and reading, creating the file if need be, and sets its permissions to
// 0644 in any case (EPERM when it is another user's). With a stream already open this changes nothing and
// succeeds. Give a path with a directory part ("./NAME"): old files of
// a bare name are neither counted nor removed.
// Returns 0, or -1 with wmq_errno WMQE_BAD_ARG (null params), WMQE_NO_MEM or WMQE_SYS (errno tells).
WMQ_API int wmq_openstream(const struct streamParams *params);

// The format version of every line that is written: "10.1".
WMQ_API const char *wmq_streamversion(void);

// Appends `record` (its type, eventTime and eventLog) as one line and flushes it to the system.
//
// Before every 100th call the size is checked; a file that has reached its limit gets an end-of-stream line,
// is renamed to "PATH.SECONDS", and a new one is begun. The oldest old files beyond maxStreamFileNum are
// removed. No old file is ever overwritten: when a file with that suffix or a later one exists, the suffix is
// one more than the largest.
//
// The record stays the caller's; some writers change it (jobNewLog, jobStatusLog say where).
// Returns 0 on success (wmq_errno is WMQE_FILES_REMOVED when this call removed old files), -1 or less on
// failure:
//   no open stream                     wmq_errno unchanged
//   WMQE_BAD_EVENT                     the type has no name; nothing was written
//   WMQE_BAD_ARG                       `record` is null
//   WMQE_SYS                           a write failed, errno tells (ENOSPC: the disk is full); or the record
//                                      has a count without its array, a negative count of hosts or an empty
//                                      slot, or there is no memory for the line: wmq_errdetail tells, errno
//                                      does not. What was written of the line stays
//   WMQE_SYS, WMQE_NO_MEM or unchanged the rotation failed, wmq_errdetail tells at what (not when unchanged);
//                                      nothing was written of this record. After a failed rename or creation
//                                      only closing and opening helps
// Types 60 to 64 are dropped with success. Types 29, 30 and 70 write a header without line end, and return 0
// only if wmq_errno was 0 before the call and the call removed no old files.
WMQ_API int wmq_writestream(struct eventRecord *record);

// Appends `count` records as that many calls of wmq_writestream would, with the same counting of calls, the
// same look at the size before every 100th, the same checks and effects on the records, but hands over many
// lines in one write: up to 1024 records, or 512 KiB, and what waits before a rotation and at the end. Stops
// at the first record that fails, and returns what wmq_writestream would have returned for it, with its
// wmq_errno; the lines before it are in the file, and of its own what could be written.
//
// `*written` (null allowed) tells how many records, from the first, are in the file whole: `count` after
// success; records[*written] is the one that failed. When a write fails, records behind that one may have
// been changed as writing changes them. Calls that fail without looking at a record set it to 0: no open
// stream (wmq_errno unchanged), null `records` with a count above 0 (WMQE_BAD_ARG).
// Returns 0 on success; wmq_errno is WMQE_FILES_REMOVED then when old files were removed on the way.
WMQ_API int wmq_writestreambatch(struct eventRecord *const *records, size_t count, size_t *written);

// Brings to the disk what was written since opening: the content of the stream's file and of the old files
// that it was rotated into, and their names in the directory. What was written before a call that returned 0
// outlives a crash of the machine; without a call, and after closing, the system decides when it does. The
// stream stays as it is, and so does the counter of writes. A call takes as long as the disk does: call it
// where a promise is given, not after each record. docs/durability.md tells what survives what, and the cost.
// Returns 0, or -1 with wmq_errno
//   WMQE_BAD_ARG   there is no open stream, or it has lost its file in a failed rotation
//   WMQE_SYS       errno tells (EIO, ENOSPC, EDQUOT; EINVAL: the path is none of a regular file). What was
//                  written since the last call that returned 0 may or may not outlive the machine, and a
//                  later 0 does not tell: write it again to be sure
WMQ_API int wmq_syncstream(void);

// Reads the next line of the open event stream. `*lineNum` grows by one per call. Lines that begin with "#"
// are skipped. The record belongs to the library and stands until the next call of this function or of
// wmq_readstreamline. Reading goes on where the last read stopped, also between writes.
// Returns null with wmq_errno
//   WMQE_EOF        at the end; after a rotation, until the stream is opened again; when reading fails
//   WMQE_BAD_ARG    no stream is open, or it has lost its file in a failed rotation
//   WMQE_NO_MEM     no memory
//   WMQE_BAD_FORMAT, WMQE_BAD_EVENT, WMQE_NO_USER, WMQE_NO_MEM, WMCE_NO_MEM
//                   the line does not parse; the next call goes on with the next one
// A record of type 29 or 30 is given only if wmq_errno was 0 before the call: assign 0 before each.
// A null `lineNum` resets the line reader and returns null.
WMQ_API struct eventRecord *wmq_readstream(int *lineNum);

// Closes the event stream. wmq_errno is WMQE_EOF afterwards, as closing reads to the end. Returns 0, or -1
// when none is open.
WMQ_API int wmq_closestream(void);

// ------------------------------------------------------- lines without a stream

// Parses one line (its line end may be on it). The record belongs to the library and stands until the next
// call of this function or a stream's read. Null with wmq_errno on failure: the numbers of a line that
// wmq_readstream does not parse, types 29 and 30 as there, or WMQE_BAD_ARG for a null line.
WMQ_API struct eventRecord *wmq_readstreamline(const char *line);

// The same; the record belongs to the caller, who releases it with wmq_freelogrec. Any thread may call it.
// A type without fields (29, 30) is returned only if wmq_errno was 0 before.
WMQ_API struct eventRecord *wmq_readstreamlineMT(const char *line);

// The same for those who look at a record and are done with it, which costs less, and much less for long
// lists of equal hosts: the record and all that it points to belong to the library, and last until the
// thread calls this again or ends. Nothing of it may be changed, released or kept. Equal names of a list of
// hosts may be one text, and a list that is the copy of another may be that list. The line has `length`
// bytes, behind which stands a NUL; one within it is malformed (WMQE_BAD_FORMAT).
WMQ_API const struct eventRecord *wmq_borrowline(const char *line, size_t length);

// What the header of a line says.
typedef struct wmqLineHeader {
  int32_t type;  // EVENT_ code; -1 for a type name that no type has
  int32_t eventTime;
  char version[12];  // as it stands on the line
  size_t length;     // bytes of the header, up to where the fields begin
} wmqLineHeader;

// Looks at the header of a line and at nothing behind it: a quick way to pass over lines that are not wanted.
// Any thread may call it; neither the kept record nor wmq_lineversion changes. Returns 0, or -1 with
// wmq_errno, the numbers being those with which parsing the line would end:
//   WMQE_BAD_ARG     `line` or `header` is null
//   WMQE_BAD_FORMAT  the header is malformed; `*header` stands as it was
//   WMQE_BAD_EVENT   no type has that name; `*header` is filled
// What a line says behind a good header may still be malformed.
WMQ_API int wmq_peekline(const char *line, struct wmqLineHeader *header);

// Tells whether a line can be parsed, and what figures it holds, for a fraction of what parsing it takes: as
// wmq_readstreamlineMT, into the caller's `*record`, but for what would need memory of its own. `*record`
// then has its type, version and event time, all numbers, the names that stand in it, and the counts of its
// lists; all pointers are null, so that there is nothing to release. Any thread may call it; the kept record
// does not change. Returns 0 with wmq_errno 0, or -1 with the wmq_errno and the details with which parsing
// the line would end, WMQE_BAD_ARG when `line` or `record` is null; `*record` then holds what was read before
// the fault. What wmq_errno was before the call does not count, for types 29 and 30 either.
WMQ_API int wmq_checkline(const char *line, struct eventRecord *record);

// The rest of wmq_checkline for those who have looked at the header of the line: `*header` is what
// wmq_peekline returned 0 with for it. The line has `length` bytes, behind which stands a NUL; one within it
// is malformed (WMQE_BAD_FORMAT). WMQE_BAD_ARG also for a header that is longer than the line,
// WMQE_BAD_EVENT for one with the code of no type.
WMQ_API int wmq_checkfields(const char *line, size_t length, const struct wmqLineHeader *header,
                            struct eventRecord *record);

// The version of the line that this thread parsed last, 0 before the first.
WMQ_API float wmq_lineversion(void);

// Sets the version that layout readers such as readJobStart take the fields given to them to have, on this
// thread. Parsing a line sets it too.
WMQ_API void wmq_setlineversion(float version);

// The bytes that wmq_writestream would append for `record`, without a stream: `*text` is a new text of
// `*length` bytes and a NUL, freed by the caller. The same effects on the record and on wmq_errno, the same
// result; or -1 with WMQE_BAD_ARG for a null argument, or WMQE_NO_MEM without memory for the text. After a
// failure `*text` is the partial line that would be left in the file; null when there is none.
WMQ_API int wmq_formatrecord(struct eventRecord *record, char **text, size_t *length);

// ------------------------------------------------------------- the side streams

// The status stream carries JOB_STATUS2 records only, the pending-reasons stream JOB_PENDING_REASONS only.
// They open, rotate, sync, read and close like the event stream, each with a descriptor and a counter of its
// own, and with these differences:
//   - opening while open changes nothing only when the same path is given; another path, or none, closes the
//     stream and opens it anew;
//   - writing any other type does nothing, with success and wmq_errno 0, but for these, which fail with
//     WMQE_BAD_EVENT: 0, 3, 31, 33, 50, 56, 59, 65, 66, 67, 71 (status stream), 76, negative ones and those
//     above 78;
//   - writing does not tell whether old files were removed;
//   - the removal of old files is traced through the event stream's parameters, if one is open.
// A read shares its record with wmq_readstream and wmq_readstreamline: each releases what the last one
// returned.
WMQ_API int wmq_openstatus(const struct streamParams *params);
WMQ_API int wmq_writestatus(struct eventRecord *record);
WMQ_API int wmq_writestatusbatch(struct eventRecord *const *records, size_t count, size_t *written);
WMQ_API int wmq_syncstatus(void);
WMQ_API struct eventRecord *wmq_readstatus(int *lineNum);
WMQ_API int wmq_closestatus(void);

WMQ_API int wmq_openpendingreasons(const struct streamParams *params);
WMQ_API int wmq_writependingreasons(struct eventRecord *record);
WMQ_API int wmq_writependingreasonsbatch(struct eventRecord *const *records, size_t count, size_t *written);
WMQ_API int wmq_syncpendingreasons(void);
WMQ_API struct eventRecord *wmq_readpendingreasons(int *lineNum);
WMQ_API int wmq_closependingreasons(void);

// Removes the oldest old files of the stream file `path` ("PATH.NUMBER", regular files) so that fewer than
// `fileCount` remain. Returns 0 (wmq_errno WMQE_FILES_REMOVED when some were removed), -1 for a null path or
// a count below 1 (wmq_errno unchanged), for a directory that cannot be listed (WMQE_SYS) and without memory
// (WMQE_NO_MEM), -2 when a file cannot be removed (WMQE_SYS).
WMQ_API int wmq_checkstatusfilenum(const char *path, int32_t fileCount);

// As wmq_formatrecord, for what the side streams write. A record that is dropped gives a null text and 0.
WMQ_API int wmq_formatstatus(struct eventRecord *record, char **text, size_t *length);
WMQ_API int wmq_formatpendingreasons(struct eventRecord *record, char **text, size_t *length);

// ---------------------------------------------------------------------- release
//
// With glibc a thread keeps short blocks that it has released for the records that it reads next: 1 MiB, or
// as much as long records have held of late, but no more than 128 MiB. They are freed when the thread ends.

// Releases what the members of `record` own, sets these pointers to null and their counts to 0, and leaves
// the record itself. Some members are kept by design: see wmq_freekept. Null is allowed.
WMQ_API void freeLogRec(struct eventRecord *record);

// freeLogRec, and then the record. Null is allowed.
WMQ_API void wmq_freelogrec(struct eventRecord *record);

// Frees what release keeps by design (the index ranges and attribute groups of JOB_STATUS, the index ranges
// of JOB_CLEAN, the strings of JOB_MSG_ACK). Long-running readers call it before wmq_freelogrec. Null is
// allowed.
WMQ_API void wmq_freekept(struct eventRecord *record);

#ifdef __cplusplus
}
#endif

#endif
