// Helpers for those who build, take apart or release records: quoting, host lists, resource usage,
// allocations, submission extensions, users, logging, limits.
//
// Memory comes from malloc and goes back with free, in both directions: a record may be built with malloc
// and released by the library, and the other way round.
#ifndef WMQ_COMPANION_H
#define WMQ_COMPANION_H

#include <stdbool.h>
#include <stdio.h>

#include "wmq/event_types.h"

#ifdef __cplusplus
extern "C" {
#endif

// ------------------------------------------------------------------ strings

// A newly allocated copy of `text`, to be freed by the caller; null when memory runs out or `text` is null.
WMQ_API char *putstr_(const char *text);

// Writes a blank and `text` in double quotes. A double quote inside becomes two, a line end becomes a
// double quote followed by the letter n; all other bytes stand as they are. A null `text` is written as "".
// Returns 0, negative when the write fails.
WMQ_API int addQStr(FILE *file, const char *text);

// Reads what addQStr wrote: finds the first double quote in `text`, skipping whatever stands before it, and
// copies the content of that quoted string into `out`, which must have room for strlen(text) + 1 bytes.
// Returns the number of bytes of `text` consumed, closing quote included; negative when there is no
// complete quoted string (`out` is then undefined).
WMQ_API int stripQStr(const char *text, char *out);

// Replaces each line end in `text` by a blank, in place. Null is allowed.
WMQ_API void subNewLine_(char *text);

// True for an optional sign followed by at least one digit and nothing else.
WMQ_API bool islongint_(const char *text);

// The last occurrence of `wanted` in `text`, null if there is none.
WMQ_API char *zvt_strrchr(const char *text, int wanted);

// The number at the start of `text` as strtod reads it in the C locale, 0 if there is none.
WMQ_API double my_strtodf(const char *text);

// The next line of `file`, without its line end, in storage that the library owns (valid until the next
// call on this thread). Lines without any character are skipped, a last line without line end is returned.
// `*lineNum` grows by one for each line taken, skipped ones included; it may be null. `flag` is always 0.
// Returns null at the end, on a read failure, and when memory runs out (`wmc_errno` is then WMCE_NO_MEM).
// A null `file` drops the storage and returns null.
WMQ_API char *_getNextLine_(FILE *file, int *lineNum, int flag);

// Error number of the base helpers on this thread: WMCE_NO_MEM or 0.
extern WMQ_API WMQ_THREAD_LOCAL int wmc_errno;

// --------------------------------------------------------------- host lists

// Looks for a shorter form of a host list: a run of at least two equal neighbours becomes "N*name". A name
// that looks compressed itself is protected as "1*name", so that nothing is lost.
// When there is something to gain or to protect, `*outHosts` is a new array of `*outCount` new strings, all
// to be freed by the caller, and the result is 0. Otherwise `*outHosts` is null, `*outCount` 0 and the
// result 0. When memory runs out: the same, with the result WMQE_NO_MEM.
WMQ_API int compressHostList(int count, char *const *hosts, int *outCount, char ***outHosts);

// Expands a list in place: every "N*name" becomes N times name; N is decimal, at least 1 and without leading
// zeros, anything else is a plain name. `*hosts` and its strings must come from malloc and are replaced.
// A count below 1 or a null list is left alone. Returns 0, or WMQE_NO_MEM, or WMQE_BAD_FORMAT for more than
// 16,777,216 hosts; after a failure the list is as it was.
WMQ_API int uncompressHostList(int *count, char ***hosts);

// Writes " %d" with the number of names, then the names quoted, compressed where that is shorter.
// Returns 0, or -1 when a write failed or nothing can be written (null file, negative count, hosts missing).
WMQ_API int writeHostList(FILE *file, int count, char *const *hosts);

// ----------------------------------------------------------- resource usage

// What a job used. Times in seconds, the getrusage(2) figures in its units.
typedef struct wmxRusage {
  double ru_utime;
  double ru_stime;
  double ru_maxrss;
  double ru_ixrss;
  double ru_idrss;
  double ru_isrss;
  double ru_minflt;
  double ru_majflt;
  double ru_nswap;
  double ru_inblock;
  double ru_oublock;
  double ru_msgsnd;
  double ru_msgrcv;
  double ru_nsignals;
  double ru_nvcsw;
  double ru_nivcsw;
  double ru_rchar;    // bytes through read calls
  double ru_wchar;    // bytes through write calls
  double ru_elapsed;  // wall clock
} wmxRusage;

// Number of values in a wmxRusage.
#define WMX_RUSAGE_VALUES 19

// Writes the 19 values, each behind a blank, as the shortest decimals that read back to the same doubles.
// `flag` is always 0. Returns 0, negative when the write fails.
WMQ_API int wmxRu2Str(FILE *file, const struct wmxRusage *usage, int flag);

// Reads up to 19 values from `text`. Returns how many were converted; `*consumed` is the number of bytes
// taken up to the end of the last of them. Values that were not converted are left as they were.
WMQ_API int str2wmxRu(const char *text, struct wmxRusage *usage, int *consumed);

// A pair of strings, both owned.
typedef struct keyValue {
  char *key;
  char *value;
} keyValue;

// A named attribute, both strings owned.
typedef struct attribute {
  char *name;
  char *value;
} attribute;

// Resources used on one host.
typedef struct hostRusageEntry {
  char *name;     // host; owned
  int32_t mem;    // KB
  int32_t swap;   // KB
  int64_t utime;  // seconds
  int64_t stime;  // seconds
  int32_t numAttrs;
  struct attribute *attrs;  // owned array of numAttrs
} hostRusageEntry;

// Resources used on the GPUs of one host.
typedef struct gpuRusageEntry {
  char *hostName;  // owned
  int32_t numPairs;
  struct keyValue *pairs;  // owned array of numPairs
} gpuRusageEntry;

// Release the strings and arrays inside and set them to null and their counts to 0; the structures
// themselves stay the caller's. Null is allowed.
WMQ_API void freeKeyValue(struct keyValue *pair);
WMQ_API void freeHostRusage(int32_t count, struct hostRusageEntry *entries);
WMQ_API void freeGpuRusage(int32_t count, struct gpuRusageEntry *entries);

// Hosts allocated to a job.
typedef struct allocHostInfo {
  int32_t numHosts;
  char **hosts;  // owned array of numHosts owned strings
} allocHostInfo;
WMQ_API void freeAllocHostInfo(struct allocHostInfo *info);

// ------------------------------------------------------ submission extension

// Key/value pairs that a submission carries beside its named fields, in the order of their adding.
typedef struct submitExtPair {
  int32_t key;
  char *value;  // owned
} submitExtPair;

typedef struct submitExt {
  int32_t numPairs;
  struct submitExtPair *pairs;  // owned array
} submitExt;

// Adds a pair with a copy of `value` (null counts as ""), creating the extension when `*extension` is null.
// Returns 0, or WMQE_NO_MEM with the extension unchanged, or WMQE_BAD_ARG when `extension` is null.
WMQ_API int add_pair2submit_ext(struct submitExt **extension, int32_t key, const char *value);

// Releases the pairs, not the structure itself. Null is allowed.
WMQ_API void freeSubmitExt(struct submitExt *extension);

// ----------------------------------------------------------------- allocations

// CPUs of one host given to a job.
typedef struct affinityHost {
  char *host;  // owned
  int32_t numCpus;
  int32_t *cpus;  // owned array, ascending, no CPU twice
} affinityHost;

typedef struct affinityAlloc {
  int32_t numHosts;
  struct affinityHost *hosts;  // owned array
} affinityAlloc;

// Reads "host:LIST;host:LIST", LIST as in cpuset(7) such as "0-3,8"; the last colon of an entry separates,
// so a host name may hold colons, but no semicolon. An empty LIST is allowed. Returns a new allocation,
// released with freeupAffinityJobData and free; null when the text is null, empty or not of that form, holds
// more than 1,048,576 CPUs, or when memory runs out.
WMQ_API struct affinityAlloc *parseAffinityAllocField(const char *text);

// Text form of an allocation, to be freed by the caller; null when `allocation` is null, has no host, or
// memory runs out.
WMQ_API char *convertAffinityAlloc2Str(const struct affinityAlloc *allocation);

// Releases what the allocation holds, not the structure itself. Null is allowed.
WMQ_API void freeupAffinityJobData(struct affinityAlloc *allocation);

// Network windows given to a job.
typedef struct networkAlloc {
  char *name;  // owned
  int32_t numWindows;
} networkAlloc;

// Text form "name=count;name=count", to be freed by the caller; null when the count is below 1, the array
// missing, or memory runs out.
WMQ_API char *getNetworkAllocAsString(int32_t count, const struct networkAlloc *allocations);

// Reads that text; the last equals sign of an entry separates. Returns 0 with a new array of new names, or
// WMQE_BAD_FORMAT or WMQE_NO_MEM with `*count` 0 and `*allocations` null. An empty text gives no entries.
WMQ_API int getNetworkAllocFromString(const char *text, int32_t *count, struct networkAlloc **allocations);

// Releases the names of `count` allocations, not the array.
WMQ_API void freeNetworkAlloc(int32_t count, struct networkAlloc *allocations);

// ------------------------------------------------------------------- limits

// Number of resource limits of a job, and the index of each.
#define WMX_RLIM_NLIMITS 12
enum {
  WMX_RLIMIT_CPU = 0,
  WMX_RLIMIT_FSIZE = 1,
  WMX_RLIMIT_DATA = 2,
  WMX_RLIMIT_STACK = 3,
  WMX_RLIMIT_CORE = 4,
  WMX_RLIMIT_RSS = 5,
  WMX_RLIMIT_NOFILE = 6,
  WMX_RLIMIT_OPEN_MAX = 7,
  WMX_RLIMIT_SWAP = 8,
  WMX_RLIMIT_RUN = 9,
  WMX_RLIMIT_PROCESS = 10,
  WMX_RLIMIT_THREAD = 11
};

// Names of the limits in index order, then null: "WMX_RLIMIT_CPU" and so on, and the same slots as
// "JOB_RLIMIT_CPU" and so on.
extern WMQ_API const char *const wmxRlimitsStr[WMX_RLIM_NLIMITS + 1];
extern WMQ_API const char *const jobRlimitsStr[WMX_RLIM_NLIMITS + 1];

// Settings of the program, to be set before streams are read or written, not while threads parse.
// `unifiedUnit`: submission records convert their limits only while this is 0 (the start value) or -1.
// `rlimitUnit`: how many line units one record unit of a size limit is; 1 from the start.
extern WMQ_API int unifiedUnit;
extern WMQ_API int rlimitUnit;

// Converts the 12 limits in place: the slots that hold sizes (FSIZE, DATA, STACK, CORE, RSS, SWAP) are
// multiplied by `rlimitUnit` when `direction` is 0 (writing) and divided when it is 1 (reading), saturating.
// -1 and 2147483647 (no limit) stand.
WMQ_API void convertRLimit(int32_t *limits, int direction);

// ---------------------------------------------------------------- users, jobs, log

// Copies the name of user `uid` into `name` (`size` bytes, 60 is always enough for names that streams hold).
// Answers of the system's user database are kept for a minute. Returns 0; non-zero with errno set when there
// is no such user or its name does not fit. Any thread may call it.
WMQ_API int getWMXUserByUid_(int32_t uid, char *name, size_t size);

// Job id of an array job or element: the low 32 bits are the job number, the high 32 bits the array index.
// Text "ID", or "ID[INDEX]" when the index is not 0, in storage of this thread until the next call.
WMQ_API char *wmq_jobid2str(int64_t jobId);

// The plain decimal text of `jobId`, in storage of this thread until the next call.
WMQ_API char *wmq_jobidinstr(int64_t jobId);

// Writes to the system log, like syslog(3) with "%M" for the text of errno.
WMQ_API void wmc_syslog(int priority, const char *format, ...);

#ifdef __cplusplus
}
#endif

#endif
