#include "desktop/shell/message_header.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDragEnterEvent>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QToolButton>

#include "desktop/shell/attachments_field.h"
#include "desktop/shell/group_field.h"
#include "desktop/shell/subject_field.h"
#include "desktop/widgets/dropped_files.h"
#include "desktop/widgets/icons.h"
#include "desktop/widgets/qt_text.h"
#include "profile/main_window_contents.h"

namespace quillcast::desktop {
namespace {

constexpr int kNarrowestMethod = 80;  // pixels, where the window is small
constexpr int kSendWidth = 130;

QComboBox* MakeBox(const char* name, QWidget* parent) {
  auto* box = new QComboBox(parent);
  box->setObjectName(name);
  return box;
}

QPushButton* MakeButton(const char* name, const QString& text, std::string_view icon, QWidget* parent) {
  auto* button = new QPushButton(Icon(icon), text, parent);
  button->setObjectName(name);
  return button;
}

// The name is for those who hear the window: they find no label that is not beside its box.
QLabel* MakeLabel(const QString& text, QWidget* buddy, QWidget* parent) {
  auto* label = new QLabel(text, parent);
  label->setBuddy(buddy);
  buddy->setAccessibleName(QString(text).remove('&').remove(':'));
  return label;
}

// Shows a text whether or not it is an item of the list.
void ShowText(QComboBox* box, const QString& text) {
  box->setCurrentIndex(box->findText(text));
  box->setPlaceholderText(text);
  QPalette colours = box->palette();
  colours.setColor(QPalette::PlaceholderText, colours.color(QPalette::Text));
  box->setPalette(colours);
}

template <std::size_t N>
void AddItems(QComboBox* box, const std::array<const char*, N>& texts) {
  for (const char* text : texts) box->addItem(text);
}

}  // namespace

MessageHeader::MessageHeader(const profile::Program& program, QWidget* parent)
    : QWidget(parent),
      program_(program),
      from_(MakeBox("FromComboBox", this)),
      group_(new GroupField(program, this)),
      subject_(new SubjectField(this)),
      attachments_(new AttachmentsField(program.prompts, this)),
      method_(MakeBox("SendingMethodComboBox", this)),
      priority_(MakeBox("PriorityComboBox", this)),
      format_(MakeBox("FormatComboBox", this)),
      receipt_(new QCheckBox(tr("As&k for a read receipt"), this)) {
  setAcceptDrops(true);
  FillBoxes();
  LayOut();
  ConnectParts();
}

void MessageHeader::FillBoxes() {
  from_->setPlaceholderText(tr("No account yet"));
  receipt_->setObjectName("RRRCheckBox");
  method_->setMinimumWidth(kNarrowestMethod);
  AddItems(method_, profile::kSendingMethods);
  AddItems(priority_, profile::kPriorities);
  AddItems(format_, profile::kFormats);
}

QHBoxLayout* MessageHeader::OptionsLine() {
  auto* line = new QHBoxLayout();
  line->addWidget(method_);
  for (auto* const label : {MakeLabel(tr("Priorit&y:"), priority_, this), MakeLabel(tr("Fo&rmat:"), format_, this)}) {
    line->addSpacing(8);
    line->addWidget(label);
    line->addWidget(label->buddy());
  }
  line->addSpacing(8);
  line->addWidget(receipt_);
  line->addStretch(1);
  return line;
}

// A row for each thing that is said of the message, the buttons beside them.
void MessageHeader::LayOut() {
  auto* grid = new QGridLayout(this);
  grid->setContentsMargins(10, 8, 10, 6);
  grid->setVerticalSpacing(6);
  grid->setColumnStretch(1, 1);
  auto* account = MakeButton("EmailButton", tr("A&ccount…"), "account", this);
  auto* groups = MakeButton("GroupButton", tr("&Groups"), "groups", this);
  auto* add = MakeButton("FileAttachmentButton", tr("A&dd…"), "attach", this);
  auto* remove = MakeButton("DeleteAttachmentButton", tr("Remo&ve"), "remove", this);
  auto* send = MakeButton("SendButton", tr("&Send…"), "send", this);
  auto* preview = MakeButton("PreviewButton", tr("Previe&w…"), "preview", this);
  QFont bold = send->font();
  bold.setBold(true);
  send->setFont(bold);
  send->setMinimumWidth(kSendWidth);
  grid->addWidget(MakeLabel(tr("From:"), from_, this), 0, 0);
  grid->addWidget(from_, 0, 1);
  grid->addWidget(account, 0, 2);
  grid->addWidget(send, 0, 3);
  grid->addWidget(MakeLabel(tr("&To:"), group_->box(), this), 1, 0);
  grid->addWidget(group_, 1, 1);
  grid->addWidget(groups, 1, 2);
  grid->addWidget(preview, 1, 3);
  grid->addWidget(MakeLabel(tr("S&ubject:"), subject_->box(), this), 2, 0);
  grid->addWidget(subject_, 2, 1, 1, 3);
  grid->addWidget(MakeLabel(tr("&Attachments:"), attachments_->box(), this), 3, 0);
  grid->addWidget(attachments_, 3, 1);
  grid->addWidget(add, 3, 2);
  grid->addWidget(remove, 3, 3);
  grid->addWidget(MakeLabel(tr("Method:"), method_, this), 4, 0);
  grid->addLayout(OptionsLine(), 4, 1, 1, 3);
  QWidget* const order[] = {from_,
                            account,
                            group_->box(),
                            groups,
                            subject_->box(),
                            subject_->button(),
                            attachments_->box(),
                            attachments_->button(),
                            add,
                            remove,
                            method_,
                            priority_,
                            format_,
                            receipt_,
                            send,
                            preview};
  for (std::size_t i = 0; i + 1 < std::size(order); ++i) setTabOrder(order[i], order[i + 1]);
}

void MessageHeader::ConnectParts() {
  connect(group_, &GroupField::Trouble, this, &MessageHeader::Trouble);
  connect(format_, &QComboBox::activated, this, &MessageHeader::PickFormat);
  connect(method_, &QComboBox::activated, this, &MessageHeader::PickMethod);
  connect(group_, &GroupField::Changed, this, &MessageHeader::Changed);
  connect(subject_->box(), &QLineEdit::textChanged, this, &MessageHeader::Changed);
  connect(attachments_, &AttachmentsField::Changed, this, &MessageHeader::Changed);
  for (QComboBox* box : {method_, priority_, format_}) {
    connect(box, &QComboBox::currentIndexChanged, this, &MessageHeader::Changed);
  }
  connect(receipt_, &QCheckBox::toggled, this, &MessageHeader::Changed);
}

void MessageHeader::Load() {
  const auto contents = profile::LoadMainWindow(program_.settings, {});
  if (!contents) {
    emit Trouble(InWords(contents.error()));
    return;
  }
  ShowSender(ToQt(contents->from), ToQt(contents->method));
  priority_->setCurrentText(ToQt(contents->priority));
  if (!contents->format.empty()) format_->setCurrentText(ToQt(contents->format));
  LoadGroups();
}

void MessageHeader::LoadGroups(const QString& chosen) { group_->Load(chosen); }

void MessageHeader::Refresh() { group_->Refresh(); }

QString MessageHeader::Group() const { return group_->Group(); }

bool MessageHeader::HasGroups() const { return group_->HasGroups(); }

void MessageHeader::ShowSender(const QString& from, const QString& method) {
  from_->clear();
  if (!from.isEmpty()) from_->addItem(from);
  from_->setCurrentIndex(from.isEmpty() ? -1 : 0);
  ShowText(method_, method);
}

void MessageHeader::SetSubject(const QString& subject) { subject_->box()->setText(subject); }

void MessageHeader::Collect(document::MessageDocument& document) const {
  document.subject = FromQt(subject_->box()->text());
  document.format = document::FormatFrom(FromQt(format_->currentText()));
  document.priority = document::PriorityFrom(FromQt(priority_->currentText()));
  document.attachments = attachments_->List();
  document.read_receipt = receipt_->isChecked();
}

void MessageHeader::Collect(document::Draft& draft) const {
  Collect(draft.document);
  draft.group = FromQt(Group());
  draft.method = FromQt(method_->currentText());
}

void MessageHeader::Show(const document::Draft& draft) {
  const auto& document = draft.document;
  SetSubject(ToQt(document.subject));
  group_->Choose(ToQt(draft.group));
  if (!draft.method.empty()) method_->setCurrentText(ToQt(draft.method));
  priority_->setCurrentIndex(static_cast<int>(document.priority));
  format_->setCurrentIndex(static_cast<int>(document.format));
  receipt_->setChecked(document.read_receipt);
  attachments_->SetList(document.attachments);
}

void MessageHeader::Clear() {
  Show({});
  Load();
}

void MessageHeader::PickMethod() {
  if (method_->currentText() != profile::kSendingMethods.front())
    emit Said(tr("A run is personal all the same: each recipient gets a message of their own."));
}

void MessageHeader::PickFormat() {
  const auto shown = document::PickFormat(FromQt(format_->currentText()), program_.settings, program_.prompts);
  if (shown) format_->setCurrentText(ToQt(*shown));
}

void MessageHeader::AddAttachments() { attachments_->Add(); }

void MessageHeader::AddAttachments(const QStringList& files) { attachments_->Add(files); }

void MessageHeader::DeleteAttachment() { attachments_->Delete(); }

void MessageHeader::dragEnterEvent(QDragEnterEvent* event) {
  if (!DroppedFiles(event->mimeData()).isEmpty()) event->acceptProposedAction();
}

void MessageHeader::dropEvent(QDropEvent* event) { AddAttachments(DroppedFiles(event->mimeData())); }

}  // namespace quillcast::desktop
