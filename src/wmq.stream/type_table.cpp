#include "wmq.stream/type_table.h"

#include <array>
#include <cstring>
#include <iterator>
#include <string_view>

#include "companion/byte_groups.h"
#include "records/record_codecs.h"
#include "wmq/event_record.h"

namespace wmq {

static const wmqLayout *describeNothing() {
  static const wmqLayout nothing{"", 0, 0, nullptr};
  return &nothing;
}

static const wmqLayout *describeEndOfStream() {
  static const wmqField marker{.name = "endOfStream",
                               .nameLength = sizeof "endOfStream" - 1,
                               .kind = WMQ_KIND_INT32,
                               .shape = WMQ_SHAPE_ONE,
                               .flags = WMQ_FIELD_OFF_LINE,
                               .offset = 0,
                               .size = sizeof(int32_t),
                               .length = 1,
                               .layout = nullptr,
                               .countName = nullptr,
                               .countOffset = 0,
                               .countKind = WMQ_KIND_INT32,
                               .position = 0,
                               .form = "",
                               .gate = WMQ_GATE_ALWAYS,
                               .gateVersion = 0,
                               .condition = "",
                               .absent = "",
                               .note = "1 when read; whatever follows the header is ignored",
                               .minLength = 0};
  static const wmqLayout layout{"eventLog", sizeof(int32_t), 1, &marker};
  return &layout;
}

static constexpr RecordCodec noFields{[](Writer &, void *) {}, [](Reader &, void *) {},
                                      [](Releaser &, void *) {}, describeNothing};
static constexpr RecordCodec endOfStream{[](Writer &, void *) {},
                                         [](Reader &, void *log) { *static_cast<int32_t *>(log) = 1; },
                                         [](Releaser &, void *) {}, describeEndOfStream};

static constexpr EventType kTypes[] = {
    {0, Body::unknown, nullptr, nullptr},
    {EVENT_JOB_NEW, Body::fields, "JOB_NEW", &jobNewCodec},
    {EVENT_JOB_START, Body::fields, "JOB_START", &jobStartCodec},
    {EVENT_JOB_STATUS, Body::fields, "JOB_STATUS", &jobStatusCodec},
    {EVENT_JOB_SWITCH, Body::fields, "JOB_SWITCH", &jobSwitchCodec},
    {EVENT_JOB_MOVE, Body::fields, "JOB_MOVE", &jobMoveCodec},
    {EVENT_QUEUE_CTRL, Body::fields, "QUEUE_CTRL", &queueCtrlCodec},
    {EVENT_HOST_CTRL, Body::fields, "HOST_CTRL", &hostCtrlCodec},
    {EVENT_MBD_DIE, Body::fields, "MBD_DIE", &mbdDieCodec},
    {EVENT_UNFULFILL, Body::fields, "UNFULFILL", &unfulfillCodec},
    {EVENT_JOB_FINISH, Body::fields, "JOB_FINISH", &jobFinishCodec},
    {EVENT_LOAD_INDEX, Body::fields, "LOAD_INDEX", &loadIndexCodec},
    {EVENT_CHKPNT, Body::fields, "CHKPNT", &chkpntCodec},
    {EVENT_MIG, Body::fields, "MIG", &migCodec},
    {EVENT_PRE_EXEC_START, Body::fields, "PRE_EXEC_START", &jobStartCodec},
    {EVENT_MBD_START, Body::fields, "MBD_START", &mbdStartCodec},
    {EVENT_JOB_ROUTE, Body::fields, "JOB_ROUTE", &jobStartCodec},
    {EVENT_JOB_MODIFY, Body::fields, "JOB_MODIFY", &jobNewCodec},
    {EVENT_JOB_SIGNAL, Body::fields, "JOB_SIGNAL", &jobSignalCodec},
    {EVENT_CAL_NEW, Body::fields, "CAL_NEW", &calendarCodec},
    {EVENT_CAL_MODIFY, Body::fields, "CAL_MODIFY", &calendarCodec},
    {EVENT_CAL_DELETE, Body::fields, "CAL_DELETE", &calendarCodec},
    {EVENT_JOB_FORWARD, Body::fields, "JOB_FORWARD", &jobForwardCodec},
    {EVENT_JOB_ACCEPT, Body::fields, "JOB_ACCEPT", &jobAcceptCodec},
    {EVENT_JOB_STAT_ACK, Body::fields, "JOB_STAT_ACK", &statusAckCodec},
    {EVENT_JOB_EXECUTE, Body::fields, "JOB_EXECUTE", &jobExecuteCodec},
    {EVENT_JOB_MSG, Body::fields, "JOB_MSG", &jobMsgCodec},
    {EVENT_JOB_MSG_ACK, Body::fields, "JOB_MSG_ACK", &jobMsgAckCodec},
    {EVENT_JOB_REQUEUE, Body::fields, "JOB_REQUEUE", &jobRequeueCodec},
    {EVENT_JOB_OCCUPY_REQ, Body::headerOnly, "JOB_OCCUPY_REQ", &noFields},
    {EVENT_JOB_VACATED, Body::headerOnly, "JOB_VACATED", &noFields},
    {31, Body::unknown, nullptr, nullptr},
    {EVENT_JOB_SIGACT, Body::fields, "JOB_SIGACT", &jobSigActCodec},
    {33, Body::unknown, nullptr, nullptr},
    {EVENT_SBD_JOB_STATUS, Body::openLine, "SBD_JOB_STATUS", &sbdJobStatusCodec},
    {EVENT_JOB_START_ACCEPT, Body::fields, "JOB_START_ACCEPT", &jobStartAcceptCodec},
    {EVENT_CAL_UNDELETE, Body::fields, "CAL_UNDELETE", &calendarCodec},
    {EVENT_JOB_CLEAN, Body::fields, "JOB_CLEAN", &jobCleanCodec},
    {EVENT_JOB_EXCEPTION, Body::fields, "JOB_EXCEPTION", &jobExceptionCodec},
    {EVENT_GRP_ADD, Body::fields, "GRP_ADD", &jgrpAddCodec},
    {EVENT_GRP_MOD, Body::fields, "GRP_MOD", &jgrpModCodec},
    {EVENT_GRP_CTRL, Body::fields, "GRP_CTRL", &jgrpCtrlCodec},
    {EVENT_JOB_FORCE, Body::fields, "JOB_FORCE", &jobForceCodec},
    {EVENT_LOG_SWITCH, Body::fields, "LOG_SWITCH", &logSwitchCodec},
    {EVENT_JOB_MODIFY2, Body::fields, "JOB_MODIFY2", &jobModCodec},
    {EVENT_GRP_STATUS, Body::fields, "GRP_STATUS", &jgrpStatusCodec},
    {EVENT_JOB_ATTR_SET, Body::fields, "JOB_ATTR_SET", &jobAttrSetCodec},
    {EVENT_JOB_EXT_MSG, Body::fields, "JOB_EXT_MSG", &jobExternalMsgCodec},
    {EVENT_JOB_ATTA_DATA, Body::fields, "JOB_ATTA_DATA", &jobAttaDataCodec},
    {EVENT_JOB_CHUNK, Body::fields, "JOB_CHUNK", &jobChunkCodec},
    {50, Body::unknown, nullptr, nullptr},
    {EVENT_ADRSV_FINISH, Body::fields, "EVENT_ADRSV_FINISH", &rsvFinishCodec},
    {EVENT_HGHOST_CTRL, Body::fields, "EVENT_HGHOST_CTRL", &hgHostCtrlCodec},
    {EVENT_CPUPROFILE_STATUS, Body::fields, "CPUPROFILE_STATUS", &cpuProfileCodec},
    {54, Body::unknown, nullptr, nullptr},
    {EVENT_JOB_RUN_RUSAGE, Body::fields, "JOB_RUN_RUSAGE", &jobRunRusageCodec},
    {EVENT_END_OF_STREAM, Body::elsewhere, "END_OF_STREAM", &endOfStream},
    {EVENT_SLA_RECOMPUTE, Body::fields, "SLA_RECOMPUTE", &slaCodec},
    {EVENT_METRIC_LOG, Body::fields, "METRIC_LOG", &perfmonMetricsCodec},
    {59, Body::unknown, nullptr, nullptr},
    {60, Body::dropped, nullptr, &retiredListCodec},
    {61, Body::dropped, nullptr, &noFields},
    {62, Body::dropped, nullptr, &noFields},
    {63, Body::dropped, nullptr, &retiredAllocationCodec},
    {64, Body::dropped, nullptr, &retiredTextCodec},
    {EVENT_JOB_RESIZE, Body::fields, "JOB_RESIZE", &jobResizeCodec},
    {66, Body::unknown, nullptr, nullptr},
    {67, Body::unknown, nullptr, nullptr},
    {EVENT_JOB_FINISH2, Body::fields, "JOB_FINISH2", &jobFinish2Codec},
    {EVENT_JOB_STARTLIMIT, Body::fields, "JOB_STARTLIMIT", &jobStartLimitCodec},
    {EVENT_JOB_STATUS2, Body::sideStream, "JOB_STATUS2", &jobStatus2Codec},
    {EVENT_JOB_PENDING_REASONS, Body::elsewhere, "JOB_PENDING_REASONS", &jobPendingReasonsCodec},
    {EVENT_JOB_SWITCH2, Body::fields, "JOB_SWITCH2", &jobSwitch2Codec},
    {EVENT_JOB_ACCEPTACK, Body::fields, "JOB_ACCEPTACK", &jobAcceptAckCodec},
    {EVENT_JOB_PROVISION_START, Body::fields, "JOB_PROVISION_START", &jobProvisionStartCodec},
    {EVENT_JOB_PROVISION_END, Body::fields, "JOB_PROVISION_END", &jobProvisionEndCodec},
    {76, Body::unknown, nullptr, nullptr},
    {EVENT_HOST_POWER_STATUS, Body::fields, "HOST_POWER_STATUS", &hostPowerStatusCodec},
    {EVENT_JOB_PROV_HOST, Body::fields, "JOB_PROV_HOST", &jobProvHostCodec},
};

static_assert(std::size(kTypes) == WMQ_MAX_EVENT_TYPE + 1);
static_assert(
    [] {
      for (size_t i = 0; i < std::size(kTypes); ++i)
        if (kTypes[i].code != static_cast<int32_t>(i)) return false;
      return true;
    }(),
    "the rows stand in the order of their codes");

// ---------------------------------------------------------------- lookup by name

constexpr size_t kSlots = 256;

// Three characters and the length tell most names apart.
static constexpr size_t slotOf(std::string_view name) {
  if (name.empty()) return 0;
  const size_t length = name.size();
  const auto byte = [name](size_t place) -> size_t { return static_cast<unsigned char>(name[place]); };
  return (((length * 31 + byte(length / 4)) * 31 + byte(length / 2)) * 31 + byte(length - 1)) % kSlots;
}

struct NamedSlot {
  uint8_t code = 0;  // 0: empty; code 0 has no name
  uint8_t nameLength = 0;
};

static constexpr auto kByName = [] {
  std::array<NamedSlot, kSlots> slots{};
  for (const EventType &type : kTypes) {
    if (type.name == nullptr) continue;
    const std::string_view name(type.name);
    size_t slot = slotOf(name);
    while (slots[slot].code != 0) slot = (slot + 1) % kSlots;
    slots[slot] = {static_cast<uint8_t>(type.code), static_cast<uint8_t>(name.size())};
  }
  return slots;
}();

const EventType &eventType(int32_t code) {
  return kTypes[code >= 0 && code <= WMQ_MAX_EVENT_TYPE ? code : 0];
}

const EventType *eventTypeNamed(const char *name, size_t length) {
  for (size_t slot = slotOf({name, length}); kByName[slot].code != 0; slot = (slot + 1) % kSlots) {
    const EventType &type = kTypes[kByName[slot].code];
    if (kByName[slot].nameLength == length && sameBytes(name, type.name, length)) return &type;
  }
  return nullptr;
}

}  // namespace wmq

const char *wmq_typename(int32_t type) { return wmq::eventType(type).name; }

int32_t wmq_typecode(const char *name) {
  if (name == nullptr) return -1;
  const wmq::EventType *type = wmq::eventTypeNamed(name, std::strlen(name));
  return type ? type->code : -1;
}

const wmqLayout *wmq_schema(int32_t type) {
  const wmq::RecordCodec *codec = wmq::eventType(type).codec;
  if (codec == nullptr) return nullptr;
  try {
    return codec->describe();
  } catch (...) {  // no memory for the description
    return nullptr;
  }
}

int wmq_gateopen(const wmqField *field, float version) {
  return field != nullptr && wmq::gateOpen({field->gate, field->gateVersion}, version);
}
