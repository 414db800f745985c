// Reader of config/objectid.dat: a section a class, an entry a name.
#include "intl/objectid.h"

#include "diag/uncancelled.h"
#include "intl/load_once.h"
#include "intl/loaded.h"
#include "intl/parse_number.h"
#include "intl/text.h"

namespace comnlib {
namespace {

CS_RETCODE read_class(IntlFile& file, std::string_view oidclass, ObjectIds& ids) {
  std::size_t class_text = 0;
  if (!ids.texts.keep(oidclass, class_text)) return CS_MEM_ERROR;
  while (const CS_CHAR* name = file.next_entry()) {
    ObjectId entry{class_text, 0, 0};
    if (!ids.texts.keep(name, entry.name)) return CS_MEM_ERROR;
    const CS_CHAR* value = file.next_value();
    const auto number = value == nullptr ? std::nullopt : parse_number(value, 1, INT32_MAX);
    if (!number) return file.failure();
    entry.oid = *number;
    if (!ids.entries.push(entry)) return CS_MEM_ERROR;
  }
  return file.failed() ? file.failure() : CS_SUCCEED;
}

CS_RETCODE read_ids(IntlFile& file, ObjectIds& ids) {
  while (const CS_CHAR* oidclass = file.next_section()) {
    const CS_RETCODE result = read_class(file, oidclass, ids);
    if (result != CS_SUCCEED) return result;
  }
  // Every home has identifiers: a file without any is still being written, and is read again later.
  return file.failed() || ids.entries.count == 0 ? file.failure() : file.close();
}

CS_RETCODE load_ids(CS_CONTEXT& ctx, ObjectIds& ids, ErrorBuffer error) {
  const auto open = [&](INTL_HANDLE* handle) {
    return open_cfgfile(&ctx, "objectid.dat", handle, 0, error);
  };
  const CS_RETCODE result =
      read_file(ctx, open, [&ids](IntlFile& file) { return read_ids(file, ids); });
  if (result != CS_SUCCEED) drop_ids(ids);
  ids.loaded = result == CS_SUCCEED;
  return result;
}

}  // namespace

CS_RETCODE global_id(CS_CONTEXT& ctx, std::string_view oidclass, std::string_view name, CsOid& oid,
                     ErrorBuffer error) {
  LoadedOnce* loaded = loaded_of(*ctx.ctxglobals);
  if (loaded == nullptr) return CS_MEM_ERROR;
  ObjectIds& ids = loaded->ids;
  if (!ids.loaded) {
    const CS_RETCODE result = load_ids(ctx, ids, error);
    if (result != CS_SUCCEED) return result;
  }
  for (const ObjectId& entry : ids.entries.view()) {
    if (ids.texts.at(entry.name) != name || ids.texts.at(entry.oidclass) != oidclass) continue;
    oid = entry.oid;
    return CS_SUCCEED;
  }
  return CS_FAIL;
}

void drop_ids(ObjectIds& ids) {
  ids.entries.clear();
  ids.texts.clear();
  ids.loaded = false;
}

}  // namespace comnlib

using namespace comnlib;

CS_RETCODE comn_globalid(CS_CONTEXT* ctx, const CS_CHAR* oidclass, const CS_CHAR* name,
                         CS_INT namelen, CsOid* oid) {
  check_pointer(ctx);
  check_pointer(ctx->ctxglobals);
  check_pointer(oid);
  const Uncancelled uncancelled;
  return trace(global_id(*ctx, text_of(oidclass), text_of(name, namelen), *oid, {nullptr, 0}));
}
