// The dialog that tells whether mail in the name of a domain will be believed.
#pragma once

#include <QDialog>
#include <memory>

#include "domain/sender/kept_check.h"
#include "net/address.h"
#include "profile/program.h"

class QLineEdit;
class QPushButton;

namespace quillcast::desktop {

class BackgroundTask;
class RowList;
class StatusLine;

class DomainCheckForm final : public QDialog {
  Q_OBJECT
 public:
  // With an empty domain, that of the account.
  DomainCheckForm(const profile::Program& program, const QString& domain, QWidget* parent);
  ~DomainCheckForm() override;

  // Whom to ask; without any, the system's name servers.
  std::vector<net::Endpoint> servers;

 public slots:
  // What is under way is given up.
  void reject() override;

 private:
  void MakeWindow();
  QString Cell(std::size_t row, int column) const;
  void Check();
  void Show(const std::string& domain, const Result<domain::KeptReport>& checked);

  const profile::Program& program_;
  BackgroundTask* task_;
  StatusLine* status_;
  QLineEdit* domain_;
  QLineEdit* selector_;
  QPushButton* check_;
  RowList* findings_list_;
  std::vector<domain::Finding> findings_;
};

}  // namespace quillcast::desktop
