// The page that the document is edited in: its own scripts never run, and nothing is loaded but local pictures.
#pragma once

#include <QWebEnginePage>
#include <QWebEngineView>

class QWebEngineProfile;

namespace quillcast::compose {

// Hears the notices of the editing script.
class EditorBridge final : public QObject {
  Q_OBJECT
 public:
  using QObject::QObject;
 public slots:
  void changed() { emit Edited(); }
  void selectionMoved() { emit SelectionMoved(); }
  void picturePasted() { emit PicturePasted(); }
 signals:
  void Edited();
  void SelectionMoved();
  void PicturePasted();
};

class EditorPage final : public QWebEnginePage {
  Q_OBJECT
 public:
  EditorPage(QWebEngineProfile* profile, EditorBridge* bridge, QObject* parent);

 protected:
  bool acceptNavigationRequest(const QUrl& url, NavigationType type, bool is_main_frame) override;
  QWebEnginePage* createWindow(WebWindowType) override { return nullptr; }
};

// Takes files that are dropped on it, in place of the page, which would open them.
class EditorView final : public QWebEngineView {
  Q_OBJECT
 public:
  using QWebEngineView::QWebEngineView;
 signals:
  void FilesDropped(const QStringList& files);

 protected:
  void dropEvent(QDropEvent* event) override;
};

}  // namespace quillcast::compose
