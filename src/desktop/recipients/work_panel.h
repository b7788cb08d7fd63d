// Work on the recipient store beside a window: how far it has come, and the button that ends it.
#pragma once

#include <QWidget>
#include <cstdint>
#include <functional>
#include <memory>

#include "desktop/widgets/background_task.h"
#include "desktop/widgets/count_bar.h"
#include "desktop/widgets/note.h"
#include "profile/program.h"
#include "recipients/progress.h"
#include "recipients/recipient_store.h"

class QPushButton;
class QTimer;

namespace quillcast::desktop {

class ProgressPanel;

// One piece of work at a time. The window disables its own controls from Started to Ended.
//
// A dialog that begins the work by a button of its own puts that beside the panel's, which closes it before and after.
class WorkPanel final : public QWidget {
  Q_OBJECT
 public:
  // Hidden bar and button that keep their room; `program` names the store of each piece of work.
  WorkPanel(const profile::Program& program, QWidget* parent);
  ~WorkPanel() override;

  // `work` runs on a thread of its own; `done` gets what it returns, on the window's.
  template <typename T>
  void Run(std::function<Result<T>(recipients::RecipientStore& store, const recipients::OnProgress& progress)> work,
           std::function<void(const Result<T>& result)> done) {
    Begin();
    task_->Start([this, file = program_.folders.Database(), counts = counts_, work = std::move(work),
                  done = std::move(done)](const platform::CancelToken& cancel) {
      recipients::RecipientStore store(file, {.cancel = &cancel});
      auto result = std::make_shared<Result<T>>(work(store, [counts](std::int64_t rows, std::int64_t total) {
        counts->total = static_cast<std::uint64_t>(total);
        counts->done = static_cast<std::uint64_t>(rows);
      }));
      return [this, result, done] {
        End();
        done(*result);
      };
    });
  }
  // Then the panel's button gives Closing while nothing is done.
  void AddBeside(QPushButton* button);
  // Then the panel is one line high: it stands beside what is always there, so that it leaves no hole when nothing
  // runs.
  void ShareLine();
  QPushButton* button() const;
  bool is_working() const { return task_->is_running(); }
  void Cancel();
  // How an error of the work is shown: what the person cancelled is no failure.
  NoteKind KindOfFailure() const { return was_cancelled_ ? NoteKind::kInformation : NoteKind::kFailure; }

 signals:
  // Started before the thread begins, Ended before `done` is called, so that `done` may show a dialog or start the next
  // piece. Closing: the button was pressed while nothing runs.
  void Started();
  void Ended();
  void Closing();

 private:
  void Begin();
  void End();
  void ShowCounts();
  void Press();

  bool closes_ = false;
  bool was_cancelled_ = false;
  const profile::Program& program_;
  std::shared_ptr<SharedCount> counts_;
  BackgroundTask* task_;
  QTimer* tick_;
  ProgressPanel* panel_;
  CountBar* bar_;
};

}  // namespace quillcast::desktop
