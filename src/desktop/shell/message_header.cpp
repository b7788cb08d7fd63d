#include "desktop/shell/message_header.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDragEnterEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "desktop/shell/attachments_field.h"
#include "desktop/shell/group_field.h"
#include "desktop/shell/subject_field.h"
#include "desktop/widgets/dropped_files.h"
#include "desktop/widgets/folding_line.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/icons.h"
#include "desktop/widgets/qt_text.h"
#include "profile/main_window_contents.h"

namespace quillcast::desktop {
namespace {

constexpr int kNarrowestField = 80;  // pixels, where the window is small
constexpr int kSendWidth = 130;
constexpr int kOptionsGap = 14;  // between the options

QPushButton* MakeButton(const char* name, const QString& text, std::string_view icon, QWidget* parent) {
  auto* button = new QPushButton(Icon(icon), text, parent);
  button->setObjectName(name);
  return button;
}

// They stay together in a line that folds.
QWidget* WithLabel(const QString& text, QComboBox* box, QWidget* parent) {
  auto* both = new QWidget(parent);
  auto* label = new QLabel(text, both);
  label->setBuddy(box);
  box->setAccessibleName(QString(text).remove('&').remove(':'));
  auto* line = new QHBoxLayout(both);
  line->setContentsMargins(0, 0, 0, 0);
  line->addWidget(label);
  line->addWidget(box);
  return both;
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
      from_(new QComboBox(this)),
      group_(new GroupField(program, this)),
      subject_(new SubjectField(this)),
      attachments_(new AttachmentsField(program.prompts, this)),
      method_(new QComboBox(this)),
      priority_(new QComboBox(this)),
      format_(new QComboBox(this)),
      receipt_(new QCheckBox(tr("As&k for a read receipt"), this)) {
  setAcceptDrops(true);
  FillBoxes();
  LayOut();
  ConnectParts();
}

void MessageHeader::FillBoxes() {
  from_->setPlaceholderText(tr("No account yet"));
  from_->setMinimumWidth(kNarrowestField);
  method_->setMinimumWidth(kNarrowestField);
  method_->setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
  priority_->setObjectName("PriorityComboBox");
  format_->setObjectName("FormatComboBox");
  receipt_->setObjectName("RRRCheckBox");
  AddItems(method_, profile::kSendingMethods);
  AddItems(priority_, profile::kPriorities);
  priority_->setCurrentText(ToQt(profile::MainWindowContents().priority));  // also where none can be read
  AddItems(format_, profile::kFormats);
}

// The method, and behind it what else is said of how the message goes.
QWidget* MessageHeader::MakeOptions() {
  auto* options = new QWidget(this);
  options->setFocusProxy(method_);
  auto* line = new FoldingLine(options, kOptionsGap);
  line->addWidget(method_);
  line->addWidget(WithLabel(tr("Priorit&y:"), priority_, options));
  line->addWidget(WithLabel(tr("Fo&rmat:"), format_, options));
  line->addWidget(receipt_);
  return options;
}

// A row for each thing that is said of the message, the buttons at its end. The Tab key comes to what sends the message
// last.
void MessageHeader::LayOut() {
  auto* column = new FormColumn(this);
  column->setContentsMargins(10, 8, 10, 6);
  FormGrid* rows = column->AddGrid();
  rows->Add("FromComboBox", tr("From:"), from_);
  rows->AddButton(from_, MakeButton("EmailButton", tr("A&ccount…"), "account", this));
  rows->Add("ToComboBox", tr("&To:"), group_);
  rows->AddButton(group_, MakeButton("GroupButton", tr("&Groups…"), "groups", this));
  rows->Add("SubjectTextBox", tr("S&ubject:"), subject_);
  rows->Add("AttachmentComboBox", tr("&Attachments:"), attachments_);
  rows->AddButton(attachments_, MakeButton("FileAttachmentButton", tr("A&dd…"), "attach", this));
  rows->AddButton(attachments_, MakeButton("DeleteAttachmentButton", tr("Remo&ve"), "remove", this));
  rows->Add("SendingMethodComboBox", tr("Method:"), MakeOptions());
  auto* send = MakeButton("SendButton", tr("&Send…"), "send", this);
  QFont bold = send->font();
  bold.setBold(true);
  send->setFont(bold);
  send->setMinimumWidth(kSendWidth);
  rows->AddButton(from_, send);
  rows->AddButton(group_, MakeButton("PreviewButton", tr("Previe&w…"), "preview", this));
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

void MessageHeader::ChooseNoGroup() { group_->Choose({}); }

void MessageHeader::LoadGroups(const QString& chosen) { group_->Load(chosen); }

void MessageHeader::Refresh() { group_->Refresh(); }

QString MessageHeader::Group() const { return group_->Group(); }

bool MessageHeader::HasGroups() const { return group_->HasGroups(); }

QString MessageHeader::Priority() const { return priority_->currentText(); }

void MessageHeader::ShowSender(const QString& from) {
  from_->clear();
  if (!from.isEmpty()) from_->addItem(from);
  from_->setCurrentIndex(from.isEmpty() ? -1 : 0);
}

void MessageHeader::ShowSender(const QString& from, const QString& method) {
  ShowSender(from);
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

void MessageHeader::SetFormat(document::Format format) { format_->setCurrentIndex(static_cast<int>(format)); }

void MessageHeader::Show(const document::Draft& draft) {
  const auto& document = draft.document;
  SetSubject(ToQt(document.subject));
  group_->Choose(ToQt(draft.group));
  if (!draft.method.empty()) method_->setCurrentText(ToQt(draft.method));
  priority_->setCurrentIndex(static_cast<int>(document.priority));
  SetFormat(document.format);
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
