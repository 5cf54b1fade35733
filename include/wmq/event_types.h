// Event types, error numbers and versions.
//
// Valid C11 and C++17, like every header under wmq/.
#ifndef WMQ_EVENT_TYPES_H
#define WMQ_EVENT_TYPES_H

#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#define WMQ_API __attribute__((visibility("default")))
#else
#define WMQ_API
#endif

#ifdef __cplusplus
#define WMQ_THREAD_LOCAL __thread  // not thread_local: C++ would reach the object through a wrapper function
extern "C" {
#else
#define WMQ_THREAD_LOCAL _Thread_local
#endif

// ---------------------------------------------------------------- versions

// Version of this library. WMQ_VERSION_NUMBER is major * 10000 + minor * 100 + patch.
#define WMQ_VERSION_MAJOR 1
#define WMQ_VERSION_MINOR 0
#define WMQ_VERSION_PATCH 0
#define WMQ_VERSION_NUMBER (WMQ_VERSION_MAJOR * 10000 + WMQ_VERSION_MINOR * 100 + WMQ_VERSION_PATCH)
#define WMQ_VERSION "1.0.0"

// Version of the line format that every writer of this library writes. Readers take all from 2.1 on.
#define WMQ_FORMAT_VERSION "10.1"

// Version of the library at run time, WMQ_VERSION of the one that was linked. Never null, never freed.
WMQ_API const char *wmq_version(void);

// ------------------------------------------------------------- event types

// Type codes, the `type` of an eventRecord. A code that has no constant has no type name: it can neither be
// written nor read (60 to 64 are accepted and dropped by the writer).
enum {
  EVENT_JOB_NEW = 1,
  EVENT_JOB_START = 2,
  EVENT_JOB_STATUS = 3,
  EVENT_JOB_SWITCH = 4,
  EVENT_JOB_MOVE = 5,
  EVENT_QUEUE_CTRL = 6,
  EVENT_HOST_CTRL = 7,
  EVENT_MBD_DIE = 8,
  EVENT_UNFULFILL = 9,
  EVENT_JOB_FINISH = 10,
  EVENT_LOAD_INDEX = 11,
  EVENT_CHKPNT = 12,
  EVENT_MIG = 13,
  EVENT_PRE_EXEC_START = 14,
  EVENT_MBD_START = 15,
  EVENT_JOB_ROUTE = 16,
  EVENT_JOB_MODIFY = 17,
  EVENT_JOB_SIGNAL = 18,
  EVENT_CAL_NEW = 19,
  EVENT_CAL_MODIFY = 20,
  EVENT_CAL_DELETE = 21,
  EVENT_JOB_FORWARD = 22,
  EVENT_JOB_ACCEPT = 23,
  EVENT_JOB_STAT_ACK = 24,
  EVENT_JOB_EXECUTE = 25,
  EVENT_JOB_MSG = 26,
  EVENT_JOB_MSG_ACK = 27,
  EVENT_JOB_REQUEUE = 28,
  EVENT_JOB_OCCUPY_REQ = 29,
  EVENT_JOB_VACATED = 30,
  EVENT_JOB_SIGACT = 32,
  EVENT_SBD_JOB_STATUS = 34,
  EVENT_JOB_START_ACCEPT = 35,
  EVENT_CAL_UNDELETE = 36,
  EVENT_JOB_CLEAN = 37,
  EVENT_JOB_EXCEPTION = 38,
  EVENT_GRP_ADD = 39,
  EVENT_GRP_MOD = 40,
  EVENT_GRP_CTRL = 41,
  EVENT_JOB_FORCE = 42,
  EVENT_LOG_SWITCH = 43,
  EVENT_JOB_MODIFY2 = 44,
  EVENT_GRP_STATUS = 45,
  EVENT_JOB_ATTR_SET = 46,
  EVENT_JOB_EXT_MSG = 47,
  EVENT_JOB_ATTA_DATA = 48,
  EVENT_JOB_CHUNK = 49,
  EVENT_ADRSV_FINISH = 51,  // type name "EVENT_ADRSV_FINISH"
  EVENT_HGHOST_CTRL = 52,   // type name "EVENT_HGHOST_CTRL"
  EVENT_CPUPROFILE_STATUS = 53,
  EVENT_JOB_RUN_RUSAGE = 55,
  EVENT_END_OF_STREAM = 56,
  EVENT_SLA_RECOMPUTE = 57,
  EVENT_METRIC_LOG = 58,
  EVENT_JOB_RESIZE = 65,
  EVENT_JOB_FINISH2 = 68,
  EVENT_JOB_STARTLIMIT = 69,
  EVENT_JOB_STATUS2 = 70,
  EVENT_JOB_PENDING_REASONS = 71,
  EVENT_JOB_SWITCH2 = 72,
  EVENT_JOB_ACCEPTACK = 73,
  EVENT_JOB_PROVISION_START = 74,
  EVENT_JOB_PROVISION_END = 75,
  EVENT_HOST_POWER_STATUS = 77,
  EVENT_JOB_PROV_HOST = 78
};

// The largest type code.
#define WMQ_MAX_EVENT_TYPE 78

// Name of a type as it stands at the head of a line, such as "JOB_NEW". Null for a code without a name.
// The text is static.
WMQ_API const char *wmq_typename(int32_t type);

// Code of a type name (whole name, case matters); -1 for an unknown or null one.
WMQ_API int32_t wmq_typecode(const char *name);

// ------------------------------------------------------------ error numbers

enum {
  WMQE_BAD_ARG = 35,        // a required argument is null or empty, or what it needs is not open
  WMQE_BAD_EVENT = 45,      // no such event type: unknown name when reading, unnamed code when writing
  WMQE_BAD_FORMAT = 46,     // the line, or a field of it, is missing or malformed
  WMQE_EOF = 47,            // no further line can be read
  WMQE_NO_USER = 53,        // a user's name could not be obtained from the user id
  WMQE_SYS = 54,            // a file operation failed (errno), or a record cannot be written (wmq_errdetail)
  WMQE_NO_MEM = 55,         // memory could not be obtained; also a count on a line that cannot be true
  WMCE_NO_MEM = 98,         // the base library's out-of-memory number (`wmc_errno`; JOB_FINISH reading too)
  WMQE_FILES_REMOVED = 743  // not a failure: a rotation removed old files, the write itself succeeded
};

// Reason of the last failure on this thread, one of the numbers above. Operations set it when they fail, and
// never clear it on entry. A record with fields that is parsed, written or formatted, a record that a stream
// drops, wmq_checkline and wmq_checkfields set it to 0 when all goes well; wmq_follownext leaves 0, or the
// number of the bad line, behind what it gives. All else leaves it as it was; functions that return a number
// (readJobStatus and the like) never touch it. Assign 0 before a call when the value afterwards is to be
// trusted (the header-only types succeed only if it was 0).
extern WMQ_API WMQ_THREAD_LOCAL int wmq_errno;

// Constant name of an error number, such as "WMQE_BAD_FORMAT"; "0" for 0, "unknown" for any other.
// The text is static.
WMQ_API const char *wmq_errname(int number);

// What an error number means, in one sentence. Never null; the text is static.
WMQ_API const char *wmq_strerror(int number);

// What exactly the last failed reading or writing of a record on this thread stumbled over: type name,
// field, byte position in the line (from 0) and what was expected there. Of a rotation, or a removal of old
// files, that failed: "rotation: ", what could not be done, and with which file (errno tells why), at most
// 255 bytes. "" when nothing has failed yet, or when the system did not take what was written. The text
// belongs to the library and stands until the next failure on this thread. Other failures of files and null
// arguments are not told here: the text is that of an earlier failure then. wmq_firstrecord and
// wmq_follownext, which try to parse, may change it also when they succeed.
WMQ_API const char *wmq_errdetail(void);

#ifdef __cplusplus
}
#endif

#endif
