// Following a stream: every record, in the order of writing, across rotations, restarts of the reader and of
// the writer, torn lines and removed files; and where something is missing, a notice that says so.
//
// docs/following.md tells what is promised for each failure, and what a consumer has to do for its part.
//
// Threads and processes. A follower keeps all its state in itself: any number of them may follow the same
// stream, or different ones, in any threads and processes, beside the stream's writer and beside the
// operations of wmq/stream.h. One follower is used by one thread at a time; only wmq_followwake may be called
// from anywhere. Nothing of a stream is ever changed by following it.
#ifndef WMQ_FOLLOW_H
#define WMQ_FOLLOW_H

#include <stddef.h>

#include "wmq/event_record.h"

#ifdef __cplusplus
extern "C" {
#endif

// ------------------------------------------------------------------ a stream, record by record

typedef struct wmqFollower wmqFollower;

// Where to start.
enum {
  WMQ_FROM_OLDEST = 0,   // the first record of the oldest old file
  WMQ_FROM_START = 1,    // the first record of the current file
  WMQ_FROM_END = 2,      // what is written from now on; a line that has no end yet is given when it has
  WMQ_FROM_POSITION = 3  // behind what was last given when wmqFollowParams.position was taken
};

typedef struct wmqFollowParams {
  const char *path;      // of the stream's current file, of any of the three streams
  int32_t from;          // WMQ_FROM_...
  const char *position;  // for WMQ_FROM_POSITION, else not looked at
  int32_t
      pollMilliseconds;  // 0: wait for the system's news of files (inotify), and look every 100 ms only where
                         // it gives none. Above 0: always look at this interval
} wmqFollowParams;

// Begins to follow. The strings of `params` are needed only for the call. The current file need not exist
// yet; its directory must.
// Returns the follower, or null with wmq_errno
//   WMQE_BAD_ARG     `params` or the position needed is null, its path is null or empty, or `from` is none of
//                    the above
//   WMQE_BAD_FORMAT  the position is none that wmq_followposition gave
//   WMQE_SYS         the directory, or a file, cannot be read (errno tells: EISDIR for a directory, EINVAL
//                    for whatever else is no regular file), or the files change faster than they can be
//                    listed (EBUSY)
//   WMQE_NO_MEM      no memory
WMQ_API wmqFollower *wmq_followopen(const struct wmqFollowParams *params);

// What wmq_follownext has come upon.
enum {
  WMQ_FOLLOW_FAILED = -1,  // see wmq_errno; the follower stands where it was, and the call may be repeated
  WMQ_FOLLOW_NOTHING = 0,  // nothing within the time given
  WMQ_FOLLOW_RECORD = 1,   // a record
  WMQ_FOLLOW_LINE = 2,     // a line that does not parse; the next call goes on behind it
  WMQ_FOLLOW_NOTICE = 3    // something that a consumer should know of, see WMQ_NOTICE_...
};

// Goes on to the next record, and waits for it up to `timeout` milliseconds: 0 not at all, below 0 without
// end. While it waits it uses no processor time, unless it has to look at intervals.
//
// WMQ_FOLLOW_RECORD puts the record at `*record`; it belongs to the caller, who releases it with
// wmq_freelogrec (and wmq_freekept before it). In all other cases `*record` is null. What else there is to
// know of any result is told by wmq_followdetail. A directory that is gone is waited for, as files are.
//
// Lines that begin with "#", empty lines, and END_OF_STREAM lines where they belong are passed over without a
// word. WMQ_FOLLOW_NOTHING comes early when a signal handler ran or wmq_followwake was called.
// WMQ_FOLLOW_FAILED: WMQE_BAD_ARG (null follower or record), WMQE_SYS (a file or the directory cannot be
// read, errno tells), WMQE_NO_MEM.
WMQ_API int wmq_follownext(wmqFollower *follower, struct eventRecord **record, int timeout);

// What a notice tells.
enum {
  // Nothing is missing:
  WMQ_NOTICE_ROTATED = 1,        // the file was read to its end, and the next one begins
  WMQ_NOTICE_END_IN_MIDDLE = 2,  // an END_OF_STREAM line with more lines behind it: the writer died before it
                                 // could rename the file, and another went on
  // A record that was not written whole:
  WMQ_NOTICE_TORN = 3,  // the beginning of a record whose rest was never written
  // Records are missing, or may be:
  WMQ_NOTICE_GAP = 4,       // files are gone that had not been read to their end, or it cannot be known
  WMQ_NOTICE_TRUNCATED = 5  // the file was cut or written anew; it is read from its first byte
};

// What the last call of wmq_follownext has come upon, beside the record.
typedef struct wmqFollowDetail {
  int32_t kind;        // WMQ_FOLLOW_..., what wmq_follownext returned
  int32_t notice;      // WMQ_NOTICE_..., 0 for all but WMQ_FOLLOW_NOTICE
  const char *file;    // the file's name as it is now known; of a rotation, a gap: the one that begins
  int64_t offset;      // of the record, the line or the torn part: its first byte in the file. Of
                       // WMQ_NOTICE_END_IN_MIDDLE the byte behind the END_OF_STREAM line; of
                       // WMQ_NOTICE_TRUNCATED how far the file had been read, or 0; else 0
  int64_t length;      // its bytes, the line end included if it has one
  const char *text;    // its bytes without the line end, and a NUL behind them; "" where there is none
  int64_t textLength;  // of `text`, which may hold NULs where a disk has lost what it was given
  int32_t lineEnd;     // 1: what stands in the file is ended, by a line end or by the record behind it.
                       // 0: it was the last thing in a file that is finished. A record with 0 is of a type
                       // that leaves its line open; its last number may have been cut
  int32_t error;       // WMQ_FOLLOW_LINE: the number with which parsing ended, as in wmq_errno
  const char *reason;  // in words: what is wrong with the line, what the notice says; else ""
  const char
      *missingFiles;     // of a gap: names of files that are gone, one on each line; "" when not known. Of
                         // WMQ_NOTICE_TRUNCATED the old file of the position, if it was one
  int64_t missingBytes;  // of a gap: their bytes that were not read; -1 when that cannot be known, and then
                         // there may be more files than those named; -1 of WMQ_NOTICE_TRUNCATED
} wmqFollowDetail;

// Never null. It belongs to the follower and stands until the next call with it.
WMQ_API const wmqFollowDetail *wmq_followdetail(const wmqFollower *follower);

// -------------------------------------------------------------------------------- positions

// Room for any position with its NUL.
#define WMQ_POSITION_SIZE 256

// Where the follower stands: behind what wmq_follownext gave last. `position` becomes one line of printable
// characters without blanks. Another follower that is opened with it, in any process, after any number of
// rotations, also when the files were moved to another file system or machine with their names and contents,
// goes on with exactly what comes next; where that is impossible, its first result is a notice that says what
// is missing. A position names the file by device, inode, time of creation and the checksum of its first
// line, and the place in it by offset and the checksum of what was read last.
//
// A consumer that stores its position together with what it made of the records, in one transaction, has made
// use of each record exactly once; one that stores it afterwards, at least once.
// It may take some milliseconds where the follower stands in an empty file that was created just now: until
// then the system could give its identity to another.
// Returns 0, or -1 with wmq_errno WMQE_BAD_ARG (null argument) or WMQE_NO_MEM.
WMQ_API int wmq_followposition(wmqFollower *follower, char position[WMQ_POSITION_SIZE]);

// Ends following and releases the follower with all that it owns. Records that were given stay. Null is
// allowed.
WMQ_API void wmq_followclose(wmqFollower *follower);

// ------------------------------------------------------------------------- beside other work

// A wait that is under way, or else the next one, ends at once with WMQ_FOLLOW_NOTHING. May be called from
// any thread and from signal handlers, until the follower is closed. Null is allowed.
WMQ_API void wmq_followwake(wmqFollower *follower);

// For programs that wait for several things: a descriptor that becomes readable when wmq_follownext, which
// has returned WMQ_FOLLOW_NOTHING, should be called again. It is the follower's and is only to be waited for.
// -1 where the follower has to look at intervals; call it every 100 milliseconds, or as often as you asked
// for. It may become -1 later, when the directory is replaced: ask before each wait.
WMQ_API int wmq_followdescriptor(const wmqFollower *follower);

// ------------------------------------------------------------------------------ joined lines

// How wmq_firstrecord has found the end of what stands first.
enum {
  WMQ_PART_LINE = 0,    // all of the line belongs to it
  WMQ_PART_JOINED = 1,  // a record of a type that leaves its line open; another record begins behind it
  WMQ_PART_TORN = 2     // the beginning of a record whose writer did not finish it; a record begins behind it
};

// Finds where the next record begins on a line on which several may stand. JOB_OCCUPY_REQ, JOB_VACATED,
// SBD_JOB_STATUS and the bare header of JOB_STATUS2 leave their line open, and a writer that dies in the
// middle of a line leaves it open, too; the next record then stands on the same line.
//
// `line` has `length` bytes, without its line end; NULs are allowed. Returns the number of bytes that belong
// to the first record and puts at `*part`, unless it is null, which of the above it is. For all but
// WMQ_PART_LINE the call is repeated with the rest. What a quoted string holds is never taken for a record;
// where a line parses as one record with all that it says, it is one.
// Returns 0 for an empty line, and for a null one or without memory, with wmq_errno WMQE_BAD_ARG,
// WMQE_NO_MEM.
WMQ_API size_t wmq_firstrecord(const char *line, size_t length, int *part);

// 1 for types whose records leave their line open, else 0. What stands without a line end at the end of a
// finished file is whole if it parses and is of such a type, though its last number may have been cut; of any
// other type it was not written to its end.
WMQ_API int wmq_leavesopen(int32_t type);

// ------------------------------------------------------------------------ a stream's files

typedef struct wmqStreamFile {
  const char *path;   // as it can be opened: begins with the path that was given
  int32_t isCurrent;  // 1: the file of that path itself, else an old one
  int64_t suffix;     // of an old file, the number behind the dot
} wmqStreamFile;

// Lists the files of the stream whose current file is `path`, in the order of writing: old ones
// ("PATH.NUMBER", regular ones) by their numbers, then the current one if it is there, as they stood at one
// moment. Numbers above 2147483645 are none of old files here. A stream without any file gives an array of 0
// elements, which is not null.
// Returns an array of `*count` elements in one piece of memory with the paths, which the caller frees with
// free(); or null with wmq_errno
//   WMQE_BAD_ARG  `path` is null or empty, or `count` is null
//   WMQE_SYS      the directory cannot be read, or the current file is none that can be followed (errno tells
//                 as for wmq_followopen), or the files change faster than they can be listed (EBUSY)
//   WMQE_NO_MEM   no memory
WMQ_API struct wmqStreamFile *wmq_streamfiles(const char *path, size_t *count);

#ifdef __cplusplus
}
#endif

#endif
