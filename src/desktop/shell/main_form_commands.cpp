// What each command of the main window does.
#include <QApplication>
#include <QColorDialog>
#include <QComboBox>
#include <QFontDialog>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QStackedWidget>
#include <algorithm>
#include <array>
#include <cstdlib>
#include <utility>

#include "desktop/account/email_manager_form.h"
#include "desktop/account/thread_form.h"
#include "desktop/document/editor_document.h"
#include "desktop/document/find_bar.h"
#include "desktop/document/html_editor.h"
#include "desktop/document/link_form.h"
#include "desktop/document/table_form.h"
#include "desktop/recipients/groups_menu.h"
#include "desktop/run/history_manager_form.h"
#include "desktop/run/preview_form.h"
#include "desktop/run/send_mail_form1.h"
#include "desktop/shell/about_form.h"
#include "desktop/shell/help_form.h"
#include "desktop/shell/main_form.h"
#include "desktop/shell/message_header.h"
#include "desktop/shell/practice_mailbox.h"
#include "desktop/shell/splash_form.h"
#include "desktop/shell/tips_form.h"
#include "desktop/widgets/qt_text.h"
#include "document/merge_fields.h"
#include "recipients/group_count.h"
#include "run/message_preview.h"
#include "run/pre_send_checks.h"

namespace quillcast::desktop {
namespace {

constexpr const char* kPrintQuestion =
    "Please consider your environmental responsibility before printing.\r\nDo you still want to print this document?";
constexpr const char* kPictures =
    "Pictures (*.png;*.jpg;*.jpeg;*.gif;*.webp;*.bmp)|*.png;*.jpg;*.jpeg;*.gif;*.webp;*.bmp|All Files (*.*)|*.*";

// What a text box that has the focus does itself at a command of the Edit menu, by the names of its slots.
constexpr auto kTextBoxSlots = std::to_array<std::pair<EditorCommand, const char*>>({
    {EditorCommand::kUndo, "undo"},
    {EditorCommand::kRedo, "redo"},
    {EditorCommand::kCut, "cut"},
    {EditorCommand::kCopy, "copy"},
    {EditorCommand::kPaste, "paste"},
    {EditorCommand::kSelectAll, "selectAll"},
});

bool EditsText(QWidget* focused, EditorCommand command) {
  const auto* const box = qobject_cast<QComboBox*>(focused);
  if (box != nullptr && box->lineEdit() != nullptr) focused = box->lineEdit();
  if (qobject_cast<QLineEdit*>(focused) == nullptr && qobject_cast<QPlainTextEdit*>(focused) == nullptr) return false;
  if (command == EditorCommand::kDelete) {
    QKeyEvent key(QEvent::KeyPress, Qt::Key_Delete, Qt::NoModifier);
    return QCoreApplication::sendEvent(focused, &key);
  }
  const auto* const slot = std::find_if(kTextBoxSlots.begin(), kTextBoxSlots.end(),
                                        [command](const auto& row) { return row.first == command; });
  return slot != kTextBoxSlots.end() && QMetaObject::invokeMethod(focused, slot->second);
}

// The engine's font sizes, 1 to 7, in points.
constexpr std::array<int, 7> kPoints = {8, 10, 12, 14, 18, 24, 36};

// The one that is next to it.
int EngineSize(int points) {
  const auto* const nearest = std::min_element(
      kPoints.begin(), kPoints.end(), [points](int a, int b) { return std::abs(a - points) < std::abs(b - points); });
  return static_cast<int>(nearest - kPoints.begin()) + 1;
}

}  // namespace

void MainForm::Dispatch(int identifier) {
  const auto command = FindCommand(identifier);
  if (!command) return;
  switch (command->action) {
    case Action::kOpen:
      return Open();
    case Action::kSave:
      return Save();
    case Action::kPrint:
      return Print();
    case Action::kExit:
      close();
      return;
    case Action::kEdit:
      return RunEditor(command->editor_code);
    case Action::kAddAttachment:
      return header_->AddAttachments();
    case Action::kDeleteAttachment:
      return header_->DeleteAttachment();
    case Action::kFont:
      return ChooseFont();
    case Action::kTable:
      return InsertTable();
    case Action::kPicture:
      return InsertPicture();
    case Action::kHyperlink:
      return InsertHyperlink();
    case Action::kPreview:
      return PreviewInMailProgram();
    case Action::kSend:
      return Send();
    case Action::kAccount:
      return EditAccount();
    case Action::kGroups:
      return ShowGroups();
    case Action::kHistory:
      return ShowHistory();
    case Action::kImport:
      return ImportRecipients();
    case Action::kExport:
      return ExportRecipients();
    case Action::kThreads:
      ThreadForm(program_.settings, this).exec();
      return;
    case Action::kHelp:
      return ShowHelp();
    case Action::kTips:
      return ShowTips(true);
    case Action::kSupport:
      return AskForSupport();
    case Action::kAbout:
      AboutForm(this).exec();
      return;
    case Action::kMergeField:
      return InsertMergeField(command->merge_field);
    default:  // its window is not there yet: see CommandBar::IsOffered
      return;
  }
}

void MainForm::RunOwn(OwnCommand command) {
  switch (command) {
    case OwnCommand::kNew:
      return NewMessage();
    case OwnCommand::kSaveAs:
      LeaveSource();
      if (const auto saved = document::SaveAs(*document_, program_.prompts); !saved) Tell(saved.error());
      return;
    case OwnCommand::kSource:
      return ShowSource(body_->currentWidget() == editor_);
    case OwnCommand::kColour:
      return ChooseColour();
    case OwnCommand::kPastePlain:
      if (EditsText(QApplication::focusWidget(), EditorCommand::kPaste)) return;
      editor_->PastePlain();
      editor_->setFocus();
      return;
    case OwnCommand::kPreview:
      return PreviewInside();
    case OwnCommand::kSplash:
      Tell(SplashForm::SetWanted(program_.settings, !SplashForm::IsWanted(program_.settings)));
      bar_->ShowSplash(SplashForm::IsWanted(program_.settings));
      return;
  }
}

void MainForm::FocusOn(const QString& control) {
  if (control == "Editor") {
    LeaveSource();
    editor_->setFocus();
  } else if (auto* widget = findChild<QWidget*>(control)) {
    widget->setFocus();
  }
}

document::MessageDocument MainForm::Document() {
  LeaveSource();
  document::MessageDocument document;
  header_->Collect(document);
  document.html = FromQt(editor_->Html());
  document.base_folder = document_->BaseFolder();
  document.picture_places = document_->picture_places();
  return document;
}

void MainForm::RunEditor(int code) {
  const auto command = static_cast<EditorCommand>(code);
  if (EditsText(QApplication::focusWidget(), command)) return;
  LeaveSource();
  editor_->Run(command);
  if (code != static_cast<int>(EditorCommand::kFindText)) editor_->setFocus();
}

void MainForm::InsertMergeField(std::string_view control) {
  LeaveSource();
  for (const auto& field : document::kMergeFields) {
    if (field.command == control) editor_->InsertHtml(ToQt(field.tag));
  }
  editor_->setFocus();
}

void MainForm::Open() {
  LeaveSource();
  const auto file = document::PickDocumentToOpen(*document_, program_.prompts);
  if (!file) Tell(file.error());
  if (file && !file->empty()) Tell(document_->Open(*file));
  AskAboutPictures();
  editor_->setFocus();
}

void MainForm::Save() {
  LeaveSource();
  Tell(document::SaveDocument(*document_, program_.folders.PreviewBody(), program_.prompts));
}

void MainForm::Print() {
  LeaveSource();
  if (program_.prompts.Ask(kPrintQuestion) != platform::Answer::kYes) return;
  auto printer = std::make_shared<QPrinter>(QPrinter::HighResolution);
  printer->setOutputFileName(PathToQt(program_.folders.temporary / "message.pdf"));
  QPrintDialog dialog(printer.get(), this);
  dialog.setWindowTitle(tr("Print"));
  if (dialog.exec() != QDialog::Accepted) return;
  // Into a file the engine writes real text; on paper it prints a picture of the page.
  if (!printer->outputFileName().isEmpty()) {
    const QString file = printer->outputFileName();
    Say(editor_->PrintToPdf(file) ? tr("Printed to %1.").arg(file)
                                  : tr("%1 could not be written. Choose another place.").arg(file));
    return;
  }
  editor_->Print(printer.get(), [this, printer](bool good) {
    Say(good ? tr("The message is with the printer.") : tr("The printer did not take the message."));
  });
}

void MainForm::ChooseFont() {
  LeaveSource();
  bool chosen = false;
  const auto state = editor_->State();
  QFont before(state.font, kPoints.at(static_cast<std::size_t>(std::clamp(state.size, 1, 7)) - 1));
  before.setBold(state.bold);
  before.setItalic(state.italic);
  const QFont font = QFontDialog::getFont(&chosen, before, this, tr("Font"));
  if (!chosen) return;
  if (font.family() != before.family()) editor_->Execute("fontName", font.family());
  if (font.pointSize() != before.pointSize())
    editor_->Execute("fontSize", QString::number(EngineSize(font.pointSize())));
  if (font.bold() != state.bold) editor_->Run(EditorCommand::kBold);
  if (font.italic() != state.italic) editor_->Run(EditorCommand::kItalic);
  editor_->setFocus();
}

void MainForm::ChooseColour() {
  LeaveSource();
  const QColor colour = QColorDialog::getColor(Qt::black, this, tr("Text Colour"));
  if (colour.isValid()) editor_->Execute("foreColor", colour.name());
  editor_->setFocus();
}

void MainForm::InsertPicture() {
  LeaveSource();
  const auto files = program_.prompts.PickOpenFile({.title = "Picture", .filter = kPictures, .several = true});
  QStringList names;
  for (const auto& file : files) names << PathToQt(file);
  if (!names.isEmpty()) editor_->InsertPictures(names);
  editor_->setFocus();
}

void MainForm::InsertHyperlink() {
  LeaveSource();
  const auto state = editor_->State();
  LinkForm form(state.link, state.selected.isEmpty() ? state.link_text : state.selected, this);
  if (form.exec() == QDialog::Accepted) editor_->InsertLink(form.Address(), form.Text());
  editor_->setFocus();
}

void MainForm::ShowSource(bool shown) {
  if (!shown) {
    LeaveSource();
    return;
  }
  const QString html = editor_->Html();
  source_has_crlf_ = html.contains("\r\n") && html.count('\n') == html.count("\r\n");
  source_->setPlainText(html);
  source_before_ = SourceText();
  body_->setCurrentWidget(source_);
  source_->setFocus();
  bar_->ShowSource(true);
}

void MainForm::InsertTable() {
  LeaveSource();
  TableForm form(program_.prompts, this);
  if (form.exec() == QDialog::Accepted) editor_->InsertTable(ToQt(document::TableHtml(form.Choice())));
  editor_->setFocus();
}

bool MainForm::SourceWasEdited() const { return body_->currentWidget() == source_ && SourceText() != source_before_; }

// The box itself makes every no-break space a blank, and knows one line end.
QString MainForm::SourceText() const {
  const QString line_end = source_has_crlf_ ? "\r\n" : "\n";
  QString text = source_->document()->toRawText();
  return text.replace(QChar::ParagraphSeparator, line_end).replace(QChar::LineSeparator, line_end);
}

void MainForm::LeaveSource() {
  if (body_->currentWidget() != source_) return;
  if (SourceWasEdited()) {
    editor_->SetHtml(SourceText(), editor_->base(), true);
    AskAboutPictures();
  }
  body_->setCurrentWidget(editor_);
  editor_->setFocus();
  bar_->ShowSource(false);
}

void MainForm::PreviewInMailProgram() {
  const auto account = account::AccountSettings::Load(program_.settings);
  if (!account) {
    Tell(account.error());
    return;
  }
  const auto preview =
      run::WritePreview(program_.folders, program_.settings, Document(), *account, program_.clock, program_.entropy);
  if (!preview) {
    Tell(preview.error());
    return;
  }
  for (const auto& note : preview->notes) Say(ToQt(note));
  Tell(program_.desktop.OpenFile(preview->file));
}

void MainForm::PreviewInside() {
  const recipients::RecipientStore store(program_.folders.Database(), profile::kWindowPatience);
  const std::string name = FromQt(header_->Group());
  const auto group = store.FindGroup(name);
  if (!group && group.error().failure == Failure::kTryAgain) {
    Say(InWords(group.error()));
    return;
  }
  const bool is_there = group && *group;
  PreviewForm form(program_, Document(), is_there ? **group : recipients::RecipientGroup(),
                   is_there ? recipients::GroupCount(store, name) : 0, editor_->base(), this);
  form.exec();
  TakePictureAnswers(form.picture_places());
}

void MainForm::Send() {
  document::MessageDocument document = Document();
  const recipients::RecipientStore store(program_.folders.Database(), profile::kWindowPatience);
  const auto filled_in = account::AccountIsFilledIn(program_.settings);
  auto groups = store.ListGroupNames();
  const std::string name = FromQt(header_->Group());
  const auto group = store.FindGroup(name);
  const auto count = store.CountRecipients(name);
  for (const Error* error : {filled_in ? nullptr : &filled_in.error(), groups ? nullptr : &groups.error(),
                             group ? nullptr : &group.error(), count ? nullptr : &count.error()}) {
    if (error == nullptr) continue;
    Tell(*error);
    return;
  }
  const run::MailingFacts facts{.account_filled_in = *filled_in,
                                .groups = std::move(*groups),
                                .group = name,
                                .recipients = *count,
                                .subject = document.subject,
                                .body_text = document.PlainText()};
  if (const auto control = run::CheckBeforeSending(facts, program_.prompts)) {
    FocusOn(ToQt(*control));
    return;
  }
  SendMailForm1 form(program_, {std::move(document), **group, *count, practice_->practice().Serves()}, this);
  form.skip_save_prompt = [this](bool skip) { skip_save_prompt = skip; };
  form.exec();
  TakePictureAnswers(form.picture_places());
  if (!form.refusal().isEmpty()) Say(form.refusal());
  if (form.shuts_down()) close();
}

void MainForm::EditAccount() {
  EmailManagerForm form(program_, this);
  form.changed = [this](const account::SenderTexts& texts) {
    header_->ShowSender(ToQt(texts.from), ToQt(texts.method));
  };
  form.exec();
  const auto account = account::AccountSettings::Load(program_.settings);
  if (account && practice_->practice().EndsWith(*account))
    Say(tr("Practice has ended: the account names a server of its own now."));
  ShowNotices();
}

void MainForm::ShowHistory() {
  HistoryManagerForm form(program_, this);
  form.exec();
  if (!form.cleared().isEmpty()) Say(form.cleared());
}

void MainForm::ShowGroups() { header_->findChild<QPushButton*>("GroupButton")->showMenu(); }

void MainForm::ImportRecipients() {
  if (!header_->HasGroups()) {
    program_.prompts.Warn("There is no group to import the data to.");
    FocusOn("GroupButton");
    return;
  }
  if (header_->Group().isEmpty()) {
    Say(tr("Choose the group that the addresses are for."));
    FocusOn("ToComboBox");
    return;
  }
  groups_->ImportInto(header_->Group());
}

void MainForm::ExportRecipients() {
  if (header_->HasGroups()) return;  // its window is not there yet
  program_.prompts.Warn("There is no group to export the data from.");
  FocusOn("GroupButton");
}

void MainForm::AskForSupport() {
  const auto filled_in = account::AccountIsFilledIn(program_.settings);
  if (filled_in && *filled_in) return;  // its window is not there yet
  program_.prompts.Warn("Please fill out the Mail Account section in Email Manager.");
  EditAccount();
}

void MainForm::ShowTips(bool on_request) {
  if (TipsForm::IsWanted(program_.settings, on_request)) TipsForm(program_.settings, this).exec();
}

void MainForm::ShowTipsAtStart() {
  ShowTips(false);
  editor_->setFocus();
}

void MainForm::ShowHelp() { (new HelpForm(program_.folders, "Welcome.htm", this))->show(); }

}  // namespace quillcast::desktop
