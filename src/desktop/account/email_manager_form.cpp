#include "desktop/account/email_manager_form.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <algorithm>

#include "account/account_checks.h"
#include "account/account_form.h"
#include "account/provider_presets.h"
#include "desktop/account/account_control_names.h"
#include "desktop/account/outlook_express_form.h"
#include "desktop/account/password_box.h"
#include "desktop/account/thread_form.h"
#include "desktop/widgets/digits_filter.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/note_panel.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/status_line.h"
#include "desktop/widgets/up_down.h"
#include "platform/text.h"
#include "smtp/outcome_text.h"

namespace quillcast::desktop {
namespace {

using enum account::AccountKey;
constexpr std::array<const char*, 3> kMethodButtons = {"PersonalRadioButton", "BulkRadioButton", "ThirdRadioButton"};
constexpr int kNarrow = 90;       // pixels; for a few digits
constexpr int kBelowButton = 28;  // pixels that a label stands in below its radio button

}  // namespace

template <typename Control>
Control* EmailManagerForm::Find(std::string_view name) const {
  return findChild<Control*>(ToQt(name));
}

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
  auto* column = new FormColumn(this);
  column->Add(pages_, 1);
  column->Add(status_);
  AddButtons(column->AddButtons());

  const auto stored = account::AccountSettings::Load(program_.settings);
  if (!stored) status_->Fail(stored.error());
  Show(account::ShownInDialog(stored ? *stored : account::AccountSettings()));
  Find<QLineEdit>("FullNameTextBox")->setFocus();
}

QWidget* EmailManagerForm::MakeControl(const account::AccountKeyRow& row, const QString& label) {
  switch (account::KindOf(row)) {
    case account::AccountKeyKind::kSwitch: {
      auto* box = new QCheckBox(label, this);
      connect(box, &QCheckBox::toggled, this, &EmailManagerForm::ControlChanged);
      return box;
    }
    case account::AccountKeyKind::kChoice: {
      auto* box = new QComboBox(this);
      for (const auto& choice : row.choices) box->addItem(ToQt(choice));
      box->setSizeAdjustPolicy(QComboBox::AdjustToContents);
      connect(box, &QComboBox::currentTextChanged, this, &EmailManagerForm::ControlChanged);
      return box;
    }
    case account::AccountKeyKind::kNumber:
    case account::AccountKeyKind::kText:
      break;
  }
  auto* box = row.key == kPassword ? password_ = new PasswordBox(this) : new QLineEdit(this);
  if (row.bounds) {
    box->setValidator(new DigitsFilter(box));
    box->setFixedWidth(kNarrow);
  }
  connect(box, &QLineEdit::textChanged, this, &EmailManagerForm::ControlChanged);
  return box;
}

std::vector<QWidget*> EmailManagerForm::MakeBeside(account::AccountKey key, QWidget* control) {
  if (key == kTimeout) {
    auto* unit = new QLabel(this);
    unit->setObjectName("TimeoutUnitLabel");
    return {unit};
  }
  if (key == kPassword) return {password_->change_button()};
  if (key == kWrap) {
    const auto& bounds = *account::RowOf(key).bounds;
    auto* arrows = new UpDown(qobject_cast<QLineEdit*>(control), static_cast<int>(bounds.lowest),
                              static_cast<int>(bounds.highest), this);
    arrows->setObjectName(NameOf(account::AccountControl::kWrapArrows));
    return {arrows};
  }
  if (key == kName) {
    auto* import = new QPushButton(tr("Impo&rt…"), this);
    import->setObjectName("ImportButton");
    connect(import, &QPushButton::clicked, this, &EmailManagerForm::Import);
    return {import};
  }
  if (key == kThirdPath) {
    auto* browse = new QPushButton(tr("Bro&wse…"), this);
    browse->setObjectName(NameOf(account::AccountControl::kPickThirdPath));
    connect(browse, &QPushButton::clicked, this, &EmailManagerForm::PickFolder);
    return {browse};
  }
  return {};
}

void EmailManagerForm::AddRow(FormGrid* rows, account::AccountKey key, const QString& label) {
  const account::AccountKeyRow& row = account::RowOf(key);
  QWidget* control = MakeControl(row, label);
  if (account::KindOf(row) == account::AccountKeyKind::kSwitch) {
    rows->AddPlain(NameOf(key), control);
  } else {
    rows->Add(NameOf(key), label, control, MakeBeside(key, control));
  }
}

QWidget* EmailManagerForm::MakeGeneralPage() {
  auto* page = new QWidget(this);
  auto* column = new FormColumn(page);
  FormGrid* sender = column->AddBox(tr("You"));
  AddRow(sender, kName, tr("&Full name:"));
  AddRow(sender, kEmail, tr("&E-mail address:"));
  column->Add(MakePresetBar());

  FormGrid* server = column->AddBox(tr("Mail server (SMTP)"));
  AddRow(server, kServer, tr("&Server:"));
  Find<QLineEdit>("ServerTextBox")->setPlaceholderText(tr("mail.example.org; several are parted by semicolons"));
  AddRow(server, kPort, tr("&Port:"));
  AddRow(server, kSecurity, tr("Securit&y:"));
  AddRow(server, kTimeout, tr("&Time-out:"));

  FormGrid* sign_in = column->AddBox(tr("Signing in"));
  AddRow(sign_in, kAuth, tr("The server needs &authentication"));
  AddRow(sign_in, kUsername, tr("&User name:"));
  AddRow(sign_in, kPasswordFrom, tr("Passw&ord from:"));
  AddRow(sign_in, kPassword, tr("Pass&word:"));
  connect(password_, &PasswordBox::Replacing, this, &EmailManagerForm::ControlChanged);
  AddRow(sign_in, kPasswordCommand, tr("&Command:"));
  Find<QLineEdit>("PasswordCommandTextBox")->setPlaceholderText(tr("prints the password on its first line"));
  AddRow(sign_in, kAuthMode, tr("&Mode:"));
  AddRow(sign_in, kPipeline, tr("Send without waiting for each answer (p&ipelining)"));
  AddRow(sign_in, kNoAuth, tr("Go on where the server offers &no authentication"));
  column->addStretch(1);
  return page;
}

QWidget* EmailManagerForm::MakePresetBar() {
  preset_bar_ = new NotePanel(NoteKind::kInformation, "PresetBar", "PresetLabel", this);
  preset_bar_->AddOffer("PresetButton", tr("Fill &in"), [this] { FillInPreset(); })->setAutoDefault(true);
  preset_bar_->hide();
  return preset_bar_;
}

void EmailManagerForm::FillInPreset() {
  const auto preset = account::PresetToOffer(Shown());
  if (!preset) return;
  Show(account::FilledIn(Shown(), *preset));
  Find<QLineEdit>("PasswordTextBox")->setFocus();
  status_->Say(ToQt(preset->note));
}

void EmailManagerForm::AddMethod(FormGrid* rows, std::size_t method, const QString& text) {
  rows->Indent(0);
  auto* button = rows->AddWide(kMethodButtons.at(method), new QRadioButton(text, this));
  connect(button, &QRadioButton::toggled, this, &EmailManagerForm::ControlChanged);
  rows->Indent(kBelowButton);
}

QWidget* EmailManagerForm::MakeMethodPage() {
  auto* page = new QWidget(this);
  auto* column = new FormColumn(page);
  FormGrid* rows = column->AddGrid();
  AddMethod(rows, 0, tr("&Personal: a message of their own to each recipient"));
  AddRow(rows, kToField, tr("&To field:"));
  AddMethod(rows, 1, tr("&Bulk: one message to all, by blind copy"));
  AddRow(rows, kBccField, tr("BCC f&ield:"));
  AddMethod(rows, 2, tr("&3rd party: into the queue folder of another mail server"));
  AddRow(rows, kThirdField, tr("Mail &server:"));
  AddRow(rows, kThirdPath, tr("&Queue folder:"));
  column->addStretch(1);
  column->Add(new StatusLine(this, "MethodNote"))
      ->Say(tr("Runs of this program always send personally; the other methods keep their settings."));
  return page;
}

QWidget* EmailManagerForm::MakeMessagePage() {
  auto* page = new QWidget(this);
  auto* column = new FormColumn(page);
  FormGrid* encoding = column->AddBox(tr("How it is written"));
  AddRow(encoding, kCharSet, tr("&Character set:"));
  AddRow(encoding, kHeaderEncoding, tr("&Header encoding:"));
  AddRow(encoding, kEncoding, tr("&Body encoding:"));
  AddRow(encoding, kAttachmentEncoding, tr("&Attachment encoding:"));
  AddRow(encoding, kAutoWrap, tr("&Wrap long lines of the body"));
  AddRow(encoding, kWrap, tr("C&olumns:"));
  AddRow(encoding, kTextPart, tr("Add a plain-&text part to HTML messages"));
  AddRow(encoding, kBoundary, tr("Use a boundary &prefix of our own"));
  AddRow(encoding, kExtended, tr("Use server e&xtensions that are not announced; read message files leniently"));
  FormGrid* notices = column->AddBox(tr("Delivery notices"));
  AddRow(notices, kDsnNotify, tr("&Notify:"));
  AddRow(notices, kDsnReturn, tr("&Return:"));
  column->addStretch(1);
  return page;
}

void EmailManagerForm::AddButtons(QDialogButtonBox* box) {
  const auto add = [&](const QString& text, QDialogButtonBox::ButtonRole role, const char* name) {
    QPushButton* button = box->addButton(text, role);
    button->setObjectName(name);
    return button;
  };
  test_button_ = add(tr("Test"), QDialogButtonBox::ResetRole, "TestButton");
  connect(test_button_, &QPushButton::clicked, this, &EmailManagerForm::TestOrCancel);
  connect(add(tr("Reset…"), QDialogButtonBox::ResetRole, "ResetButton"), &QPushButton::clicked, this,
          &EmailManagerForm::Reset);
  connect(add(tr("Advanced…"), QDialogButtonBox::ResetRole, "AdvancedButton"), &QPushButton::clicked, this,
          [this] { ThreadForm(program_.settings, this).exec(); });
  add(tr("OK"), QDialogButtonBox::AcceptRole, "OKButton")->setDefault(true);
  add(tr("Cancel"), QDialogButtonBox::RejectRole, "CancelButton");
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
      password_->Put(values);
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

bool EmailManagerForm::Check(const account::AccountSettings& shown) {
  const auto complaint = account::CheckAccount(shown);
  if (!complaint) return true;
  if (!complaint->message.empty()) program_.prompts.Warn(complaint->message);
  auto* control = Find<QWidget>(NameOf(*complaint->control));
  for (int page = 0; page < pages_->count(); ++page) {
    if (pages_->widget(page)->isAncestorOf(control)) pages_->setCurrentIndex(page);
  }
  control->setFocus();
  status_->Say(InWords(complaint->reason), NoteKind::kFailure);
  return false;
}

void EmailManagerForm::accept() {
  const account::AccountSettings shown = Shown();
  if (!Check(shown)) return;
  Carry(
      [secrets = secrets_, shown](auto& settings, const auto& cancel) { return secrets.Save(shown, settings, cancel); },
      secrets_.SavingAsksKeyring(shown, program_.settings), [shown] { return account::TextsOf(shown); });
}

void EmailManagerForm::Carry(const Change& change, bool asks_keyring, const Texts& texts) {
  if (!asks_keyring) {
    Carried(change(program_.settings, platform::CancelToken()), texts);
    return;
  }
  Begin(tr("Stop"), tr("Asking the keyring…"));
  pages_->setEnabled(false);
  test_->Start([=, this, file = program_.folders.settings](const platform::CancelToken& cancel) {
    profile::SettingsStore settings(file);
    auto left = std::make_shared<Result<account::SecretsLeft>>(change(settings, cancel));
    return [this, left, texts] {
      End();
      Carried(*left, texts);
    };
  });
}

// Where the keyring still has the password the window stays, so that this can be read.
void EmailManagerForm::Carried(const Result<account::SecretsLeft>& left, const Texts& texts) {
  const auto shown = left ? texts() : Result<account::SenderTexts>(left.error());
  if (!shown) {
    status_->Fail(shown.error());
    return;
  }
  if (changed) changed(*shown);
  if (!left->in_keyring) {
    QDialog::accept();
    return;
  }
  status_->Fail(*left->in_keyring);
}

// Escape first ends a test that is under way.
void EmailManagerForm::reject() {
  if (test_->is_running()) {
    test_->Cancel();
    return;
  }
  QDialog::reject();
}

void EmailManagerForm::Reset() {
  if (!account::AgreesToReset(program_.prompts)) return;
  Carry([secrets = secrets_](auto& settings, const auto& cancel) { return secrets.Reset(settings, cancel); },
        secrets_.ResettingAsksKeyring(program_.settings),
        [this] { return account::TextsAfterReset(program_.settings); });
}

// What the import wrote comes into the controls; what was typed into the others stays.
void EmailManagerForm::Import() {
  OutlookExpressForm form(program_, account_places ? account_places() : std::vector<account::AccountRoot>(), this);
  if (form.exec() != Accepted) return;
  const auto stored = account::AccountSettings::Load(program_.settings);
  if (!stored) {
    status_->Fail(stored.error());
    return;
  }
  account::AccountSettings shown = Shown();
  for (const account::AccountKey key : form.written()) shown.Set(key, (*stored)[key]);
  Show(shown);
  if (imported) imported(account::TextsOf(*stored).from);
  const auto& written = form.written();
  const bool emptied = std::find(written.begin(), written.end(), kPassword) != written.end();
  status_->Say(emptied ? tr("The account is taken over and saved. Type its password: that of the server or user before "
                            "is not kept.")
                       : tr("The account is taken over and saved."));
}

void EmailManagerForm::PickFolder() {
  account::AccountSettings shown = Shown();
  account::PickQueueFolder(shown, program_.prompts);
  Find<QLineEdit>("ThirdPathTextBox")->setText(ToQt(shown[kThirdPath]));
}

void EmailManagerForm::TestOrCancel() {
  if (test_->is_running()) {
    test_->Cancel();
    return;
  }
  Begin(tr("Stop test"), tr("Trying %1…").arg(Find<QLineEdit>("ServerTextBox")->text()));
  test_->Start([this, secrets = secrets_, shown = Shown()](const platform::CancelToken& cancel) {
    auto test = std::make_shared<account::AccountTest>(account::TestAccount(shown, secrets, program_.clock, cancel));
    return [this, test] { TestFinished(*test); };
  });
}

void EmailManagerForm::Begin(const QString& stop, const QString& status) {
  status_->Say(status);
  test_button_->setText(stop);
  for (const char* name : {"OKButton", "ResetButton"}) Find<QPushButton>(name)->setEnabled(false);
}

void EmailManagerForm::End() {
  test_button_->setText(tr("Test"));
  pages_->setEnabled(true);
  for (const char* name : {"OKButton", "ResetButton"}) Find<QPushButton>(name)->setEnabled(true);
}

void EmailManagerForm::TestFinished(const account::AccountTest& test) {
  End();
  const std::string reply = smtp::ReplyText(test.outcome.reply);
  QString detail = ToQt(platform::Printable(test.outcome.reason));
  if (!reply.empty())
    detail += (detail.isEmpty() ? QString() : QString(" ")) + tr("The server said: %1").arg(ToQt(reply));
  status_->Say(detail, test.Works() ? NoteKind::kInformation : NoteKind::kFailure);
  if (test.Works()) {
    program_.prompts.Inform(test.text);
  } else if (test.outcome.code == smtp::ResultCode::kCancelled) {
    status_->Say(tr("The test was stopped."));
  } else {
    program_.prompts.Warn(test.text);
  }
}

}  // namespace quillcast::desktop
