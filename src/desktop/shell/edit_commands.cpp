// The commands of the Edit menu.
#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <algorithm>
#include <array>
#include <utility>

#include "desktop/document/body_view.h"
#include "desktop/document/html_editor.h"
#include "desktop/shell/command_bar.h"
#include "desktop/shell/commands.h"
#include "desktop/shell/shell.h"

namespace quillcast::desktop {
namespace {

// What a text box that has the focus does itself at a command, by the names of its slots.
constexpr auto kTextBoxSlots = std::to_array<std::pair<EditorCommand, const char*>>({
    {EditorCommand::kUndo, "undo"},
    {EditorCommand::kRedo, "redo"},
    {EditorCommand::kCut, "cut"},
    {EditorCommand::kCopy, "copy"},
    {EditorCommand::kPaste, "paste"},
    {EditorCommand::kSelectAll, "selectAll"},
});

bool EditsText(QWidget* focused, EditorCommand command) {
  const auto* const box = qobject_cast<QComboBox*>(focused);
  if (box != nullptr && box->lineEdit() != nullptr) focused = box->lineEdit();
  if (qobject_cast<QLineEdit*>(focused) == nullptr && qobject_cast<QPlainTextEdit*>(focused) == nullptr) return false;
  if (command == EditorCommand::kDelete) {
    QKeyEvent key(QEvent::KeyPress, Qt::Key_Delete, Qt::NoModifier);
    return QCoreApplication::sendEvent(focused, &key);
  }
  const auto* const slot = std::find_if(kTextBoxSlots.begin(), kTextBoxSlots.end(),
                                        [command](const auto& row) { return row.first == command; });
  return slot != kTextBoxSlots.end() && QMetaObject::invokeMethod(focused, slot->second);
}

}  // namespace

void RunEditing(Shell& shell, EditorCommand command) {
  if (EditsText(QApplication::focusWidget(), command)) return;
  if (!shell.body.LeaveSource()) return;
  shell.editor.Run(command);
  if (command != EditorCommand::kFindText) shell.body.setFocus();
}

void PastePlain(Shell& shell) {
  if (EditsText(QApplication::focusWidget(), EditorCommand::kPaste)) return;
  if (!shell.body.LeaveSource()) return;
  shell.editor.PastePlain();
  shell.body.setFocus();
}

void SwitchSource(Shell& shell) {
  if (shell.body.shows_source()) {
    shell.body.LeaveSource();
  } else {
    shell.body.ShowSource();
  }
  shell.bar.ShowSource(shell.body.shows_source());  // the entry changed its mark by itself
}

}  // namespace quillcast::desktop
