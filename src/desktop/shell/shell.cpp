#include "desktop/shell/shell.h"

#include "desktop/document/body_view.h"
#include "desktop/document/editor_document.h"
#include "desktop/document/html_editor.h"
#include "desktop/run/pictures_panel.h"
#include "desktop/shell/message_header.h"
#include "desktop/shell/notices.h"
#include "desktop/shell/status_panel.h"
#include "desktop/widgets/qt_text.h"
#include "document/edited_document.h"
#include "profile/main_window_contents.h"

namespace quillcast::desktop {

void Shell::Say(const QString& sentence) { status.Say(sentence); }

// What stands in the status bar is soon gone; the log keeps it.
void Shell::Tell(const Result<void>& result) {
  if (result) return;
  NotePassedOver(result.error());
  Say(InWords(result.error()));
}

document::MessageDocument Shell::Message() {
  body.LeaveSource();
  document::MessageDocument message;
  header.Collect(message);
  message.html = FromQt(editor.Html());
  message.base_folder = document.BaseFolder();
  message.picture_places = document.picture_places();
  return message;
}

document::Draft Shell::AsDraft() {
  document::Draft draft{.document = Message()};
  header.Collect(draft);
  return draft;
}

bool Shell::MayLeaveDocument() {
  body.LeaveSource();
  const auto decision = document::AskBeforeClosing(document, skip_save_prompt, program.prompts);
  if (!decision) Tell(decision.error());
  return decision && *decision == document::SaveDecision::kGoOn;
}

void Shell::AskAboutPictures() {
  document::MessageDocument message;
  message.html = FromQt(editor.Html());
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
    body.LeaveSource();
    editor.setFocus();
  } else if (auto* widget = window.findChild<QWidget*>(control)) {
    widget->setFocus();
  }
}

void Shell::ShowSender() {
  const auto contents = profile::LoadMainWindow(program.settings, {});
  if (contents) header.ShowSender(ToQt(contents->from), ToQt(contents->method));
}

}  // namespace quillcast::desktop
