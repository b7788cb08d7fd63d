// The editor's page: made, loaded, and put back after a crash.
#include <QApplication>
#include <QCoreApplication>
#include <QDialog>
#include <QEventLoop>
#include <QFile>
#include <QGuiApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QKeyEvent>
#include <QLibraryInfo>
#include <QLocale>
#include <QMenu>
#include <QTimer>
#include <QVBoxLayout>
#include <QWebEngineProfile>
#include <algorithm>
#include <memory>
#include <utility>

#include "desktop/document/editor_page.h"
#include "desktop/document/html_editor.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/soon.h"
#include "document/merge_fields.h"

namespace quillcast::desktop {
namespace {

constexpr qsizetype kLongToLoad = 1000000;  // characters
constexpr int kAskAgain = 250;              // milliseconds
constexpr int kKeysOnTheirWay = 2000;  // so long before a page was put back a key may have gone to the one that died
constexpr int kCrashesAgain = 5000;    // a document that ends the page within this time will do so each time

QString KnownTags() {
  QJsonArray tags;
  for (const auto& field : document::kMergeFields) tags.append(ToQt(field.tag));
  return QString::fromUtf8(QJsonDocument(tags).toJson(QJsonDocument::Compact));
}

// Marks misspelt words where the engine has a dictionary for the user's language.
void CheckSpelling(QWebEngineProfile& profile) {
  const QString language = QLocale().name().replace('_', '-');
  const QStringList folders = {qEnvironmentVariable("QTWEBENGINE_DICTIONARIES_PATH"),
                               QCoreApplication::applicationDirPath() + "/qtwebengine_dictionaries",
                               QLibraryInfo::path(QLibraryInfo::DataPath) + "/qtwebengine_dictionaries"};
  const bool is_there = std::any_of(folders.begin(), folders.end(), [&](const QString& folder) {
    return !folder.isEmpty() && QFile::exists(folder + '/' + language + ".bdic");
  });
  if (!is_there) return;
  profile.setSpellCheckLanguages({language});
  profile.setSpellCheckEnabled(true);
}

}  // namespace

// The engine: it takes a quarter of a second, so only the first document starts it.
void HtmlEditor::Start() {
  profile_ = new QWebEngineProfile(this);  // without a name: nothing of it is kept on disk
  CheckSpelling(*profile_);
  bridge_ = new EditorBridge(places_, this);
  view_ = new EditorView(this);
  view_->setAccessibleName(tr("Message body"));
  view_->setContextMenuPolicy(Qt::CustomContextMenu);
  connect(view_, &QWidget::customContextMenuRequested, this, [this](const QPoint& at) {
    QMenu* menu = ContextMenu();
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->popup(view_->mapToGlobal(at));
  });
  connect(view_, &EditorView::FilesDropped, this, &HtmlEditor::TakeDropped);
  layout()->addWidget(view_);
  setTabOrder(this, view_);  // not behind all that the window got before the engine
  setFocusProxy(view_);
  connect(bridge_, &EditorBridge::Edited, this, &HtmlEditor::TakeNotice);
  // Behind the notice, within which the page answers nothing.
  connect(bridge_, &EditorBridge::PicturePasted, this, [this] { Soon(this, [this] { PastePicture(); }); });
  connect(bridge_, &EditorBridge::PictureOpened, this, [this] { Soon(this, [this] { emit PictureOpened(); }); });
  connect(bridge_, &EditorBridge::PicturesDropped, this, [this] {
    emit Trouble(tr("Pictures in what was inserted lie elsewhere and were left out. Insert them from their files."));
  });
  connect(bridge_, &EditorBridge::Left, this, [this](bool forwards) { focusNextPrevChild(forwards); });
  connect(bridge_, &EditorBridge::SelectionMoved, state_pause_, qOverload<>(&QTimer::start));
}

// A page whose process ended is not used again: its next one need not get the editing script.
void HtmlEditor::MakePage() {
  const EditorPage* const before = page_;
  page_ = new EditorPage(profile_, places_, bridge_, view_);
  view_->setPage(page_);
  delete before;
  alive_ = true;
  kind_ = {};
  connect(page_, &QWebEnginePage::renderProcessTerminated, this, [this](auto status) {
    alive_ = false;
    const bool had_the_keys = isAncestorOf(window()->focusWidget());  // of this window, also behind a dialog
    // A load that is going on fails by itself.
    if (!loading_ && status != QWebEnginePage::NormalTerminationStatus)
      Soon(this, [this, had_the_keys] { Restore(had_the_keys); });
  });
}

// The page takes one document after the other: what comes while one is waited for is taken by that call.
bool HtmlEditor::SetHtml(const QString& source, const QUrl& base, bool modified) {
  return Take({source, base, modified});
}

bool HtmlEditor::Take(const Document& document) {
  waiting_ = document;
  if (loading_) return true;
  loading_ = true;
  bool loaded = false;
  bool is_another = false;
  while (const auto next = std::exchange(waiting_, {})) {
    is_another |= next->is_another;
    if (next->is_another) {
      read_ = nullptr;
      text_.Begin(next->source, next->modified);
    }
    const bool takes_long = next->source.size() > kLongToLoad;
    if (takes_long) QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    loaded = Load(*next);
    if (!loaded) unshown_ = Error{Failure::kTryAgain, "The editor did not take the document.", "Try it once more."};
    if (takes_long) QGuiApplication::restoreOverrideCursor();
  }
  loading_ = false;
  TellModified();
  if (is_another) emit Loaded();
  return loaded;
}

// Now and then, on a busy machine, the engine does not say that it is done: so the page is asked for its mark, too.
bool HtmlEditor::LoadPage(const QString& type) {
  struct Answer {
    QEventLoop loop;
    bool loaded = false;
  };
  const auto answer = std::make_shared<Answer>();  // what comes late must find it alive
  const auto done = [answer](bool good) {
    answer->loaded = good;
    answer->loop.quit();
  };
  const QString mark = QString("load-%1").arg(loads_);
  QTimer ask;
  connect(&ask, &QTimer::timeout, &answer->loop, [this, done, mark] {
    page_->runJavaScript("window.quill&&document.body?document.body.id:''", kWorld, [done, mark](const QVariant& id) {
      if (id.toString() == mark) done(true);
    });
  });
  ask.start(kAskAgain);
  const auto watch = connect(page_, &QWebEnginePage::loadFinished, &answer->loop, done);
  QTimer::singleShot(kLoadLimit, &answer->loop, &QEventLoop::quit);
  connect(page_, &QWebEnginePage::renderProcessTerminated, &answer->loop, &QEventLoop::quit);
  page_->setHtml(QString("%1<html><body id=\"%2\"></body></html>").arg(type, mark), base_);
  answer->loop.exec(QEventLoop::ExcludeUserInputEvents);
  disconnect(watch);
  return answer->loaded;
}

bool HtmlEditor::Load(const Document& document) {
  if (page_ == nullptr) Start();
  if (!alive_) MakePage();
  ++loads_;
  coming_.clear();
  caret_.clear();
  given_up_ = false;
  const QString& source = document.source;
  const auto editable = document::CheckEditable(FromQt(source));
  unshown_ = editable ? std::nullopt : std::optional(editable.error());
  cut_ = unshown_ ? document::BodySource() : document::CutAtBody(FromQt(source));
  base_ = document.base.isEmpty() ? QUrl("file:///") : document.base;
  places_ = given_places_.WithOwnFolder(PathFromQt(base_.toLocalFile()));
  // A page that is given as text is limited to 2 MB. So only the document type, which decides how it is laid out, goes
  // that way, and the script puts the document in its place.
  const QString head = ToQt(cut_.head);
  const auto type_begin = head.indexOf("<!doctype", 0, Qt::CaseInsensitive);
  const auto type_end = type_begin < 0 ? -1 : head.indexOf('>', type_begin);
  const QString type = type_end < 0 ? QString() : head.mid(type_begin, type_end - type_begin + 1);
  // One that is only looked at has no steps to be taken back, so it stays for the next document of its kind.
  const std::pair kind(type, base_);
  const bool stays = std::exchange(kind_, {}) == kind && read_only_;
  if (!stays && !LoadPage(type)) return false;
  // What a document forbids holds for the page as long as that lives.
  if (!source.contains("Content-Security-Policy", Qt::CaseInsensitive)) kind_ = kind;
  // What stands behind the body is no concern of the page: a parser would take its blanks into the body.
  const QString page = unshown_ ? QString() : source.left(source.size() - ToQt(cut_.tail).size());
  const QVariant edits = Evaluate("quill.load(" + Quoted(page) + ')', kLoadLimit);
  if (!edits.isValid()) return false;
  noticed_ = edits.toInt();
  if (read_only_) Evaluate("quill.setReadOnly(true)");
  if (tab_leaves_) Evaluate("quill.tabLeaves=true");
  InputWidget()->installEventFilter(this);
  page_->setZoomFactor(zoom_);
  Evaluate("quill.setTags(" + KnownTags() + ')');  // a page that is only looked at may have its tags, too
  return true;
}

bool HtmlEditor::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::KeyPress) {
    const QString typed = static_cast<QKeyEvent*>(event)->text();
    if (!typed.isEmpty() && typed[0].isPrint()) last_key_.start();
  }
  // A dialog closes by it, wherever the keys are.
  const bool is_escape = event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape &&
                         (read_only_ || qobject_cast<QDialog*>(window()) != nullptr);
  return is_escape ? QCoreApplication::sendEvent(window(), event) : QWidget::eventFilter(watched, event);
}

// While another view holds the text, the page gets that when it is shown anew.
void HtmlEditor::Restore(bool had_the_keys) {
  if (alive_ || loading_) return;
  if (read_) {
    if (!unshown_) unshown_ = Error{Failure::kTryAgain, "The editor had to be started anew.", "Try it once more."};
    emit Restored(true);
    return;
  }
  const bool again = restored_.isValid() && restored_.elapsed() < kCrashesAgain;
  restored_.start();
  const QVariantList caret = caret_;
  const bool is_whole = !text_.Lose();
  if (again || !Take({text_.seen(), base_, false, false})) {
    given_up_ = true;
    emit Trouble(
        tr("The editor cannot show this document. Save it under another name: its text is as it was seen last."));
    return;
  }
  const QJsonArray way = QJsonArray::fromVariantList(caret);
  Evaluate("quill.goTo(" + QString::fromUtf8(QJsonDocument(way).toJson(QJsonDocument::Compact)) + ')');
  if (had_the_keys) BeginTyping();
  emit Restored(is_whole && !(last_key_.isValid() && last_key_.elapsed() < kKeysOnTheirWay));
}

bool HtmlEditor::ShowHeld() {
  const QString text = read_();
  text_.See(text, true);
  const bool is_shown = Take({text, base_, false, false}) && !unshown_;
  if (text_.is_changed()) emit Snapshot(text_.seen());
  return is_shown;
}

}  // namespace quillcast::desktop
