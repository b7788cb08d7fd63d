#include "desktop/shell/message_header.h"

#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
#include <QDragEnterEvent>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTimer>
#include <QToolButton>
#include <utility>

#include "desktop/document/attachments_form.h"
#include "desktop/widgets/dropped_files.h"
#include "desktop/widgets/icons.h"
#include "desktop/widgets/qt_text.h"
#include "document/merge_fields.h"
#include "platform/text.h"
#include "profile/main_window_contents.h"
#include "recipients/recipient_store.h"

namespace quillcast::desktop {
namespace {

constexpr int kPauseBeforeLoading = 1000;  // milliseconds
constexpr int kNarrowest = 80;             // pixels of the method box, where the window is small

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
      refresh_(new BackgroundTask(this)),
      from_(MakeBox("FromComboBox", this)),
      to_(MakeBox("ToComboBox", this)),
      count_(new QLabel(this)),
      subject_(new QLineEdit(this)),
      attachment_box_(MakeBox("AttachmentComboBox", this)),
      attachment_count_(new QPushButton(this)),
      method_(MakeBox("SendingMethodComboBox", this)),
      priority_(MakeBox("PriorityComboBox", this)),
      format_(MakeBox("FormatComboBox", this)),
      receipt_(new QCheckBox(tr("As&k for a read receipt"), this)) {
  setAcceptDrops(true);
  subject_->setObjectName("SubjectTextBox");
  subject_->setPlaceholderText(tr("What the message is about; merge tags work here too"));
  receipt_->setObjectName("RRRCheckBox");
  count_->setObjectName("GroupCountLabel");
  from_->setPlaceholderText(tr("No account yet"));
  to_->setPlaceholderText(tr("Choose a group"));
  attachment_count_->setObjectName("AttachmentCountButton");
  attachment_count_->setToolTip(tr("Show all of them, and take several out at once"));
  attachment_count_->hide();
  attachment_box_->setPlaceholderText(tr("No attachments; drop files here"));
  AddItems(method_, profile::kSendingMethods);
  AddItems(priority_, profile::kPriorities);
  AddItems(format_, profile::kFormats);

  auto* email = MakeButton("EmailButton", tr("A&ccount…"), "account", this);
  auto* group = MakeButton("GroupButton", tr("&Groups"), "groups", this);
  auto* add = MakeButton("FileAttachmentButton", tr("A&dd…"), "attach", this);
  auto* remove = MakeButton("DeleteAttachmentButton", tr("Remo&ve"), "remove", this);
  auto* send = MakeButton("SendButton", tr("&Send…"), "send", this);
  auto* preview = MakeButton("PreviewButton", tr("Previe&w…"), "preview", this);
  QFont bold = send->font();
  bold.setBold(true);
  send->setFont(bold);
  send->setMinimumWidth(130);

  auto* grid = new QGridLayout(this);
  grid->setContentsMargins(10, 8, 10, 6);
  grid->setVerticalSpacing(6);
  const auto label = [&](const QString& text, QWidget* buddy, int row) {
    auto* made = new QLabel(text, this);
    made->setBuddy(buddy);
    grid->addWidget(made, row, 0);
  };
  label(tr("From:"), from_, 0);
  grid->addWidget(from_, 0, 1);
  grid->addWidget(email, 0, 2);
  label(tr("&To:"), to_, 1);
  auto* to_line = new QHBoxLayout();
  to_line->addWidget(to_, 1);
  to_line->addWidget(count_);
  grid->addLayout(to_line, 1, 1);
  grid->addWidget(group, 1, 2);
  label(tr("S&ubject:"), subject_, 2);
  tags_ = MakeTagMenu();
  auto* tag = new QToolButton(this);
  tag->setObjectName("SubjectTagButton");
  tag->setIcon(Icon("merge"));
  tag->setStyleSheet("QToolButton::menu-indicator { image: none; }");  // the style's own lies over the icon
  tag->setPopupMode(QToolButton::InstantPopup);
  tag->setFocusPolicy(Qt::TabFocus);
  tag->setToolTip(tr("Put a merge tag into the subject"));
  tag->setAccessibleName(tr("Merge tag for the subject"));
  tag->setMenu(tags_);
  auto* subject_line = new QHBoxLayout();
  subject_line->addWidget(subject_, 1);
  subject_line->addWidget(tag);
  grid->addLayout(subject_line, 2, 1, 1, 3);
  label(tr("&Attachments:"), attachment_box_, 3);
  auto* attachments_line = new QHBoxLayout();
  attachments_line->addWidget(attachment_box_, 1);
  attachments_line->addWidget(attachment_count_);
  grid->addLayout(attachments_line, 3, 1);
  grid->addWidget(add, 3, 2);
  grid->addWidget(remove, 3, 3);
  auto* options = new QHBoxLayout();
  options->addWidget(method_);
  method_->setMinimumWidth(kNarrowest);
  const auto option = [&](const QString& text, QComboBox* box) {
    auto* made = new QLabel(text, this);
    made->setBuddy(box);
    options->addSpacing(8);
    options->addWidget(made);
    options->addWidget(box);
  };
  option(tr("Priorit&y:"), priority_);
  option(tr("Fo&rmat:"), format_);
  options->addSpacing(8);
  options->addWidget(receipt_);
  options->addStretch(1);
  label(tr("Method:"), method_, 4);
  grid->addLayout(options, 4, 1, 1, 3);
  grid->addWidget(send, 0, 3);
  grid->addWidget(preview, 1, 3);
  grid->setColumnStretch(1, 1);
  QWidget* const order[] = {
      from_,  email,   to_,       group,   subject_, tag,  attachment_box_, attachment_count_, add,
      remove, method_, priority_, format_, receipt_, send, preview};
  for (std::size_t i = 0; i + 1 < std::size(order); ++i) setTabOrder(order[i], order[i + 1]);

  connect(to_, &QComboBox::currentIndexChanged, this, &MessageHeader::ShowCount);
  connect(format_, &QComboBox::activated, this, &MessageHeader::PickFormat);
  connect(attachment_count_, &QPushButton::clicked, this, &MessageHeader::ChangeAttachments);
  connect(method_, &QComboBox::activated, this, &MessageHeader::PickMethod);
  subject_->setContextMenuPolicy(Qt::CustomContextMenu);
  connect(subject_, &QWidget::customContextMenuRequested, this, &MessageHeader::ShowSubjectMenu);
  connect(subject_, &QLineEdit::textChanged, this, &MessageHeader::Changed);
  for (QComboBox* box : {to_, method_, priority_, format_}) {
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

void MessageHeader::LoadGroups(const QString& chosen) {
  if (!chosen.isEmpty()) wanted_ = chosen;
  const auto names = recipients::RecipientStore(program_.folders.Database(), profile::kWindowPatience).ListGroupNames();
  if (!names && names.error().failure == Failure::kTryAgain) {
    LoadGroupsAgain(InWords(names.error()));
    return;
  }
  if (!names) emit Trouble(InWords(names.error()));
  const QString wanted = std::exchange(wanted_, {});
  ShowGroups(names ? *names : std::vector<std::string>(), wanted.isEmpty() ? to_->currentText() : wanted);
  ShowCount();
}

void MessageHeader::ShowGroups(const std::vector<std::string>& names, const QString& chosen) {
  ++loads_;
  const QString before = to_->currentText();
  {
    const QSignalBlocker quiet(to_);  // what is chosen on the way was chosen by nobody
    to_->clear();
    for (const auto& name : names) to_->addItem(ToQt(name));
    to_->setCurrentIndex(to_->findText(chosen));
  }
  if (to_->currentText() != before) emit Changed();
}

void MessageHeader::Refresh() {
  if (refresh_->is_running()) return;
  refresh_->Start([this, file = program_.folders.Database(), chosen = to_->currentText(),
                   loads = loads_](const platform::CancelToken& cancel) {
    const recipients::RecipientStore store(file, {.cancel = &cancel});
    const auto names = store.ListGroupNames();
    const auto count = store.CountRecipients(FromQt(chosen));
    return [this, names, count, chosen, loads] {
      const bool is_old = loads != loads_ || chosen != to_->currentText() || to_->view()->isVisible();
      if (!names || !count || is_old) return;  // what cannot be read is told when it is needed
      QStringList shown;
      for (int i = 0; i < to_->count(); ++i) shown << to_->itemText(i);
      QStringList stored;
      for (const auto& name : *names) stored << ToQt(name);
      if (shown != stored) ShowGroups(*names, chosen);
      ShowTotal(*count);
    };
  });
}

void MessageHeader::ShowSender(const QString& from, const QString& method) {
  from_->clear();
  if (!from.isEmpty()) from_->addItem(from);
  from_->setCurrentIndex(from.isEmpty() ? -1 : 0);
  ShowText(method_, method);
}

QString MessageHeader::Group() const { return to_->currentText(); }
bool MessageHeader::HasGroups() const { return to_->count() > 0; }

void MessageHeader::ShowCount() {
  if (to_->currentIndex() < 0) {
    ShowTotal(0);
    return;
  }
  auto count = recipients::RecipientStore(program_.folders.Database(), profile::kWindowPatience)
                   .CountRecipients(FromQt(to_->currentText()));
  if (!count && count.error().failure == Failure::kTryAgain) {
    count_->clear();
    LoadGroupsAgain(InWords(count.error()));
    return;
  }
  ShowTotal(std::move(count).ValueOr(0));
}

void MessageHeader::ShowTotal(std::int64_t recipients) {
  count_->setText(to_->currentIndex() < 0 ? QString() : Counted(recipients, tr("1 recipient"), tr("%1 recipients")));
}

// The store is in use: what is shown stays, and is looked up again in a moment.
void MessageHeader::LoadGroupsAgain(const QString& why) {
  emit Trouble(why);
  if (!std::exchange(loads_again_, true)) {
    QTimer::singleShot(kPauseBeforeLoading, this, [this] {
      loads_again_ = false;
      LoadGroups();
    });
  }
}

void MessageHeader::Collect(document::MessageDocument& document) const {
  document.subject = FromQt(subject_->text());
  document.format = document::FormatFrom(FromQt(format_->currentText()));
  document.priority = document::PriorityFrom(FromQt(priority_->currentText()));
  document.attachments = attachments_;
  document.read_receipt = receipt_->isChecked();
}

void MessageHeader::Collect(document::Draft& draft) const {
  Collect(draft.document);
  draft.group = FromQt(to_->currentText());
  draft.method = FromQt(method_->currentText());
}

void MessageHeader::Show(const document::Draft& draft) {
  const auto& document = draft.document;
  subject_->setText(ToQt(document.subject));
  to_->setCurrentIndex(to_->findText(ToQt(draft.group)));
  if (!draft.method.empty()) method_->setCurrentText(ToQt(draft.method));
  priority_->setCurrentIndex(static_cast<int>(document.priority));
  format_->setCurrentIndex(static_cast<int>(document.format));
  receipt_->setChecked(document.read_receipt);
  attachments_ = document.attachments;
  ShowAttachments();
}

void MessageHeader::Clear() {
  Show({});
  Load();
}

// The commands of the menu bar put their tags into the body, wherever the caret is; these put them into the subject.
QMenu* MessageHeader::MakeTagMenu() {
  auto* menu = new QMenu(tr("Merge Tag"), this);
  menu->setObjectName("SubjectTagMenu");
  menu->setToolTipsVisible(true);
  for (std::size_t i = 0; i < document::kMergeFields.size(); ++i) {
    const QString tag = ToQt(document::kMergeFields.at(i).tag);
    QAction* action = menu->addAction(Translated(recipients::kFields.at(i).label), this, [this, tag] {
      subject_->insert(tag);
      subject_->setFocus();
    });
    action->setToolTip(tag);
  }
  return menu;
}

void MessageHeader::ShowSubjectMenu(const QPoint& at) {
  QMenu* menu = subject_->createStandardContextMenu();
  menu->setAttribute(Qt::WA_DeleteOnClose);
  menu->addSeparator();
  menu->addMenu(tags_);
  menu->popup(subject_->mapToGlobal(at));
}

void MessageHeader::PickMethod() {
  if (method_->currentText() != profile::kSendingMethods.front())
    emit Said(tr("A run is personal all the same: each recipient gets a message of their own."));
}

void MessageHeader::PickFormat() {
  const auto shown = document::PickFormat(FromQt(format_->currentText()), program_.settings, program_.prompts);
  if (shown) format_->setCurrentText(ToQt(*shown));
}

void MessageHeader::AddAttachments() {
  const auto files =
      program_.prompts.PickOpenFile({.title = "File Attachment", .filter = "All Files (*.*)|*.*", .several = true});
  QStringList names;
  for (const auto& file : files) names << PathToQt(file);
  AddAttachments(names);
}

void MessageHeader::AddAttachments(const QStringList& files) {
  for (const QString& file : files) attachments_.Add(PathFromQt(file).string());
  if (!files.isEmpty()) ShowAttachments();
}

void MessageHeader::DeleteAttachment() {
  const std::string shown = PathFromQt(attachment_box_->currentText()).string();
  switch (document::DeleteAttachment(attachments_, shown, program_.prompts)) {
    case document::AttachmentDeletion::kDeleted:
      ShowAttachments();
      break;
    case document::AttachmentDeletion::kNothingShown:
      attachment_box_->setFocus();
      break;
    case document::AttachmentDeletion::kNothingToDelete:
    case document::AttachmentDeletion::kKept:
      break;
  }
}

void MessageHeader::ChangeAttachments() {
  AttachmentsForm form(attachments_, this);
  if (form.exec() != QDialog::Accepted) return;
  attachments_ = form.Remaining();
  ShowAttachments();
}

void MessageHeader::ShowAttachments() {
  attachment_box_->clear();
  for (const auto& path : attachments_.paths()) attachment_box_->addItem(PathToQt(path));
  attachment_box_->setCurrentIndex(attachment_box_->count() > 0 ? 0 : -1);
  attachment_count_->setText(InWords(document::TotalOf(attachments_)) + u8"\u2026");
  attachment_count_->setVisible(attachment_box_->count() > 0);
  emit Changed();
}

void MessageHeader::dragEnterEvent(QDragEnterEvent* event) {
  if (!DroppedFiles(event->mimeData()).isEmpty()) event->acceptProposedAction();
}

void MessageHeader::dropEvent(QDropEvent* event) { AddAttachments(DroppedFiles(event->mimeData())); }

}  // namespace quillcast::desktop
