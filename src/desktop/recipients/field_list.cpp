#include "desktop/recipients/field_list.h"

#include <QCheckBox>
#include <QEvent>
#include <QHBoxLayout>
#include <QListWidget>
#include <QPushButton>
#include <QSignalBlocker>

#include "desktop/widgets/first_key.h"
#include "desktop/widgets/qt_text.h"
#include "recipients/export/recipient_export.h"

namespace quillcast::desktop {
namespace {

constexpr int kEntryRole = Qt::UserRole;  // the entry in English, which says which field it is
constexpr int kShownEntries = 6;
constexpr int kSpacing = 1;  // pixels round an entry

}  // namespace

FieldList::FieldList(QWidget* parent)
    : QWidget(parent),
      list_(new QListWidget(this)),
      up_(new QPushButton(tr("&Up"), this)),
      down_(new QPushButton(tr("&Down"), this)),
      all_(new QCheckBox(tr("All f&ields"), this)) {
  list_->setObjectName("ListFields");
  list_->setAccessibleName(tr("Fields"));
  up_->setObjectName("UpButton");
  down_->setObjectName("DownButton");
  all_->setObjectName("AllFieldsCheckBox");
  new FirstKey(list_);
  for (std::size_t field = 0; field < recipients::kFieldCount; ++field) {
    const QString entry = ToQt(recipients::FieldEntry(field));
    const QString blanks = entry.left(entry.size() - ToQt(recipients::kFields[field].label).size());
    auto* item = new QListWidgetItem(blanks + Translated(recipients::kFields[field].label), list_);
    item->setData(kEntryRole, entry);
    item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
    item->setCheckState(Qt::Unchecked);
  }
  list_->setSpacing(kSpacing);
  TakeColours();
  list_->setMinimumHeight(kShownEntries * (list_->sizeHintForRow(0) + 2 * kSpacing) + 2 * list_->frameWidth());
  auto* buttons = new QVBoxLayout();
  buttons->addWidget(up_);
  buttons->addWidget(down_);
  buttons->addStretch(1);
  buttons->addWidget(all_);
  auto* line = new QHBoxLayout(this);
  line->setContentsMargins(0, 0, 0, 0);
  line->addWidget(list_, 1);
  line->addLayout(buttons);
  connect(list_, &QListWidget::currentRowChanged, this, &FieldList::EnableButtons);
  connect(up_, &QPushButton::clicked, this, [this] { Move(-1); });
  connect(down_, &QPushButton::clicked, this, [this] { Move(1); });
  connect(list_, &QListWidget::itemChanged, this, &FieldList::TakeTick);
  connect(all_, &QCheckBox::clicked, this, &FieldList::TickAll);
  EnableButtons();
}

// A style draws the outline of a box after the ground of windows, which on the ground of a dark list cannot be seen.
void FieldList::TakeColours() {
  QPalette colours = palette();
  for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
    colours.setColor(group, QPalette::Window, colours.color(group, QPalette::Text));
  }
  list_->setPalette(colours);
}

void FieldList::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  if (event->type() == QEvent::PaletteChange) TakeColours();
}

std::vector<std::size_t> FieldList::Ticked() const {
  std::vector<std::size_t> fields;
  for (int row = 0; row < list_->count(); ++row) {
    const QListWidgetItem* item = list_->item(row);
    if (item->checkState() == Qt::Checked)
      fields.push_back(recipients::FieldOfEntry(FromQt(item->data(kEntryRole).toString())));
  }
  return fields;
}

// The entry is chosen with it: the key that follows goes on from there.
void FieldList::TakeTick(QListWidgetItem* entry) {
  list_->setCurrentItem(entry);
  ShowWhetherAll();
}

void FieldList::ShowWhetherAll() {
  const std::size_t ticked = Ticked().size();
  all_->setCheckState(ticked == 0                         ? Qt::Unchecked
                      : ticked == recipients::kFieldCount ? Qt::Checked
                                                          : Qt::PartiallyChecked);
}

// A press on the box where some are ticked ticks the rest.
void FieldList::TickAll() {
  const bool ticks = Ticked().size() < recipients::kFieldCount;
  {
    const QSignalBlocker quiet(list_);
    for (int row = 0; row < list_->count(); ++row) list_->item(row)->setCheckState(ticks ? Qt::Checked : Qt::Unchecked);
  }
  list_->viewport()->update();
  ShowWhetherAll();
}

// Where the way ends there is nothing to do. The button stays all the same: were it disabled, a key that is pressed
// once too often would go to another control, which ticks the field, or to the one that exports.
void FieldList::Move(int by) {
  const int row = list_->currentRow();
  if (row + by < 0 || row + by >= list_->count()) return;
  {
    const QSignalBlocker quiet(list_);  // taking it out chooses another for a moment
    list_->insertItem(row + by, list_->takeItem(row));
  }
  list_->setCurrentRow(row + by);
}

void FieldList::EnableButtons() {
  for (QPushButton* button : {up_, down_}) button->setEnabled(list_->currentRow() >= 0);
}

}  // namespace quillcast::desktop
