// A sending run beside its window. The window asks for what has happened a few times a second; a hundred thousand
// messages do not mean a hundred thousand events.
#pragma once

#include <QObject>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "desktop/run/go_on_request.h"
#include "document/message_document.h"
#include "platform/cancel.h"
#include "platform/power.h"
#include "profile/program.h"
#include "run/prepared_run.h"
#include "run/run_hold.h"
#include "run/run_progress.h"
#include "run/run_results.h"

namespace quillcast::desktop {

// What has happened since it was asked last.
struct RunNews {
  run::ProgressLook progress;
  std::uint64_t sent_octets = 0;  // of the current message
  std::uint64_t message_octets = 0;
  std::vector<Sentence> notes;
  std::optional<std::filesystem::path> report;  // once it is there
};

class RunWorker final : public QObject, private run::RunListener {
  Q_OBJECT
 public:
  RunWorker(const profile::Program& program, QObject* parent)
      : QObject(parent), program_(program), hold_(program.clock), progress_(program.clock) {}
  // Starts nothing new, gives the message under way two seconds, and waits for the run's last step. A run that nobody
  // cancelled is then to be offered at the next start.
  ~RunWorker() override;

  // How a run goes, as the window showed it: the account and its settings are read anew, and `pace` counts before them.
  struct Way {
    account::Route route;
    run::PaceTexts pace;
  };
  // Once.
  void Start(const document::MessageDocument& document, const run::ChosenGroup& group,
             const std::optional<run::PartialRange>& range, const Way& way);
  // The same for a kept run, whose message and list are its own; what is other by now is noted first.
  void GoOnWith(const GoOnRequest& request, const Way& way);
  // The first time nothing new is started; the second time the message under way is given up.
  void Stop() { cancel_.Request(); }
  // Nothing new begins until it goes on; what is under way comes to its end. The computer may sleep meanwhile.
  void Hold();
  void GoOnAgain();
  bool is_held() const { return hold_.is_held(); }
  bool is_running() const { return thread_.joinable(); }

  RunNews TakeNews();
  // Moves the results since the last call to the end of `results`.
  void TakeResults(run::RunResults& results);
  // The answer to Asked.
  void Answer(bool go_on);

 signals:
  // The server refused the same so many times in a row, which is said; the run waits for Answer.
  void Asked(const QString& why);
  void Ended(const quillcast::Result<quillcast::run::RunSummary>& summary);

 private:
  struct NotTriedRow {
    std::int64_t position;
    std::string address;
    run::ResultState stays;
  };

  void KeepIfLeft();
  void KeepTo(const Result<run::RunPace>& pace);
  void Run(std::function<Result<run::RunSummary>()> run);
  void Began(const std::filesystem::path& report) override;
  void ReportLine(std::string_view) override {}  // the window reads the report's file
  void Finished(const run::RecipientResult& result) override;
  void Progress(std::int64_t done, std::int64_t total, std::uint64_t sent, std::uint64_t size) override;
  bool GoOn(const smtp::Outcome& refusal, int times, std::int64_t left_out) override;
  bool IsHeld() override { return hold_.is_held(); }
  platform::Duration HeldFor() override { return hold_.HeldFor(); }
  void Held(std::int64_t under_way) override;
  void LetGo() override;
  void NotTried(std::int64_t position, const std::string& address, run::ResultState stays) override;
  void Waits(const Sentence& why, run::Moment until) override;
  void WayLost(const Sentence& why, run::Moment until) override;
  void Note(const Sentence& sentence) override;

  const profile::Program& program_;
  platform::CancelToken cancel_;
  std::thread thread_;
  std::unique_ptr<platform::Awake> awake_;  // of that thread
  run::RunHold hold_;                       // by the window
  std::mutex mutex_;                        // guards what follows
  RunNews news_;
  run::RunProgress progress_;
  std::vector<run::RecipientResult> results_;
  std::vector<NotTriedRow> not_tried_;
  std::condition_variable changed_;  // one of these
  std::optional<bool> answer_;
  bool said_no_ = false;  // and with it ended the run
  bool ending_ = false;   // the window goes
  bool ended_ = false;    // the run has
  run::RunId left_ = 0;   // with somebody left, as it ended
};

}  // namespace quillcast::desktop
