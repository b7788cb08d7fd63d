// The dialog that takes the recipients of a file into a group.
#pragma once

#include <QDialog>
#include <memory>
#include <optional>

#include "desktop/widgets/background_task.h"
#include "desktop/widgets/give_up.h"
#include "profile/program.h"
#include "recipients/import/import_sample.h"
#include "recipients/import/recipient_import.h"

class QCheckBox;
class QComboBox;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QTimer;

namespace quillcast::desktop {

class CountBar;
class FormColumn;
class ImportMappingPanel;
class ImportSampleTable;
class NotePanel;
class ProgressPanel;
class StatusLine;

class RecipientImportForm final : public QDialog {
  Q_OBJECT
 public:
  // `group` is chosen at first; none where that is empty.
  RecipientImportForm(const profile::Program& program, const QString& group, QWidget* parent);
  ~RecipientImportForm() override;

 public slots:
  // While an import runs it is asked about first; its end then closes the dialog.
  void reject() override;

 protected:
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  struct Progress;
  // What a look at the file came to.
  struct Look {
    QString file;
    Result<recipients::ImportSample> sample;
    Result<recipients::FoundDelimiter> delimiter;
  };
  // What a look is for, beside showing the first lines.
  enum class Purpose { kShow, kNewFile, kFillLists };

  void MakeWindow();
  void AddModes(FormColumn* column);
  void AddMapping(FormColumn* column);
  void ConnectControls();
  void EnableControls();

  void Browse();
  void TakeFile(const QString& file);
  void GetData();
  recipients::ReadingOptions Reading() const;
  void LookAtFile(Purpose purpose);
  void TakeLook(const Look& look, Purpose purpose);
  void ShowLook(const Look& look, Purpose purpose);
  void OfferFields(const std::vector<std::string_view>& fields);
  void ShowSample();
  void SayHowItIsRead(const Look& look);
  void TakeHeading(int source, std::size_t field);
  void Propose();
  void Warn(const std::vector<Sentence>& sentences);

  recipients::ImportForm Form() const;
  recipients::ImportRequest Request() const;
  void Import();
  void FocusOn(recipients::ImportControl control);
  void Start();
  void TakeProgress();
  void ShowEnd(const recipients::ImportOutcome& outcome);
  void ShowReport();

  const profile::Program& program_;
  BackgroundTask* task_;
  BackgroundTask* look_;
  QTimer* tick_;
  QLineEdit* file_;
  QPushButton* browse_;
  QComboBox* group_;
  QRadioButton* harvest_;
  QRadioButton* delimited_;
  QComboBox* delimiter_;
  QComboBox* encoding_;
  QCheckBox* quotes_;
  QCheckBox* rfc4180_;
  QCheckBox* skip_;
  QPushButton* get_data_;
  QPushButton* propose_;
  ImportMappingPanel* mapping_;
  ImportSampleTable* table_;
  NotePanel* warnings_;
  StatusLine* status_;
  ProgressPanel* progress_;
  CountBar* bar_;
  QPushButton* import_;
  QPushButton* report_;
  std::optional<recipients::ImportSample> sample_;
  std::optional<recipients::ProposedMapping> proposed_;
  std::optional<Purpose> look_again_;  // something changed while a look was under way
  QString looked_at_;                  // the file of the last look
  std::shared_ptr<Progress> seen_;     // shared with the thread that imports
  GiveUp give_up_;
};

}  // namespace quillcast::desktop
