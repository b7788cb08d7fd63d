#include "desktop/document/html_editor.h"

#include <QClipboard>
#include <QEventLoop>
#include <QGuiApplication>
#include <QMenu>
#include <QPrinter>
#include <QTimer>
#include <QVBoxLayout>
#include <QWebEngineFindTextResult>
#include <algorithm>
#include <array>
#include <memory>
#include <utility>

#include "desktop/document/editor_page.h"
#include "desktop/widgets/background_task.h"
#include "desktop/widgets/dropped_files.h"
#include "desktop/widgets/qt_text.h"

namespace quillcast::desktop {
namespace {

constexpr int kStatePause = 40;  // milliseconds

// Commands of the engine by their names; the others are actions of the page, or ours. Delete takes what is behind the
// caret, as the key does.
struct EngineCommand {
  EditorCommand command;
  const char* name;
  const char* value = "";
};
constexpr auto kEngineNames = std::to_array<EngineCommand>({
    {EditorCommand::kBold, "bold"},
    {EditorCommand::kItalic, "italic"},
    {EditorCommand::kUnderline, "underline"},
    {EditorCommand::kDelete, "forwardDelete"},
    {EditorCommand::kIndent, "indent"},
    {EditorCommand::kOutdent, "outdent"},
    {EditorCommand::kAlignLeft, "justifyLeft"},
    {EditorCommand::kAlignCentre, "justifyCenter"},
    {EditorCommand::kAlignRight, "justifyRight"},
    {EditorCommand::kNumberedList, "insertOrderedList"},
    {EditorCommand::kBulletedList, "insertUnorderedList"},
    {EditorCommand::kRemoveFormatting, "removeFormat"},
    {EditorCommand::kRemoveHyperlink, "unlink"},
    {EditorCommand::kUndo, "undo"},
    {EditorCommand::kRedo, "redo"},
    {EditorCommand::kSelectAll, "selectAll"},
    {EditorCommand::kNormal, "formatBlock", "p"},
    {EditorCommand::kHeading1, "formatBlock", "h1"},
    {EditorCommand::kHeading2, "formatBlock", "h2"},
    {EditorCommand::kHeading3, "formatBlock", "h3"},
    {EditorCommand::kQuote, "formatBlock", "blockquote"},
    {EditorCommand::kPreformatted, "formatBlock", "pre"},
});

}  // namespace

HtmlEditor::HtmlEditor(QWidget* parent)
    : QWidget(parent),
      state_pause_(new QTimer(this)),
      look_pause_(new QTimer(this)),
      taking_(new BackgroundTask(this)) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  state_pause_->setSingleShot(true);
  state_pause_->setInterval(kStatePause);
  connect(state_pause_, &QTimer::timeout, this, [this] {
    if (loading_) return;  // the next document moves the caret, too
    page_->runJavaScript("quill.mark();quill.state()", kWorld, [this, load = loads_](const QVariant& value) {
      if (value.isValid() && load == loads_) caret_ = value.toMap()["caret"].toList();
      emit StateChanged(EditorState::From(value.toMap()));
    });
  });
  look_pause_->setSingleShot(true);
  connect(look_pause_, &QTimer::timeout, this, &HtmlEditor::Look);
}

HtmlEditor::~HtmlEditor() {
  if (page_ != nullptr) disconnect(page_, nullptr, this, nullptr);
  delete page_;  // it has to go before its profile
}

QVariant HtmlEditor::Evaluate(const QString& script, int milliseconds) const {
  if (!alive_) return {};
  struct Answer {
    QEventLoop loop;
    QVariant value;
  };
  const auto answer = std::make_shared<Answer>();  // an answer that comes late must find it alive
  page_->runJavaScript(script, kWorld, [answer](const QVariant& value) {
    answer->value = value;
    answer->loop.quit();
  });
  QTimer::singleShot(milliseconds, &answer->loop, &QEventLoop::quit);
  connect(page_, &QWebEnginePage::renderProcessTerminated, &answer->loop, &QEventLoop::quit);
  answer->loop.exec(QEventLoop::ExcludeUserInputEvents);
  return answer->value;
}

QVariant HtmlEditor::Do(const QString& script, int milliseconds) {
  QVariant done = Evaluate(script, milliseconds);
  if (!done.isValid()) emit Trouble(tr("The editor does not answer. Try it once more."));
  return done;
}

void HtmlEditor::BeginTyping() {
  if (page_ == nullptr) return;
  InputWidget()->clearFocus();
  view_->setFocus();
}

void HtmlEditor::SetReadOnly(bool read_only) {
  read_only_ = read_only;
  Evaluate(read_only ? "quill.setReadOnly(true)" : "quill.setReadOnly(false)");
}

QString HtmlEditor::PlainText() const { return Evaluate("quill.text()", kLoadLimit).toString(); }

bool HtmlEditor::TakeBodyAttributes(const QString& html) {
  return Do("quill.takeBody(" + Quoted(html) + ')', kLoadLimit).toBool();
}

EditorState HtmlEditor::State() const { return EditorState::From(Evaluate("quill.state()").toMap()); }

void HtmlEditor::Run(EditorCommand command) {
  const auto* const named = std::find_if(kEngineNames.begin(), kEngineNames.end(),
                                         [command](const auto& row) { return row.command == command; });
  if (named != kEngineNames.end()) {
    Execute(named->name, named->value);
    return;
  }
  switch (command) {
    case EditorCommand::kCut:
      page_->triggerAction(QWebEnginePage::Cut);
      break;
    case EditorCommand::kCopy:
      page_->triggerAction(QWebEnginePage::Copy);
      break;
    case EditorCommand::kPaste:
      page_->triggerAction(QWebEnginePage::Paste);
      break;
    default:
      emit FindRequested();
  }
}

// Files would come as addresses that lead nowhere, and tell of this machine.
void HtmlEditor::PastePlain() {
  if (HoldsFiles(QGuiApplication::clipboard()->mimeData())) {
    emit Trouble(tr("Files cannot be pasted as text. Insert pictures with Insert, and attach the others."));
    return;
  }
  page_->triggerAction(QWebEnginePage::PasteAndMatchStyle);
}

bool HtmlEditor::Execute(const QString& command, const QString& value) {
  return Do(QString("quill.exec(%1,%2)").arg(Quoted(command), Quoted(value))).toBool();
}

bool HtmlEditor::InsertHtml(const QString& html) { return Do(QString("quill.insert(%1)").arg(Quoted(html))).toBool(); }

bool HtmlEditor::InsertTable(const QString& html) {
  return Do(QString("quill.insertTable(%1)").arg(Quoted(html))).toBool();
}

bool HtmlEditor::EditTable(TableEdit edit) {
  constexpr std::array<const char*, 7> kNames = {"rowAbove",  "rowBelow",     "columnLeft", "columnRight",
                                                 "deleteRow", "deleteColumn", "deleteTable"};
  return Do(QString("quill.editTable('%1')").arg(kNames.at(static_cast<std::size_t>(edit)))).toBool();
}

bool HtmlEditor::InsertLink(const QString& address, const QString& text) {
  return Do(QString("quill.link(%1,%2)").arg(Quoted(address), Quoted(text))).toBool();
}

std::vector<LinkPlace> HtmlEditor::LinkPlaces() const {
  std::vector<LinkPlace> places;
  const QVariant found = Evaluate("quill.places().map(place=>[place.name,place.text])");
  for (const QVariant& place : found.toList()) {
    const QVariantList pair = place.toList();
    places.push_back({pair.at(0).toString(), pair.at(1).toString()});
  }
  return places;
}

void HtmlEditor::SetZoom(double factor) {
  zoom_ = factor;
  if (page_ != nullptr) page_->setZoomFactor(factor);
}

void HtmlEditor::SetPicturePlaces(const document::PicturePlaces& places) {
  given_places_ = places;
  places_ = given_places_.WithOwnFolder(PathFromQt(base_.toLocalFile()));
}

void HtmlEditor::ReloadPictures() {
  if (!loading_) Evaluate("quill.reloadPictures()");
}

bool HtmlEditor::ChangePicture(const QString& html) {
  return Do(QString("quill.changePicture(%1)").arg(Quoted(html))).toBool();
}

void HtmlEditor::Find(const QString& text, bool backward, const std::function<void(int)>& found) {
  QWebEnginePage::FindFlags flags;
  flags.setFlag(QWebEnginePage::FindBackward, backward);
  page_->findText(text, flags, [found](const QWebEngineFindTextResult& result) { found(result.numberOfMatches()); });
}

void HtmlEditor::Print(QPrinter* printer, const std::function<void(bool)>& done) {
  connect(
      view_, &QWebEngineView::printFinished, this, [done](bool good) { done(good); }, Qt::SingleShotConnection);
  view_->print(printer);
}

bool HtmlEditor::PrintToPdf(const QString& file) {
  if (!alive_) return false;
  QEventLoop loop;
  bool good = false;
  const auto watch = connect(page_, &QWebEnginePage::pdfPrintingFinished, &loop, [&](const QString&, bool written) {
    good = written;
    loop.quit();
  });
  QTimer::singleShot(kLoadLimit, &loop, &QEventLoop::quit);
  connect(page_, &QWebEnginePage::renderProcessTerminated, &loop, &QEventLoop::quit);
  page_->printToPdf(file);
  loop.exec();
  disconnect(watch);
  return good;
}

QMenu* HtmlEditor::ContextMenu() {
  auto* menu = new QMenu(this);
  menu->setObjectName("EditorContextMenu");
  const std::array<std::pair<QString, EditorCommand>, 6> entries = {{{tr("Undo"), EditorCommand::kUndo},
                                                                     {tr("Cut"), EditorCommand::kCut},
                                                                     {tr("Copy"), EditorCommand::kCopy},
                                                                     {tr("Paste"), EditorCommand::kPaste},
                                                                     {tr("Delete"), EditorCommand::kDelete},
                                                                     {tr("Select All"), EditorCommand::kSelectAll}}};
  for (const auto& [text, command] : entries) {
    menu->addAction(text, this, [this, what = command] { Run(what); });
  }
  if (State().picture.address.isEmpty()) return menu;
  menu->addSeparator();
  menu->addAction(tr("Picture…"), this, &HtmlEditor::PictureOpened);
  return menu;
}

QWidget* HtmlEditor::InputWidget() const { return view_->focusProxy(); }

}  // namespace quillcast::desktop
