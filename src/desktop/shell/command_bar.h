// The menus and the toolbar of the main window. Everything in them that has an identifier of the command table comes
// out as that number.
#pragma once

#include <QHash>
#include <QObject>
#include <string_view>

#include "desktop/document/editor_command.h"
#include "desktop/document/editor_state.h"
#include "desktop/shell/command_table.h"

class QAction;
class QFontComboBox;
class QComboBox;
class QMainWindow;
class QMenu;
class QToolBar;

namespace quillcast::desktop {

// Commands of our own, beside those of the table.
enum class OwnCommand { kNew, kSaveAs, kSource, kColour, kPastePlain, kPreview, kSplash };

class CommandBar final : public QObject {
  Q_OBJECT
 public:
  explicit CommandBar(QMainWindow* window);

  // Commands whose windows are not there yet are left out.
  static bool IsOffered(Action action);
  // What the menus call a command, with its letter; empty for one that they do not name.
  static std::string_view LabelOf(int identifier);

  // The state of the place where the caret is.
  void Show(const EditorState& state);
  void ShowSource(bool shown);
  void ShowSplash(bool wanted);
  // Null for an identifier that the bar does not offer.
  QAction* ActionOf(int identifier) const { return actions_.value(identifier); }

 signals:
  void Triggered(int identifier);
  void OwnTriggered(quillcast::desktop::OwnCommand command);
  void TableChanged(quillcast::desktop::TableEdit edit);
  void FontChosen(const QString& family);
  void SizeChosen(int size);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QAction* Make(int identifier, const QString& text, const char* icon);
  QAction* AddOwn(QMenu* menu, OwnCommand command, const QString& text, const char* icon, const QKeySequence& keys);
  void MakeMenus();
  void MakeMergeMenu();
  void MakeTableMenu(QMenu* format);
  void MakeToolbar();
  void AddButton(int identifier);

  QMainWindow* window_;
  QToolBar* toolbar_;
  QHash<int, QAction*> actions_;
  QMenu* merge_menu_ = nullptr;
  QMenu* table_menu_ = nullptr;
  QAction* source_ = nullptr;
  QAction* splash_ = nullptr;
  QAction* colour_ = nullptr;
  QFontComboBox* fonts_ = nullptr;
  QComboBox* sizes_ = nullptr;
};

}  // namespace quillcast::desktop
