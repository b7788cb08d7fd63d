#include "desktop/run/kept_runs_form.h"

#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QScrollBar>
#include <algorithm>
#include <array>
#include <utility>

#include "desktop/widgets/background_task.h"
#include "desktop/widgets/filter_box.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/row_list.h"
#include "desktop/widgets/status_line.h"
#include "platform/text.h"
#include "run/damaged_runs.h"
#include "run/frozen/frozen_pace.h"

namespace quillcast::desktop {
namespace {

using run::ResultState;

// Whom the box offers, in its order, and the run that goes to them.
struct Whom {
  const char* text;
  run::RecipientChoice choice;
  std::optional<run::RunKind> kind;
  const char* button = QT_TRANSLATE_NOOP("quillcast::desktop::KeptRunsForm", "&Send to These…");
};
const std::array<Whom, 7>& Offered() {
  using run::RunKind;
  static const std::array<Whom, 7> offered = {{
      {QT_TRANSLATE_NOOP("quillcast::desktop::KeptRunsForm", "Not tried, or to be tried again"), run::WhoIsLeft(),
       RunKind::kResume, QT_TRANSLATE_NOOP("quillcast::desktop::KeptRunsForm", "Go on with The&se…")},
      {QT_TRANSLATE_NOOP("quillcast::desktop::KeptRunsForm", "Deferred and failed"), run::WhoMayBeReached(),
       RunKind::kRetry},
      {QT_TRANSLATE_NOOP("quillcast::desktop::KeptRunsForm", "Refused"), run::SetOf({ResultState::kRefused}),
       RunKind::kRetry},
      {QT_TRANSLATE_NOOP("quillcast::desktop::KeptRunsForm", "Unknown"), run::SetOf({ResultState::kUnknown}),
       RunKind::kResume},
      {QT_TRANSLATE_NOOP("quillcast::desktop::KeptRunsForm", "All who are not known to have got it"),
       run::StateSet().set().reset(static_cast<std::size_t>(ResultState::kSent)),
       {}},
      {QT_TRANSLATE_NOOP("quillcast::desktop::KeptRunsForm", "Sent"), run::SetOf({ResultState::kSent}), {}},
      {QT_TRANSLATE_NOOP("quillcast::desktop::KeptRunsForm", "Everybody"), run::StateSet().set(), {}},
  }};
  return offered;
}

}  // namespace

KeptRunsForm::KeptRunsForm(const profile::Program& program, QWidget* parent)
    : QDialog(parent),
      program_(program),
      pages_(program.folders, program.clock),
      runs_(new KeptRunsList(program, this)),
      people_(new RowList(
          "PeopleGrid", tr("Recipients"),
          {{tr("#"), 8, true}, {tr("Recipient"), 42}, {tr("State"), 27}, {tr("What the server said")}},
          [this](std::size_t row, int column) { return TextOfOne(row, column); }, this)),
      states_(new QComboBox(this)),
      reply_(new FilterBox("ReplyTextBox", {}, tr("Any; or the beginnings of its codes: 452, 5.2.2"), this)),
      group_(new QLineEdit(this)),
      status_(new StatusLine(this)),
      task_(new BackgroundTask(this)) {
  setObjectName("KeptRunsForm");
  setWindowTitle(tr("Runs"));
  resize(1180, 760);
  for (const Whom& whom : Offered()) states_->addItem(tr(whom.text));
  reply_->setMaxLength(255);
  group_->setMaxLength(255);
  auto* column = new FormColumn(this);
  column->Add(runs_, 2);
  auto* grid = column->AddGrid();
  grid->Add("StateComboBox", tr("&Whom:"), states_);
  grid->Add("ReplyTextBox", tr("With re&ply:"), reply_);
  column->Add(people_, 3);
  column->AddGrid()->Add("GroupTextBox", tr("&Group to make of them:"), group_);
  column->Add(status_);
  status_->KeepRoom(2);
  MakeButtons(column);
  connect(runs_, &KeptRunsList::ChosenChanged, this, &KeptRunsForm::MeetMailing);
  connect(runs_, &KeptRunsList::ChosenChanged, this, &KeptRunsForm::EnableButtons);
  connect(states_, &QComboBox::currentIndexChanged, this, &KeptRunsForm::EnableButtons);
  connect(reply_, &QLineEdit::textChanged, this, &KeptRunsForm::EnableButtons);
  connect(group_, &QLineEdit::textChanged, this, &KeptRunsForm::EnableButtons);
  // What came of the last button stays told, whatever other programs do meanwhile.
  connect(runs_, &KeptRunsList::Followed, this, [this] {
    const QString told = std::exchange(told_, {});
    EnableButtons();
    if (!told.isEmpty() && !task_->is_running()) Tell(told);
  });
  connect(group_, &QLineEdit::returnPressed, make_group_, &QPushButton::click);
  Fill();
  runs_->setFocus();
}

void KeptRunsForm::MakeButtons(FormColumn* column) {
  const auto make = [this](const char* name, const QString& text, auto press) {
    auto* button = new QPushButton(text, this);
    button->setObjectName(name);
    button->setAutoDefault(false);  // Enter in a box presses none: one of them sends
    connect(button, &QPushButton::clicked, this, press);
    return button;
  };
  send_ = make("SendToTheseButton", tr("&Send to These…"), [this] { SendToThese(); });
  list_ = make("SaveListButton", tr("Save &List…"), [this] { ExportList(); });
  make_group_ = make("MakeGroupButton", tr("&Make Group"), [this] { MakeGroup(); });
  report_ = make("PageButton", tr("&Report…"), [this] { WriteReport(); });
  forget_ = make("ForgetButton", tr("&Forget…"), [this] { Forget(); });
  column->AddLine({send_, list_, make_group_, nullptr});
  column->AddLine({report_, forget_, nullptr, make("CloseButton", tr("Close"), [this] { reject(); })});
}

// Enter presses the button that has the focus, and no other.
void KeptRunsForm::keyPressEvent(QKeyEvent* event) {
  auto* button = qobject_cast<QPushButton*>(focusWidget());
  if (button == nullptr || (event->key() != Qt::Key_Return && event->key() != Qt::Key_Enter)) {
    return QDialog::keyPressEvent(event);
  }
  button->click();
}

void KeptRunsForm::Fill() {
  const auto filled = runs_->Fill();
  EnableButtons();
  if (!filled) return status_->Fail(filled.error());
  const auto& damaged = runs_->AllDamaged();
  if (!damaged.empty() && !runs_->Damaged()) {
    status_->Say(tr("%1 See the end of the list.").arg(InWords(run::WhatIsDamaged(damaged))));
  }
}

void KeptRunsForm::Choose(run::RunId run) {
  runs_->ChooseRun(run);
  if (send_->isEnabled()) send_->setFocus();  // Enter goes on with it
}

void KeptRunsForm::ChooseReport(std::string_view history) {
  if (history.empty() || runs_->ChooseReport(history)) return;
  Tell(tr("The run of the report that is chosen in the history is no longer kept. The report itself stays there."));
}

QString KeptRunsForm::TextOfOne(std::size_t row, int column) {
  const auto one = pages_.At(static_cast<std::int64_t>(row));
  if (!one) return column == 3 ? InWords(one.error()) : QString();
  if (!*one) return {};
  switch (column) {
    case 0:
      return QLocale::c().toString(static_cast<qlonglong>((*one)->position));
    case 1:
      return ToQt(platform::Printable((*one)->address));
    case 2:
      return ToQt((*one)->standing);
    default:
      return ToQt(platform::Printable((*one)->why));
  }
}

void KeptRunsForm::ListThem() {
  const run::MailingEntry* mailing = runs_->Mailing();
  const run::MailingId id = mailing == nullptr ? 0 : mailing->id;
  const bool is_same = listed_ && listed_->first == id && listed_->second == choice_ &&
                       people_->size() == static_cast<std::size_t>(count_);
  if (is_same) return;
  const bool stays_there = listed_ && listed_->first == id && listed_->second == choice_;
  const int scrolled = people_->verticalScrollBar()->value();
  listed_ = {id, choice_};
  pages_.Choose(id, choice_);
  people_->Reset(static_cast<std::size_t>(count_));
  if (stays_there) people_->verticalScrollBar()->setValue(scrolled);
}

void KeptRunsForm::MeetMailing() {
  const run::MailingEntry* mailing = runs_->Mailing();
  if (mailing == nullptr || std::exchange(met_, mailing->id) == mailing->id) return;
  const auto& offered = Offered();
  const auto has_somebody = [&](const Whom& whom) { return run::KnownCount(*mailing, whom.choice).value_or(0) > 0; };
  const auto first = std::ranges::find_if(offered, has_somebody);
  if (first != offered.end()) states_->setCurrentIndex(static_cast<int>(first - offered.begin()));
}

Result<run::RecipientChoice> KeptRunsForm::Choice() const {
  auto replies = run::RepliesFrom(FromQt(reply_->text()));
  if (!replies) return replies.error();
  run::RecipientChoice choice = Offered().at(static_cast<std::size_t>(states_->currentIndex())).choice;
  choice.replies = *std::move(replies);
  return choice;
}

std::optional<run::RunKind> KeptRunsForm::Kind() const {
  return Offered().at(static_cast<std::size_t>(states_->currentIndex())).kind;
}

Result<std::int64_t> KeptRunsForm::Count() const {
  const run::MailingEntry* mailing = runs_->Mailing();
  if (mailing == nullptr) return 0;
  if (const auto known = run::KnownCount(*mailing, choice_)) return *known;
  const platform::CancelToken none;
  const auto journal = run::OpenJournal(program_.folders, program_.clock, none);
  return journal ? run::CountChosen(**journal, *mailing, choice_) : Result<std::int64_t>(journal.error());
}

void KeptRunsForm::Tell(const QString& done) {
  status_->Say(done);
  told_ = done;
}

QString KeptRunsForm::HowManyAreChosen() const {
  if (!choice_.replies.empty()) {
    return Counted(count_, tr("1 recipient of these has this reply."), tr("%1 recipients of these have this reply."));
  }
  return run::AreSeveral(choice_)
             ? Counted(count_, tr("1 recipient is in one of these states."),
                       tr("%1 recipients are in one of these states."))
             : Counted(count_, tr("1 recipient is in this state."), tr("%1 recipients are in this state."));
}

void KeptRunsForm::TellOfThem(const run::MailingEntry& mailing, bool is_sent_now) {
  QStringList sentences;
  if (is_sent_now) sentences << tr("This run goes on now.");
  // Of those who are left it is told below how many there are, and why; that there is nobody stands in the list.
  const bool is_told_below = choice_ == run::WhoIsLeft() && !is_sent_now;
  if (count_ > 0 && !is_told_below) sentences << HowManyAreChosen();
  const auto is_sent = run::SetOf({ResultState::kSent});
  const bool has_any_to_send_to = count_ > 0 && run::CountIn(mailing.counts, choice_.states & ~is_sent) > 0;
  if (has_any_to_send_to && !Kind() && !is_sent_now) {
    sentences << tr("To send to some of these, choose one state: not tried, deferred and failed, refused or unknown.");
  }
  for (const auto& sentence : run::WhatIsLeft(mailing)) sentences << InWords(sentence);
  status_->Say(sentences.join(' '));
}

void KeptRunsForm::EnableButtons() {
  told_.clear();
  const run::MailingEntry* mailing = runs_->Mailing();
  const bool is_free = mailing != nullptr && !task_->is_running();
  const bool is_sent_now = mailing != nullptr && run::StandingOf(*mailing) == run::MailingStanding::kGoesOn;
  const auto choice = Choice();
  choice_ = choice ? *choice : run::RecipientChoice();
  const auto count = choice ? Count() : Result<std::int64_t>(choice.error());
  count_ = count ? *count : 0;
  people_->SetEmptyText(mailing == nullptr || !count ? QString()
                        : choice_.replies.empty()    ? tr("Nobody is in this state.")
                                                     : tr("Nobody is in this state with this reply."));
  ListThem();
  const bool has_any = is_free && count_ > 0;
  send_->setText(tr(Offered().at(static_cast<std::size_t>(states_->currentIndex())).button));
  send_->setEnabled(has_any && Kind() && !is_sent_now);
  list_->setEnabled(has_any);
  make_group_->setEnabled(has_any && !group_->text().trimmed().isEmpty());
  report_->setEnabled(is_free);
  forget_->setEnabled((is_free && !is_sent_now) || (runs_->Damaged() && !task_->is_running()));
  if (runs_->Damaged() && !task_->is_running()) {
    status_->Say(
        tr("What is kept of this run is damaged, so that nobody can read what became of its recipients. "
           "Forget… deletes it; its report in the history stays."));
  }
  if (mailing == nullptr || task_->is_running()) return;
  if (!count) return status_->Fail(count.error());
  TellOfThem(*mailing, is_sent_now);
}

// Other programs may go on with it, or forget it, while the person is asked.
void KeptRunsForm::SendToThese() {
  if (runs_->Mailing() == nullptr || !Kind() || !go_on) return;
  const run::MailingEntry mailing = *runs_->Mailing();
  const std::int64_t count = count_;
  constexpr auto kAskOne =
      "The message was out and no answer came, so the recipient may get this one twice. Are you sure you want to "
      "send it again?";
  constexpr auto kAskSeveral =
      "Their messages were out and no answers came, so some of them may get this one twice. Are you sure you want to "
      "send it to them again?";
  if (run::Holds(choice_.states, ResultState::kUnknown) &&
      program_.prompts.Ask(count == 1 ? kAskOne : kAskSeveral) != platform::Answer::kYes) {
    return;
  }
  go_on({mailing.runs.front().id, *Kind(), choice_, mailing.subject, mailing.group, count,
         run::OptionsIn(mailing.runs.back().pace, program_.clock)});
  met_ = 0;  // another state may be the first with somebody in it
  Fill();
  MeetMailing();
  if (!send_->isEnabled()) runs_->setFocus();  // Enter presses no other button
}

}  // namespace quillcast::desktop
