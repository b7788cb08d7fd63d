#include "account/account_message.h"

#include <fmt/format.h>

#include "account/account_choices.h"
#include "document/offered_charsets.h"
#include "platform/text.h"
#include "recipients/recipient.h"
#include "smtp/envelope_address.h"

namespace quillcast::account {
namespace {

using enum AccountKey;

Error NoSender(std::string_view email) {
  constexpr const char* kRemedy =
      "Fill in the account: in the window Tools, Mail Account, or as a command: quillcast account set Name=... "
      "Email=you@example.org Server=...";
  if (email.empty()) return {Failure::kNotConfigured, "The account has no e-mail address yet.", kRemedy};
  return {Failure::kNotConfigured,
          Say("The account's Email is \"{}\", which is no address to send from.", platform::Printable(email, 80)),
          kRemedy};
}

// A stored width that the account dialog would not take counts as its default.
std::size_t WrapOf(const AccountSettings& account) {
  if (!account.IsOn(kAutoWrap)) return 0;
  return static_cast<std::size_t>(account.NumberOf(kWrap).value_or(76));
}

}  // namespace

Result<message::MessageOptions> MessageOptionsOf(const AccountSettings& account, std::string_view body_format) {
  const auto charset = charset::FindCharset(document::MimeNameOf(account[kCharSet]));
  if (!charset) {
    return Error{Failure::kNotConfigured,
                 Say("The account's CharSet is \"{}\", which is no known character set.",
                     platform::Printable(account[kCharSet], 80)),
                 "Choose one, for example: quillcast account set CharSet='Unicode (UTF-8)'"};
  }
  auto sender = smtp::EnvelopeAddress(account[kEmail]);
  if (!sender) return NoSender(account[kEmail]);
  const auto name_field = ChoiceOf(account, kToField);
  if (!name_field) return name_field.error();
  const auto header_encoding = ChosenAs<mime::HeaderEncoding>(account, kHeaderEncoding);
  if (!header_encoding) return header_encoding.error();
  const auto body_encoding = ChosenAs<message::TransferEncoding>(account, kEncoding);
  if (!body_encoding) return body_encoding.error();
  const auto attachment_encoding = ChosenAs<message::TransferEncoding>(account, kAttachmentEncoding);
  if (!attachment_encoding) return attachment_encoding.error();
  const auto notify = ChosenAs<smtp::DsnNotify>(account, kDsnNotify);
  if (!notify) return notify.error();
  const auto dsn_return = ChosenAs<smtp::DsnReturn>(account, kDsnReturn);
  if (!dsn_return) return dsn_return.error();
  return message::MessageOptions{.sender_name = account[kName],
                                 .sender_address = std::move(*sender),
                                 .name_field = *name_field,
                                 .charset = *charset,
                                 .header_encoding = *header_encoding,
                                 .body_encoding = *body_encoding,
                                 .attachment_encoding = *attachment_encoding,
                                 .wrap = *body_encoding == message::TransferEncoding::kNone ? WrapOf(account) : 0,
                                 .own_boundary_prefix = platform::ParseWholeNumber(account[kBoundary]) == 1,
                                 .is_bare = body_format == "Plain",
                                 .text_part = account.IsOn(kTextPart),
                                 .notify = *notify,
                                 .dsn_return = *dsn_return};
}

Result<std::string> LoadBodyFormat(const profile::SettingsStore& settings) {
  return settings.Read("Advanced", "Encoding", "MIME");
}

Result<message::MessageOptions> LoadMessageOptions(const profile::SettingsStore& settings,
                                                   const AccountSettings& account) {
  const auto format = LoadBodyFormat(settings);
  if (!format) return format.error();
  return MessageOptionsOf(account, *format);
}

}  // namespace quillcast::account
