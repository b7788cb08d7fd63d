#include "mail_file/part_fields.h"

#include <array>
#include <utility>

#include "mail_file/gmime_border.h"
#include "platform/text.h"
#include "platform/utf8.h"

namespace quillcast::mail_file {
namespace {

struct EncodingName {
  std::string_view name;
  TransferEncoding encoding;
};
constexpr std::array kEncodings = {
    EncodingName{"", TransferEncoding::kIdentity},
    EncodingName{"7bit", TransferEncoding::kIdentity},
    EncodingName{"8bit", TransferEncoding::kIdentity},
    EncodingName{"binary", TransferEncoding::kIdentity},
    EncodingName{"7-bit", TransferEncoding::kIdentity},
    EncodingName{"8-bit", TransferEncoding::kIdentity},
    EncodingName{"7", TransferEncoding::kIdentity},  // "7 bit", as some write it
    EncodingName{"8", TransferEncoding::kIdentity},
    EncodingName{"none", TransferEncoding::kIdentity},
    EncodingName{"quoted-printable", TransferEncoding::kQuotedPrintable},
    EncodingName{"base64", TransferEncoding::kBase64},
    EncodingName{"x-uuencode", TransferEncoding::kUuencode},
    EncodingName{"x-uue", TransferEncoding::kUuencode},
    EncodingName{"uuencode", TransferEncoding::kUuencode},
    EncodingName{"uue", TransferEncoding::kUuencode},
    EncodingName{"binhex", TransferEncoding::kIdentity},  // unpacked behind that, see packed_parts.h
    EncodingName{"x-binhex", TransferEncoding::kIdentity},
    EncodingName{"mac-binhex40", TransferEncoding::kIdentity},
    EncodingName{"x-mac-binhex40", TransferEncoding::kIdentity},
};

// The first word, without comments and what else stands behind it.
std::string FirstWord(std::string_view value) {
  value = platform::Trim(value);
  return platform::AsciiLower(BoundedPartText(platform::Trim(value.substr(0, value.find_first_of(" \t;(")))));
}

std::string BetweenAngles(std::string_view value) {
  value = platform::Trim(value);
  if (value.starts_with('<')) value.remove_prefix(1);
  return BoundedPartText(value.substr(0, value.find('>')));
}

// A long address is folded anywhere.
std::string UnfoldedAddress(std::string text) {
  std::erase_if(text, [](char c) { return c == ' ' || c == '\t'; });
  return BoundedPartText(text);
}

bool HoldsTwo(const ParameterizedValue& value, std::string_view name) {
  int count = 0;
  for (const auto& parameter : value.parameters)
    count += platform::EqualsIgnoringAsciiCase(parameter.first, name) ? 1 : 0;
  return count > 1;
}

// Text without a name of its own is what the message says; everything else goes along with it.
Marker MarkerOf(const Part& part, std::string_view disposition) {
  if (disposition == "attachment") return Marker::kAttachment;
  const bool is_text = part.type == "text/plain" || part.type == "text/html";
  return is_text && (part.name.empty() || part.parent == kNoPart) ? Marker::kBody : Marker::kAttachment;
}

Flow FlowOf(const ParameterizedValue& type) {
  if (type.value != "text/plain" || !platform::EqualsIgnoringAsciiCase(type.Parameter("format"), "flowed"))
    return Flow::kFixed;
  return platform::EqualsIgnoringAsciiCase(type.Parameter("delsp"), "yes") ? Flow::kFlowedDelSp : Flow::kFlowed;
}

bool IsMessageType(std::string_view type) { return type == "message/rfc822" || type == "message/global"; }

}  // namespace

std::string BoundedPartText(std::string_view text) {
  text = text.substr(0, kLongestPartText);
  return std::string(text.substr(0, text.size() - platform::IncompleteUtf8Tail(text)));
}

void PartFields::Take(std::string_view name, std::string_view value) {
  constexpr std::array<std::pair<std::string_view, std::string PartFields::*>, 6> kNames = {{
      {"Content-Type", &PartFields::type},
      {"Content-Disposition", &PartFields::disposition},
      {"Content-Transfer-Encoding", &PartFields::encoding},
      {"Content-ID", &PartFields::id},
      {"Content-Location", &PartFields::location},
      {"Content-Base", &PartFields::base},
  }};
  for (const auto& [wanted, member] : kNames) {
    if ((this->*member).empty() && platform::EqualsIgnoringAsciiCase(name, wanted)) this->*member = value;
  }
}

TransferEncoding EncodingOf(std::string_view name) {
  for (const EncodingName& row : kEncodings) {
    if (row.name == name) return row.encoding;
  }
  return TransferEncoding::kUnknown;
}

PartMeaning ReadPartFields(const PartFields& fields, Part& part) {
  PartMeaning meaning;
  const auto type = fields.type.empty() ? ParameterizedValue() : ReadContentType(fields.type);
  const auto disposition =
      fields.disposition.empty() ? ParameterizedValue() : ReadContentDisposition(fields.disposition);
  if (!type.value.empty()) part.type = BoundedPartText(type.value);
  part.charset = BoundedPartText(type.Parameter("charset"));
  part.flow = FlowOf(type);
  part.encoding = FirstWord(DecodeHeaderText(fields.encoding));
  part.source.encoding = EncodingOf(part.encoding);
  if (part.encoding.empty()) part.encoding = "7bit";
  part.name = BoundedPartText(disposition.Parameter("filename"));
  if (part.name.empty()) part.name = BoundedPartText(type.Parameter("name"));
  part.content_id = BetweenAngles(DecodeHeaderText(fields.id));
  part.location = UnfoldedAddress(DecodeHeaderText(fields.location));
  part.base = UnfoldedAddress(DecodeHeaderText(fields.base));
  part.is_picture = part.type.starts_with("image/") && disposition.value != "attachment";
  meaning.is_multipart = part.type.starts_with("multipart/");
  meaning.is_message = IsMessageType(part.type) && part.source.encoding == TransferEncoding::kIdentity;
  if (meaning.is_multipart) {
    meaning.boundary = type.Parameter("boundary");
    meaning.has_two_boundaries = HoldsTwo(type, "boundary");
    meaning.start = BetweenAngles(type.Parameter("start"));
  } else {
    part.marker = MarkerOf(part, disposition.value);
    meaning.is_to_be_saved = disposition.value == "attachment";
  }
  return meaning;
}

}  // namespace quillcast::mail_file
