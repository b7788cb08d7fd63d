#include "document/message_document.h"

#include <algorithm>

#include "document/body_file.h"
#include "html/local_pictures.h"
#include "html/safe_page.h"
#include "platform/text.h"

namespace quillcast::document {

Format FormatFrom(std::string_view text) { return text == "Text" ? Format::kText : Format::kHtml; }

Priority PriorityFrom(std::string_view text) {
  if (text == "High") return Priority::kHigh;
  return text == "Low" ? Priority::kLow : Priority::kNormal;
}

std::string MessageDocument::PlainText(std::size_t columns) const {
  return text ? *text : html::HtmlToText(html, columns);
}

Result<void> LoadBody(MessageDocument& document, const std::filesystem::path& file) {
  auto read = ReadLetterFile(file);
  if (!read) return read.error();
  document.sources.push_back(file);
  std::string& body = read->text;
  // Where the current folder is gone, the document lies nowhere.
  document.base_folder = std::filesystem::absolute(file, IgnoreErrors()).parent_path();
  if (IsPlainTextName(file)) {
    document.format = Format::kText;
    document.html = HtmlFromText(body);
    document.text = std::move(body);
  } else {
    document.html = std::move(body);
  }
  return {};
}

Result<void> CheckIsNoSource(const std::filesystem::path& target, const MessageDocument& document) {
  if (!std::filesystem::exists(target, IgnoreErrors())) return {};
  const auto is_target = [&target](const std::filesystem::path& file) {
    return std::filesystem::equivalent(target, file, IgnoreErrors());
  };
  bool is_source =
      std::ranges::any_of(document.sources, is_target) || std::ranges::any_of(document.attachments.paths(), is_target);
  html::VisitLocalPictures(document.html, [&](const html::PictureReference& picture) {
    is_source = is_source || is_target("/" / document.base_folder / picture.path);
  });
  if (!is_source) return {};
  return Error{Failure::kNotPermitted,
               Say("{} is a file that the message is made of, and was left as it is.", target.string()),
               "Name another file."};
}

std::string HtmlFromText(std::string_view text) {
  std::string page;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
    page += html::EscapedForHtml(text.substr(0, end), "&<");
    text.remove_prefix(end);
    if (text.empty()) break;
    page += "<br>\n";
    text.remove_prefix(text.starts_with("\r\n") ? 2 : 1);
  }
  return page;
}

Result<std::string> PickFormat(std::string_view chosen, const profile::SettingsStore& settings,
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

Result<std::filesystem::path> PickDocumentToOpen(EditedDocument& document, platform::Prompts& prompts) {
  const auto files = prompts.PickOpenFile({.title = "Open", .filter = kDocumentFilter});
  if (files.empty()) return std::filesystem::path();
  const auto decision = OfferToSave(document, prompts);
  if (!decision) return decision.error();
  return *decision == SaveDecision::kStay ? std::filesystem::path() : files.front();
}

Result<void> SaveDocument(EditedDocument& document, const std::filesystem::path& preview_body,
                          platform::Prompts& prompts) {
  if (document.FileName() == preview_body) return {};
  const auto saved = Save(document, prompts);
  return saved ? Result<void>() : saved.error();
}

}  // namespace quillcast::document
