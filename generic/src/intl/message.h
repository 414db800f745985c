// Messages of a language: what the files of locales/message/<language> hold, in UTF-8.
#pragma once

#include "comnlib/locale.h"
#include "runtime/podvector.h"

namespace comnlib {

// The message files of a language: words shared by all layers, those of the client library, and
// those of this one.
enum class MessageFile : CS_INT { kCommon, kClient, kCommonServices };

struct MessageText {
  MessageFile file;
  CS_INT number;
  std::size_t text;  // in the pool
};

}  // namespace comnlib

struct _csmessage {
  CsOid oid;
  comnlib::Owned<comnlib::PodVector<comnlib::MessageText>> messages;
  comnlib::Owned<comnlib::TextPool> texts;
  CsMessage* next;
};

namespace comnlib {

// The text of a message, null when the language does not have the message.
const CS_CHAR* message_text(const CsMessage& messages, MessageFile file, CS_INT number);

void drop_messages(CsCtxGlobals& globals);

}  // namespace comnlib

extern "C" {
// Gives the cache entry the messages of its language: those that the context has loaded, or else
// those of the language's files.
CS_RETCODE comn__intl_load_message(CS_CONTEXT* ctx, CsOid oid, CsLocCache* cache_entry,
                                   CS_CHAR* errbuf, CS_INT errlen);
}
