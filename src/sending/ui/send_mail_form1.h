// The dialog in which a message goes out: report, progress, results.
#pragma once

#include <QDialog>
#include <QElapsedTimer>

#include "app/program.h"
#include "sending/run_results.h"
#include "sending/ui/run_worker.h"

class QCheckBox;
class QLabel;
class QProgressBar;
class QPushButton;
class QTabWidget;
class QTimer;

namespace quillcast::sending {

class RangePicker;
class ReportView;
class ResultsView;

class SendMailForm1 final : public QDialog {
  Q_OBJECT
 public:
  SendMailForm1(const app::Program& program, SendJob job, QWidget* parent);

  enum class Stage { kIdle, kRunning, kFinished };
  Stage stage() const { return stage_; }
  // The system is being switched off: whoever opened this closes too, and asks nothing.
  bool shuts_down() const { return shuts_down_; }

 public slots:
  // Escape, the close box and "Cancel": while the run goes on, asks first.
  void reject() override;

 private:
  void ButtonPressed();
  void StartRun();
  void AskToCancel();
  void AskToGoOn(const QString& refusal, int times);
  void TakeNews();
  void RunFinished(const Result<RunSummary>& summary);
  void ShowProgress(const RunNews& news);
  void CountDown();
  void Say(const QString& sentence);

  const app::Program& program_;
  SendJob job_;
  Stage stage_ = Stage::kIdle;
  bool cancel_asked_ = false;
  RunWorker* worker_;
  RunResults results_;
  QStringList notes_;  // about the run
  QTimer* tick_;
  QElapsedTimer running_;
  bool report_open_ = false;
  bool shuts_down_ = false;

  RangePicker* range_;
  QTabWidget* tabs_;
  ReportView* report_;
  ResultsView* results_view_;
  QProgressBar* run_bar_;
  QProgressBar* message_bar_;
  QCheckBox* shut_down_;
  QLabel* rate_;
  QLabel* status_;
  QPushButton* button_;
};

}  // namespace quillcast::sending
