// The dialog of what earlier runs left behind.
#pragma once

#include <QDialog>
#include <functional>
#include <vector>

#include "profile/program.h"
#include "run/history.h"

class QComboBox;
class QLineEdit;
class QPushButton;

namespace quillcast::desktop {

class BackgroundTask;
class FormColumn;
class RowList;
class StatusLine;

class HistoryManagerForm final : public QDialog {
  Q_OBJECT
 public:
  HistoryManagerForm(const profile::Program& program, QWidget* parent);
  // Opens the window of the runs that are kept, with the one of this base name chosen where it is among them, and
  // returns when that has closed; calls `sent` each time that something was sent from there.
  std::function<void(const std::string& history, const std::function<void()>& sent)> show_runs;
  // What clearing came to, for the status line of whoever opened this; empty where nothing was cleared.
  QString cleared() const { return cleared_; }
  // Not while runs are being forgotten: it closes by itself at the end of that.
  void reject() override;

 private:
  void MakeButtons(FormColumn* column);
  void Fill();
  // The same later: what was chosen stays so.
  void FillAgain();
  void Arrange();
  void SayHowMany();
  void EnableButtons();
  QString TextOf(std::size_t row) const;
  const run::HistoryRow* Chosen() const;
  // OpenLog or OpenMessage.
  using Opener = Result<void> (*)(const std::filesystem::path&, const run::HistoryRow&, platform::Desktop&,
                                  platform::Prompts&);
  void Open(Opener opener);
  void Clear();
  void ForgetFinished();

  const profile::Program& program_;
  std::vector<run::HistoryRow> rows_;
  std::vector<std::size_t> shown_;  // places in rows_, in the order of the list
  QString cleared_;
  QLineEdit* filter_;
  QComboBox* order_;
  RowList* grid_;
  StatusLine* status_;
  BackgroundTask* task_;
  QPushButton* open_log_ = nullptr;
  QPushButton* open_message_ = nullptr;
};

}  // namespace quillcast::desktop
