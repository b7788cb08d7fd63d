// The dialog that makes a group.
#pragma once

#include <QDialog>

#include "profile/program.h"

class QLineEdit;

namespace quillcast::desktop {

class StatusLine;

// Writes the group itself when OK is pressed, and stays open where its name is refused or taken, or the store fails.
class GroupNewForm final : public QDialog {
  Q_OBJECT
 public:
  GroupNewForm(const profile::Program& program, QWidget* parent);
  // What stands in the box; after OK a group of that name has been made.
  QString name() const;

 public slots:
  // Stays open where the name is refused or the group could not be made.
  void accept() override;

 private:
  const profile::Program& program_;
  QLineEdit* name_;
  StatusLine* status_;
};

}  // namespace quillcast::desktop
