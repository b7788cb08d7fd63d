#include "desktop/shell/shell.h"

#include "desktop/document/body_view.h"
#include "desktop/document/editor_document.h"
#include "desktop/document/html_editor.h"
#include "desktop/run/pictures_panel.h"
#include "desktop/shell/message_header.h"
#include "desktop/shell/notices.h"
#include "desktop/shell/status_panel.h"
#include "desktop/widgets/qt_text.h"
#include "document/character_settings.h"
#include "document/declared_charset.h"
#include "document/edited_document.h"
#include "platform/text.h"
#include "profile/main_window_contents.h"

namespace quillcast::desktop {
namespace {

// The set that the account's messages are written in, where a document can name it.
void NameCharset(std::string& html, const profile::SettingsStore& settings) {
  const auto name = document::CharacterSettings(settings);
  if (!name) return;
  if (platform::EqualsIgnoringAsciiCase(*name, "utf-8"))
    html = document::WithCharset(html, document::BodyEncoding::kUtf8);
  if (platform::EqualsIgnoringAsciiCase(*name, "windows-1252"))
    html = document::WithCharset(html, document::BodyEncoding::kWindows1252);
}

}  // namespace

void Shell::Say(const QString& sentence) { status.Say(sentence); }

// What stands in the status bar is soon gone; the log keeps it.
void Shell::Tell(const Result<void>& result) {
  if (result) return;
  NotePassedOver(result.error());
  Say(InWords(result.error()));
}

Result<document::MessageDocument> Shell::MessageAsItStands() {
  const auto text = editor.Text();
  if (!text) return text.error();
  document::MessageDocument message;
  header.Collect(message);
  message.html = FromQt(*text);
  message.base_folder = document.BaseFolder();
  message.picture_places = document.picture_places();
  if (!document.FileName().empty()) message.sources = {document.FileName()};
  return message;
}

Result<document::MessageDocument> Shell::Message() {
  auto message = MessageAsItStands();
  if (message && (document.HasUnsavedChanges() || document.FileName().empty()))
    NameCharset(message->html, program.settings);
  return message;
}

std::optional<document::Draft> Shell::AsDraft() {
  auto message = Message();
  if (!message) return std::nullopt;
  document::Draft draft{.document = *std::move(message)};
  header.Collect(draft);
  return draft;
}

bool Shell::MayLeaveDocument() {
  const auto decision = document::AskBeforeClosing(document, skip_save_prompt, program.prompts);
  if (!decision) Tell(decision.error());
  return decision && *decision == document::SaveDecision::kGoOn;
}

void Shell::AskAboutPictures() {
  document::MessageDocument message;
  message.html = FromQt(editor.seen());
  message.base_folder = document.BaseFolder();
  message.picture_places = document.picture_places();
  notices.pictures().LookAt(std::move(message));
}

void Shell::TakePictureAnswers(const document::PicturePlaces& places) {
  if (places == document.picture_places()) return;
  document.SetPicturePlaces(places);
  AskAboutPictures();
}

void Shell::FocusOn(const QString& control) {
  if (control == "Editor") {
    body.setFocus();
  } else if (auto* widget = window.findChild<QWidget*>(control)) {
    widget->setFocus();
  }
}

void Shell::ShowSender() {
  const auto contents = profile::LoadMainWindow(program.settings, {});
  if (contents) header.ShowSender(ToQt(contents->from), ToQt(contents->method));
}

}  // namespace quillcast::desktop
