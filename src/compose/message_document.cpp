#include "compose/message_document.h"

#include "mime/charset.h"
#include "mime/html_to_text.h"
#include "platform/file.h"
#include "platform/text.h"
#include "platform/utf8.h"

namespace quillcast::compose {
namespace {

constexpr const char* kHtmlFilter = "HTML Files (*.html;*.htm)|*.html;*.htm|All Files (*.*)|*.*";

std::string DecodeUtf16(std::string_view bytes, bool big_endian) {
  std::string out;
  const auto unit = [&](std::size_t at) {
    const auto first = static_cast<unsigned char>(bytes[at]);
    const auto second = static_cast<unsigned char>(bytes[at + 1]);
    return static_cast<char32_t>(big_endian ? (first << 8) | second : (second << 8) | first);
  };
  for (std::size_t at = 0; at + 1 < bytes.size(); at += 2) {
    char32_t code = unit(at);
    const bool pair = code >= 0xD800 && code < 0xDC00 && at + 3 < bytes.size() && (unit(at + 2) & 0xFC00) == 0xDC00;
    if (pair) {
      code = 0x10000 + ((code - 0xD800) << 10) + (unit(at + 2) - 0xDC00);
      at += 2;
    }
    platform::AppendUtf8(out, code >= 0xD800 && code < 0xE000 ? 0xFFFD : code);
  }
  return out;
}

std::string DecodeBody(std::string bytes) {
  if (bytes.starts_with("\xEF\xBB\xBF")) bytes.erase(0, 3);
  if (bytes.starts_with("\xFF\xFE")) return DecodeUtf16(std::string_view(bytes).substr(2), false);
  if (bytes.starts_with("\xFE\xFF")) return DecodeUtf16(std::string_view(bytes).substr(2), true);
  if (platform::IsUtf8(bytes)) return bytes;
  return mime::FindCharset("windows-1252")->Decode(bytes);
}

}  // namespace

std::string MessageDocument::PlainText() const { return text ? *text : mime::HtmlToText(html); }

Result<void> LoadBody(MessageDocument& document, const std::filesystem::path& file) {
  auto bytes = platform::ReadFile(file, kLongestBody);
  if (!bytes) return bytes.error();
  std::string body = DecodeBody(std::move(*bytes));
  std::error_code failed;
  document.base_folder = std::filesystem::absolute(file, failed).parent_path();
  if (platform::EqualsIgnoringAsciiCase(file.extension().string(), ".txt")) {
    document.format = Format::kText;
    document.html = HtmlFromText(body);
    document.text = std::move(body);
  } else {
    document.html = std::move(body);
  }
  return {};
}

std::string HtmlFromText(std::string_view text) {
  std::string html;
  for (std::size_t at = 0; at < text.size(); ++at) {
    switch (text[at]) {
      case '<':
        html += "&lt;";
        break;
      case '&':
        html += "&amp;";
        break;
      case '\r':
        if (at + 1 < text.size() && text[at + 1] == '\n') break;  // the line feed writes it
        [[fallthrough]];
      case '\n':
        html += "<br>\n";
        break;
      default:
        html += text[at];
    }
  }
  return html;
}

Result<std::string> PickFormat(std::string_view chosen, const app::SettingsStore& settings,
                               platform::Prompts& prompts) {
  if (chosen != "HTML") return std::string(chosen);
  auto encoding = settings.Read("Advanced", "Encoding", "MIME");
  if (!encoding) return encoding;
  if (*encoding != "Plain") return std::string(chosen);
  prompts.Warn(
      "You cannot send an HTML message using UUencoding.\r\n"
      "First change the encoding format in the advanced window.");
  return std::string("Text");
}

std::optional<std::filesystem::path> PickDocumentToOpen(app::EditedDocument& document, platform::Prompts& prompts) {
  const auto files = prompts.PickOpenFile({.title = "Open", .filter = kHtmlFilter});
  if (files.empty() || app::OfferToSave(document, prompts) == app::SaveDecision::kStay) return {};
  return files.front();
}

Result<void> SaveDocument(app::EditedDocument& document, const std::filesystem::path& preview_body) {
  if (document.FileName() == preview_body) return {};
  return document.SaveTo(document.FileName());
}

}  // namespace quillcast::compose
