// The messages that arrived in the practice mailbox.
#pragma once

#include <QDialog>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "profile/settings_store.h"

class QLabel;
class QLineEdit;

namespace quillcast::desktop {

class MessageView;
class RowList;

class PracticeForm final : public QDialog {
  Q_OBJECT
 public:
  PracticeForm(const profile::SettingsStore& settings, std::filesystem::path folder, QWidget* parent);

 private:
  struct Head {
    QString to;
    QString subject;
  };
  void BuildWindow();
  void ReadFolder();
  void Filter();
  const Head& HeadOf(std::size_t file) const;
  void ShowMessage();

  std::filesystem::path folder_;
  std::vector<std::string> files_;                  // the last one first
  mutable std::vector<std::optional<Head>> heads_;  // of those that have been on the screen or were looked through
  std::vector<std::size_t> listed_;                 // those of the files that the filter lets through
  QLineEdit* filter_;
  RowList* list_;
  MessageView* message_;
  QLabel* others_;
};

}  // namespace quillcast::desktop
