// The messages that arrived in the practice mailbox.
#pragma once

#include <QDialog>
#include <filesystem>

class QListWidget;
class QPlainTextEdit;

namespace quillcast::desktop {

class PracticeForm final : public QDialog {
  Q_OBJECT
 public:
  PracticeForm(std::filesystem::path folder, QWidget* parent);

 private:
  void Fill();
  void ShowMessage();

  std::filesystem::path folder_;
  QListWidget* list_;
  QPlainTextEdit* message_;
};

}  // namespace quillcast::desktop
