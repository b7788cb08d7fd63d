#include "desktop/recipients/recipient_move_form.h"

#include <QComboBox>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>
#include <atomic>

#include "desktop/recipients/group_new_form.h"
#include "desktop/widgets/count_bar.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/progress_panel.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/row_list.h"
#include "desktop/widgets/status_line.h"
#include "platform/text.h"
#include "recipients/group_checks.h"

namespace quillcast::desktop {
namespace {

constexpr int kTick = 100;              // milliseconds
constexpr int kDuplicatesHeight = 120;  // pixels
constexpr int kNarrowestWindow = 460;

}  // namespace

struct RecipientMoveForm::Progress {
  std::atomic<std::int64_t> done = 0;
  std::atomic<std::int64_t> total = 0;
};

RecipientMoveForm::RecipientMoveForm(const profile::Program& program, QString from, std::vector<std::int64_t> keys,
                                     QWidget* parent)
    : QDialog(parent),
      program_(program),
      from_(std::move(from)),
      keys_(std::move(keys)),
      task_(new BackgroundTask(this)),
      tick_(new QTimer(this)),
      group_(new QComboBox(this)),
      new_group_(new QPushButton(tr("&New Group…"), this)),
      move_(new QRadioButton(tr("&Move them: they leave “%1”").arg(from_), this)),
      copy_(new QRadioButton(tr("&Copy them: they stay in “%1” as well").arg(from_), this)),
      duplicates_(new RowList(
          "DuplicatesList", tr("There already"), {{}},
          [this](std::size_t row, int) { return ToQt(platform::Printable(duplicate_entries_[row])); }, this)),
      status_(new StatusLine(this)),
      progress_(new ProgressPanel("CancelButton", tr("Cancel"), this)),
      bar_(progress_->AddBar("ProgressBar", tr("Recipients done:"))),
      ok_(new QPushButton(tr("OK"), this)) {
  MakeWindow();
  connect(new_group_, &QPushButton::clicked, this, &RecipientMoveForm::MakeGroup);
  connect(ok_, &QPushButton::clicked, this, &RecipientMoveForm::accept);
  connect(progress_, &ProgressPanel::Pressed, this, &RecipientMoveForm::reject);
  connect(tick_, &QTimer::timeout, this,
          [this] { bar_->Count(static_cast<std::uint64_t>(seen_->done), static_cast<std::uint64_t>(seen_->total)); });
  ShowGroups();
  group_->setFocus();
}

RecipientMoveForm::~RecipientMoveForm() = default;

void RecipientMoveForm::MakeWindow() {
  setObjectName("RecipientMoveForm");
  setWindowTitle(tr("Move or Copy Recipients"));
  setMinimumWidth(kNarrowestWindow);
  new_group_->setObjectName("NewGroupButton");
  new_group_->setAutoDefault(false);
  ok_->setObjectName("OKButton");
  ok_->setDefault(true);
  duplicates_->setFixedHeight(kDuplicatesHeight);
  duplicates_->hide();
  auto* column = new FormColumn(this);
  AddTarget(column);
  column->Add(status_);
  column->Add(duplicates_);
  progress_->AddBeside(ok_);
  column->Add(progress_);
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
  if (!moves || program_.prompts.Ask(question) == platform::Answer::kYes) Start(moves, to);
}

void RecipientMoveForm::Start(bool moves, const std::string& to) {
  seen_ = std::make_shared<Progress>();
  task_->Start([this, moves, to, from = FromQt(from_), keys = keys_, file = program_.folders.Database(),
                seen = seen_](const platform::CancelToken& cancel) {
    const recipients::RecipientStore store(file, {.cancel = &cancel});
    const auto see = [seen](std::int64_t done, std::int64_t total) {
      seen->total = total;
      seen->done = done;
    };
    const auto outcome = moves ? recipients::MoveRecipients(store, from, to, keys, see)
                               : recipients::CopyRecipients(store, from, to, keys, see);
    return [this, moves, to, outcome] { End(moves, ToQt(to), outcome); };
  });
  tick_->start(kTick);
  EnableControls();
}

void RecipientMoveForm::End(bool moves, const QString& to, const Result<recipients::MoveOutcome>& outcome) {
  tick_->stop();
  bar_->Count(0, 0);
  if (!outcome) {
    EnableControls();
    return status_->Fail(outcome.error());
  }
  has_moved_ = moves && outcome->done > 0;
  const QString one = moves ? tr("1 recipient was moved to “%1”.") : tr("1 recipient was copied to “%1”.");
  const QString many = moves ? tr("%1 recipients were moved to “%2”.") : tr("%1 recipients were copied to “%2”.");
  said_ = Counted(outcome->done, one.arg(to), many.arg("%1", to));
  if (outcome->duplicates == 0) return QDialog::accept();
  is_done_ = true;
  ShowDuplicates(*outcome);
  EnableControls();
}

void RecipientMoveForm::ShowDuplicates(const recipients::MoveOutcome& outcome) {
  said_ += ' ' + Counted(outcome.duplicates, tr("1 was there already."), tr("%1 were there already."));
  status_->Say(said_);
  duplicate_entries_ = outcome.duplicate_entries;
  duplicates_->Reset(duplicate_entries_.size());
  duplicates_->show();
  progress_->button()->setText(tr("Close"));
  progress_->button()->setFocus();
}

void RecipientMoveForm::EnableControls() {
  const bool is_idle = !task_->is_running() && !is_done_;
  for (QWidget* control : std::initializer_list<QWidget*>{group_, new_group_, move_, copy_, ok_})
    control->setEnabled(is_idle);
}

void RecipientMoveForm::reject() {
  if (task_->is_running()) return task_->Cancel();
  QDialog::reject();
}

}  // namespace quillcast::desktop
