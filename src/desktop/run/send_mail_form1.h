// The dialog in which a message goes out: report, progress, results.
#pragma once

#include <QDialog>
#include <functional>
#include <optional>

#include "desktop/run/run_heading.h"
#include "desktop/run/run_worker.h"
#include "desktop/widgets/note.h"
#include "profile/program.h"
#include "run/run_results.h"

class QCheckBox;
class QPushButton;
class QTabWidget;
class QTimer;

namespace quillcast::desktop {

class CountBar;
class NotePanel;
class NotesPanel;
class PicturesPanel;
class ProgressPanel;
class RangePicker;
class ReportView;
class ResultsView;
class StatusLine;

class SendMailForm1 final : public QDialog {
  Q_OBJECT
 public:
  using Server = RunHeading::Server;
  SendMailForm1(const profile::Program& program, document::MessageDocument document, run::ChosenGroup group,
                Server server, QWidget* parent);

  // To go on with a kept run.
  SendMailForm1(const profile::Program& program, const GoOnRequest& request, Server server, QWidget* parent);

  enum class Stage { kIdle, kRunning, kFinished };
  Stage stage() const { return stage_; }
  // The system is being switched off: whoever opened this closes too.
  bool shuts_down() const { return shuts_down_; }
  // The run that the person asked for in the window of the runs, to go on with it.
  std::optional<run::RunId> runs_wanted() const { return runs_wanted_; }
  // With what the person answered about pictures.
  const document::PicturePlaces& picture_places() const { return document_.picture_places; }

  // Whether whoever opened this is to close without asking to save: set before the system is asked to switch off,
  // which may end the program at any moment, and taken back when it refuses.
  std::function<void(bool)> skip_save_prompt;
  // Told at once why the system is not switched off, while the countdown stands at 0, or that Cancel came first: for
  // the status line of whoever opened this.
  std::function<void(const QString&)> refused;
  // Where the pace of this run is chosen the account's is offered, too: `open` shows it over a window, and returns when
  // that has closed.
  void OfferAccount(std::function<void(QWidget*)> open);

 public slots:
  // Escape, the close box and "Cancel": while the run goes on, asks first.
  void reject() override;

 private:
  void ButtonPressed();
  void PicturesKnown(bool settled);
  void StartRun();
  void HoldOrGoOn();
  void AskToCancel();
  void AskToGoOn(const QString& why);
  void AnswerToGoOn(bool go_on);
  void TakeNews();
  void RunFinished(const Result<run::RunSummary>& summary);
  void OfferRuns(run::RunId run);
  void ShowProgress(const RunNews& news);
  void CountDown();
  void PrepareToSwitchOff();
  void SwitchedOff(const Result<void>& off);
  void BuildWindow();
  void Connect();
  void Say(const QString& sentence, NoteKind kind = NoteKind::kInformation);

  const profile::Program& program_;
  document::MessageDocument document_;
  const run::ChosenGroup group_;
  std::optional<GoOnRequest> request_;  // a kept run, in place of the document's
  Stage stage_ = Stage::kIdle;
  bool cancel_asked_ = false;
  bool asking_ = false;         // the question whether to cancel is open
  bool wants_to_send_ = false;  // pressed before it was known what there is to ask
  RunWorker* worker_;
  run::RunResults results_;
  QStringList notes_;  // about the run
  QTimer* tick_;
  bool report_open_ = false;
  bool waits_for_password_ = false;
  bool shuts_down_ = false;
  std::optional<run::RunId> runs_wanted_;

  RunHeading* heading_;
  RangePicker* range_;
  QTabWidget* tabs_;
  ReportView* report_;
  ResultsView* results_view_;
  NotePanel* pause_panel_;
  PicturesPanel* pictures_;
  QCheckBox* shut_down_;
  StatusLine* status_;
  NotesPanel* before_;
  ProgressPanel* progress_;
  CountBar* run_bar_;
  CountBar* message_bar_;
  QPushButton* hold_;
  QPushButton* button_;
};

}  // namespace quillcast::desktop
