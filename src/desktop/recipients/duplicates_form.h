// The dialog that shows who stands more than once: in a group, or in several.
#pragma once

#include <QDialog>
#include <string>
#include <vector>

#include "desktop/widgets/background_task.h"
#include "profile/program.h"
#include "recipients/edit/duplicates.h"

class QCheckBox;
class QPushButton;

namespace quillcast::desktop {

class RowList;
class StatusLine;

// It deletes nothing: whoever opened it does, when it was accepted.
class DuplicatesForm final : public QDialog {
  Q_OBJECT
 public:
  // Looks through the group beside the window, and through all groups where that is ticked. It is accepted when the
  // question whether all but the first of each are to be deleted from the group was answered with Yes.
  DuplicatesForm(const profile::Program& program, QString group, QWidget* parent);

 public slots:
  void accept() override;

 private:
  struct Row {
    std::string address;
    recipients::Holder holder;
  };
  struct Found {
    std::vector<Row> first;  // of all that there are
    std::int64_t sets = 0;
    std::int64_t entries = 0;
    std::int64_t too_many = 0;
  };
  // On a thread of its own; counts all, and keeps the first to be shown.
  static Result<Found> LookThrough(const recipients::RecipientStore& store, const std::vector<std::string>& groups);
  void Look();
  void Show(const Result<Found>& found);
  QString Text(std::size_t row, int column) const;

  const profile::Program& program_;
  const QString group_;
  Found found_;
  RowList* list_;
  QCheckBox* all_;
  StatusLine* status_;
  QPushButton* erase_;
  BackgroundTask* task_;
};

}  // namespace quillcast::desktop
