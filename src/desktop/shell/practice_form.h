// The messages that arrived in the practice mailbox.
#pragma once

#include <QDialog>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

class QPlainTextEdit;

namespace quillcast::desktop {

class RowList;

class PracticeForm final : public QDialog {
  Q_OBJECT
 public:
  PracticeForm(std::filesystem::path folder, QWidget* parent);

 private:
  struct Head {
    QString to;
    QString subject;
  };
  void Fill();
  QString TextOf(std::size_t row, int column) const;
  void ShowMessage();

  std::filesystem::path folder_;
  std::vector<std::string> files_;                  // the last one first
  mutable std::vector<std::optional<Head>> heads_;  // of those that have been on the screen
  RowList* list_;
  QPlainTextEdit* message_;
};

}  // namespace quillcast::desktop
