// The two passes of a copy: CSV to records, and the records back to text.
#pragma once

#include <string>

#include "converter.h"
#include "layout.h"
#include "report.h"

namespace rowcopy {

struct Job {
  std::string layout_path;
  std::string csv_path;
  std::string record_path;
  std::string section;    // of the layout file; empty: chosen by the CSV file's name
  std::string text_path;  // CSV file for the records' text; empty: none is written
  std::string home;       // localization home; empty: from the environment, or the shipped one
  std::string from;       // locale or character set of the CSV file; empty: the context's
  std::string to;         // the same of records and text; empty: as `from`
};

// Throws Fatal when an output is also an input or another output.
void require_distinct_files(const Job& job);

// Copies every row without a fault; the others are counted and described in the report. A value is
// at fault when a conversion answers with anything but CS_SUCCEED or when the text of what the
// record holds does not read back as the same value. Throws Fatal for files and layouts that
// cannot be used.
Report copy_rows(CS_CONTEXT* context, const Job& job, const Layout& layout, Locales locales);

}  // namespace rowcopy
