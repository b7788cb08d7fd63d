// The dialog that takes the recipients of a file into a group.
#pragma once

#include <QDialog>
#include <QHash>
#include <memory>
#include <optional>

#include "desktop/widgets/background_task.h"
#include "desktop/widgets/give_up.h"
#include "profile/program.h"
#include "recipients/import/awaited_look.h"
#include "recipients/import/file_look.h"
#include "recipients/import/recipient_import.h"
#include "recipients/import/sheet_choice.h"

class QCheckBox;
class QComboBox;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QTimer;

namespace quillcast::desktop {

class CountBar;
struct SharedCount;
class FormColumn;
class ImportMappingPanel;
class ImportSampleTable;
class KeptMappingBox;
class NotePanel;
class ProgressPanel;
class StatusLine;

// Before the import a look at the file (LookAtFile) runs beside the window and shows its first lines as they would be
// stored; whatever changes how it is read looks again. What is pressed meanwhile waits for it in one place, awaited_.
// Request() and Current() read the controls when they are needed, so that what is imported, or kept, is what the window
// shows.
class RecipientImportForm final : public QDialog {
  Q_OBJECT
 public:
  // `group` is chosen at first; none where that is empty.
  RecipientImportForm(const profile::Program& program, const QString& group, QWidget* parent);
  ~RecipientImportForm() override;
  // How many came in before the import was cancelled; empty where it was not.
  const QString& said() const { return said_; }

 public slots:
  // While an import runs it is asked about first; its end then closes the dialog.
  void reject() override;

 protected:
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  using Look = recipients::FileLook;
  using Source = recipients::AwaitedFields::Source;

  // What was chosen for a file that was left, for who comes back to it.
  struct FileChoices {
    recipients::KeptMapping mapping;  // all "Ignore" where none was chosen, or it was given up
    recipients::SheetChoice sheet;
    int kind = 0;  // its entry
    bool delimiter_is_open = true;
  };

  // Made once; EnableControls is called after each change of what is ticked, chosen or under way, and knows them all.
  void MakeWindow();
  void AddFormats(FormColumn* column);
  void AddModes(FormColumn* column);
  void AddMapping(FormColumn* column);
  void ConnectControls();
  void EnableControls();

  // From a file to its first lines in the table. A look runs on a thread of its own: TakeLook gets what it came to back
  // in the window, and drops it where another file, or another way of reading, was chosen since.
  void Browse();
  void TakeFile(const QString& file);
  void SetBack();
  FileChoices Chosen() const;
  void TakeChoices(const FileChoices& chosen);
  void GetData();
  recipients::ReadingOptions Reading() const;
  void LookAgain();
  void LookAtFile();
  void TakeLook(const QString& file, const Look& look);
  void ShowLook(const Look& look, const recipients::AwaitedFields& fields);
  void ShowNoLook(const Look& look, const recipients::AwaitedFields& fields);
  // What is pressed counts for what stands in the boxes, which a mnemonic does not leave. False where it is no choice
  // of columns.
  bool TakeTyped();
  void TakeTypedFile();
  // The lists are empty until the next look shows the fields.
  void AwaitFields(recipients::AwaitedFields fields);
  recipients::LookChoices Choices(const recipients::ReadingOptions& reading) const;
  void DoAwaited();
  // For something else that is done meanwhile.
  void GiveDeedUp();
  void ForgetSample(const QString& why = {});
  void TakeFormat(const Look& look);
  void ShowSample();
  void SayHowItIsRead(const Look& look, const recipients::AwaitedFields& fields);
  void ShowWarnings();
  void Warn(const std::vector<Sentence>& sentences);

  // They point into the sample, and are valid until the next look.
  std::vector<std::string_view> FieldsToChoose() const;
  // What the ticks come to for this file, wherever it is shown, kept or imported.
  recipients::FileFormat Format() const;
  bool TakesQuotesOff() const;
  std::int64_t SkippedLines() const;
  // `lines` at the beginning of the file, 0 for none; shown in the text of the box.
  void SkipLines(std::int64_t lines);
  // What can be chosen for each field of a recipient is what this line has; all are set to "Ignore".
  void OfferFields();
  void TakeHeading(int source, std::size_t field);
  void Propose();
  void TakeProposal();
  bool TakeColumns();
  void ShowColumns(const std::vector<std::size_t>& columns);
  recipients::KeptMapping Current() const;
  void KeepMapping();
  void KeepNow();
  void ApplyMapping(const recipients::KeptMapping& kept);
  void TakeReading(const recipients::KeptMapping& kept);
  void TakeSource(const recipients::KeptMapping& kept);
  // Give what the file lacks of it.
  std::optional<Sentence> ChooseMapping(const recipients::AwaitedFields& fields);
  std::optional<Sentence> TakeSheet();

  // The import itself. Its checks and its consent come first, in the given order; Start hands the request to a thread,
  // which shares the count with TakeProgress, and ShowEnd gets its outcome unless the dialog was closed meanwhile.
  recipients::ImportForm Form() const;
  recipients::ImportRequest Request() const;
  void Import();
  void ImportNow();
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
  QComboBox* kind_;
  QWidget* sheets_;  // where there are several
  QComboBox* sheet_;
  QRadioButton* harvest_;
  QRadioButton* delimited_;
  QComboBox* delimiter_;
  QWidget* encodings_;
  QComboBox* encoding_;
  QCheckBox* quotes_;
  QCheckBox* rfc4180_;
  QCheckBox* skip_;
  QWidget* take_;
  QLineEdit* columns_box_;
  QPushButton* get_data_;
  QPushButton* propose_;
  StatusLine* status_;
  KeptMappingBox* kept_;
  ImportMappingPanel* mapping_;
  ImportSampleTable* table_;
  NotePanel* warnings_;
  ProgressPanel* progress_;
  CountBar* bar_;
  QPushButton* import_;
  QPushButton* report_;
  std::optional<recipients::ImportSample> sample_;
  std::optional<recipients::ProposedMapping> proposed_;
  std::vector<Sentence> odd_;                      // what the last look has to tell, whatever is ticked and mapped
  bool is_quoted_ = false;                         // most addresses of the file stand in quotes
  QTimer* slow_;                                   // until a look is said to be under way
  QString looked_at_;                              // the file of the last look
  bool look_again_ = false;                        // something changed meanwhile
  recipients::ReadingOptions read_as_;             // by the last look
  std::optional<recipients::TextEncoding> known_;  // found out of this file
  bool delimiter_is_open_ = true;                  // of this file: not found, nor picked by person or mapping
  recipients::SheetChoice sheet_choice_;           // of this file
  bool was_set_back_ = false;                      // the mapping, for the file is another one
  std::vector<std::size_t> columns_;               // of the file that are its fields here; none: all
  std::int64_t skipped_ = 1;                       // lines that the box leaves out at least
  QHash<QString, FileChoices> remembered_;         // by file
  recipients::AwaitedLook awaited_;
  bool import_was_given_up_ = false;   // to be said with what the look shows
  std::shared_ptr<SharedCount> seen_;  // shared with the thread that imports
  QString said_;
  GiveUp give_up_;
};

}  // namespace quillcast::desktop
