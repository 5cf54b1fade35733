// Single values out of tokens. All return false with a fault told when the value is refused.
#ifndef WMQ_JSON_VALUES_H
#define WMQ_JSON_VALUES_H

#include "json/json_fault.h"
#include "json/json_tokens.h"

namespace wmq {

bool wrongKind(const Token &token, const char *wanted, const Place *place);
bool noMemory(const Place *place);

// int32_t or int64_t. Whole means written so: 1.0 and 1e3 are refused.
template <typename T>
bool readWhole(const Token &token, T &value, const Place *place);

// float or double: the nearest value of that very type, or one of the strings "nan", "inf", "-inf".
template <typename T>
bool readReal(const Token &token, T &value, const Place *place);

// Into the char * at `at`: a new copy; null leaves it as it is.
bool readOwnedText(const Token &token, char *at, const Place *place);

// Into the char[size] at `at`.
bool readInlineText(const Token &token, char *at, std::size_t size, const Place *place);

}  // namespace wmq

#endif
