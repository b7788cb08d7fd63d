#include "desktop/recipients/duplicates_form.h"

#include <QCheckBox>
#include <QLocale>
#include <QPushButton>

#include "desktop/widgets/form_column.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/row_list.h"
#include "desktop/widgets/status_line.h"
#include "platform/text.h"

namespace quillcast::desktop {
namespace {

constexpr std::size_t kMostDuplicatesShown = 10'000;

}  // namespace

DuplicatesForm::DuplicatesForm(const profile::Program& program, QString group, QWidget* parent)
    : QDialog(parent),
      program_(program),
      group_(std::move(group)),
      list_(new RowList(
          "DuplicatesList", tr("Duplicates"), {{tr("Address"), 28}, {tr("Group"), 18}, {tr("Entry")}},
          [this](std::size_t row, int column) { return Text(row, column); }, this)),
      all_(new QCheckBox(tr("Look in &all groups"), this)),
      status_(new StatusLine(this)),
      erase_(new QPushButton(tr("&Delete Duplicates"), this)),
      task_(new BackgroundTask(this)) {
  setObjectName("DuplicatesForm");
  setWindowTitle(tr("Duplicates"));
  resize(680, 420);
  all_->setObjectName("AllGroupsCheckBox");
  erase_->setObjectName("DeleteDuplicatesButton");
  list_->SetEmptyText(tr("Who stands more than once is listed here: two ways of writing one address are one."));
  auto* column = new FormColumn(this);
  column->Add(all_);
  column->Add(list_, 1);
  column->Add(status_);
  column->AddButtons(QDialogButtonBox::Close)->addButton(erase_, QDialogButtonBox::AcceptRole);
  connect(all_, &QCheckBox::toggled, this, &DuplicatesForm::Look);
  Look();
}

void DuplicatesForm::Look() {
  erase_->setEnabled(false);
  status_->Say(tr("Looking through the addresses…"));
  std::vector<std::string> groups;  // none for all
  if (!all_->isChecked()) groups.push_back(FromQt(group_));
  task_->Start([this, file = program_.folders.Database(), groups](const platform::CancelToken& cancel) {
    const auto found = LookThrough(recipients::RecipientStore(file, {.cancel = &cancel}), groups);
    return [this, found] { Show(found); };
  });
}

Result<DuplicatesForm::Found> DuplicatesForm::LookThrough(const recipients::RecipientStore& store,
                                                          const std::vector<std::string>& groups) {
  Found found;
  const auto done = recipients::FindDuplicates(store, groups, [&found](const recipients::DuplicateSet& set) {
    ++found.sets;
    found.entries += static_cast<std::int64_t>(set.holders.size());
    found.too_many += static_cast<std::int64_t>(set.holders.size()) - 1;
    for (const auto& holder : set.holders) {
      if (found.first.size() < kMostDuplicatesShown) found.first.push_back({set.address, holder});
    }
    return true;
  });
  if (!done) return done.error();
  return found;
}

void DuplicatesForm::Show(const Result<Found>& found) {
  found_ = found ? *found : Found();
  list_->Reset(found_.first.size());
  if (!found) return status_->Fail(found.error());
  erase_->setEnabled(found_.too_many > 0 && !all_->isChecked());
  if (found_.sets == 0) return status_->Say(tr("Nobody stands there twice."));
  const QString sets = Counted(found_.sets, tr("1 address stands there more than once."),
                               tr("%1 addresses stand there more than once."));
  const auto listed = static_cast<std::int64_t>(found_.first.size());
  const QString of_all = tr("The first %1 of %2 entries are listed.")
                             .arg(QLocale().toString(qlonglong{listed}), QLocale().toString(qlonglong{found_.entries}));
  status_->Say(listed == found_.entries ? sets : sets + ' ' + of_all);
}

QString DuplicatesForm::Text(std::size_t row, int column) const {
  const Row& shown = found_.first.at(row);
  return ToQt(platform::Printable(column == 0 ? shown.address : column == 1 ? shown.holder.group : shown.holder.entry));
}

void DuplicatesForm::accept() {
  const auto question = recipients::DeleteDuplicatesQuestion(found_.too_many, FromQt(group_));
  if (program_.prompts.Ask(question.InEnglish()) == platform::Answer::kYes) QDialog::accept();
}

}  // namespace quillcast::desktop
