// Tables of cases in files below tests/, a case a line. In a .tsv file, which a program writes, a
// tab separates the fields; in a .txt file, which people write, a bar with blanks around it.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "comnlib/types.h"

namespace table {

using Fields = std::vector<std::string>;

// As many fields as any line has; those that are missing are empty.
inline Fields split(const std::string& text, char at) {
  Fields fields;
  std::istringstream in(text);
  for (std::string field; std::getline(in, field, at);) {
    if (at == '|') {
      field.erase(0, std::min(field.find_first_not_of(' '), field.size()));
      field.erase(field.find_last_not_of(' ') + 1);
    }
    fields.push_back(field);
  }
  fields.resize(8);
  return fields;
}

// Calls `check` for each line of a file but comments, which begin with "#"; a failure names the
// line.
inline void for_each_line(const std::string& file, auto check) {
  std::ifstream in(std::string(COMNLIB_TESTS) + "/" + file);
  ASSERT_TRUE(in) << file;
  std::string line;
  for (int at = 1; std::getline(in, line); ++at) {
    if (line.empty() || line.starts_with('#')) continue;
    SCOPED_TRACE(file + ":" + std::to_string(at) + ": " + line);
    check(split(line, file.ends_with(".tsv") ? '\t' : '|'));
  }
}

// The number that a text begins with.
inline int number(const std::string& text) {
  return std::atoi(text.c_str());
}

// A text, in quotes where blanks are at its ends: "\0", "\t", "\r", "\n", and any byte as "\x" and
// two digits.
inline std::string text_of(std::string_view field) {
  if (field.size() > 1 && field.starts_with('"') && field.ends_with('"'))
    field = field.substr(1, field.size() - 2);
  constexpr std::string_view kLetters = "0trn\\", kBytes("\0\t\r\n\\", 5);
  std::string text;
  while (!field.empty()) {
    std::size_t length = 1;
    char byte = field[0];
    if (byte == '\\') {
      const bool hex = field[1] == 'x';
      length = hex ? 4 : 2;
      byte = hex ? static_cast<char>(std::stoi(std::string(field.substr(2, 2)), nullptr, 16))
                 : kBytes.at(kLetters.find(field[1]));
    }
    text += byte;
    field.remove_prefix(length);
  }
  return text;
}

// Sign byte and big-endian magnitude of a decimal integer, as a numeric has them.
inline std::string magnitude_of(std::string_view decimal, std::size_t length) {
  std::string bytes(length, '\0');
  const bool negative = decimal.starts_with('-');
  if (negative) decimal.remove_prefix(1);
  for (const char digit : decimal) {
    unsigned carry = static_cast<unsigned>(digit - '0');
    for (std::size_t at = length; at-- > 1; carry >>= 8) {
      carry += static_cast<CS_BYTE>(bytes[at]) * 10u;
      bytes[at] = static_cast<char>(carry);
    }
    EXPECT_EQ(carry, 0u) << decimal;
  }
  bytes[0] = negative ? 1 : 0;
  return bytes;
}

}  // namespace table
