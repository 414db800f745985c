// Files of a home with a fault in them: what every reader must refuse.
#pragma once

#include <string>
#include <string_view>

#include "comnlib/diag.h"
#include "support/hosts.h"
#include "support/table.h"

namespace faulty_files {

// Replaces a text in a good file and expects the code of the load by its name. The text "removed"
// removes the file, an empty one leaves it as it is. Nothing of a failed load may be left.
template <class Load>
void expect(const hosts::HomeCopy& home, const std::string& file, std::string_view code,
            std::string_view text, std::string_view replacement, Load load) {
  SCOPED_TRACE(testing::Message() << file << ": " << text << " -> " << replacement);
  const std::string good = home.read(file);
  if (text == "removed") {
    home.remove(file);
  } else if (!text.empty()) {
    home.change(file, text, replacement);
  }
  const hosts::NothingLost nothing_lost;
  EXPECT_EQ(code, comn_result_name(load(file)));
  home.write(file, good);
}

// The same for a table of files, codes, texts and replacements.
template <class Load>
void expect_table(const hosts::HomeCopy& home, const std::string& name, Load load) {
  table::for_each_line(name, [&](const table::Fields& row) {
    expect(home, row[0], row[1], table::text_of(row[2]), table::text_of(row[3]), load);
  });
}

}  // namespace faulty_files
