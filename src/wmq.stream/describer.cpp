#include "wmq.stream/describer.h"

#include <cstddef>
#include <cstdio>
#include <cstring>

namespace wmq {

const char *keepText(Describer &io, std::string text) {
  if (text.empty()) return "";
  return io.out.texts.emplace_back(std::move(text)).c_str();
}

std::string bitsText(const char *member, uint32_t mask) {
  if (mask == ~0U) return std::string(member) + " is not 0";
  char text[16];
  std::snprintf(text, sizeof text, "0x%x", mask);
  return std::string(member) + " & " + text;
}

void place(Describer &io, wmqField field) {
  if (io.fromFirstField) field.note = "read from the first field on again";
  field.position = ++io.position;
  io.out.fields.push_back(field);
}

void placeTogether(Describer &io, wmqField field) {
  field.position = io.position;
  io.out.fields.push_back(field);
}

void offLine(Describer &io, wmqField field, const char *note) {
  field.position = 0;
  field.note = note;
  field.flags |= WMQ_FIELD_OFF_LINE;
  io.out.fields.push_back(field);
}

void noteForgotten(Describer &io, const char *name, Gate gate) {
  char note[64];
  std::snprintf(note, sizeof note, "dropped when read from a line before %g",
                static_cast<double>(gate.threshold));
  for (wmqField &field : io.out.fields)
    if (std::string_view(field.name) == name) field.note = keepText(io, note);
}

void finishDescription(Description &out, std::string_view name, size_t size) {
  for (const wmqField &array : out.fields)
    if (array.shape == WMQ_SHAPE_COUNTED)
      for (wmqField &field : out.fields)
        if (field.offset == array.countOffset) field.flags |= WMQ_FIELD_COUNT;
  for (wmqField &field : out.fields) field.nameLength = std::strlen(field.name);
  const std::string_view plain = name.substr(name.rfind(':') + 1);
  out.texts.emplace_back(plain);
  out.layout = {out.texts.back().c_str(), size, out.fields.size(), out.fields.data()};
}

template <>
const wmqLayout *layoutOf<wmxRusage>() {
  static const char *const names[WMX_RUSAGE_VALUES] = {
      "ru_utime",  "ru_stime",  "ru_maxrss",  "ru_ixrss",   "ru_idrss",  "ru_isrss",  "ru_minflt",
      "ru_majflt", "ru_nswap",  "ru_inblock", "ru_oublock", "ru_msgsnd", "ru_msgrcv", "ru_nsignals",
      "ru_nvcsw",  "ru_nivcsw", "ru_rchar",   "ru_wchar",   "ru_elapsed"};
  static_assert(sizeof(wmxRusage) == WMX_RUSAGE_VALUES * sizeof(double));
  static const Description description = [] {
    Description out;
    for (int i = 0; i < WMX_RUSAGE_VALUES; ++i) {
      wmqField field{};
      field.name = names[i];
      field.kind = WMQ_KIND_DOUBLE;
      field.shape = WMQ_SHAPE_ONE;
      field.offset = static_cast<size_t>(i) * sizeof(double);
      field.size = sizeof(double);
      field.length = 1;
      field.position = i + 1;
      field.form = "shortest decimal";
      field.condition = field.absent = field.note = "";
      if (i > 0) field.flags = WMQ_FIELD_TOGETHER;
      out.fields.push_back(field);
    }
    finishDescription(out, "wmxRusage", sizeof(wmxRusage));
    return out;
  }();
  return &description.layout;
}

}  // namespace wmq
