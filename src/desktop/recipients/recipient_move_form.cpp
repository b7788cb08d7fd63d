#include "desktop/recipients/recipient_move_form.h"

#include <QComboBox>
#include <QPushButton>
#include <QRadioButton>

#include "desktop/recipients/group_new_form.h"
#include "desktop/recipients/work_panel.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/row_list.h"
#include "desktop/widgets/status_line.h"
#include "platform/text.h"
#include "recipients/group_checks.h"

namespace quillcast::desktop {

using recipients::EditKind;

namespace {

constexpr int kDuplicatesHeight = 120;  // pixels
constexpr int kNarrowestMoveWindow = 460;

// Its own “&” is no mnemonic.
QString InLabel(const QString& name) { return QString(name).replace('&', "&&"); }

}  // namespace

RecipientMoveForm::RecipientMoveForm(const profile::Program& program, QString from, std::vector<std::int64_t> keys,
                                     QWidget* parent)
    : QDialog(parent),
      program_(program),
      from_(std::move(from)),
      keys_(std::move(keys)),
      group_(new QComboBox(this)),
      new_group_(new QPushButton(tr("&New Group…"), this)),
      move_(new QRadioButton(tr("&Move them: they leave “%1”").arg(InLabel(from_)), this)),
      copy_(new QRadioButton(tr("&Copy them: they stay in “%1” as well").arg(InLabel(from_)), this)),
      duplicates_(new RowList(
          "DuplicatesList", tr("There already"), {{}},
          [this](std::size_t row, int) { return ToQt(platform::Printable(duplicate_entries_[row])); }, this)),
      status_(new StatusLine(this)),
      work_(new WorkPanel(program, this)),
      ok_(new QPushButton(tr("OK"), this)) {
  MakeWindow();
  connect(new_group_, &QPushButton::clicked, this, &RecipientMoveForm::MakeGroup);
  connect(ok_, &QPushButton::clicked, this, &RecipientMoveForm::accept);
  connect(work_, &WorkPanel::Closing, this, &RecipientMoveForm::reject);
  connect(work_, &WorkPanel::Started, this, [this] { EnableControls(false); });
  connect(work_, &WorkPanel::Ended, this, [this] { EnableControls(true); });
  ShowGroups();
  group_->setFocus();
}

void RecipientMoveForm::MakeWindow() {
  setObjectName("RecipientMoveForm");
  setWindowTitle(tr("Move or Copy Recipients"));
  setMinimumWidth(kNarrowestMoveWindow);
  new_group_->setObjectName("NewGroupButton");
  ok_->setObjectName("OKButton");
  ok_->setDefault(true);
  duplicates_->setFixedHeight(kDuplicatesHeight);
  duplicates_->hide();
  auto* column = new FormColumn(this);
  AddTarget(column);
  column->Add(status_);
  column->Add(duplicates_);
  column->Add(work_);
  work_->AddBeside(ok_);  // once it is in the window, whose order it follows
  status_->Say(Counted(static_cast<std::int64_t>(keys_.size()), tr("1 recipient of “%1”.").arg(from_),
                       tr("%1 recipients of “%2”.").arg("%1", from_)));
}

void RecipientMoveForm::AddTarget(FormColumn* column) {
  FormGrid* what = column->AddGrid();
  group_->setPlaceholderText(tr("Choose a group"));
  what->Add("GroupComboBox", tr("To &group:"), group_, {new_group_});
  what->AddWide("MoveRadioButton", move_);
  what->AddWide("CopyRadioButton", copy_);
  move_->setChecked(true);
}

void RecipientMoveForm::ShowGroups() {
  const auto names = recipients::RecipientStore(program_.folders.Database(), profile::kWindowPatience).ListGroupNames();
  if (!names) return status_->Fail(names.error());
  for (const std::string& name : *names) {
    if (!recipients::CheckOtherGroup(FromQt(from_), name)) group_->addItem(ToQt(name));
  }
  group_->setCurrentIndex(-1);
}

void RecipientMoveForm::MakeGroup() {
  GroupNewForm form(program_, this);
  if (form.exec() != QDialog::Accepted) return;
  has_made_group_ = true;
  group_->addItem(form.name());
  group_->setCurrentIndex(group_->count() - 1);
}

void RecipientMoveForm::accept() {
  const std::string to = FromQt(group_->currentText());
  if (const auto complaint = recipients::CheckOtherGroup(FromQt(from_), to)) {
    program_.prompts.Warn(complaint->message);
    group_->setFocus();
    return;
  }
  const bool moves = move_->isChecked();
  const auto question =
      recipients::MoveQuestion(static_cast<std::int64_t>(keys_.size()), FromQt(from_), to).InEnglish();
  if (!moves || program_.prompts.Ask(question) == platform::Answer::kYes)
    Start(moves ? EditKind::kMove : EditKind::kCopy, to);
}

void RecipientMoveForm::Start(EditKind kind, const std::string& to) {
  work_->Run<recipients::MoveOutcome>(
      [kind, to, from = FromQt(from_), keys = keys_](recipients::RecipientStore& store,
                                                     const recipients::OnProgress& progress) {
        return kind == EditKind::kMove ? recipients::MoveRecipients(store, from, to, keys, progress)
                                       : recipients::CopyRecipients(store, from, to, keys, progress);
      },
      [this, kind, to](const Result<recipients::MoveOutcome>& outcome) { End(kind, ToQt(to), outcome); });
}

void RecipientMoveForm::End(EditKind kind, const QString& to, const Result<recipients::MoveOutcome>& outcome) {
  if (!outcome) return status_->Say(InWords(outcome.error()), work_->KindOfFailure());
  const bool moves = kind == EditKind::kMove;
  has_moved_ = moves && (outcome->done > 0 || outcome->gone > 0);
  const QString one = moves ? tr("1 recipient was moved to “%1”.") : tr("1 recipient was copied to “%1”.");
  const QString many = moves ? tr("%1 recipients were moved to “%2”.") : tr("%1 recipients were copied to “%2”.");
  said_ = Counted(outcome->done, one.arg(to), many.arg("%1", to));
  if (outcome->gone > 0)
    said_ += ' ' + Counted(outcome->gone, tr("1 is no longer there."), tr("%1 are no longer there."));
  outcome->duplicates == 0 ? QDialog::accept() : ShowDuplicates(*outcome);
}

void RecipientMoveForm::ShowDuplicates(const recipients::MoveOutcome& outcome) {
  said_ += ' ' + Counted(outcome.duplicates, tr("1 was there already."), tr("%1 were there already."));
  status_->Say(said_);
  duplicate_entries_ = outcome.duplicate_entries;
  duplicates_->Reset(duplicate_entries_.size());
  duplicates_->show();
  EnableControls(false);
  work_->button()->setText(tr("Close"));
  work_->button()->setFocus();
}

void RecipientMoveForm::EnableControls(bool enabled) {
  for (QWidget* control : std::initializer_list<QWidget*>{group_, new_group_, move_, copy_, ok_})
    control->setEnabled(enabled);
}

void RecipientMoveForm::reject() {
  if (work_->is_working()) return work_->Cancel();
  QDialog::reject();
}

}  // namespace quillcast::desktop
