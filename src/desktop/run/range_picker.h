// Picks a part of a group's list, and shows whom it begins and ends with.
#pragma once

#include <QWidget>
#include <functional>
#include <optional>
#include <string>

#include "desktop/widgets/background_task.h"
#include "run/partial_range.h"

class QCheckBox;
class QSpinBox;
class QTimer;

namespace quillcast::desktop {

class StatusLine;

class RangePicker final : public QWidget {
  Q_OBJECT
 public:
  // Whom a part of the list begins and ends with; asked beside the window.
  using EndsOf = std::function<std::string(const run::PartialRange& range, const platform::CancelToken& cancel)>;

  RangePicker(std::int64_t recipients, EndsOf ends_of, QWidget* parent);

  // Nothing for the whole list. Fails for what is no part of it.
  Result<std::optional<run::PartialRange>> Range() const;

 private:
  void TakeChange();
  void LookUp();

  const std::int64_t recipients_;
  const EndsOf ends_of_;
  BackgroundTask* look_up_;
  QTimer* pause_;
  QCheckBox* partial_;
  QSpinBox* first_;
  QSpinBox* last_;
  StatusLine* whom_;
};

}  // namespace quillcast::desktop
