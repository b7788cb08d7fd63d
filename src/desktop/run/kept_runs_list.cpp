#include "desktop/run/kept_runs_list.h"

#include <QDateTime>
#include <QLocale>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "desktop/widgets/background_task.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/row_list.h"
#include "platform/text.h"
#include "run/kept_runs.h"

namespace quillcast::desktop {
namespace {

constexpr std::size_t kLongestSubject = 60;
constexpr int kLookPause = 1500;  // milliseconds

enum ListColumn : int { kNumber, kBegan, kWhat, kGroup, kStanding };

Result<run::JournalList> Read(const profile::Program& program, const platform::CancelToken& cancel) {
  const auto journal = run::OpenJournal(program.folders, program.clock, cancel);
  if (!journal) return journal.error();
  return (*journal)->List();
}

QString WhenText(std::chrono::sys_seconds moment, const platform::Clock& clock) {
  const std::tm local = clock.Local(moment);
  const QDateTime when(QDate(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday),
                       QTime(local.tm_hour, local.tm_min, std::min(local.tm_sec, 59)));
  return QLocale().toString(when, QLocale::ShortFormat);
}

}  // namespace

KeptRunsList::KeptRunsList(const profile::Program& program, QWidget* parent)
    : QWidget(parent),
      program_(program),
      grid_(new RowList(
          "KeptRunsGrid", tr("Runs"),
          {{tr("#"), 5, true}, {tr("Began"), 21}, {tr("Message"), 37}, {tr("Group"), 23}, {tr("Standing")}},
          [this](std::size_t row, int column) { return TextOf(row, column); }, this)),
      pause_(new QTimer(this)),
      look_(new BackgroundTask(this)) {
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->addWidget(grid_);
  setFocusProxy(grid_);
  connect(grid_, &RowList::ChosenChanged, this, &KeptRunsList::ChosenChanged);
  pause_->setSingleShot(true);
  pause_->setInterval(kLookPause);
  connect(pause_, &QTimer::timeout, this, &KeptRunsList::Look);
}

Result<void> KeptRunsList::Fill() {
  const platform::CancelToken none;
  look_->GiveUp();
  auto kept = Read(program_, none);
  grid_->SetEmptyText(kept ? tr("What becomes of each recipient is kept here while a message goes out. Send one to see "
                                "it.")
                           : tr("What is kept of the runs cannot be read; the line below says why."));
  Result<void> read = kept ? Result<void>() : kept.error();
  Take(kept ? *std::move(kept) : run::JournalList());
  if (isVisible()) pause_->start();
  return read;
}

const run::MailingEntry* KeptRunsList::Mailing() const {
  const auto chosen = grid_->Chosen();
  return chosen.empty() || chosen.front() >= lines_.size() ? nullptr : &kept_.mailings[lines_[chosen.front()].mailing];
}

std::optional<run::DamagedMailing> KeptRunsList::Damaged() const {
  const auto chosen = grid_->Chosen();
  if (chosen.empty() || chosen.front() < lines_.size()) return {};
  return kept_.damaged[chosen.front() - lines_.size()];
}

void KeptRunsList::ChooseRun(run::RunId run) {
  for (std::size_t row = 0; row < lines_.size(); ++row) {
    const auto& runs = kept_.mailings[lines_[row].mailing].runs;
    if (std::ranges::find(runs, run, &run::RunEntry::id) == runs.end()) continue;
    grid_->Choose(row);  // its first line
    return;
  }
}

bool KeptRunsList::ChooseReport(std::string_view history) {
  const auto line = std::ranges::find_if(lines_, [&](const Line& each) { return RunOf(each).history == history; });
  const bool is_there = line != lines_.end();
  is_there ? grid_->Choose(static_cast<std::size_t>(line - lines_.begin())) : grid_->ChooseNone();
  return is_there;
}

void KeptRunsList::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  pause_->start();
}

void KeptRunsList::hideEvent(QHideEvent* event) {
  QWidget::hideEvent(event);
  pause_->stop();
}

// What cannot be read now is looked at the next time.
void KeptRunsList::Look() {
  look_->Start([this, &program = program_](const platform::CancelToken& cancel) -> std::function<void()> {
    auto kept = Read(program, cancel);
    return [this, kept = std::move(kept)] {
      if (kept && *kept != kept_) {
        Take(*kept);
        emit Followed();
      }
      if (isVisible()) pause_->start();
    };
  });
}

run::RunId KeptRunsList::NumberIn(std::size_t row) const {
  if (row < lines_.size()) return RunOf(lines_[row]).id;
  const run::DamagedMailing& damaged = kept_.damaged[row - lines_.size()];
  return damaged.run != 0 ? damaged.run : -damaged.id;
}

std::vector<run::RunId> KeptRunsList::Numbers() const {
  std::vector<run::RunId> numbers;
  for (std::size_t row = 0; row < lines_.size() + kept_.damaged.size(); ++row) numbers.push_back(NumberIn(row));
  return numbers;
}

// Told once, when all of it stands: nobody sees a list in which nothing is chosen meanwhile.
void KeptRunsList::Take(run::JournalList kept) {
  const auto chosen = grid_->Chosen();
  const run::RunId stays = chosen.empty() ? 0 : NumberIn(chosen.front());
  const std::size_t row = chosen.empty() ? 0 : chosen.front();
  const run::RunId first_of_it = Mailing() == nullptr ? stays : Mailing()->runs.front().id;
  const auto before = Numbers();
  kept_ = std::move(kept);
  lines_.clear();
  for (std::size_t mailing = 0; mailing < kept_.mailings.size(); ++mailing) {
    for (std::size_t run = 0; run < kept_.mailings[mailing].runs.size(); ++run) lines_.push_back({mailing, run});
  }
  const auto now = Numbers();
  if (before == now) return grid_->viewport()->update();
  auto same = now.end();
  {
    const QSignalBlocker quiet(grid_);
    QScrollBar* const bar = grid_->verticalScrollBar();
    const int scrolled = bar->value();
    grid_->Reset(now.size());
    same = std::ranges::find(now, stays);
    if (same == now.end()) same = std::ranges::find(now, first_of_it);
    const bool is_there = same != now.end();
    if (!now.empty() && (before.empty() || !chosen.empty()))
      grid_->Choose(is_there ? static_cast<std::size_t>(same - now.begin()) : std::min(row, now.size() - 1));
    if (is_there || !chosen.empty()) bar->setValue(scrolled);
  }
  if (same == now.end() || *same != stays) emit ChosenChanged();
}

QString KeptRunsList::TextOf(std::size_t row, int column) const {
  if (row >= lines_.size()) return TextOf(kept_.damaged[row - lines_.size()], column);
  const run::MailingEntry& mailing = kept_.mailings[lines_[row].mailing];
  const run::RunEntry& run = RunOf(lines_[row]);
  const bool is_first = lines_[row].run == 0;
  switch (column) {
    case kNumber:
      return QLocale::c().toString(static_cast<qlonglong>(run.id));
    case kBegan:
      return WhenText(run.began, program_.clock);
    case kWhat:
      if (!is_first) return tr("went on with %1").arg(mailing.runs.front().id);
      return ToQt(platform::Printable(mailing.subject, kLongestSubject));
    case kGroup:
      return is_first ? ToQt(platform::Printable(mailing.group, kLongestSubject)) : QString();
    default:
      return is_first ? StandingOf(mailing) : StandingOf(run);
  }
}

QString KeptRunsList::TextOf(const run::DamagedMailing& damaged, int column) {
  switch (column) {
    case kNumber:
      return damaged.run == 0 ? QString("?") : QString::number(damaged.run);
    case kWhat:
      return ToQt(platform::Printable(damaged.subject, kLongestSubject));
    case kGroup:
      return ToQt(platform::Printable(damaged.group, kLongestSubject));
    case kStanding:
      return tr("damaged: it can only be forgotten");
    default:
      return {};
  }
}

// Where others went on with it, how its first run stands is not how it does.
QString KeptRunsList::StandingOf(const run::MailingEntry& mailing) {
  const QString standing = ToQt(run::StandingText(mailing));
  const bool was_cut_off = mailing.runs.front().standing == run::RunStanding::kCutOff;
  return mailing.runs.size() > 1 && was_cut_off ? tr("%1 (its first run was cut off)").arg(standing) : standing;
}

// Of a run that went on: what came of the recipients stands at the mailing.
QString KeptRunsList::StandingOf(const run::RunEntry& run) const {
  const QString whom = run.kind == run::RunKind::kRetry
                           ? Counted(run.recipients, tr("1 recipient once more"), tr("%1 recipients once more"))
                           : Counted(run.recipients, tr("1 recipient"), tr("%1 recipients"));
  return run.standing == run::RunStanding::kEnded ? whom : tr("%1, %2").arg(whom, tr(run::Name(run.standing)));
}

}  // namespace quillcast::desktop
