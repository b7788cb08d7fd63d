// The dialog in which the eighteen fields of a recipient are entered. RecipientAddForm, RecipientModifyForm1 and
// RecipientModifyForm2 open it.
#pragma once

#include <QDialog>
#include <array>
#include <functional>
#include <optional>

#include "profile/program.h"
#include "recipients/group_checks.h"

namespace quillcast::desktop {

class FormGrid;
class StatusLine;

class RecipientEntryForm : public QDialog {
  Q_OBJECT
 public:
  // What OK does with the entry in the group of that key: AddNewRecipient or ChangeRecipient.
  using Write = std::function<Result<recipients::Entered>(recipients::RecipientStore& store, std::int64_t group_id,
                                                          const recipients::Recipient& entry)>;

  RecipientEntryForm(const char* name, const QString& title, const profile::Program& program, QString group,
                     Write write, QWidget* parent);

  // The row that OK wrote, for the grid; nothing while none was written.
  const std::optional<recipients::GridRow>& written() const { return written_; }

 public slots:
  // Stays open where the address is refused or the row could not be written.
  void accept() override;

 protected:
  // Changes the recipient with this key.
  static Write ChangeOf(std::int64_t key);
  // Shows the recipient with this key, or says why it cannot be; OK is then disabled.
  void ShowStored(std::int64_t key);

 private:
  QWidget* MakeField(std::size_t field);
  recipients::RecipientStore Store() const;
  QString Text(std::size_t field) const;
  recipients::Recipient Entry() const;
  Result<recipients::Entered> WriteEntry() const;

  const profile::Program& program_;
  const QString group_;
  const Write write_;
  std::array<QWidget*, recipients::kFieldCount> fields_{};
  recipients::Recipient stored_;  // what a field holds that was left as it is, octets that are no text included
  StatusLine* status_ = nullptr;
  std::optional<recipients::GridRow> written_;
};

}  // namespace quillcast::desktop
