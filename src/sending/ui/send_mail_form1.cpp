#include "sending/ui/send_mail_form1.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTabWidget>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>

#include "platform/text.h"
#include "platform/ui/qt_text.h"
#include "sending/run_rate.h"
#include "sending/ui/range_picker.h"
#include "sending/ui/report_view.h"
#include "sending/ui/results_view.h"
#include "sending/ui/shut_down_form.h"

namespace quillcast::sending {
namespace {

using platform::ToQt;

constexpr int kTick = 100;  // milliseconds between looks at the run
constexpr int kBarSteps = 1000;
constexpr int kMostNotes = 4;

int Steps(std::uint64_t done, std::uint64_t total) {
  return total == 0 ? 0 : static_cast<int>(std::min<std::uint64_t>(kBarSteps, done * kBarSteps / total));
}

QProgressBar* MakeBar(const char* name, const QString& accessible_name, QWidget* parent) {
  auto* bar = new QProgressBar(parent);
  bar->setObjectName(name);
  bar->setAccessibleName(accessible_name);
  bar->setRange(0, kBarSteps);
  bar->setValue(0);
  return bar;
}

}  // namespace

SendMailForm1::SendMailForm1(const app::Program& program, SendJob job, QWidget* parent)
    : QDialog(parent),
      program_(program),
      job_(std::move(job)),
      worker_(new RunWorker(program, this)),
      tick_(new QTimer(this)),
      range_(new RangePicker(program, job_.group, job_.recipients, this)),
      tabs_(new QTabWidget(this)),
      report_(new ReportView(this)),
      results_view_(new ResultsView(results_, program.prompts, this)),
      run_bar_(MakeBar("RunProgressBar", tr("The whole run"), this)),
      message_bar_(MakeBar("MessageProgressBar", tr("The current message"), this)),
      shut_down_(new QCheckBox(tr("Automatically shut down the PC when successfully done"), this)),
      rate_(new QLabel(this)),
      status_(new QLabel(this)),
      button_(new QPushButton(tr("Send"), this)) {
  setObjectName("SendMailForm1");
  setWindowTitle(tr("Send"));
  resize(760, 560);
  setModal(true);
  auto* heading = new QLabel(this);
  heading->setObjectName("HeadingLabel");
  heading->setTextFormat(Qt::PlainText);
  heading->setText(tr("“%1” to %2, %3")
                       .arg(ToQt(platform::Printable(job_.document.subject, 100)),
                            ToQt(platform::Printable(job_.group.name, 60)),
                            platform::Counted(job_.recipients, tr("1 recipient"), tr("%1 recipients"))));
  QFont bold = heading->font();
  bold.setBold(true);
  heading->setFont(bold);
  heading->setWordWrap(true);
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
  column->addWidget(heading);
  column->addWidget(range_);
  column->addWidget(tabs_, 1);
  column->addWidget(run_bar_);
  column->addWidget(message_bar_);
  column->addWidget(shut_down_);
  column->addWidget(status_);
  column->addLayout(below);
  connect(button_, &QPushButton::clicked, this, &SendMailForm1::ButtonPressed);
  connect(tick_, &QTimer::timeout, this, &SendMailForm1::TakeNews);
  connect(worker_, &RunWorker::Asked, this, &SendMailForm1::AskToGoOn, Qt::QueuedConnection);
  connect(worker_, &RunWorker::Ended, this, &SendMailForm1::RunFinished);
  button_->setFocus();
}

void SendMailForm1::ButtonPressed() {
  switch (stage_) {
    case Stage::kIdle:
      StartRun();
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
  running_.start();
  tick_->start(kTick);
  worker_->Start(job_, range_->Range());
}

void SendMailForm1::AskToCancel() {
  if (cancel_asked_) {  // the second time gives up the message under way
    worker_->Stop();
    Say(tr("Giving up the message that is under way."));
    return;
  }
  const auto answer = program_.prompts.Ask("Are you sure you want to cancel the sending process?");
  if (answer != platform::Answer::kYes || stage_ != Stage::kRunning) return;
  cancel_asked_ = true;
  worker_->Stop();
  Say(tr("Stopping after the message that is under way; cancel again to give that up too."));
}

void SendMailForm1::AskToGoOn(const QString& refusal, int times) {
  const QString question =
      tr("The server refused the same %1 times in a row:\r\n%2\r\nDo you want to try the others all the same?")
          .arg(QString::number(times), refusal);
  worker_->Answer(program_.prompts.Ask(platform::FromQt(question)) == platform::Answer::kYes);
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
  for (const auto& note : news.notes) notes_ << ToQt(platform::Printable(note));
  if (!news.notes.empty()) Say({});
}

void SendMailForm1::ShowProgress(const RunNews& news) {
  run_bar_->setValue(Steps(static_cast<std::uint64_t>(news.done), static_cast<std::uint64_t>(news.total)));
  run_bar_->setFormat(
      tr("%1 of %2").arg(ToQt(platform::WithThousands(news.done)), ToQt(platform::WithThousands(news.total))));
  message_bar_->setValue(Steps(news.sent_octets, news.message_octets));
  rate_->setText(ToQt(DescribeRate(news.done, news.total, std::chrono::milliseconds(running_.elapsed()))));
}

void SendMailForm1::RunFinished(const Result<RunSummary>& summary) {
  tick_->stop();
  stage_ = Stage::kFinished;
  TakeNews();
  button_->setText(tr("Close"));
  button_->setDefault(true);
  button_->setFocus();
  if (!summary) {
    Say(ToQt(InOneLine(summary.error())));
    return;
  }
  if (summary->stopped) {
    Say(ToQt(InOneLine(*summary->stopped)));
  } else if (summary->not_tried > 0) {
    Say(platform::Counted(summary->not_tried, tr("1 recipient was not tried; nothing was sent there."),
                          tr("%1 recipients were not tried; nothing was sent to them.")));
  } else {
    Say(platform::Counted(summary->sent, tr("1 message was sent,"), tr("%1 messages were sent,")) + ' ' +
        tr("%1 failed.").arg(ToQt(platform::WithThousands(summary->failed))));
  }
  const bool reached_the_end = !summary->stopped && !summary->cancelled && summary->not_tried == 0;
  if (reached_the_end && shut_down_->isChecked()) QTimer::singleShot(0, this, &SendMailForm1::CountDown);
  if (summary->failed > 0) {
    tabs_->setCurrentWidget(results_view_);
    findChild<QComboBox*>("ResultStateComboBox")->setCurrentIndex(1);
  }
}

void SendMailForm1::CountDown() {
  if (ShutDownForm(this).exec() != QDialog::Accepted) return;
  const auto off = program_.power.PowerOff();
  if (!off) {
    Say(ToQt(InOneLine(off.error())));
    return;
  }
  shuts_down_ = true;
  accept();
}

// What was noted about the run stays above it.
void SendMailForm1::Say(const QString& sentence) {
  QStringList lines = notes_.mid(0, kMostNotes);
  if (notes_.size() > kMostNotes) lines << tr("And %1 more of the same kind.").arg(notes_.size() - kMostNotes);
  if (!sentence.isEmpty()) lines << sentence;
  status_->setText(lines.join('\n'));
}

}  // namespace quillcast::sending
