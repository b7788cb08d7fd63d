// The dialog that asks a registry who holds a domain, and leads to the other look-ups.
#pragma once

#include <QDialog>
#include <functional>
#include <optional>

#include "domain/whois.h"
#include "profile/program.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace quillcast::desktop {

class BackgroundTask;
class ReportBox;
class StatusLine;

class DomainToolsForm final : public QDialog {
  Q_OBJECT
 public:
  DomainToolsForm(const profile::Program& program, QWidget* parent);
  ~DomainToolsForm() override;

  // Whom to ask for the names of an extension: the registry's public server, where nothing else is put here.
  std::function<net::HostPort(std::string_view extension)> server_for;

 public slots:
  // A question that is under way is given up.
  void reject() override;

 private:
  void MakeWindow();
  void AskRegistry();
  void AskReferral();
  void Ask(const net::HostPort& server);
  void ShowAnswer(const net::HostPort& server, const Result<domain::WhoisAnswer>& answer);
  // In the given order; what is of our own last.
  void SetEnabled(bool enabled);

  const profile::Program& program_;
  BackgroundTask* task_;
  StatusLine* status_;
  QLabel* label_ = nullptr;
  QLineEdit* domain_;
  QComboBox* extension_;
  QPushButton* whois_;
  ReportBox* result_;
  QPushButton* domain_ip_;
  QPushButton* ip_domain_;
  QPushButton* mx_lookup_;
  QPushButton* check_;
  QPushButton* referral_;
  QPushButton* cancel_;
  std::string asked_;                      // the whole name
  std::optional<net::HostPort> referred_;  // by the answer that is shown
};

}  // namespace quillcast::desktop
