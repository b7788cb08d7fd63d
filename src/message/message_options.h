// What a sender lays down for every message of a run.
#pragma once

#include <cstddef>
#include <string>

#include "charset/charset.h"
#include "message/transfer_encoding.h"
#include "mime/header_text.h"
#include "smtp/envelope.h"

namespace quillcast::message {

// Made from the account, and checked there: see account/account_message.
struct MessageOptions {
  std::string sender_name;
  smtp::Address sender_address;
  std::size_t name_field = 0;  // whose value becomes the recipient's display name; 0, the address, for none
  charset::Charset charset = charset::Charset::Utf8();
  mime::HeaderEncoding header_encoding = mime::HeaderEncoding::kNone;
  TransferEncoding body_encoding = TransferEncoding::kQuotedPrintable;
  TransferEncoding attachment_encoding = TransferEncoding::kBase64;
  std::size_t wrap = 0;              // the columns at which lines of a body under kNone are wrapped; 0 for not at all
  bool own_boundary_prefix = false;  // a fresh prefix for the boundaries of each message
  bool is_bare = false;              // no MIME, and text only
  bool text_part = true;
  bool is_draft = false;  // "X-Unsent: 1": mail readers open the message to be written on; for a file alone
  smtp::DsnNotify notify = smtp::DsnNotify::kNone;
  smtp::DsnReturn dsn_return = smtp::DsnReturn::kNone;
};

}  // namespace quillcast::message
