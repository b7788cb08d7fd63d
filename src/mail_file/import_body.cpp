#include "mail_file/import_body.h"

#include <utility>

#include "document/body_file.h"
#include "document/body_source.h"
#include "document/message_document.h"
#include "mail_file/body_folder.h"
#include "mail_file/chosen_folder.h"
#include "mail_file/working_folder.h"
#include "platform/file.h"

namespace quillcast::mail_file {
namespace {

namespace fs = std::filesystem;

constexpr const char* kPageName = "index.htm";

Result<fs::path> CopyFolder(const fs::path& from, const BodyFolder& body, const fs::path& target) {
  fs::path to = target / from.filename();
  if (auto made = platform::EnsureFolder(to); !made) return made.error();
  for (const std::string& picture : body.pictures) {
    if (auto copied = platform::CopyFile(from / picture, to / picture); !copied) return copied.error();
  }
  if (auto copied = platform::CopyFile(from / body.page, to / body.page); !copied) return copied.error();
  return to;
}

Result<ImportedBody> ImportPage(const MailMessage& message, const WorkingFolder& working, const fs::path& target,
                                const platform::CancelToken* cancel) {
  auto folder = ChosenFolder::Open(working.path(), {});
  if (!folder) return folder.error();
  auto body = WriteBodyFolder(
      message, *folder,
      {.page_name = kPageName, .forbids_loading = false, .text_as_html = document::HtmlFromText, .cancel = cancel});
  if (!body) return body.error();
  auto page = document::ReadBodyFile(working.path() / body->page);
  if (!page) return page.error();
  if (const auto editable = document::CheckEditable(page->text); !editable) return editable.error();
  auto copy = CopyFolder(working.path(), *body, target);
  if (!copy) return copy.error();
  return ImportedBody{message.facts().subject, std::move(page->text), *std::move(copy), std::move(body->failures)};
}

}  // namespace

Result<ImportedBody> ImportBody(const MailMessage& message, const fs::path& target, const fs::path& temporary,
                                const platform::Clock& clock, const platform::CancelToken* cancel) {
  if (auto none = WhyNoBody(message)) return *std::move(none);
  if (!HasPage(message) && !HasPicturesBeside(message)) {
    auto html = BodyAsHtml(message, document::HtmlFromText);
    if (!html) return html.error();
    if (const auto editable = document::CheckEditable(*html); !editable) return editable.error();
    return ImportedBody{message.facts().subject, *std::move(html), {}, {}};
  }
  const auto working = WorkingFolder::Make(temporary, clock);
  if (!working) return working.error();
  return ImportPage(message, *working, target, cancel);
}

}  // namespace quillcast::mail_file
