// The copy: CSV to records, and the records back to text.
#pragma once

#include "conversion.h"
#include "job.h"
#include "layout.h"
#include "report.h"
#include "source.h"

namespace rowcopy {

// Throws Fatal when an output is also an input or another output.
void require_distinct_files(const Job& job);

// Copies every row without a fault; the others are counted and described in the report. A value is
// at fault when a conversion returns anything but CS_SUCCEED, when the record does not hold what
// the field says (unless the job allows changes), or when the text of what the record holds does
// not read back as the same value. Throws Fatal for files and layouts that cannot be used; then
// there is no output. When there are more faults than allowed, only the rejects are written.
Report copy_rows(CS_CONTEXT* context, const Job& job, const Layout& layout, Locales locales,
                 Source& source);

}  // namespace rowcopy
