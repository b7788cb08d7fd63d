// The commands of the Format menu.
#include <QColorDialog>

#include "desktop/document/body_view.h"
#include "desktop/document/font_form.h"
#include "desktop/document/html_editor.h"
#include "desktop/shell/commands.h"
#include "desktop/shell/shell.h"

namespace quillcast::desktop {

// What stays as it was is not written: the document would say it twice.
void ChooseFont(Shell& shell) {
  shell.body.LeaveSource();
  const FontChoice before = FontOf(shell.editor.State());
  FontForm form(before, &shell.window);
  const bool is_chosen = form.exec() == QDialog::Accepted;
  shell.editor.setFocus();
  if (!is_chosen) return;
  const FontChoice font = form.Choice();
  HtmlEditor& editor = shell.editor;
  if (font.family != before.family) editor.Execute("fontName", font.family);
  if (font.size != before.size) editor.Execute("fontSize", QString::number(font.size));
  if (font.colour != before.colour) editor.Execute("foreColor", font.colour.name());
  if (font.bold != before.bold) editor.Execute("bold");
  if (font.italic != before.italic) editor.Execute("italic");
  if (font.underline != before.underline) editor.Execute("underline");
  if (font.strike != before.strike) editor.Execute("strikeThrough");
}

void ChooseColour(Shell& shell) {
  shell.body.LeaveSource();
  const QColor colour = QColorDialog::getColor(shell.editor.State().colour, &shell.window, Shell::tr("Text Colour"));
  if (colour.isValid()) shell.editor.Execute("foreColor", colour.name());
  shell.editor.setFocus();
}

void ChangeTable(Shell& shell, TableEdit edit) {
  shell.body.LeaveSource();
  shell.editor.EditTable(edit);
  shell.editor.setFocus();
}

}  // namespace quillcast::desktop
