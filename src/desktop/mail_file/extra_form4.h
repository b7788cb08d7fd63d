// The dialog that takes a message file apart.
#pragma once

#include <QDialog>
#include <array>
#include <filesystem>
#include <memory>

#include "desktop/widgets/background_task.h"
#include "mail_file/extraction.h"
#include "mail_file/working_folder.h"
#include "profile/program.h"

class QCheckBox;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QTimer;

namespace quillcast::desktop {

class CountBar;
class FormGrid;
class MessageFileField;
class ProgressPanel;
class StatusLine;
struct SharedCount;

class ExtraForm4 final : public QDialog {
  Q_OBJECT
 public:
  ExtraForm4(const profile::Program& program, QWidget* parent);
  ~ExtraForm4() override;

 public slots:
  // While an extraction runs it is given up; its end then closes the dialog.
  void reject() override;

 private:
  // What a loading and an extraction came to, on their way to this thread.
  struct End;

  void MakeWindow();
  void AddFormats(FormGrid* grid);
  // A row with the path of an output and the button that chooses it.
  QLineEdit* AddOutput(FormGrid* grid, int number, const QString& label, void (ExtraForm4::*choose)(QLineEdit*));
  void ChooseFolder(QLineEdit* box);
  void ChooseBody(QLineEdit* box);
  void ChooseText(QLineEdit* box);
  void ChooseFile(QLineEdit* box, std::string_view filter);
  bool MayBeRead(const std::filesystem::path& file);
  void SayWhatIsThere();
  mail_file::BodyFormat Format() const;
  mail_file::ExtractionRequest Request() const;
  void Extract();
  void Start(const mail_file::ExtractionRequest& request);
  // Beside the window.
  static End Run(const mail_file::ExtractionRequest& request, mail_file::LoadMode mode, const platform::OwnFiles& own,
                 const platform::CancelToken& cancel, SharedCount& seen);
  void ShowEnd(const End& end);
  void EnableControls();

  const profile::Program& program_;
  BackgroundTask* task_;
  QTimer* tick_;
  MessageFileField* file_;
  std::array<QLineEdit*, 5> outputs_{};
  QCheckBox* body_parts_;
  std::array<QRadioButton*, 4> formats_{};  // by BodyFormat
  StatusLine* status_;
  ProgressPanel* progress_;
  CountBar* bar_;
  QPushButton* extract_;
  std::shared_ptr<SharedCount> seen_;  // shared with the thread that extracts
  std::optional<mail_file::WorkingFolder> working_folder_;
  bool closes_at_end_ = false;
};

}  // namespace quillcast::desktop
