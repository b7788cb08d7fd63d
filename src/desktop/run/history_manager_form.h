// The dialog of what earlier runs left behind.
#pragma once

#include <QDialog>
#include <vector>

#include "profile/program.h"
#include "run/history.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;

namespace quillcast::desktop {

class HistoryManagerForm final : public QDialog {
  Q_OBJECT
 public:
  HistoryManagerForm(const profile::Program& program, QWidget* parent);
  // What clearing came to, for the status line of whoever opened this; empty where nothing was cleared.
  QString cleared() const { return cleared_; }

 private:
  void Fill();
  void Arrange();
  void EnableButtons();
  const run::HistoryRow* Chosen() const;
  // OpenLog or OpenMessage.
  using Opener = Result<void> (*)(const std::filesystem::path&, const run::HistoryRow&, platform::Desktop&,
                                  platform::Prompts&);
  void Open(Opener opener);
  void Clear();

  const profile::Program& program_;
  std::vector<run::HistoryRow> rows_;
  QString cleared_;
  QListWidget* grid_;
  QLineEdit* filter_;
  QComboBox* order_;
  QLabel* status_;
  QPushButton* open_log_;
  QPushButton* open_message_;
  QPushButton* clear_;
};

}  // namespace quillcast::desktop
