// Counts the types of records in their JSON form with simdjson: what stands beside wmq stats.
#include <simdjson.h>

#include <cstdio>
#include <map>
#include <string>

int main(int argc, char **argv) {
  if (argc != 2) return 2;
  simdjson::ondemand::parser parser;
  simdjson::padded_string text = simdjson::padded_string::load(argv[1]);
  std::map<std::string, long> types;
  simdjson::ondemand::document_stream documents;
  if (parser.iterate_many(text, size_t{1} << 20).get(documents) != simdjson::SUCCESS) return 1;
  for (auto document : documents) ++types[std::string(std::string_view(document["type"]))];
  for (const auto &[type, count] : types) std::printf("%s %ld\n", type.c_str(), count);
}
