#include "desktop/shell/tips_form.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <array>

#include "desktop/widgets/form_column.h"
#include "desktop/widgets/qt_text.h"
#include "platform/text.h"

namespace quillcast::desktop {
namespace {

constexpr std::array<const char*, 3> kTips = {
    QT_TRANSLATE_NOOP("TipsForm",
                      "Merge tags make each message personal: put the caret where a name belongs and choose "
                      "First Name from “Merge tag” in the toolbar. Tags work in the subject too."),
    QT_TRANSLATE_NOOP("TipsForm",
                      "Look before you send: Preview shows the message as any of your recipients will see "
                      "it, says what may be missing, and sends one copy to yourself."),
    QT_TRANSLATE_NOOP("TipsForm",
                      "Every run keeps its report and its first message. History shows who got what, and "
                      "when, long after the window is closed."),
};

}  // namespace

TipsForm::TipsForm(profile::SettingsStore& settings, QWidget* parent)
    : QDialog(parent),
      settings_(settings),
      text_(new QLabel(this)),
      at_start_(new QCheckBox(tr("&Show tips at start"), this)) {
  setObjectName("TipsForm");
  setWindowTitle(tr("Tip of the Day"));
  setMinimumSize(440, 210);
  text_->setObjectName("TipText");
  text_->setWordWrap(true);
  text_->setAlignment(Qt::AlignTop | Qt::AlignLeft);
  QFont larger = text_->font();
  larger.setPointSize(larger.pointSize() + 2);
  text_->setFont(larger);
  at_start_->setObjectName("TipsCheckBox");
  at_start_->setChecked(IgnoreErrors(settings.Read("Options", "Tips", "1"), "1") != "0");
  auto* column = new FormColumn(this);
  column->Add(text_, 1);
  column->Add(at_start_);
  auto* next = column->AddButtons(QDialogButtonBox::Close)->addButton(tr("&Next tip"), QDialogButtonBox::ActionRole);
  next->setObjectName("NextTipButton");
  connect(next, &QPushButton::clicked, this, [this] { ShowTip(tip_ % 3 + 1); });
  const auto stored = settings.Read("Options", "FirstTip", "");
  ShowTip(static_cast<int>(platform::WholeNumberBetween(stored ? *stored : "", 1, 3).value_or(1)));
}

bool TipsForm::IsWanted(const profile::SettingsStore& settings, bool on_request) {
  const auto tips = settings.Read("Options", "Tips", "1");
  return on_request || !tips || platform::ParseWholeNumber(*tips) != 0;
}

void TipsForm::ShowTip(int tip) {
  tip_ = tip;
  text_->setText(tr(kTips.at(static_cast<std::size_t>(tip) - 1)));
}

// The next tip comes first the next time. Neither setting is worth a word where it cannot be kept.
void TipsForm::done(int result) {
  IgnoreErrors(settings_.Write("Options", "Tips", at_start_->isChecked() ? "1" : "0"));
  IgnoreErrors(settings_.Write("Options", "FirstTip", std::to_string(tip_ % 3 + 1)));
  QDialog::done(result);
}

}  // namespace quillcast::desktop
