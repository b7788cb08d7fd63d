// The dialog that takes over an account which another mail program keeps.
#pragma once

#include <QDialog>
#include <vector>

#include "account/account_settings.h"
#include "account/import/account_import.h"
#include "account/import/find_accounts.h"
#include "desktop/widgets/background_task.h"
#include "profile/program.h"

class QCheckBox;

namespace quillcast::desktop {

class FormGrid;
class RowList;
class StatusLine;

// Looks for accounts beside the window; writes at OK alone.
class OutlookExpressForm final : public QDialog {
  Q_OBJECT
 public:
  // Looks at once for what is kept in the places.
  OutlookExpressForm(const profile::Program& program, const std::vector<account::AccountRoot>& places, QWidget* parent);
  ~OutlookExpressForm() override;

  // After OK: the keys that were written. Whoever shows them reads them anew.
  const std::vector<account::AccountKey>& written() const { return written_; }

 public slots:
  void accept() override;

 private:
  void Look(const std::vector<account::AccountRoot>& places);
  void Show(account::FoundAccounts found);
  QString TextOf(std::size_t row, int column) const;
  QString PassedOver() const;
  const account::FoundAccount* Chosen() const;
  void OfferWhatItHas();

  const profile::Program& program_;
  account::FoundAccounts found_;
  std::vector<account::AccountKey> written_;
  RowList* list_;
  QCheckBox* port_;
  QCheckBox* security_;
  QCheckBox* user_name_;
  StatusLine* passed_over_;
  StatusLine* status_;
  BackgroundTask* look_;
};

}  // namespace quillcast::desktop
