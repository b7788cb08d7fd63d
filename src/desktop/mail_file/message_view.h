// A message file for reading: who wrote it to whom, its body, its parts, the way it came, and how it stands in the
// file.
#pragma once

#include <QImage>
#include <QWidget>
#include <array>
#include <filesystem>
#include <memory>
#include <vector>

#include "mail_file/mail_message.h"
#include "mail_file/shown_body.h"
#include "profile/settings_store.h"

class QLabel;
class QPlainTextEdit;
class QTabWidget;
class QTextBrowser;

namespace quillcast::desktop {

class BackgroundTask;
class EmptyState;
class ForeignPage;
class NotePanel;
class RowList;
class StatusLine;

// Reads beside the window. Nothing in the message runs or loads; a link that is clicked is named and not opened.
class MessageView final : public QWidget {
  Q_OBJECT
 public:
  MessageView(const profile::SettingsStore& settings, QWidget* parent);

  // In place of what is shown. Loaded follows.
  void Show(const std::filesystem::path& file);
  // Shows no message; `text` stands in its place.
  void ShowNothing(const QString& text);

 signals:
  void Loaded(bool is_loaded);

 private:
  // What was read beside the window.
  struct Reading {
    std::vector<Sentence> wrong;                            // with the file
    std::shared_ptr<const mail_file::MailMessage> message;  // none: nothing was loaded
    mail_file::ShownBody body;
    std::vector<QImage> pictures;
    std::string beginning;       // of the file
    std::optional<Error> error;  // of the body or the beginning
  };
  static Reading Read(const std::filesystem::path& file, mail_file::LoadMode mode, const platform::CancelToken& cancel);

  void BuildWindow();
  void Put(Reading reading);
  void TellAttachments();
  void PutHeader(const mail_file::MessageFacts& facts);
  void PutRecipients(const std::vector<mail_file::Recipient>& recipients);
  void PutFaults(const Reading& reading);
  QString PartText(std::size_t row, int column) const;
  QString StampText(std::size_t row, int column) const;

  const profile::SettingsStore& settings_;
  BackgroundTask* task_;
  std::shared_ptr<const mail_file::MailMessage> message_;
  std::vector<std::size_t> files_;  // the parts that are listed, by their place
  std::vector<std::optional<std::int64_t>> delays_;
  QLabel* from_;
  std::array<QLabel*, 3> recipients_;  // by RecipientType
  QLabel* date_;
  QLabel* subject_;
  NotePanel* faults_;
  QTabWidget* tabs_;
  QTextBrowser* page_;
  ForeignPage* shown_ = nullptr;  // in it
  EmptyState* empty_;
  RowList* parts_;
  RowList* stamps_;
  QPlainTextEdit* source_;
  StatusLine* status_;
};

}  // namespace quillcast::desktop
