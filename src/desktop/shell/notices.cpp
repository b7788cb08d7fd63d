#include "desktop/shell/notices.h"

#include <QApplication>
#include <QTimer>
#include <QVBoxLayout>

#include "account/account_settings.h"
#include "desktop/run/pictures_panel.h"
#include "desktop/shell/practice_mailbox.h"
#include "desktop/widgets/qt_text.h"
#include "platform/text.h"
#include "run/damaged_runs.h"
#include "run/kept_runs.h"
#include "run/left_run.h"

namespace quillcast::desktop {
namespace {

constexpr int kArrivalsPause = 250;  // milliseconds
constexpr int kWatchPause = 1000;    // milliseconds
constexpr std::size_t kLongestInNotice = 100;

}  // namespace

Notices::Notices(const profile::Program& program, const document::Drafts& drafts, PracticeMailbox& practice,
                 QWidget* parent)
    : QWidget(parent),
      program_(program),
      drafts_(drafts),
      practice_(practice),
      bar_(new NoticeBar(this)),
      pictures_(new PicturesPanel(program, this)),
      arrivals_(new QTimer(this)),
      watch_(new QTimer(this)) {
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(0);
  column->addWidget(bar_);
  column->addWidget(pictures_);
  pictures_->DropLetters();
  connect(pictures_, &PicturesPanel::Known, this, [this] {
    if (pictures_->asks() != bar_->isHidden()) Refresh();
  });
  connect(&practice_, &PracticeMailbox::Arrived, this, [this] {
    ++arrived_;
    if (!arrivals_->isActive()) arrivals_->start(kArrivalsPause);
  });
  arrivals_->setSingleShot(true);
  connect(arrivals_, &QTimer::timeout, this, &Notices::Refresh);
  watch_->setInterval(kWatchPause);
  connect(watch_, &QTimer::timeout, this, &Notices::LookAtPractice);
}

void Notices::Refresh() {
  if (pictures_->asks()) {
    bar_->hide();
  } else if (cut_off_) {
    ShowCutOff();
  } else if (drafts_.AreOffered()) {
    ShowDraft();
  } else if (practice_.practice().Serves()) {
    bar_->Show(PracticeSentence(), PracticeOffers());
  } else {
    ShowAccount();
  }
}

// The newest is offered; the window of all runs has the others.
void Notices::LookForCutOff() {
  cut_off_.reset();
  if (std::filesystem::exists(program_.folders.RunJournal(), IgnoreErrors())) {
    const platform::CancelToken none;
    const auto journal = run::OpenJournal(program_.folders, program_.clock, none);
    auto found = journal ? run::CutOffMailings(**journal, run::LeftRuns(program_.settings))
                         : Result<run::JournalList>(journal.error());
    const auto whole = found ? run::CheckIsWhole(*found) : found.error();
    if (found) {
      std::erase_if(found->mailings,
                    [this](const auto& mailing) { return left_for_later_.contains(mailing.runs.back().id); });
      if (!found->mailings.empty()) cut_off_ = std::move(found->mailings.front());
    }
    // What is damaged was perhaps cut off: it is told once.
    if (!whole && (!found || !std::exchange(told_of_damage_, true))) emit Failed(whole.error());
  }
  Refresh();
}

void Notices::ShowCutOff() {
  QStringList sentences = {tr("The run “%1” to %2 was cut off.")
                               .arg(ToQt(platform::Printable(cut_off_->subject, kLongestInNotice)),
                                    ToQt(platform::Printable(cut_off_->group, kLongestInNotice)))};
  for (const auto& sentence : run::WhatIsLeft(*cut_off_)) sentences << InWords(sentence);
  // Each is about the run that it stands beside, whatever is looked for meanwhile.
  const run::RunId last = cut_off_->runs.back().id;
  bar_->Show(sentences.join(' '), {{tr("Go o&n…"), "GoOnWithRunButton", [this, last] { emit RunsPressed(last); }},
                                   {tr("Not &just now"), "LaterButton", [this, last] {
                                      left_for_later_.insert(last);
                                      LookForCutOff();
                                    }}});
}

void Notices::ShowDraft() {
  const QString subject = ToQt(platform::Printable(drafts_.OfferedSubject(), kLongestInNotice));
  QStringList sentences = {subject.isEmpty() ? tr("An unfinished message was kept.")
                                             : tr("An unfinished message was kept: “%1”.").arg(subject)};
  std::vector<NoticeBar::Offer> offers = {{tr("Restore"), "RestoreButton", [this] { emit RestorePressed(); }},
                                          {tr("Discard"), "DiscardButton", [this] { Discard(); }}};
  if (practice_.practice().Serves()) {  // a kept message may stand there for long
    sentences << PracticeSentence();
    for (auto& offer : PracticeOffers()) offers.push_back(std::move(offer));
  }
  bar_->Show(sentences.join(' '), offers);
}

QString Notices::PracticeSentence() const {
  const QString arrived = Counted(arrived_, tr("1 message has arrived."), tr("%1 messages have arrived."));
  return tr("Practice: what you send goes to a mailbox on this machine and nowhere else. %1").arg(arrived);
}

std::vector<NoticeBar::Offer> Notices::PracticeOffers() {
  return {{tr("Show them"), "ShowPracticeButton", [this] { emit PracticePressed(); }},
          {tr("End practice"), "EndPracticeButton", [this] { EndPractice(); }}};
}

void Notices::ShowAccount() {
  const auto filled_in = account::AccountIsFilledIn(program_.settings);
  if (!filled_in) return emit Failed(filled_in.error());  // what is shown stands until it can be read
  if (*filled_in) {
    bar_->hide();
    return;
  }
  const bool names_server = !IgnoreErrors(program_.settings.Read(account::kAccountSection, "Server", ""), "").empty();
  bar_->Show(names_server ? tr("The mail account is not complete yet. Fill in what it lacks, or practise first with a "
                               "mailbox on this machine.")
                          : tr("There is no mail account yet. Fill it in, or practise first with a mailbox on this "
                               "machine."),
             {{tr("Fill i&n the account…"), "FillInButton", [this] { emit AccountPressed(); }},
              {tr("&Practise"), "PractiseButton", [this] { IgnoreErrors(BeginPractice()); }}});
}

void Notices::Discard() {
  drafts_.DropOffered();
  Refresh();
}

// What another program has taken over meanwhile is ended.
void Notices::GoOnPractising() {
  const auto was_on = practice_.practice().WasOn();
  may_go_on_ = !was_on;
  if (!was_on) return watch_->start();
  *was_on ? IgnoreErrors(BeginPractice()) : LookAtPractice();
}

// What cannot be read or written now is looked at anew the next time.
void Notices::LookAtPractice() {
  if (may_go_on_) return GoOnPractising();
  auto& practice = practice_.practice();
  if (!practice.is_on()) watch_->stop();
  if (QApplication::activeModalWidget() == nullptr) {
    const auto ended = practice.EndWhereLeft();
    if (ended && *ended) return TellEnd(**ended);
  }
  if (!practice.Serves()) Refresh();
}

void Notices::TellEnd(const account::PracticeEnd& end) {
  emit PracticeChanged();
  Refresh();
  emit PracticeTold(InWords(account::InWords(end)));
}

// Counted before it takes any more, for each of those is announced.
Result<void> Notices::BeginPractice() {
  arrived_ = static_cast<qint64>(account::PracticeMessages(practice_.practice().folder()).size());
  auto begun = practice_.Begin();
  if (!begun) emit Failed(begun.error());
  if (begun) watch_->start();
  if (begun) emit PracticeTold(tr("Practice is on."));
  emit PracticeChanged();
  Refresh();
  return begun;
}

void Notices::EndPractice() {
  const auto ended = practice_.practice().End();
  if (ended) return TellEnd(*ended);
  emit Failed(ended.error());
  Refresh();
}

}  // namespace quillcast::desktop
