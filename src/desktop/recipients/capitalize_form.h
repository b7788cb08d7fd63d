// The dialog that shows which names would be written otherwise before they are.
#pragma once

#include <QDialog>
#include <memory>
#include <vector>

#include "desktop/widgets/background_task.h"
#include "profile/program.h"
#include "recipients/edit/capitalise_group.h"

class QPushButton;

namespace quillcast::desktop {

class RowList;
class StatusLine;

// It changes nothing: whoever opened it does, when it was accepted, by what stands in the store then.
class CapitalizeForm final : public QDialog {
  Q_OBJECT
 public:
  // Looks through the group beside the window; OK, once there is something to change, is the answer to its question.
  CapitalizeForm(const profile::Program& program, QString group, QWidget* parent);

 private:
  // The changes that are shown, of all that there are.
  struct Preview {
    std::vector<recipients::NameChange> first;
    std::int64_t changes = 0;
    std::int64_t recipients = 0;
  };
  // On a thread of its own; counts all changes and keeps the first, so that a group of any size fits in memory.
  static Result<Preview> LookThrough(const recipients::RecipientStore& store, const std::string& group);
  void Show(const Result<Preview>& preview);
  QString Text(std::size_t row, int column) const;

  const QString group_;
  Preview preview_;
  RowList* list_;
  StatusLine* question_;
  QPushButton* ok_;
  BackgroundTask* task_;
};

}  // namespace quillcast::desktop
