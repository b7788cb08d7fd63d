#include "desktop/domain/conversion_form.h"

#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>

#include "desktop/widgets/background_task.h"
#include "desktop/widgets/empty_state.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/status_line.h"

namespace quillcast::desktop {

ConversionForm::ConversionForm(const profile::Program& program, const Texts& texts, Check check, LookUp look_up,
                               QWidget* parent)
    : QDialog(parent),
      program_(program),
      check_(check),
      look_up_(look_up),
      task_(new BackgroundTask(this)),
      status_(new StatusLine(this)),
      input_(new QLineEdit(this)),
      output_(new QPlainTextEdit(this)),
      convert_(new QPushButton(tr("&Convert"), this)),
      cancel_(new QPushButton(tr("Cancel"), this)) {
  setObjectName(texts.name);
  setWindowTitle(texts.title);
  resize(460, 320);
  input_->setPlaceholderText(texts.example);
  output_->setObjectName("OutputTextBox");
  output_->setAccessibleName(texts.output);
  output_->setReadOnly(true);
  output_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  output_->setTabChangesFocus(true);
  output_->setPlaceholderText(texts.empty);
  convert_->setObjectName("ConvertButton");
  convert_->setDefault(true);
  cancel_->setObjectName("CancelButton");
  cancel_->setEnabled(false);
  auto* column = new FormColumn(this);
  column->AddGrid()->Add("InputTextBox", texts.input, input_, {convert_, cancel_});
  column->Add(output_, 1);
  column->Add(status_);
  column->AddButtons(QDialogButtonBox::Close);
  connect(convert_, &QPushButton::clicked, this, &ConversionForm::Convert);
  connect(cancel_, &QPushButton::clicked, this, [this] { task_->Cancel(); });
  input_->setFocus();
}

ConversionForm::~ConversionForm() = default;

void ConversionForm::Convert() {
  const std::string typed = FromQt(input_->text());
  if (const std::string complaint = check_(typed); !complaint.empty()) {
    program_.prompts.Warn(complaint);
    return input_->setFocus();
  }
  status_->Say(tr("Asking…"));
  SetEnabled(false);
  cancel_->setFocus();
  task_->Start(
      [this, typed, asked = servers, look_up = look_up_, &clock = program_.clock](const platform::CancelToken& cancel) {
        const auto found = std::make_shared<const Result<domain::FoundLines>>(look_up(
            typed, asked,
            {clock, cancel, platform::Stop::kStop, net::Deadline::After(clock.Monotonic(), domain::kLookUpTime)}));
        return [this, found] { Show(*found); };
      });
}

void ConversionForm::Show(const Result<domain::FoundLines>& found) {
  SetEnabled(true);
  convert_->setFocus();
  if (!found) return status_->Fail(found.error());
  output_->setPlainText(ToQt(found->Box()));
  status_->Say(InWords(found->status));
}

void ConversionForm::SetEnabled(bool enabled) {
  for (QWidget* control : std::initializer_list<QWidget*>{input_, convert_}) control->setEnabled(enabled);
  cancel_->setEnabled(!enabled);
}

void ConversionForm::reject() {
  task_->GiveUp();
  QDialog::reject();
}

DomainIPForm::DomainIPForm(const profile::Program& program, QWidget* parent)
    : ConversionForm(program,
                     {"DomainIPForm", tr("Domain to IP"), tr("&Domain:"), tr("mail.example.org"), tr("Addresses"),
                      tr("The addresses of the name appear here.")},
                     domain::CheckNameToConvert, domain::AddressesOf, parent) {}

IPDomainForm::IPDomainForm(const profile::Program& program, QWidget* parent)
    : ConversionForm(program,
                     {"IPDomainForm", tr("IP to Domain"), tr("&IP:"), tr("192.0.2.1"), tr("Names"),
                      tr("The names of the address appear here.")},
                     domain::CheckAddressToConvert, domain::NamesOf, parent) {}

}  // namespace quillcast::desktop
