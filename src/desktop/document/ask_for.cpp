#include "desktop/document/ask_for.h"

#include "desktop/document/font_form.h"
#include "desktop/document/html_editor.h"
#include "desktop/document/link_form.h"
#include "desktop/document/picture_form.h"

namespace quillcast::desktop {

void AskForPicture(HtmlEditor& editor, platform::Prompts& prompts, const std::filesystem::path& folder,
                   const std::filesystem::path& file, QWidget* window) {
  const EditorState state = editor.State();
  const bool is_placed = file.empty() && !state.picture.address.isEmpty();
  PictureForm form(prompts, folder, state.room, window);
  if (is_placed) form.Show(state.picture);
  if (!file.empty()) form.Take(file);
  if (form.exec() == QDialog::Accepted) is_placed ? editor.ChangePicture(form.Html()) : editor.InsertHtml(form.Html());
  editor.setFocus();
}

void AskForLink(HtmlEditor& editor, QWidget* window) {
  const EditorState state = editor.State();
  const QString before = state.selected.isEmpty() ? state.link_text : state.selected;
  LinkForm form(state.link, before, editor.LinkPlaces(), window);
  if (form.exec() == QDialog::Accepted) {
    const bool stands_on_something = !before.isEmpty() || !state.picture.address.isEmpty();
    const QString text = form.Text().isEmpty() && !stands_on_something ? form.OwnText() : form.Text();
    if (form.removes()) editor.Run(EditorCommand::kRemoveHyperlink);
    if (!form.removes()) editor.InsertLink(form.Address(), text);
  }
  editor.setFocus();
}

// What stays as it was is not written: the document would say it twice.
void AskForFont(HtmlEditor& editor, QWidget* window) {
  const FontChoice before = FontOf(editor.State());
  FontForm form(before, window);
  const bool is_chosen = form.exec() == QDialog::Accepted;
  editor.setFocus();
  if (!is_chosen) return;
  const FontChoice font = form.Choice();
  if (font.family != before.family) editor.Execute("fontName", font.family);
  if (font.size != before.size) editor.Execute("fontSize", QString::number(font.size));
  if (font.colour != before.colour) editor.Execute("foreColor", font.colour.name());
  if (font.bold != before.bold) editor.Execute("bold");
  if (font.italic != before.italic) editor.Execute("italic");
  if (font.underline != before.underline) editor.Execute("underline");
  if (font.strike != before.strike) editor.Execute("strikeThrough");
}

}  // namespace quillcast::desktop
