#include "desktop/shell/main_form.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDropEvent>
#include <QMenuBar>
#include <QPushButton>
#include <QStatusBar>
#include <QTimer>
#include <QVBoxLayout>
#include <utility>

#include "desktop/document/body_view.h"
#include "desktop/document/editor_document.h"
#include "desktop/document/find_bar.h"
#include "desktop/document/html_editor.h"
#include "desktop/run/pictures_panel.h"
#include "desktop/shell/command_bar.h"
#include "desktop/shell/commands.h"
#include "desktop/shell/document_label.h"
#include "desktop/shell/key_panels.h"
#include "desktop/shell/message_header.h"
#include "desktop/shell/notices.h"
#include "desktop/shell/open_requests.h"
#include "desktop/shell/practice_mailbox.h"
#include "desktop/shell/recent_menu.h"
#include "desktop/shell/shell.h"
#include "desktop/shell/splash_form.h"
#include "desktop/shell/status_panel.h"
#include "desktop/shell/tips_form.h"
#include "desktop/widgets/dropped_files.h"
#include "desktop/widgets/keep_modal.h"
#include "desktop/widgets/keep_on_screen.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/soon.h"
#include "document/edited_document.h"
#include "document/recent_documents.h"
#include "profile/clean_up.h"
#include "profile/get_win_ver.h"
#include "profile/main_window_contents.h"
#include "profile/min_win_size.h"
#include "profile/startup.h"

namespace quillcast::desktop {
namespace {

constexpr const char* kPlaceSection = "Window";
constexpr int kDraftPause = 1000;  // milliseconds
constexpr int kLowestBody = 100;   // pixels, where the window is small

// Where one is open, it takes the keys: those of the window beneath would run its commands past what it asks.
bool ActivateDialog() {
  QWidget* const dialog = QApplication::activeModalWidget();
  if (dialog == nullptr) return false;
  dialog->raise();
  dialog->activateWindow();
  return true;
}

}  // namespace

MainForm::MainForm(const profile::Program& program)
    : program_(program),
      bar_(new CommandBar(this)),
      header_(new MessageHeader(program, this)),
      editor_(new HtmlEditor(this)),
      body_(new BodyView(editor_, this)),
      find_bar_(new FindBar(editor_, this)),
      document_(std::make_unique<EditorDocument>(*editor_, program.folders,
                                                 [this](document::Draft& draft) { header_->Collect(draft); })),
      practice_(new PracticeMailbox(program, this)),
      notices_(new Notices(program, document_->drafts(), *practice_, this)),
      status_(new StatusPanel(this)),
      label_(new DocumentLabel(this)),
      shell_(new Shell{program, *this, *bar_, *notices_, *header_, *body_, *editor_, *document_, *practice_, *status_,
                       skip_save_prompt}),
      requests_(new OpenRequests(
          *shell_, [this] { return IsFree(); }, this)),
      fields_pause_(new QTimer(this)) {
  BuildWindow();
  ConnectBar();
  ConnectBody();
  ConnectDocument();
  ConnectHeader();
  ConnectNotices();
  connect(requests_, &OpenRequests::Opened, this, &MainForm::ShowWaitingTips);
}

MainForm::~MainForm() = default;

void MainForm::BuildWindow() {
  KeepWindowsOnScreen();
  KeepDialogsModal();
  setObjectName("MainForm");
  setWindowTitle(profile::kWindowTitle);
  const profile::PixelSize smallest = profile::MinWinSize(profile::GetWinVer(profile::RunningSystem()));
  setMinimumSize(smallest.width, smallest.height);
  editor_->setObjectName("Editor");
  editor_->SetPictureFolder(PathToQt(program_.folders.Pictures()));
  auto* middle = new QWidget(this);
  auto* column = new QVBoxLayout(middle);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(0);
  column->addWidget(notices_);
  column->addWidget(header_);
  body_->setMinimumHeight(kLowestBody);
  column->addWidget(body_, 1);
  column->addWidget(find_bar_);
  setCentralWidget(middle);
  statusBar()->addWidget(status_, 1);
  new KeyPanels(statusBar());
  menuBar()->setCornerWidget(label_);
  setAcceptDrops(true);
}

void MainForm::ConnectBar() {
  connect(bar_, &CommandBar::Triggered, this, qOverload<CommandId>(&MainForm::Dispatch));
  connect(bar_, &CommandBar::FontChosen, this, [this](const QString& family) {
    if (body_->LeaveSource()) editor_->Execute("fontName", family);
    body_->setFocus();
  });
  connect(bar_, &CommandBar::SizeChosen, this, [this](int size) {
    if (body_->LeaveSource()) editor_->Execute("fontSize", QString::number(size));
    body_->setFocus();
  });
}

void MainForm::ConnectBody() {
  connect(editor_, &HtmlEditor::StateChanged, bar_, &CommandBar::Show);
  connect(editor_, &HtmlEditor::Trouble, this, &MainForm::Say);
  connect(editor_, &HtmlEditor::FindRequested, this, [this] { find_bar_->Open(editor_->State().selected); });
  connect(editor_, &HtmlEditor::Restored, this, [this](bool is_whole) {
    Say(is_whole ? tr("The editor had to be started anew; your text is as it was.")
                 : tr("The editor had to be started anew. What was typed in the last seconds may be missing."));
  });
  connect(body_, &BodyView::Trouble, this, &MainForm::Say);
  connect(body_, &BodyView::SourceShown, bar_, &CommandBar::ShowSource);
  connect(body_, &BodyView::SourceShown, find_bar_, &FindBar::hide);  // it finds in the page alone
  connect(find_bar_, &FindBar::Closed, body_, qOverload<>(&BodyView::setFocus));
  connect(body_, &BodyView::SourceTaken, this, [this] { shell_->AskAboutPictures(); });
}

// Its name and its place in the list of documents follow it wherever it is opened and saved. What is dropped waits, as
// what another start brings does.
void MainForm::ConnectDocument() {
  document_->WhenNamed([this](const std::filesystem::path& file) {
    label_->ShowName(file);
    IgnoreErrors(document::AddRecentDocument(program_.settings, file));  // worth no word
  });
  connect(editor_, &HtmlEditor::ModifiedChanged, label_, &DocumentLabel::ShowChanged);
  connect(editor_, &HtmlEditor::DocumentDropped, this, [this](const QString& file) { Open({FromQt(file)}); });
  connect(editor_, &HtmlEditor::PictureOpened, this, [this] { Dispatch(CommandId::kPicture); });
  // Behind the drop or the paste, which has to end first.
  connect(
      editor_, &HtmlEditor::PicturesOffered, this,
      [this](const QStringList& files) { AtWork([this, files] { OfferPictures(*shell_, files); }); },
      Qt::QueuedConnection);
  auto* recent = new RecentMenu(program_.settings, this);
  bar_->AddMenuBehind(CommandId::kOpen, recent);
  connect(recent, &RecentMenu::Failed, this, [this](const Error& error) { shell_->Tell(error); });
  connect(recent, &RecentMenu::Picked, this,
          [this](const std::filesystem::path& file) { AtWork([this, file] { OpenRecent(*shell_, file); }); });
}

// A button of the header is the row of the table that has its name.
void MainForm::ConnectHeader() {
  for (const Command& command : Commands()) {
    auto* button = command.name.empty() ? nullptr : header_->findChild<QPushButton*>(ToQt(command.name));
    if (button == nullptr) continue;
    connect(button, &QPushButton::clicked, this, [this, id = command.id] { Dispatch(id); });
  }
  connect(header_, &MessageHeader::Trouble, this, &MainForm::Say);
  connect(header_, &MessageHeader::Said, this, &MainForm::Say);
  fields_pause_->setSingleShot(true);
  fields_pause_->setInterval(kDraftPause);
  connect(header_, &MessageHeader::Changed, fields_pause_, qOverload<>(&QTimer::start));
  connect(fields_pause_, &QTimer::timeout, this, [this] { document_->KeepForACrash(); });
  document_->WhenKept([this](const Result<void>& kept) {
    status_->Keep(kept ? QString() : tr("No draft can be kept now. %1").arg(InWords(kept.error())));
  });
}

void MainForm::ConnectNotices() {
  connect(notices_, &Notices::RestorePressed, this, [this] { AtWork([this] { RestoreDraft(*shell_); }); });
  connect(notices_, &Notices::PracticePressed, this, [this] { AtWork([this] { ShowPracticeMailbox(*shell_); }); });
  connect(notices_, &Notices::RunsPressed, this,
          [this](run::RunId run) { AtWork([this, run] { ShowKeptRuns(*shell_, run); }); });
  connect(notices_, &Notices::AccountPressed, this, [this] { Dispatch(CommandId::kAccount); });
  connect(notices_, &Notices::PracticeChanged, this, [this] { shell_->ShowSender(); });
  connect(notices_, &Notices::PracticeTold, this, &MainForm::Say);
  connect(notices_, &Notices::Failed, this, [this](const Error& error) { shell_->Tell(error); });
  connect(&notices_->pictures(), &PicturesPanel::Answered, this,
          [this](const std::vector<std::filesystem::path>& files, bool take) {
            document::PicturePlaces places = document_->picture_places();
            places.Answer(files, take);
            document_->SetPicturePlaces(places);
          });
}

void MainForm::Load() {
  LoadLists();
  LoadDocument();
}

void MainForm::LoadLists() {
  header_->Load();
  RestoreZoom(*shell_);
  bar_->ShowSplash(SplashForm::IsWanted(program_.settings));
  RestorePlace();
}

void MainForm::LoadDocument() {
  StartDocument(*shell_);
  if (isVisible()) editor_->BeginTyping();
  notices_->GoOnPractising();
  notices_->LookForCutOff();
  is_loaded_ = true;
  requests_->Resume();
  ShowWaitingTips();
}

// Of two calls the first shows it.
void MainForm::ShowWaitingTips() {
  Soon(this, [this] {
    if (tips_wait_) ShowTipsAtStart();
  });
}

void MainForm::Dispatch(CommandId id) {
  const Command& command = RowOf(id);
  AtWork([this, &command] { command.run(*shell_); });
}

void MainForm::Dispatch(int number) {
  if (const auto id = CommandNumbered(number)) Dispatch(*id);
}

// Nothing else is opened meanwhile, not even where the work lets events come in.
void MainForm::AtWork(const std::function<void()>& work) {
  ++at_work_;
  work();
  if (--at_work_ == 0) requests_->Resume();
}

bool MainForm::IsFree() const {
  return is_loaded_ && !closes_ && at_work_ == 0 && QApplication::activeModalWidget() == nullptr;
}

void MainForm::Open(const std::vector<std::string>& arguments) { requests_->Add(arguments); }

bool MainForm::event(QEvent* event) {
  const bool is_known = QMainWindow::event(event);
  if (event->type() == QEvent::WindowUnblocked) requests_->Resume();
  return is_known;
}

void MainForm::Say(const QString& sentence) { status_->Say(sentence); }

void MainForm::ShowTipsAtStart() {
  // What the program was started with comes first: it is what the person waits for, and a tip would keep it back.
  tips_wait_ = !is_loaded_ || (requests_->is_waiting() && !requests_->HasWindow());
  if (!tips_wait_ && IsFree() && !requests_->HasWindow() && TipsForm::IsWanted(program_.settings, false))
    Dispatch(CommandId::kTips);
  body_->setFocus();
}

void MainForm::RestorePlace() {
  const auto geometry = program_.settings.Read(kPlaceSection, "Place", "");
  if (geometry && !geometry->empty() && restoreGeometry(QByteArray::fromBase64(QByteArray::fromStdString(*geometry)))) {
    return;
  }
  resize(1020, 720);
}

// Worth no word where it cannot be kept.
void MainForm::KeepPlace() {
  IgnoreErrors(program_.settings.Write(kPlaceSection, "Place", saveGeometry().toBase64().toStdString()));
}

// The page takes keys only when it got the focus while it is on the screen.
void MainForm::showEvent(QShowEvent* event) {
  QMainWindow::showEvent(event);
  if (event->spontaneous()) return;
  if (std::exchange(closes_, false)) emit Closes(false);
  QTimer::singleShot(0, body_, &BodyView::BeginTyping);
  requests_->Resume();
}

// Groups may have been made by the command meanwhile, and the account changed.
void MainForm::changeEvent(QEvent* event) {
  QMainWindow::changeEvent(event);
  if (event->type() != QEvent::ActivationChange || !isActiveWindow()) return;
  ActivateDialog();
  header_->Refresh();
  notices_->LookAtPractice();
  shell_->ShowSender();
}

void MainForm::dragEnterEvent(QDragEnterEvent* event) {
  const QStringList files = DroppedFiles(event->mimeData());
  if (files.isEmpty()) return;
  const auto file = PathFromQt(files.front());
  if (document::IsNamedAsDocument(file) || document::IsNamedAsMessageFile(file)) event->acceptProposedAction();
}

void MainForm::dropEvent(QDropEvent* event) {
  std::vector<std::string> files;
  for (const QString& file : DroppedFiles(event->mimeData())) files.push_back(PathFromQt(file).string());
  Open(files);
}

void MainForm::Flash() {
  if (isMinimized()) showNormal();
  if (!ActivateDialog()) {
    raise();
    activateWindow();
  }
  QApplication::alert(this, 1000);
}

void MainForm::KeepAside() { IgnoreErrors(document_->KeepAside()); }

void MainForm::EndAtOnce() {
  KeepAside();
  KeepPlace();
  QCoreApplication::exit();
}

// Whether the window may close: the first time that the draft cannot be kept, or only as it was seen last, it stays,
// and so after each that was kept in between.
bool MainForm::KeepDraft() {
  const std::uint64_t before = document_->times_kept();
  const auto kept = document_->KeepAside();
  const std::uint64_t now = document_->times_kept();
  if (kept || skip_save_prompt || std::exchange(lost_after_, now) == before) return true;
  Say((now > before ? tr("%1 A draft was kept as the text was seen last. Close again to leave with that.")
                    : tr("No draft can be kept now. %1 Close again to leave without a draft."))
          .arg(InWords(kept.error())));
  return false;
}

// Keeping the draft lets events come in: what another start brings must not take the place of what is kept.
bool MainForm::MayClose() {
  closes_ = true;
  emit Closes(true);
  if (shell_->MayLeaveDocument() && KeepDraft()) return true;
  closes_ = false;
  emit Closes(false);
  requests_->Resume();
  return false;
}

void MainForm::closeEvent(QCloseEvent* event) {
  if (closes_) {
    event->setAccepted(!isVisible());  // it is being asked already, or is closed
    return;
  }
  if (!MayClose()) {
    event->ignore();
    return;
  }
  KeepPlace();
  profile::CleanUpAtClose(program_.folders, [&](const std::string& name) { return document_->drafts().Mention(name); });
  event->accept();
  for (QWidget* window : QApplication::topLevelWidgets()) {
    if (window != this && window->isVisible()) window->close();
  }
}

}  // namespace quillcast::desktop
