// rowcopy: copies a CSV file into fixed-layout binary records and back, as a bulk-copy tool does,
// with every value converted by the library. Exit status 0: everything was copied; 1: some values
// or rows were not, as reported; 2: it could not be done, as the last line on standard error says.
#include <cstdio>
#include <exception>
#include <iostream>
#include <new>
#include <string>

#include "charset_names.h"
#include "context.h"
#include "copy.h"
#include "fatal.h"
#include "layout.h"
#include "options.h"
#include "report.h"
#include "sniff.h"

namespace rowcopy {
namespace {

// A file that is known to be Unicode is read as UTF-8, into which Source converts it.
CS_LOCALE* choose_locale(Context& context, const Job& job, const Source& source) {
  CS_LOCALE* const locale = context.locale(job.from);
  if (source.encoding() == Source::Encoding::kUnmarked || charset_of(locale) == "utf8")
    return locale;
  if (!job.from.empty())
    throw Fatal(source.name() + ": begins with a byte order mark of Unicode; the character set " +
                "that --from asks for is " + charset_of(locale));
  return context.locale("utf8");
}

int copy(const Job& job) {
  require_distinct_files(job);
  Context context(job.home);
  const Layout layout = read_layout(context.get(), job.layout_path, job.section, job.csv_path);
  Source source(job.csv_path, job.from);
  Locales locales;
  locales.from = choose_locale(context, job, source);
  locales.to = job.to.empty() ? locales.from : context.locale(job.to);
  const Report report = copy_rows(context.get(), job, layout, locales, source);

  if (!job.quiet) {
    const bool data_on_stdout = job.record_path == "-" || job.text_path == "-" ||
                                job.rejects_path == "-" || job.schema_path == "-";
    std::ostream& out = data_on_stdout ? std::cerr : std::cout;
    print(report, layout, source.name(), job.record_path, out);
    if (!out.flush()) throw Fatal("cannot write the report");
  }
  if (report.stopped)
    throw Fatal("more than " + std::to_string(job.max_errors) + " faults; no records were written");
  return report.clean() ? 0 : 1;
}

int sniff(const Job& job) {
  Context context(job.home);
  Source source(job.csv_path, job.from);
  Locales locales;
  locales.from = choose_locale(context, job, source);
  locales.to = job.to.empty() ? locales.from : context.locale(job.to);
  std::cout << propose_layout(context.get(), job, locales, source);
  if (!std::cout.flush()) throw Fatal("cannot write the layout to standard output");
  return 0;
}

int run(int argc, char** argv) {
  const auto job = parse_arguments(argc, argv, std::cout);
  if (!job) return 0;
  return job->sniff ? sniff(*job) : copy(*job);
}

}  // namespace
}  // namespace rowcopy

int main(int argc, char** argv) {
  try {
    return rowcopy::run(argc, argv);
  } catch (const rowcopy::UsageError& error) {
    std::fprintf(stderr, "rowcopy: %s (see rowcopy --help)\n", error.what());
  } catch (const std::bad_alloc&) {
    std::fputs("rowcopy: out of memory\n", stderr);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "rowcopy: %s\n", error.what());
  }
  return 2;
}
