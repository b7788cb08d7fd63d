// The editor of the message body: an HTML document that can be typed into. What was not edited comes back byte for
// byte; of an edited document everything outside its body does. Content round the body belongs to the body.
//
// It is the one that knows the text as it is now, also while another view holds it, and whether it was saved. What the
// page does not tell is an error, never an older text. A crash of the page's process loses at most what came since the
// text was last seen (TypedText), and it says so: the document is put back as it was seen, with the caret.
// The engine is started by the first document; nothing can be done with an editor that has none.
#pragma once

#include <QElapsedTimer>
#include <QStringList>
#include <QUrl>
#include <QVariant>
#include <QWidget>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "desktop/document/editor_command.h"
#include "desktop/document/editor_state.h"
#include "desktop/document/typed_text.h"
#include "document/body_source.h"
#include "document/picture_places.h"
#include "platform/result.h"

class QMenu;
class QPrinter;
class QTimer;
class QWebEngineProfile;

namespace quillcast::desktop {

class BackgroundTask;
class EditorBridge;
class EditorPage;
class EditorView;

// What a link within the document can lead to.
struct LinkPlace {
  QString name;
  QString text;  // that stands there, or its beginning
};

// What asks the page waits for its answer in a loop that takes no typing: five seconds at most, a minute for a whole
// document.
class HtmlEditor final : public QWidget {
  Q_OBJECT
 public:
  explicit HtmlEditor(QWidget* parent = nullptr);
  ~HtmlEditor() override;

  // Replaces the document and returns when it can be edited; false when the page did not answer. What is given
  // meanwhile comes after it, and the last of it counts. Relative references start from `base`. Nothing can be undone
  // afterwards. The document counts as unchanged unless it is `modified`. One that is nested too deeply is held: Html
  // gives it back, and an empty page is shown.
  bool SetHtml(const QString& source, const QUrl& base = {}, bool modified = false);
  // The document as it is now; kTryAgain where the page does not answer.
  Result<QString> Text();
  // The same as it was known last, without asking.
  const QString& seen() const { return text_.seen(); }
  QString PlainText() const;
  // Takes the keys; to be called once the editor is on the screen.
  void BeginTyping();
  const QUrl& base() const { return base_; }
  // Why the document is held and not shown: kBadData where it cannot be, kTryAgain where the page failed.
  const std::optional<Error>& unshown() const { return unshown_; }

  // Another view holds the text: `read` is what stands there, and the page hears of nothing until this is called with
  // no function, or SetHtml. HolderChanged tells of a change there; ShowHeld gives the page what stands there, without
  // a change to what is saved, and false where it cannot show that.
  void LendTo(std::function<QString()> read);
  void HolderChanged() { NoteChange(); }
  bool ShowHeld();

  // Since the document was set or saved. Asks the page too: the notice of a key may be on its way; one that does not
  // answer may have been typed into.
  bool IsModified();
  // The same as far as it is known already.
  bool is_known_modified() const { return text_.is_changed(); }
  // What Text gave last is in a file.
  void Saved();
  // For a preview: shown, scrolled and copied from, not changed. Escape is its window's.
  void SetReadOnly(bool read_only);
  bool is_read_only() const { return read_only_; }
  // For a dialog: outside tables the Tab key goes on to the next control. Counts from the next document on.
  void LetTabLeave() { tab_leaves_ = true; }

  // Needs a document. kFindText is no change of the text: it emits FindRequested.
  void Run(EditorCommand command);
  void PastePlain();
  // A command of the engine by its name: "fontName", "foreColor", ...
  bool Execute(const QString& command, const QString& value = {});
  // Replaces the selection; one step back undoes it.
  bool InsertHtml(const QString& html);
  // Their copies in the picture folder, where there is one. They are looked at and copied beside the window and come
  // when that is done, unless another document is here by then. What should be asked about first, large photographs, is
  // not inserted: PicturesOffered tells of it.
  void InsertPictures(const QStringList& files);
  // What is selected takes over what this picture has, its file too; its other attributes stay. One step back undoes
  // it.
  bool ChangePicture(const QString& html);
  // The caret goes into its first cell.
  bool InsertTable(const QString& html);
  // False where the caret is in no table. One step back undoes it.
  bool EditTable(TableEdit edit);
  // An empty text: the selection or the link at the caret keeps its own, and where there is neither the address is it.
  bool InsertLink(const QString& address, const QString& text);
  // Its named places, and its headings under names that they get when a link leads there.
  std::vector<LinkPlace> LinkPlaces() const;
  // The attributes of the body become those that the body of `html` has; one step back undoes it.
  bool TakeBodyAttributes(const QString& html);
  EditorState State() const;
  // Of the view alone, 1 for the document's own size.
  void SetZoom(double factor);

  // Marks what is found; `found` gets the number of places. An empty text takes the marks away.
  void Find(const QString& text, bool backward, const std::function<void(int)>& found);
  void Print(QPrinter* printer, const std::function<void(bool)>& done);
  bool PrintToPdf(const QString& file);

  // Where pictures that are picked, pasted and dropped are kept; without a folder they cannot be pasted.
  void SetPictureFolder(const QString& folder) { picture_folder_ = folder; }
  // Where pictures may be shown from besides the document's own folder. Counts for those that are asked for from now
  // on.
  void SetPicturePlaces(const document::PicturePlaces& places);
  void ReloadPictures();
  QMenu* ContextMenu();
  // The widget that keys go to.
  QWidget* InputWidget() const;
  // Runs a script beside the document and waits for its value, five seconds where nothing else is said; what did not
  // come by then is an invalid value.
  QVariant Evaluate(const QString& script, int milliseconds = 5000) const;

 signals:
  // Only when it became another.
  void ModifiedChanged(bool modified);
  // 40 milliseconds after the caret moved or the text changed.
  void StateChanged(const quillcast::desktop::EditorState& state);
  void FindRequested();
  // A double click, or the menu's entry: the picture is selected.
  void PictureOpened();
  void PicturesOffered(const QStringList& files);  // see InsertPictures
  void DocumentDropped(const QString& file);
  // Soon after a change, see TypedText, whichever view holds it: the document as it is now.
  void Snapshot(const QString& html);
  void Loaded();                 // another document, shown or held
  void Restored(bool is_whole);  // after a crash of the page's process; false where typing may be missing
  void Trouble(const QString& sentence);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  struct Document {
    QString source;
    QUrl base;
    bool modified;
    bool is_another = true;  // no longer the one that was there
  };
  // The engine, its page, and a document in it. SavingScript asks the page for the document and Assemble puts its
  // answer into the source.
  void Start();
  void MakePage();
  bool Take(const Document& document);
  bool Load(const Document& document);
  bool LoadPage(const QString& type);
  QString SavingScript() const;
  QString Assemble(const QVariant& saved) const;
  void TakeNotice(int edits);
  void NoteChange();
  void TellModified();
  void Look();
  void See(const QVariant& saved);
  Result<void> AskPage();
  // A script of a command: that it was not answered is told.
  QVariant Do(const QString& script, int milliseconds = 5000);
  void TakeDropped(const QStringList& files);
  void PastePicture();
  void Restore(bool had_the_keys);

  QWebEngineProfile* profile_ = nullptr;  // these until the first document
  EditorBridge* bridge_ = nullptr;
  EditorView* view_ = nullptr;
  EditorPage* page_ = nullptr;
  QTimer* state_pause_;
  QTimer* look_pause_;
  qint64 look_took_ = 0;    // milliseconds, the last time
  QElapsedTimer restored_;  // since the page was last put back
  QElapsedTimer last_key_;  // since a letter was last typed in the page
  int loads_ = 0;
  TypedText text_;
  std::function<QString()> read_;  // the text, where another view holds it
  bool told_modified_ = false;
  int noticed_ = 0;     // the number of the last edit that the page told of
  QVariantList caret_;  // as quill.goTo takes it
  document::BodySource cut_;
  QUrl base_;
  std::pair<QString, QUrl> kind_;  // of the page that waits for documents: its document type and its base
  QString picture_folder_;
  BackgroundTask* taking_;  // pictures
  QStringList coming_;      // those to be taken next
  document::PicturePlaces given_places_;
  document::PicturePlaces places_;  // these and the document's own folder
  bool alive_ = false;              // the page has its process
  bool given_up_ = false;           // it lost it each time
  bool loading_ = false;
  std::optional<Document> waiting_;  // to be loaded next
  std::optional<Error> unshown_;
  bool read_only_ = false;
  bool tab_leaves_ = false;
  double zoom_ = 1;
};

}  // namespace quillcast::desktop
