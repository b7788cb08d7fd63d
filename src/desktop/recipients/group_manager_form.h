// The dialog in which a person keeps the groups and their recipients.
#pragma once

#include <QDialog>
#include <QPointer>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <vector>

#include "profile/program.h"
#include "recipients/edit/edit.h"
#include "recipients/grid_rows.h"

class QComboBox;
class QLabel;
class QPushButton;

namespace quillcast::desktop {

class FormColumn;
class GridActions;
class RecipientRows;
class RowList;
class StatusLine;
class WorkPanel;

// It holds no group and no recipient of its own but the keys of the rows that it shows: every command looks into the
// store anew, which other programs write to at any time. What takes long runs beside it (WorkPanel), one at a time,
// with every control disabled but the one that cancels.
class GroupManagerForm final : public QDialog {
  Q_OBJECT
 public:
  // With no group chosen. `program` outlives it; its prompts are asked and its folders read at each command.
  GroupManagerForm(const profile::Program& program, QWidget* parent);

 public slots:
  // While something is written, this ends that and leaves the window open.
  void reject() override;

 signals:
  // Whoever shows the groups shows them anew, and `now` where `before` was chosen: a group's old and new name. A new
  // group has no old one, and is chosen nowhere else. After a deletion `now` is empty, and nothing is chosen anywhere.
  void GroupsChanged(const QString& before, const QString& now);

 private:
  // What must hold before a command, in this order: a group is chosen, and it has recipients.
  enum class Needs { kNothing, kGroup, kRecipients };
  struct Command {
    const char* name;  // of its button
    const char* text;
    Needs needs;
    void (GroupManagerForm::*run)();
  };
  static std::span<const Command> Commands();
  struct Reading;

  // Made once. A button's text and what it does are a row of Commands(); the keys press the buttons, so that a disabled
  // one has no key either. Run clears the status line, checks what the row needs, and then runs it.
  void MakeWindow();
  QPushButton* MakeButton(const char* name);
  std::vector<QWidget*> MakeButtons(std::initializer_list<const char*> names);
  void AddKeys();
  void ConnectParts();
  void Run(const Command& command);
  bool PassesChecks(Needs needs);
  bool IsGroupThere();
  void EnableControls(bool enabled);
  QPushButton& UndoButton() const;

  // The group that is chosen, empty where none is; from the list, as another program may have renamed it since. A store
  // for the window's own short reads waits for a lock no longer than a person does (kWindowPatience).
  QString Group() const;
  recipients::RecipientStore Store() const;
  void FillGroups(const QString& chosen);
  void ChooseGroup();
  // The place among the rows stays as it is where the group does. Again: not while work runs, whose end reads it.
  void ReadGroup();
  void ReadAgain();
  void Say(const QString& sentence);
  void Fail(const Error& error);
  // Of work that ended without success.
  void FailWork(const Error& error);
  void ShowRead(const Result<Reading>& reading);
  void ShowGroup(const Reading& reading);
  void ShowNone();
  // Another program deleted or renamed it.
  void ShowGone(const QString& group);
  // Where nobody is listed, why; behind what was just done.
  void SayOrder(const QString& told = {});
  void SortView(int column);
  void ShowTotal();
  void ShowUndo();
  void TellGroups(const QString& before = {}, const QString& now = {});

  // One for each row of Commands(), called when its needs hold. Each tells what it did, or why it did not, in the
  // status line, and reads the group again where rows may stand elsewhere.
  void NewGroup();
  void RenameGroup();
  void DeleteGroup();
  void Add();
  void Modify();
  void Delete();
  void Search();
  void Import();
  void Export();
  void Move();
  void Duplicates();
  void WhereElse();
  void Capitalize();
  void Sort();
  void Merge();
  void Print();
  void Undo();

  const profile::Program& program_;
  QComboBox* groups_;
  QLabel* total_;
  RecipientRows* rows_;
  RowList* grid_;
  GridActions* actions_;
  WorkPanel* work_;
  StatusLine* status_;
  QString shown_;  // the group whose rows stand in the grid
  recipients::ViewOrder view_;
  std::int64_t count_ = 0;  // of the group's recipients; more than the rows where its order is not understood
  bool is_order_understood_ = true;
  bool is_reading_ = false;
  bool can_undo_ = false;
  QPointer<QWidget> focus_;  // what had the keyboard before the work
};

}  // namespace quillcast::desktop
