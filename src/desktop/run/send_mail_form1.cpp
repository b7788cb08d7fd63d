#include "desktop/run/send_mail_form1.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QTabWidget>
#include <QTimer>
#include <QVBoxLayout>
#include <utility>

#include "account/account_steps.h"
#include "account/password_place.h"
#include "desktop/run/notes_panel.h"
#include "desktop/run/pictures_panel.h"
#include "desktop/run/range_picker.h"
#include "desktop/run/report_view.h"
#include "desktop/run/results_view.h"
#include "desktop/run/run_heading.h"
#include "desktop/run/shut_down_form.h"
#include "desktop/widgets/background_task.h"
#include "desktop/widgets/count_bar.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/note_panel.h"
#include "desktop/widgets/progress_panel.h"
#include "desktop/widgets/qt_prompts.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/read_first.h"
#include "desktop/widgets/status_line.h"
#include "platform/text.h"
#include "run/run_words.h"

namespace quillcast::desktop {
namespace {

constexpr int kMostNotes = 4;

QString SummaryText(const run::RunSummary& summary) {
  QStringList sentences(InWords(run::CountsOf(summary)));
  for (const Sentence& left : run::LeftBy(summary)) sentences << InWords(left);
  if (summary.stopped) sentences << InWords(*summary.stopped);
  return sentences.join(' ');
}

}  // namespace

SendMailForm1::SendMailForm1(const profile::Program& program, document::MessageDocument document,
                             run::ChosenGroup group, Server server, QWidget* parent)
    : QDialog(parent),
      program_(program),
      document_(std::move(document)),
      group_(std::move(group)),
      worker_(new RunWorker(program, this)),
      tick_(new QTimer(this)),
      heading_(new RunHeading(program, document_.subject, group_, server, this)),
      range_(new RangePicker(
          group_.recipients,
          [&program, chosen = group_](const run::PartialRange& range, const platform::CancelToken& cancel) {
            return run::Prepare({}, chosen, run::PlaceOf(program, cancel)).EndsOf(range);
          },
          this)),
      tabs_(new QTabWidget(this)),
      report_(new ReportView(this)),
      results_view_(new ResultsView(
          results_,
          {document_.subject, group_.group.name, std::chrono::floor<std::chrono::seconds>(program.clock.Now())},
          program, this)),
      pause_panel_(new NotePanel(NoteKind::kWarning, "PausePanel", "PauseLabel", this)),
      pictures_(new PicturesPanel(program, this)),
      shut_down_(new QCheckBox(tr("Automatically shut down the PC when successfully done"), this)),
      status_(new StatusLine(this)),
      before_(new NotesPanel(program, this)),
      progress_(new ProgressPanel("SendButton", tr("Send"), this)),
      run_bar_(progress_->AddBar("RunProgressBar", tr("The whole run:"))),
      message_bar_(progress_->AddBar("MessageProgressBar", tr("The current message:"))),
      hold_(new QPushButton(tr("Pa&use"), this)),
      button_(progress_->button()) {
  BuildWindow();
  Connect();
  button_->setFocus();
  pictures_->LookAt(document_);
  before_->LookAt(document_, group_);
}

namespace {

document::MessageDocument SubjectOf(const GoOnRequest& request) {
  document::MessageDocument document;
  document.subject = request.subject;
  return document;
}

run::ChosenGroup GroupOf(const GoOnRequest& request) {
  run::ChosenGroup chosen;
  chosen.group.name = request.group;
  chosen.recipients = request.recipients;
  return chosen;
}

// Empty where that cannot be read: the run itself tells why.
std::string SenderOf(const profile::Program& program, const GoOnRequest& request) {
  const platform::CancelToken none;
  const auto place = run::PlaceOf(program, none, profile::kWindowPatience);
  auto prepared = run::PrepareToGoOn(request.run, request.kind, request.choice, place);
  if (!prepared) return {};
  const auto account = prepared->Account();
  return account ? account::TextsOf(**account).from : std::string();
}

}  // namespace

// Its message, list and pictures were settled when it began: nothing of them is asked or looked at again.
SendMailForm1::SendMailForm1(const profile::Program& program, const GoOnRequest& request, Server server,
                             QWidget* parent)
    : SendMailForm1(program, SubjectOf(request), GroupOf(request), server, parent) {
  request_ = request;
  setWindowTitle(tr("Go On with a Run"));
  range_->hide();
  heading_->GoesOnWith(SenderOf(program, request), request.pace);
  before_->LookAt(request, heading_->way().pace);
}

void SendMailForm1::BuildWindow() {
  setObjectName("SendMailForm1");
  setWindowTitle(tr("Send"));
  resize(760, 560);
  setModal(true);
  tabs_->addTab(report_, tr("&Report"));
  tabs_->addTab(results_view_, tr("R&ecipients"));
  shut_down_->setObjectName("ShutDownCheckBox");
  button_->setDefault(true);
  pause_panel_->AddOffer("GoOnButton", tr("&Go on"), [this] { AnswerToGoOn(true); })->setAutoDefault(true);
  pause_panel_->AddOffer("StopButton", tr("S&top"), [this] { AnswerToGoOn(false); })->setAutoDefault(true);
  pause_panel_->hide();
  hold_->setObjectName("PauseButton");
  progress_->AddBeside(hold_);
  progress_->KeepRoom(2);
  hold_->hide();
  status_->hide();
  before_->AddQuestion(pictures_);

  auto* column = new FormColumn(this);
  column->Add(heading_);
  column->Add(range_);
  column->Add(tabs_, 1);
  column->Add(pause_panel_);
  column->Add(shut_down_);
  column->Add(status_);
  column->Add(before_);
  column->Add(progress_);
}

void SendMailForm1::Connect() {
  // A run that waits only for what there is to ask begins at no pace that is being chosen.
  connect(heading_, &RunHeading::Choosing, this, [this] { wants_to_send_ = false; });
  connect(heading_, &RunHeading::Chosen, this, [this] {
    if (request_) before_->LookAt(*request_, heading_->way().pace);
  });
  connect(progress_, &ProgressPanel::Pressed, this, &SendMailForm1::ButtonPressed);
  connect(hold_, &QPushButton::clicked, this, &SendMailForm1::HoldOrGoOn);
  connect(tick_, &QTimer::timeout, this, &SendMailForm1::TakeNews);
  connect(worker_, &RunWorker::Asked, this, &SendMailForm1::AskToGoOn, Qt::QueuedConnection);
  connect(worker_, &RunWorker::Ended, this, &SendMailForm1::RunFinished);
  connect(pictures_, &PicturesPanel::Known, this, &SendMailForm1::PicturesKnown);
  connect(pictures_, &PicturesPanel::Answered, this,
          [this](const std::vector<std::filesystem::path>& files, bool take) {
            document_.picture_places.Answer(files, take);
            before_->LookAt(document_, group_);
          });
}

// A question holds the button until it is answered. Where it was pressed before that was known, and there is none, the
// run begins now.
void SendMailForm1::PicturesKnown(bool settled) {
  if (stage_ != Stage::kIdle) return;
  button_->setEnabled(settled);
  button_->setToolTip(settled ? QString() : tr("See first to what stands above about pictures."));
  if (settled && std::exchange(wants_to_send_, false)) StartRun();
  wants_to_send_ = false;
}

void SendMailForm1::ButtonPressed() {
  switch (stage_) {
    case Stage::kIdle:
      wants_to_send_ = true;
      if (pictures_->is_settled()) StartRun();
      break;
    case Stage::kRunning:
      AskToCancel();
      break;
    case Stage::kFinished:
      accept();
  }
}

void SendMailForm1::StartRun() {
  const auto range = range_->Range();
  if (!range) {
    Say(InWords(range.error()), NoteKind::kFailure);
    return;
  }
  // Another window or program may have changed it meanwhile: nothing goes where the person was not told of.
  if (const auto change = heading_->TakeChange()) {
    Say(InWords(*change), NoteKind::kFailure);
    HoldUntilRead(button_);
    return;
  }
  stage_ = Stage::kRunning;
  button_->setText(tr("Cancel"));
  hold_->show();
  heading_->Begins();
  range_->setEnabled(false);
  before_->Close();
  tick_->start(kTick);
  if (const auto account = account::AccountSettings::Load(program_.settings)) {
    const QString first = InWords(account::WaitForPasswordText(*account));
    waits_for_password_ = !first.isEmpty();
    if (waits_for_password_) Say(first);
  }
  request_ ? worker_->GoOnWith(*request_, heading_->way()) : worker_->Start(document_, group_, *range, heading_->way());
}

void SendMailForm1::HoldOrGoOn() {
  const bool holds = !worker_->is_held();
  holds ? worker_->Hold() : worker_->GoOnAgain();
  hold_->setText(holds ? tr("Go &on") : tr("Pa&use"));
  TakeNews();
}

void SendMailForm1::AskToCancel() {
  if (cancel_asked_) {  // the second time gives up the message under way
    worker_->Stop();
    Say(tr("Giving up the message that is under way."));
    return;
  }
  if (asking_) return;
  asking_ = true;
  const auto answer = program_.prompts.Ask("Are you sure you want to cancel the sending process?");
  asking_ = false;
  if (answer != platform::Answer::kYes || stage_ != Stage::kRunning) return;
  cancel_asked_ = true;
  hold_->setEnabled(false);
  worker_->Stop();
  if (pause_panel_->isVisible()) AnswerToGoOn(false);
  Say(tr("Stopping after the message that is under way; cancel again to give that up too."));
}

// The run waits meanwhile. Once it is being cancelled there is nothing to ask.
void SendMailForm1::AskToGoOn(const QString& why) {
  if (cancel_asked_) {
    worker_->Answer(false);
    return;
  }
  TakeNews();  // what led to it can be read
  pause_panel_->SetText(why);
  pause_panel_->show();
  hold_->setEnabled(false);  // it waits anyhow
  QApplication::alert(this);
}

void SendMailForm1::AnswerToGoOn(bool go_on) {
  pause_panel_->hide();
  hold_->setEnabled(!cancel_asked_);
  button_->setFocus();
  worker_->Answer(go_on);
}

void SendMailForm1::reject() {
  switch (stage_) {
    case Stage::kRunning:
      AskToCancel();
      break;
    case Stage::kIdle:
    case Stage::kFinished:
      QDialog::reject();
  }
}

void SendMailForm1::TakeNews() {
  const RunNews news = worker_->TakeNews();
  if (news.report && !report_open_) {
    report_open_ = true;
    if (std::exchange(waits_for_password_, false) && !cancel_asked_) Say({});
    report_->Open(*news.report);
  }
  report_->Update();
  worker_->TakeResults(results_);
  results_view_->Grow();
  ShowProgress(news);
  for (const auto& note : news.notes) notes_ << ToQt(platform::Printable(FromQt(InWords(note))));
  if (!news.notes.empty()) Say({});
}

void SendMailForm1::ShowProgress(const RunNews& news) {
  const auto& [done, again, total, line] = news.progress;
  run_bar_->Count(static_cast<std::uint64_t>(done), static_cast<std::uint64_t>(total));
  const auto number = [](std::int64_t count) { return ToQt(platform::WithThousands(count)); };
  run_bar_->setFormat(again == 0
                          ? tr("%1 of %2").arg(number(done), number(total))
                          : tr("%1 of %2, %3 to be tried again").arg(number(done), number(total), number(again)));
  message_bar_->Count(news.sent_octets, news.message_octets);
  progress_->SayRate(InWords(line));
}

void SendMailForm1::RunFinished(const Result<run::RunSummary>& summary) {
  tick_->stop();
  stage_ = Stage::kFinished;
  TakeNews();
  pause_panel_->hide();
  if (asking_) WithdrawQuestion();
  hold_->hide();
  shut_down_->setEnabled(false);  // the run asked for it as it ended; nothing would come of it any more
  button_->setText(tr("Close"));
  button_->setDefault(true);
  button_->setFocus();
  if (!summary) {
    Say(InWords(summary.error()), NoteKind::kFailure);
    return;
  }
  const bool all_got_it = summary->everybody_got_it();
  QString told = SummaryText(*summary);
  if (summary->run != 0 && summary->not_tried + summary->failed + summary->unknown_before > 0) {
    OfferRuns(summary->run);
    told += ' ' + (summary->left() > 0 ? tr("Runs… goes on with those who are left, here or later from the history.")
                                       : tr("Runs… sends to some of these again, here or later from the history."));
  }
  Say(told, all_got_it && summary->unknown_before == 0 ? NoteKind::kInformation : NoteKind::kWarning);
  if (summary->reached_its_end() && shut_down_->isChecked()) QTimer::singleShot(0, this, &SendMailForm1::CountDown);
  if (!all_got_it) {
    tabs_->setCurrentWidget(results_view_);
    findChild<QComboBox*>("ResultStateComboBox")->setCurrentIndex(1);
  }
}

void SendMailForm1::OfferRuns(run::RunId run) {
  auto* button = new QPushButton(tr("R&uns…"), this);
  button->setObjectName("RunsButton");
  connect(button, &QPushButton::clicked, this, [this, run] {
    runs_wanted_ = run;
    accept();
  });
  progress_->AddBeside(button);
}

// Over the window behind this one, for it outlives this one where the system refuses.
void SendMailForm1::CountDown() {
  ShutDownForm form([&power = program_.power](const auto& cancel) { return power.PowerOff(cancel); }, parentWidget());
  form.at_zero = [this] { PrepareToSwitchOff(); };
  form.answered = [this](const Result<void>& off) { SwitchedOff(off); };
  form.exec();
}

void SendMailForm1::PrepareToSwitchOff() {
  accept();
  if (skip_save_prompt) skip_save_prompt(true);
}

void SendMailForm1::SwitchedOff(const Result<void>& off) {
  shuts_down_ = static_cast<bool>(off);
  if (off) return;
  if (skip_save_prompt) skip_save_prompt(false);
  if (refused) refused(InWords(off.error()));
}

void SendMailForm1::OfferAccount(std::function<void(QWidget*)> open) { heading_->change_account = std::move(open); }

// What was noted about the run stays above it. Where there is nothing to say, what is told before the run has the room.
void SendMailForm1::Say(const QString& sentence, NoteKind kind) {
  QStringList lines = notes_.mid(0, kMostNotes);
  if (notes_.size() > kMostNotes) lines << tr("And %1 more of the same kind.").arg(notes_.size() - kMostNotes);
  if (!sentence.isEmpty()) lines << sentence;
  status_->setVisible(!lines.isEmpty());
  status_->Say(lines.join('\n'), kind);
}

}  // namespace quillcast::desktop
