// The dialog that writes the message of the main window into a message file, without sending it.
#pragma once

#include <QDialog>

#include "document/message_document.h"
#include "profile/program.h"
#include "run/message_export.h"

class QCheckBox;
class QLineEdit;
class QPushButton;

namespace quillcast::desktop {

class BackgroundTask;
class StatusLine;

class ExtraForm3 final : public QDialog {
  Q_OBJECT
 public:
  ExtraForm3(const profile::Program& program, document::MessageDocument message, QWidget* parent);

 public slots:
  // An export that is under way is given up first; the dialog then stays.
  void reject() override;

 private:
  void MakeWindow();
  void EnableControls();
  void Choose();
  void SayWhatIsThere();
  run::ExportTarget Target() const;
  void Export();
  void ShowEnd(const Result<run::Exported>& exported);

  const profile::Program& program_;
  const document::MessageDocument message_;
  BackgroundTask* task_;
  QLineEdit* file_;
  QPushButton* choose_;
  QCheckBox* header_;
  StatusLine* status_;
  QPushButton* export_;
  QPushButton* cancel_;
};

}  // namespace quillcast::desktop
