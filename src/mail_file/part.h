// A part of a message file (RFC 2045 2.4): what it says of itself, and where its content is.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quillcast::mail_file {

inline constexpr std::size_t kNoPart = static_cast<std::size_t>(-1);

// What an extraction does with a part. kNone: what only holds other parts, and what lies inside an attached message,
// which is one attachment itself.
enum class Marker { kNone, kBody, kAttachment };

// Bytes of a file, the end not included.
struct ByteRange {
  std::uint64_t begin = 0;
  std::uint64_t end = 0;

  std::uint64_t size() const { return end - begin; }
};

// kUnknown: nothing here can decode it.
enum class TransferEncoding { kIdentity, kQuotedPrintable, kBase64, kUuencode, kUnknown };

// What is made of the bytes once they are decoded. kRtf: the rich text that compressed rich text stands for; kRtfText:
// its words in UTF-8, or the page that it was made of.
enum class Unpacking { kNone, kBinHexData, kUuencoded, kRtf, kRtfText };

// Lines of a text that its sender broke (RFC 3676). kFlowedDelSp: at a space that is none of the text's.
enum class Flow { kFixed, kFlowed, kFlowedDelSp };

struct DecodingPoint;  // see part_reader.h

// Where the content of a part comes from; for PartReader.
struct PartSource {
  ByteRange bytes;  // of the file, still encoded
  TransferEncoding encoding = TransferEncoding::kIdentity;
  Unpacking unpacking = Unpacking::kNone;
  std::optional<ByteRange> piece = {};             // which of the decoded bytes are unpacked; none: all
  std::shared_ptr<const DecodingPoint> from = {};  // where decoding may begin for that piece; none: at the beginning
};

// Texts come from strangers: they are UTF-8 and no longer than kLongestPartText, and may hold anything else; show them
// through platform::Printable, and make a name safe before a file is called so.
struct Part {
  std::size_t parent = kNoPart;   // by its place in MailMessage::parts()
  std::size_t message = kNoPart;  // the attached message that it lies in
  int depth = 0;                  // of nesting; 0 for the message itself
  std::string type = "text/plain";
  std::string charset;     // as declared, not looked at; empty where it is not
  std::string encoding;    // as declared, in small letters; "7bit" where it is not
  std::string name;        // of Content-Disposition, else of Content-Type (RFC 2231, or 2047 in the wrong place)
  std::string content_id;  // without "<" and ">"
  std::string location;    // of Content-Location (RFC 2557), as written, without blanks
  std::string base;        // of Content-Base (RFC 2110), likewise
  Flow flow = Flow::kFixed;
  Marker marker = Marker::kNone;
  bool is_picture = false;   // that is not to be saved alone, but shown
  bool holds_parts = false;  // a multipart, or a message whose parts follow; its content is then all of that, encoded
  std::string refused;       // a transfer encoding that is not decoded, by its name ("yEnc"); then it cannot be opened
  ByteRange header;          // its fields, in the file
  PartSource source;
  std::vector<ByteRange> files_within;  // lines of a text that are parts of their own, in its decoded bytes
};

inline constexpr std::size_t kLongestPartText = 1000;  // bytes

}  // namespace quillcast::mail_file
