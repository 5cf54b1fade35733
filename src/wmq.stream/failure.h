// What a record's reading or writing, or a rotation, stumbled over, for wmq_errdetail.
#ifndef WMQ_STREAM_FAILURE_H
#define WMQ_STREAM_FAILURE_H

#include <cstddef>

namespace wmq {

// The type that this thread is reading or writing; null outside of records.
void nameType(const char *typeName);

// Remembers a failure. All texts are static. `position` is a byte position in the line.
void noteFailure(const char *field, size_t position, const char *expected);

// Remembers what a rotation could not do, and with which file ("" where that says nothing); errno stays.
void noteRotationFailure(const char *what, const char *fileName);

// The last failure is one of which there is no more to tell than its number and errno.
void forgetFailure();

}  // namespace wmq

#endif
