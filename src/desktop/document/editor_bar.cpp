#include "desktop/document/editor_bar.h"

#include <QAction>
#include <array>

#include "desktop/document/editor_command.h"
#include "desktop/document/html_editor.h"
#include "desktop/widgets/icons.h"

namespace quillcast::desktop {
namespace {

struct BarRow {
  EditorCommand command;
  const char* icon;
  const char* name;
  bool EditorState::*checked = nullptr;
  bool EditorState::*enabled = nullptr;
  bool behind_line = false;
};

constexpr auto kBarRows = std::to_array<BarRow>({
    {EditorCommand::kUndo, "undo", QT_TRANSLATE_NOOP("EditorBar", "Undo"), nullptr, &EditorState::can_undo},
    {EditorCommand::kRedo, "redo", QT_TRANSLATE_NOOP("EditorBar", "Redo"), nullptr, &EditorState::can_redo},
    {EditorCommand::kBold, "bold", QT_TRANSLATE_NOOP("EditorBar", "Bold"), &EditorState::bold, nullptr, true},
    {EditorCommand::kItalic, "italic", QT_TRANSLATE_NOOP("EditorBar", "Italic"), &EditorState::italic},
    {EditorCommand::kUnderline, "underline", QT_TRANSLATE_NOOP("EditorBar", "Underline"), &EditorState::underline},
    {EditorCommand::kAlignLeft, "left", QT_TRANSLATE_NOOP("EditorBar", "Align left"), &EditorState::left, nullptr,
     true},
    {EditorCommand::kAlignCentre, "center", QT_TRANSLATE_NOOP("EditorBar", "Centre"), &EditorState::center},
    {EditorCommand::kAlignRight, "right", QT_TRANSLATE_NOOP("EditorBar", "Align right"), &EditorState::right},
    {EditorCommand::kBulletedList, "bullets", QT_TRANSLATE_NOOP("EditorBar", "Bulleted list"), &EditorState::bullets,
     nullptr, true},
    {EditorCommand::kNumberedList, "numbers", QT_TRANSLATE_NOOP("EditorBar", "Numbered list"), &EditorState::numbers},
});

constexpr int kIconSize = 18;  // pixels

}  // namespace

EditorBar::EditorBar(HtmlEditor* editor, QWidget* parent) : QToolBar(parent), editor_(editor) {
  setObjectName("EditorBar");
  setIconSize(QSize(kIconSize, kIconSize));
  for (const BarRow& row : kBarRows) {
    if (row.behind_line) addSeparator();
    QAction* action = addAction(Icon(row.icon), tr(row.name));
    action->setCheckable(row.checked != nullptr);
    connect(action, &QAction::triggered, this, [this, command = row.command] {
      editor_->Run(command);
      editor_->setFocus();
    });
    connect(editor, &HtmlEditor::StateChanged, action, [action, &row](const EditorState& state) {
      if (row.checked != nullptr) action->setChecked(state.*row.checked);
      if (row.enabled != nullptr) action->setEnabled(state.*row.enabled);
    });
  }
  addSeparator();
}

QAction* EditorBar::AddAsking(const char* icon, const QString& name, std::function<void()> ask) {
  QAction* action = addAction(Icon(icon), name);
  connect(action, &QAction::triggered, this, [this, ask = std::move(ask)] {
    ask();
    editor_->setFocus();
  });
  return action;
}

}  // namespace quillcast::desktop
