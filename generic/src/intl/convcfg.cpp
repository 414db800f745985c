// Reader of conversion configurations (.cfg).
#include "intl/convcfg.h"

#include <algorithm>

#include "chars/hex.h"
#include "intl/load_once.h"
#include "intl/loaded.h"
#include "intl/text.h"

namespace comnlib {
namespace {

constexpr std::array<SystemAlgorithm, 2> kAlgorithms{
    {{"utf8", Algorithm::kUtf8}, {"ucs2", Algorithm::kUcs2}}};

bool read_replacement(std::string_view digits, CsConvConfig& config) {
  const std::size_t bytes = digits.size() / 2;
  if (bytes < 1 || bytes > config.replacement.size()) return false;
  config.replacement_length = static_cast<CS_INT>(bytes);
  return decode_hex(digits, std::span(config.replacement).first(bytes));
}

bool read_algorithm(std::string_view name, CsConvConfig& config) {
  for (const SystemAlgorithm& known : kAlgorithms)
    if (known.name == name) config.algorithm = &known;
  return config.algorithm != nullptr;
}

bool read_table(std::string_view name, CsConvConfig& config) {
  if (name.empty() || name.size() >= config.table.size()) return false;
  name.copy(config.table.data(), name.size());
  return true;
}

CS_RETCODE read_targets(IntlFile& file, CsConvConfig& config) {
  while (const CS_CHAR* name = file.next_value()) {
    std::size_t offset = 0;
    if (!config.names.keep(name, offset) || !config.targets.push(offset)) return CS_MEM_ERROR;
  }
  return file.failed() ? file.failure() : CS_SUCCEED;
}

bool read_value(std::string_view key, IntlFile& file, CsConvConfig& config) {
  if (key == "replacement") return read_replacement(file.next_text(), config);
  if (key == "algorithm") return read_algorithm(file.next_text(), config);
  if (key == "table") return read_table(file.next_text(), config);
  return key == "description" && file.next_value() != nullptr;
}

CS_RETCODE read_entry(std::string_view key, IntlFile& file, CsConvConfig& config) {
  if (key == "to") return read_targets(file, config);
  return read_value(key, file, config) ? CS_SUCCEED : file.failure();
}

CS_RETCODE read_config(IntlFile& file, CsConvConfig& config) {
  if (!file.find_section("conversion")) return file.failure();
  while (const CS_CHAR* key = file.next_entry()) {
    const CS_RETCODE result = read_entry(key, file, config);
    if (result != CS_SUCCEED) return result;
  }
  const bool has_table = config.table[0] != '\0';
  const bool complete = config.replacement_length > 0 && has_table == (config.algorithm == nullptr);
  return complete && !file.failed() ? file.close() : file.failure();
}

}  // namespace

std::span<const SystemAlgorithm> system_algorithms() {
  return kAlgorithms;
}

CS_RETCODE load_conv_config(CS_CONTEXT& ctx, const CS_CHAR* charset, CsConvConfig*& config,
                            ErrorBuffer error) {
  OwnedRecord<CsConvConfig> made(make_record<CsConvConfig>());
  if (made == nullptr) return CS_MEM_ERROR;
  const std::string_view name = charset;
  name.copy(made->charset.data(), std::min(name.size(), made->charset.size() - 1));
  const auto open = [&](INTL_HANDLE* handle) {
    return com__open_charfile(&ctx, charset, charset, "cfg", handle, error.path, error.length);
  };
  const CS_RETCODE result =
      read_file(ctx, open, [&made](IntlFile& file) { return read_config(file, *made); });
  if (result != CS_SUCCEED) return result;
  made->to_utf8 = converts_to(*made, "utf8");
  config = made.release();
  return CS_SUCCEED;
}

bool converts_to(const CsConvConfig& config, std::string_view charset) {
  for (const std::size_t name : config.targets.view())
    if (config.names.at(name) == charset) return true;
  return false;
}

void drop_conv_config(CsConvConfig* config) {
  if (config != nullptr) DropRecord()(config);
}

}  // namespace comnlib

using namespace comnlib;

CS_RETCODE comn__init_sys_algos_table(CS_CONTEXT* ctx) {
  check_pointer(ctx);
  LoadedOnce* loaded = loaded_of(*ctx->ctxglobals);
  if (loaded == nullptr) return trace(CS_MEM_ERROR);
  loaded->algorithms = system_algorithms();
  return trace(CS_SUCCEED);
}
