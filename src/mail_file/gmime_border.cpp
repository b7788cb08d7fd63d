#include "mail_file/gmime_border.h"

#include <gmime/gmime.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "charset/charset.h"
#include "mail_file/blanks.h"
#include "mail_file/limits.h"
#include "mime/read_header.h"
#include "mime/uuencode.h"
#include "platform/result.h"
#include "platform/text.h"
#include "platform/utf8.h"

namespace quillcast::mail_file {
namespace {

constexpr std::size_t kLongestStructured = std::size_t{8} * 1024;  // bytes; the work on parameters is their square
constexpr std::size_t kLongestQuick = std::size_t{4} * 1024;  // bytes; the work on what only begins encoded words, too
constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

struct FreeText {
  void operator()(char* text) const { g_free(text); }
};
struct FreeObject {
  void operator()(void* object) const { g_object_unref(object); }
};
struct FreeDate {
  void operator()(GDateTime* date) const { g_date_time_unref(date); }
};
struct CloseIconv {
  void operator()(void* converter) const { IgnoreErrors(g_mime_iconv_close(converter)); }
};
using Text = std::unique_ptr<char, FreeText>;

// GMime's own state is made at the first use; it is never ended, for other threads may be at work.
GMimeParserOptions* Options() {
  static GMimeParserOptions* const options = [] {
    g_mime_init();
    GMimeParserOptions* const made = g_mime_parser_options_new();
    std::array<const char*, 3> charsets = {"utf-8", "windows-1252", nullptr};
    g_mime_parser_options_set_fallback_charsets(made, charsets.data());
    g_mime_parser_options_set_allow_addresses_without_domain(made, TRUE);
    return made;
  }();
  return options;
}

// Ended by a zero, which cannot stand in it. Of encoded words in a row GMime decodes no more than to the first padding.
std::string ForGMime(std::string_view text, std::size_t longest) {
  std::string out = mime::JoinBase64Words(text.substr(0, longest));
  std::ranges::replace(out, '\0', ' ');
  return out;
}

// Where the first blank is behind which another piece may begin.
std::size_t EndOfPiece(std::string_view text) {
  if (text.size() <= kLongestQuick) return text.size();
  std::size_t end = text.find_last_of(kBlanks, kLongestQuick);
  if (end != std::string_view::npos) end = text.find_last_not_of(kBlanks, end) + 1;
  if (end == std::string_view::npos || end == 0) end = text.find_first_of(kBlanks, kLongestQuick);
  return std::min(end, text.size());
}

// The system's converter takes more for UTF-8 than that is, and GMime what it is told.
std::string Repaired(std::string text) {
  return platform::IsUtf8(text) ? std::move(text) : charset::Charset::Utf8().Decode(text);
}

std::string Utf8(const char* text) {
  if (text == nullptr) return {};
  return Repaired(text);
}

void TakeParameters(GMimeParamList* list, ParameterizedValue& out) {
  const int count = g_mime_param_list_length(list);
  for (int i = 0; i < count; ++i) {
    GMimeParam* const parameter = g_mime_param_list_get_parameter_at(list, i);
    out.parameters.emplace_back(Utf8(g_mime_param_get_name(parameter)), Utf8(g_mime_param_get_value(parameter)));
  }
}

int ToGMime(TransferEncoding encoding) {
  switch (encoding) {
    case TransferEncoding::kQuotedPrintable:
      return GMIME_CONTENT_ENCODING_QUOTEDPRINTABLE;
    case TransferEncoding::kBase64:
      return GMIME_CONTENT_ENCODING_BASE64;
    default:
      return GMIME_CONTENT_ENCODING_BINARY;
  }
}

}  // namespace

std::string_view ParameterizedValue::Parameter(std::string_view name) const {
  for (const auto& [given, text] : parameters) {
    if (platform::EqualsIgnoringAsciiCase(given, name)) return text;
  }
  return {};
}

ParameterizedValue ReadContentType(std::string_view field) {
  ParameterizedValue out;
  if (field.substr(0, field.find(';')).find('/') == std::string_view::npos) return out;  // GMime makes something of it
  const std::unique_ptr<GMimeContentType, FreeObject> type(
      g_mime_content_type_parse(Options(), ForGMime(field, kLongestStructured).c_str()));
  if (!type) return out;
  out.value = platform::AsciiLower(Utf8(Text(g_mime_content_type_get_mime_type(type.get())).get()));
  TakeParameters(g_mime_content_type_get_parameters(type.get()), out);
  return out;
}

ParameterizedValue ReadContentDisposition(std::string_view field) {
  ParameterizedValue out;
  const std::unique_ptr<GMimeContentDisposition, FreeObject> disposition(
      g_mime_content_disposition_parse(Options(), ForGMime(field, kLongestStructured).c_str()));
  if (!disposition) return out;
  out.value = platform::AsciiLower(Utf8(g_mime_content_disposition_get_disposition(disposition.get())));
  TakeParameters(g_mime_content_disposition_get_parameters(disposition.get()), out);
  return out;
}

std::string DecodeHeaderText(std::string_view text) {
  if (platform::IsAscii(text) && text.find("=?") == std::string_view::npos) return std::string(text);
  const std::string value = ForGMime(text, kLongestField);
  std::string out;
  for (std::string_view rest = value; !rest.empty();) {
    const std::string piece(rest.substr(0, EndOfPiece(rest)));
    out += Utf8(Text(g_mime_utils_header_decode_text(Options(), piece.c_str())).get());
    rest.remove_prefix(piece.size());
    const std::size_t blanks = std::min(rest.find_first_not_of(kBlanks), rest.size());
    const bool are_words = piece.ends_with("?=") && rest.substr(blanks).starts_with("=?");
    if (!are_words) out += rest.substr(0, blanks);
    rest.remove_prefix(blanks);
  }
  return out;
}

std::optional<Mailbox> ReadMailbox(std::string_view text) {
  const std::unique_ptr<InternetAddressList, FreeObject> list(
      internet_address_list_parse(Options(), ForGMime(text, kLongestStructured).c_str()));
  if (!list || internet_address_list_length(list.get()) == 0) return {};
  InternetAddress* const first = internet_address_list_get_address(list.get(), 0);
  if (!INTERNET_ADDRESS_IS_MAILBOX(first)) return {};
  return Mailbox{Utf8(internet_address_get_name(first)),
                 Utf8(internet_address_mailbox_get_addr(INTERNET_ADDRESS_MAILBOX(first)))};
}

std::optional<StampedTime> ReadTime(std::string_view text) {
  const std::unique_ptr<GDateTime, FreeDate> date(
      g_mime_utils_header_decode_date(ForGMime(text, kLongestStructured).c_str()));
  if (!date) return {};
  StampedTime out;
  out.local = Utf8(Text(g_date_time_format(date.get(), "%Y-%m-%d %H:%M:%S")).get());
  out.bias_minutes = static_cast<int>(g_date_time_get_utc_offset(date.get()) / G_TIME_SPAN_MINUTE);
  out.unix_time = g_date_time_to_unix(date.get());
  return out;
}

std::optional<ConvertedText> ConvertToUtf8(std::string_view bytes, std::string_view charset) {
  IgnoreErrors(Options() != nullptr);
  const std::string name = ForGMime(charset, 100);
  const auto opened = g_mime_iconv_open("UTF-8", name.c_str());
  if (opened == reinterpret_cast<iconv_t>(-1)) return {};  // NOLINT(performance-no-int-to-ptr)
  const std::unique_ptr<void, CloseIconv> converter(opened);
  ConvertedText out;
  std::array<char, 4096> block;
  char* from = const_cast<char*>(bytes.data());  // NOLINT(cppcoreguidelines-pro-type-const-cast): only read
  std::size_t left = bytes.size();
  while (left > 0) {
    char* to = block.data();
    std::size_t room = block.size();
    const std::size_t converted = g_mime_iconv(converter.get(), &from, &left, &to, &room);
    const bool foreign = converted == static_cast<std::size_t>(-1) && errno != E2BIG;
    out.text.append(block.data(), block.size() - room);
    if (!foreign) continue;
    out.text += kReplacement;
    ++out.lost;
    ++from;
    --left;
  }
  out.text = Repaired(std::move(out.text));
  return out;
}

// Uuencode is decoded by ours: GMime loses its place where a piece ends with a line.
struct TransferDecoder::State {
  GMimeEncoding encoding{};
  std::optional<mime::Uudecoder> uudecoder;
};

TransferDecoder::TransferDecoder(TransferEncoding encoding) {
  const bool is_uuencode = encoding == TransferEncoding::kUuencode;
  if (!is_uuencode && ToGMime(encoding) == GMIME_CONTENT_ENCODING_BINARY) return;
  state_ = std::make_unique<State>();
  if (is_uuencode) state_->uudecoder.emplace();
  g_mime_encoding_init_decode(&state_->encoding, static_cast<GMimeContentEncoding>(ToGMime(encoding)));
}

TransferDecoder::TransferDecoder(const TransferDecoder& other)
    : state_(other.state_ ? std::make_unique<State>(*other.state_) : nullptr) {}

TransferDecoder& TransferDecoder::operator=(const TransferDecoder& other) {
  state_ = other.state_ ? std::make_unique<State>(*other.state_) : nullptr;
  return *this;
}

TransferDecoder::~TransferDecoder() = default;

void TransferDecoder::Decode(std::string_view bytes, std::string& out) {
  if (!state_) {
    out += bytes;
    return;
  }
  if (state_->uudecoder) return state_->uudecoder->Decode(bytes, out);
  const std::size_t before = out.size();
  out.resize(before + g_mime_encoding_outlen(&state_->encoding, bytes.size()));
  out.resize(before + g_mime_encoding_step(&state_->encoding, bytes.data(), bytes.size(), out.data() + before));
}

// A last group without its padding: the two digits or three that are there say one byte or two.
void TransferDecoder::FinishBase64(std::string& out) {
  const std::size_t before = out.size();
  for (int padding = 0; padding < 2 && out.size() == before; ++padding) Decode("=", out);
}

void TransferDecoder::Finish(std::string& out) {
  if (!state_ || state_->uudecoder) return;
  if (state_->encoding.encoding == GMIME_CONTENT_ENCODING_BASE64) return FinishBase64(out);
  const std::size_t before = out.size();
  out.resize(before + g_mime_encoding_outlen(&state_->encoding, 0) + 64);
  out.resize(before + g_mime_encoding_flush(&state_->encoding, "", 0, out.data() + before));
}

}  // namespace quillcast::mail_file
