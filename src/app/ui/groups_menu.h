// What the button "Groups" offers: a new group, and the addresses of a file.
#pragma once

#include <QMenu>

#include "app/program.h"
#include "platform/ui/background_task.h"

namespace quillcast::app {

class GroupsMenu final : public QMenu {
  Q_OBJECT
 public:
  GroupsMenu(const Program& program, QWidget* parent);

  void AskForNewGroup();
  // Every address that is found in a file, into this group.
  void ImportInto(const QString& group);

 signals:
  void Changed(const QString& group);
  void ImportRequested();
  void Said(const QString& sentence);

 private:
  const Program& program_;
  platform::BackgroundTask* import_;
};

}  // namespace quillcast::app
