// The commands of the Insert menu.
#include "desktop/document/body_view.h"
#include "desktop/document/html_editor.h"
#include "desktop/document/link_form.h"
#include "desktop/document/picture_form.h"
#include "desktop/document/table_form.h"
#include "desktop/shell/commands.h"
#include "desktop/shell/message_header.h"
#include "desktop/shell/shell.h"
#include "desktop/widgets/qt_text.h"

namespace quillcast::desktop {
namespace {

// What is selected is changed by what the form gives.
void AskForPicture(Shell& shell, const std::filesystem::path& file) {
  const EditorState state = shell.editor.State();
  const bool is_placed = file.empty() && !state.picture.address.isEmpty();
  PictureForm form(shell.program.prompts, shell.program.folders.Pictures(), state.room, &shell.window);
  if (is_placed) form.Show(state.picture);
  if (!file.empty()) form.Take(file);
  if (form.exec() == QDialog::Accepted)
    is_placed ? shell.editor.ChangePicture(form.Html()) : shell.editor.InsertHtml(form.Html());
  shell.editor.setFocus();
}

}  // namespace

void AddAttachments(Shell& shell) { shell.header.AddAttachments(); }

void DeleteAttachment(Shell& shell) { shell.header.DeleteAttachment(); }

void InsertTag(Shell& shell, const document::MergeField& field) {
  shell.body.LeaveSource();
  shell.editor.InsertHtml(ToQt(field.tag));
  shell.editor.setFocus();
}

void InsertPicture(Shell& shell) {
  shell.body.LeaveSource();
  AskForPicture(shell, {});
}

void OfferPictures(Shell& shell, const QStringList& files) {
  for (const QString& file : files) AskForPicture(shell, PathFromQt(file));
}

void InsertHyperlink(Shell& shell) {
  shell.body.LeaveSource();
  const auto state = shell.editor.State();
  const QString before = state.selected.isEmpty() ? state.link_text : state.selected;
  LinkForm form(state.link, before, shell.editor.LinkPlaces(), &shell.window);
  if (form.exec() == QDialog::Accepted) {
    const bool stands_on_something = !before.isEmpty() || !state.picture.address.isEmpty();
    const QString text = form.Text().isEmpty() && !stands_on_something ? form.OwnText() : form.Text();
    if (form.removes()) shell.editor.Run(EditorCommand::kRemoveHyperlink);
    if (!form.removes()) shell.editor.InsertLink(form.Address(), text);
  }
  shell.editor.setFocus();
}

void InsertTable(Shell& shell) {
  shell.body.LeaveSource();
  TableForm form(shell.program.prompts, &shell.window);
  if (form.exec() == QDialog::Accepted) shell.editor.InsertTable(ToQt(document::TableHtml(form.Choice())));
  shell.editor.setFocus();
}

}  // namespace quillcast::desktop
