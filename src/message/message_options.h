// What the account contributes to every message of a run.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "account/account_settings.h"
#include "charset/charset.h"
#include "message/transfer_encoding.h"
#include "mime/header_text.h"
#include "platform/result.h"
#include "smtp/client/client.h"
#include "smtp/envelope.h"

namespace quillcast::message {

struct MessageOptions {
  std::string sender_name;
  std::string sender_address;  // bare
  std::size_t name_field = 0;  // whose value becomes the recipient's display name; 0, the address, for none
  charset::Charset charset = charset::Charset::Utf8();
  mime::HeaderEncoding header_encoding = mime::HeaderEncoding::kNone;
  TransferEncoding body_encoding = TransferEncoding::kQuotedPrintable;
  TransferEncoding attachment_encoding = TransferEncoding::kBase64;
  std::size_t wrap = 0;              // the columns at which lines of a body under kNone are wrapped; 0 for not at all
  bool own_boundary_prefix = false;  // a fresh prefix for the boundaries of each message
  bool is_bare = false;              // no MIME, and text only
  bool text_part = true;
  smtp::DsnNotify notify = smtp::DsnNotify::kNone;
  smtp::DsnReturn dsn_return = smtp::DsnReturn::kNone;
};

// `body_format` is the setting Encoding of the section Advanced: "Plain" sends text without MIME, anything else MIME.
// Fails with kNotConfigured for a value that cannot be used, naming it.
Result<MessageOptions> MessageOptionsOf(const account::AccountSettings& account, std::string_view body_format);

// The same with the body format as it is stored.
Result<MessageOptions> LoadMessageOptions(const profile::SettingsStore& settings,
                                          const account::AccountSettings& account);

// The account's servers, with the port of each. A list that names none is empty.
Result<std::vector<smtp::Server>> ServersOf(const account::AccountSettings& account);

// "mail.example.org, port 587, or mx.example.org, port 25", in the order in which they are tried; the list as it is
// stored where it cannot be read.
std::string ServersText(const account::AccountSettings& account);

// The connection that the account describes. "host", "host:port" and "[v6]:port" are understood in the server list;
// blanks round entries and empty entries are passed over.
Result<smtp::ClientOptions> ClientOptionsOf(const account::AccountSettings& account);

// "Tarnwick Quillcast Classic 1.0".
std::string MailerName();

}  // namespace quillcast::message
