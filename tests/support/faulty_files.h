// Files of a home with a fault in them: what every reader must refuse, as a table.
#pragma once

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "comnlib/diag.h"
#include "support/hosts.h"

namespace faulty_files {

// Edits of a good file, parted by bars: "text->what replaces it", "removed", or nothing for the
// file as it is; and the code of the load of each of them, by its name.
struct Row {
  std::string file, code, edits;
};

// The rows of a text file, a line each; "\n" in an edit is a line's end there.
inline std::vector<Row> read(const std::string& path) {
  std::vector<Row> rows;
  std::ifstream lines(path);
  for (Row row; lines >> row.file >> row.code && std::getline(lines >> std::ws, row.edits);) {
    for (std::size_t at; (at = row.edits.find("\\n")) != row.edits.npos;)
      row.edits.replace(at, 2, "\n");
    rows.push_back(row);
  }
  EXPECT_LT(1U, rows.size()) << path;
  return rows;
}

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
      EXPECT_EQ(code, comn_result_name(load(file)));
      home.write(file, good);
    }
  }
}

}  // namespace faulty_files
