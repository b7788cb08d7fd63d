// The dialog that makes the body of a message file the message of the main window.
#pragma once

#include <QDialog>
#include <functional>
#include <optional>

#include "mail_file/import_body.h"
#include "profile/program.h"

class QPushButton;

namespace quillcast::desktop {

class BackgroundTask;
class MessageFileField;
class StatusLine;

class ExtraForm2 final : public QDialog {
  Q_OBJECT
 public:
  // `file` is named at first. `take` puts the body in place of what the window has, and says whether that is kept.
  using Take = std::function<Result<bool>(const mail_file::ImportedBody& body)>;
  ExtraForm2(const profile::Program& program, const std::filesystem::path& file, Take take, QWidget* parent);

 public slots:
  // An import that is under way is given up first; the dialog then stays.
  void reject() override;

 private:
  struct Outcome {
    std::string warning;  // of the load, to the letter
    std::optional<Result<mail_file::ImportedBody>> body;
    std::vector<Sentence> wrong;  // with the file
  };

  void MakeWindow();
  void EnableControls();
  void Import();
  void ShowEnd(const Result<Outcome>& outcome);
  void TakeBody(const Result<mail_file::ImportedBody>& body, QStringList wrong);
  static Result<Outcome> Load(const profile::Program& program, const std::filesystem::path& file,
                              const platform::CancelToken& cancel);

  const profile::Program& program_;
  const Take take_;
  BackgroundTask* task_;
  MessageFileField* file_;
  StatusLine* status_;
  QPushButton* import_;
  QPushButton* cancel_;
};

}  // namespace quillcast::desktop
