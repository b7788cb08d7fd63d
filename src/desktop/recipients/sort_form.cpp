#include "desktop/recipients/sort_form.h"

#include <QCheckBox>
#include <QComboBox>
#include <vector>

#include "desktop/widgets/form_column.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/note.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/status_line.h"
#include "recipients/recipient.h"
#include "recipients/sort_order.h"

namespace quillcast::desktop {

SortForm::SortForm(std::string_view sort_sql, QWidget* parent) : QDialog(parent) {
  setObjectName("SortForm");
  setWindowTitle(tr("Order of the Group"));
  const auto stored = recipients::SortKeysOf(sort_sql);
  const std::array labels = {tr("&Sort by:"), tr("&Then by:"), tr("&Last by:")};
  auto* column = new FormColumn(this);
  FormGrid* grid = column->AddGrid();
  for (std::size_t at = 0; at < keys_.size(); ++at) {
    auto* field = new QComboBox();
    field->addItem(at == 0 ? tr("The order of adding") : tr("Nothing more"));
    for (const recipients::FieldNames& names : recipients::kFields) field->addItem(Translated(names.label));
    auto* descends = new QCheckBox(tr("Descending"));
    descends->setObjectName(QString("DescendingCheckBox%1").arg(at + 1));
    keys_.at(at) = {grid->Add(QString("FieldComboBox%1").arg(at + 1), labels.at(at), field, {descends}), descends};
    if (!stored || at >= stored->size()) continue;
    for (std::size_t place = 0; place < recipients::kFieldCount; ++place) {
      if (recipients::kFields[place].column == (*stored)[at].column)
        field->setCurrentIndex(static_cast<int>(place) + 1);
    }
    descends->setChecked((*stored)[at].descending);
  }
  auto* note = column->Add(new StatusLine(this, "NoteLabel"));
  note->Say(tr("The group is shown, exported and sent to in this order."));
  column->AddButtons(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
}

std::string SortForm::SortText() const {
  std::vector<recipients::SortKey> keys;
  for (const Key& key : keys_) {
    const int place = key.field->currentIndex();
    if (place > 0)
      keys.push_back({recipients::kFields[static_cast<std::size_t>(place) - 1].column, key.descends->isChecked()});
  }
  return recipients::SortTextOf(keys);
}

}  // namespace quillcast::desktop
