// The commands of the Format menu.
#include <QColorDialog>
#include <QFontDialog>
#include <algorithm>
#include <array>
#include <cstdlib>

#include "desktop/document/body_view.h"
#include "desktop/document/html_editor.h"
#include "desktop/shell/commands.h"
#include "desktop/shell/shell.h"

namespace quillcast::desktop {
namespace {

// The engine's font sizes, 1 to 7, in points.
constexpr std::array<int, 7> kPoints = {8, 10, 12, 14, 18, 24, 36};

// The one that is next to it.
int EngineSize(int points) {
  const auto* const nearest = std::min_element(
      kPoints.begin(), kPoints.end(), [points](int a, int b) { return std::abs(a - points) < std::abs(b - points); });
  return static_cast<int>(nearest - kPoints.begin()) + 1;
}

QFont FontOf(const EditorState& state) {
  QFont font(state.font, kPoints.at(static_cast<std::size_t>(std::clamp(state.size, 1, 7)) - 1));
  font.setBold(state.bold);
  font.setItalic(state.italic);
  return font;
}

}  // namespace

void ChooseFont(Shell& shell) {
  shell.body.LeaveSource();
  bool chosen = false;
  const QFont before = FontOf(shell.editor.State());
  const QFont font = QFontDialog::getFont(&chosen, before, &shell.window, Shell::tr("Font"));
  if (!chosen) return;
  if (font.family() != before.family()) shell.editor.Execute("fontName", font.family());
  if (font.pointSize() != before.pointSize())
    shell.editor.Execute("fontSize", QString::number(EngineSize(font.pointSize())));
  if (font.bold() != before.bold()) shell.editor.Run(EditorCommand::kBold);
  if (font.italic() != before.italic()) shell.editor.Run(EditorCommand::kItalic);
  shell.editor.setFocus();
}

void ChooseColour(Shell& shell) {
  shell.body.LeaveSource();
  const QColor colour = QColorDialog::getColor(Qt::black, &shell.window, Shell::tr("Text Colour"));
  if (colour.isValid()) shell.editor.Execute("foreColor", colour.name());
  shell.editor.setFocus();
}

void ChangeTable(Shell& shell, TableEdit edit) {
  shell.body.LeaveSource();
  shell.editor.EditTable(edit);
  shell.editor.setFocus();
}

}  // namespace quillcast::desktop
