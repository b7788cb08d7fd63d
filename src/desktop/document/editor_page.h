// The page that the document is edited in: its own scripts never run, and nothing is loaded but local pictures, from
// where the document may take them.
#pragma once

#include <QWebEnginePage>
#include <QWebEngineScript>
#include <QWebEngineView>

#include "document/picture_places.h"

class QWebEngineProfile;

namespace quillcast::desktop {

// Where the editing script runs, beside the document's own.
inline constexpr auto kWorld = QWebEngineScript::ApplicationWorld;
inline constexpr int kLoadLimit = 60000;  // milliseconds; 20 MB of short paragraphs take a quarter of it

// A text as a literal of the script.
QString Quoted(const QString& text);

// Hears the notices of the editing script, and answers it.
class EditorBridge final : public QObject {
  Q_OBJECT
 public:
  // `places` must outlive it.
  EditorBridge(const document::PicturePlaces& places, QObject* parent) : QObject(parent), places_(places) {}
 public slots:
  // Called by the script, which knows them by these names.
  void changed(int edits) { emit Edited(edits); }
  void selectionMoved() { emit SelectionMoved(); }
  void picturePasted() { emit PicturePasted(); }
  void picturesDropped() { emit PicturesDropped(); }
  void openPicture() { emit PictureOpened(); }
  void leave() { emit Left(true); }
  void leaveBackwards() { emit Left(false); }
  // Those of these addresses that are pictures which may be shown.
  QStringList allowedPictures(const QStringList& addresses) const;
 signals:
  // What the script noticed. No notice says what: the editor asks the page. Edits are counted, see quill.load.
  void Edited(int edits);
  void SelectionMoved();
  void PicturePasted();
  void PicturesDropped();  // out of what was inserted
  void PictureOpened();    // by a double click
  void Left(bool forwards);

 private:
  const document::PicturePlaces& places_;
};

// Links, forms, frames and refreshes lead nowhere, and no window opens. The document's own scripts are off.
class EditorPage final : public QWebEnginePage {
  Q_OBJECT
 public:
  // `places` must outlive it, and counts as it is when a picture is asked for.
  EditorPage(QWebEngineProfile* profile, const document::PicturePlaces& places, EditorBridge* bridge, QObject* parent);

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
  // Paths of files that were dropped on it.
  void FilesDropped(const QStringList& files);

 protected:
  void dropEvent(QDropEvent* event) override;
};

}  // namespace quillcast::desktop
