// The group that the message is for: the To box, and how many recipients are in what it shows.
#pragma once

#include <QWidget>
#include <cstdint>
#include <string>
#include <vector>

#include "desktop/widgets/background_task.h"
#include "profile/program.h"

class QComboBox;
class QLabel;

namespace quillcast::desktop {

class GroupField final : public QWidget {
  Q_OBJECT
 public:
  GroupField(const profile::Program& program, QWidget* parent);

  // Anew from the store, with `chosen` in it, or what was chosen before when that is empty. Where the store is in use,
  // what is shown stays and is looked up again in a second.
  void Load(const QString& chosen = {});
  // The same beside the window, where the store holds other groups, or others in them, than are shown.
  void Refresh();
  QString Group() const;
  bool HasGroups() const;
  void Choose(const QString& group);

 signals:
  void Trouble(const QString& sentence);
  void Changed();

 private:
  void ShowCount();
  void ShowGroups(const std::vector<std::string>& names, const QString& chosen);
  void ShowTotal(std::int64_t recipients);
  void LoadAgain(const QString& why);

  const profile::Program& program_;
  bool loads_again_ = false;
  QString wanted_;  // the group to choose once the groups could be read
  BackgroundTask* refresh_;
  bool refreshes_again_ = false;
  int loads_ = 0;  // what was read before the last one is old
  QComboBox* box_;
  QLabel* count_;
};

}  // namespace quillcast::desktop
