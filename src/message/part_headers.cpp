#include "message/part_headers.h"

#include <fmt/format.h>

#include "mime/header_text.h"

namespace quillcast::message {
namespace {

std::string EncodingLine(WireForm form) { return fmt::format("Content-Transfer-Encoding: {}\r\n", Name(form)); }

}  // namespace

HeadersByForm TextPartHeaders(std::string_view type, charset::Charset charset) {
  HeadersByForm headers;
  for (std::size_t form = 0; form < kWireForms; ++form) {
    headers[form] = fmt::format("Content-Type: text/{}; charset={}\r\n{}\r\n", type, charset.MimeName(),
                                EncodingLine(static_cast<WireForm>(form)));
  }
  return headers;
}

HeadersByForm BareHeaders(charset::Charset charset, bool always_named) {
  HeadersByForm headers = TextPartHeaders("plain", charset);
  for (std::size_t form = 0; form < kWireForms; ++form) {
    const bool named = always_named || !IsAsItStands(static_cast<WireForm>(form));
    headers[form] = named ? "MIME-Version: 1.0\r\n" + headers[form] : "\r\n";
  }
  return headers;
}

// RFC 2046 5.2.1: the body of a message part may not be encoded; one that has to be is a file like any other.
std::string FilePartHeader(std::string_view media_type, std::string_view disposition, const std::filesystem::path& file,
                           std::string_view content_id, WireForm form) {
  const std::string name = file.filename().string();
  if (media_type.starts_with("message/") && !IsAsItStands(form)) media_type = "application/octet-stream";
  std::string header = fmt::format("Content-Type: {}", media_type);
  mime::AppendNameParameter(header, name);
  header += "\r\n" + EncodingLine(form);
  if (!content_id.empty()) header += fmt::format("Content-ID: <{}>\r\n", content_id);
  header += fmt::format("Content-Disposition: {}", disposition);
  mime::AppendParameter(header, "filename", name);
  header += "\r\n\r\n";
  return header;
}

}  // namespace quillcast::message
