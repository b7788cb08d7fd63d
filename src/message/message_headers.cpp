#include "message/message_headers.h"

#include <fmt/format.h>

#include "mime/header_text.h"
#include "net/idna.h"
#include "platform/utf8.h"
#include "profile/mailer_name.h"

namespace quillcast::message {
namespace {

constexpr std::size_t kLongestSubject = std::size_t{1024} * 1024;

// None for a normal message, which is what readers take one for: filters count a field that says so against it.
std::string_view PriorityField(document::Priority priority) {
  switch (priority) {
    case document::Priority::kLow:
      return "X-Priority: 5\r\n";
    case document::Priority::kNormal:
      break;
    case document::Priority::kHigh:
      return "X-Priority: 1\r\n";
  }
  return "";
}

// UTF-8 where the account's set cannot hold the text.
charset::Charset CharsetFor(std::string_view text, charset::Charset wanted) {
  return wanted.IsUtf8() || mime::CanEncode(wanted, text) ? wanted : charset::Charset::Utf8();
}

}  // namespace

std::string ForMerging(std::string_view text) {
  recipients::Recipient carrier;
  carrier.values[0] = text;
  std::array<std::string, document::kMergeFields.size()> changed;
  return std::string(document::ValuesForMerge(carrier, changed)[0]);
}

MessageHeaders::MessageHeaders(const document::MessageDocument& document, MessageOptions options, std::uint64_t run_id)
    : options_(std::move(options)), run_id_(run_id), subject_(ForMerging(document.subject)) {
  const std::string sender = net::WithAsciiDomain(options_.sender_address.text());
  id_domain_ = sender.substr(sender.rfind('@') + 1);
  mime::AppendMailbox(from_, "From", mime::HeaderText(options_.sender_name), mime::HeaderText(sender),
                      CharsetFor(options_.sender_name, options_.charset), options_.header_encoding);
  others_ = fmt::format("X-Mailer: {}\r\n{}", profile::MailerName(), PriorityField(document.priority));
  if (options_.is_draft) others_ += "X-Unsent: 1\r\n";
  if (document.read_receipt) {
    mime::AppendMailbox(others_, "Disposition-Notification-To", mime::HeaderText(""), mime::HeaderText(sender),
                        options_.charset, options_.header_encoding);
  }
}

std::string MessageHeaders::ContentIdSuffix() const {
  return fmt::format("{:016x}@{}", run_id_, mime::IdDomain(id_domain_));
}

bool MessageHeaders::AsksForNotice() const {
  const bool notify = options_.notify != smtp::DsnNotify::kNone && options_.notify != smtp::DsnNotify::kServerDefault;
  const bool what = options_.dsn_return == smtp::DsnReturn::kHeaders || options_.dsn_return == smtp::DsnReturn::kFull;
  return notify || what;
}

bool MessageHeaders::CanHoldSubject(const document::MergeValues& values) const {
  if (options_.charset.IsUtf8()) return true;
  const auto subject = subject_.Merge(values);
  return !subject || mime::CanEncode(options_.charset, *subject);
}

bool MessageHeaders::Append(const document::MergeValues& values, const smtp::Address& address, std::uint64_t number,
                            const platform::Clock& clock, RenderedMessage& out) const {
  const std::string id = mime::MakeMessageId(run_id_, number, id_domain_);
  out.pieces.AddShared(from_);
  std::string& header = out.pieces.personal();
  if (!address.empty()) {
    const auto name = options_.name_field == 0 ? std::string_view() : values[options_.name_field];
    mime::AppendMailbox(header, "To", mime::HeaderText(name), mime::HeaderText(net::WithAsciiDomain(address.text())),
                        CharsetFor(name, options_.charset), options_.header_encoding);
  }
  const bool eight_bit_address = !platform::IsAscii(header) || !platform::IsAscii(from_);
  if (!AppendSubject(values, out)) return false;
  const std::tm local = clock.Local(clock.Now());
  header.append("Date: ").append(mime::FormatDate(local, local.tm_gmtoff)).append("\r\n");
  header.append("Message-ID: ").append(id).append("\r\n");
  out.pieces.EndPersonal();
  out.pieces.AddShared(others_);
  if (eight_bit_address) out.SetEightBitHeader();
  out.envelope.sender = options_.sender_address;
  out.envelope.recipient = address;
  out.envelope.notify = options_.notify;
  out.envelope.dsn_return = options_.dsn_return;
  if (AsksForNotice()) out.envelope.envelope_id = id.substr(1, id.size() - 2);
  return true;
}

bool MessageHeaders::AppendSubject(const document::MergeValues& values, RenderedMessage& out) const {
  const auto subject = subject_.Merge(values);
  if (!subject || subject->size() > kLongestSubject) return false;
  const charset::Charset charset = CharsetFor(*subject, options_.charset);
  out.subject_not_encoded = charset.IsUtf8() && !options_.charset.IsUtf8();
  mime::AppendUnstructured(out.pieces.personal(), "Subject", mime::HeaderText(*subject), charset,
                           options_.header_encoding);
  return true;
}

}  // namespace quillcast::message
