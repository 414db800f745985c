// The store. All records lie in one block, one after the other. A section is a record below the
// root, an entry one below its section, and a single hash table finds a record by its name and the
// record above it. The table is at most half full and holds the newest record of each name. The
// records below another one are chained in the order in which their names first appeared.
#include "config/cfgstore.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "diag/diag.h"
#include "diag/uncancelled.h"
#include "paths/homepath.h"

namespace comnlib {
namespace {

// Followed by the name and the value, a NUL after each; not aligned.
struct StoredRecord {
  CS_UINT above;   // number of the section: where its record begins
  CS_UINT next;    // the next name below the same record; 0: the last
  CS_UINT source;  // where the path of its file begins
  CS_INT line;
  CS_UINT name_length;
  CS_UINT value_length;
  CS_UINT value_room;  // a later value of the same name overwrites this one when it fits
};

// The value of the root and of each section: both ends of the chain of the records below it.
struct ChainEnds {
  CS_UINT first;  // 0: nothing
  CS_UINT last;
};

// The place of an entry.
struct Origin {
  CS_UINT source;
  CS_INT line;
};

struct Slot {
  CS_UINT hash;
  CS_UINT record;  // 0: empty
};

constexpr CS_UINT kRoot = 0;  // its record begins the block, so no other has number 0
constexpr std::size_t kFirstSlots = 64;
constexpr std::size_t kMostBytes = UINT32_MAX;  // numbers have 32 bits
constexpr std::string_view kDefaultFile = "nuv.cfg";

}  // namespace
}  // namespace comnlib

struct _csconfig {
  comnlib::ByteBuffer path;  // of the file that was loaded
  comnlib::ByteBuffer records;
  comnlib::Slot* slots;
  std::size_t slot_count;  // a power of two, or 0
  std::size_t used_slots;
  CS_INT files;  // read so far
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

template <class Plain>
std::string_view bytes_of(const Plain& plain) {
  return {reinterpret_cast<const char*>(&plain), sizeof plain};
}

template <class Plain>
Plain plain_at(const CsConfig& config, std::size_t start) {
  Plain plain;
  std::memcpy(&plain, config.records.items + start, sizeof plain);
  return plain;
}

// Overwrites bytes of the records.
void write_at(CsConfig& config, std::size_t start, std::string_view bytes) {
  bytes.copy(reinterpret_cast<char*>(config.records.items) + start, bytes.size());
}

StoredRecord record_at(const CsConfig& config, CS_UINT number) {
  return plain_at<StoredRecord>(config, number);
}

std::string_view name_of(const CsConfig& config, CS_UINT number, const StoredRecord& record) {
  return config.records.text(number + sizeof record, record.name_length);
}

std::size_t value_start(CS_UINT number, const StoredRecord& record) {
  return number + sizeof record + record.name_length + 1;
}

std::string_view value_of(const CsConfig& config, CS_UINT number, const StoredRecord& record) {
  return config.records.text(value_start(number, record), record.value_length);
}

// The slot of a record, or the empty one where it would go. There is always an empty one.
Slot& slot_of(const CsConfig& config, CS_UINT hash, CS_UINT above, std::string_view name) {
  for (std::size_t at = hash & (config.slot_count - 1);; at = (at + 1) & (config.slot_count - 1)) {
    Slot& slot = config.slots[at];
    if (slot.record == 0) return slot;
    if (slot.hash != hash) continue;
    const StoredRecord record = record_at(config, slot.record);
    if (record.above == above && name_of(config, slot.record, record) == name) return slot;
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

// Appends a record; false when there is no memory.
bool append_record(CsConfig& config, CS_UINT above, std::string_view name, std::string_view value,
                   const Origin& origin) {
  const auto value_length = static_cast<CS_UINT>(value.size());
  const StoredRecord record{.above = above,
                            .next = 0,
                            .source = origin.source,
                            .line = origin.line,
                            .name_length = static_cast<CS_UINT>(name.size()),
                            .value_length = value_length,
                            .value_room = value_length};
  ByteBuffer& records = config.records;
  const std::size_t size = sizeof record + name.size() + value.size() + 2;
  if (size > kMostBytes - records.count || !records.reserve(size)) return false;
  records.append_reserved(bytes_of(record));
  records.append_reserved(name);
  records.append_reserved({"", 1});
  records.append_reserved(value);
  records.append_reserved({"", 1});
  return true;
}

// Replaces the value of a record; false when the new one does not fit.
bool overwrite(CsConfig& config, CS_UINT number, std::string_view value, const Origin& origin) {
  StoredRecord record = record_at(config, number);
  if (value.size() > record.value_room) return false;
  record.source = origin.source;
  record.line = origin.line;
  record.value_length = static_cast<CS_UINT>(value.size());
  write_at(config, number, bytes_of(record));
  write_at(config, value_start(number, record), value);
  write_at(config, value_start(number, record) + value.size(), {"", 1});
  return true;
}

// Adds the record of a new name to the chain of the one above it.
void append_to_chain(CsConfig& config, CS_UINT above, CS_UINT number) {
  const std::size_t place = value_start(above, record_at(config, above));
  auto ends = plain_at<ChainEnds>(config, place);
  if (ends.last == 0) {
    ends.first = number;
  } else {
    StoredRecord last = record_at(config, ends.last);
    last.next = number;
    write_at(config, ends.last, bytes_of(last));
  }
  ends.last = number;
  write_at(config, place, bytes_of(ends));
}

// Gives a name its value and returns the number of its record; 0 when there is no memory.
CS_UINT enter(CsConfig& config, CS_UINT above, std::string_view name, std::string_view value,
              const Origin& origin) {
  if (config.used_slots * 2 >= config.slot_count && !grow_slots(config)) return 0;
  const CS_UINT hash = hash_of(above, name);
  Slot& slot = slot_of(config, hash, above, name);
  const bool known = slot.record != 0;
  if (known && overwrite(config, slot.record, value, origin)) return slot.record;
  const auto number = static_cast<CS_UINT>(config.records.count);
  if (!append_record(config, above, name, value, origin)) return 0;
  slot = {hash, number};
  if (known) return number;  // the older record stays in the chain
  ++config.used_slots;
  append_to_chain(config, above, number);
  return number;
}

CS_UINT find(const CsConfig& config, CS_UINT above, std::string_view name) {
  return slot_of(config, hash_of(above, name), above, name).record;
}

// Returns the number of the section of that name, which is made when it is new; 0 when there is no
// memory.
CS_UINT enter_section(CsConfig& config, std::string_view name) {
  const CS_UINT known = find(config, kRoot, name);
  return known != 0 ? known : enter(config, kRoot, name, bytes_of(ChainEnds{}), {});
}

// Keeps the path of a file that is about to be parsed. CS_FAIL when there are too many.
CS_RETCODE add_source(CfgParseInfo& parse) {
  CsConfig& config = *parse.config;
  if (config.files >= CFG_MAX_FILES) return CS_FAIL;
  ++config.files;
  parse.source = static_cast<CS_UINT>(config.records.count);
  const std::string_view path = parse.path.text();
  const bool kept = path.size() <= kMostBytes - config.records.count && config.records.append(path);
  return kept ? CS_SUCCEED : CS_MEM_ERROR;
}

// The record after the one that a walk is at, in the chain below `above`.
CS_UINT next_below(const CsConfig& config, CS_UINT above, CS_INT position) {
  if (position == 0)
    return plain_at<ChainEnds>(config, value_start(above, record_at(config, above))).first;
  const auto number = static_cast<CS_UINT>(position);
  require(number < config.records.count && config.records.count - number > sizeof(StoredRecord));
  const StoredRecord record = record_at(config, number);
  require(record.above == above && record.next < config.records.count);
  return record.next;
}

// What a walk hands out.
CS_CFGENTRY entry_at(const CsConfig& config, CS_UINT number) {
  const StoredRecord record = record_at(config, number);
  return {.name = name_of(config, number, record).data(),
          .value = value_of(config, number, record).data(),
          .valuelen = static_cast<CS_INT>(record.value_length),
          .file = config.records.text(record.source, 0).data(),
          .line = record.line};
}

void drop_store(CsConfig* config) {
  config->path.clear();
  config->records.clear();
  release(config->slots);
  comn_free(config);
}

// The included path relative to the directory of the file `from`. "." steps at its beginning are
// left out, since they would hide that two paths are the same.
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

CS_RETCODE parse_file(CfgParseInfo& parse) {
  const CS_RETCODE result = cfg__parse(&parse);
  const CS_RETCODE closed = cfg__clean_parse(&parse);
  return result == CS_SUCCEED ? closed : result;
}

CS_RETCODE parse_included(CfgParseInfo& parse, std::string_view path) {
  if (is_open(&parse, path)) return refuse(parse, "the file includes itself");
  CfgParseInfo* included = nullptr;
  CS_RETCODE result = open_parse(parse.context, parse.config, path, &parse, included);
  if (result == CS_FAIL) return refuse(parse, "expected the path of a file that can be opened");
  if (result != CS_SUCCEED) return result;
  result = add_source(*included);
  if (result == CS_SUCCEED) {
    included->section = parse.section;
    return parse_file(*included);
  }
  cfg__clean_parse(included);
  return result == CS_FAIL ? refuse(parse, "too many files are included") : result;
}

CS_RETCODE default_path(CS_CONTEXT& context, ByteBuffer& path) {
  std::array<CS_CHAR, kPathLength + kConfigPathSpare> text{};
  const CS_RETCODE built =
      build_config_path(&context, kDefaultFile, text.data(), kPathLength, true);
  if (built == CS_FAIL) com_perr("the path of the default configuration file is too long\n");
  if (built != CS_SUCCEED) return built;
  return path.append(text.data()) ? CS_SUCCEED : CS_MEM_ERROR;
}

// Makes the root of a store.
bool make_root(CsConfig& config) {
  return grow_slots(config) && append_record(config, kRoot, {}, bytes_of(ChainEnds{}), {});
}

// Loads the file that config.path names.
CS_RETCODE load(CS_CONTEXT& context, CsConfig& config) {
  if (!make_root(config)) return CS_MEM_ERROR;
  CfgParseInfo* parse = nullptr;
  CS_RETCODE result = open_parse(&context, &config, config.path.text(), nullptr, parse);
  if (result != CS_SUCCEED) return result;
  result = add_source(*parse);
  if (result == CS_SUCCEED) return parse_file(*parse);
  cfg__clean_parse(parse);
  return result;
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
  if (parse->config == nullptr) return CS_SUCCEED;
  parse->section = enter_section(*parse->config, {name, static_cast<std::size_t>(length)});
  return parse->section == 0 ? CS_MEM_ERROR : CS_SUCCEED;
}

CS_VOID cfg__check_section(CfgParseInfo* parse) {
  parse->section = 0;
}

CS_RETCODE cfg__add_entry(CfgParseInfo* parse, const CS_CHAR* name, CS_INT name_length,
                          const CS_CHAR* value, CS_INT value_length) {
  if (parse->config == nullptr) return CS_SUCCEED;
  if (parse->section == 0) parse->section = enter_section(*parse->config, {});
  if (parse->section == 0) return CS_MEM_ERROR;
  const CS_UINT number =
      enter(*parse->config, parse->section, {name, static_cast<std::size_t>(name_length)},
            {value, static_cast<std::size_t>(value_length)}, {parse->source, parse->entry_line});
  return number == 0 ? CS_MEM_ERROR : CS_SUCCEED;
}

CS_RETCODE cfg__add_include(CfgParseInfo* parse, const CS_CHAR* path, CS_INT length) {
  const std::string_view included(path, static_cast<std::size_t>(length));
  if (included.empty() || included.find('\0') != included.npos)
    return refuse(*parse, "expected the path of a file, found an empty text or a NUL in it");
  if (parse->config == nullptr) return CS_SUCCEED;
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

  const std::string_view value = value_of(config, number, record_at(config, number));
  *outlen = static_cast<CS_INT>(value.size());
  if (*outlen > buflen) return trace(CS_FAIL);
  value.copy(buffer, value.size());
  if (*outlen < buflen) buffer[*outlen] = '\0';
  return trace(CS_SUCCEED);
}

CS_RETCODE comn_next_cfg_section(CS_CONTEXT* context, CS_INT* position, const CS_CHAR** name) {
  check_pointer(context);
  check_pointer(position);
  check_pointer(name);
  if (context->ctxconfig == nullptr) return trace(CS_FAIL);
  const CsConfig& config = *context->ctxconfig;
  const CS_UINT number = next_below(config, kRoot, *position);
  if (number == 0) return trace(CS_END_DATA);
  *position = static_cast<CS_INT>(number);
  *name = name_of(config, number, record_at(config, number)).data();
  return trace(CS_SUCCEED);
}

CS_RETCODE comn_next_cfg_entry(CS_CONTEXT* context, const CS_CHAR* section, CS_INT* position,
                               CS_CFGENTRY* entry) {
  check_pointer(context);
  check_pointer(section);
  check_pointer(position);
  check_pointer(entry);
  if (context->ctxconfig == nullptr) return trace(CS_FAIL);
  const CsConfig& config = *context->ctxconfig;
  const CS_UINT above = find(config, kRoot, section);
  if (above == 0) return trace(CS_FAIL);
  const CS_UINT number = next_below(config, above, *position);
  if (number == 0) return trace(CS_END_DATA);
  *position = static_cast<CS_INT>(number);
  *entry =
      entry_at(config, find(config, above, name_of(config, number, record_at(config, number))));
  return trace(CS_SUCCEED);
}

CS_RETCODE comn_drop_cfg(CS_CONTEXT* context) {
  check_pointer(context);
  if (context->ctxconfig != nullptr) drop_store(context->ctxconfig);
  context->ctxconfig = nullptr;
  return trace(CS_SUCCEED);
}
