#include "desktop/document/link_form.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>

#include "desktop/document/html_editor.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/status_line.h"

namespace quillcast::desktop {
namespace {

using document::LinkKind;

constexpr int kLinkFormWidth = 480;
constexpr int kTextRole = Qt::UserRole + 1;  // what stands at a place
constexpr const char* kScheme = "https://";

}  // namespace

LinkForm::LinkForm(const QString& address, const QString& text, const std::vector<LinkPlace>& places, QWidget* parent)
    : QDialog(parent),
      kind_(new QComboBox(this)),
      address_(new QLineEdit(this)),
      subject_(new QLineEdit(this)),
      place_(new QComboBox(this)),
      text_(new QLineEdit(this)) {
  setObjectName("LinkForm");
  setWindowTitle(tr("Hyperlink"));
  MakeWindow(!address.isEmpty(), places);
  text_->setText(text.simplified());
  Show(document::ReadLink(FromQt(address)));
  connect(kind_, &QComboBox::currentIndexChanged, this, &LinkForm::ShowKind);
  for (const QLineEdit* box : {address_, subject_, place_->lineEdit()})
    connect(box, &QLineEdit::textChanged, this, &LinkForm::SayWhere);
}

void LinkForm::MakeWindow(bool is_link, const std::vector<LinkPlace>& places) {
  for (const QString& kind : {tr("A page on the web"), tr("A mail to somebody"), tr("A place in this message")})
    kind_->addItem(kind);
  place_->setEditable(true);
  place_->setInsertPolicy(QComboBox::NoInsert);
  for (const LinkPlace& place : places) {
    place_->addItem(place.text.isEmpty() ? '#' + place.name : place.text + "  #" + place.name, place.name);
    place_->setItemData(place_->count() - 1, place.text, kTextRole);
  }
  place_->lineEdit()->setPlaceholderText(places.empty() ? tr("There is no heading or anchor yet") : QString());
  subject_->setPlaceholderText(tr("The subject it begins with"));
  text_->setPlaceholderText(tr("The address itself"));

  auto* column = new FormColumn(this);
  FormGrid* grid = column->AddGrid();
  grid->Add("KindComboBox", tr("&Leads to:"), kind_);
  grid->Add("AddressTextBox", tr("&Address:"), address_);
  grid->Add("LinkSubjectTextBox", tr("&Subject:"), subject_);
  grid->Add("PlaceComboBox", tr("&Place:"), place_);
  grid->Add("LinkTextBox", tr("&Text:"), text_);
  status_ = column->Add(new StatusLine(this));
  auto* buttons = column->AddButtons(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  resize(kLinkFormWidth, sizeHint().height());
  if (!is_link) return;
  auto* remove = buttons->addButton(tr("&Remove the Link"), QDialogButtonBox::DestructiveRole);
  remove->setObjectName("RemoveButton");
  connect(remove, &QPushButton::clicked, this, [this] {
    removes_ = true;
    QDialog::accept();
  });
}

void LinkForm::Show(const document::LinkChoice& choice) {
  const bool is_place = choice.kind == LinkKind::kPlace;
  const QString address = ToQt(choice.address);
  kind_->setCurrentIndex(static_cast<int>(choice.kind));
  address_->setText(is_place || address.isEmpty() ? QString(kScheme) : address);
  subject_->setText(ToQt(choice.subject));
  place_->setCurrentIndex(place_->findData(address));
  if (is_place && place_->currentIndex() < 0) place_->setEditText(address);
  ShowKind();
  (is_place ? static_cast<QWidget*>(place_) : address_)->setFocus();
  if (!address.isEmpty()) address_->selectAll();
}

void LinkForm::ShowKind() {
  const auto kind = static_cast<LinkKind>(kind_->currentIndex());
  address_->setEnabled(kind != LinkKind::kPlace);
  subject_->setEnabled(kind == LinkKind::kMail);
  place_->setEnabled(kind == LinkKind::kPlace);
  if (kind == LinkKind::kMail && address_->text() == kScheme) address_->clear();
  if (kind == LinkKind::kWeb && address_->text().isEmpty()) address_->setText(kScheme);
  SayWhere();
}

// What an address without a scheme is taken for, before it is too late.
void LinkForm::SayWhere() {
  const auto choice = Choice();
  const QString target = Address();
  const bool is_plain = target.isEmpty() || target == ToQt(choice.address) || document::CheckLink(choice);
  status_->Say(is_plain ? QString() : tr("Leads to %1").arg(target));
}

document::LinkChoice LinkForm::Choice() const {
  const auto kind = static_cast<LinkKind>(kind_->currentIndex());
  if (kind != LinkKind::kPlace) return {kind, FromQt(address_->text()), FromQt(subject_->text())};
  const int chosen = place_->findText(place_->currentText());
  const QString name = chosen < 0 ? place_->currentText() : place_->itemData(chosen).toString();
  return {kind, FromQt(name.startsWith('#') ? name.mid(1) : name)};
}

QString LinkForm::Address() const { return ToQt(document::LinkTarget(Choice())); }

QString LinkForm::Text() const { return text_->isModified() ? text_->text().trimmed() : QString(); }

QString LinkForm::OwnText() const {
  const auto choice = Choice();
  if (choice.kind == LinkKind::kWeb) return {};
  if (choice.kind == LinkKind::kMail) return ToQt(choice.address).trimmed();
  const QString there = place_->itemData(place_->findData(ToQt(choice.address)), kTextRole).toString();
  return there.isEmpty() ? ToQt(choice.address) : there;
}

void LinkForm::accept() {
  const auto complaint = document::CheckLink(Choice());
  if (!complaint) return QDialog::accept();
  status_->Say(Translated(complaint->message), NoteKind::kFailure);
  const bool is_place = place_->isEnabled();
  QLineEdit* box = *complaint->control == document::LinkBox::kSubject ? subject_ : address_;
  (is_place ? static_cast<QWidget*>(place_) : box)->setFocus();
}

}  // namespace quillcast::desktop
