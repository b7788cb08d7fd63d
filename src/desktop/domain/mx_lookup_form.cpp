#include "desktop/domain/mx_lookup_form.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <utility>

#include "desktop/domain/domain_keys.h"
#include "desktop/widgets/background_task.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/soon.h"
#include "desktop/widgets/status_line.h"
#include "domain/domain_name_rules.h"
#include "domain/name_look_ups.h"

namespace quillcast::desktop {

MXLookupForm::MXLookupForm(const profile::Program& program, QWidget* parent, const std::filesystem::path& resolver_file)
    : QDialog(parent),
      tell([this](const QString& text) {
        QMessageBox(QMessageBox::NoIcon, QApplication::applicationDisplayName(), text, QMessageBox::Ok, this).exec();
      }),
      program_(program),
      offered_(domain::ReadDnsServerList(resolver_file)),
      task_(new BackgroundTask(this)),
      status_(new StatusLine(this)),
      servers_(new QComboBox(this)),
      domain_(new QLineEdit(this)),
      look_up_(new QPushButton(tr("&Look Up"), this)),
      cancel_(new QPushButton(tr("Cancel"), this)),
      report_(new QPlainTextEdit(this)) {
  MakeWindow();
  connect(look_up_, &QPushButton::clicked, this, &MXLookupForm::LookUp);
  connect(cancel_, &QPushButton::clicked, this, [this] { task_->Cancel(); });
  servers_->setFocus();
}

MXLookupForm::~MXLookupForm() = default;

void MXLookupForm::MakeWindow() {
  setObjectName("MXLookupForm");
  setWindowTitle(tr("MX Lookup"));
  resize(500, 360);
  servers_->setEditable(true);
  servers_->setInsertPolicy(QComboBox::NoInsert);
  servers_->setCompleter(nullptr);  // what is typed is asked, though a row begins so
  for (const std::string& address : offered_.addresses) servers_->addItem(ToQt(address));
  servers_->setCurrentIndex(-1);
  servers_->setCurrentText({});
  domain_->setValidator(new DomainNameFilter(domain_));
  domain_->setPlaceholderText(tr("example.org"));
  look_up_->setObjectName("MXButton");
  look_up_->setDefault(true);
  cancel_->setObjectName("CancelButton");
  cancel_->setEnabled(false);
  report_->setObjectName("ReportTextBox");
  report_->setAccessibleName(tr("Mail hosts"));
  report_->setReadOnly(true);
  report_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  report_->setTabChangesFocus(true);
  report_->setPlaceholderText(tr("The hosts that take the domain's mail appear here, the most preferred first."));
  auto* column = new FormColumn(this);
  FormGrid* what = column->AddGrid();
  what->Add("MXComboBox", tr("DNS &server:"), servers_);
  what->Add("MXTextBox", tr("&Domain:"), domain_, {look_up_, cancel_});
  for (QLabel* label : what->findChildren<QLabel*>()) {
    (label->buddy() == servers_ ? dns_label_ : domain_label_) = label;
  }
  dns_label_->setObjectName("DNSLabel");
  domain_label_->setObjectName("DomainLabel");
  column->Add(report_, 1);
  column->Add(status_);
  column->AddButtons(QDialogButtonBox::Close);
}

void MXLookupForm::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  const std::string failure = std::exchange(offered_.failure, {});
  if (!offered_.status.empty()) status_->Say(InWords(offered_.status), NoteKind::kWarning);
  if (!failure.empty()) Soon(this, [this, failure] { tell(ToQt(failure)); });
}

void MXLookupForm::LookUp() {
  const std::string server = FromQt(servers_->currentText());
  const std::string name = FromQt(domain_->text());
  const auto offered = static_cast<std::size_t>(servers_->count());
  if (const auto complaint = domain::CheckMxQuestion(offered, server, name)) {
    program_.prompts.Warn(complaint->message);
    if (complaint->control == domain::DomainControl::kServers) return servers_->setFocus();
    return domain_->setFocus();
  }
  SetEnabled(false);
  report_->clear();
  cancel_->setFocus();
  status_->Say(tr("Asking %1…").arg(servers_->currentText()));
  task_->Start([this, server, name, &clock = program_.clock](const platform::CancelToken& cancel) {
    const auto report = std::make_shared<const Result<domain::MxReport>>(domain::LookUpMx(
        server, name,
        {clock, cancel, platform::Stop::kStop, net::Deadline::After(clock.Monotonic(), domain::kLookUpTime)}));
    return [this, report] { Show(*report); };
  });
}

void MXLookupForm::Show(const Result<domain::MxReport>& report) {
  if (!report) {
    status_->Fail(report.error());
  } else {
    report_->setPlainText(ToQt(report->Box()));
    status_->Say(InWords(report->status), report->failure ? NoteKind::kFailure : NoteKind::kInformation);
  }
  SetEnabled(true);
  look_up_->setFocus();
}

void MXLookupForm::SetEnabled(bool enabled) {
  for (QWidget* control : std::initializer_list<QWidget*>{dns_label_, servers_, domain_label_, domain_, look_up_}) {
    control->setEnabled(enabled);
  }
  cancel_->setEnabled(!enabled);
}

void MXLookupForm::reject() {
  task_->GiveUp();
  QDialog::reject();
}

}  // namespace quillcast::desktop
