// The menus and the toolbar of the main window, made from the table of commands: one action for each command that is
// built, wherever it shows.
#pragma once

#include <QHash>
#include <QObject>

#include "desktop/document/editor_state.h"
#include "desktop/shell/command_table.h"

class QAction;
class QFontComboBox;
class QComboBox;
class QMainWindow;
class QMenu;
class QToolBar;

namespace quillcast::desktop {

class CommandBar final : public QObject {
  Q_OBJECT
 public:
  explicit CommandBar(QMainWindow* window);

  // The state of the place where the caret is.
  void Show(const EditorState& state);
  void ShowSource(bool shown);
  void ShowSplash(bool wanted);
  // A menu that is not made from the table, behind the command that is.
  void AddMenuBehind(CommandId id, QMenu* menu);
  // Null for a command that is not built.
  QAction* ActionOf(CommandId id) const { return actions_.value(id); }

 signals:
  void Triggered(quillcast::desktop::CommandId id);
  void FontChosen(const QString& family);
  void SizeChosen(int size);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QAction* Make(const Command& command);
  QMenu* MenuOf(Menu menu);
  void MakeMenus();
  void MakeToolbar();
  void AddStyleBox();
  void AddFontBoxes();
  void AddMergeButton();

  QMainWindow* window_;
  QToolBar* toolbar_;
  QHash<CommandId, QAction*> actions_;
  QHash<Menu, QMenu*> menus_;
  QComboBox* styles_ = nullptr;
  QFontComboBox* fonts_ = nullptr;
  QComboBox* sizes_ = nullptr;
};

}  // namespace quillcast::desktop
