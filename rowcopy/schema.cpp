#include "schema.h"

namespace rowcopy {

// Column names are identifiers, and the other texts are the program's own: nothing needs escapes.
std::string describe_records(const Layout& layout, const RecordLayout& records,
                             const std::string& charset, std::size_t rows) {
  std::string text = "{\n  \"rows\": " + std::to_string(rows) +
                     ",\n  \"record_size\": " + std::to_string(records.size()) +
                     ",\n  \"byte_order\": \"little\",\n  \"character_set\": \"" + charset +
                     "\",\n  \"columns\": [";
  for (std::size_t at = 0; at < layout.columns.size(); ++at) {
    const Column& column = layout.columns[at];
    const std::size_t length_offset = records.offset(at);
    text += std::string(at == 0 ? "" : ",") + "\n    {\"name\": \"" + column.name +
            "\", \"type\": \"" + column.type.name +
            "\", \"length_offset\": " + std::to_string(length_offset) +
            ", \"offset\": " + std::to_string(length_offset + sizeof(CS_INT)) +
            ", \"size\": " + std::to_string(column.type.size) + ", \"format\": \"" +
            column.type.format + "\"}";
  }
  return text + "\n  ]\n}\n";
}

}  // namespace rowcopy
