// Quoted strings on a line: a double quote inside is doubled, a line end is a double quote and the letter n,
// and a double quote before anything else ends the string. All other bytes stand as they are.
#ifndef WMQ_COMPANION_QUOTING_H
#define WMQ_COMPANION_QUOTING_H

#include <cstddef>

namespace wmq {

// Number of bytes that quotedInto writes.
size_t quotedSize(const char *text, size_t length);

// Writes `text` in double quotes, without a blank before it and without a NUL, and returns the end. `out` has
// room for 2 * length + 2 bytes; all of them may be overwritten.
char *quotedInto(char *out, const char *text, size_t length);

// Finds the first double quote from `text` on and the end of the string that it opens. Returns the position
// behind the closing quote, or null when one of the two is missing. `*content` is the first byte inside,
// `*rawLength` the number of bytes up to the closing quote, `*length` what they decode to. Nothing from `end`
// on is looked at.
const char *findQuoted(const char *text, const char *end, const char **content, size_t *rawLength,
                       size_t *length);

// Decodes what findQuoted found into exactly `length` bytes, without a NUL.
void decodeQuoted(char *out, const char *content, size_t rawLength, size_t length);

}  // namespace wmq

#endif
