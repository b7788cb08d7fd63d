// The two dialogs that turn a host's name into its addresses, and an address into its names.
#pragma once

#include <QDialog>

#include "domain/name_look_ups.h"
#include "profile/program.h"

class QLineEdit;
class QPlainTextEdit;
class QPushButton;

namespace quillcast::desktop {

class BackgroundTask;
class StatusLine;

class ConversionForm : public QDialog {
  Q_OBJECT
 public:
  ~ConversionForm() override;

  // Whom to ask; without any, the system's name servers.
  std::vector<net::Endpoint> servers;

 public slots:
  // A question that is under way is given up.
  void reject() override;

 protected:
  struct Texts {
    const char* name;
    QString title;
    QString input;
    QString example;
    QString output;
    QString empty;
  };
  using Check = std::string (*)(std::string_view typed);
  using LookUp = Result<domain::FoundLines> (*)(std::string_view typed, const std::vector<net::Endpoint>& servers,
                                                const net::Patience& patience);

  ConversionForm(const profile::Program& program, const Texts& texts, Check check, LookUp look_up, QWidget* parent);

 private:
  void Convert();
  void Show(const Result<domain::FoundLines>& found);
  void SetEnabled(bool enabled);

  const profile::Program& program_;
  Check check_;
  LookUp look_up_;
  BackgroundTask* task_;
  StatusLine* status_;
  QLineEdit* input_;
  QPlainTextEdit* output_;
  QPushButton* convert_;
  QPushButton* cancel_;
};

class DomainIPForm final : public ConversionForm {
  Q_OBJECT
 public:
  DomainIPForm(const profile::Program& program, QWidget* parent);
};

class IPDomainForm final : public ConversionForm {
  Q_OBJECT
 public:
  IPDomainForm(const profile::Program& program, QWidget* parent);
};

}  // namespace quillcast::desktop
