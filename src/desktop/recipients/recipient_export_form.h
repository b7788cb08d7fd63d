// The dialog that writes the recipients of a group to a text file.
#pragma once

#include <QDialog>
#include <memory>
#include <optional>
#include <vector>

#include "desktop/widgets/background_task.h"
#include "desktop/widgets/give_up.h"
#include "profile/program.h"
#include "recipients/export/recipient_export.h"

class QCheckBox;
class QComboBox;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QTimer;

namespace quillcast::desktop {

class CountBar;
struct SharedCount;
class FieldList;
class FormColumn;
class ProgressPanel;
class StatusLine;

// The file comes into place when it is whole, or with the rows so far where the person cancels; what stood there before
// stays after any error. Checks and formats are the core's (recipient_export.h).
class RecipientExportForm final : public QDialog {
  Q_OBJECT
 public:
  // `group` is chosen at first; none where that is empty.
  RecipientExportForm(const profile::Program& program, const QString& group, QWidget* parent);
  ~RecipientExportForm() override;

  // What became of the file where the dialog was closed while it was written; else nothing, for a box has told it.
  const QString& said() const { return said_; }

 public slots:
  // While an export runs it is asked about first; its end then closes the dialog.
  void reject() override;

 private:
  // Made once; EnableControls before and after each export.
  void MakeWindow();
  void AddFormats(FormColumn* column);
  void EnableControls();
  void Browse();
  recipients::ExportForm Form() const;
  recipients::ExportRequest Request() const;
  void Export();
  void SayWhatIsThere();
  void LeaveLocked(const std::filesystem::path& file);
  void Start();
  void TakeProgress();
  void KeepSaid(const recipients::ExportOutcome& outcome, const std::filesystem::path& file);
  void ShowEnd(const recipients::ExportOutcome& outcome);

  const profile::Program& program_;
  BackgroundTask* task_;
  QTimer* tick_;
  QComboBox* group_;
  QLineEdit* file_;
  QPushButton* browse_;
  QRadioButton* addresses_;
  QRadioButton* chosen_fields_;
  FieldList* fields_;
  QComboBox* delimiter_;
  QCheckBox* rfc4180_;
  QCheckBox* utf8_;
  QCheckBox* inert_;
  StatusLine* status_;
  ProgressPanel* progress_;
  CountBar* bar_;
  QPushButton* export_;
  std::shared_ptr<SharedCount> seen_;  // shared with the thread that exports
  GiveUp give_up_;
  QString said_;
};

}  // namespace quillcast::desktop
