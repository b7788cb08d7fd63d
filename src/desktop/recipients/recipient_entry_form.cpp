#include "desktop/recipients/recipient_entry_form.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <limits>
#include <span>

#include "desktop/widgets/form_column.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/status_line.h"
#include "recipients/entry_lists.h"

namespace quillcast::desktop {
namespace {

using recipients::kFieldCount;

constexpr std::size_t kRowsOfTheFirstColumn = 9;
constexpr int kNarrowestField = 200;  // pixels

struct EntryField {
  const char* name;
  const char* label;
  std::span<const std::string_view> (*choices)() = nullptr;
};

// A class, so that the labels are collected for catalogues under its name.
class EntryFields {
  Q_DECLARE_TR_FUNCTIONS(RecipientEntryForm)
 public:
  // In the order of recipients::kFields.
  static constexpr std::array<EntryField, kFieldCount> kRows = {{
      {"EmailTextBox", QT_TR_NOOP("&Email Address:")},
      {"TitleComboBox", QT_TR_NOOP("&Title:"), recipients::Titles},
      {"FirstNameTextBox", QT_TR_NOOP("&First Name:")},
      {"LastNameTextBox", QT_TR_NOOP("&Last Name:")},
      {"CountryComboBox", QT_TR_NOOP("&Country:"), recipients::Countries},
      {"StateComboBox", QT_TR_NOOP("&State:"), recipients::States},
      {"CityTextBox", QT_TR_NOOP("C&ity:")},
      {"Address1TextBox", QT_TR_NOOP("A&ddress 1:")},
      {"Address2TextBox", QT_TR_NOOP("Add&ress 2:")},
      {"ZIPTextBox", QT_TR_NOOP("&ZIP Code:")},
      {"PhoneTextBox", QT_TR_NOOP("&Phone:")},
      {"FaxTextBox", QT_TR_NOOP("Fa&x:")},
      {"CompanyTextBox", QT_TR_NOOP("Co&mpany:")},
      {"JobTextBox", QT_TR_NOOP("&Job Title:")},
      {"SiteTextBox", QT_TR_NOOP("&Web Site:")},
      {"Add1TextBox", QT_TR_NOOP("Additional Field &1:")},
      {"Add2TextBox", QT_TR_NOOP("Additional Field &2:")},
      {"Add3TextBox", QT_TR_NOOP("Additional Field &3:")},
  }};
};

// An imported field may be longer than a box takes by itself.
constexpr int kLongest = std::numeric_limits<int>::max();

}  // namespace

RecipientEntryForm::RecipientEntryForm(const char* name, const QString& title, const profile::Program& program,
                                       QString group, Write write, QWidget* parent)
    : QDialog(parent), program_(program), group_(std::move(group)), write_(std::move(write)) {
  setObjectName(name);
  setWindowTitle(title);
  auto* column = new FormColumn(this);
  auto* left = new FormGrid(this, 0);
  auto* right = new FormGrid(this, 1);
  for (std::size_t field = 0; field < kFieldCount; ++field) {
    const EntryField& row = EntryFields::kRows.at(field);
    FormGrid* grid = field < kRowsOfTheFirstColumn ? left : right;
    fields_.at(field) = grid->Add(row.name, EntryFields::tr(row.label), MakeField(field));
  }
  column->AddLine({left, right});
  status_ = column->Add(new StatusLine(this));
  column->AddButtons(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  fields_[recipients::kEmail]->setFocus();
}

// A list only offers: what is typed stays as it was typed, capitals included.
QWidget* RecipientEntryForm::MakeField(std::size_t field) {
  auto* box = new QLineEdit();
  box->setMaxLength(kLongest);
  box->setMinimumWidth(kNarrowestField);
  const auto choices = EntryFields::kRows.at(field).choices;
  if (choices == nullptr) return box;
  auto* list = new QComboBox();
  list->setEditable(true);
  list->setLineEdit(box);
  list->setInsertPolicy(QComboBox::NoInsert);
  list->setCompleter(nullptr);
  for (const std::string_view choice : choices()) list->addItem(ToQt(choice));
  list->setCurrentIndex(-1);
  return list;
}

recipients::RecipientStore RecipientEntryForm::Store() const {
  return recipients::RecipientStore(program_.folders.Database(), profile::kWindowPatience);
}

QString RecipientEntryForm::Text(std::size_t field) const {
  const auto* list = qobject_cast<QComboBox*>(fields_.at(field));
  return list != nullptr ? list->currentText() : qobject_cast<QLineEdit*>(fields_.at(field))->text();
}

recipients::Recipient RecipientEntryForm::Entry() const {
  recipients::Recipient entry = stored_;
  for (std::size_t field = 0; field < kFieldCount; ++field) {
    if (Text(field) != ToQt(entry.values.at(field))) entry.values.at(field) = FromQt(Text(field));
  }
  return entry;
}

RecipientEntryForm::Write RecipientEntryForm::ChangeOf(std::int64_t key) {
  return [key](recipients::RecipientStore& store, std::int64_t group_id, const recipients::Recipient& entry) {
    return recipients::ChangeRecipient(store, group_id, key, entry);
  };
}

void RecipientEntryForm::ShowStored(std::int64_t key) {
  const auto rows = Store().RecipientsOfKeys(std::array{key});
  findChild<QPushButton*>("OKButton")->setEnabled(rows && rows->front().id != 0);
  if (!rows) return status_->Fail(rows.error());
  if (rows->front().id == 0) return status_->Fail(recipients::RecipientGone());
  stored_ = rows->front().recipient;
  for (std::size_t field = 0; field < kFieldCount; ++field) {
    const QString text = ToQt(stored_.values.at(field));
    if (auto* list = qobject_cast<QComboBox*>(fields_.at(field))) {
      list->setEditText(text);
    } else {
      qobject_cast<QLineEdit*>(fields_.at(field))->setText(text);
    }
  }
}

Result<recipients::Entered> RecipientEntryForm::WriteEntry() const {
  if (const auto complaint = recipients::CheckAddress(Entry())) return recipients::Entered{complaint};
  auto store = Store();
  const auto group = store.FindGroup(FromQt(group_));
  if (!group) return group.error();
  if (!*group) return recipients::GroupGone();
  return write_(store, (*group)->id, Entry());
}

void RecipientEntryForm::accept() {
  const auto entered = WriteEntry();
  if (!entered) return status_->Fail(entered.error());
  if (!entered->complaint) {
    written_ = entered->row;
    return QDialog::accept();
  }
  program_.prompts.Warn(entered->complaint->message);
  fields_[recipients::kEmail]->setFocus();
}

}  // namespace quillcast::desktop
