// Picks a part of a group's list, and shows whom it begins and ends with.
#pragma once

#include <QWidget>
#include <optional>

#include "desktop/widgets/background_task.h"
#include "profile/program.h"
#include "recipients/recipient_store.h"
#include "run/run_report.h"

class QCheckBox;
class QLabel;
class QSpinBox;
class QTimer;

namespace quillcast::desktop {

class RangePicker final : public QWidget {
  Q_OBJECT
 public:
  RangePicker(const profile::Program& program, recipients::RecipientGroup group, std::int64_t recipients,
              QWidget* parent);

  // Nothing for the whole list.
  std::optional<run::PartialRange> Range() const;

 private:
  void TakeChange();
  void LookUp();

  const profile::Program& program_;
  recipients::RecipientGroup group_;
  BackgroundTask* look_up_;
  QTimer* pause_;
  QCheckBox* partial_;
  QSpinBox* first_;
  QSpinBox* last_;
  QLabel* whom_;
};

}  // namespace quillcast::desktop
