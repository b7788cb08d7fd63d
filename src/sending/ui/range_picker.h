// Picks a part of a group's list, and shows whom it begins and ends with.
#pragma once

#include <QWidget>
#include <optional>

#include "app/program.h"
#include "platform/ui/background_task.h"
#include "recipients/recipient_store.h"
#include "sending/run_report.h"

class QCheckBox;
class QLabel;
class QSpinBox;
class QTimer;

namespace quillcast::sending {

class RangePicker final : public QWidget {
  Q_OBJECT
 public:
  RangePicker(const app::Program& program, recipients::RecipientGroup group, std::int64_t recipients, QWidget* parent);

  // Nothing for the whole list.
  std::optional<PartialRange> Range() const;

 private:
  void TakeChange();
  void LookUp();

  const app::Program& program_;
  recipients::RecipientGroup group_;
  platform::BackgroundTask* look_up_;
  QTimer* pause_;
  QCheckBox* partial_;
  QSpinBox* first_;
  QSpinBox* last_;
  QLabel* whom_;
};

}  // namespace quillcast::sending
