#include "mail_file/tnef.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "mail_file/gmime_border.h"
#include "mail_file/part_fields.h"
#include "mail_file/tnef_numbers.h"
#include "mail_file/tnef_stream.h"
#include "platform/text.h"

namespace quillcast::mail_file {
namespace {

constexpr std::uint32_t kTnefSignature = 0x223E9F78;
constexpr std::size_t kLongestText = 4096;   // bytes of a name
constexpr int kDeepestMessage = 20;          // attached messages in each other
constexpr std::size_t kRtfBeginning = 4096;  // bytes in which rich text tells what it was made of
// What an attached object begins with that is a message.
constexpr std::string_view kMessageMark("\x07\x03\x02\0\0\0\0\0\xC0\0\0\0\0\0\0\x46", 16);

struct Piece {
  ByteRange bytes;
  std::shared_ptr<const DecodingPoint> from;
};

struct Attachment {
  std::string title;
  std::string long_name;
  std::string type;
  std::string content_id;
  Piece data;
  bool has_data = false;
  std::size_t message = kNoPart;  // where what is attached is one
};

// One message in that format: the part itself, or one that is attached there, which stands in the same stream.
class TnefSearch {
 public:
  // `depth`: the messages that it is attached in.
  TnefSearch(FoundFiles& found, std::size_t place, TnefStream& stream, int depth)
      : found_(found), place_(place), stream_(stream), depth_(depth) {}

  // Goes on to that place, or the end of the content. False where no such message begins.
  bool Read(std::uint64_t end) {
    if (stream_.Number32() != kTnefSignature) return false;
    stream_.Number16();
    while (stream_.position() < end && !stream_.is_ended() && !found_.is_cancelled() &&
           (!is_damaged_ || found_.mode == LoadMode::kExtended)) {
      TakeAttribute();
    }
    EndAttachment();
    return true;
  }
  // Behind all that was read, so that each part stands behind what holds it.
  Result<void> AddBodies() {
    if (text_.bytes.size() > 0 && !HasText()) AddBody(text_, "text/plain", text_charset_);
    if (html_.bytes.size() > 0) AddBody(html_, "text/html", html_charset_);
    return rtf_.bytes.size() > 0 && !HasText() ? AddRtfBody() : Result<void>();
  }

  bool is_damaged() const { return is_damaged_; }
  const std::string& subject() const { return subject_; }

 private:
  void TakeAttribute() {
    stream_.Byte();                  // of the message, or of an attachment
    if (stream_.is_ended()) return;  // where one may end
    const std::uint32_t attribute = stream_.Number32();
    const std::uint32_t length = stream_.Number32();
    const std::uint16_t before = stream_.sum();
    const std::uint64_t end = stream_.position() + length;
    TakeContent(attribute, end);
    if (stream_.position() < end) stream_.Skip(end - stream_.position());
    const auto sum = static_cast<std::uint16_t>(stream_.sum() - before);
    if (stream_.Number16() != sum || stream_.is_ended()) is_damaged_ = true;
  }

  void TakeContent(std::uint32_t attribute, std::uint64_t end) {
    switch (attribute) {
      case kCodePage:
        code_page_ = "cp" + std::to_string(stream_.Number32());
        return;
      case kNewAttachment:
        return EndAttachment();
      case kSubject:
        subject_ = TextUntil(end);
        return;
      case kTitle:
        attachment_.title = TextUntil(end);
        return;
      case kData:
        attachment_.data = PieceUntil(end);
        attachment_.has_data = true;
        return;
      case kBodyText:
        text_ = PieceUntil(end);
        text_charset_ = code_page_;
        return;
      case kAttachmentProperties:
      case kMessageProperties:
        return TakeProperties(end);
      default:
        return;
    }
  }

  Piece PieceUntil(std::uint64_t end) const { return {{stream_.position(), end}, stream_.point()}; }

  std::string TextUntil(std::uint64_t end) {
    const std::string bytes = stream_.Take(end - stream_.position(), kLongestText);
    const std::string_view text = std::string_view(bytes).substr(0, bytes.find('\0'));
    const auto converted = ConvertToUtf8(text, code_page_);
    return converted ? converted->text : DecodeHeaderText(text);
  }

  void TakeProperties(std::uint64_t end) {
    const std::uint32_t count = stream_.Number32();
    for (std::uint32_t i = 0; i < count && stream_.position() < end && !stream_.is_ended(); ++i) TakeProperty(end);
  }

  void TakeProperty(std::uint64_t end) {
    const std::uint16_t type = stream_.Number16();
    const std::uint16_t number = stream_.Number16();
    if (number >= 0x8000) SkipPropertyName(end);
    const auto single = static_cast<std::uint16_t>(type & ~kManyValues);
    const std::uint32_t size = SizeOf(single);
    const std::uint32_t values = size == 0 || single != type ? stream_.Number32() : 1;
    if (size > 0) return SkipWithin(std::uint64_t{values} * size, end);
    for (std::uint32_t i = 0; i < values && stream_.position() < end && !stream_.is_ended(); ++i) {
      const std::uint32_t length = stream_.Number32();
      const std::uint64_t value_end = std::min(end, stream_.position() + length);
      TakeValue(number, single, value_end);
      SkipWithin(value_end - stream_.position() + (4 - length % 4) % 4, end);
    }
  }

  void SkipPropertyName(std::uint64_t end) {
    SkipWithin(16, end);
    if (stream_.Number32() == 0) return SkipWithin(4, end);
    const std::uint32_t length = stream_.Number32();
    SkipWithin(std::uint64_t{length} + (4 - length % 4) % 4, end);
  }

  void SkipWithin(std::uint64_t size, std::uint64_t end) {
    const std::uint64_t left = end - std::min(end, stream_.position());
    stream_.Skip(std::min(size, left));
  }

  void TakeValue(std::uint16_t number, std::uint16_t type, std::uint64_t end) {
    switch (number) {
      case kPropertyBody:
        text_ = PieceUntil(end);
        text_charset_ = type == kText16 ? "utf-16le" : code_page_;
        return;
      case kPropertyHtml:
        html_ = PieceUntil(end);
        html_charset_ = type == kText16 ? "utf-16le" : std::string();
        return;
      case kPropertyRtf:
        rtf_ = PieceUntil(end);
        return;
      case kPropertyContent:
        if (type == kObject) TakeObject(end);
        return;
      case kPropertyDisplayName:
        if (attachment_.title.empty()) attachment_.title = PropertyText(type, end);
        return;
      case kPropertyLongName:
        attachment_.long_name = PropertyText(type, end);
        return;
      case kPropertyMediaType:
        attachment_.type = PropertyText(type, end);
        return;
      case kPropertyContentId:
        attachment_.content_id = PropertyText(type, end);
        return;
      default:
        return;
    }
  }

  std::string PropertyText(std::uint16_t type, std::uint64_t end) {
    if (type != kText16) return TextUntil(end);
    const std::string bytes = stream_.Take(end - stream_.position(), kLongestText);
    const auto converted = ConvertToUtf8(bytes, "utf-16le");
    return converted ? converted->text.substr(0, converted->text.find('\0')) : std::string();
  }

  // An attached message. Nothing else can open one, so what is in it is attached one by one.
  void TakeObject(std::uint64_t end) {
    if (stream_.Take(kMessageMark.size(), kMessageMark.size()) != kMessageMark || depth_ == kDeepestMessage) return;
    const std::size_t message = Add({}, PieceUntil(end));
    if (message == kNoPart) return;
    found_.parts[message].type = "application/ms-tnef";
    TnefSearch inner(found_, message, stream_, depth_ + 1);
    if (!inner.Read(end)) return;
    IgnoreErrors(inner.AddBodies());  // reading what was read before: the stream tells
    is_damaged_ |= inner.is_damaged();
    found_.parts[message].name = BoundedPartText(inner.subject());
    attachment_.message = message;
  }

  void EndAttachment() {
    const Attachment attachment = std::exchange(attachment_, {});
    const std::string& name = attachment.long_name.empty() ? attachment.title : attachment.long_name;
    if (attachment.message != kNoPart && !name.empty()) found_.parts[attachment.message].name = BoundedPartText(name);
    if (!attachment.has_data || attachment.message != kNoPart) return;
    const std::size_t part = Add(name, attachment.data);
    if (part == kNoPart) return;
    if (!attachment.type.empty()) found_.parts[part].type = BoundedPartText(platform::AsciiLower(attachment.type));
    found_.parts[part].content_id = BoundedPartText(attachment.content_id);
  }

  std::size_t Add(std::string_view name, const Piece& piece) {
    const std::size_t part = found_.Add(place_, name, "tnef");
    if (part == kNoPart) return part;
    const PartSource& whole = found_.parts[place_].source;
    found_.parts[part].source = {whole.bytes, whole.encoding, Unpacking::kNone, piece.bytes, piece.from};
    found_.parts[place_].holds_parts = true;
    found_.parts[place_].marker = Marker::kNone;
    return part;
  }

  bool HasText() const {
    if (depth_ > 0) return has_body_;
    return std::ranges::any_of(found_.parts, [](const Part& part) { return part.marker == Marker::kBody; });
  }

  std::size_t AddBody(const Piece& piece, const char* type, const std::string& charset) {
    const std::size_t part = Add({}, piece);
    if (part == kNoPart) return part;
    found_.parts[part].type = type;
    found_.parts[part].charset = charset;
    if (depth_ == 0 && found_.parts[part].message == kNoPart) found_.parts[part].marker = Marker::kBody;
    has_body_ = true;
    return part;
  }

  // Its words, and beside them the rich text itself; of one that was made of a page that page alone.
  Result<void> AddRtfBody() {
    const std::size_t part = AddBody(rtf_, "application/rtf", {});
    if (part == kNoPart) return {};
    PartSource& source = found_.parts[part].source;
    source.unpacking = Unpacking::kRtf;
    const auto is_of_html = IsOfHtml(source);
    if (!is_of_html) return is_of_html.error();
    source.unpacking = Unpacking::kRtfText;
    found_.parts[part].type = *is_of_html ? "text/html" : "text/plain";
    found_.parts[part].charset = "utf-8";
    const std::size_t rich = *is_of_html ? kNoPart : Add({}, rtf_);
    if (rich == kNoPart) return {};
    found_.parts[rich].type = "application/rtf";
    found_.parts[rich].source.unpacking = Unpacking::kRtf;
    return {};
  }

  Result<bool> IsOfHtml(const PartSource& source) const {
    PartReader reader(found_.file, source);
    RtfTextDecoder decoder;
    std::string text;
    for (std::size_t size = 0; size < kRtfBeginning && !decoder.is_of_html();) {
      const auto block = reader.Next();
      if (!block) return block.error();
      if (block->empty()) break;
      decoder.Decode(block->substr(0, kRtfBeginning), text);
      size += block->size();
    }
    return decoder.is_of_html();
  }

  FoundFiles& found_;
  std::size_t place_;
  TnefStream& stream_;
  int depth_;
  std::string code_page_ = "cp1252";
  Attachment attachment_;
  Piece text_;
  std::string text_charset_;
  Piece html_;
  std::string html_charset_;
  Piece rtf_;
  std::string subject_;
  bool has_body_ = false;
  bool is_damaged_ = false;
};

}  // namespace

Result<void> UnpackTnef(FoundFiles& found, std::size_t place) {
  const auto tell = [&](SentencePattern<1> what) -> Result<void> {
    found.faults.Add(LoadCode::kException, Say(what, found.parts[place].header.begin));
    return {};
  };
  TnefStream stream(PartReader(found.file, found.parts[place].source));
  TnefSearch search(found, place, stream, 0);
  if (!search.Read(std::numeric_limits<std::uint64_t>::max())) return tell("The part at byte {} is no winmail.dat.");
  if (found.is_cancelled()) return Error{Failure::kTryAgain, "Reading the message was cancelled."};
  if (auto added = search.AddBodies(); !added) return added;
  if (!stream.read()) return stream.read();
  return search.is_damaged() ? tell("The part at byte {} is damaged.") : Result<void>();
}

}  // namespace quillcast::mail_file
