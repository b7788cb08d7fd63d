#include "mail_file/tnef.h"

#include <algorithm>

#include "mail_file/gmime_border.h"
#include "mail_file/part_fields.h"
#include "mail_file/tnef_stream.h"
#include "platform/text.h"

namespace quillcast::mail_file {
namespace {

constexpr std::uint32_t kSignature = 0x223E9F78;
constexpr std::size_t kLongestText = 4096;  // bytes of a name

// Attributes, by type and number.
enum Attribute : std::uint32_t {
  kCodePage = 0x00069007,
  kNewAttachment = 0x00069002,
  kTitle = 0x00018010,
  kData = 0x0006800F,
  kAttachmentProperties = 0x00069005,
  kMessageProperties = 0x00069003,
  kBodyText = 0x0002800C,
};

// Properties, by number.
enum Property : std::uint16_t {
  kPropertyBody = 0x1000,
  kPropertyHtml = 0x1013,
  kPropertyLongName = 0x3707,
  kPropertyMediaType = 0x370E,
  kPropertyContentId = 0x3712,
};

// Types of properties; kManyValues is added to them.
enum PropertyType : std::uint16_t {
  kObject = 0x000D,
  kText8 = 0x001E,
  kText16 = 0x001F,
  kBinary = 0x0102,
  kManyValues = 0x1000,
};

// The bytes that a value of a fixed size takes, filled up to four; 0 for one that has a length before it.
std::uint32_t SizeOf(std::uint16_t type) {
  switch (type) {
    case kObject:
    case kText8:
    case kText16:
    case kBinary:
      return 0;
    case 0x0005:  // a double
    case 0x0006:  // money
    case 0x0007:  // a time as a double
    case 0x0014:  // 64 bits
    case 0x0040:  // a time
      return 8;
    case 0x0048:  // a GUID
      return 16;
    default:
      return 4;
  }
}

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
};

class TnefSearch {
 public:
  TnefSearch(FoundFiles& found, std::size_t place)
      : found_(found), place_(place), stream_(PartReader(found.file, found.parts[place].source)) {}

  Result<void> Run() {
    if (stream_.Number32() != kSignature) return Tell("is no winmail.dat");
    stream_.Number16();
    while (!stream_.is_ended() && (!is_damaged_ || found_.mode == LoadMode::kExtended)) {
      if (found_.is_cancelled()) return Error{Failure::kTryAgain, "Reading the message was cancelled."};
      TakeAttribute();
    }
    EndAttachment();
    AddBodies();
    if (!stream_.read()) return stream_.read();
    if (is_damaged_) return Tell("is damaged");
    return {};
  }

 private:
  Result<void> Tell(const char* what) {
    found_.faults.Add(LoadCode::kException,
                      Say("The part at byte {} {}.", found_.parts[place_].header.begin, std::string(what)));
    return {};
  }

  void TakeAttribute() {
    stream_.Byte();                  // of the message, or of an attachment
    if (stream_.is_ended()) return;  // where one may end
    const std::uint32_t attribute = stream_.Number32();
    const std::uint32_t length = stream_.Number32();
    stream_.ForgetSum();
    const std::uint64_t end = stream_.position() + length;
    TakeContent(attribute, end);
    if (stream_.position() < end) stream_.Skip(end - stream_.position());
    const std::uint16_t sum = stream_.sum();
    if (stream_.Number16() != sum || stream_.is_ended()) is_damaged_ = true;
  }

  void TakeContent(std::uint32_t attribute, std::uint64_t end) {
    switch (attribute) {
      case kCodePage:
        code_page_ = "cp" + std::to_string(stream_.Number32());
        return;
      case kNewAttachment:
        return EndAttachment();
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

  void EndAttachment() {
    const Attachment attachment = std::exchange(attachment_, {});
    if (!attachment.has_data) return;
    const std::string& name = attachment.long_name.empty() ? attachment.title : attachment.long_name;
    const std::size_t part = Add(name, attachment.data);
    if (part == kNoPart) return;
    if (!attachment.type.empty()) found_.parts[part].type = BoundedPartText(platform::AsciiLower(attachment.type));
    found_.parts[part].content_id = BoundedPartText(attachment.content_id);
  }

  std::size_t Add(std::string_view name, const Piece& piece) {
    const std::size_t part = found_.Add(place_, name, "tnef");
    if (part == kNoPart) return part;
    const PartSource& whole = found_.parts[place_].source;
    found_.parts[part].source = {whole.bytes, whole.encoding, Unpacking::kPiece, piece.bytes, piece.from};
    found_.parts[place_].holds_parts = true;
    found_.parts[place_].marker = Marker::kNone;
    return part;
  }

  bool HasText() const {
    return std::ranges::any_of(found_.parts, [](const Part& part) { return part.marker == Marker::kBody; });
  }

  void AddBody(const Piece& piece, const char* type, const std::string& charset) {
    const std::size_t part = Add({}, piece);
    if (part == kNoPart) return;
    found_.parts[part].type = type;
    found_.parts[part].charset = charset;
    if (found_.parts[part].message == kNoPart) found_.parts[part].marker = Marker::kBody;
  }

  void AddBodies() {
    if (text_.bytes.size() > 0 && !HasText()) AddBody(text_, "text/plain", text_charset_);
    if (html_.bytes.size() > 0) AddBody(html_, "text/html", html_charset_);
  }

  FoundFiles& found_;
  std::size_t place_;
  TnefStream stream_;
  std::string code_page_ = "cp1252";
  Attachment attachment_;
  Piece text_;
  std::string text_charset_;
  Piece html_;
  std::string html_charset_;
  bool is_damaged_ = false;
};

}  // namespace

Result<void> UnpackTnef(FoundFiles& found, std::size_t place) { return TnefSearch(found, place).Run(); }

}  // namespace quillcast::mail_file
