// Counts the types of records in their JSON form with simdjson: what stands beside wmq stats.
#include <simdjson.h>

#include <cstdio>
#include <map>
#include <string>

using Counts = std::map<std::string, long>;

static Counts countTypes(const simdjson::padded_string &text, size_t longestDocument) {
  Counts types;
  simdjson::ondemand::parser parser;
  simdjson::ondemand::document_stream documents = parser.iterate_many(text, longestDocument);
  for (auto document : documents) ++types[std::string(std::string_view(document["type"]))];
  return types;
}

int main(int argc, char **argv) {
  if (argc != 2) return 2;
  const simdjson::padded_string text = simdjson::padded_string::load(argv[1]);
  // What it is told is the longest is a part that stays in the caches, unless there is a longer one.
  for (size_t longest = size_t{1} << 20;; longest *= 4) {
    try {
      for (const auto &[type, count] : countTypes(text, longest))
        std::printf("%s %ld\n", type.c_str(), count);
      return 0;
    } catch (const simdjson::simdjson_error &error) {
      if (error.error() != simdjson::CAPACITY || longest > text.size()) throw;
    }
  }
}
