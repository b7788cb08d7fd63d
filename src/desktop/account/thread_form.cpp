#include "desktop/account/thread_form.h"

#include <QGroupBox>
#include <QHBoxLayout>
#include <QRadioButton>

#include "desktop/widgets/form_column.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/status_line.h"

namespace quillcast::desktop {
namespace {

// "SMTP-Thread" and "Single" give "SMTPSingleRadioButton".
QString ButtonName(std::size_t protocol, std::size_t mode) {
  return ToQt(account::kThreadSections.at(protocol)).section('-', 0, 0) + ToQt(account::kThreadModes.at(mode)) +
         "RadioButton";
}

}  // namespace

ThreadForm::ThreadForm(profile::SettingsStore& settings, QWidget* parent) : QDialog(parent), settings_(settings) {
  setObjectName("ThreadForm");
  setWindowTitle(tr("Thread Options"));
  const std::array<QString, 3> texts = {tr("No thread"), tr("Single thread"), tr("Second thread")};
  const auto stored = account::ThreadModes::Load(settings);
  const account::ThreadModes modes = stored ? *stored : account::ThreadModes();
  auto* column = new FormColumn(this);
  for (std::size_t protocol = 0; protocol < account::kThreadSections.size(); ++protocol) {
    auto* box = new QGroupBox(ToQt(account::kThreadSections.at(protocol)).section('-', 0, 0), this);
    auto* line = new QHBoxLayout(box);
    for (std::size_t mode = 0; mode < account::kThreadModes.size(); ++mode) {
      auto* button = new QRadioButton(texts.at(mode), box);
      button->setObjectName(ButtonName(protocol, mode));
      button->setChecked(modes[static_cast<account::ThreadProtocol>(protocol)] ==
                         static_cast<account::ThreadMode>(mode));
      line->addWidget(button);
      if (protocol == 0 && button->isChecked()) button->setFocus();
    }
    column->Add(box);
  }
  auto* note = column->Add(new StatusLine(this, "NoteLabel"));
  note->Say(tr("The modes are kept, and have no effect yet: messages are made and sent on one thread."));
  if (!stored) note->Fail(stored.error());
  column->AddButtons(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
}

void ThreadForm::accept() {
  account::ThreadModes modes;
  for (std::size_t protocol = 0; protocol < account::kThreadSections.size(); ++protocol) {
    for (std::size_t mode = 0; mode < account::kThreadModes.size(); ++mode) {
      if (!findChild<QRadioButton*>(ButtonName(protocol, mode))->isChecked()) continue;
      modes.Set(static_cast<account::ThreadProtocol>(protocol), static_cast<account::ThreadMode>(mode));
    }
  }
  const auto saved = modes.Save(settings_);
  if (saved) {
    QDialog::accept();
  } else {
    findChild<StatusLine*>("NoteLabel")->Fail(saved.error());
  }
}

}  // namespace quillcast::desktop
