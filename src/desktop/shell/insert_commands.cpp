// The commands of the Insert menu.
#include "desktop/document/body_view.h"
#include "desktop/document/html_editor.h"
#include "desktop/document/link_form.h"
#include "desktop/document/table_form.h"
#include "desktop/shell/commands.h"
#include "desktop/shell/message_header.h"
#include "desktop/shell/shell.h"
#include "desktop/widgets/qt_text.h"

namespace quillcast::desktop {
namespace {

constexpr const char* kPictures =
    "Pictures (*.png;*.jpg;*.jpeg;*.gif;*.webp;*.bmp)|*.png;*.jpg;*.jpeg;*.gif;*.webp;*.bmp|All Files (*.*)|*.*";

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
  const auto files = shell.program.prompts.PickOpenFile({.title = "Picture", .filter = kPictures, .several = true});
  QStringList names;
  for (const auto& file : files) names << PathToQt(file);
  if (!names.isEmpty()) shell.editor.InsertPictures(names);
  shell.editor.setFocus();
}

void InsertHyperlink(Shell& shell) {
  shell.body.LeaveSource();
  const auto state = shell.editor.State();
  LinkForm form(state.link, state.selected.isEmpty() ? state.link_text : state.selected, &shell.window);
  if (form.exec() == QDialog::Accepted) shell.editor.InsertLink(form.Address(), form.Text());
  shell.editor.setFocus();
}

void InsertTable(Shell& shell) {
  shell.body.LeaveSource();
  TableForm form(shell.program.prompts, &shell.window);
  if (form.exec() == QDialog::Accepted) shell.editor.InsertTable(ToQt(document::TableHtml(form.Choice())));
  shell.editor.setFocus();
}

}  // namespace quillcast::desktop
