#include "desktop/recipients/sort_form.h"

#include <QCheckBox>
#include <QComboBox>
#include <algorithm>

#include "desktop/widgets/form_column.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/note.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/status_line.h"
#include "platform/text.h"
#include "recipients/recipient.h"

namespace quillcast::desktop {
namespace {

constexpr std::size_t kFewestKeys = 3;
constexpr std::size_t kLongestOrder = 200;  // of a text that is not understood

// The columns that are no fields are not offered, but shown where an order is stored with them.
QString NameOf(std::string_view column) {
  for (const recipients::FieldNames& names : recipients::kFields) {
    if (names.column == column) return Translated(names.label);
  }
  return column == "ID" ? SortForm::tr("Time of Adding") : SortForm::tr("Number of the Group");
}

}  // namespace

SortForm::SortForm(std::string_view sort_sql, QWidget* parent) : QDialog(parent) {
  setObjectName("SortForm");
  setWindowTitle(tr("Order of the Group"));
  const auto stored = recipients::SortKeysOf(sort_sql);
  is_understood_ = static_cast<bool>(stored);
  const auto keys = recipients::WithoutRepeats(stored ? *stored : std::vector<recipients::SortKey>());
  auto* column = new FormColumn(this);
  FormGrid* grid = column->AddGrid();
  const std::size_t count = std::max(kFewestKeys, keys.size());
  for (std::size_t at = 0; at < count; ++at) {
    AddKey(*grid, count, at < keys.size() ? keys[at] : recipients::SortKey{});
  }
  opened_with_ = Picked();
  auto* note = column->Add(new StatusLine(this, "NoteLabel"));
  if (is_understood_) {
    note->Say(tr("The group is shown, exported and sent to in this order."));
  } else {
    note->Say(tr("The stored order, “%1”, is not understood. OK puts the one that is picked here in its place.")
                  .arg(ToQt(platform::Printable(sort_sql, kLongestOrder))),
              NoteKind::kWarning);
  }
  column->AddButtons(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
}

void SortForm::AddKey(FormGrid& grid, std::size_t count, const recipients::SortKey& stored) {
  const std::size_t at = keys_.size();
  auto* field = new QComboBox();
  field->addItem(at == 0 ? tr("The order of adding") : tr("Nothing more"));
  const auto add = [field](std::string_view column) { field->addItem(NameOf(column), ToQt(column)); };
  for (const recipients::FieldNames& names : recipients::kFields) add(names.column);
  if (!stored.column.empty()) {
    if (field->findData(ToQt(stored.column)) < 0) add(stored.column);
    field->setCurrentIndex(field->findData(ToQt(stored.column)));
  }
  auto* descends = new QCheckBox(tr("Descending"));
  descends->setObjectName(QString("DescendingCheckBox%1").arg(at + 1));
  descends->setChecked(stored.descending);
  const QString label = at == 0           ? tr("&Sort by:")
                        : at + 1 == count ? tr("&Last by:")
                        : at == 1         ? tr("&Then by:")
                                          : tr("Then by:");  // a key stands for one field
  keys_.push_back({grid.Add(QString("FieldComboBox%1").arg(at + 1), label, field, {descends}), descends});
}

std::string SortForm::Picked() const {
  std::vector<std::string> columns;
  for (const Key& key : keys_) columns.push_back(FromQt(key.field->currentData().toString()));
  std::vector<recipients::SortKey> keys;
  for (std::size_t at = 0; at < keys_.size(); ++at) {
    if (!columns[at].empty()) keys.push_back({columns[at], keys_[at].descends->isChecked()});
  }
  return recipients::SortTextOf(keys);
}

bool SortForm::has_changed() const { return !is_understood_ || Picked() != opened_with_; }

std::string SortForm::SortText() const { return Picked(); }

}  // namespace quillcast::desktop
