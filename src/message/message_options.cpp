#include "message/message_options.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "document/charset_table.h"
#include "platform/text.h"
#include "profile/version.h"
#include "recipients/envelope_address.h"
#include "recipients/recipient.h"

namespace quillcast::message {
namespace {

using enum account::AccountKey;

// The position of the stored text among the choices of its key, where the position is the meaning.
Result<std::size_t> ChoiceOf(const account::AccountSettings& account, account::AccountKey key) {
  const auto& row = account::RowOf(key);
  const auto found = std::find(row.choices.begin(), row.choices.end(), account[key]);
  if (found != row.choices.end()) return static_cast<std::size_t>(found - row.choices.begin());
  return Error{Failure::kNotConfigured,
               fmt::format("The account's {} is \"{}\", which is none of its choices.", row.name,
                           platform::Printable(account[key], 80)),
               fmt::format("Choose one: {}.", fmt::join(row.choices, ", "))};
}

template <typename Enum>
Result<Enum> ChosenEnum(const account::AccountSettings& account, account::AccountKey key) {
  const auto choice = ChoiceOf(account, key);
  if (!choice) return choice.error();
  return static_cast<Enum>(*choice);
}

Result<std::uint16_t> PortFrom(std::string_view text) {
  const auto port = platform::WholeNumberBetween(platform::Trim(text), 1, 65535);
  if (port) return static_cast<std::uint16_t>(*port);
  return Error{Failure::kNotConfigured,
               fmt::format("\"{}\" is no port of a mail server.", platform::Printable(text, 40)),
               "A port is a number from 1 to 65535: quillcast account set Port=587"};
}

Result<smtp::Server> ServerFrom(std::string_view entry, std::uint16_t port) {
  smtp::Server server{std::string(entry), port};
  std::string_view port_text;
  if (entry.starts_with('[')) {
    const auto end = entry.find(']');
    server.host = entry.substr(1, end == std::string_view::npos ? end : end - 1);
    if (end != std::string_view::npos && entry.substr(end + 1).starts_with(':')) port_text = entry.substr(end + 2);
  } else if (std::count(entry.begin(), entry.end(), ':') == 1) {  // more of them: a bare IPv6 address
    server.host = platform::Trim(entry.substr(0, entry.find(':')));
    port_text = entry.substr(entry.find(':') + 1);
  }
  if (port_text.empty()) return server;
  const auto own_port = PortFrom(port_text);
  if (!own_port) {
    return Error{
        own_port.error().failure,
        fmt::format("\"{}\" in the server list names no port of a mail server.", platform::Printable(entry, 80)),
        "A port is a number from 1 to 65535, as in mail.example.org:587."};
  }
  server.port = *own_port;
  return server;
}

Error NoSender(std::string_view email) {
  constexpr const char* kRemedy =
      "Fill in the account: quillcast account set Name=... Email=you@example.org Server=...";
  if (email.empty()) return {Failure::kNotConfigured, "The account has no e-mail address yet.", kRemedy};
  return {
      Failure::kNotConfigured,
      fmt::format("The account's Email is \"{}\", which is no address to send from.", platform::Printable(email, 80)),
      kRemedy};
}

// A stored width that the account dialog would not take counts as its default.
std::size_t WrapOf(const account::AccountSettings& account) {
  if (!account.IsOn(kAutoWrap)) return 0;
  return static_cast<std::size_t>(platform::WholeNumberBetween(account[kWrap], 32, 128).value_or(76));
}

}  // namespace

std::string MailerName() {
  return fmt::format("Tarnwick Quillcast Classic {}.{}", profile::kVersionMajor, profile::kVersionMinor);
}

Result<MessageOptions> MessageOptionsOf(const account::AccountSettings& account, std::string_view body_format) {
  const auto charset = charset::FindCharset(document::MimeNameOf(account[kCharSet]));
  if (!charset) {
    return Error{Failure::kNotConfigured,
                 fmt::format("The account's CharSet is \"{}\", which is no known character set.",
                             platform::Printable(account[kCharSet], 80)),
                 "Choose one, for example: quillcast account set CharSet='Unicode (UTF-8)'"};
  }
  auto sender = recipients::EnvelopeAddress(account[kEmail]);
  if (!sender) return NoSender(account[kEmail]);
  const auto name_field = ChoiceOf(account, kToField);
  if (!name_field) return name_field.error();
  const auto header_encoding = ChosenEnum<mime::HeaderEncoding>(account, kHeaderEncoding);
  if (!header_encoding) return header_encoding.error();
  const auto body_encoding = ChosenEnum<TransferEncoding>(account, kEncoding);
  if (!body_encoding) return body_encoding.error();
  const auto attachment_encoding = ChosenEnum<TransferEncoding>(account, kAttachmentEncoding);
  if (!attachment_encoding) return attachment_encoding.error();
  const auto notify = ChosenEnum<smtp::DsnNotify>(account, kDsnNotify);
  if (!notify) return notify.error();
  const auto dsn_return = ChosenEnum<smtp::DsnReturn>(account, kDsnReturn);
  if (!dsn_return) return dsn_return.error();
  return MessageOptions{.sender_name = account[kName],
                        .sender_address = std::move(*sender),
                        .name_field = *name_field,
                        .charset = *charset,
                        .header_encoding = *header_encoding,
                        .body_encoding = *body_encoding,
                        .attachment_encoding = *attachment_encoding,
                        .wrap = *body_encoding == TransferEncoding::kNone ? WrapOf(account) : 0,
                        .own_boundary_prefix = platform::ParseWholeNumber(account[kBoundary]) == 1,
                        .is_bare = body_format == "Plain",
                        .text_part = account.IsOn(kTextPart),
                        .notify = *notify,
                        .dsn_return = *dsn_return};
}

Result<MessageOptions> LoadMessageOptions(const profile::SettingsStore& settings,
                                          const account::AccountSettings& account) {
  const auto format = settings.Read("Advanced", "Encoding", "MIME");
  if (!format) return format.error();
  return MessageOptionsOf(account, *format);
}

Result<std::vector<smtp::Server>> ServersOf(const account::AccountSettings& account) {
  std::vector<smtp::Server> servers;
  const auto port = PortFrom(account[kPort]);
  if (!port) return port.error();
  for (const auto entry : platform::Split(account[kServer], ';')) {
    if (platform::Trim(entry).empty()) continue;
    auto server = ServerFrom(platform::Trim(entry), *port);
    if (!server) return server.error();
    servers.push_back(std::move(*server));
  }
  return servers;
}

std::string ServersText(const account::AccountSettings& account) {
  const auto servers = ServersOf(account);
  if (!servers) return account[kServer];
  std::string text;
  for (const auto& server : *servers) {
    text += fmt::format("{}{}, port {}", text.empty() ? "" : ", or ", server.host, server.port);
  }
  return text;
}

Result<smtp::ClientOptions> ClientOptionsOf(const account::AccountSettings& account) {
  smtp::ClientOptions options;
  auto servers = ServersOf(account);
  if (!servers) return servers.error();
  options.servers = std::move(*servers);
  const auto security = ChosenEnum<smtp::Security>(account, kSecurity);
  if (!security) return security.error();
  options.security = *security;
  options.sign_in = account.IsOn(kAuth);
  if (options.sign_in) {
    const auto auth_mode = ChosenEnum<smtp::AuthMode>(account, kAuthMode);
    if (!auth_mode) return auth_mode.error();
    options.auth_mode = *auth_mode;
  }
  options.user = account[kUsername];
  options.password = smtp::Secret(account[kPassword]);
  options.send_without_auth = account.IsOn(kNoAuth);
  options.extended = account.IsOn(kExtended);
  options.pipeline = account.IsOn(kPipeline);
  options.timeout = std::chrono::seconds(account.TimeoutSeconds());
  return options;
}

}  // namespace quillcast::message
