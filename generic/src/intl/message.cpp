// Reader of message files. A language enters the context's list only when all its files were read.
#include "intl/message.h"

#include <array>

#include "intl/com_loc.h"
#include "intl/load_once.h"
#include "intl/parse_number.h"
#include "intl/text.h"

namespace comnlib {
namespace {

constexpr std::array<std::string_view, 3> kFileNames{"common.loc", "cslib.loc", "comnlib.loc"};

CS_RETCODE read_messages(IntlFile& file, MessageFile which, CsMessage& messages) {
  if (!file.find_section("messages")) return file.failure();
  while (const CS_CHAR* key = file.next_entry()) {
    const auto number = parse_number(key, INT32_MIN, INT32_MAX);
    const CS_CHAR* text = file.next_value();
    if (!number || text == nullptr) return file.failure();
    MessageText message{which, *number, 0};
    if (!messages.texts.keep(text, message.text) || !messages.messages.push(message))
      return CS_MEM_ERROR;
  }
  return file.failed() ? file.failure() : file.close();
}

CS_RETCODE read_language(CS_CONTEXT& ctx, const CsLocCache& entry, CsMessage& messages,
                         ErrorBuffer error) {
  for (std::size_t i = 0; i < kFileNames.size(); ++i) {
    const auto open = [&](INTL_HANDLE* handle) {
      return comn__open_msgfile(&ctx, entry.langname, entry.langnamelen, kFileNames[i].data(),
                                length_of(kFileNames[i]), handle, error.path, error.length);
    };
    const CS_RETCODE result = read_file(ctx, open, [&](IntlFile& file) {
      return read_messages(file, static_cast<MessageFile>(i), messages);
    });
    if (result != CS_SUCCEED) return result;
  }
  return CS_SUCCEED;
}

}  // namespace

const CS_CHAR* message_text(const CsMessage& messages, MessageFile file, CS_INT number) {
  for (const MessageText& message : messages.messages.view())
    if (message.file == file && message.number == number) return messages.texts.at(message.text);
  return nullptr;
}

void drop_messages(CsCtxGlobals& globals) {
  drop_list<&CsMessage::next>(globals.cmg_message);
}

}  // namespace comnlib

using namespace comnlib;

CS_RETCODE comn__intl_load_message(CS_CONTEXT* ctx, CsOid oid, CsLocCache* cache_entry,
                                   CS_CHAR* errbuf, CS_INT errlen) {
  check_pointer(ctx);
  check_pointer(cache_entry);
  check_pointer(cache_entry->langname);
  const auto is_known = [oid](const CsMessage& known) { return known.oid == oid; };
  const auto read = [&](CsMessage& messages) {
    messages.oid = oid;
    return read_language(*ctx, *cache_entry, messages, {errbuf, errlen});
  };
  return trace(load_once<&CsMessage::next>(ctx->ctxglobals->cmg_message, cache_entry->locmessage,
                                           is_known, read));
}
