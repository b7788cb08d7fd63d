// The commands of the Format menu.
#include <QColorDialog>

#include "desktop/document/ask_for.h"
#include "desktop/document/body_form.h"
#include "desktop/document/body_view.h"
#include "desktop/document/html_editor.h"
#include "desktop/shell/commands.h"
#include "desktop/shell/shell.h"
#include "desktop/widgets/qt_text.h"

namespace quillcast::desktop {

void ChooseFont(Shell& shell) {
  if (!shell.body.LeaveSource()) return;
  AskForFont(shell.editor, &shell.window);
}

void ChooseColour(Shell& shell) {
  if (!shell.body.LeaveSource()) return;
  const QColor colour = QColorDialog::getColor(shell.editor.State().colour, &shell.window, Shell::tr("Text Colour"));
  if (colour.isValid()) shell.editor.Execute("foreColor", colour.name());
  shell.body.setFocus();
}

// The rest of the page, and what can be undone of it, stays.
void ChooseBodyColours(Shell& shell) {
  if (!shell.body.LeaveSource()) return;
  const auto text = shell.editor.Text();
  if (!text) return shell.Tell(text.error());
  const std::string html = FromQt(*text);
  BodyForm form(shell.program.prompts, shell.program.folders.Pictures(), document::ReadBodyColours(html),
                &shell.window);
  if (form.exec() == QDialog::Accepted)
    shell.editor.TakeBodyAttributes(ToQt(document::WithBodyColours(html, form.Choice())));
  shell.body.setFocus();
}

void ChangeTable(Shell& shell, TableEdit edit) {
  if (!shell.body.LeaveSource()) return;
  shell.editor.EditTable(edit);
  shell.body.setFocus();
}

}  // namespace quillcast::desktop
