#include "desktop/document/date_time_form.h"

#include <QListWidget>

#include "desktop/document/html_editor.h"
#include "desktop/widgets/first_key.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/qt_text.h"

namespace quillcast::desktop {
namespace {

constexpr int kListWidth = 280;  // pixels

// Nothing is chosen at first. It is as high as its rows.
template <std::size_t kCount>
QListWidget* Listing(const std::array<const char*, kCount>& formats, const std::tm& moment) {
  auto* list = new QListWidget();
  for (const char* format : formats) list->addItem(ToQt(document::Written(moment, format)));
  list->setLayoutDirection(Qt::LeftToRight);  // they are English in every locale
  list->setUniformItemSizes(true);
  list->setMinimumWidth(kListWidth);
  list->setFixedHeight(list->sizeHintForRow(0) * static_cast<int>(kCount) + 2 * list->frameWidth() + 2);
  list->setCurrentRow(0, QItemSelectionModel::NoUpdate);
  new FirstKey(list);
  return list;
}

std::string ChosenIn(const QListWidget& list) {
  const auto chosen = list.selectedItems();
  return chosen.isEmpty() ? std::string() : FromQt(chosen.front()->text());
}

}  // namespace

DateTimeForm::DateTimeForm(platform::Prompts& prompts, const platform::Clock& clock, HtmlEditor& editor,
                           QWidget* parent)
    : QDialog(parent), prompts_(prompts), editor_(editor) {
  setObjectName("DateTimeForm");
  setWindowTitle(tr("Date and Time"));
  const std::tm now = clock.Local(clock.Now());
  auto* column = new FormColumn(this);
  FormGrid* grid = column->AddGrid();
  dates_ = grid->Add("DateListBox", tr("&Date:"), Listing(document::kDateFormats, now));
  times_ = grid->Add("TimeListBox", tr("&Time:"), Listing(document::kTimeFormats, now));
  column->AddButtons(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  connect(times_, &QListWidget::itemDoubleClicked, this, &DateTimeForm::accept);
  dates_->setFocus();
}

void DateTimeForm::accept() {
  const document::DateTimeChoice choice{ChosenIn(*dates_), ChosenIn(*times_)};
  if (const auto complaint = document::CheckDateTime(choice)) {
    prompts_.Warn(complaint->message);
    (complaint->control == document::DateTimeBox::kDate ? dates_ : times_)->setFocus();
    return;
  }
  QDialog::accept();
  editor_.InsertHtml(ToQt(document::DateTimeText(choice)));
}

}  // namespace quillcast::desktop
