#include "desktop/account/email_manager_form.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QVBoxLayout>
#include <algorithm>

#include "account/account_checks.h"
#include "account/account_form.h"
#include "account/provider_presets.h"
#include "desktop/account/account_control_names.h"
#include "desktop/account/thread_form.h"
#include "desktop/widgets/digits_filter.h"
#include "desktop/widgets/icons.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/up_down.h"
#include "platform/text.h"
#include "smtp/outcome_text.h"

namespace quillcast::desktop {
namespace {

using enum account::AccountKey;
constexpr std::array<const char*, 3> kMethodButtons = {"PersonalRadioButton", "BulkRadioButton", "ThirdRadioButton"};
constexpr int kNarrow = 90;  // pixels; for a few digits

bool IsSwitch(const account::AccountKeyRow& row) { return row.choices.size() == 2 && row.choices[0] == "0"; }

}  // namespace

template <typename Control>
Control* EmailManagerForm::Find(std::string_view name) const {
  return findChild<Control*>(ToQt(name));
}

EmailManagerForm::EmailManagerForm(const profile::Program& program, QWidget* parent)
    : QDialog(parent), program_(program), test_(new BackgroundTask(this)), pages_(new QTabWidget(this)) {
  setObjectName("EmailManagerForm");
  setWindowTitle(tr("Email Manager"));
  pages_->setObjectName("AccountTabs");
  pages_->addTab(MakeGeneralPage(), tr("General"));
  pages_->addTab(MakeMethodPage(), tr("Method"));
  pages_->addTab(MakeMessagePage(), tr("Message"));
  status_ = new QLabel(this);
  status_->setObjectName("StatusLine");
  status_->setWordWrap(true);
  status_->setTextFormat(Qt::PlainText);
  auto* column = new QVBoxLayout(this);
  column->addWidget(pages_, 1);
  column->addWidget(status_);
  column->addWidget(MakeButtons());

  const auto stored = account::AccountSettings::Load(program_.settings);
  if (!stored) status_->setText(InWords(stored.error()));
  Show(account::ShownInDialog(stored ? *stored : account::AccountSettings()));
  Find<QLineEdit>("FullNameTextBox")->setFocus();
}

QWidget* EmailManagerForm::MakeControl(const account::AccountKeyRow& row, const QString& label) {
  QWidget* control = nullptr;
  if (IsSwitch(row)) {
    auto* box = new QCheckBox(label, this);
    connect(box, &QCheckBox::toggled, this, &EmailManagerForm::ControlChanged);
    control = box;
  } else if (!row.choices.empty()) {
    auto* box = new QComboBox(this);
    for (const auto& choice : row.choices) box->addItem(ToQt(choice));
    box->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    connect(box, &QComboBox::currentTextChanged, this, &EmailManagerForm::ControlChanged);
    control = box;
  } else {
    auto* box = new QLineEdit(this);
    if (row.bounds) {
      box->setValidator(new DigitsFilter(box));
      box->setFixedWidth(kNarrow);
    }
    connect(box, &QLineEdit::textChanged, this, &EmailManagerForm::ControlChanged);
    control = box;
  }
  control->setObjectName(NameOf(row.key));
  return control;
}

void EmailManagerForm::AddRow(QFormLayout* rows, account::AccountKey key, const QString& label) {
  const account::AccountKeyRow& row = account::RowOf(key);
  QWidget* control = MakeControl(row, label);
  if (IsSwitch(row)) {
    rows->addRow(QString(), control);
    return;
  }
  auto* text = new QLabel(label, this);
  text->setBuddy(control);
  control->setAccessibleName(QString(label).remove('&').remove(':'));
  labels_[control->objectName()] = text;
  QWidget* beside = nullptr;
  if (key == kTimeout) {
    beside = new QLabel(this);
    beside->setObjectName("TimeoutUnitLabel");
  } else if (key == kWrap) {
    beside = new UpDown(qobject_cast<QLineEdit*>(control), static_cast<int>(row.bounds->lowest),
                        static_cast<int>(row.bounds->highest), this);
    beside->setObjectName("WrapUpDown");
  }
  if (beside == nullptr) {
    rows->addRow(text, control);
    return;
  }
  auto* line = new QHBoxLayout();
  line->addWidget(control);
  line->addWidget(beside);
  line->addStretch(1);
  rows->addRow(text, line);
}

QWidget* EmailManagerForm::MakeGeneralPage() {
  auto* page = new QWidget(this);
  auto* column = new QVBoxLayout(page);
  auto* sender = new QGroupBox(tr("You"), page);
  auto* sender_rows = new QFormLayout(sender);
  AddRow(sender_rows, kName, tr("&Full name:"));
  AddRow(sender_rows, kEmail, tr("&E-mail address:"));
  column->addWidget(sender);
  column->addWidget(MakePresetBar());

  auto* server = new QGroupBox(tr("Mail server (SMTP)"), page);
  auto* server_rows = new QFormLayout(server);
  AddRow(server_rows, kServer, tr("&Server:"));
  Find<QLineEdit>("ServerTextBox")->setPlaceholderText(tr("mail.example.org; several are parted by semicolons"));
  AddRow(server_rows, kPort, tr("&Port:"));
  AddRow(server_rows, kSecurity, tr("Securit&y:"));
  AddRow(server_rows, kTimeout, tr("&Time-out:"));
  column->addWidget(server);

  auto* sign_in = new QGroupBox(tr("Signing in"), page);
  auto* sign_in_rows = new QFormLayout(sign_in);
  AddRow(sign_in_rows, kAuth, tr("The server needs &authentication"));
  AddRow(sign_in_rows, kUsername, tr("&User name:"));
  AddRow(sign_in_rows, kPassword, tr("Pass&word:"));
  AddRow(sign_in_rows, kAuthMode, tr("&Mode:"));
  AddRow(sign_in_rows, kPipeline, tr("Send without waiting for each answer (p&ipelining)"));
  AddRow(sign_in_rows, kNoAuth, tr("Go on where the server offers &no authentication"));
  auto* password = Find<QLineEdit>("PasswordTextBox");
  password->setEchoMode(QLineEdit::Password);
  auto* reveal = password->addAction(Icon("preview"), QLineEdit::TrailingPosition);
  reveal->setCheckable(true);
  reveal->setToolTip(tr("Show the password"));
  connect(reveal, &QAction::toggled, password,
          [password](bool shown) { password->setEchoMode(shown ? QLineEdit::Normal : QLineEdit::Password); });
  column->addWidget(sign_in);
  column->addStretch(1);
  return page;
}

QWidget* EmailManagerForm::MakePresetBar() {
  preset_bar_ = new QWidget(this);
  preset_bar_->setObjectName("PresetBar");
  auto* line = new QHBoxLayout(preset_bar_);
  line->setContentsMargins(4, 0, 4, 0);
  preset_text_ = new QLabel(preset_bar_);
  preset_text_->setWordWrap(true);
  auto* use = new QPushButton(tr("Fill &in"), preset_bar_);
  use->setObjectName("PresetButton");
  line->addWidget(preset_text_, 1);
  line->addWidget(use);
  preset_bar_->hide();
  connect(use, &QPushButton::clicked, this, [this] {
    const auto preset = account::PresetFor(FromQt(Find<QLineEdit>("EmailTextBox")->text()));
    if (!preset) return;
    account::AccountSettings values = Shown();
    values.Set(kServer, std::string(preset->server));
    values.Set(kPort, std::string(preset->port));
    values.Set(kSecurity, std::string(preset->security));
    values.Set(kAuth, "1");
    if (values[kUsername].empty()) values.Set(kUsername, values[kEmail]);
    Show(values);
    Find<QLineEdit>("PasswordTextBox")->setFocus();
    status_->setText(ToQt(preset->note));
  });
  return preset_bar_;
}

QWidget* EmailManagerForm::MakeMethodPage() {
  auto* page = new QWidget(this);
  auto* column = new QVBoxLayout(page);
  const std::array<QString, 3> texts = {tr("&Personal: a message of their own to each recipient"),
                                        tr("&Bulk: one message to all, by blind copy"),
                                        tr("&3rd party: into the queue folder of another mail server")};
  const std::array<std::vector<std::pair<account::AccountKey, QString>>, 3> rows_of = {
      {{{kToField, tr("&To field:")}},
       {{kBccField, tr("BCC f&ield:")}},
       {{kThirdField, tr("Mail &server:")}, {kThirdPath, tr("&Queue folder:")}}}};
  for (std::size_t i = 0; i < kMethodButtons.size(); ++i) {
    auto* button = new QRadioButton(texts.at(i), page);
    button->setObjectName(kMethodButtons.at(i));
    connect(button, &QRadioButton::toggled, this, &EmailManagerForm::ControlChanged);
    column->addWidget(button);
    auto* rows = new QFormLayout();
    rows->setContentsMargins(28, 0, 0, 8);
    for (const auto& [key, label] : rows_of.at(i)) AddRow(rows, key, label);
    column->addLayout(rows);
  }
  auto* browse = new QPushButton(tr("Bro&wse…"), page);
  browse->setObjectName("ThirdCommandButton");
  connect(browse, &QPushButton::clicked, this, &EmailManagerForm::PickFolder);
  auto* line = new QHBoxLayout();
  line->addStretch(1);
  line->addWidget(browse);
  column->addLayout(line);
  auto* note =
      new QLabel(tr("Runs of this program always send personally; the other methods keep their settings."), page);
  note->setWordWrap(true);
  note->setEnabled(false);
  column->addStretch(1);
  column->addWidget(note);
  return page;
}

QWidget* EmailManagerForm::MakeMessagePage() {
  auto* page = new QWidget(this);
  auto* column = new QVBoxLayout(page);
  auto* encoding = new QGroupBox(tr("How it is written"), page);
  auto* rows = new QFormLayout(encoding);
  AddRow(rows, kCharSet, tr("&Character set:"));
  AddRow(rows, kHeaderEncoding, tr("&Header encoding:"));
  AddRow(rows, kEncoding, tr("&Body encoding:"));
  AddRow(rows, kAttachmentEncoding, tr("&Attachment encoding:"));
  AddRow(rows, kAutoWrap, tr("&Wrap long lines of the body"));
  AddRow(rows, kWrap, tr("C&olumns:"));
  AddRow(rows, kTextPart, tr("Add a plain-&text part to HTML messages"));
  AddRow(rows, kBoundary, tr("Use a boundary &prefix of our own"));
  AddRow(rows, kExtended, tr("Use server e&xtensions even where none are announced"));
  column->addWidget(encoding);
  auto* notices = new QGroupBox(tr("Delivery notices"), page);
  auto* notice_rows = new QFormLayout(notices);
  AddRow(notice_rows, kDsnNotify, tr("&Notify:"));
  AddRow(notice_rows, kDsnReturn, tr("&Return:"));
  column->addWidget(notices);
  column->addStretch(1);
  return page;
}

QWidget* EmailManagerForm::MakeButtons() {
  auto* box = new QDialogButtonBox(this);
  const auto add = [&](const QString& text, QDialogButtonBox::ButtonRole role, const char* name) {
    QPushButton* button = box->addButton(text, role);
    button->setObjectName(name);
    button->setAutoDefault(false);
    return button;
  };
  test_button_ = add(tr("Test"), QDialogButtonBox::ResetRole, "TestButton");
  connect(test_button_, &QPushButton::clicked, this, &EmailManagerForm::TestOrCancel);
  connect(add(tr("Reset…"), QDialogButtonBox::ResetRole, "ResetButton"), &QPushButton::clicked, this,
          &EmailManagerForm::Reset);
  connect(add(tr("Advanced…"), QDialogButtonBox::ResetRole, "AdvancedButton"), &QPushButton::clicked, this,
          [this] { ThreadForm(program_.settings, this).exec(); });
  QPushButton* ok = add(tr("OK"), QDialogButtonBox::AcceptRole, "OKButton");
  ok->setDefault(true);
  add(tr("Cancel"), QDialogButtonBox::RejectRole, "CancelButton");
  connect(box, &QDialogButtonBox::accepted, this, &EmailManagerForm::accept);
  connect(box, &QDialogButtonBox::rejected, this, &EmailManagerForm::reject);
  return box;
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
    values.Set(row.key, FromQt(value));
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
    auto* control = Find<QWidget>(NameOf(row.key));
    control->setEnabled(account::IsEnabled(values, account::ControlOf(row.key)));
    if (auto* label = labels_.value(control->objectName())) label->setEnabled(control->isEnabled());
  }
  for (const auto control : {account::AccountControl::kPickThirdPath, account::AccountControl::kWrapArrows}) {
    Find<QWidget>(NameOf(control))->setEnabled(account::IsEnabled(values, control));
  }
  Find<QLabel>("TimeoutUnitLabel")->setText(Translated(account::TimeoutUnit(values[kTimeout])));
  OfferPreset();
}

void EmailManagerForm::OfferPreset() {
  const auto preset = account::PresetFor(FromQt(Find<QLineEdit>("EmailTextBox")->text()));
  const bool is_new = preset && Find<QLineEdit>("ServerTextBox")->text() != ToQt(preset->server);
  preset_bar_->setVisible(is_new);
  if (is_new) {
    preset_text_->setText(
        tr("%1 sends through %2, port %3.").arg(ToQt(preset->name), ToQt(preset->server), ToQt(preset->port)));
  }
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
  status_->setText(!complaint->reason.empty()   ? ToQt(complaint->reason)
                   : complaint->message.empty() ? tr("The e-mail address is not complete; one is ada@example.org.")
                                                : QString());
  return false;
}

void EmailManagerForm::accept() {
  const account::AccountSettings shown = Shown();
  if (!Check(shown)) return;
  const auto saved = shown.Save(program_.settings);
  if (!saved) {
    status_->setText(InWords(saved.error()));
    return;
  }
  if (changed) changed(account::TextsOf(shown));
  QDialog::accept();
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
  const auto reset = account::ResetAccount(program_.settings, program_.prompts);
  if (!reset) {
    status_->setText(InWords(reset.error()));
    return;
  }
  if (!*reset) return;
  if (changed) changed(**reset);
  QDialog::accept();
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
  status_->setText(tr("Trying %1…").arg(Find<QLineEdit>("ServerTextBox")->text()));
  test_button_->setText(tr("Stop test"));
  Find<QPushButton>("OKButton")->setEnabled(false);
  test_->Start([this, shown = Shown()](const platform::CancelToken& cancel) {
    auto test = std::make_shared<account::AccountTest>(account::TestAccount(shown, program_.clock, cancel));
    return [this, test] { TestFinished(*test); };
  });
}

void EmailManagerForm::TestFinished(const account::AccountTest& test) {
  test_button_->setText(tr("Test"));
  Find<QPushButton>("OKButton")->setEnabled(true);
  const std::string reply = smtp::ReplyText(test.outcome.reply);
  QString detail = ToQt(platform::Printable(test.outcome.reason));
  if (!reply.empty())
    detail += (detail.isEmpty() ? QString() : QString(" ")) + tr("The server said: %1").arg(ToQt(reply));
  status_->setText(detail);
  if (test.Works()) {
    program_.prompts.Inform(test.text);
  } else if (test.outcome.code == smtp::ResultCode::kCancelled) {
    status_->setText(tr("The test was stopped."));
  } else {
    program_.prompts.Warn(test.text);
  }
}

}  // namespace quillcast::desktop
