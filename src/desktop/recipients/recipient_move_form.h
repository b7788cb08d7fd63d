// The dialog that moves recipients of a group into another one, or copies them there.
#pragma once

#include <QDialog>
#include <cstdint>
#include <optional>
#include <vector>

#include "profile/program.h"
#include "recipients/edit/move_recipients.h"

class QComboBox;
class QPushButton;
class QRadioButton;

namespace quillcast::desktop {

class FormColumn;
class RowList;
class StatusLine;
class WorkPanel;

// Moves or copies itself, beside the window; one transaction, so that a cancel leaves everybody where they were.
class RecipientMoveForm final : public QDialog {
  Q_OBJECT
 public:
  // `keys` are those of recipients of the group.
  RecipientMoveForm(const profile::Program& program, QString from, std::vector<std::int64_t> keys, QWidget* parent);

  // What was done, for whoever opened this; empty where nothing was.
  const QString& said() const { return said_; }
  // They are no longer in their group.
  bool has_moved() const { return has_moved_; }
  // There is a group more, to be shown in lists of groups.
  bool has_made_group() const { return has_made_group_; }

 public slots:
  // Asks first where they are to be moved. Stays open where some of them were there already, and lists those.
  void accept() override;
  // While it works, this ends the work, and nothing is changed then.
  void reject() override;

 private:
  void MakeWindow();
  void AddTarget(FormColumn* column);
  void ShowGroups();
  void MakeGroup();
  // kMove or kCopy.
  void Start(recipients::EditKind kind, const std::string& to);
  void End(recipients::EditKind kind, const QString& to, const Result<recipients::MoveOutcome>& outcome);
  void ShowDuplicates(const recipients::MoveOutcome& outcome);
  void EnableControls(bool enabled);

  const profile::Program& program_;
  const QString from_;
  const std::vector<std::int64_t> keys_;
  QComboBox* group_;
  QPushButton* new_group_;
  QRadioButton* move_;
  QRadioButton* copy_;
  RowList* duplicates_;
  StatusLine* status_;
  WorkPanel* work_;
  QPushButton* ok_;
  std::vector<std::string> duplicate_entries_;
  QString said_;
  bool has_moved_ = false;
  bool has_made_group_ = false;
};

}  // namespace quillcast::desktop
