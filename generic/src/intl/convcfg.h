// Conversion configurations: which conversions a character set has, and how.
#pragma once

#include <array>
#include <span>
#include <string_view>

#include "comnlib/locale.h"
#include "intl/com_loc.h"
#include "runtime/podvector.h"

namespace comnlib {

struct ConvTable;

// Conversions that need no table.
enum class Algorithm : CS_BYTE { kUtf8, kUcs2 };

struct SystemAlgorithm {
  std::string_view name;
  Algorithm algorithm;
};

std::span<const SystemAlgorithm> system_algorithms();

}  // namespace comnlib

struct _csconvconfig {
  std::array<CS_CHAR, COM_LOC_NAMESIZE> charset;  // whose configuration this is
  bool ascii_based;                               // as is_ascii_based says of its attributes
  bool to_utf8;                                   // it has a conversion to utf8
  std::array<CS_BYTE, 4> replacement;             // written for characters that the set lacks
  CS_INT replacement_length;
  const comnlib::SystemAlgorithm* algorithm;    // null: by a table
  std::array<CS_CHAR, COM_LOC_NAMESIZE> table;  // its file, without ".ctb"
  const comnlib::ConvTable* loaded_table;       // null until it is needed; read atomically
  comnlib::Owned<comnlib::PodVector<std::size_t>> targets;  // names in the pool
  comnlib::Owned<comnlib::TextPool> names;
};

namespace comnlib {

// Reads charsets/<charset>/<charset>.cfg into a new record.
CS_RETCODE load_conv_config(CS_CONTEXT& ctx, const CS_CHAR* charset, CsConvConfig*& config,
                            ErrorBuffer error);

// Whether the configuration has a conversion to that character set.
bool converts_to(const CsConvConfig& config, std::string_view charset);

// Whether ASCII text in a loaded character set is read as plain bytes are; false for null.
inline bool is_ascii_based(const CsCharDesc* charset) {
  return charset != nullptr && charset->conv_config != nullptr && charset->conv_config->ascii_based;
}

// Does nothing for null.
void drop_conv_config(CsConvConfig* config);

}  // namespace comnlib

extern "C" {
// Gives the context the table of conversions that need no file.
CS_RETCODE comn__init_sys_algos_table(CS_CONTEXT* ctx);
}
