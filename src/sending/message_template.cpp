#include "sending/message_template.h"

#include <fmt/format.h>

#include "compose/merge_fields.h"
#include "mime/header_text.h"
#include "mime/media_type.h"
#include "platform/text.h"
#include "platform/utf8.h"

namespace quillcast::sending {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLookedAt = 512;
constexpr std::size_t kLongestSubject = std::size_t{1024} * 1024;
constexpr const char* kQuotedPrintable = "Content-Transfer-Encoding: quoted-printable\r\n\r\n";

// Line ends as "\n", no NUL, well-formed UTF-8: the shape in which values are merged too.
std::string ForMerging(std::string_view text) {
  recipients::Recipient carrier;
  carrier.values[0] = text;
  std::array<std::string, compose::kMergeFields.size()> changed;
  return std::string(compose::ValuesForMerge(carrier, changed)[0]);
}

std::string PartHeader(std::string_view type, mime::Charset charset) {
  return fmt::format("Content-Type: text/{}; charset={}\r\n{}", type, charset.MimeName(), kQuotedPrintable);
}

std::string MultipartHeader(std::string_view type, std::string_view boundary) {
  return fmt::format("Content-Type: multipart/{}; boundary=\"{}\"\r\n\r\n--{}\r\n", type, boundary, boundary);
}

std::string_view PriorityValue(compose::Priority priority) {
  switch (priority) {
    case compose::Priority::kLow:
      return "5";
    case compose::Priority::kNormal:
      return "3";
    case compose::Priority::kHigh:
      return "1";
  }
  return "3";
}

// UTF-8 where the account's set cannot hold the text.
mime::Charset CharsetFor(std::string_view text, mime::Charset wanted) {
  return mime::CanEncode(wanted, text) ? wanted : mime::Charset::Utf8();
}

struct OpenAttachment {
  fs::path file;
  platform::UniqueFd fd;
  std::string media_type;
};

Result<OpenAttachment> OpenForAttaching(const fs::path& file) {
  auto fd = platform::OpenForReading(file);
  if (!fd) return fd.error();
  char start[kLookedAt];
  const auto got = platform::ReadSome(fd->get(), file, start, sizeof start);
  if (!got) return got.error();
  if (::lseek(fd->get(), 0, SEEK_SET) != 0) return platform::SystemError("read", file, errno);
  std::string type(mime::MediaTypeOf(file.filename().string(), std::string_view(start, *got)));
  return OpenAttachment{file, std::move(*fd), std::move(type)};
}

// The headers of a base64 part made from a file, and the empty line behind them. `content_id` may be empty.
std::string FilePartHeader(std::string_view media_type, std::string_view disposition, const fs::path& file,
                           std::string_view content_id) {
  const std::string name = file.filename().string();
  std::string header = fmt::format("Content-Type: {}", media_type);
  mime::AppendNameParameter(header, name);
  header += "\r\nContent-Transfer-Encoding: base64\r\n";
  if (!content_id.empty()) header += fmt::format("Content-ID: <{}>\r\n", content_id);
  header += fmt::format("Content-Disposition: {}", disposition);
  mime::AppendParameter(header, "filename", name);
  header += "\r\n\r\n";
  return header;
}

// The lines between parts. A body is ended by a line end that belongs to the boundary after it; encoded files end
// theirs themselves.
class Delimiters {
 public:
  std::string Next(std::string_view boundary) { return Line(boundary, ""); }
  std::string Close(std::string_view boundary) { return Line(boundary, "--"); }

 private:
  std::string Line(std::string_view boundary, std::string_view end) {
    const char* line_end = after_body_ ? "\r\n" : "";
    after_body_ = false;
    return fmt::format("{}--{}{}\r\n", line_end, boundary, end);
  }
  bool after_body_ = true;
};

}  // namespace

void RenderedMessage::Begin(const SharedTail& tail) {
  envelope = {};
  subject_not_encoded = false;
  pieces.Clear();
  tail_ = &tail;
  Rewind();
}

Result<std::string_view> RenderedMessage::Next() {
  if (next_piece_ < pieces.count()) return pieces.At(next_piece_++);
  auto bytes = tail_->ReadAt(tail_offset_, buffer_);
  if (bytes) tail_offset_ += bytes->size();
  return bytes;
}

void RenderedMessage::Rewind() {
  next_piece_ = 0;
  tail_offset_ = 0;
}

Result<void> WriteMessage(RenderedMessage& message, int fd, const fs::path& file) {
  message.Rewind();
  for (;;) {
    const auto bytes = message.Next();
    if (!bytes) return bytes.error();
    if (bytes->empty()) break;
    auto written = platform::WriteAll(fd, file, *bytes);
    if (!written) return written;
  }
  message.Rewind();
  return {};
}

MessageTemplate::MessageTemplate(const compose::MessageDocument& document, MessageOptions options,
                                 const fs::path& scratch_folder, const platform::Clock& clock,
                                 platform::Entropy& entropy)
    : options_(std::move(options)),
      clock_(clock),
      run_id_(entropy.Next()),
      id_domain_(options_.sender_address.substr(options_.sender_address.find('@') + 1)),
      subject_(ForMerging(document.subject)),
      tail_(scratch_folder) {
  CompileHeaders(document);
  RelatedPictures related;
  if (document.format == compose::Format::kHtml) {
    related = TakePictures(document.html, document.base_folder, fmt::format("{:016x}@{}", run_id_, id_domain_));
    html_.emplace(ForMerging(related.html), options_.charset, mime::Unmapped::kHtmlReference);
  }
  if (!html_ || options_.text_part) CompileText(ForMerging(document.PlainText()));
  missing_pictures_ = std::move(related.missing);
  CompileParts(related.pictures, document.attachments.paths(), entropy);
}

void MessageTemplate::CompileHeaders(const compose::MessageDocument& document) {
  mime::AppendMailbox(from_header_, "From", options_.sender_name, options_.sender_address,
                      CharsetFor(options_.sender_name, options_.charset), options_.header_encoding);
  std::string& out = other_headers_;
  out = fmt::format("X-Mailer: {}\r\nX-Priority: {}\r\n", MailerName(), PriorityValue(document.priority));
  if (document.read_receipt) {
    mime::AppendMailbox(out, "Disposition-Notification-To", "", options_.sender_address, options_.charset,
                        options_.header_encoding);
  }
}

void MessageTemplate::CompileText(std::string text) {
  const auto add = [&](mime::Charset charset) {
    text_.push_back({PartHeader("plain", charset), MergedBody(text, charset, mime::Unmapped::kQuestionMark)});
  };
  add(options_.charset);
  if (!options_.charset.IsUtf8()) add(mime::Charset::Utf8());
}

void MessageTemplate::CompileParts(std::span<const Picture> pictures, const std::vector<std::string>& attachments,
                                   platform::Entropy& entropy) {
  const std::string mixed = attachments.empty() ? "" : mime::MakeBoundary(entropy.Next(), entropy.Next());
  const std::string alternative = html_ && !text_.empty() ? mime::MakeBoundary(entropy.Next(), entropy.Next()) : "";
  const std::string related = pictures.empty() ? "" : mime::MakeBoundary(entropy.Next(), entropy.Next());
  Delimiters delimiters;

  before_text_ = "MIME-Version: 1.0\r\n";
  if (!mixed.empty()) before_text_ += MultipartHeader("mixed", mixed);
  if (!alternative.empty()) before_text_ += MultipartHeader("alternative", alternative);
  if (html_) {
    if (!alternative.empty()) before_html_ += "\r\n--" + alternative + "\r\n";
    if (!related.empty()) before_html_ += MultipartHeader("related; type=\"text/html\"", related);
    before_html_ += PartHeader("html", options_.charset);
  }

  for (const Picture& picture : pictures) {
    const std::string delimiter = delimiters.Next(related);
    if (trouble_) return;
    trouble_ = tail_.Append(delimiter + FilePartHeader(picture.media_type, "inline", picture.file, picture.content_id));
    if (!trouble_) trouble_ = tail_.AppendFileAsBase64(picture.fd.get(), picture.file);
  }
  if (!related.empty() && !trouble_) trouble_ = tail_.Append(delimiters.Close(related));
  if (!alternative.empty() && !trouble_) trouble_ = tail_.Append(delimiters.Close(alternative));
  for (const fs::path file : attachments) {
    if (trouble_) return;
    const auto attachment = OpenForAttaching(file);
    if (!attachment) {
      trouble_ = FileTrouble{smtp::ResultCode::kFileNotOpened, attachment.error()};
      return;
    }
    trouble_ = tail_.Append(delimiters.Next(mixed) + FilePartHeader(attachment->media_type, "attachment", file, {}));
    if (!trouble_) trouble_ = tail_.AppendFileAsBase64(attachment->fd.get(), file);
  }
  if (!mixed.empty() && !trouble_) trouble_ = tail_.Append(delimiters.Close(mixed));
}

std::bitset<compose::kMergeFields.size()> MessageTemplate::UsedFields() const {
  auto used = subject_.used();
  if (!text_.empty()) used |= text_.front().body.source().used();
  if (html_) used |= html_->source().used();
  return used;
}

Result<void> MessageTemplate::Render(const compose::MergeValues& values, const std::string& recipient_address,
                                     std::uint64_t number, RenderedMessage& out) const {
  out.Begin(tail_);
  bool rendered = AppendHeaders(values, recipient_address, number, out);
  out.pieces.AddShared(before_text_);
  rendered = rendered && AppendText(values, out.pieces);
  out.pieces.AddShared(before_html_);
  rendered = rendered && (!html_ || html_->Render(values, out.pieces));
  if (!rendered) {
    return Error{Failure::kBadData,
                 "The recipient's values hold merge tags that make the message grow without measure.",
                 "Take the merge tags out of the values of this recipient."};
  }
  out.envelope.sender = options_.sender_address;
  out.envelope.recipient = recipient_address;
  out.envelope.size = out.size();
  out.envelope.notify = options_.notify;
  out.envelope.dsn_return = options_.dsn_return;
  return {};
}

bool MessageTemplate::AppendHeaders(const compose::MergeValues& values, const std::string& address,
                                    std::uint64_t number, RenderedMessage& out) const {
  out.pieces.AddShared(from_header_);
  std::string& header = out.pieces.personal();
  const auto name = options_.name_field == 0 ? std::string_view() : values[options_.name_field];
  mime::AppendMailbox(header, "To", name, address, CharsetFor(name, options_.charset), options_.header_encoding);
  if (!AppendSubject(values, out)) return false;
  const std::tm local = clock_.Local(clock_.Now());
  header += "Date: " + mime::FormatDate(local, local.tm_gmtoff) + "\r\n";
  header += "Message-ID: " + mime::MakeMessageId(run_id_, number, id_domain_) + "\r\n";
  out.pieces.EndPersonal();
  out.pieces.AddShared(other_headers_);
  return true;
}

bool MessageTemplate::AppendSubject(const compose::MergeValues& values, RenderedMessage& out) const {
  const auto subject = compose::ReplaceMergeFields(subject_.text(), values);
  if (!subject || subject->size() > kLongestSubject) return false;
  const mime::Charset charset = CharsetFor(*subject, options_.charset);
  out.subject_not_encoded = charset.IsUtf8() && !options_.charset.IsUtf8();
  mime::AppendUnstructured(out.pieces.personal(), "Subject", *subject, charset, options_.header_encoding);
  return true;
}

bool MessageTemplate::AppendText(const compose::MergeValues& values, RenderedPieces& out) const {
  for (const TextVariant& variant : text_) {
    if (&variant != &text_.back() && !variant.body.CanHold(values)) continue;
    out.AddShared(variant.header);
    return variant.body.Render(values, out);
  }
  return true;  // HTML without a text part
}

}  // namespace quillcast::sending
