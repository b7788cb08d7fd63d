#include "desktop/account/pace_page.h"

#include <QCheckBox>
#include <QLineEdit>

#include "account/account_pace.h"
#include "desktop/account/account_control_names.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/help_place.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/status_line.h"
#include "platform/text.h"

namespace quillcast::desktop {

using enum account::AccountKey;

PacePage::PacePage(QWidget* parent) : QWidget(parent) {
  setProperty(kHelpPlace, "pace");
  auto* column = new FormColumn(this);
  FormGrid* limits = column->AddBox(tr("No more messages than"));
  AddLine(limits, kRate, tr("&Rate:"), tr("No limit; or 30/min, 5/s, 200/h"));
  AddLine(limits, kQuotaHour, tr("In an &hour:"), tr("No limit; or 500"));
  AddLine(limits, kQuotaDay, tr("In a &day:"), tr("No limit; or 2000"));
  AddLine(limits, kDomainRate, tr("To each recipient doma&in:"), tr("No limit; or 20/min"));
  FormGrid* times = column->AddBox(tr("When, and over how many connections"));
  AddLine(times, kHours, tr("Hours &of the day:"), tr("Any; or 9-17, 8:30-17:30, 22-6"));
  AddLine(times, kPauseAfter, tr("&Pause:"), tr("None; or 100:60, a minute after each 100 messages"));
  AddLine(times, kPerConnection, tr("&Messages over one connection:"), tr("Any number; or 50"));
  AddLine(times, kConnections, tr("&Connections at a time:"), tr("1; or up to 50"));
  FormGrid* again = column->AddBox(tr("Who was deferred, or could not be reached"));
  AddLine(again, kRetries, tr("&Try again so many times:"), tr("Not once; or 3"));
  AddLine(again, kRetryAfter, tr("&First after:"), tr("5min; then twice as long each time, up to 1h"));
  AddLine(again, kNetworkWait, tr("&Wait for a lost network:"), tr("Not at all; or 1h"));
  auto* slow_down =
      again->AddPlain(NameOf(kSlowDown), new QCheckBox(tr("&Slow down where the server asks for fewer messages")));
  connect(slow_down, &QCheckBox::toggled, this, &PacePage::Changed);
  column->addStretch(1);
  column->Add(new StatusLine(this, "PaceNote"))->Say(tr("All runs count, those of other windows and commands too."));
}

void PacePage::AddLine(FormGrid* rows, account::AccountKey key, const QString& label, const QString& example) {
  auto* line = rows->Add(NameOf(key), label, new QLineEdit());
  line->setPlaceholderText(example);
  connect(line, &QLineEdit::textChanged, this, &PacePage::Changed);
}

run::PaceTexts PacePage::Texts() const {
  run::PaceTexts texts;
  for (const auto& [name, text, key] : account::PaceNames()) {
    if (const auto* box = findChild<QCheckBox*>(NameOf(key))) {
      texts.*text = box->isChecked() ? "1" : "0";
    } else {
      texts.*text = FromQt(findChild<QLineEdit*>(NameOf(key))->text());
    }
  }
  return texts;
}

void PacePage::Put(const run::PaceTexts& texts) {
  for (const auto& [name, text, key] : account::PaceNames()) {
    const std::string& value = texts.*text;
    if (auto* box = findChild<QCheckBox*>(NameOf(key))) {
      box->setChecked(IgnoreErrors(run::ReadSwitch(value), std::nullopt).value_or(false));
    } else {
      const bool is_none = platform::EqualsIgnoringAsciiCase(platform::Trim(value), "none");
      findChild<QLineEdit*>(NameOf(key))->setText(is_none ? QString() : ToQt(value));
    }
  }
}

void PacePage::FocusOn(account::AccountKey key) { findChild<QWidget*>(NameOf(key))->setFocus(); }

}  // namespace quillcast::desktop
