// CSV split into fields: rowcopy's reader beside libcsv, whose callback gets each field. Both read
// the file in blocks from the page cache. The figure is the time of a field.
#include <csv.h>
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <string>

#include "../rowcopy/csv_reader.h"
#include "bench.h"

namespace {

using namespace bench;

struct Sums {
  std::size_t fields = 0;
  std::size_t bytes = 0;
};

Sums by_rowcopy(const std::string& path) {
  constexpr std::size_t kRows = 256;
  rowcopy::Source source(path, "");
  const rowcopy::Dialect dialect;
  rowcopy::CsvReader reader(source, dialect);
  Sums sums;
  for (const std::string& field : reader.next_row()) {
    ++sums.fields;
    sums.bytes += field.size();
  }
  rowcopy::Batch rows(sums.fields, kRows);
  while (reader.next(rows)) {
    for (std::size_t column = 0; column < rows.width(); ++column) {
      const rowcopy::FieldColumn fields = rows.column(column);
      sums.fields += fields.count;
      for (std::size_t row = 0; row < fields.count; ++row) sums.bytes += fields[row].size();
    }
  }
  return sums;
}

Sums by_libcsv(const std::string& path) {
  Sums sums;
  const auto take = [](void*, std::size_t size, void* data) {
    auto& all = *static_cast<Sums*>(data);
    ++all.fields;
    all.bytes += size;
  };
  csv_parser parser;
  const int file = open(path.c_str(), O_RDONLY);
  if (file < 0 || csv_init(&parser, CSV_STRICT) != 0) std::abort();
  std::array<char, 65536> block;
  for (ssize_t size; (size = read(file, block.data(), block.size())) > 0;)
    csv_parse(&parser, block.data(), static_cast<std::size_t>(size), take, nullptr, &sums);
  csv_fini(&parser, take, nullptr, &sums);
  csv_free(&parser);
  close(file);
  return sums;
}

void read_file(benchmark::State& state, Sums (*read)(const std::string&), std::string path) {
  const Sums expected = by_rowcopy(path);
  for (auto _ : state) {
    const Sums sums = read(path);
    if (sums.fields != expected.fields || sums.bytes != expected.bytes)
      state.SkipWithError("the readers differ");
  }
  items(state, expected.fields);
}

const Registration registered([] {
  for (const auto& [operation, file] :
       {std::pair("bird strikes", "birdstrikes.csv"),
        std::pair("hourly weather", "seattle-weather-hourly-normals.csv")}) {
    const std::string subject = std::string("csv/") + operation;
    const std::string path = std::string(COMNLIB_DATA) + "/" + file;
    measure(subject + "/comnlib", read_file, by_rowcopy, path);
    measure(subject + "/libcsv", read_file, by_libcsv, path);
  }
});

}  // namespace
