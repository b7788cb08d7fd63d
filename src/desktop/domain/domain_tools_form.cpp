#include "desktop/domain/domain_tools_form.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "desktop/domain/conversion_form.h"
#include "desktop/domain/domain_check_form.h"
#include "desktop/domain/domain_keys.h"
#include "desktop/domain/mx_lookup_form.h"
#include "desktop/domain/report_box.h"
#include "desktop/widgets/background_task.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/status_line.h"
#include "domain/domain_name_rules.h"
#include "domain/whois_servers.h"

namespace quillcast::desktop {

DomainToolsForm::DomainToolsForm(const profile::Program& program, QWidget* parent)
    : QDialog(parent),
      server_for(domain::WhoisServerFor),
      program_(program),
      task_(new BackgroundTask(this)),
      status_(new StatusLine(this)),
      domain_(new QLineEdit(this)),
      extension_(new QComboBox(this)),
      whois_(new QPushButton(tr("&Whois"), this)),
      result_(new ReportBox("ResultTextBox", tr("Answer of the registry"),
                            tr("Who holds a domain appears here, as its registry tells it."), program, *status_, this)),
      domain_ip_(new QPushButton(tr("Domain to &IP…"), this)),
      ip_domain_(new QPushButton(tr("IP to D&omain…"), this)),
      mx_lookup_(new QPushButton(tr("&MX Lookup…"), this)),
      check_(new QPushButton(tr("Check Se&nder…"), this)),
      referral_(new QPushButton(this)),
      cancel_(new QPushButton(tr("Cancel"), this)) {
  MakeWindow();
  connect(whois_, &QPushButton::clicked, this, &DomainToolsForm::AskRegistry);
  connect(referral_, &QPushButton::clicked, this, &DomainToolsForm::AskReferral);
  connect(cancel_, &QPushButton::clicked, this, [this] { task_->Cancel(); });
  connect(domain_ip_, &QPushButton::clicked, this, [this] { DomainIPForm(program_, this).exec(); });
  connect(ip_domain_, &QPushButton::clicked, this, [this] { IPDomainForm(program_, this).exec(); });
  connect(mx_lookup_, &QPushButton::clicked, this, [this] { MXLookupForm(program_, this).exec(); });
  connect(check_, &QPushButton::clicked, this, [this] {
    const QString typed = domain_->text();
    DomainCheckForm(program_, typed.isEmpty() ? typed : typed + extension_->currentText(), this).exec();
  });
  domain_->setFocus();
}

DomainToolsForm::~DomainToolsForm() = default;

void DomainToolsForm::MakeWindow() {
  setObjectName("DomainToolsForm");
  setWindowTitle(tr("Domain Tools"));
  resize(760, 520);
  domain_->setValidator(new DomainLabelFilter(domain_));
  domain_->setPlaceholderText(tr("example"));
  extension_->setObjectName("ExtensionComboBox");
  extension_->setAccessibleName(tr("Extension"));
  extension_->setEditable(true);
  extension_->setInsertPolicy(QComboBox::NoInsert);
  extension_->setCompleter(nullptr);  // what is typed is asked for, though a row begins so
  for (const domain::WhoisServer& server : domain::kWhoisServers) extension_->addItem(ToQt(server.extension));
  extension_->setCurrentText(".com");
  whois_->setObjectName("WhoisButton");
  whois_->setDefault(true);
  domain_ip_->setObjectName("DomainIPButton");
  ip_domain_->setObjectName("IPDomainButton");
  mx_lookup_->setObjectName("MXLookupButton");
  check_->setObjectName("CheckButton");
  referral_->setObjectName("ReferralButton");
  referral_->hide();
  cancel_->setObjectName("CancelButton");
  cancel_->setEnabled(false);
  auto* column = new FormColumn(this);
  FormGrid* what = column->AddGrid();
  what->Add("DomainTextBox", tr("&Domain:"), domain_, {extension_, whois_, cancel_});
  label_ = what->findChild<QLabel*>();
  label_->setObjectName("Label");
  column->Add(result_, 1);
  column->Add(status_);
  column->AddLine({result_->save_button(), result_->print_button(), referral_, nullptr});
  column->AddLine({domain_ip_, ip_domain_, mx_lookup_, check_, nullptr});
  column->AddButtons(QDialogButtonBox::Close);
}

void DomainToolsForm::AskRegistry() {
  const std::string name = FromQt(domain_->text());
  if (const auto complaint = domain::CheckDomainName(name)) {
    program_.prompts.Warn(complaint->message);
    return domain_->setFocus();
  }
  const std::string extension = FromQt(extension_->currentText());
  asked_ = name + extension;
  result_->Show({});
  referred_.reset();
  Ask(server_for(extension));
}

void DomainToolsForm::AskReferral() {
  if (referred_) Ask(*referred_);
}

void DomainToolsForm::Ask(const net::HostPort& server) {
  referral_->hide();
  SetEnabled(false);
  cancel_->setFocus();
  status_->Say(tr("Asking %1…").arg(ToQt(server.host)));
  task_->Start([this, server, name = asked_, &clock = program_.clock](const platform::CancelToken& cancel) {
    const auto answer = std::make_shared<const Result<domain::WhoisAnswer>>(domain::AskWhois(
        server, name,
        {clock, cancel, platform::Stop::kStop, net::Deadline::After(clock.Monotonic(), domain::kWhoisTime)}));
    return [this, server, answer] { ShowAnswer(server, *answer); };
  });
}

void DomainToolsForm::ShowAnswer(const net::HostPort& server, const Result<domain::WhoisAnswer>& answer) {
  if (!answer) {
    status_->Fail(answer.error());
  } else {
    result_->Show(ToQt(answer->Box()));
    if (answer->cut_short) {
      status_->Fail(*answer->cut_short);
    } else {
      status_->Say(InWords(domain::DescribeWhois(*answer, server)));
    }
    referred_ = answer->referral;
  }
  if (referred_) referral_->setText(tr("&Ask %1 Too").arg(ToQt(referred_->host)));
  referral_->setVisible(referred_.has_value());
  SetEnabled(true);
  whois_->setFocus();
}

void DomainToolsForm::SetEnabled(bool enabled) {
  for (QWidget* control :
       std::initializer_list<QWidget*>{label_, domain_, extension_, whois_, result_->save_button(),
                                       result_->print_button(), domain_ip_, ip_domain_, mx_lookup_, check_}) {
    control->setEnabled(enabled);
  }
  cancel_->setEnabled(!enabled);
}

void DomainToolsForm::reject() {
  task_->GiveUp();
  QDialog::reject();
}

}  // namespace quillcast::desktop
