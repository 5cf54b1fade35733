// What each type code is expected to do, told a second time and independently of the library.
#ifndef WMQ_TESTS_EXPECTED_TYPES_H
#define WMQ_TESTS_EXPECTED_TYPES_H

#include <cstdint>

namespace wmq::testing {

enum class Writing {
  fields,    // header, fields, line end
  openLine,  // header and fields
  header,    // the header alone, without line end
  dropped,   // nothing, with success
  refused,   // nothing, error 45
};

enum class Reading {
  fields,
  header,   // a record without anything in it
  marker,   // a record that says 1
  refused,  // error 45
};

struct ExpectedType {
  int32_t code;
  const char *name;  // null: none
  Writing writing;
  Reading reading;
};

// From -1 to 79.
inline constexpr ExpectedType kExpectedTypes[] = {
    {-1, nullptr, Writing::refused, Reading::refused},
    {0, nullptr, Writing::refused, Reading::refused},
    {1, "JOB_NEW", Writing::fields, Reading::fields},
    {2, "JOB_START", Writing::fields, Reading::fields},
    {3, "JOB_STATUS", Writing::fields, Reading::fields},
    {4, "JOB_SWITCH", Writing::fields, Reading::fields},
    {5, "JOB_MOVE", Writing::fields, Reading::fields},
    {6, "QUEUE_CTRL", Writing::fields, Reading::fields},
    {7, "HOST_CTRL", Writing::fields, Reading::fields},
    {8, "MBD_DIE", Writing::fields, Reading::fields},
    {9, "UNFULFILL", Writing::fields, Reading::fields},
    {10, "JOB_FINISH", Writing::fields, Reading::fields},
    {11, "LOAD_INDEX", Writing::fields, Reading::fields},
    {12, "CHKPNT", Writing::fields, Reading::fields},
    {13, "MIG", Writing::fields, Reading::fields},
    {14, "PRE_EXEC_START", Writing::fields, Reading::fields},
    {15, "MBD_START", Writing::fields, Reading::fields},
    {16, "JOB_ROUTE", Writing::fields, Reading::fields},
    {17, "JOB_MODIFY", Writing::fields, Reading::fields},
    {18, "JOB_SIGNAL", Writing::fields, Reading::fields},
    {19, "CAL_NEW", Writing::fields, Reading::fields},
    {20, "CAL_MODIFY", Writing::fields, Reading::fields},
    {21, "CAL_DELETE", Writing::fields, Reading::fields},
    {22, "JOB_FORWARD", Writing::fields, Reading::fields},
    {23, "JOB_ACCEPT", Writing::fields, Reading::fields},
    {24, "JOB_STAT_ACK", Writing::fields, Reading::fields},
    {25, "JOB_EXECUTE", Writing::fields, Reading::fields},
    {26, "JOB_MSG", Writing::fields, Reading::fields},
    {27, "JOB_MSG_ACK", Writing::fields, Reading::fields},
    {28, "JOB_REQUEUE", Writing::fields, Reading::fields},
    {29, "JOB_OCCUPY_REQ", Writing::header, Reading::header},
    {30, "JOB_VACATED", Writing::header, Reading::header},
    {31, nullptr, Writing::refused, Reading::refused},
    {32, "JOB_SIGACT", Writing::fields, Reading::fields},
    {33, nullptr, Writing::refused, Reading::refused},
    {34, "SBD_JOB_STATUS", Writing::openLine, Reading::fields},
    {35, "JOB_START_ACCEPT", Writing::fields, Reading::fields},
    {36, "CAL_UNDELETE", Writing::fields, Reading::fields},
    {37, "JOB_CLEAN", Writing::fields, Reading::fields},
    {38, "JOB_EXCEPTION", Writing::fields, Reading::fields},
    {39, "GRP_ADD", Writing::fields, Reading::fields},
    {40, "GRP_MOD", Writing::fields, Reading::fields},
    {41, "GRP_CTRL", Writing::fields, Reading::fields},
    {42, "JOB_FORCE", Writing::fields, Reading::fields},
    {43, "LOG_SWITCH", Writing::fields, Reading::fields},
    {44, "JOB_MODIFY2", Writing::fields, Reading::fields},
    {45, "GRP_STATUS", Writing::fields, Reading::fields},
    {46, "JOB_ATTR_SET", Writing::fields, Reading::fields},
    {47, "JOB_EXT_MSG", Writing::fields, Reading::fields},
    {48, "JOB_ATTA_DATA", Writing::fields, Reading::fields},
    {49, "JOB_CHUNK", Writing::fields, Reading::fields},
    {50, nullptr, Writing::refused, Reading::refused},
    {51, "EVENT_ADRSV_FINISH", Writing::fields, Reading::fields},
    {52, "EVENT_HGHOST_CTRL", Writing::fields, Reading::fields},
    {53, "CPUPROFILE_STATUS", Writing::fields, Reading::fields},
    {54, nullptr, Writing::refused, Reading::refused},
    {55, "JOB_RUN_RUSAGE", Writing::fields, Reading::fields},
    {56, "END_OF_STREAM", Writing::refused, Reading::marker},
    {57, "SLA_RECOMPUTE", Writing::fields, Reading::fields},
    {58, "METRIC_LOG", Writing::fields, Reading::fields},
    {59, nullptr, Writing::refused, Reading::refused},
    {60, nullptr, Writing::dropped, Reading::refused},
    {61, nullptr, Writing::dropped, Reading::refused},
    {62, nullptr, Writing::dropped, Reading::refused},
    {63, nullptr, Writing::dropped, Reading::refused},
    {64, nullptr, Writing::dropped, Reading::refused},
    {65, "JOB_RESIZE", Writing::fields, Reading::fields},
    {66, nullptr, Writing::refused, Reading::refused},
    {67, nullptr, Writing::refused, Reading::refused},
    {68, "JOB_FINISH2", Writing::fields, Reading::fields},
    {69, "JOB_STARTLIMIT", Writing::fields, Reading::fields},
    {70, "JOB_STATUS2", Writing::header, Reading::fields},
    {71, "JOB_PENDING_REASONS", Writing::refused, Reading::fields},
    {72, "JOB_SWITCH2", Writing::fields, Reading::fields},
    {73, "JOB_ACCEPTACK", Writing::fields, Reading::fields},
    {74, "JOB_PROVISION_START", Writing::fields, Reading::fields},
    {75, "JOB_PROVISION_END", Writing::fields, Reading::fields},
    {76, nullptr, Writing::refused, Reading::refused},
    {77, "HOST_POWER_STATUS", Writing::fields, Reading::fields},
    {78, "JOB_PROV_HOST", Writing::fields, Reading::fields},
    {79, nullptr, Writing::refused, Reading::refused},
};

}  // namespace wmq::testing

#endif
