// The messages that arrived in the practice mailbox.
#pragma once

#include <QDialog>
#include <filesystem>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "desktop/mail_file/message_tools.h"
#include "profile/settings_store.h"

class QLineEdit;

namespace quillcast::desktop {

class BackgroundTask;
class MessageView;
class RowList;
class StatusLine;

class PracticeForm final : public QDialog {
  Q_OBJECT
 public:
  PracticeForm(const profile::SettingsStore& settings, std::filesystem::path folder, MessageTools tools,
               QWidget* parent);

 private:
  struct Head {
    QString to;
    QString subject;
  };
  static Head ReadHead(const std::filesystem::path& file);
  void BuildWindow(MessageTools tools);
  void ReadFolder();
  void Filter();
  void List(std::vector<std::size_t> files);
  const Head& HeadOf(std::size_t file) const;
  void ShowMessage();
  std::filesystem::path Chosen() const;  // empty for none

  std::filesystem::path folder_;
  BackgroundTask* task_;                                   // looks through the messages
  std::shared_ptr<const std::vector<std::string>> files_;  // the last one first
  mutable std::unordered_map<std::size_t, Head> heads_;    // of those that have been on the screen
  std::vector<std::size_t> listed_;                        // those of the files that the filter lets through
  QLineEdit* filter_;
  RowList* list_;
  MessageView* message_;
  StatusLine* status_;
};

}  // namespace quillcast::desktop
