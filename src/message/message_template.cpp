#include "message/message_template.h"

#include <unistd.h>

#include <cerrno>

#include "message/boundary_prefix.h"
#include "message/escape_in_styles.h"
#include "message/message_parts.h"
#include "mime/header_text.h"
#include "mime/media_type.h"

namespace quillcast::message {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLookedAt = 512;

Result<std::string> MediaTypeOfFile(int fd, const fs::path& file) {
  char start[kLookedAt];
  const auto got = platform::ReadSome(fd, file, start, sizeof start);
  if (!got) return got.error();
  if (::lseek(fd, 0, SEEK_SET) != 0) return platform::SystemError("read", file, errno);
  return std::string(mime::MediaTypeOf(file.filename().string(), std::string_view(start, *got)));
}

// A text without a set counts as ASCII, and most readers take it for one of their own: so one whose set nothing tells
// is only a file.
std::string WithCharset(std::string_view media_type, bool holds_utf8) {
  if (!media_type.starts_with("text/")) return std::string(media_type);
  return holds_utf8 ? std::string(media_type) + "; charset=utf-8" : "application/octet-stream";
}

// Wrapped once, at the account's columns where it has some.
std::string PlainTextOf(const document::MessageDocument& document, const MessageOptions& options) {
  return options.wrap > 0 ? document.PlainText(options.wrap) : document.PlainText();
}

}  // namespace

MessageTemplate::MessageTemplate(const document::MessageDocument& document, MessageOptions options,
                                 const fs::path& scratch_folder, const platform::Clock& clock,
                                 platform::Entropy& entropy)
    : MessageTemplate(document, std::move(options), scratch_folder, clock, entropy, DocumentFiles(document)) {}

MessageTemplate::MessageTemplate(const document::MessageDocument& document, MessageOptions options,
                                 const fs::path& scratch_folder, const platform::Clock& clock,
                                 platform::Entropy& entropy, const FileSource& files)
    : options_(std::move(options)),
      clock_(clock),
      headers_(document, options_, entropy.Next()),
      layout_(options_.own_boundary_prefix),
      files_(scratch_folder) {
  RelatedPictures related;
  const Parts parts = PartsOf(document, options_);
  if (HasHtml(parts)) {
    related = TakePictures(document, headers_.ContentIdSuffix(), files);
    html_ = TextPart{
        TextPartHeaders("html", options_.charset),
        MergedBody(EscapeInStyles(ForMerging(related.html), options_.charset), StyleOf(options_.charset, true))};
  }
  if (HasText(parts)) CompileText(ForMerging(PlainTextOf(document, options_)));
  pictures_ = std::move(related.pictures);
  picture_troubles_ = std::move(related.troubles);
  foreign_pictures_ = std::move(related.foreign);
  if (options_.is_bare) {
    CompileBare(document.attachments.paths(), files);
  } else {
    CompileParts(document.attachments.paths(), entropy, files);
  }
}

BodyStyle MessageTemplate::StyleOf(charset::Charset charset, bool is_html) const {
  return {.charset = charset,
          .unmapped = is_html ? charset::Unmapped::kHtmlReference : charset::Unmapped::kQuestionMark,
          .start = charset.BodyPrefix(),
          .encoding = options_.is_bare ? TransferEncoding::kNone : options_.body_encoding,
          .wrap = options_.wrap,
          .is_html = is_html,
          .is_bare = options_.is_bare};
}

void MessageTemplate::CompileText(const std::string& text) {
  const auto add = [&](charset::Charset charset) {
    const bool is_second = !texts_.empty();
    texts_.push_back({options_.is_bare ? BareHeaders(charset, is_second) : TextPartHeaders("plain", charset),
                      MergedBody(text, StyleOf(charset, false))});
  };
  add(options_.charset);
  if (!options_.charset.IsUtf8()) add(charset::Charset::Utf8());
}

// What makes a boundary unique is chance, drawn here and seen by nobody before the first message is out; content that
// was written earlier cannot hold it, encoded or not.
void MessageTemplate::CompileParts(const std::vector<std::string>& attachments, platform::Entropy& entropy,
                                   const FileSource& files) {
  const std::string mixed = attachments.empty() ? "" : mime::MakeBoundary(entropy.Next(), entropy.Next());
  const std::string alternative = html_ && !texts_.empty() ? mime::MakeBoundary(entropy.Next(), entropy.Next()) : "";
  const std::string related = pictures_.empty() ? "" : mime::MakeBoundary(entropy.Next(), entropy.Next());

  layout_.AddBytes("MIME-Version: 1.0\r\n");
  if (!mixed.empty()) layout_.BeginMultipart("mixed", mixed);
  if (!alternative.empty()) layout_.BeginMultipart("alternative", alternative);
  if (!texts_.empty()) layout_.AddText();
  if (!alternative.empty()) layout_.NextPart(alternative);
  if (!related.empty()) layout_.BeginMultipart("related;\r\n type=\"text/html\"", related);
  if (html_) layout_.AddHtml();
  for (const Picture& picture : pictures_) {
    layout_.NextPart(related);
    AddPicture(picture, files);
  }
  if (!related.empty()) layout_.EndMultipart(related);
  if (!alternative.empty()) layout_.EndMultipart(alternative);
  for (const fs::path file : attachments) {
    layout_.NextPart(mixed);
    AddAttachment(file, files);
  }
  if (!mixed.empty()) layout_.EndMultipart(mixed);
}

void MessageTemplate::CompileBare(const std::vector<std::string>& attachments, const FileSource& files) {
  layout_.AddText();
  for (const fs::path file : attachments) {
    TakeFile(files.OpenAttachment(file), [&](int fd) { return files_.AddUuencoded(fd, file); });
    if (trouble_) return;
    file_parts_.emplace_back();
    layout_.AddFile(file_parts_.size() - 1, true);
  }
}

// What `take` makes of an open file, unless there is trouble already or it could not be opened.
template <typename Take>
void MessageTemplate::TakeFile(const OpenedFile& file, const Take& take) {
  if (trouble_) return;
  const auto* fd = std::get_if<platform::UniqueFd>(&file);
  trouble_ = fd != nullptr ? take(fd->get()) : std::get<FileTrouble>(file);
}

void MessageTemplate::AddPicture(const Picture& picture, const FileSource& files) {
  if (trouble_) return;
  TakeFile(files.OpenPicture(picture),
           [&](int fd) { return files_.Add(fd, picture.file, options_.attachment_encoding); });
  if (!trouble_) AddFilePart(picture.media_type, "inline", picture.file, picture.content_id);
}

void MessageTemplate::AddAttachment(const fs::path& file, const FileSource& files) {
  if (trouble_) return;
  std::string media_type;
  TakeFile(files.OpenAttachment(file), [&](int fd) -> std::optional<FileTrouble> {
    auto type = MediaTypeOfFile(fd, file);
    if (!type) return FileTrouble{smtp::ResultCode::kFileNotRead, type.error()};
    media_type = *std::move(type);
    return files_.Add(fd, file, options_.attachment_encoding);
  });
  if (trouble_) return;
  AddFilePart(WithCharset(media_type, files_.HoldsUtf8(file_parts_.size())), "attachment", file, {});
}

void MessageTemplate::AddFilePart(std::string_view media_type, std::string_view disposition, const fs::path& file,
                                  std::string_view content_id) {
  const std::size_t number = file_parts_.size();
  const WireForm form = files_.FormOf(number);
  FilePart part{FilePartHeader(media_type, disposition, file, content_id, form), {}};
  if (form == WireForm::kEightBit) {
    part.seven_bit_header = FilePartHeader(media_type, disposition, file, content_id, WireForm::kBase64);
  }
  file_parts_.push_back(std::move(part));
  layout_.AddFile(number, !IsAsItStands(form));
}

std::bitset<document::kMergeFields.size()> MessageTemplate::UsedFields() const {
  auto used = headers_.used_fields();
  if (!texts_.empty()) used |= texts_.front().body.source().used();
  if (html_) used |= html_->body.source().used();
  return used;
}

bool MessageTemplate::CanHoldSubject(const recipients::Recipient& recipient) const {
  std::array<std::string, document::kMergeFields.size()> changed;
  return headers_.CanHoldSubject(document::ValuesForMerge(recipient, changed));
}

Result<void> MessageTemplate::Render(const recipients::Recipient& recipient, const smtp::Address& address,
                                     std::int64_t number, RenderedMessage& out) const {
  std::array<std::string, document::kMergeFields.size()> changed;
  const auto values = document::ValuesForMerge(recipient, changed);
  out.Begin(files_);
  if (!headers_.Append(values, address, static_cast<std::uint64_t>(number), clock_, out) || !AppendParts(values, out)) {
    return Error{Failure::kBadData,
                 "The recipient's values hold merge tags that make the message grow without measure.",
                 "Take the merge tags out of the values of this recipient."};
  }
  out.envelope.size = out.size();
  out.envelope.eight_bit = out.eight_bit();
  return {};
}

bool MessageTemplate::AppendParts(const document::MergeValues& values, RenderedMessage& out) const {
  using Place = MessageLayout::Place;
  const std::string prefix = options_.own_boundary_prefix ? GetBoundaryMarkPrefix(clock_.Now()) : "";
  for (const auto& segment : layout_.segments()) {
    bool appended = true;
    switch (segment.place) {
      case Place::kBytes:
        out.pieces.AddShared(segment.bytes);
        break;
      case Place::kPrefix:
        out.pieces.personal() += prefix;
        out.pieces.EndPersonal();
        break;
      case Place::kEncoding:
        out.ReserveMultipartEncoding();
        break;
      case Place::kText:
        appended = AppendTexts(values, out);
        break;
      case Place::kHtml:
        appended = AppendText(*html_, values, out);
        break;
      case Place::kFile:
        AppendFile(segment.file, out);
        break;
    }
    if (!appended) return false;
  }
  out.FillMultipartEncodings();
  return true;
}

bool MessageTemplate::AppendTexts(const document::MergeValues& values, RenderedMessage& out) const {
  for (const TextPart& part : texts_) {
    if (&part == &texts_.back() || part.body.CanHold(values)) return AppendText(part, values, out);
  }
  return true;
}

bool MessageTemplate::AppendText(const TextPart& part, const document::MergeValues& values,
                                 RenderedMessage& out) const {
  const std::size_t header = out.pieces.Reserve();
  const auto form = part.body.Render(values, out.pieces);
  if (!form) return false;
  out.pieces.Fill(header, part.headers[static_cast<std::size_t>(*form)]);
  if (IsAsItStands(*form)) out.SetAsItStands();
  if (*form == WireForm::kEightBit) {
    const auto seven_bit = WireForm::kQuotedPrintable;
    out.AddEightBitPart(header, part.headers[static_cast<std::size_t>(seven_bit)], seven_bit);
  }
  return true;
}

void MessageTemplate::AppendFile(std::size_t file, RenderedMessage& out) const {
  const FilePart& part = file_parts_[file];
  const std::size_t header = out.pieces.count();
  const WireForm form = files_.FormOf(file);
  out.pieces.AddShared(part.header);
  out.pieces.AddFile(file, files_.SizeOf(file));
  if (IsAsItStands(form)) out.SetAsItStands();
  if (form == WireForm::kEightBit) out.AddEightBitPart(header, part.seven_bit_header, WireForm::kBase64);
  if (options_.is_bare) out.ExtendEightBitPart();  // without MIME there is one body, and this belongs to it
}

}  // namespace quillcast::message
