// Reader of message files. A language enters the context's list only when all its files were read.
#include "intl/message.h"

#include <array>

#include "intl/com_loc.h"
#include "intl/intlfile.h"
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
    INTL_HANDLE handle = nullptr;
    const CS_RETCODE opened =
        comn__open_msgfile(&ctx, entry.langname, entry.langnamelen, kFileNames[i].data(),
                           length_of(kFileNames[i]), &handle, error.path, error.length);
    if (opened != CS_SUCCEED) return opened;
    IntlFile file(ctx, handle);
    const CS_RETCODE result = read_messages(file, static_cast<MessageFile>(i), messages);
    if (result != CS_SUCCEED) return result;
  }
  return CS_SUCCEED;
}

void drop(CsMessage* messages) {
  messages->messages.clear();
  messages->texts.clear();
  comn_free(messages);
}

}  // namespace

const CS_CHAR* message_text(const CsMessage& messages, MessageFile file, CS_INT number) {
  for (const MessageText& message : messages.messages.view())
    if (message.file == file && message.number == number) return messages.texts.at(message.text);
  return nullptr;
}

void drop_messages(CsCtxGlobals& globals) {
  while (CsMessage* messages = globals.cmg_message) {
    globals.cmg_message = messages->next;
    drop(messages);
  }
}

}  // namespace comnlib

using namespace comnlib;

CS_RETCODE comn__intl_load_message(CS_CONTEXT* ctx, CsOid oid, CsLocCache* cache_entry,
                                   CS_CHAR* errbuf, CS_INT errlen) {
  check_pointer(ctx);
  check_pointer(cache_entry);
  check_pointer(cache_entry->langname);
  CsCtxGlobals& globals = *ctx->ctxglobals;
  for (CsMessage* known = globals.cmg_message; known != nullptr; known = known->next) {
    if (known->oid != oid) continue;
    cache_entry->locmessage = known;
    return trace(CS_SUCCEED);
  }
  auto* messages = make_record<CsMessage>();
  if (messages == nullptr) return trace(CS_MEM_ERROR);
  messages->oid = oid;
  const CS_RETCODE result = read_language(*ctx, *cache_entry, *messages, {errbuf, errlen});
  if (result != CS_SUCCEED) {
    drop(messages);
    return trace(result);
  }
  messages->next = globals.cmg_message;
  globals.cmg_message = messages;
  cache_entry->locmessage = messages;
  return trace(CS_SUCCEED);
}
