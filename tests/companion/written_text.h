// What a function writes to a file, as text.
#ifndef WMQ_TESTS_WRITTEN_TEXT_H
#define WMQ_TESTS_WRITTEN_TEXT_H

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace wmq::test {

template <class Write>
std::string writtenBy(Write write) {
  char *text = nullptr;
  size_t size = 0;
  FILE *const file = open_memstream(&text, &size);
  write(file);
  std::fclose(file);
  std::string result(text, size);
  std::free(text);
  return result;
}

// The result of a function that writes to a device without room.
template <class Write>
int resultOnAFullDevice(Write write) {
  FILE *const full = std::fopen("/dev/full", "w");
  if (full == nullptr) {
    ADD_FAILURE() << "no /dev/full";
    return 0;
  }
  std::setvbuf(full, nullptr, _IONBF, 0);
  const int result = write(full);
  std::fclose(full);
  return result;
}

}  // namespace wmq::test

#endif
