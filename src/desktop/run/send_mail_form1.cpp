#include "desktop/run/send_mail_form1.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFrame>
#include <QGridLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTabWidget>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>
#include <tuple>
#include <utility>

#include "account/account_connection.h"
#include "account/account_steps.h"
#include "desktop/run/notes_panel.h"
#include "desktop/run/pictures_panel.h"
#include "desktop/run/range_picker.h"
#include "desktop/run/report_view.h"
#include "desktop/run/results_view.h"
#include "desktop/run/shut_down_form.h"
#include "desktop/widgets/qt_prompts.h"
#include "desktop/widgets/qt_text.h"
#include "platform/text.h"
#include "run/run_rate.h"

namespace quillcast::desktop {
namespace {

constexpr int kTick = 100;  // milliseconds between looks at the run
constexpr int kBarSteps = 1000;
constexpr int kMostNotes = 4;

int Steps(std::uint64_t done, std::uint64_t total) {
  return total == 0 ? 0 : static_cast<int>(std::min<std::uint64_t>(kBarSteps, done * kBarSteps / total));
}

QString SummaryText(const run::RunSummary& summary) {
  QStringList sentences;
  sentences << Counted(summary.sent, SendMailForm1::tr("1 message was sent,"),
                       SendMailForm1::tr("%1 messages were sent,"))
            << SendMailForm1::tr("%1 failed.").arg(ToQt(platform::WithThousands(summary.failed)));
  if (summary.stopped) {
    sentences << InWords(*summary.stopped);
  } else if (summary.not_tried > 0) {
    sentences << Counted(summary.not_tried, SendMailForm1::tr("1 recipient was not tried; nothing was sent there."),
                         SendMailForm1::tr("%1 recipients were not tried; nothing was sent to them."));
  }
  return sentences.join(' ');
}

QProgressBar* MakeBar(const char* name, QWidget* parent) {
  auto* bar = new QProgressBar(parent);
  bar->setObjectName(name);
  bar->setRange(0, kBarSteps);
  bar->setValue(0);
  return bar;
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
      range_(new RangePicker(
          group_.recipients,
          [&program, chosen = group_](const run::PartialRange& range, const platform::CancelToken& cancel) {
            return run::Prepare({}, chosen, run::PlaceOf(program, cancel)).EndsOf(range);
          },
          this)),
      tabs_(new QTabWidget(this)),
      report_(new ReportView(this)),
      results_view_(new ResultsView(results_, program.prompts, this)),
      pause_panel_(new QFrame(this)),
      pause_text_(new QLabel(pause_panel_)),
      run_bar_(MakeBar("RunProgressBar", this)),
      message_bar_(MakeBar("MessageProgressBar", this)),
      pictures_(new PicturesPanel(program, this)),
      shut_down_(new QCheckBox(tr("Automatically shut down the PC when successfully done"), this)),
      rate_(new QLabel(this)),
      status_(new QLabel(this)),
      before_(new NotesPanel(program, this)),
      button_(new QPushButton(tr("Send"), this)) {
  setObjectName("SendMailForm1");
  setWindowTitle(tr("Send"));
  resize(760, 560);
  setModal(true);
  tabs_->addTab(report_, tr("&Report"));
  tabs_->addTab(results_view_, tr("R&ecipients"));
  shut_down_->setObjectName("ShutDownCheckBox");
  rate_->setObjectName("RateLabel");
  status_->setObjectName("StatusLine");
  status_->setTextFormat(Qt::PlainText);
  status_->setWordWrap(true);
  button_->setObjectName("SendButton");
  button_->setDefault(true);
  button_->setMinimumWidth(120);

  auto* below = new QHBoxLayout();
  below->addWidget(rate_, 1);
  below->addWidget(button_);
  auto* column = new QVBoxLayout(this);
  column->addWidget(MakeHeading(server));
  column->addWidget(range_);
  column->addWidget(tabs_, 1);
  column->addWidget(MakePausePanel());
  column->addWidget(MakeProgress());
  column->addWidget(shut_down_);
  column->addWidget(status_);
  column->addWidget(before_);
  before_->AddQuestion(pictures_);
  column->addLayout(below);
  connect(button_, &QPushButton::clicked, this, &SendMailForm1::ButtonPressed);
  connect(tick_, &QTimer::timeout, this, &SendMailForm1::TakeNews);
  connect(worker_, &RunWorker::Asked, this, &SendMailForm1::AskToGoOn, Qt::QueuedConnection);
  connect(worker_, &RunWorker::Ended, this, &SendMailForm1::RunFinished);
  connect(pictures_, &PicturesPanel::Known, this, &SendMailForm1::PicturesKnown);
  connect(pictures_, &PicturesPanel::Answered, this,
          [this](const std::vector<std::filesystem::path>& files, bool take) {
            document_.picture_places.Answer(files, take);
            before_->LookAt(document_, group_);
          });
  button_->setFocus();
  pictures_->LookAt(document_);
  before_->LookAt(document_, group_);
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

// What goes to whom; and from whom, over which servers.
QWidget* SendMailForm1::MakeHeading(Server server) {
  auto* heading = new QWidget(this);
  auto* what = new QLabel(heading);
  what->setObjectName("HeadingLabel");
  what->setText(tr("“%1” to %2, %3")
                    .arg(ToQt(platform::Printable(document_.subject, 100)),
                         ToQt(platform::Printable(group_.group.name, 60)),
                         Counted(group_.recipients, tr("1 recipient"), tr("%1 recipients"))));
  QFont bold = what->font();
  bold.setBold(true);
  what->setFont(bold);
  auto* route = new QLabel(heading);
  route->setObjectName("RouteLabel");
  // What cannot be read is told by the run.
  if (const auto account = account::AccountSettings::Load(program_.settings)) {
    const QString from = ToQt(platform::Printable(account::TextsOf(*account).from, 120));
    route->setText(
        server == Server::kPractice
            ? tr("Practice: from %1 to the mailbox on this machine, and nowhere else").arg(from)
            : tr("From %1 over %2").arg(from, ToQt(platform::Printable(account::ServersText(*account), 200))));
  }
  auto* column = new QVBoxLayout(heading);
  column->setContentsMargins(0, 0, 0, 0);
  for (QLabel* label : {what, route}) {
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    column->addWidget(label);
  }
  return heading;
}

// Where the server refuses everybody for the same reason.
QWidget* SendMailForm1::MakePausePanel() {
  pause_panel_->setObjectName("PausePanel");
  pause_panel_->setFrameShape(QFrame::StyledPanel);
  pause_panel_->setAutoFillBackground(true);
  pause_panel_->setBackgroundRole(QPalette::AlternateBase);
  pause_text_->setObjectName("PauseLabel");
  pause_text_->setTextFormat(Qt::PlainText);
  pause_text_->setWordWrap(true);
  auto* line = new QHBoxLayout(pause_panel_);
  line->addWidget(pause_text_, 1);
  for (const auto& [name, text, go_on] :
       {std::tuple{"GoOnButton", tr("&Go on"), true}, {"StopButton", tr("S&top"), false}}) {
    auto* button = new QPushButton(text, pause_panel_);
    button->setObjectName(name);
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, [this, answer = go_on] { AnswerToGoOn(answer); });
    line->addWidget(button);
  }
  pause_panel_->hide();
  return pause_panel_;
}

QWidget* SendMailForm1::MakeProgress() {
  auto* progress = new QWidget(this);
  auto* grid = new QGridLayout(progress);
  grid->setContentsMargins(0, 0, 0, 0);
  grid->setColumnStretch(1, 1);
  int row = 0;
  for (const auto& [text, bar] :
       {std::pair{tr("The whole run:"), run_bar_}, {tr("The current message:"), message_bar_}}) {
    auto* caption = new QLabel(text, progress);
    bar->setAccessibleName(text.chopped(1));
    grid->addWidget(caption, row, 0);
    grid->addWidget(bar, row++, 1);
  }
  return progress;
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
  stage_ = Stage::kRunning;
  button_->setText(tr("Cancel"));
  range_->setEnabled(false);
  before_->Close();
  running_.start();
  tick_->start(kTick);
  worker_->Start(document_, group_, range_->Range());
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
  worker_->Stop();
  if (pause_panel_->isVisible()) AnswerToGoOn(false);
  Say(tr("Stopping after the message that is under way; cancel again to give that up too."));
}

// The run waits meanwhile. Once it is being cancelled there is nothing to ask.
void SendMailForm1::AskToGoOn(const QString& refusal, int times) {
  if (cancel_asked_) {
    worker_->Answer(false);
    return;
  }
  waiting_.start();
  TakeNews();  // what led to it can be read
  pause_text_->setText(
      tr("The server refused the same %1 times in a row, so the run waits: %2").arg(QString::number(times), refusal));
  pause_panel_->show();
  QApplication::alert(this);
}

void SendMailForm1::AnswerToGoOn(bool go_on) {
  waited_ += waiting_.elapsed();
  waiting_.invalidate();
  pause_panel_->hide();
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
  run_bar_->setValue(Steps(static_cast<std::uint64_t>(news.done), static_cast<std::uint64_t>(news.total)));
  run_bar_->setFormat(
      tr("%1 of %2").arg(ToQt(platform::WithThousands(news.done)), ToQt(platform::WithThousands(news.total))));
  message_bar_->setValue(Steps(news.sent_octets, news.message_octets));
  // Those not tried take no time, and nobody knows how long an answer takes.
  const bool goes_on = stage_ == Stage::kRunning && !waiting_.isValid();
  rate_->setText(ToQt(run::DescribeRate(news.done, goes_on ? news.total : news.done, Worked())));
}

// Since the start, without the time that the run waited for answers.
std::chrono::milliseconds SendMailForm1::Worked() const {
  const qint64 waits = waiting_.isValid() ? waiting_.elapsed() : 0;
  return std::chrono::milliseconds(running_.elapsed() - waited_ - waits);
}

void SendMailForm1::RunFinished(const Result<run::RunSummary>& summary) {
  tick_->stop();
  stage_ = Stage::kFinished;
  TakeNews();
  pause_panel_->hide();
  if (asking_) WithdrawQuestion();
  button_->setText(tr("Close"));
  button_->setDefault(true);
  button_->setFocus();
  if (!summary) {
    Say(InWords(summary.error()));
    return;
  }
  Say(SummaryText(*summary));
  const bool reached_the_end = !summary->stopped && !summary->cancelled && summary->not_tried == 0;
  if (reached_the_end && shut_down_->isChecked()) QTimer::singleShot(0, this, &SendMailForm1::CountDown);
  if (summary->failed > 0 || summary->not_tried > 0) {
    tabs_->setCurrentWidget(results_view_);
    findChild<QComboBox*>("ResultStateComboBox")->setCurrentIndex(1);
  }
}

// Over the window behind this one, for it outlives this one where the system refuses.
void SendMailForm1::CountDown() {
  ShutDownForm([this] { return SwitchOff(); }, parentWidget()).exec();
}

bool SendMailForm1::SwitchOff() {
  accept();
  if (skip_save_prompt) skip_save_prompt(true);
  const auto off = program_.power.PowerOff();
  shuts_down_ = static_cast<bool>(off);
  if (off) return true;
  if (skip_save_prompt) skip_save_prompt(false);
  refusal_ = InWords(off.error());
  return false;
}

// What was noted about the run stays above it.
void SendMailForm1::Say(const QString& sentence) {
  QStringList lines = notes_.mid(0, kMostNotes);
  if (notes_.size() > kMostNotes) lines << tr("And %1 more of the same kind.").arg(notes_.size() - kMostNotes);
  if (!sentence.isEmpty()) lines << sentence;
  status_->setText(lines.join('\n'));
}

}  // namespace quillcast::desktop
