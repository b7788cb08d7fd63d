// The dialog in which the signature is written and switched on and off.
#pragma once

#include <QDialog>
#include <string>

#include "desktop/widgets/background_task.h"
#include "platform/result.h"
#include "profile/program.h"

class QCheckBox;
class QPushButton;

namespace quillcast::desktop {

class EditorBar;
class HtmlEditor;
class NotePanel;
class StatusLine;

// Save closes it once the signature is kept, with copies of its pictures among the program's own; Reset once it is
// deleted. Close keeps nothing, and does not ask. Where the signature cannot be read, nothing can be saved over it.
class SignatureManagerForm final : public QDialog {
  Q_OBJECT
 public:
  SignatureManagerForm(const profile::Program& program, QWidget* parent);

 public slots:
  void accept() override;

 signals:
  void Ready();  // the signature is in the editor

 private:
  void BuildWindow();
  void BuildBar();
  void Load();
  void ShowNotes(const std::string& html);
  void Save(const Result<std::string>& html);
  void Reset();
  void SetReady(bool ready);

  const profile::Program& program_;
  HtmlEditor* editor_;
  EditorBar* bar_;
  NotePanel* notes_;
  QCheckBox* on_;
  StatusLine* status_;
  QPushButton* save_ = nullptr;
  QPushButton* reset_ = nullptr;
  BackgroundTask task_{this};
};

}  // namespace quillcast::desktop
