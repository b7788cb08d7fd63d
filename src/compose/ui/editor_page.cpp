#include "compose/ui/editor_page.h"

#include <QDropEvent>
#include <QFile>
#include <QWebChannel>
#include <QWebEngineScript>
#include <QWebEngineScriptCollection>
#include <QWebEngineSettings>
#include <QWebEngineUrlRequestInterceptor>

#include "platform/ui/dropped_files.h"

namespace quillcast::compose {
namespace {

class LocalOnly final : public QWebEngineUrlRequestInterceptor {
 public:
  using QWebEngineUrlRequestInterceptor::QWebEngineUrlRequestInterceptor;
  void interceptRequest(QWebEngineUrlRequestInfo& info) override {
    using Info = QWebEngineUrlRequestInfo;
    const QString scheme = info.requestUrl().scheme();
    const bool is_page = info.resourceType() == Info::ResourceTypeMainFrame && scheme == u"data";
    const bool is_embedded =
        info.resourceType() == Info::ResourceTypeImage || info.resourceType() == Info::ResourceTypeStylesheet;
    // A file's host is another machine's: "file://server/share" would reach out.
    const bool is_local = scheme == u"data" || (scheme == u"file" && info.requestUrl().host().isEmpty());
    info.block(!is_page && !(is_embedded && is_local));
  }
};

QString EditingScript() {
  QString code;
  for (const char* name : {":/qtwebchannel/qwebchannel.js", ":/compose/editor.js", ":/compose/editor_table.js"}) {
    QFile file(name);
    if (file.open(QIODevice::ReadOnly)) code += QString::fromUtf8(file.readAll()) + '\n';
  }
  return code;
}

}  // namespace

EditorPage::EditorPage(QWebEngineProfile* profile, EditorBridge* bridge, QObject* parent)
    : QWebEnginePage(profile, parent) {
  setUrlRequestInterceptor(new LocalOnly(this));
  // Stops the scripts of the document; those of our own world run all the same.
  settings()->setAttribute(QWebEngineSettings::JavascriptEnabled, false);
  settings()->setAttribute(QWebEngineSettings::FocusOnNavigationEnabled, false);
  settings()->setAttribute(QWebEngineSettings::PluginsEnabled, false);
  auto* channel = new QWebChannel(this);
  channel->registerObject("bridge", bridge);
  setWebChannel(channel, QWebEngineScript::ApplicationWorld);
  QWebEngineScript script;
  script.setName("editor");
  script.setSourceCode(EditingScript());
  script.setWorldId(QWebEngineScript::ApplicationWorld);
  script.setInjectionPoint(QWebEngineScript::DocumentReady);
  scripts().insert(script);
}

bool EditorPage::acceptNavigationRequest(const QUrl&, NavigationType type, bool is_main_frame) {
  return is_main_frame && type == NavigationTypeTyped;  // what SetHtml starts; not links, forms, frames or refreshes
}

void EditorView::dropEvent(QDropEvent* event) {
  const QStringList files = platform::DroppedFiles(event->mimeData());
  if (files.isEmpty()) {
    QWebEngineView::dropEvent(event);
    return;
  }
  QDragLeaveEvent leave;  // for the page the drag is over
  QWebEngineView::dragLeaveEvent(&leave);
  event->acceptProposedAction();
  emit FilesDropped(files);
}

}  // namespace quillcast::compose
