#include "mail_file/body_formats.h"

#include <algorithm>
#include <array>
#include <vector>

#include "charset/code_page.h"
#include "html/safe_page.h"
#include "mail_file/body_page.h"
#include "mail_file/body_texts.h"
#include "mail_file/data_picture.h"
#include "mail_file/message_rtf.h"
#include "mail_file/message_xml.h"
#include "mail_file/within_memory.h"
#include "platform/text.h"

namespace quillcast::mail_file {
namespace {

constexpr std::array<std::string_view, 4> kFilters = {
    "Text Files (*.txt)|*.txt|All Files (*.*)|*.*", "HTML Files (*.html;*.htm)|*.html;*.htm|All Files (*.*)|*.*",
    "RTF Files (*.rtf)|*.rtf|All Files (*.*)|*.*", "XML Files (*.xml)|*.xml|All Files (*.*)|*.*"};  // by BodyFormat

struct FormRow {
  const char* name;
  std::vector<std::string_view> endings;
};
const std::array<FormRow, 4> kForms = {FormRow{"text", {".txt"}}, FormRow{"HTML", {".html", ".htm"}},
                                       FormRow{"RTF", {".rtf"}}, FormRow{"XML", {".xml"}}};  // by BodyFormat

Result<std::size_t> WriteAsText(const MailMessage& message, std::string_view code_page, const WriteText& write) {
  const auto text = BodyAsText(message);
  if (!text) return text.error();
  std::string encoded;
  const std::size_t lost = charset::AppendInCodePage(encoded, *text, code_page);
  const auto written = write(encoded);
  return written ? Result<std::size_t>(lost) : written.error();
}

Result<void> WriteAsHtml(const MailMessage& message, const WriteText& write) {
  const auto page = BodyAsHtml(message);
  if (!page) return page.error();
  html::SafePageOptions options;
  // Nothing shows those of parts, but whoever looks can tell which part belongs where.
  options.picture = [](std::string_view address) {
    const bool stays = platform::StartsWithIgnoringAsciiCase(address, "cid:") || PictureInAddress(address);
    return stays ? std::optional(std::string(address)) : std::nullopt;
  };
  return write(html::SafePage(*page, options));
}

Result<std::size_t> Nothing(const Result<void>& written) {
  return written ? Result<std::size_t>(std::size_t{0}) : written.error();
}

Result<std::size_t> WriteAs(const MailMessage& message, BodyFormat format, std::string_view code_page,
                            const WriteText& write) {
  switch (format) {
    case BodyFormat::kText:
      return WriteAsText(message, code_page, write);
    case BodyFormat::kHtml:
      return Nothing(WriteAsHtml(message, write));
    case BodyFormat::kRtf:
      return Nothing(WriteAsRtf(message, write));
    case BodyFormat::kXml:
      return Nothing(WriteAsXml(message, write));
  }
  return std::size_t{0};
}

}  // namespace

std::string_view FilterOf(BodyFormat format) { return kFilters.at(static_cast<std::size_t>(format)); }

std::optional<Sentence> FormNote(const std::filesystem::path& file, BodyFormat format) {
  const std::string ending = platform::AsciiLower(file.extension().string());
  const auto names = [&](const FormRow& form) { return std::ranges::find(form.endings, ending) != form.endings.end(); };
  const FormRow& chosen = kForms.at(static_cast<std::size_t>(format));
  if (names(chosen) || std::ranges::none_of(kForms, names)) return {};
  return Say("{} will be written as {}, whatever its name says.", platform::Printable(file.filename().string(), 100),
             Sentence(chosen.name));
}

std::optional<Error> WhyNothing(const MailMessage& message, BodyFormat format) {
  if (format == BodyFormat::kXml) return {};
  return format == BodyFormat::kText ? WhyNoText(message) : WhyNoBody(message);
}

Result<std::size_t> WriteBody(const MailMessage& message, BodyFormat format, std::string_view code_page,
                              const WriteText& write) {
  return WithinMemory([&] { return WriteAs(message, format, code_page, write); });
}

}  // namespace quillcast::mail_file
