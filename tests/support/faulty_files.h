// Files of a home with a fault in them: what every reader must refuse, as a table.
#pragma once

#include <sstream>
#include <string>
#include <vector>

#include "support/hosts.h"

namespace faulty_files {

// Edits of a good file, parted by bars: "text->what replaces it", "removed", or nothing for the
// file as it is; and the code of the load of each of them.
struct Row {
  std::string file;
  CS_RETCODE code;
  std::string edits;
};

// Calls `load` for every faulty file. Nothing of a failed load may be left.
template <class Load>
void expect(const hosts::HomeCopy& home, const std::vector<Row>& rows, Load load) {
  for (const auto& [file, code, edits] : rows) {
    const std::string good = home.read(file);
    std::istringstream list(edits + '|');
    for (std::string edit; std::getline(list, edit, '|');) {
      SCOPED_TRACE(file + ": " + edit);
      const std::size_t arrow = edit.find("->");
      if (edit == "removed") home.remove(file);
      if (arrow != edit.npos) home.change(file, edit.substr(0, arrow), edit.substr(arrow + 2));
      const hosts::NothingLost nothing_lost;
      EXPECT_EQ(code, load(file));
      home.write(file, good);
    }
  }
}

}  // namespace faulty_files
