// The part of the dialog that makes its pages.
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

#include "account/provider_presets.h"
#include "desktop/account/account_control_names.h"
#include "desktop/account/email_manager_form.h"
#include "desktop/account/pace_page.h"
#include "desktop/account/password_box.h"
#include "desktop/account/thread_form.h"
#include "desktop/widgets/digits_filter.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/note_panel.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/status_line.h"
#include "desktop/widgets/up_down.h"

namespace quillcast::desktop {
namespace {

using enum account::AccountKey;
constexpr int kNarrow = 90;       // pixels; for a few digits
constexpr int kBelowButton = 28;  // pixels that a label stands in below its radio button

}  // namespace

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
  preset_bar_->AddOffer("PresetButton", tr("Fi&ll in"), [this] { FillInPreset(); })->setAutoDefault(true);
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

QWidget* EmailManagerForm::MakePacePage() {
  auto* page = new PacePage(this);
  connect(page, &PacePage::Changed, this, &EmailManagerForm::ControlChanged);
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

}  // namespace quillcast::desktop
