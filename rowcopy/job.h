// What a run is asked to do, as the command line says it.
#pragma once

#include <cstddef>
#include <limits>
#include <string>

#include "dialect.h"

namespace rowcopy {

struct Job {
  std::string layout_path;
  std::string csv_path;      // "-" is standard input
  std::string record_path;   // "-" is standard output, here and for the other outputs
  std::string section;       // of the layout file; empty: chosen by the CSV file's name
  std::string text_path;     // CSV file for the records' text; empty: none is written
  std::string rejects_path;  // CSV file for the rejected rows; empty: none is written
  std::string schema_path;   // JSON description of the records; empty: none is written
  std::string home;          // localization home; empty: from the environment, or the shipped one
  std::string from;          // locale or character set of the CSV file; empty: the context's
  std::string to;            // the same of records and text; empty: as `from`
  Dialect dialect;
  bool no_header = false;      // the first row is data
  bool allow_changes = false;  // a value that changed is counted but no fault
  bool locale_dates = false;   // dates in the locale's style instead of ISO 8601
  bool short_floats = false;   // floats in the fewest digits instead of seventeen
  bool quiet = false;          // no report
  bool sniff = false;          // propose a layout for csv_path, copy nothing
  std::size_t max_errors = std::numeric_limits<std::size_t>::max();
  std::size_t jobs = 1;  // threads
};

}  // namespace rowcopy
