#include "desktop/shell/tips_form.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>

#include "desktop/shell/help_form.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/qt_text.h"
#include "platform/text.h"

namespace quillcast::desktop {

TipsForm::TipsForm(const profile::Program& program, QWidget* parent)
    : QDialog(parent),
      program_(program),
      series_(new QLabel(this)),
      text_(new QLabel(this)),
      at_start_(new QCheckBox(tr("&Show tips at start"), this)) {
  BuildWindow();
  at_start_->setChecked(IgnoreErrors(program.settings.Read("Options", "Tips", "1"), "1") != "0");
  ShowTip(help::FirstTip(program.settings));
}

void TipsForm::BuildWindow() {
  setObjectName("TipsForm");
  setWindowTitle(tr("Tip of the Day"));
  setMinimumSize(520, 240);
  series_->setObjectName("TipSeries");
  text_->setObjectName("TipText");
  text_->setWordWrap(true);
  text_->setAlignment(Qt::AlignTop | Qt::AlignLeft);
  QFont larger = text_->font();
  larger.setPointSize(larger.pointSize() + 2);
  text_->setFont(larger);
  at_start_->setObjectName("TipsCheckBox");
  auto* column = new FormColumn(this);
  column->Add(series_);
  column->Add(text_, 1);
  column->Add(at_start_);
  auto* buttons = column->AddButtons(QDialogButtonBox::Close);
  const auto add = [&](const char* name, const QString& text, auto act) {
    auto* button = buttons->addButton(text, QDialogButtonBox::ActionRole);
    button->setObjectName(name);
    button->setDefault(button->objectName() == "NextTipButton");
    if (button->isDefault()) button->setFocus();
    connect(button, &QPushButton::clicked, this, act);
  };
  add("TipBeforeButton", tr("&Previous tip"), [this] { ShowTip(help::TipBefore(tip_)); });
  add("NextTipButton", tr("&Next tip"), [this] { ShowTip(help::NextTip(tip_)); });
  add("MoreButton", tr("&More about this"),
      [this] { (new HelpForm(program_.folders, help::TipAt(tip_).topic, this))->show(); });
}

bool TipsForm::IsWanted(const profile::SettingsStore& settings, bool on_request) {
  const auto tips = settings.Read("Options", "Tips", "1");
  return on_request || !tips || platform::ParseWholeNumber(*tips) != 0;
}

void TipsForm::ShowTip(help::TipPlace tip) {
  tip_ = tip;
  series_->setText(tr("%1: tip %2 of %3")
                       .arg(Translated(help::SeriesName(tip.series)))
                       .arg(help::NumberOf(tip))
                       .arg(help::kTipSeries * help::kTipsInSeries));
  text_->setText(Translated(help::TipAt(tip).text));
}

// The next tip comes first the next time. Neither setting is worth a word where it cannot be kept.
void TipsForm::done(int result) {
  IgnoreErrors(program_.settings.Write("Options", "Tips", at_start_->isChecked() ? "1" : "0"));
  IgnoreErrors(help::KeepFirstTip(program_.settings, help::NextTip(tip_)));
  QDialog::done(result);
}

}  // namespace quillcast::desktop
