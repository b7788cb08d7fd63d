#include "desktop/recipients/capitalize_form.h"

#include <QPushButton>

#include "desktop/widgets/form_column.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/row_list.h"
#include "desktop/widgets/status_line.h"

namespace quillcast::desktop {
namespace {

constexpr std::size_t kMostNamesShown = 1000;

}  // namespace

CapitalizeForm::CapitalizeForm(const profile::Program& program, QString group, QWidget* parent)
    : QDialog(parent),
      group_(std::move(group)),
      list_(new RowList(
          "ChangesList", tr("Changes"), {{tr("Email Address"), 28}, {tr("Before"), 22}, {tr("After")}},
          [this](std::size_t row, int column) { return Text(row, column); }, this)),
      question_(new StatusLine(this)),
      task_(new BackgroundTask(this)) {
  setObjectName("CapitalizeForm");
  setWindowTitle(tr("Capitalize Names"));
  resize(640, 420);
  list_->SetEmptyText(tr("What would change in the first and last names stands here before anything is written."));
  auto* column = new FormColumn(this);
  column->Add(list_, 1);
  column->Add(question_);
  column->AddButtons(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  ok_ = findChild<QPushButton*>("OKButton");
  ok_->setEnabled(false);
  question_->Say(tr("Looking through the names…"));
  task_->Start([this, file = program.folders.Database(), name = FromQt(group_)](const platform::CancelToken& cancel) {
    const auto preview = LookThrough(recipients::RecipientStore(file, {.cancel = &cancel}), name);
    return [this, preview] { Show(preview); };
  });
}

Result<CapitalizeForm::Preview> CapitalizeForm::LookThrough(const recipients::RecipientStore& store,
                                                            const std::string& group) {
  Preview preview;
  std::int64_t last = 0;
  const auto done = PreviewCapitals(store, group, [&](const recipients::NameChange& change) {
    if (preview.first.size() < kMostNamesShown) preview.first.push_back(change);
    ++preview.changes;
    preview.recipients += change.id == std::exchange(last, change.id) ? 0 : 1;
    return true;
  });
  if (!done) return done.error();
  return preview;
}

void CapitalizeForm::Show(const Result<Preview>& preview) {
  if (!preview) return question_->Fail(preview.error());
  preview_ = *preview;
  list_->Reset(preview_.first.size());
  ok_->setEnabled(preview_.recipients > 0);
  if (preview_.recipients == 0) return question_->Say(tr("All names are written as names are."));
  const QString question = InWords(recipients::CapitaliseQuestion(preview_.recipients, FromQt(group_)));
  const auto more = preview_.changes - static_cast<std::int64_t>(preview_.first.size());
  question_->Say(more == 0 ? question
                           : Counted(more, tr("And 1 change more."), tr("And %1 changes more.")) + ' ' + question);
}

QString CapitalizeForm::Text(std::size_t row, int column) const {
  const recipients::NameChange& change = preview_.first.at(row);
  return ToQt(column == 0 ? change.address : column == 1 ? change.before : change.after);
}

}  // namespace quillcast::desktop
