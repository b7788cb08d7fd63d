#include "mail_file/data_picture.h"

#include <utility>

#include "document/picture_kind.h"
#include "platform/base64.h"
#include "platform/text.h"

namespace quillcast::mail_file {
namespace {

constexpr std::string_view kScheme = "data:";
constexpr std::string_view kBase64 = ";base64";

// Long ones are written in lines.
std::string WithoutBlanks(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (const char c : text) {
    if (static_cast<unsigned char>(c) > ' ') out += c;
  }
  return out;
}

// A name that is decoded may hold no NUL; a picture does.
std::optional<std::string> UnescapedBytes(std::string_view text) {
  constexpr std::string_view kNul = "%00";
  std::string bytes;
  for (;;) {
    const std::size_t end = text.find(kNul);
    const auto piece = platform::PercentDecoded(text.substr(0, end));
    if (!piece) return {};
    bytes += *piece;
    if (end == std::string_view::npos) return bytes;
    bytes += '\0';
    text.remove_prefix(end + kNul.size());
  }
}

}  // namespace

std::optional<DataPicture> PictureInAddress(std::string_view address) {
  address = platform::Trim(address);
  if (!platform::StartsWithIgnoringAsciiCase(address, kScheme)) return {};
  const std::size_t comma = address.find(',');
  if (comma == std::string_view::npos) return {};
  const std::string head = platform::AsciiLower(WithoutBlanks(address.substr(0, comma)));
  auto bytes = UnescapedBytes(address.substr(comma + 1));
  if (bytes && head.ends_with(kBase64)) bytes = platform::DecodeBase64(WithoutBlanks(*bytes));
  if (!bytes) return {};
  std::string type(document::PictureType(*bytes));
  if (type.empty() || type == "image/svg+xml") return {};
  return DataPicture{std::move(type), *std::move(bytes)};
}

}  // namespace quillcast::mail_file
