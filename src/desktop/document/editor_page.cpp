#include "desktop/document/editor_page.h"

#include <QDropEvent>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QWebChannel>
#include <QWebEngineScript>
#include <QWebEngineScriptCollection>
#include <QWebEngineSettings>
#include <QWebEngineUrlRequestInterceptor>
#include <filesystem>

#include "desktop/widgets/dropped_files.h"
#include "desktop/widgets/qt_text.h"

namespace quillcast::desktop {
namespace {

// A file's host is another machine's: "file://server/share" would reach out. A pipe or a device is never opened.
bool MayShow(const QUrl& address, const document::PicturePlaces& places) {
  if (address.scheme() != u"file" || !address.host().isEmpty()) return false;
  const std::filesystem::path file = PathFromQt(address.toLocalFile());
  return std::filesystem::is_regular_file(file, IgnoreErrors()) && places.Hold(file);
}

class LocalOnly final : public QWebEngineUrlRequestInterceptor {
 public:
  LocalOnly(const document::PicturePlaces& places, QObject* parent)
      : QWebEngineUrlRequestInterceptor(parent), places_(places) {}
  void interceptRequest(QWebEngineUrlRequestInfo& info) override {
    using Info = QWebEngineUrlRequestInfo;
    const QString scheme = info.requestUrl().scheme();
    const bool is_page = info.resourceType() == Info::ResourceTypeMainFrame && scheme == u"data";
    const bool is_embedded =
        info.resourceType() == Info::ResourceTypeImage || info.resourceType() == Info::ResourceTypeStylesheet;
    info.block(!is_page && !(is_embedded && (scheme == u"data" || MayShow(info.requestUrl(), places_))));
  }

 private:
  const document::PicturePlaces& places_;
};

QString EditingScript() {
  QString code;
  for (const char* name : {":/qtwebchannel/qwebchannel.js", ":/document/editor.js", ":/document/editor_table.js",
                           ":/document/editor_picture.js", ":/document/editor_body.js"}) {
    QFile file(name);
    if (file.open(QIODevice::ReadOnly)) code += QString::fromUtf8(file.readAll()) + '\n';
  }
  return code;
}

}  // namespace

QString Quoted(const QString& text) {
  const QByteArray list = QJsonDocument(QJsonArray{text}).toJson(QJsonDocument::Compact);
  return QString::fromUtf8(list.mid(1, list.size() - 2));
}

QStringList EditorBridge::allowedPictures(const QStringList& addresses) const {
  QStringList allowed;
  for (const QString& address : addresses) {
    if (MayShow(QUrl(address.trimmed()), places_)) allowed << address;
  }
  return allowed;
}

EditorPage::EditorPage(QWebEngineProfile* profile, const document::PicturePlaces& places, EditorBridge* bridge,
                       QObject* parent)
    : QWebEnginePage(profile, parent) {
  setUrlRequestInterceptor(new LocalOnly(places, this));
  // Stops the scripts of the document; those of our own world run all the same.
  settings()->setAttribute(QWebEngineSettings::JavascriptEnabled, false);
  settings()->setAttribute(QWebEngineSettings::FocusOnNavigationEnabled, false);
  settings()->setAttribute(QWebEngineSettings::PluginsEnabled, false);
  auto* channel = new QWebChannel(this);
  channel->registerObject("bridge", bridge);
  setWebChannel(channel, kWorld);
  QWebEngineScript script;
  script.setName("editor");
  script.setSourceCode(EditingScript());
  script.setWorldId(kWorld);
  script.setInjectionPoint(QWebEngineScript::DocumentReady);
  scripts().insert(script);
}

bool EditorPage::acceptNavigationRequest(const QUrl&, NavigationType type, bool is_main_frame) {
  return is_main_frame && type == NavigationTypeTyped;  // what SetHtml starts; not links, forms, frames or refreshes
}

void EditorView::dropEvent(QDropEvent* event) {
  const QStringList files = DroppedFiles(event->mimeData());
  if (files.isEmpty()) {
    QWebEngineView::dropEvent(event);
    return;
  }
  QDragLeaveEvent leave;  // for the page the drag is over
  QWebEngineView::dragLeaveEvent(&leave);
  event->acceptProposedAction();
  emit FilesDropped(files);
}

}  // namespace quillcast::desktop
