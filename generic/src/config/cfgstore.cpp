// The store. All records lie one behind the other in one block: a section is a record below the
// root, with an empty value, an entry one below its section, and a single hash table finds a record
// by the one above it and its name. The table is at most half full and holds the newest record of
// each name; a section's stays where it is, since its value always fits.
#include "config/cfgstore.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "diag/diag.h"
#include "runtime/homepath.h"
#include "runtime/uncancelled.h"

namespace comnlib {
namespace {

// Followed by name and value; not aligned.
struct Record {
  CS_UINT above;  // number of the section, that is where its record begins
  CS_UINT name_length;
  CS_UINT value_length;
  CS_UINT value_room;  // a later value of the same name takes this one's place when it fits
};

struct Slot {
  CS_UINT hash;
  CS_UINT record;  // 0: empty
};

constexpr CS_UINT kRoot = 0;
constexpr std::size_t kFirstRecord = sizeof(Record);  // so that no record has number 0
constexpr std::size_t kFirstSlots = 64;
constexpr std::string_view kDefaultFile = "nuv.cfg";

}  // namespace
}  // namespace comnlib

struct _csconfig {
  comnlib::ByteBuffer path;  // of the file that was loaded
  comnlib::ByteBuffer records;
  comnlib::Slot* slots;
  std::size_t slot_count;  // a power of two, or 0
  std::size_t used_slots;
  CS_INT files;  // read by the load
};

namespace comnlib {
namespace {

CS_UINT mix(CS_UINT hash, CS_UINT word) {
  hash = (hash ^ word) * 0x9E3779B1U;
  return hash ^ hash >> 15;
}

CS_UINT hash_of(CS_UINT above, std::string_view name) {
  CS_UINT hash = mix(above, static_cast<CS_UINT>(name.size()));
  const char* at = name.data();
  std::size_t left = name.size();
  CS_UINT word = 0;
  for (; left >= sizeof word; left -= sizeof word, at += sizeof word) {
    std::memcpy(&word, at, sizeof word);
    hash = mix(hash, word);
  }
  word = 0;
  for (; left != 0; --left) word = word << 8 | static_cast<CS_BYTE>(*at++);
  return mix(hash, word);
}

Record record_at(const CsConfig& config, CS_UINT number) {
  Record record;
  std::memcpy(&record, config.records.items + number, sizeof record);
  return record;
}

std::string_view text_at(const CsConfig& config, std::size_t start, std::size_t length) {
  return config.records.text(start, length);
}

// The slot of a record, or the empty one where it would go. There is always an empty one.
Slot& slot_of(const CsConfig& config, CS_UINT hash, CS_UINT above, std::string_view name) {
  for (std::size_t at = hash & (config.slot_count - 1);; at = (at + 1) & (config.slot_count - 1)) {
    Slot& slot = config.slots[at];
    if (slot.record == 0) return slot;
    if (slot.hash != hash) continue;
    const Record record = record_at(config, slot.record);
    if (record.above == above &&
        text_at(config, slot.record + sizeof record, record.name_length) == name)
      return slot;
  }
}

bool grow_slots(CsConfig& config) {
  const std::size_t count = std::max(config.slot_count * 2, kFirstSlots);
  if (count > PTRDIFF_MAX / sizeof(Slot)) return false;
  auto* slots = static_cast<Slot*>(comn_calloc(count, sizeof(Slot)));
  if (slots == nullptr) return false;
  for (std::size_t i = 0; i < config.slot_count; ++i) {
    const Slot& old = config.slots[i];
    if (old.record == 0) continue;
    std::size_t at = old.hash & (count - 1);
    while (slots[at].record != 0) at = (at + 1) & (count - 1);
    slots[at] = old;
  }
  release(config.slots);
  config.slots = slots;
  config.slot_count = count;
  return true;
}

// Appends a record; 0 when there is no memory.
CS_UINT append_record(CsConfig& config, CS_UINT above, std::string_view name,
                      std::string_view value) {
  if (config.records.count == 0) {
    const Record root{};
    if (!config.records.append({reinterpret_cast<const char*>(&root), sizeof root})) return 0;
  }
  if (!config.records.reserve(sizeof(Record) + name.size() + value.size())) return 0;
  const auto number = static_cast<CS_UINT>(config.records.count);
  const auto value_length = static_cast<CS_UINT>(value.size());
  const Record record{above, static_cast<CS_UINT>(name.size()), value_length, value_length};
  config.records.append_reserved({reinterpret_cast<const char*>(&record), sizeof record});
  config.records.append_reserved(name);
  config.records.append_reserved(value);
  return number;
}

// Puts a value in place of a record's; false when it does not fit.
bool overwrite(CsConfig& config, CS_UINT number, std::string_view value) {
  Record record = record_at(config, number);
  if (value.size() > record.value_room) return false;
  record.value_length = static_cast<CS_UINT>(value.size());
  CS_BYTE* const place = config.records.items + number;
  std::memcpy(place, &record, sizeof record);
  value.copy(reinterpret_cast<char*>(place) + sizeof record + record.name_length, value.size());
  return true;
}

// The number of the record of that name, new or with a new value; 0 when there is no memory.
CS_UINT enter(CsConfig& config, CS_UINT above, std::string_view name, std::string_view value) {
  if (config.used_slots * 2 >= config.slot_count && !grow_slots(config)) return 0;
  const CS_UINT hash = hash_of(above, name);
  Slot& slot = slot_of(config, hash, above, name);
  if (slot.record != 0 && overwrite(config, slot.record, value)) return slot.record;
  const CS_UINT number = append_record(config, above, name, value);
  if (number == 0) return 0;
  if (slot.record == 0) ++config.used_slots;
  slot = {hash, number};
  return number;
}

CS_UINT find(const CsConfig& config, CS_UINT above, std::string_view name) {
  return slot_of(config, hash_of(above, name), above, name).record;
}

void drop_store(CsConfig* config) {
  config->path.clear();
  config->records.clear();
  release(config->slots);
  comn_free(config);
}

// The path as the including file means it, behind `from`, without "." steps at its beginning, which
// would hide that two paths are one.
bool resolve(ByteBuffer& path, std::string_view from, std::string_view included) {
  const std::size_t slash = from.rfind('/');
  const bool relative = !included.starts_with('/') && slash != from.npos;
  while (included.starts_with("./"))
    included.remove_prefix(std::min(included.find_first_not_of('/', 1), included.size()));
  return (!relative || path.append(from.substr(0, slash + 1))) && path.append(included);
}

bool is_open(const CfgParseInfo* parse, std::string_view path) {
  while (parse != nullptr && path_of(*parse) != path) parse = parse->includer;
  return parse != nullptr;
}

CS_RETCODE refuse(CfgParseInfo& parse, const char* why) {
  cfg__parse_error(&parse, why);
  return CS_FAIL;
}

CS_RETCODE parse_included(CfgParseInfo& parse, std::string_view path) {
  if (is_open(&parse, path)) return refuse(parse, "the file includes itself");
  CfgParseInfo* included = nullptr;
  CS_RETCODE result = open_parse(parse.context, parse.config, path, &parse, included);
  if (result == CS_FAIL) return refuse(parse, "expected the path of a file that can be opened");
  if (result != CS_SUCCEED) return result;
  result = cfg__parse(included);
  const CS_RETCODE closed = cfg__clean_parse(included);
  return result == CS_SUCCEED ? closed : result;
}

CS_RETCODE default_path(CS_CONTEXT& context, ByteBuffer& path) {
  std::array<CS_CHAR, kPathLength + kConfigPathSpare> text{};
  const CS_RETCODE built =
      build_config_path(&context, kDefaultFile, text.data(), kPathLength, true);
  if (built == CS_FAIL) com_perr("the path of the default configuration file is too long\n");
  if (built != CS_SUCCEED) return built;
  return path.append(text.data()) ? CS_SUCCEED : CS_MEM_ERROR;
}

// Loads the file that config.path names.
CS_RETCODE load(CS_CONTEXT& context, CsConfig& config) {
  if (!grow_slots(config)) return CS_MEM_ERROR;
  CfgParseInfo* parse = nullptr;
  CS_RETCODE result = open_parse(&context, &config, config.path.text(), nullptr, parse);
  if (result != CS_SUCCEED) return result;
  result = cfg__parse(parse);
  const CS_RETCODE closed = cfg__clean_parse(parse);
  return result == CS_SUCCEED ? closed : result;
}

// A store with the path of its file, still empty.
CS_RETCODE make_store(CS_CONTEXT& context, const CS_CHAR* path, CsConfig*& config) {
  config = make_record<CsConfig>();
  if (config == nullptr) return CS_MEM_ERROR;
  if (path == nullptr) return default_path(context, config->path);
  return config->path.append(path) ? CS_SUCCEED : CS_MEM_ERROR;
}

}  // namespace
}  // namespace comnlib

using namespace comnlib;

CS_RETCODE cfg__add_section(CfgParseInfo* parse, const CS_CHAR* name, CS_INT length) {
  if (parse->config == nullptr) {
    parse->section = kFirstRecord;
    return CS_SUCCEED;
  }
  parse->section = enter(*parse->config, kRoot, {name, static_cast<std::size_t>(length)}, {});
  return parse->section == 0 ? CS_MEM_ERROR : CS_SUCCEED;
}

CS_VOID cfg__check_section(CfgParseInfo* parse) {
  parse->section = 0;
}

CS_RETCODE cfg__add_entry(CfgParseInfo* parse, const CS_CHAR* name, CS_INT name_length,
                          const CS_CHAR* value, CS_INT value_length) {
  require(parse->section != 0);
  if (parse->config == nullptr) return CS_SUCCEED;
  const CS_UINT number =
      enter(*parse->config, parse->section, {name, static_cast<std::size_t>(name_length)},
            {value, static_cast<std::size_t>(value_length)});
  return number == 0 ? CS_MEM_ERROR : CS_SUCCEED;
}

CS_RETCODE cfg__add_include(CfgParseInfo* parse, const CS_CHAR* path, CS_INT length) {
  const std::string_view included(path, static_cast<std::size_t>(length));
  if (included.empty() || included.find('\0') != included.npos)
    return refuse(*parse, "expected the path of a file, found an empty text or a NUL in it");
  // Files that include one another many times would take for ever without ever going deep.
  if (parse->config != nullptr && ++parse->config->files >= CFG_MAX_FILES)
    return refuse(*parse, "too many files are included");
  if (parse->depth >= CFG_MAX_DEPTH) return refuse(*parse, "files are included too deep");
  ByteBuffer resolved{};
  CS_RETCODE result = CS_MEM_ERROR;
  if (resolve(resolved, path_of(*parse), included))
    result = parse_included(*parse, resolved.text());
  resolved.clear();
  return result;
}

CS_RETCODE comn_init_cfg(CS_CONTEXT* context, const CS_CHAR* path) {
  check_pointer(context);
  const Uncancelled uncancelled;
  CsConfig* config = nullptr;
  CS_RETCODE result = make_store(*context, path, config);
  if (result == CS_SUCCEED && context->ctxconfig != nullptr) {
    result = context->ctxconfig->path.text() == config->path.text() ? CS_SUCCEED : CS_FAIL;
    drop_store(config);
    return trace(result);
  }
  if (result == CS_SUCCEED) result = load(*context, *config);
  if (result == CS_SUCCEED) {
    context->ctxconfig = config;
  } else if (config != nullptr) {
    drop_store(config);
  }
  return trace(result);
}

CS_RETCODE comn_get_cfg(CS_CONTEXT* context, const CS_CHAR* section, const CS_CHAR* entry,
                        CS_CHAR* buffer, CS_INT buflen, CS_INT* outlen) {
  check_pointer(context);
  check_pointer(section);
  check_pointer(entry);
  check_pointer(outlen);
  require(buflen >= 0);
  if (buflen > 0) check_pointer(buffer);

  *outlen = 0;
  if (context->ctxconfig == nullptr) return trace(CS_FAIL);
  const CsConfig& config = *context->ctxconfig;
  const CS_UINT above = find(config, kRoot, section);
  const CS_UINT number = above == 0 ? 0 : find(config, above, entry);
  if (number == 0) return trace(CS_FAIL);

  const Record record = record_at(config, number);
  const std::string_view value =
      text_at(config, number + sizeof record + record.name_length, record.value_length);
  *outlen = static_cast<CS_INT>(value.size());
  if (*outlen > buflen) return trace(CS_FAIL);
  value.copy(buffer, value.size());
  if (*outlen < buflen) buffer[*outlen] = '\0';
  return trace(CS_SUCCEED);
}

CS_RETCODE comn_drop_cfg(CS_CONTEXT* context) {
  check_pointer(context);
  if (context->ctxconfig != nullptr) drop_store(context->ctxconfig);
  context->ctxconfig = nullptr;
  return trace(CS_SUCCEED);
}
