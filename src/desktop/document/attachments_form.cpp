#include "desktop/document/attachments_form.h"

#include <QPushButton>
#include <QShortcut>
#include <algorithm>

#include "desktop/widgets/form_column.h"
#include "desktop/widgets/icons.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/row_list.h"
#include "desktop/widgets/status_line.h"
#include "platform/text.h"

namespace quillcast::desktop {

QString InWords(const document::AttachmentTotal& total) {
  const QString files = Counted(total.files, AttachmentsForm::tr("1 file"), AttachmentsForm::tr("%1 files"));
  QString text = files + ", " + ToQt(platform::HumanSize(total.bytes));
  if (total.missing == 0) return text;
  return text + ", " + Counted(total.missing, AttachmentsForm::tr("1 not there"), AttachmentsForm::tr("%1 not there"));
}

AttachmentsForm::AttachmentsForm(const document::AttachmentList& attachments, QWidget* parent)
    : QDialog(parent),
      remaining_(attachments),
      list_(new RowList(
          "AttachmentsList", tr("Attachments"), {{}},
          [this](std::size_t row, int) { return PathToQt(remaining_.paths()[row]); }, this)),
      total_(new StatusLine(this, "AttachmentsTotal")),
      remove_(new QPushButton(Icon("remove"), tr("&Remove"), this)) {
  setObjectName("AttachmentsForm");
  setWindowTitle(tr("Attachments"));
  resize(520, 340);
  list_->setSelectionMode(QAbstractItemView::ExtendedSelection);
  list_->setTextElideMode(Qt::ElideMiddle);
  list_->SetEmptyText(tr("No file goes with the message. Press OK, then “Add…” in the main window to choose some."));
  remove_->setObjectName("RemoveButton");
  total_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
  auto* column = new FormColumn(this);
  column->Add(list_, 1);
  column->AddLine({total_, remove_});
  column->AddButtons(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  auto* key = new QShortcut(QKeySequence::Delete, list_, nullptr, nullptr, Qt::WidgetShortcut);
  connect(key, &QShortcut::activated, this, &AttachmentsForm::RemoveSelected);
  connect(remove_, &QPushButton::clicked, this, &AttachmentsForm::RemoveSelected);
  connect(list_, &RowList::ChosenChanged, this, [this] { remove_->setEnabled(!list_->Chosen().empty()); });
  ShowFiles();
  list_->setFocus();
}

void AttachmentsForm::RemoveSelected() {
  const std::vector<std::size_t> rows = list_->Chosen();
  std::vector<std::string> chosen;
  for (const std::size_t row : rows) chosen.push_back(remaining_.paths()[row]);
  for (const std::string& path : chosen) remaining_.Remove(path);
  ShowFiles();
  // The keyboard goes on where it was: at the file that moved up.
  if (!rows.empty() && list_->size() > 0) list_->Choose(std::min(rows.front(), list_->size() - 1));
}

void AttachmentsForm::ShowFiles() {
  list_->Reset(remaining_.paths().size());
  total_->Say(InWords(document::TotalOf(remaining_)));
}

}  // namespace quillcast::desktop
