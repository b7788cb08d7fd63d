#include "desktop/domain/domain_check_form.h"

#include <QLineEdit>
#include <QPushButton>

#include "desktop/widgets/background_task.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/row_list.h"
#include "desktop/widgets/status_line.h"
#include "domain/sender/account_sender.h"
#include "domain/sender/kept_check.h"

namespace quillcast::desktop {
namespace {

QString VerdictText(domain::Verdict verdict) {
  switch (verdict) {
    case domain::Verdict::kGood:
      return DomainCheckForm::tr("Good");
    case domain::Verdict::kNote:
      return DomainCheckForm::tr("Note");
    case domain::Verdict::kWeak:
      return DomainCheckForm::tr("Weak");
    case domain::Verdict::kBad:
      return DomainCheckForm::tr("Bad");
    case domain::Verdict::kUnknown:
      break;
  }
  return DomainCheckForm::tr("Not known");
}

}  // namespace

DomainCheckForm::DomainCheckForm(const profile::Program& program, const QString& domain, QWidget* parent)
    : QDialog(parent),
      program_(program),
      task_(new BackgroundTask(this)),
      status_(new StatusLine(this)),
      domain_(new QLineEdit(domain, this)),
      selector_(new QLineEdit(this)),
      check_(new QPushButton(tr("C&heck"), this)),
      findings_list_(new RowList(
          "FindingsList", tr("What was found"),
          {{tr("Verdict"), 12}, {tr("About"), 13}, {tr("What was found, and what to do")}},
          [this](std::size_t row, int column) { return Cell(row, column); }, this)) {
  MakeWindow();
  connect(check_, &QPushButton::clicked, this, &DomainCheckForm::Check);
  if (domain.isEmpty()) {
    const auto account = account::AccountSettings::Load(profile::SettingsStore(program.folders.settings));
    const auto own = account ? domain::QuestionOf(*account) : account.error();
    if (own) domain_->setText(ToQt(own->domain));
  }
  domain_->setFocus();
}

DomainCheckForm::~DomainCheckForm() = default;

void DomainCheckForm::MakeWindow() {
  setObjectName("DomainCheckForm");
  setWindowTitle(tr("Check a Sender's Domain"));
  resize(760, 500);
  domain_->setPlaceholderText(tr("example.org"));
  selector_->setPlaceholderText(tr("the usual ones"));
  selector_->setToolTip(tr("Behind \"s=\" in the DKIM-Signature of a message that you sent"));
  check_->setObjectName("CheckButton");
  check_->setDefault(true);
  findings_list_->SetLongText(LongText::kWrapped);
  findings_list_->SetEmptyText(
      tr("Name the domain behind the \"@\" of your address, and press Check. Its name servers are asked; no message is "
         "sent."));
  auto* column = new FormColumn(this);
  FormGrid* what = column->AddGrid();
  what->Add("DomainTextBox", tr("&Domain:"), domain_);
  what->Add("SelectorTextBox", tr("DKIM &selector:"), selector_, {check_});
  column->Add(findings_list_, 1);
  column->Add(status_);
  auto* copy = new QPushButton(tr("Cop&y"), this);
  copy->setObjectName("CopyButton");
  copy->setToolTip(tr("The chosen findings, or all of them"));
  connect(copy, &QPushButton::clicked, findings_list_, &RowList::Copy);
  column->AddLine({copy, nullptr});
  column->AddButtons(QDialogButtonBox::Close);
}

QString DomainCheckForm::Cell(std::size_t row, int column) const {
  const domain::Finding& finding = findings_[row];
  if (column == 0) return VerdictText(finding.verdict);
  if (column == 1) return ToQt(finding.topic());
  return finding.remedy.empty() ? InWords(finding.what) : InWords(finding.what) + "\n" + InWords(finding.remedy);
}

void DomainCheckForm::Check() {
  if (task_->is_running()) return task_->Cancel();
  const auto account = account::AccountSettings::Load(profile::SettingsStore(program_.folders.settings));
  if (!account) return status_->Fail(account.error());
  const std::string typed = FromQt(domain_->text().trimmed());
  auto question = domain::QuestionOf(typed, *account);
  if (typed.empty() || !question) {
    if (!question) status_->Fail(question.error());
    if (typed.empty()) program_.prompts.Warn("Please specify your domain.");
    return domain_->setFocus();
  }
  if (const QString pasted = selector_->text().trimmed(); !pasted.isEmpty()) {
    const auto selector = domain::SelectorIn(FromQt(pasted));
    if (!selector) {
      status_->Fail(selector.error());
      return selector_->setFocus();
    }
    question->selectors = {*selector};
  }
  findings_.clear();
  findings_list_->Reset(0);
  status_->Say(tr("Asking about %1…").arg(ToQt(question->domain)));
  check_->setText(tr("&Cancel"));
  task_->Start([this, question = *question, asked = servers, &program = program_](const platform::CancelToken& cancel) {
    domain::SenderLookup lookup;
    lookup.servers = asked;
    profile::SettingsStore settings(program.folders.settings, profile::kWindowPatience);
    const auto report = std::make_shared<const Result<domain::KeptReport>>(
        domain::CheckAndKeep(question, lookup, settings, program.clock, cancel));
    return [this, name = question.domain, report] { Show(name, *report); };
  });
}

void DomainCheckForm::Show(const std::string& domain, const Result<domain::KeptReport>& checked) {
  check_->setText(tr("C&heck"));
  if (!checked) return status_->Fail(checked.error());
  const domain::SenderReport& report = checked->report;
  findings_ = report.findings;
  findings_list_->Reset(findings_.size());
  const QString summary = InWords(report.Summary(domain));
  if (checked->not_kept) {
    const QString why = InWords(AsSentence(*checked->not_kept));
    return status_->Say(tr("%1 The result could not be kept: %2").arg(summary, why), NoteKind::kWarning);
  }
  status_->Say(summary, report.Gravest() == domain::Verdict::kBad ? NoteKind::kWarning : NoteKind::kInformation);
}

void DomainCheckForm::reject() {
  task_->GiveUp();
  QDialog::reject();
}

}  // namespace quillcast::desktop
