// What the button "Groups" offers: a new group, and the addresses of a file.
#pragma once

#include <QMenu>

#include "desktop/widgets/background_task.h"
#include "profile/program.h"

namespace quillcast::desktop {

class GroupsMenu final : public QMenu {
  Q_OBJECT
 public:
  GroupsMenu(const profile::Program& program, QWidget* parent);

  void AskForNewGroup();
  // Every address that is found in a file, into this group; one file at a time.
  void ImportInto(const QString& group);
  bool is_importing() const { return import_->is_running(); }

 signals:
  // The groups or their counts; `chosen` is a new one that takes the place of what is shown, or empty.
  void Changed(const QString& chosen);
  void ImportRequested();
  void Said(const QString& sentence);

 private:
  const profile::Program& program_;
  BackgroundTask* import_;
};

}  // namespace quillcast::desktop
