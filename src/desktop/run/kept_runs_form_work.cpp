// What the buttons of the window of runs do with those who are chosen, on a thread of its own.
#include <QLineEdit>

#include "desktop/run/kept_runs_form.h"
#include "desktop/widgets/background_task.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/status_line.h"
#include "platform/file_attributes.h"
#include "run/damaged_runs.h"
#include "run/mailing_lists.h"
#include "run/mailing_page.h"
#include "run/proposed_name.h"

namespace quillcast::desktop {
namespace {

constexpr platform::LockPatience kLockPatience{.lock_wait = std::chrono::seconds(5)};

}  // namespace

void KeptRunsForm::Work(std::function<Result<Sentence>(run::RunJournal&, const platform::CancelToken&)> work) {
  focus_before_ = focusWidget();
  task_->Start([this, work = std::move(work), &folders = program_.folders,
                &clock = program_.clock](const platform::CancelToken& cancel) -> std::function<void()> {
    const auto journal = run::OpenJournal(folders, clock, cancel);
    auto done = journal ? work(**journal, cancel) : Result<Sentence>(journal.error());
    return [this, done = std::move(done)] {
      Fill();
      // A button that can be pressed no more had lost it.
      if (focusWidget() == focus_meanwhile_ && focus_before_ != nullptr && focus_before_->isEnabled())
        focus_before_->setFocus();
      done ? Tell(InWords(*done)) : status_->Fail(done.error());
    };
  });
  EnableButtons();
  focus_meanwhile_ = focusWidget();
  status_->Say(tr("Working…"));
}

void KeptRunsForm::ExportList() {
  if (runs_->Mailing() == nullptr) return;
  const run::MailingEntry mailing = *runs_->Mailing();
  const run::RecipientChoice choice = choice_;
  const auto file =
      program_.prompts.PickSaveFile({.title = "Save List",
                                     .filter = "Comma Separated Values (*.csv)|*.csv|All Files (*.*)|*.*",
                                     .name = run::ProposedName(mailing, run::WhatIsIn(choice), ".csv", program_.clock),
                                     .ask_before_overwriting = true});
  if (file.empty()) return;
  const auto may_write = platform::MayWriteTo(file, program_.folders.OwnFiles(), program_.prompts);
  if (!may_write) return status_->Fail(may_write.error());
  if (!*may_write) return status_->Say(InWords(platform::LeftLocked(file)));
  Work([file, id = mailing.id, choice, own = program_.folders.OwnFiles()](
           run::RunJournal& journal, const platform::CancelToken& cancel) -> Result<Sentence> {
    std::int64_t rows = 0;
    auto written = platform::ReplaceChosenFile(file, own, [&](int fd) -> Result<void> {
      const auto listed = run::WriteList(journal, id, choice, cancel,
                                         [&](std::string_view text) { return platform::WriteAll(fd, file, text); });
      if (!listed) return listed.error();
      rows = *listed;
      return {};
    });
    if (!written) return written.error();
    return SayOf(rows, "{} recipient was written to {}.", "{} recipients were written to {}.", file.string());
  });
}

void KeptRunsForm::MakeGroup() {
  const run::MailingEntry* mailing = runs_->Mailing();
  if (mailing == nullptr) return;
  Work([mailing = *mailing, choice = choice_, name = FromQt(group_->text().trimmed()),
        database = program_.folders.Database()](run::RunJournal& journal,
                                                const platform::CancelToken& cancel) -> Result<Sentence> {
    recipients::RecipientStore store(database, {.lock_wait = kLockPatience.lock_wait, .cancel = &cancel});
    const auto made = run::MakeGroup(journal, mailing, choice, name, store);
    if (!made) return made.error();
    const Sentence done = made->added == 1
                              ? Say("The group {} was made of 1 recipient.", name)
                              : Say("The group {} was made of {} recipients.", name, NumberValue(made->added));
    if (made->twice == 0) return done;
    return Say("{} {}", done,
               SayOf(made->twice, "{} more has an address that stands in it already.",
                     "{} more have addresses that stand in it already."));
  });
}

void KeptRunsForm::WriteReport() {
  if (runs_->Mailing() == nullptr) return;
  const run::MailingEntry mailing = *runs_->Mailing();
  const auto file =
      program_.prompts.PickSaveFile({.title = "Save Report",
                                     .filter = "HTML Files (*.html)|*.html|All Files (*.*)|*.*",
                                     .name = run::ProposedName(mailing, "report", ".html", program_.clock),
                                     .ask_before_overwriting = true});
  if (file.empty()) return;
  const auto may_write = platform::MayWriteTo(file, program_.folders.OwnFiles(), program_.prompts);
  if (!may_write) return status_->Fail(may_write.error());
  if (!*may_write) return status_->Say(InWords(platform::LeftLocked(file)));
  Work([file, mailing, own = program_.folders.OwnFiles(), &clock = program_.clock](
           run::RunJournal& journal, const platform::CancelToken& cancel) -> Result<Sentence> {
    auto written = platform::ReplaceChosenFile(file, own, [&](int fd) {
      return run::WriteMailingPage(journal, mailing, clock, cancel,
                                   [&](std::string_view html) { return platform::WriteAll(fd, file, html); });
    });
    if (!written) return written.error();
    return Say("The report is in {}.", file.string());
  });
}

void KeptRunsForm::ForgetDamaged(const run::DamagedMailing& damaged) {
  if (program_.prompts.Ask(FromQt(InWords(run::ForgetQuestion(damaged)))) != platform::Answer::kYes) return;
  Work([id = damaged.id](run::RunJournal& journal, const platform::CancelToken&) -> Result<Sentence> {
    const auto gone = journal.Forget(id);
    return gone ? Result(run::DamagedAreForgotten(1)) : gone.error();
  });
}

void KeptRunsForm::Forget() {
  if (const auto damaged = runs_->Damaged()) return ForgetDamaged(*damaged);
  if (runs_->Mailing() == nullptr) return;
  const run::MailingEntry mailing = *runs_->Mailing();
  if (program_.prompts.Ask(FromQt(InWords(run::ForgetQuestion(mailing)))) != platform::Answer::kYes) return;
  Work([mailing, history = program_.folders.History()](run::RunJournal& journal,
                                                       const platform::CancelToken&) -> Result<Sentence> {
    const auto gone = journal.Forget(mailing.id);
    if (!gone) return gone.error();
    return run::WhatIsForgotten(mailing, mailing.runs.front().id, history);
  });
}

}  // namespace quillcast::desktop
