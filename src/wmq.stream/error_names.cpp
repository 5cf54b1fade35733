#include <iterator>

#include "wmq/event_types.h"

namespace {

struct Error {
  int number;
  const char *name;
  const char *meaning;
};

constexpr Error kErrors[] = {
    {0, "0", "no error"},
    {WMQE_BAD_ARG, "WMQE_BAD_ARG", "a required argument is missing"},
    {WMQE_BAD_EVENT, "WMQE_BAD_EVENT", "no such event type"},
    {WMQE_BAD_FORMAT, "WMQE_BAD_FORMAT", "the line or one of its fields is missing or malformed"},
    {WMQE_EOF, "WMQE_EOF", "no further line"},
    {WMQE_NO_USER, "WMQE_NO_USER", "no name for the user id"},
    {WMQE_SYS, "WMQE_SYS", "a file operation failed"},
    {WMQE_NO_MEM, "WMQE_NO_MEM", "out of memory"},
    {WMCE_NO_MEM, "WMCE_NO_MEM", "out of memory (base library)"},
    {WMQE_FILES_REMOVED, "WMQE_FILES_REMOVED", "a rotation removed old stream files"},
};

const Error *find(int number) {
  for (const Error &error : kErrors)
    if (error.number == number) return &error;
  return nullptr;
}

}  // namespace

const char *wmq_errname(int number) {
  const Error *error = find(number);
  return error ? error->name : "unknown";
}

const char *wmq_strerror(int number) {
  const Error *error = find(number);
  return error ? error->meaning : "unknown error number";
}

const char *wmq_version(void) { return WMQ_VERSION; }
