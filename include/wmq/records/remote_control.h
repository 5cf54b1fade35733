// Remote job control records, which other records embed.
#ifndef WMQ_RECORDS_REMOTE_CONTROL_H
#define WMQ_RECORDS_REMOTE_CONTROL_H

#include "wmq/records/shapes.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct oldRmtJobCtrlRecord {
  char *ctrlName1;
  char *ctrlName2;
  int32_t numIds;
  int64_t *ids;
  int32_t numPairs;
  int64_t *pairIds;     // numPairs
  int32_t *pairValues;  // numPairs
} oldRmtJobCtrlRecord;

typedef struct rmtCtrlEntry {
  int32_t id;
  int32_t count;
  int32_t *a;  // count each
  int32_t *b;
  int32_t *c;
} rmtCtrlEntry;

typedef struct newRmtJobCtrlRecord {
  char *ctrlName1;
  char *ctrlName2;
  int32_t numEntries;
  struct rmtCtrlEntry *entries;
  int32_t numEntries2;  // the second list is written and cannot be read back: leave it empty
  struct rmtCtrlEntry *entries2;
  int32_t *values2;  // numEntries2
} newRmtJobCtrlRecord;

// Writers put one record behind what stands in the file, without line end; 0, WMQE_SYS, or WMQE_BAD_ARG for a
// null argument.
WMQ_API int writeRmtJobCtrlRecord2File(FILE *file, const struct oldRmtJobCtrlRecord *record);
WMQ_API int writeNewRmtJobCtrlRecord2File(FILE *file, const struct newRmtJobCtrlRecord *record);

// Readers take one record at `*position` of a NUL-terminated line and move `*position` behind it, as far as
// they came also after a failure behind the two names. They return 0, WMQE_BAD_FORMAT (also when a pair array
// of an old record cannot be allocated), WMQE_NO_MEM, or WMQE_BAD_ARG for a null argument. A new record that
// already holds a positive numEntries2 is refused with WMQE_BAD_FORMAT.
WMQ_API int readRmtJobCtrlRecordFromLine(char **position, struct oldRmtJobCtrlRecord *record);
WMQ_API int readNewRmtJobCtrlRecordFromLine(char **position, struct newRmtJobCtrlRecord *record);

// Release the members, not the record itself. Null is allowed.
WMQ_API void freeRmtJobCtrlRecord(struct oldRmtJobCtrlRecord *record);
WMQ_API void freeRmtJobCtrlRecord2(struct newRmtJobCtrlRecord *record);

#ifdef __cplusplus
}
#endif

#endif
