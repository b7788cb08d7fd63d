#include "desktop/domain/extra_form5.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSplitter>
#include <QVBoxLayout>

#include "desktop/domain/meaning_box.h"
#include "desktop/domain/report_box.h"
#include "desktop/widgets/background_task.h"
#include "desktop/widgets/digits_filter.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/row_list.h"
#include "desktop/widgets/status_line.h"
#include "domain/connection/connection_input.h"
#include "domain/connection/connection_meaning.h"

namespace quillcast::desktop {
namespace {

constexpr int kNarrow = 90;       // pixels; for a few digits
constexpr int kLeastFacts = 130;  // pixels; the head of the list and four rows, however much there is to say above
constexpr const char* kCancelQuestion = "Are you sure you want to cancel the process?";

}  // namespace

ExtraForm5::ExtraForm5(const profile::Program& program, QWidget* parent)
    : QDialog(parent),
      program_(program),
      task_(new BackgroundTask(this)),
      status_(new StatusLine(this)),
      server_(new QLineEdit(this)),
      port_(new QLineEdit(this)),
      report_(new ReportBox("Report", tr("Report"), tr("What the server says appears here."), program, *status_, this)),
      meaning_(new MeaningBox(this)),
      facts_list_(new RowList(
          "FactsList", tr("What came of each step"), {{tr("What"), 18}, {tr("Result")}},
          [this](std::size_t row, int column) { return InWords(column == 0 ? facts_[row].what : facts_[row].value); },
          this)),
      process_(new QPushButton(tr("&Test"), this)),
      cancel_(new QPushButton(tr("Cancel"), this)) {
  MakeWindow();
  connect(process_, &QPushButton::clicked, this, &ExtraForm5::Process);
  connect(cancel_, &QPushButton::clicked, this, &ExtraForm5::reject);
  server_->setFocus();
}

ExtraForm5::~ExtraForm5() = default;

void ExtraForm5::MakeWindow() {
  setObjectName("ExtraForm5");
  setWindowTitle(tr("Test a Server"));
  resize(860, 520);
  process_->setObjectName("ProcessButton");
  process_->setDefault(true);
  cancel_->setObjectName("CancelButton");
  server_->setPlaceholderText(tr("mail.example.org"));
  port_->setValidator(new DigitsFilter(port_));
  port_->setMaximumWidth(kNarrow);
  port_->setPlaceholderText("587");
  auto* column = new FormColumn(this);
  FormGrid* where = column->AddGrid();
  where->Add("ServerTextBox", tr("Mail s&erver:"), server_);
  where->Add("PortTextBox", tr("P&ort:"), port_);
  for (QLabel* label : where->findChildren<QLabel*>()) {
    (label->buddy() == server_ ? server_label_ : port_label_) = label;
  }
  server_label_->setObjectName("Label1");
  port_label_->setObjectName("Label2");
  auto* halves = new QSplitter(this);
  halves->setObjectName("Splitter");
  halves->setChildrenCollapsible(false);
  halves->addWidget(report_);
  halves->addWidget(MakeBeside());
  column->Add(halves, 1);
  column->Add(status_);
  column->AddLine({report_->save_button(), report_->print_button(), nullptr, process_, cancel_});
}

QWidget* ExtraForm5::MakeBeside() {
  auto* beside = new QWidget(this);
  auto* column = new QVBoxLayout(beside);
  column->setContentsMargins(0, 0, 0, 0);
  facts_list_->SetLongText(LongText::kWrapped);
  facts_list_->SetEmptyText(tr("Name a mail server and its port, and press Test. No message and no password is sent."));
  facts_list_->setMinimumHeight(kLeastFacts);
  column->addWidget(meaning_);
  column->addWidget(facts_list_, 1);
  return beside;
}

void ExtraForm5::Process() {
  const std::string server = FromQt(server_->text());
  const std::string port = FromQt(port_->text());
  if (const auto complaint = domain::CheckTest(server, port)) {
    if (!complaint->message.empty()) program_.prompts.Warn(complaint->message);
    status_->Say(InWords(complaint->reason), NoteKind::kFailure);
    return (complaint->control == domain::TestControl::kServer ? server_ : port_)->setFocus();
  }
  const auto options = domain::TestOptions(server, port, "Automatic");
  if (!options) return status_->Fail(options.error());
  report_->Show({});
  meaning_->Show({}, NoteKind::kInformation);
  facts_.clear();
  facts_list_->Reset(0);
  SetEnabled(false);
  status_->Say(tr("Trying %1…").arg(server_->text()));
  cancel_->setFocus();
  task_->Start([this, &clock = program_.clock, options = *options](const platform::CancelToken& cancel) {
    const auto test = std::make_shared<const domain::ConnectionTest>(domain::TestConnection(options, clock, cancel));
    return [this, test] { ShowTest(*test); };
  });
}

void ExtraForm5::ShowTest(const domain::ConnectionTest& test) {
  report_->Show(ToQt(test.report));
  facts_ = domain::FactsOf(test);
  facts_list_->Reset(facts_.size());
  meaning_->Show(InWords(domain::MeaningOf(test)), test.TakesMail() ? NoteKind::kInformation : NoteKind::kWarning);
  status_->Say({});
  SetEnabled(true);
  if (cancel_->hasFocus()) process_->setFocus();
}

void ExtraForm5::SetEnabled(bool enabled) {
  for (QWidget* control : std::initializer_list<QWidget*>{report_, server_label_, server_, port_label_, port_, process_,
                                                          report_->save_button(), report_->print_button()}) {
    control->setEnabled(enabled);
  }
}

void ExtraForm5::reject() {
  if (program_.prompts.Ask(kCancelQuestion) != platform::Answer::kYes) return;
  task_->GiveUp();
  QDialog::reject();
}

}  // namespace quillcast::desktop
