#include "desktop/run/range_picker.h"

#include <QCheckBox>
#include <QLabel>
#include <QSpinBox>
#include <QTimer>
#include <algorithm>
#include <limits>

#include "desktop/widgets/form_column.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/status_line.h"
#include "platform/text.h"

namespace quillcast::desktop {
namespace {

constexpr int kPause = 250;  // milliseconds after the last key

}  // namespace

RangePicker::RangePicker(std::int64_t recipients, EndsOf ends_of, QWidget* parent)
    : QWidget(parent),
      recipients_(recipients),
      ends_of_(std::move(ends_of)),
      look_up_(new BackgroundTask(this)),
      pause_(new QTimer(this)),
      partial_(new QCheckBox(tr("Only a &part of the list, from #"), this)),
      first_(new QSpinBox(this)),
      last_(new QSpinBox(this)),
      whom_(new StatusLine(this, "RangeLabel")) {
  const int most = static_cast<int>(std::clamp<std::int64_t>(recipients, 1, std::numeric_limits<int>::max()));
  partial_->setObjectName("PartialCheckBox");
  first_->setObjectName("FirstSpinBox");
  first_->setAccessibleName(tr("First recipient"));
  first_->setRange(1, most);
  last_->setObjectName("LastSpinBox");
  last_->setAccessibleName(tr("Last recipient"));
  last_->setRange(1, most);
  last_->setValue(most);
  // A number counts once it is typed to its end: on the way it may lie below the first.
  for (QSpinBox* box : {first_, last_}) box->setKeyboardTracking(false);
  whom_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
  whom_->KeepRoom(1);
  whom_->setMinimumWidth(1);  // a long address makes no dialog wider
  pause_->setSingleShot(true);
  pause_->setInterval(kPause);
  auto* to = new QLabel(tr("to #"), this);
  to->setBuddy(last_);
  auto* column = new FormColumn(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->AddLine({partial_, first_, to, last_, whom_});
  connect(partial_, &QCheckBox::toggled, this, &RangePicker::TakeChange);
  connect(first_, &QSpinBox::valueChanged, this, &RangePicker::TakeChange);
  connect(last_, &QSpinBox::valueChanged, this, &RangePicker::TakeChange);
  connect(pause_, &QTimer::timeout, this, &RangePicker::LookUp);
  TakeChange();
}

Result<std::optional<run::PartialRange>> RangePicker::Range() const {
  if (!partial_->isChecked()) return std::optional<run::PartialRange>();
  for (QSpinBox* box : {first_, last_}) box->interpretText();  // what is being typed
  const auto range = run::RangeOf(first_->value(), last_->value(), recipients_);
  if (!range) return range.error();
  return std::optional(*range);
}

void RangePicker::TakeChange() {
  if (last_->value() < first_->value()) last_->setValue(first_->value());
  first_->setEnabled(partial_->isChecked());
  last_->setEnabled(partial_->isChecked());
  whom_->clear();
  if (partial_->isChecked()) pause_->start();
}

// Of what was typed to its end; what is being typed is left alone.
void RangePicker::LookUp() {
  if (!partial_->isChecked()) return;
  look_up_->Start([this, range = run::PartialRange{first_->value(), last_->value()}](const auto& cancel) {
    return [this, text = ends_of_(range, cancel)] { whom_->Say(ToQt(text)); };
  });
}

}  // namespace quillcast::desktop
