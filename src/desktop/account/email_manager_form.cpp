#include "desktop/account/email_manager_form.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QTabWidget>
#include <QTimer>
#include <algorithm>
#include <chrono>

#include "account/account_form.h"
#include "account/keyring_note.h"
#include "account/provider_presets.h"
#include "account/stored_account.h"
#include "desktop/account/account_control_names.h"
#include "desktop/account/password_box.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/note_panel.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/status_line.h"

namespace quillcast::desktop {

using enum account::AccountKey;

namespace {

constexpr std::chrono::seconds kReadAgain{1};

}  // namespace

EmailManagerForm::EmailManagerForm(const profile::Program& program, QWidget* parent)
    : QDialog(parent),
      program_(program),
      secrets_(program.keyring, program.folders.settings),
      test_(new BackgroundTask(this)),
      pages_(new QTabWidget(this)),
      status_(new StatusLine(this)) {
  setObjectName("EmailManagerForm");
  setWindowTitle(tr("Email Manager"));
  pages_->setObjectName("AccountTabs");
  pages_->addTab(MakeGeneralPage(), tr("General"));
  pages_->addTab(MakeMethodPage(), tr("Method"));
  pages_->addTab(MakeMessagePage(), tr("Message"));
  pages_->addTab(MakePacePage(), tr("Pace"));
  auto* column = new FormColumn(this);
  column->Add(pages_, 1);
  column->Add(status_);
  AddButtons(column->AddButtons());

  Show(account::ShownInDialog(seen_));
  ReadStored();
}

// What is not the account could be saved as if it were: until it can be read there is nothing to change.
void EmailManagerForm::ReadStored() {
  const auto again = [this] { QTimer::singleShot(kReadAgain, this, &EmailManagerForm::ReadStored); };
  if (test_->is_running()) return again();
  const auto stored = account::AccountSettings::Load(program_.settings);
  for (QWidget* control : {static_cast<QWidget*>(pages_), Find<QWidget>("OKButton"), Find<QWidget>("TestButton")}) {
    control->setEnabled(static_cast<bool>(stored));
  }
  if (!stored) {
    status_->Fail(stored.error());
    return again();
  }
  seen_ = *stored;
  Show(account::ShownInDialog(seen_));
  status_->Say({});
  Find<QLineEdit>("FullNameTextBox")->setFocus();
}

account::AccountSettings EmailManagerForm::Shown() const {
  account::AccountSettings values;
  for (const account::AccountKeyRow& row : account::AccountKeyRows()) {
    if (row.key == kMethod) continue;
    QString value;
    if (const auto* check = Find<QCheckBox>(NameOf(row.key))) {
      value = check->isChecked() ? "1" : "0";
    } else if (const auto* combo = Find<QComboBox>(NameOf(row.key))) {
      value = combo->currentText();
    } else if (const auto* line = Find<QLineEdit>(NameOf(row.key))) {
      value = line->text();
    }
    values.Set(row.key, row.key == kPassword ? password_->Password() : FromQt(value));
  }
  const auto methods = account::RowOf(kMethod).choices;
  for (std::size_t i = 0; i < kMethodButtons.size(); ++i) {
    if (Find<QRadioButton>(kMethodButtons.at(i))->isChecked()) values.Set(kMethod, std::string(methods[i]));
  }
  return values;
}

// Into the controls, without a rule being asked.
void EmailManagerForm::Put(const account::AccountSettings& values) {
  filling_ = true;
  for (const account::AccountKeyRow& row : account::AccountKeyRows()) {
    const QString value = ToQt(values[row.key]);
    if (auto* check = Find<QCheckBox>(NameOf(row.key))) {
      check->setChecked(values.IsOn(row.key));
    } else if (auto* combo = Find<QComboBox>(NameOf(row.key))) {
      if (combo->findText(value) < 0) combo->addItem(value);
      combo->setCurrentText(value);
    } else if (row.key == kPassword) {
      password_->Put(values, account::KeyringNoteOf(program_.settings).kept_for);
    } else if (auto* line = Find<QLineEdit>(NameOf(row.key)); line != nullptr && line->text() != value) {
      line->setText(value);
    }
  }
  const auto methods = account::RowOf(kMethod).choices;
  const auto method = std::find(methods.begin(), methods.end(), values[kMethod]);
  const auto button = method == methods.end() ? 0 : method - methods.begin();
  Find<QRadioButton>(kMethodButtons.at(static_cast<std::size_t>(button)))->setChecked(true);
  filling_ = false;
}

void EmailManagerForm::Show(const account::AccountSettings& values) {
  Put(values);
  ControlChanged();
}

// Every change goes through the rules, which may change other values and what can be used.
void EmailManagerForm::ControlChanged() {
  if (filling_) return;
  account::AccountSettings values = Shown();
  account::ApplyRules(values);
  Put(values);
  for (const account::AccountKeyRow& row : account::AccountKeyRows()) {
    if (row.key == kMethod) continue;
    const bool is_typed_anew = row.key == kPassword && password_->is_replacing();
    Find<QWidget>(NameOf(row.key))
        ->setEnabled(is_typed_anew || account::IsEnabled(values, account::ControlOf(row.key)));
  }
  for (const auto control : {account::AccountControl::kPickThirdPath, account::AccountControl::kWrapArrows}) {
    Find<QWidget>(NameOf(control))->setEnabled(account::IsEnabled(values, control));
  }
  Find<QLabel>("TimeoutUnitLabel")->setText(Translated(account::TimeoutUnit(values[kTimeout])));
  OfferPreset();
}

void EmailManagerForm::OfferPreset() {
  const auto preset = account::PresetToOffer(Shown());
  preset_bar_->setVisible(preset.has_value());
  if (!preset) return;
  preset_bar_->SetText(
      tr("%1 sends through %2, port %3.").arg(ToQt(preset->name), ToQt(preset->server), ToQt(preset->port)));
}

// What is shown is told of; where it goes with what is stored by now it is as good.
bool EmailManagerForm::Check(const account::AccountChange& change) {
  const auto stored = account::LoadStored(program_.settings);
  const std::string kept_for = stored ? stored->note.kept_for : "";
  const auto complaint = change.Refusal(change.wanted(), kept_for);
  if (!complaint) return true;
  const auto account = stored ? change.Onto(stored->account) : Result<account::AccountSettings>(stored.error());
  if (!account) {
    status_->Fail(account.error());
    return false;
  }
  if (!change.Refusal(*account, kept_for)) return true;
  if (!complaint->message.empty()) program_.prompts.Warn(complaint->message);
  TurnTo(Find<QWidget>(NameOf(*complaint->control)));
  status_->Say(InWords(complaint->reason), NoteKind::kFailure);
  return false;
}

void EmailManagerForm::TurnTo(QWidget* control) {
  for (int page = 0; page < pages_->count(); ++page) {
    if (pages_->widget(page)->isAncestorOf(control)) pages_->setCurrentIndex(page);
  }
  control->setFocus();
}

void EmailManagerForm::ShowPace() { TurnTo(Find<QWidget>(NameOf(kRate))); }

}  // namespace quillcast::desktop
