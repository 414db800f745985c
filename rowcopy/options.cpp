#include "options.h"

#include <getopt.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <ostream>
#include <string_view>
#include <vector>

#include "comnlib.h"
#include "datatype.h"
#include "fatal.h"

namespace rowcopy {
namespace {

constexpr std::string_view kUsage =
    "usage: rowcopy [OPTION...] LAYOUT CSV RECORDS\n"
    "       rowcopy --sniff [OPTION...] CSV\n";

constexpr std::string_view kHelp =
    "\n"
    "Copies the columns that LAYOUT names from the file CSV into fixed-layout binary records in\n"
    "the file RECORDS, converts these to text again, compares, and reports on every column.\n"
    "\"-\" is standard input or output; a name that ends in .gz is that of a packed file.\n"
    "\n"
    "The CSV file\n"
    "      --no-header       its first row is data; columns are named by number: \"id = int : 1\"\n"
    "      --delimiter C     a character, or tab, comma, semicolon, pipe, space; without it comma\n"
    "      --quote C         a character, or none; without it \"\n"
    "      --null TEXT       an unquoted field of this text is null, as an empty one is\n"
    "      --from NAME       its locale or character set; without it the environment's\n"
    "\n"
    "The copy\n"
    "      --section NAME    the section of LAYOUT; without it the one named as CSV is, or the\n"
    "                        only one\n"
    "      --to NAME         locale or character set of records and text; without it as --from\n"
    "      --allow-changes   copies values that their type does not hold as they are in the file\n"
    "      --max-errors N    gives up after more than N faults\n"
    "  -j, --jobs N          converts on N threads\n"
    "      --home DIR        the localization home; without it the one that TALVEN names, else\n"
    "                        the one shipped with rowcopy\n"
    "\n"
    "Further outputs\n"
    "      --text FILE       the text of the records, as CSV\n"
    "      --locale-dates    dates in it in the locale's style instead of ISO 8601\n"
    "      --short-floats    floats in it in as few digits as tell them apart, instead of 17\n"
    "      --rejects FILE    the rows that were not copied, with line, column, code and reason\n"
    "      --schema FILE     a description of the records in JSON\n"
    "\n"
    "      --sniff           proposes a layout for CSV on standard output, copies nothing\n"
    "  -q, --quiet           prints no report\n"
    "  -h, --help            prints this and ends\n"
    "  -V, --version         prints the version and ends\n"
    "\n"
    "A layout has a [section] for each file with an entry for each column:\n"
    "  speed = int                        column = type\n"
    "  cost = money : \"Cost Total $\"      heading in CSV, where it differs\n"
    "  rate = float : #3                  the third column, whatever its heading\n"
    "  weight = float/char(24)            read as one type, converted to another\n"
    "Types: ";

constexpr std::string_view kHelpEnd =
    ".\n"
    "\n"
    "Exit status: 0 every row was copied and every value is the same; 1 some rows or values are\n"
    "at fault, as reported; 2 it could not be done, and no output was touched.\n";

struct NamedByte {
  std::string_view name;
  char byte;
};
constexpr std::array kNamedBytes = {NamedByte{"tab", '\t'},  NamedByte{"\\t", '\t'},
                                    NamedByte{"comma", ','}, NamedByte{"semicolon", ';'},
                                    NamedByte{"pipe", '|'},  NamedByte{"space", ' '}};

char read_byte(std::string_view option, std::string_view text) {
  const auto* named = std::ranges::find(kNamedBytes, text, &NamedByte::name);
  const char byte = named != kNamedBytes.end() ? named->byte : text.size() == 1 ? text[0] : '\0';
  // A byte of a longer character would be found within others.
  if (byte == '\0' || byte == '\n' || byte == '\r' || static_cast<unsigned char>(byte) >= 0x80)
    throw UsageError(std::string(option) + " is one ASCII character or its name, not \"" +
                     std::string(text) + "\"");
  return byte;
}

std::size_t read_count(std::string_view option, std::string_view text, std::size_t least,
                       std::size_t most) {
  std::size_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc{} || end != text.data() + text.size() || number < least || number > most)
    throw UsageError(std::string(option) + " is a number from " + std::to_string(least) + " to " +
                     std::to_string(most) + ", not \"" + std::string(text) + "\"");
  return number;
}

// An option with a text of the job, one that switches something, or one with a value to be read.
struct Setting {
  const char* name;
  std::string Job::*text = nullptr;
  bool Job::*flag = nullptr;
  void (*read)(const char* value, Job& job) = nullptr;
};

constexpr std::size_t kMostJobs = 64;
constexpr std::size_t kMostErrors = std::numeric_limits<CS_INT>::max();

void read_delimiter(const char* value, Job& job) {
  job.dialect.delimiter = read_byte("--delimiter", value);
}
void read_quote(const char* value, Job& job) {
  job.dialect.quote.reset();
  if (std::string_view(value) != "none") job.dialect.quote = read_byte("--quote", value);
}
void read_null(const char* value, Job& job) {
  job.dialect.null_word = value;
}
void read_max_errors(const char* value, Job& job) {
  job.max_errors = read_count("--max-errors", value, 0, kMostErrors);
}
void read_jobs(const char* value, Job& job) {
  job.jobs = read_count("--jobs", value, 1, kMostJobs);
}

constexpr std::array kSettings = {
    Setting{.name = "section", .text = &Job::section},
    Setting{.name = "text", .text = &Job::text_path},
    Setting{.name = "home", .text = &Job::home},
    Setting{.name = "from", .text = &Job::from},
    Setting{.name = "to", .text = &Job::to},
    Setting{.name = "rejects", .text = &Job::rejects_path},
    Setting{.name = "schema", .text = &Job::schema_path},
    Setting{.name = "no-header", .flag = &Job::no_header},
    Setting{.name = "allow-changes", .flag = &Job::allow_changes},
    Setting{.name = "locale-dates", .flag = &Job::locale_dates},
    Setting{.name = "short-floats", .flag = &Job::short_floats},
    Setting{.name = "sniff", .flag = &Job::sniff},
    Setting{.name = "quiet", .flag = &Job::quiet},
    Setting{.name = "delimiter", .read = read_delimiter},
    Setting{.name = "quote", .read = read_quote},
    Setting{.name = "null", .read = read_null},
    Setting{.name = "max-errors", .read = read_max_errors},
    Setting{.name = "jobs", .read = read_jobs},
};
constexpr int kFirstSetting = 256;  // apart from the letters

// What getopt_long takes: a number for each setting.
auto long_options() {
  std::array<option, kSettings.size() + 3> options{};
  for (std::size_t at = 0; at < kSettings.size(); ++at) {
    const Setting& setting = kSettings[at];
    options[at] = {setting.name, setting.flag == nullptr ? required_argument : no_argument, nullptr,
                   kFirstSetting + static_cast<int>(at)};
  }
  options[kSettings.size()] = {"help", no_argument, nullptr, 'h'};
  options[kSettings.size() + 1] = {"version", no_argument, nullptr, 'V'};
  return options;
}

void apply(const Setting& setting, const char* value, Job& job) {
  if (setting.text != nullptr) job.*setting.text = value;
  if (setting.flag != nullptr) job.*setting.flag = true;
  if (setting.read != nullptr) setting.read(value, job);
}

void take_files(const std::vector<std::string>& files, Job& job) {
  const std::size_t needed = job.sniff ? 1 : 3;
  if (files.size() != needed)
    throw UsageError(
        "needs " + std::string(job.sniff ? "one file (CSV)" : "three files (LAYOUT CSV RECORDS)") +
        ", got " + std::to_string(files.size()));
  job.csv_path = files[job.sniff ? 0 : 1];
  if (job.sniff) return;
  job.layout_path = files[0];
  job.record_path = files[2];
}

}  // namespace

std::optional<Job> parse_arguments(int argc, char** argv, std::ostream& out) {
  Job job;
  opterr = 0;
  const auto options = long_options();
  for (;;) {
    const int option = getopt_long(argc, argv, ":j:qhV", options.data(), nullptr);
    if (option == -1) break;
    switch (option) {
      case ':':
        throw UsageError(std::string(argv[optind - 1]) + " needs a value");
      case '?':
        throw UsageError("unknown option " + std::string(argv[optind - 1]));
      case 'h':
        out << kUsage << kHelp << datatype_spellings() << kHelpEnd;
        return std::nullopt;
      case 'V':
        out << "rowcopy, " << com_version() << '\n';
        return std::nullopt;
      case 'j':
        read_jobs(optarg, job);
        break;
      case 'q':
        job.quiet = true;
        break;
      default:
        apply(kSettings[static_cast<std::size_t>(option - kFirstSetting)], optarg, job);
    }
  }
  take_files({argv + optind, argv + argc}, job);
  if (job.dialect.quote == job.dialect.delimiter)
    throw UsageError("--quote and --delimiter are the same character");
  return job;
}

}  // namespace rowcopy
