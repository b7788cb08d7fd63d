#include "desktop/recipients/import_mapping_panel.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/qt_text.h"

namespace quillcast::desktop {
namespace {

constexpr qsizetype kFitsTheBox = 20;  // characters

void TipTheWhole(QComboBox& list) {
  const QString chosen = list.currentText();
  list.setToolTip(chosen.size() > kFitsTheBox ? PlainTip(chosen) : QString());
}

}  // namespace

ImportMappingPanel::ImportMappingPanel(QWidget* parent) : QScrollArea(parent) {
  setObjectName("MappingPanel");
  setAccessibleName(tr("Fields of a recipient"));
  setWidgetResizable(true);
  setFocusPolicy(Qt::NoFocus);  // its lists have it
  verticalScrollBar()->setObjectName("VScrollBar");
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  auto* inside = new QWidget(this);
  auto* layout = new QVBoxLayout(inside);
  auto* grid = new FormGrid(inside, 1);
  layout->addWidget(grid);
  for (std::size_t field = 0; field < lists_.size(); ++field) {
    lists_[field] = new QComboBox();
    lists_[field]->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    lists_[field]->setMinimumContentsLength(8);
    grid->Add(QString("ComboBox%1").arg(field + 1), Translated(recipients::kFields[field].label) + ":", lists_[field]);
    lists_[field]->view()->setTextElideMode(Qt::ElideRight);
    connect(lists_[field], &QComboBox::currentIndexChanged, this, [this, list = lists_[field]] {
      TipTheWhole(*list);
      emit Changed();
    });
  }
  setWidget(inside);
}

void ImportMappingPanel::Offer(const std::vector<std::string>& entries) {
  for (QComboBox* list : lists_) {
    const QSignalBlocker quiet(list);
    list->clear();
    for (const std::string& entry : entries) {
      list->addItem(ToQt(entry));
      list->setItemData(list->count() - 1, PlainTip(ToQt(entry)), Qt::ToolTipRole);
    }
    list->setCurrentIndex(entries.empty() ? -1 : 0);
    list->setToolTip({});
  }
  emit Changed();
}

bool ImportMappingPanel::Offers(int source) const { return source < lists_.front()->count(); }

recipients::ImportMapping ImportMappingPanel::Mapping() const {
  recipients::ImportMapping mapping;
  for (std::size_t field = 0; field < lists_.size(); ++field) {
    mapping.source[field] = recipients::SourceFieldOf(FromQt(lists_[field]->currentText()));
  }
  return mapping;
}

void ImportMappingPanel::Choose(const recipients::ImportMapping& mapping) {
  for (std::size_t field = 0; field < lists_.size(); ++field) {
    const QSignalBlocker quiet(lists_[field]);
    const int source = mapping.source[field];
    lists_[field]->setCurrentIndex(source < lists_[field]->count() ? source : recipients::kIgnore);
    TipTheWhole(*lists_[field]);
  }
  emit Changed();
}

}  // namespace quillcast::desktop
