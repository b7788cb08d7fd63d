#include "desktop/account/thread_form.h"

#include <QDialogButtonBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QRadioButton>
#include <QVBoxLayout>

#include "desktop/widgets/qt_text.h"

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
  auto* column = new QVBoxLayout(this);
  for (std::size_t protocol = 0; protocol < account::kThreadSections.size(); ++protocol) {
    auto* box = new QGroupBox(ToQt(account::kThreadSections.at(protocol)).section('-', 0, 0), this);
    auto* line = new QHBoxLayout(box);
    for (std::size_t mode = 0; mode < account::kThreadModes.size(); ++mode) {
      auto* button = new QRadioButton(texts.at(mode), box);
      button->setObjectName(ButtonName(protocol, mode));
      button->setChecked(modes[static_cast<account::ThreadProtocol>(protocol)] ==
                         static_cast<account::ThreadMode>(mode));
      line->addWidget(button);
    }
    column->addWidget(box);
  }
  auto* note =
      new QLabel(tr("The modes are kept, and have no effect yet: messages are made and sent on one thread."), this);
  note->setObjectName("NoteLabel");
  note->setWordWrap(true);
  note->setTextFormat(Qt::PlainText);
  column->addWidget(note);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  connect(buttons, &QDialogButtonBox::accepted, this, &ThreadForm::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &ThreadForm::reject);
  column->addWidget(buttons);
  if (!stored) note->setText(InWords(stored.error()));
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
    findChild<QLabel*>("NoteLabel")->setText(InWords(saved.error()));
  }
}

}  // namespace quillcast::desktop
