// The dialog that gives a group another name.
#pragma once

#include <QDialog>

#include "profile/program.h"

class QLineEdit;

namespace quillcast::desktop {

class StatusLine;

// Writes the new name itself when OK is pressed, and stays open as GroupNewForm does.
class GroupRenameForm final : public QDialog {
  Q_OBJECT
 public:
  GroupRenameForm(const profile::Program& program, const QString& group, QWidget* parent);
  // What stands in the box; after OK it is the group's name.
  QString name() const;

 public slots:
  // Stays open where the name is refused or could not be written.
  void accept() override;

 private:
  const profile::Program& program_;
  const QString group_;
  QLineEdit* name_;
  StatusLine* status_;
};

}  // namespace quillcast::desktop
