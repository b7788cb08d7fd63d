#include "desktop/shell/main_form.h"

#include <QApplication>
#include <QCloseEvent>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStackedWidget>
#include <QStatusBar>
#include <QTimer>
#include <QVBoxLayout>
#include <utility>

#include "account/account_settings.h"
#include "desktop/document/editor_document.h"
#include "desktop/document/find_bar.h"
#include "desktop/document/html_editor.h"
#include "desktop/recipients/groups_menu.h"
#include "desktop/run/pictures_panel.h"
#include "desktop/shell/key_panels.h"
#include "desktop/shell/message_header.h"
#include "desktop/shell/practice_form.h"
#include "desktop/shell/practice_mailbox.h"
#include "desktop/shell/splash_form.h"
#include "desktop/widgets/keep_on_screen.h"
#include "desktop/widgets/notice_bar.h"
#include "desktop/widgets/qt_text.h"
#include "document/edited_document.h"
#include "platform/text.h"
#include "profile/clean_up.h"
#include "profile/main_window_contents.h"
#include "profile/min_win_size.h"
#include "profile/startup.h"

namespace quillcast::desktop {
namespace {

constexpr const char* kPlaceSection = "Window";
constexpr int kArrivalsPause = 250;  // milliseconds
constexpr std::size_t kLongestShown = 100;
constexpr int kDraftPause = 1000;     // milliseconds
constexpr int kSentenceTime = 15000;  // milliseconds that a sentence stands in the status bar

}  // namespace

MainForm::MainForm(const profile::Program& program)
    : program_(program),
      bar_(new CommandBar(this)),
      header_(new MessageHeader(program, this)),
      notice_(new NoticeBar(this)),
      body_(new QStackedWidget(this)),
      editor_(new HtmlEditor(this)),
      source_(new QPlainTextEdit(this)),
      source_pause_(new QTimer(this)),
      fields_pause_(new QTimer(this)),
      find_bar_(new FindBar(editor_, this)),
      document_(std::make_unique<EditorDocument>(*editor_, program.folders,
                                                 [this](document::Draft& draft) { header_->Collect(draft); })),
      groups_(new GroupsMenu(program, this)),
      practice_(new PracticeMailbox(program, this)),
      pictures_(new PicturesPanel(program.settings.file(), this)),
      arrivals_(new QTimer(this)),
      first_panel_(new QLabel(this)) {
  BuildWindow();
  MakeStatusBar();
  ConnectParts();
}

MainForm::~MainForm() = default;

void MainForm::BuildWindow() {
  KeepWindowsOnScreen();
  setObjectName("MainForm");
  setWindowTitle(profile::kWindowTitle);
  const profile::PixelSize smallest = profile::MinWinSize(profile::GetWinVer(profile::RunningSystem()));
  setMinimumSize(smallest.width, smallest.height);
  editor_->setObjectName("Editor");
  editor_->SetPictureFolder(PathToQt(program_.folders.Pictures()));
  source_->setObjectName("SourceTextBox");
  source_->setAccessibleName(tr("HTML source"));
  source_->setLineWrapMode(QPlainTextEdit::WidgetWidth);
  QFont fixed("monospace");
  fixed.setStyleHint(QFont::Monospace);
  source_->setFont(fixed);
  body_->addWidget(editor_);
  body_->addWidget(source_);
  auto* middle = new QWidget(this);
  auto* column = new QVBoxLayout(middle);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(0);
  column->addWidget(notice_);
  column->addWidget(pictures_);
  column->addWidget(header_);
  column->addWidget(body_, 1);
  column->addWidget(find_bar_);
  setCentralWidget(middle);
  header_->findChild<QPushButton*>("GroupButton")->setMenu(groups_);
}

void MainForm::MakeStatusBar() {
  first_panel_->setObjectName("StatusPanel1");
  first_panel_->setText(Translated(profile::kStatusPanels[0]));
  first_panel_->setTextFormat(Qt::PlainText);
  statusBar()->addWidget(first_panel_, 1);
  new KeyPanels(statusBar());
}

void MainForm::ConnectParts() {
  connect(bar_, &CommandBar::Triggered, this, &MainForm::Dispatch);
  connect(bar_, &CommandBar::OwnTriggered, this, &MainForm::RunOwn);
  connect(bar_, &CommandBar::TableChanged, this, [this](TableEdit edit) {
    LeaveSource();
    editor_->EditTable(edit);
    editor_->setFocus();
  });
  connect(bar_, &CommandBar::FontChosen, this, [this](const QString& family) {
    editor_->Execute("fontName", family);
    editor_->setFocus();
  });
  connect(bar_, &CommandBar::SizeChosen, this, [this](int size) {
    editor_->Execute("fontSize", QString::number(size));
    editor_->setFocus();
  });
  connect(editor_, &HtmlEditor::StateChanged, bar_, &CommandBar::Show);
  connect(editor_, &HtmlEditor::Trouble, this, &MainForm::Say);
  connect(editor_, &HtmlEditor::FindRequested, this, [this] { find_bar_->Open(editor_->State().selected); });
  connect(editor_, &HtmlEditor::Restored, this,
          [this] { Say(tr("The editor had to be started anew; your text is as it was.")); });
  connect(header_, &MessageHeader::Trouble, this, &MainForm::Say);
  connect(header_, &MessageHeader::Said, this, &MainForm::Say);
  connect(header_, &MessageHeader::EmailPressed, this, &MainForm::EditAccount);
  connect(header_, &MessageHeader::SendPressed, this, &MainForm::Send);
  connect(header_, &MessageHeader::PreviewPressed, this, &MainForm::PreviewInside);
  connect(groups_, &GroupsMenu::Changed, header_, &MessageHeader::LoadGroups);
  connect(groups_, &GroupsMenu::Changed, this, [this] { stops_import_ = false; });
  connect(groups_, &GroupsMenu::Said, this, &MainForm::Say);
  connect(groups_, &GroupsMenu::ImportRequested, this, [this] { Dispatch(43); });
  connect(practice_, &PracticeMailbox::Arrived, this, [this] {
    ++arrived_;
    if (!arrivals_->isActive()) arrivals_->start(kArrivalsPause);
  });
  source_pause_->setSingleShot(true);
  source_pause_->setInterval(kDraftPause);
  connect(source_, &QPlainTextEdit::textChanged, source_pause_, qOverload<>(&QTimer::start));
  connect(source_pause_, &QTimer::timeout, this, [this] {
    if (SourceWasEdited()) IgnoreErrors(document_->KeepAside(FromQt(SourceText())));
  });
  fields_pause_->setSingleShot(true);
  fields_pause_->setInterval(kDraftPause);
  connect(header_, &MessageHeader::Changed, fields_pause_, qOverload<>(&QTimer::start));
  connect(fields_pause_, &QTimer::timeout, this, [this] { IgnoreErrors(document_->KeepFields()); });
  pictures_->DropLetters();
  connect(pictures_, &PicturesPanel::Known, this, [this] {
    if (pictures_->asks() != notice_->isHidden()) ShowNotices();
  });
  connect(pictures_, &PicturesPanel::Answered, this,
          [this](const std::vector<std::filesystem::path>& files, bool take) {
            document::PicturePlaces places = document_->picture_places();
            places.Answer(files, take);
            document_->SetPicturePlaces(places);
          });
  arrivals_->setSingleShot(true);
  connect(arrivals_, &QTimer::timeout, this, &MainForm::ShowNotices);
}

void MainForm::Load() {
  LoadLists();
  LoadDocument();
}

void MainForm::LoadLists() {
  header_->Load();
  bar_->ShowSplash(SplashForm::IsWanted(program_.settings));
  RestorePlace();
}

void MainForm::LoadDocument() {
  StartNew();
  if (isVisible()) editor_->BeginTyping();
  if (practice_->practice().WasOn()) {
    BeginPractice();
  } else {
    ShowNotices();
  }
}

void MainForm::StartNew() {
  const auto contents = profile::LoadMainWindow(program_.settings, {});
  Tell(document_->StartNew(contents ? contents->signature_html.value_or("") : ""));
  AskAboutPictures();
}

void MainForm::NewMessage() {
  if (!MayLeaveDocument()) return;
  const auto aside = document_->SetAside();
  if (!aside) {
    Tell(aside);
    return;
  }
  header_->Clear();
  StartNew();
  ShowNotices();
}

void MainForm::RestoreDraft() {
  if (!MayLeaveDocument()) return;
  const auto draft = document_->Recover();
  if (draft) {
    header_->Show(*draft);
    AskAboutPictures();
  } else {
    Tell(draft.error());
  }
  ShowNotices();
}

// Whether the window may close: the first time that the draft cannot be kept, it stays, and so after each that was.
bool MainForm::KeepDraft() {
  const auto kept = document_->KeepAside();
  const std::uint64_t now = document_->times_kept();
  if (kept || skip_save_prompt || std::exchange(lost_after_, now) == now) return true;
  Say(tr("%1 Close again to leave without a draft.").arg(InWords(kept.error())));
  return false;
}

void MainForm::Say(const QString& sentence) {
  first_panel_->setText(sentence);
  QTimer::singleShot(kSentenceTime, first_panel_, [this, sentence] {
    if (first_panel_->text() == sentence) first_panel_->setText(Translated(profile::kStatusPanels[0]));
  });
}

// What stands in the status bar is soon gone; the log keeps it.
void MainForm::Tell(const Result<void>& result) {
  if (result) return;
  NotePassedOver(result.error());
  Say(InWords(result.error()));
}

void MainForm::RestorePlace() {
  const auto geometry = program_.settings.Read(kPlaceSection, "Place", "");
  if (geometry && !geometry->empty() && restoreGeometry(QByteArray::fromBase64(QByteArray::fromStdString(*geometry)))) {
    return;
  }
  resize(980, 720);
}

// Worth no word where it cannot be kept.
void MainForm::KeepPlace() {
  IgnoreErrors(program_.settings.Write(kPlaceSection, "Place", saveGeometry().toBase64().toStdString()));
}

// The page takes keys only when it got the focus while it is on the screen.
void MainForm::showEvent(QShowEvent* event) {
  QMainWindow::showEvent(event);
  if (!event->spontaneous()) QTimer::singleShot(0, editor_, &HtmlEditor::BeginTyping);
}

// Groups may have been made by the command meanwhile.
void MainForm::changeEvent(QEvent* event) {
  QMainWindow::changeEvent(event);
  if (event->type() == QEvent::ActivationChange && isActiveWindow()) header_->Refresh();
}

void MainForm::Flash() {
  if (isMinimized()) showNormal();
  raise();
  activateWindow();
  QApplication::alert(this, 1000);
}

void MainForm::KeepAside() {
  LeaveSource();
  IgnoreErrors(document_->KeepAside());
}

void MainForm::EndAtOnce() {
  KeepAside();
  KeepPlace();
  QCoreApplication::exit();
}

// Asks about unsaved changes, and tells why they could not be saved.
bool MainForm::MayLeaveDocument() {
  LeaveSource();
  const auto decision = document::AskBeforeClosing(*document_, skip_save_prompt, program_.prompts);
  if (!decision) Tell(decision.error());
  return decision && *decision == document::SaveDecision::kGoOn;
}

// The first time it says what would be stopped.
bool MainForm::MayStopImport() {
  if (!groups_->is_importing() || skip_save_prompt || std::exchange(stops_import_, true)) return true;
  Say(tr("Addresses are still being added to a group. Close again to stop that; those that are in it stay."));
  return false;
}

void MainForm::closeEvent(QCloseEvent* event) {
  if (!MayStopImport() || !MayLeaveDocument() || !KeepDraft()) {
    event->ignore();
    return;
  }
  KeepPlace();
  profile::CleanUpAtClose(program_.folders);
  event->accept();
  for (QWidget* window : QApplication::topLevelWidgets()) {
    if (window != this && window->isVisible()) window->close();
  }
}

// What the document names outside its folder is neither shown nor sent until the person was asked.
void MainForm::AskAboutPictures() {
  document::MessageDocument document;
  document.html = FromQt(editor_->Html());
  document.base_folder = document_->BaseFolder();
  document.picture_places = document_->picture_places();
  pictures_->LookAt(std::move(document));
}

void MainForm::TakePictureAnswers(const document::PicturePlaces& places) {
  if (places == document_->picture_places()) return;
  document_->SetPicturePlaces(places);
  AskAboutPictures();
}

// What a new user needs to hear first; one thing at a time.
void MainForm::ShowNotices() {
  if (pictures_->asks()) {
    notice_->hide();
    return;
  }
  const document::Drafts& drafts = document_->drafts();
  if (drafts.AreOffered()) {
    const QString subject = ToQt(platform::Printable(drafts.OfferedSubject(), kLongestShown));
    notice_->Show(
        subject.isEmpty() ? tr("An unfinished message was kept.")
                          : tr("An unfinished message was kept: %1").arg(subject),
        {{tr("Restore"), "RestoreButton", [this] { RestoreDraft(); }}, {tr("Discard"), "DiscardButton", [this] {
                                                                          document_->drafts().DropOffered();
                                                                          ShowNotices();
                                                                        }}});
    return;
  }
  if (practice_->practice().is_on()) {
    const QString arrived = Counted(arrived_, tr("1 message has arrived."), tr("%1 messages have arrived."));
    notice_->Show(tr("Practice: what you send goes to a mailbox on this machine and nowhere else. %1").arg(arrived),
                  {{tr("Show them"), "ShowPracticeButton", [this] { ShowPractice(); }},
                   {tr("End practice"), "EndPracticeButton", [this] {
                      Tell(practice_->practice().End());
                      ShowSender();
                      ShowNotices();
                    }}});
    return;
  }
  const auto filled_in = account::AccountIsFilledIn(program_.settings);
  if (!filled_in) Tell(filled_in.error());
  if (!filled_in || *filled_in) {
    notice_->hide();
    return;
  }
  notice_->Show(tr("There is no mail account yet. Fill it in, or practise first with a mailbox on this machine."),
                {{tr("Fill i&n the account…"), "FillInButton", [this] { EditAccount(); }},
                 {tr("&Practise"), "PractiseButton", [this] { BeginPractice(); }}});
}

// Counted before it takes any more, for each of those is announced.
void MainForm::BeginPractice() {
  arrived_ = static_cast<qint64>(account::PracticeMessages(practice_->practice().folder()).size());
  Tell(practice_->Begin());
  ShowSender();
  ShowNotices();
}

void MainForm::ShowSender() {
  const auto contents = profile::LoadMainWindow(program_.settings, {});
  if (contents) header_->ShowSender(ToQt(contents->from), ToQt(contents->method));
}

void MainForm::ShowPractice() { PracticeForm(practice_->practice().folder(), this).exec(); }

}  // namespace quillcast::desktop
