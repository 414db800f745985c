// The scenarios of all that reads files.
#pragma once

#include "scenario/run.h"

namespace scenario {

// Makes the home that the others read, and opens what stays open; before the first of them.
void set_files_up();

void locales(Run& run);
void conversion_tables(Run& run);
void sectioned_files(Run& run);
void configuration(Run& run);

}  // namespace scenario
