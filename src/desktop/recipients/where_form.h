// The dialog that shows in which groups an address is.
#pragma once

#include <QDialog>
#include <string>
#include <vector>

#include "desktop/widgets/background_task.h"
#include "profile/program.h"
#include "recipients/edit/duplicates.h"

namespace quillcast::desktop {

class RowList;
class StatusLine;

// Compares by the address that a message would go to, so that an entry with a name around it is found as well.
class WhereForm final : public QDialog {
  Q_OBJECT
 public:
  // `entry` is as it is stored: its address is looked for.
  WhereForm(const profile::Program& program, const std::string& entry, QWidget* parent);

 private:
  std::vector<recipients::Holder> holders_;
  RowList* list_;
  StatusLine* status_;
  BackgroundTask* task_;
};

}  // namespace quillcast::desktop
