// rowcopy: copies a CSV file into fixed-layout binary records and back, as a bulk-copy tool does,
// with every value converted by the library. Exit status 0: everything was copied; 1: some values
// or rows were not, as reported; 2: it could not be done, as the last line on standard error says.
#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>
#include <iostream>
#include <new>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "context.h"
#include "copy.h"
#include "datatype.h"
#include "fatal.h"
#include "layout.h"
#include "report.h"

namespace rowcopy {
namespace {

constexpr std::string_view kUsage =
    "usage: rowcopy [--section NAME] [--text FILE] [--home DIR] [--from NAME] [--to NAME]\n"
    "               LAYOUT CSV RECORDS\n";

void print_help() {
  std::cout << kUsage
            << "\n"
               "Copies the columns that LAYOUT names from the file CSV into fixed-layout binary\n"
               "records in the file RECORDS, reads these back, converts them to text again, and\n"
               "reports on every column. The first row of CSV names the columns.\n"
               "\n"
               "  --section NAME  the section of LAYOUT; without it the one named as CSV is\n"
               "                  (directory and suffix left out), or the only one\n"
               "  --text FILE     also writes the text of the records to FILE, as CSV\n"
               "  --home DIR      the localization home; without it the one that TALVEN names,\n"
               "                  else the one shipped with rowcopy\n"
               "  --from NAME     locale or character set of CSV; without it the environment's\n"
               "  --to NAME       the same of RECORDS and the text; without it as --from\n"
               "  --help          prints this and ends\n"
               "\n"
               "A layout has a [section] for each file with an entry for each column:\n"
               "  speed = int                        column = type\n"
               "  cost = money : \"Cost Total $\"      heading in CSV, where it differs\n"
               "  weight = float/char(24)            read as one type, converted to another\n"
               "Types: "
            << datatype_spellings()
            << ".\n"
               "\n"
               "An empty field is null, a quoted empty field is empty text. A row with a value\n"
               "that does not convert is not copied, but counted and reported.\n"
               "\n"
               "Exit status: 0 all copied, 1 some rows or values at fault, 2 could not be done.\n";
}

struct Option {
  std::string_view name;
  std::string Job::*value;
};

constexpr std::array kOptions = {
    Option{"--section", &Job::section}, Option{"--text", &Job::text_path},
    Option{"--home", &Job::home},       Option{"--from", &Job::from},
    Option{"--to", &Job::to},
};

// Nothing when the arguments ask for help.
std::optional<Job> parse_arguments(std::span<char*> arguments) {
  Job job;
  std::vector<std::string> files;
  for (std::size_t at = 0; at < arguments.size(); ++at) {
    const std::string_view argument = arguments[at];
    if (argument == "--help") return std::nullopt;
    const auto* option = std::ranges::find(kOptions, argument, &Option::name);
    if (option != kOptions.end()) {
      if (++at == arguments.size()) throw UsageError(std::string(argument) + " needs a value");
      job.*option->value = arguments[at];
    } else if (argument.starts_with('-')) {
      throw UsageError("unknown option " + std::string(argument));
    } else {
      files.emplace_back(argument);
    }
  }
  if (files.size() != 3) {
    throw UsageError("needs three files (LAYOUT CSV RECORDS), got " + std::to_string(files.size()));
  }
  job.layout_path = files[0];
  job.csv_path = files[1];
  job.record_path = files[2];
  return job;
}

int run(std::span<char*> arguments) {
  const auto job = parse_arguments(arguments);
  if (!job) {
    print_help();
    return 0;
  }
  require_distinct_files(*job);
  Context context(job->home);
  const Layout layout = read_layout(context.get(), job->layout_path, job->section, job->csv_path);
  Locales locales;
  locales.from = context.locale(job->from);
  locales.to = job->to.empty() ? locales.from : context.locale(job->to);
  const Report report = copy_rows(context.get(), *job, layout, locales);
  print(report, layout, job->csv_path, job->record_path, std::cout);
  if (!std::cout.flush()) throw Fatal("cannot write the report to standard output");
  return report.clean() ? 0 : 1;
}

}  // namespace
}  // namespace rowcopy

int main(int argc, char** argv) {
  try {
    return rowcopy::run(std::span(argv, static_cast<std::size_t>(argc)).subspan(1));
  } catch (const rowcopy::UsageError& error) {
    std::fprintf(stderr, "rowcopy: %s (rowcopy --help tells more)\n", error.what());
  } catch (const std::bad_alloc&) {
    std::fputs("rowcopy: out of memory\n", stderr);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "rowcopy: %s\n", error.what());
  }
  return 2;
}
