// A look over a group before a run: what the person may not have meant.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "account/account_settings.h"
#include "document/merge_fields.h"
#include "document/message_document.h"
#include "message/message_template.h"
#include "platform/cancel.h"
#include "platform/clock.h"
#include "platform/sentence.h"
#include "recipients/row_source.h"

namespace quillcast::run {

// What the run says where notices were asked for and none will come.
inline constexpr const char* kNoNotices =
    "The account asks for delivery notifications, which the server does not offer (DSN), so none will come.";

struct PreFlight {
  // For each field that the message uses: how many recipients have it empty, and the first of them.
  struct EmptyField {
    std::size_t field = 0;
    std::int64_t recipients = 0;
    std::string first;
  };
  std::vector<EmptyField> empty_fields;
  std::vector<Sentence> samples;  // of a design that was not filled in
  std::vector<std::string> unknown_tags;
  std::vector<Sentence> pictures;  // on those that do not go along
  std::vector<Sentence> links;     // on those that lead to files of this computer
  bool lacks_text = false;         // HTML without a text part
  // Recipients whose subject holds what the account's character set, `charset`, does not.
  std::int64_t subjects_beyond_set = 0;
  std::string first_beyond_set;
  std::string charset;
  // Recipients with "<" or "&" in a value that an HTML message uses; they go in as they stand.
  std::int64_t markup_values = 0;
  std::string first_with_markup;
  std::int64_t without_address = 0;  // entries from which no address can be read
  std::int64_t recipients = 0;
  std::uint64_t largest_message = 0;  // octets, of those rendered
};

// Reads the whole group once, in constant memory, and renders the first recipient's message for its size. Fails with
// kTryAgain after a cancel.
Result<PreFlight> LookOver(recipients::RowSource& rows, const document::MessageDocument& document,
                           const message::MessageTemplate& message, const platform::CancelToken& cancel);

// The findings as sentences; empty when there is nothing to say but the size.
std::vector<Sentence> Describe(const PreFlight& findings);

// Asks the account's server, where the message asks it for delivery notifications, whether it offers them: a sentence
// when it does not, or cannot be asked within seconds. Nothing is sent, and nobody signs in.
std::optional<Sentence> AskAboutNotices(const account::AccountSettings& account,
                                        const message::MessageTemplate& message, const platform::Clock& clock,
                                        const platform::CancelToken& cancel);

}  // namespace quillcast::run
