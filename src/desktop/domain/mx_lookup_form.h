// The dialog that asks a name server of the person's choice which hosts take a domain's mail.
#pragma once

#include <QDialog>
#include <filesystem>
#include <functional>

#include "domain/dns_server_list.h"
#include "domain/mx_look_up.h"
#include "profile/program.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;

namespace quillcast::desktop {

class BackgroundTask;
class StatusLine;

class MXLookupForm final : public QDialog {
  Q_OBJECT
 public:
  MXLookupForm(const profile::Program& program, QWidget* parent,
               const std::filesystem::path& resolver_file = net::kResolverFile);
  ~MXLookupForm() override;

  // Shows a text in a box without an icon: the desktop's, where nothing else is put here.
  std::function<void(const QString& text)> tell;

 public slots:
  // A question that is under way is given up.
  void reject() override;

 protected:
  // What is to be said of the list of servers is said once the window stands.
  void showEvent(QShowEvent* event) override;

 private:
  void MakeWindow();
  void LookUp();
  void Show(const Result<domain::MxReport>& report);
  // In the given order.
  void SetEnabled(bool enabled);

  const profile::Program& program_;
  domain::DnsServerList offered_;
  BackgroundTask* task_;
  StatusLine* status_;
  QLabel* dns_label_ = nullptr;
  QComboBox* servers_;
  QLabel* domain_label_ = nullptr;
  QLineEdit* domain_;
  QPushButton* look_up_;
  QPushButton* cancel_;
  QPlainTextEdit* report_;
};

}  // namespace quillcast::desktop
