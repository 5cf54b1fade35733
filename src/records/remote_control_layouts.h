// Layouts of the remote job control records, for the records that embed them.
#ifndef WMQ_RECORDS_REMOTE_CONTROL_LAYOUTS_H
#define WMQ_RECORDS_REMOTE_CONTROL_LAYOUTS_H

#include "wmq.stream/codec.h"
#include "wmq/records/remote_control.h"

namespace wmq {

template <>
inline constexpr size_t leastBytes<oldRmtJobCtrlRecord> = 10;
template <>
inline constexpr size_t leastBytes<newRmtJobCtrlRecord> = 8;
template <>
inline constexpr size_t leastBytes<rmtCtrlEntry> = 4;

inline void layout(auto &io, oldRmtJobCtrlRecord &record) {
  using R = oldRmtJobCtrlRecord;
  text<&R::ctrlName1>(io, record);
  text<&R::ctrlName2>(io, record);
  list<&R::numIds, &R::ids>(io, record);
  number<&R::numPairs>(io, record);
  parallelElements<&R::numPairs, &R::pairIds, &R::pairValues>(io, record, WMQE_BAD_FORMAT);
}

inline void layout(auto &io, rmtCtrlEntry &entry) {
  using E = rmtCtrlEntry;
  numbers<&E::id, &E::count>(io, entry);
  negativeFails<&E::count>(io, entry);
  parallelElements<&E::count, &E::a, &E::b, &E::c>(io, entry, WMQE_NO_MEM);
}

// The second list is written without the counts of its entries and cannot be read back; the reader goes on
// before its count.
template <typename R>
void secondList(Writer &io, const R &record) {
  putInteger(io, record.numEntries2);
  if (!arrayGiven(io, record.numEntries2, record.entries2, "entries2") ||
      !arrayGiven(io, record.numEntries2, record.values2, "values2"))
    return;
  for (int32_t i = 0; i < record.numEntries2 && io.error == 0; ++i) {
    using E = rmtCtrlEntry;
    putInteger(io, record.entries2[i].id);
    parallelElements<&E::count, &E::a, &E::b, &E::c>(io, record.entries2[i], WMQE_NO_MEM);
    putInteger(io, record.values2[i]);
  }
}
template <typename R>
void secondList(Reader &io, R &record) {
  if (io.error != 0) return;
  if (record.numEntries2 > 0) return fail(io, WMQE_BAD_FORMAT, "numEntries2", "no second list");
  record.entries2 = nullptr;
  record.values2 = nullptr;
}
template <typename R>
void secondList(Releaser &io, R &record) {
  const int32_t count = record.numEntries2;
  elements<&R::numEntries2, &R::entries2>(io, record);
  record.numEntries2 = count;
  parallelElements<&R::numEntries2, &R::values2>(io, record, 0);
}
template <typename R>
void secondList(Describer &io, const R &record) {
  placeList<&R::numEntries2, &R::entries2>(io, record, always, "%d", "entries without their counts", "null",
                                           WMQ_FIELD_WRITTEN_ONLY);
  wmqField values = arrayField<&R::numEntries2, &R::values2>(io, record, "%d behind each entry");
  values.flags |= WMQ_FIELD_WRITTEN_ONLY;
  placeTogether(io, values);
}

inline void layout(auto &io, newRmtJobCtrlRecord &record) {
  using R = newRmtJobCtrlRecord;
  text<&R::ctrlName1>(io, record);
  text<&R::ctrlName2>(io, record);
  list<&R::numEntries, &R::entries>(io, record);
  secondList(io, record);
}

// Old records behind an integer and their count.
template <typename L>
void remoteControls(auto &io, L &log) {
  numbers<orElse<&L::rmtCtrlInt, -1>, &L::numRmtJobCtrl>(io, log, atLeast(9.1F));
  elements<&L::numRmtJobCtrl, &L::rmtJobCtrls>(io, log);
}

}  // namespace wmq

#endif
