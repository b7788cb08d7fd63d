#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QBuffer>
#include <QClipboard>
#include <QDateTime>
#include <QDir>
#include <QDropEvent>
#include <QGuiApplication>
#include <QImage>
#include <QImageReader>
#include <QJsonArray>
#include <QJsonDocument>
#include <QMenu>
#include <QMimeData>
#include <QMouseEvent>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QWebEnginePage>
#include <QWebEngineView>
#include <csignal>
#include <optional>

#include "desktop/document/editor_document.h"
#include "desktop/document/html_editor.h"
#include "desktop/document/picture_file.h"
#include "desktop/widgets/qt_text.h"
#include "platform/file.h"
#include "support/scripted_prompts.h"
#include "support/temporary_folder.h"

namespace quillcast::desktop {
namespace {

constexpr const char* kLetter =
    "<!DOCTYPE HTML PUBLIC \"-//W3C//DTD HTML 4.01//EN\">\r\n<!-- <body> by hand -->\r\n<HTML><HEAD><TITLE>T</TITLE>"
    "<script>'<body>'</script></HEAD>\r\n<BODY bgColor=#ffeedd>\r\n<P><A HREF=\"$*MergeWebSite*$\">one</A>\r\n<P>two"
    "</BODY>\r\n</HTML>\r\n";

}  // namespace

static profile::Folders FoldersIn(const test::TemporaryFolder& folder) {
  profile::Folders folders;
  folders.data = folder.path() / "data";
  std::filesystem::create_directories(folders.data);
  return folders;
}

class EditorTest : public QObject {
  Q_OBJECT
  HtmlEditor* editor_ = nullptr;

  // The toolkit's own keyClicks stops the program on a letter outside ASCII.
  void Type(const QString& text) {
    for (const QChar c : text) {
      const auto key = c.unicode() < 128 ? QTest::asciiToKey(c.toLatin1()) : Qt::Key_unknown;
      for (const auto kind : {QTest::Press, QTest::Release})
        QTest::sendKeyEvent(kind, editor_->InputWidget(), key, QString(c), Qt::NoModifier);
    }
  }
  QString Body() const { return editor_->Evaluate("document.body.innerHTML").toString(); }
  void Load(const QString& inner, const QUrl& base = {}) {
    QVERIFY(editor_->SetHtml("<!DOCTYPE html><html><head></head><body>" + inner + "</body></html>", base));
    editor_->InputWidget()->setFocus();
  }
  void KeepPicturesIn(const QString& folder) {
    editor_->SetPictureFolder(folder);
    document::PicturePlaces places;
    places.AllowFolder(folder.toStdString());
    editor_->SetPicturePlaces(places);
  }
  void Drop(const QMimeData& data) {
    auto* view = editor_->findChild<QWebEngineView*>();
    QDragEnterEvent enter(QPoint(20, 20), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(view, &enter);
    QDragMoveEvent move(QPoint(20, 20), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(view, &move);
    QTest::qWait(100);  // the page hears of it by its own way
    QDropEvent drop(QPointF(20, 20), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(view, &drop);
  }
  void SelectSecondWord() {
    Load("<p>one two three</p>");
    editor_->Evaluate("(t=>getSelection().setBaseAndExtent(t,4,t,7))(document.body.firstChild.firstChild)");
  }

 private slots:
  void initTestCase() {
    editor_ = new HtmlEditor;
    editor_->resize(800, 600);
    QVERIFY(editor_->SetHtml(""));
    editor_->show();
    QVERIFY(QTest::qWaitForWindowActive(editor_));
  }
  void cleanupTestCase() { delete editor_; }

  void whatIsRoundTheBodyStays() {
    const QString source = kLetter;
    QVERIFY(editor_->SetHtml(source));
    QCOMPARE(*editor_->Text(), source);
    QVERIFY(!editor_->IsModified());
    editor_->InputWidget()->setFocus();
    editor_->Evaluate("getSelection().collapse(document.body.lastElementChild,0)");
    Type("X");
    QTRY_VERIFY(editor_->IsModified());
    const auto at = source.indexOf("<BODY");
    QVERIFY(editor_->Text()->startsWith(source.left(at) + "<body bgcolor=\"#ffeedd\">"));
    QVERIFY(editor_->Text()->contains("href=\"$*MergeWebSite*$\""));
    QVERIFY(editor_->Text()->contains("Xtwo") && editor_->Text()->endsWith("</BODY>\r\n</HTML>\r\n"));
  }

  void typingIsSeenAndSnapshotsFollow() {
    Load("");
    QSignalSpy modified(editor_, &HtmlEditor::ModifiedChanged);
    QSignalSpy snapshots(editor_, &HtmlEditor::Snapshot);
    Type("Dear friend\r");
    QTRY_COMPARE(Body(), QString("Dear friend<p><br></p>"));
    QVERIFY(editor_->Execute("bold"));
    Type(QString::fromUtf8("äß<&>"));
    QTRY_COMPARE(Body(), QString::fromUtf8("Dear friend<p><b>äß&lt;&amp;&gt;</b></p>"));
    QVERIFY(editor_->State().bold);
    QCOMPARE(modified.size(), 1);
    QTRY_VERIFY(!snapshots.isEmpty());
    QVERIFY(snapshots.last().first().toString().contains("&lt;&amp;&gt;"));
  }

  void eachCommandIsUndoneInOneStep_data() {
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char* name, EditorCommand command, const char* expected) {
      QTest::newRow(name) << static_cast<int>(command) << QString(expected);
    };
    row("bold", EditorCommand::kBold, "<p>one <b>two</b> three</p>");
    row("italic", EditorCommand::kItalic, "<p>one <i>two</i> three</p>");
    row("underline", EditorCommand::kUnderline, "<p>one <u>two</u> three</p>");
    row("delete", EditorCommand::kDelete, "<p>one&nbsp; three</p>");
    row("centre", EditorCommand::kAlignCentre, "<p style=\"text-align: center;\">one two three</p>");
    row("right", EditorCommand::kAlignRight, "<p style=\"text-align: right;\">one two three</p>");
    row("heading", EditorCommand::kHeading2, "<h2>one two three</h2>");
    row("quote", EditorCommand::kQuote, "<blockquote>one two three</blockquote>");
    row("preformatted", EditorCommand::kPreformatted, "<pre>one two three</pre>");
    row("indent", EditorCommand::kIndent,
        "<blockquote style=\"margin: 0 0 0 40px; border: none; padding: 0px;\"><p>one two three</p></blockquote>");
  }
  void eachCommandIsUndoneInOneStep() {
    QFETCH(int, code);
    QFETCH(QString, expected);
    SelectSecondWord();
    editor_->Run(static_cast<EditorCommand>(code));
    QCOMPARE(Body(), expected);
    editor_->Run(EditorCommand::kUndo);
    QCOMPARE(Body(), QString("<p>one two three</p>"));
    editor_->Run(EditorCommand::kRedo);
    QCOMPARE(Body(), expected);
  }

  void aParagraphChosenWithThreeClicksIsTypedOverAlone() {
    struct Case {
      const char *before, *typed, *after;
    };
    for (const Case& c : {Case{"<p>one more</p><p>two</p>", "X", "<p>X</p><p>two</p>"},
                          Case{"<p>one more</p><p>two</p>", "\b", "<p><br></p><p>two</p>"},
                          Case{"<p>one more</p><hr><p>two</p>", "X", "<p>X</p><hr><p>two</p>"},
                          Case{"<p>one more<br>two</p>", "X", "<p>X<br>two</p>"},
                          Case{"<p>one more</p><table><tbody><tr><td>two</td></tr></tbody></table>", "X",
                               "<p>X</p><table><tbody><tr><td>two</td></tr></tbody></table>"},
                          Case{"one <b>more</b><p>two</p>", "X", "X<br><p>two</p>"},
                          Case{"one more<br><div>two</div>", "X", "X<br><div>two</div>"},
                          Case{"<table><tbody><tr><td>one more<p>two</p></td></tr></tbody></table>", "X",
                               "<table><tbody><tr><td>X<p>two</p></td></tr></tbody></table>"}}) {
      Load(c.before);
      QWidget* page = editor_->InputWidget();
      const QVariantList at =
          editor_
              ->Evaluate(
                  "(r=>{r.selectNodeContents(document.createNodeIterator(document.body,NodeFilter.SHOW_TEXT).nextNode()"
                  ");"
                  "const box=r.getBoundingClientRect();return[box.x+5,box.y+5]})(document.createRange())")
              .toList();
      const QPointF word(at[0].toDouble(), at[1].toDouble());
      for (int click = 0; click < 3; ++click) {  // the toolkit's own clicks are too far apart
        for (const auto type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
          const auto held = type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton;
          QMouseEvent event(type, word, page->mapToGlobal(word), Qt::LeftButton, held, Qt::NoModifier);
          event.setTimestamp(QDateTime::currentMSecsSinceEpoch());
          QCoreApplication::sendEvent(page, &event);
        }
      }
      QTRY_VERIFY(editor_->Evaluate("String(getSelection())").toString().startsWith("one more"));
      Type(c.typed);
      QTRY_VERIFY(editor_->IsModified());
      QCOMPARE(Body(), QString(c.after));
      editor_->Run(EditorCommand::kUndo);
      QCOMPARE(Body(), QString(c.before));
    }
  }

  void listsAreSavedOutsideTheirParagraph() {
    SelectSecondWord();
    editor_->Run(EditorCommand::kNumberedList);
    QVERIFY2(editor_->Text()->contains("<body><ol><li>one two three</li></ol></body>"), qPrintable(*editor_->Text()));
    QVERIFY(editor_->State().numbers);
    editor_->Run(EditorCommand::kUndo);
    QVERIFY(editor_->Text()->contains("<body><p>one two three</p></body>"));
  }

  void tablesAreChangedInOneStep_data() {
    QTest::addColumn<QString>("before");  // rows by "/", cells by letters; before one, "2" and "W" for
                                          // two and three wide, "^" and "3" for two and three high
    QTest::addColumn<QString>("caret");
    QTest::addColumn<int>("edit");
    QTest::addColumn<QString>("after");  // "." for a new cell
    const auto row = [](const char* name, const char* before, const char* caret, TableEdit edit, const char* after) {
      QTest::newRow(name) << before << caret << static_cast<int>(edit) << after;
    };
    row("row above", "ab/cd", "c", TableEdit::kRowAbove, "ab/../cd");
    row("row above all", "ab/cd", "b", TableEdit::kRowAbove, "../ab/cd");
    row("row below", "ab/cd", "d", TableEdit::kRowBelow, "ab/cd/..");
    row("row through a high cell", "^ab/c", "c", TableEdit::kRowAbove, "3ab/./c");
    row("row below a high cell", "^ab/c/de", "a", TableEdit::kRowBelow, "^ab/c/../de");
    row("row below a cell higher than its table", "3ab/c", "a", TableEdit::kRowBelow, "3ab/c/.");
    row("row beside a wide cell", "2a/bc", "a", TableEdit::kRowBelow, "2a/../bc");
    row("column left", "ab/cd", "d", TableEdit::kColumnLeft, "a.b/c.d");
    row("column right", "ab/cd", "b", TableEdit::kColumnRight, "ab./cd.");
    row("column through a wide cell", "2a/bc", "c", TableEdit::kColumnLeft, "Wa/b.c");
    row("column beside a high cell", "^ab/c", "a", TableEdit::kColumnRight, "^a.b/.c");
    row("row away", "ab/cd", "a", TableEdit::kDeleteRow, "cd");
    row("row of a high cell away", "^ab/c", "b", TableEdit::kDeleteRow, "ac");
    row("row below a high cell away", "^ab/c", "c", TableEdit::kDeleteRow, "ab");
    row("column away", "ab/cd", "a", TableEdit::kDeleteColumn, "b/d");
    row("column of a wide cell away", "2a/bc", "b", TableEdit::kDeleteColumn, "a/c");
    row("last row away", "ab", "a", TableEdit::kDeleteRow, "");
    row("last column away", "a/b", "a", TableEdit::kDeleteColumn, "");
    row("table away", "ab", "b", TableEdit::kDeleteTable, "");
  }
  void tablesAreChangedInOneStep() {
    QFETCH(QString, before);
    QFETCH(QString, caret);
    QFETCH(int, edit);
    QFETCH(QString, after);
    const auto html = [](const QString& picture) {
      if (picture.isEmpty()) return QString();
      QString rows;
      for (const QString& line : picture.split('/')) {
        rows += "<tr>";
        QString spans;
        for (const QChar c : line) {
          if (c == '^') spans = " rowspan=\"2\"";
          if (c == '2') spans = " colspan=\"2\"";
          if (c == '3') spans = " rowspan=\"3\"";
          if (c == 'W') spans = " colspan=\"3\"";
          if (!c.isLower() && c != '.') continue;
          rows += QString("<td%1>%2</td>").arg(spans, c == '.' ? QString("&nbsp;") : QString(c));
          spans.clear();
        }
        rows += "</tr>";
      }
      return "<table><tbody>" + rows + "</tbody></table>";
    };
    Load("<p>x</p>" + html(before) + "<p>y</p>");
    QVERIFY(!editor_->EditTable(static_cast<TableEdit>(edit)));  // the caret is in the paragraph
    editor_->Evaluate(QString("getSelection().collapse([...document.querySelectorAll('td')]"
                              ".find(cell=>cell.textContent=='%1').firstChild,1)")
                          .arg(caret));
    QVERIFY(editor_->State().in_table);
    QVERIFY(editor_->EditTable(static_cast<TableEdit>(edit)));
    QCOMPARE(Body(), "<p>x</p>" + html(after) + "<p>y</p>");
    editor_->Run(EditorCommand::kUndo);
    QCOMPARE(Body(), "<p>x</p>" + html(before) + "<p>y</p>");
  }

  void theTabKeyGoesFromCellToCellAndMakesRows() {
    Load("<table><tbody><tr><td>a</td><td>&nbsp;</td></tr></tbody></table>");
    editor_->Evaluate("getSelection().collapse(document.querySelector('td').firstChild,1)");
    Type("\tb\tc");
    QTRY_COMPARE(Body(), QString("<table><tbody><tr><td>a</td><td>b</td></tr><tr><td>c</td><td>&nbsp;</td></tr></tbody>"
                                 "</table>"));
    QTest::keyClick(editor_->InputWidget(), Qt::Key_Backtab, Qt::ShiftModifier);
    Type("d");
    QTRY_VERIFY2(Body().contains("<td>a</td><td>d</td>"), qPrintable(Body()));
  }

  void whatIsPutInIsSeen() {
    const char* const top =
        "getSelection().collapse(document.body.firstChild,0),scrollTo(0,document.body.scrollHeight)";
    const char* const bottom = "getSelection().collapse(document.body.lastChild,0),scrollTo(0,0)";
    for (const char* place : {top, bottom}) {
      for (const char* html :
           {"<hr id=\"new\">", "<table id=\"new\"><tr><td>a</td></tr></table>", "<b id=\"new\">x</b>"}) {
        Load(QString("<p>line</p>").repeated(200));
        editor_->Evaluate(place);
        QVERIFY(editor_->InsertHtml(html));
        const QVariant seen = editor_->Evaluate(
            "(b=>b.top>=-1&&b.bottom<=innerHeight+1)(document.getElementById('new').getBoundingClientRect())");
        QVERIFY2(seen.toBool(), html);
      }
    }
  }

  void insertionsReplaceTheSelection() {
    SelectSecondWord();
    QVERIFY(editor_->InsertHtml("$*MergeField1*$"));
    QCOMPARE(Body(), QString("<p>one $*MergeField1*$ three</p>"));
    SelectSecondWord();
    QVERIFY(editor_->InsertLink("$*MergeWebSite*$", {}));
    QCOMPARE(Body(), QString("<p>one <a href=\"$*MergeWebSite*$\">two</a> three</p>"));
    QCOMPARE(editor_->State().link, QString("$*MergeWebSite*$"));
    editor_->Evaluate("getSelection().collapse(document.querySelector('a').firstChild,1)");
    editor_->Run(EditorCommand::kRemoveHyperlink);
    QCOMPARE(Body(), QString("<p>one two three</p>"));
    Load("<p>x</p>");
    QVERIFY(editor_->InsertLink("https://example.org/?a=1&b=\"2\"", "<here>"));
    QVERIFY2(Body().contains("<a href=\"https://example.org/?a=1&amp;b=&quot;2&quot;\">&lt;here&gt;</a>"),
             qPrintable(Body()));
    // With the caret in a link, that link changes: its address alone, or its text too.
    for (const auto& [text, after] : {std::pair{"", "<p>a <a href=\"https://new.example\"><b>b</b> c</a> d</p>"},
                                      std::pair{"n", "<p>a&nbsp;<a href=\"https://new.example\">n</a>&nbsp;d</p>"}}) {
      Load("<p>a <a href=\"https://old.example\"><b>b</b> c</a> d</p>");
      editor_->Evaluate("getSelection().collapse(document.querySelector('a').lastChild,1)");
      QCOMPARE(editor_->State().link_text, QString("b c"));
      QVERIFY(editor_->InsertLink("https://new.example", text));
      QCOMPARE(Body(), QString(after));
    }
    SelectSecondWord();
    QVERIFY(editor_->InsertLink("https://new.example", "2"));
    QCOMPARE(Body(), QString("<p>one&nbsp;<a href=\"https://new.example\">2</a>&nbsp;three</p>"));
  }

  void aLinkWithinTheMessageNamesItsHeading() {
    const QString before = "<h2>Our prices!</h2><h3>Our prices</h3><p id=\"top\">x</p><a name=\"old\">y</a><h2> </h2>";
    Load(before);
    QStringList places;
    for (const LinkPlace& place : editor_->LinkPlaces()) places << place.name + ": " + place.text;
    QCOMPARE(places.join(" | "), QString("top: x | old: y | our-prices: Our prices! | our-prices-2: Our prices"));
    QCOMPARE(Body(), before);
    editor_->Evaluate("getSelection().selectAllChildren(document.querySelector('p'))");
    QVERIFY(editor_->InsertLink("#our-prices-2", {}));
    QCOMPARE(editor_->Evaluate("document.getElementById('our-prices-2').tagName").toString(), QString("H3"));
    QVERIFY2(Body().contains("<p id=\"top\"><a href=\"#our-prices-2\">x</a></p>"), qPrintable(Body()));
    editor_->Run(EditorCommand::kUndo);
    QVERIFY2(Body().contains("<p id=\"top\">x</p>"), qPrintable(Body()));
  }

  // A handle is dragged from the middle of a side or a corner of the picture by so many pixels.
  void aPictureIsSizedByItsHandles() {
    struct Case {
      QPoint side;  // -1, 0, 1 across and down
      QPoint moved;
      const char* after;
    };
    for (const auto& [side, moved, after] :
         {Case{{1, 1}, {50, 10}, "150 75 auto"}, Case{{-1, -1}, {40, 20}, "60 30 auto"},
          Case{{1, 0}, {20, 30}, "120 50 "}, Case{{0, 1}, {20, 30}, "100 80 "}, Case{{0, -1}, {0, 200}, "100 8 "},
          Case{{1, 1}, {0, 0}, "100 50 auto"}}) {
      QTemporaryDir folder;
      QImage image(200, 100, QImage::Format_RGB32);
      QVERIFY(image.save(folder.filePath("a.png")));
      const QString before =
          "<p style=\"position: absolute; left: 100px; top: 100px; margin: 0px;\"><a href=\"y\"><img src=\"a.png\" "
          "class=\"own\" alt=\"A\" width=\"100\" height=\"50\" style=\"max-width: 100%; height: auto;\"></a>z</p>";
      Load(before, QUrl::fromLocalFile(folder.path() + '/'));
      QTRY_COMPARE(editor_->Evaluate("document.images[0].naturalWidth").toInt(), 200);
      QWidget* page = editor_->InputWidget();
      const auto html = *editor_->Text();
      QTest::mouseClick(page, Qt::LeftButton, {}, QPoint(150, 125));
      QTRY_COMPARE(editor_->State().picture.choice.alternative, std::string("A"));
      QCOMPARE(*editor_->Text(), html);  // handles are no part of it
      QVERIFY(!editor_->IsModified());
      const QPoint handle(150 + side.x() * 50, 125 + side.y() * 25);
      QTest::mousePress(page, Qt::LeftButton, {}, handle);
      QTest::mouseMove(page, handle + moved / 2);
      QTest::mouseMove(page, handle + moved);
      QTest::mouseRelease(page, Qt::LeftButton, {}, handle + moved);
      const QString look =
          "(i=>[i.getAttribute('width'),i.getAttribute('height'),i.style.height].join(' '))(document.images[0])";
      QTRY_COMPARE(editor_->Evaluate(look).toString(), after);
      const bool is_changed = moved != QPoint();
      QCOMPARE(editor_->IsModified(), is_changed);
      QVERIFY2(Body().startsWith(before.left(before.indexOf(" width="))) && Body().endsWith("></a>z</p>"),
               qPrintable(Body()));
      for (const char* ours : {"quill", "frame", "<b>"})
        QVERIFY2(!editor_->Text()->contains(ours), qPrintable(*editor_->Text()));
      if (!is_changed) return;
      editor_->Run(EditorCommand::kUndo);
      QCOMPARE(Body(), before);
    }
  }

  void aPictureIsChangedByNumbersAndOpenedByTwoClicks() {
    const QString before =
        "<p style=\"position: absolute; left: 100px; top: 100px; margin: 0px;\"><img "
        "src=\"data:image/gif;base64,R0lGODlhAQABAAAAACw=\" ";
    Load(before + "alt=\"a\" id=\"i\" width=\"100\" height=\"50\" hspace=\"3\">y</p>");
    // Who hears of it asks the page, which has to answer by then.
    std::optional<document::PictureChoice> opened;
    const auto watch =
        connect(editor_, &HtmlEditor::PictureOpened, this, [&] { opened = editor_->State().picture.choice; });
    editor_->Evaluate("document.images[0].dispatchEvent(new MouseEvent('dblclick',{bubbles:true}))");
    QTRY_VERIFY_WITH_TIMEOUT(opened, 10000);
    disconnect(watch);
    const auto picture = *opened;
    QCOMPARE(
        ToQt(picture.alternative + ' ' + picture.width + ' ' + picture.height + ' ' + picture.border + picture.align),
        QString("a 100 50 0"));
    QVERIFY(editor_->ChangePicture(
        "<img src=\"data:image/gif;base64,R0lGODlhAQABAAAAACw=\" alt=\"b\" width=\"10\" height=\"20\" border=\"0\""
        " style=\"max-width: 100%;\">"));
    QCOMPARE(Body(), before +
                         "alt=\"b\" id=\"i\" width=\"10\" height=\"20\" hspace=\"3\" border=\"0\""
                         " style=\"max-width: 100%;\">y</p>");
    QCOMPARE(editor_->State().picture.choice.alternative, std::string("b"));  // and selected still
    editor_->Run(EditorCommand::kUndo);
    QVERIFY2(Body().contains("alt=\"a\" id=\"i\" width=\"100\""), qPrintable(Body()));
    editor_->Evaluate("getSelection().collapse(document.body,0)");
    QVERIFY(!editor_->ChangePicture("<img src=\"data:image/gif;base64,R0lGODlhAQABAAAAACw=\">"));
    QCOMPARE(editor_->State().picture.address, QString());
  }

  void mergeTagsAreMarkedBesideTheDocument() {
    const QString source = "<p>Dear $*MergeTitle*$ $*MergeLastName*$, $*MergeNickName*$</p>";
    QVERIFY(editor_->SetHtml(source));
    QCOMPARE(editor_->Evaluate("quill.marks().join()").toString(), QString("known,known,unknown"));
    QCOMPARE(*editor_->Text(), source);
    QVERIFY(!editor_->IsModified());
    QVERIFY(editor_->InsertHtml("$*MergeCity*$"));
    QTRY_COMPARE(editor_->Evaluate("quill.marks().length").toInt(), 4);
    QVERIFY2(!editor_->Text()->contains("quill"), qPrintable(*editor_->Text()));
    editor_->Run(EditorCommand::kSelectAll);
    editor_->Run(EditorCommand::kDelete);
    QTRY_COMPARE(editor_->Evaluate("quill.marks().length").toInt(), 0);
    QVERIFY(editor_->InsertHtml("<p>x</p>"));
    QVERIFY2(!editor_->Text()->contains("quill"), qPrintable(*editor_->Text()));
  }

  void aPageToLookAtMarksWhatIsNoTagAlone() {
    HtmlEditor preview;
    preview.SetReadOnly(true);
    QVERIFY(preview.SetHtml("<p>Dear $*MergeLastName*$ $*MergeNickName*$</p>"));
    QCOMPARE(preview.Evaluate("quill.marks().join()").toString(), QString("known,unknown"));
    // It stays for the next document; nothing of the one before does.
    const QString picture = "<img src='data:image/gif;base64,R0lGODlhAQABAIAAAAAAAP///ywAAAAAAQABAAACAUwAOw=='>";
    QVERIFY(
        preview.SetHtml("<head><style>p{color:red;height:5000px}</style><base href='file:///x/'></head>"
                        "<body dir=rtl><p>one"));
    preview.Evaluate("scrollTo(0,3000)");
    QVERIFY(preview.SetHtml("<head><meta http-equiv=content-security-policy content=\"img-src 'none'\"></head><p>two"));
    QCOMPARE(preview
                 .Evaluate("[scrollY,document.body.dir,getComputedStyle(document.querySelector('p')).color,"
                           "document.baseURI,document.body.innerText.trim()].join()")
                 .toString(),
             QString("0,,rgb(0, 0, 0),file:///,two"));
    QVERIFY(preview.SetHtml(picture));
    QTRY_VERIFY(preview.Evaluate("document.images[0].naturalWidth").toInt() > 0);
    preview.SetReadOnly(false);
    QVERIFY(preview.SetHtml("<p>three</p>"));
    QVERIFY(preview.InsertHtml("x"));
    QTRY_VERIFY(preview.IsModified());
    preview.Run(EditorCommand::kUndo);
    QCOMPARE(preview.PlainText().trimmed(), QString("three"));
  }

  void scriptsAndTheNetworkStayOff() {
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    QSignalSpy hits(&server, &QTcpServer::newConnection);
    Load(QString("<p>x</p><img src='%1a.png' onerror='document.title=1'><script>document.title=2</script>"
                 "<iframe src='%1b'></iframe><link rel=stylesheet href='%1c.css'><object data='%1f'></object>"
                 "<meta http-equiv=refresh content='0;url=%1d'><a id=l href='%1e'>go</a><base href='%1g/'>"
                 "<img src='rel.png'><iframe srcdoc='<script>top.document.title=3</script>'></iframe>")
             .arg(QString("http://127.0.0.1:%1/").arg(server.serverPort())));
    editor_->Evaluate("document.getElementById('l').click()");
    QTest::qWait(300);
    QCOMPARE(hits.size(), 0);
    QVERIFY(Body().startsWith("<p>x</p>"));
    QCOMPARE(editor_->Evaluate("document.title").toString(), QString());
  }

  void localPicturesShow() {
    QTemporaryDir folder;
    QImage image(20, 10, QImage::Format_RGB32);
    image.fill(Qt::red);
    const QString file = folder.filePath("a & b.png");
    QVERIFY(image.save(file));
    Load("<img src='a%20%26%20b.png'>", QUrl::fromLocalFile(folder.path() + '/'));
    QTRY_COMPARE(editor_->Evaluate("document.images[0].naturalWidth").toInt(), 20);
    KeepPicturesIn(folder.filePath("Pictures"));
    Load("");
    const QString named = folder.filePath("a red_field.png");
    QVERIFY(image.save(named));
    editor_->InsertPictures({file});
    editor_->InsertPictures({named});  // while the first is looked at
    QTRY_COMPARE(editor_->Evaluate("Array.from(document.images,i=>i.naturalWidth+i.alt).join()").toString(),
                 QString("20,20a red field"));
    QVERIFY(QFile::exists(folder.filePath("Pictures/a & b.png")));
    QSignalSpy trouble(editor_, &HtmlEditor::Trouble);
    QCOMPARE(::mkfifo(folder.filePath("pipe.png").toUtf8().constData(), 0600), 0);
    // The next document's come when the former's have been looked at, however long that takes.
    for (qsizetype many = 4000; many == 4000 || !trouble.isEmpty(); many *= 2) {
      trouble.clear();
      editor_->InsertPictures(QStringList(many, folder.filePath("missing.png")) + QStringList{file});
      Load("");
    }
    editor_->InsertPictures({named});
    QTRY_COMPARE(editor_->Evaluate("Array.from(document.images,i=>i.alt).join()").toString(), QString("a red field"));
    trouble.clear();
    editor_->InsertPictures({file});
    Load("");
    editor_->InsertPictures({folder.filePath("missing.png"), folder.filePath("pipe.png"), folder.path()});
    QCOMPARE(trouble.size(), 0);  // nothing is looked at on the window's thread
    QTRY_COMPARE(trouble.size(), 1);
    for (const char* name : {"missing.png", "pipe.png"}) QVERIFY(trouble.first().first().toString().contains(name));
    QCOMPARE(Body(), QString());  // what was on its way to another document is not for this one
    // No wider than the letter at first; a photograph is asked about before.
    QSignalSpy offered(editor_, &HtmlEditor::PicturesOffered);
    Load("<p>x</p>");
    QVERIFY(image.scaled(1200, 600).save(folder.filePath("wide.png")));
    QVERIFY(image.scaled(1201, 600).save(folder.filePath("photo.png")));
    editor_->InsertPictures({folder.filePath("wide.png"), folder.filePath("photo.png")});
    QTRY_VERIFY2(Body().contains("width=\"600\" height=\"300\""), qPrintable(Body()));
    QCOMPARE(offered.takeFirst().first().toStringList(), QStringList{folder.filePath("photo.png")});
    Load("<table width=\"140\" cellpadding=\"20\" cellspacing=\"0\" border=\"0\"><tr><td>x</td></tr></table>");
    editor_->Evaluate("getSelection().selectAllChildren(document.querySelector('td'))");
    editor_->InsertPictures({folder.filePath("wide.png")});
    QTRY_VERIFY2(Body().contains("width=\"100\" height=\"50\""), qPrintable(Body()));
  }

  void picturesAreLookedAtBeforeTheyAreTaken_data() {
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("result");  // what is said; or its size, what a smaller one has, and that of the copy
    QImage image(40, 20, QImage::Format_RGB32);
    image.fill(Qt::white);
    for (int x = 0; x < 20; ++x)
      for (int y = 0; y < 10; ++y) image.setPixel(x, y, qRgb(255, 0, 0));  // the corner at the upper left
    const auto file = [](const QImage& picture, const char* kind) {
      QByteArray bytes;
      QBuffer buffer(&bytes);
      picture.save(&buffer, kind, 95);
      return bytes;
    };
    // A camera's note behind the first marker: TIFF, little-endian, one entry, tag 0x0112, a short.
    const auto held = [&](char orientation) {
      QByteArray note(
          "\xFF\xE1\0\x22"
          "Exif\0\0II*\0\x08\0\0\0\x01\0\x12\x01\x03\0\x01\0\0\0o\0\0\0\0\0\0\0",
          36);
      return file(image, "jpeg").insert(2, note.replace('o', orientation));
    };
    QByteArray vast("BM\x36\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0\x20\x4E\0\0\x10\x27\0\0\x01\0\x18\0",
                    30);  // 20,000 by 10,000
    const QByteArray photo = file(image.scaled(2400, 1200), "jpeg");
    const QByteArray clear = file(image.scaled(2400, 1200).convertToFormat(QImage::Format_ARGB32), "png");
    QByteArray broken = file(image, "png");
    broken[broken.indexOf("IDAT") + 8] = '!';
    const auto row = [](const char* name, const QByteArray& content, const char* result) {
      QTest::newRow(name) << content << QString(result);
    };
    row("small", file(image, "png"), "40x20, none, 40x20 upper left");
    row("upright", held(1), "40x20, none, 40x20 upper left");
    row("upside down", held(3), "40x20, none, 40x20 lower right");
    row("on its side", held(6), "20x40, none, 20x40 upper right");
    row("on its other side", held(8), "20x40, none, 20x40 lower left");
    row("mirrored", held(2), "40x20, none, 40x20 upper right");
    row("a photograph", photo, "2400x1200, 1200x600 jpeg, 2400x1200 upper left");
    row("one with clear places", clear, "2400x1200, 1200x600 png, 2400x1200 upper left");
    row("of 42 megapixels", file(image.scaled(7000, 6000), "jpeg"), "7000x6000, 1200x1029 jpeg, 7000x6000 upper left");
    row("cut short", photo.left(photo.size() / 2), "x is damaged, or not whole.");
    row("with broken content", broken, "x is damaged, or not whole.");
    row("vast", vast.append(QByteArray(24 + 1000, '\0')), "x is too large a picture.");
    row("another kind", "P6 1 1 255\nabc", "x is no picture that can be shown in a message.");
    row("a drawing", "<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'/>",
        "x is no picture that can be shown in a message.");
    row("none", "<html>", "x is no picture that can be shown in a message.");
    row("empty", "", "x is no picture that can be shown in a message.");
  }
  void picturesAreLookedAtBeforeTheyAreTaken() {
    QFETCH(QByteArray, content);
    QFETCH(QString, result);
    test::TemporaryFolder folder;
    const auto file = folder.Write("x", content.toStdString());
    const auto look = LookAtPicture(file);
    if (!look) {
      QCOMPARE(QString(ToQt(look.error().what.InEnglish())).remove(PathToQt(file.parent_path()) + '/'), result);
      return;
    }
    const auto size = [](int width, int height) { return QString("%1x%2").arg(width).arg(height); };
    const auto kept = KeepPicture(look->head, folder.path() / "Pictures");
    QVERIFY(kept);
    QFile copy(PathToQt(*kept));
    QVERIFY(copy.open(QIODevice::ReadOnly));
    QImageReader reader(&copy);
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(false);
    const QImage picture = reader.read();
    QString corner = "nowhere";
    for (const bool is_lower : {false, true}) {
      for (const bool is_right : {false, true}) {
        const QColor there =
            picture.pixelColor(is_right ? picture.width() - 3 : 2, is_lower ? picture.height() - 3 : 2);
        if (there.green() < 128) corner = QString(is_lower ? "lower " : "upper ") + (is_right ? "right" : "left");
      }
    }
    const QImage smaller = QImage::fromData(look->smaller);
    const QString offer = smaller.isNull() ? "none"
                                           : size(smaller.width(), smaller.height()) +
                                                 (look->smaller.startsWith("\x89PNG") ? " png" : " jpeg");
    QCOMPARE(size(look->head.size.width, look->head.size.height) + ", " + offer + ", " +
                 size(picture.width(), picture.height()) + ' ' + corner,
             result);
  }

  // Its reader would open the files that it names.
  void noReaderSeesADrawing() {
    test::TemporaryFolder folder;
    QImage image(20, 10, QImage::Format_RGB32);
    QVERIFY(image.save(PathToQt(folder / "other.png")));
    const std::string drawing =
        "<svg xmlns='http://www.w3.org/2000/svg' xmlns:xlink='http://www.w3.org/1999/xlink' "
        "width='9' height='9'><image width='9' height='9' xlink:href='" +
        (folder / "other.png").string() + "'/></svg>";
    const int watch = ::inotify_init1(IN_NONBLOCK);
    QVERIFY(::inotify_add_watch(watch, (folder / "other.png").c_str(), IN_OPEN) >= 0);
    for (const char* name : {"drawing.svg", "drawing.png"}) {
      QVERIFY(!LookAtPicture(folder.Write(name, drawing)));
      char event[256];
      QCOMPARE(::read(watch, event, sizeof event), ssize_t{-1});
    }
    ::close(watch);
  }

  void onlyAllowedPicturesShow() {
    QTemporaryDir folder;
    QVERIFY(QDir(folder.path()).mkpath("page") && QDir(folder.path()).mkpath("home"));
    QImage image(20, 10, QImage::Format_RGB32);
    QVERIFY(image.save(folder.filePath("page/own.png")) && image.save(folder.filePath("home/other.png")));
    QVERIFY(QFile::link(folder.filePath("home/other.png"), folder.filePath("page/link.png")));
    QCOMPARE(::mkfifo(folder.filePath("page/pipe.png").toUtf8().constData(), 0600), 0);
    editor_->SetPicturePlaces({});
    const auto widths = [this] {
      return editor_->Evaluate("Array.from(document.images,i=>i.complete?i.naturalWidth:'?').join()").toString();
    };
    Load("<img src='../home/other.png'><img src='link.png'><img src='pipe.png'><img src='own.png'>",
         QUrl::fromLocalFile(folder.filePath("page/")));
    QTRY_COMPARE(widths(), QString("0,0,0,20"));
    document::PicturePlaces places;
    places.AllowFile(folder.filePath("home/other.png").toStdString());
    editor_->SetPicturePlaces(places);
    editor_->ReloadPictures();
    QTRY_COMPARE(widths(), QString("20,20,0,20"));
    QVERIFY(!editor_->IsModified());
  }

  void pastedPagesAreCleaned() {
    for (const auto& [pasted, expected] : std::initializer_list<std::pair<QString, QString>>{
             {"<html xmlns:o=x><head><style>p{}</style></head><body><!--[if gte mso 9]><xml/><![endif]-->"
              "<p class=MsoNormal style='margin:0'><b>Hi</b> <o:p></o:p><span lang=EN "
              "style='font-weight:bold'>you</span></p></body></html>",
              "<p><b>Hi</b> <b>you</b></p>"},
             {"<img src=x.png onerror=alert(1)><a href='javascript:alert(2)'>a</a><script>1</script>"
              "<iframe src='https://example.org'></iframe><form><input></form>",
              "<a>a</a>"},
             {"<img src='https://example.org/t.gif' alt='beach'> <img src='file:///home/a.png'>"
              "<img src='data:image/gif;base64,R0lGODlh'><img src='x' srcset='file:///a.png'>"
              "<p style='background:url(file:///a.png)' background='a.png'>x</p><a href='file:///home/a.png'>f</a>",
              "beach <img src=\"data:image/gif;base64,R0lGODlh\"><p>x</p><a>f</a>"},
             {"<a href='https://example.org'>a</a><ul><li>1</li></ul><font color='#ff0000'>r</font>",
              "<a href=\"https://example.org\">a</a><ul><li>1</li></ul><font color=\"#ff0000\">r</font>"}})
      QCOMPARE(editor_->Evaluate("quill.clean(`" + pasted + "`)").toString(), expected);
  }

  void pasteGoesThroughTheCleaning() {
    Load("");
    auto* data = new QMimeData;
    data->setHtml("<p style='color:red'>from <span>elsewhere</span></p>");
    QGuiApplication::clipboard()->setMimeData(data);
    editor_->Run(EditorCommand::kPaste);
    QTRY_VERIFY(Body().contains("from elsewhere"));
    QVERIFY2(!Body().contains("color"), qPrintable(Body()));
    Load("<p><b>x</b></p>");
    data = new QMimeData;
    data->setHtml("<i>slanted</i>");
    data->setText("slanted");
    QGuiApplication::clipboard()->setMimeData(data);
    editor_->PastePlain();
    QTRY_VERIFY(Body().contains("slanted"));
    QVERIFY2(!Body().contains("<i>"), qPrintable(Body()));
  }

  void whatIsDroppedIsCleanedToo() {
    QTemporaryDir folder;
    QImage image(20, 10, QImage::Format_RGB32);
    QVERIFY(image.save(folder.filePath("own.png")));
    Load("<p>x</p>", QUrl::fromLocalFile(folder.path() + '/'));
    const QString own = QUrl::fromLocalFile(folder.filePath("own.png")).toString();
    QSignalSpy trouble(editor_, &HtmlEditor::Trouble);
    QMimeData data;
    data.setHtml("<form><b style='color:red'>y</b></form><img src='file:///etc/other.png'><img src='" + own +
                 "'><img src='http://127.0.0.1:1/t.gif'>");
    Drop(data);
    QTRY_VERIFY(Body().contains("<b>y</b>"));
    QCOMPARE(editor_->Evaluate("Array.from(document.images,i=>i.src).join()").toString(), own);
    QVERIFY2(!Body().contains("color") && !Body().contains("form"), qPrintable(Body()));
    QTRY_COMPARE(trouble.size(), 1);
  }

  void aDroppedDocumentIsToBeOpened() {
    QSignalSpy dropped(editor_, &HtmlEditor::DocumentDropped);
    Load("<p>x</p>");
    QMimeData data;
    data.setUrls({QUrl("file:///nowhere/a.png"), QUrl("file:///nowhere/Letter.HTM")});
    Drop(data);
    QTRY_COMPARE(dropped.size(), 1);
    QCOMPARE(dropped.first().first().toString(), QString("/nowhere/Letter.HTM"));
    QCOMPARE(Body(), QString("<p>x</p>"));
  }

  void pastedPicturesAreKept() {
    QTemporaryDir folder;
    KeepPicturesIn(folder.filePath("Pictures"));
    Load("<table width=\"140\" cellpadding=\"20\" cellspacing=\"0\" border=\"0\"><tr><td>x</td></tr></table>");
    editor_->Evaluate("getSelection().selectAllChildren(document.querySelector('td'))");
    QImage image(300, 150, QImage::Format_RGB32);
    image.fill(Qt::blue);
    QGuiApplication::clipboard()->setImage(image);
    editor_->Run(EditorCommand::kPaste);
    QTRY_COMPARE_WITH_TIMEOUT(editor_->Evaluate("document.images.length").toInt(), 1, 15000);
    QTRY_COMPARE(editor_->Evaluate("document.images[0].naturalWidth").toInt(), 300);
    // The page answered what room there is: it waited for nobody.
    QCOMPARE(editor_->Evaluate("document.images[0].getAttribute('width')").toString(), QString("100"));
    QVERIFY(editor_->Text()->contains("src=\"file:///"));
  }

  void contextMenuHasItsSixEntries() {
    Load("<p>one <a href='x.html'>two</a></p>");
    QSignalSpy states(editor_, &HtmlEditor::StateChanged);
    QTest::mouseClick(editor_->InputWidget(), Qt::RightButton, {}, QPoint(300, 20));
    QMenu* menu = nullptr;
    QTRY_VERIFY((menu = editor_->findChild<QMenu*>("EditorContextMenu")) && menu->isVisible());
    QStringList texts;
    for (const QAction* action : menu->actions()) texts << action->text();
    QCOMPARE(texts.join(","), QString("Undo,Cut,Copy,Paste,Delete,Select All"));
    menu->actions().last()->trigger();
    menu->close();
    QTRY_VERIFY(!states.isEmpty() && states.last().first().value<EditorState>().selected == "one two");
  }

  void findingCounts() {
    Load("<p>alpha beta alpha</p>");
    int found = -1;
    editor_->Find("alpha", false, [&](int places) { found = places; });
    QTRY_COMPARE(found, 2);
    editor_->Find("gamma", true, [&](int places) { found = places; });
    QTRY_COMPARE(found, 0);
  }

  void aKilledPageLosesNothing() {
    Load("<p>before</p>");
    Type("kept ");
    QTRY_VERIFY(editor_->Text()->contains("kept before"));
    QSignalSpy snapshots(editor_, &HtmlEditor::Snapshot);
    QTRY_VERIFY(!snapshots.isEmpty());
    QSignalSpy restored(editor_, &HtmlEditor::Restored);
    const auto renderer = editor_->findChild<QWebEnginePage*>()->renderProcessPid();
    QCOMPARE(::kill(static_cast<pid_t>(renderer), SIGKILL), 0);
    QTRY_VERIFY(!restored.isEmpty());
    QVERIFY(editor_->IsModified());
    QVERIFY(editor_->Text()->contains("kept before"));
    QTRY_VERIFY(editor_->isAncestorOf(QApplication::focusWidget()));
    QTest::sendKeyEvent(QTest::Click, QApplication::focusWidget(), Qt::Key_X, "x", Qt::NoModifier);
    QTRY_VERIFY(editor_->Text()->contains("kept xbefore"));
    QTRY_VERIFY(snapshots.last().first().toString().contains("xbefore"));
    // A document that ends the page each time is not loaded again and again, and its text can still be saved.
    QSignalSpy trouble(editor_, &HtmlEditor::Trouble);
    QCOMPARE(::kill(static_cast<pid_t>(editor_->findChild<QWebEnginePage*>()->renderProcessPid()), SIGKILL), 0);
    QTRY_VERIFY(!trouble.isEmpty());
    QVERIFY(editor_->Text()->contains("kept xbefore"));
    QVERIFY(editor_->IsModified());
    QTest::qWait(500);
    QCOMPARE(trouble.size(), 1);
    Load("<p>next</p>");
    QCOMPARE(editor_->PlainText(), QString("next"));
  }

  void aPageThatEndsInALoadIsTold() {
    Load("<p>first</p>");
    const auto page = static_cast<pid_t>(editor_->findChild<QWebEnginePage*>()->renderProcessPid());
    QTimer::singleShot(5, [page] { ::kill(page, SIGKILL); });
    QElapsedTimer clock;
    clock.start();
    const QString large = "<html><body>" + QString("<p>word</p>").repeated(300000) + "</body></html>";
    const bool is_loaded = editor_->SetHtml(large);
    QVERIFY2(clock.elapsed() < 30000, "it waited for a page that is gone");
    QVERIFY(!is_loaded);
    QVERIFY(*editor_->Text() == large);  // nothing of it is lost
    Load("<p>next</p>");
    QCOMPARE(editor_->PlainText(), QString("next"));
  }

  void aPageThatCannotBePutBackIsGivenUp() {
    Load("<p>before</p>");
    QVERIFY(editor_->InsertHtml("kept "));
    QTRY_VERIFY(editor_->IsModified());
    QSignalSpy snapshots(editor_, &HtmlEditor::Snapshot);
    QTRY_VERIFY(!snapshots.isEmpty());
    QSignalSpy trouble(editor_, &HtmlEditor::Trouble);
    QTimer killer;
    connect(&killer, &QTimer::timeout, this, [this] {
      const auto page = editor_->findChild<QWebEnginePage*>()->renderProcessPid();
      if (page > 0) ::kill(static_cast<pid_t>(page), SIGKILL);
    });
    killer.start(5);
    QTest::qWait(1000);
    killer.stop();
    QCOMPARE(trouble.size(), 1);
    QVERIFY(editor_->IsModified());
    QVERIFY(editor_->Text()->contains("kept before"));
    Load("<p>next</p>");
    QCOMPARE(editor_->PlainText(), QString("next"));
  }

  void whatStandsBehindTheBodyIsThereOnce() {
    QString html = "<html><body><p>x</p></body></html>\n<p>Footer</p>\n";
    for (int i = 0; i < 3; ++i) {
      QVERIFY(editor_->SetHtml(html));
      QVERIFY(editor_->InsertHtml("y"));
      html = *editor_->Text();
      QCOMPARE(html.count("Footer"), 1);
    }
    html = "<html><body><p>x</p>\n</body>\n</html>\n";
    for (int i = 0; i < 3; ++i) {
      QVERIFY(editor_->SetHtml(html));
      QVERIFY(editor_->InsertHtml("y"));
      html = *editor_->Text();
    }
    QCOMPARE(html, QString("<html><body><p>yyyx</p>\n</body>\n</html>\n"));
  }

  void largeDocumentsAndPdf() {
    QTemporaryDir folder;
    const QString inner = ("<p>" + QString("word ").repeated(40) + "</p>\n").repeated(25000);  // 5 MB
    Load(inner);
    QVERIFY(editor_->Evaluate("document.body.innerHTML", 60000).toString() == inner);
    QVERIFY(editor_->SetHtml("<!DOCTYPE html><title>T</title><p>no body tag"));
    QSignalSpy snapshots(editor_, &HtmlEditor::Snapshot);
    QVERIFY(editor_->InsertHtml("x"));
    QTRY_VERIFY(!snapshots.isEmpty());
    QCOMPARE(snapshots.last().first().toString(), *editor_->Text());
    QCOMPARE(*editor_->Text(),
             QString("<!DOCTYPE html><html><head><title>T</title></head><body><p>xno body tag</p></body></html>"));
    QVERIFY(editor_->PrintToPdf(folder.filePath("a.pdf")));
    QVERIFY(QFileInfo(folder.filePath("a.pdf")).size() > 1000);
  }

  // Compared by the engine's own HTML parser: the body that is saved has the tree of the source but for the edit.
  void anEditChangesNothingElse() {
    const QString source =
        "<html><head><title>T</title></head><BODY TEXT=black>\r\n<!-- c --><!--[if mso]><p>o</p><![endif]--><CENTER>"
        "<P id=edit>here<P CLASS=x title='a \"b\" &amp; c'>&copy;&nbsp;&lt;b&gt; &unknown; &#8364;<TABLE "
        "border=1><TR><TD>1"
        "<TD nowrap>2</TABLE><ul><li>a<li>b<ol type=a><li>c</ol></ul><pre>\n\n  x  </pre><font size=+1 face=\"A, B\">f"
        "</font><img src=a.png alt><br/><hr noshade><a href='$*MergeWebSite*$?a=1&b=2'>l</a><textarea>\nt</textarea>"
        "<svg viewBox='0 0 1 1'><path d='M0 "
        "0'/></svg><o:p>&nbsp;</o:p><b><i>mis</b>nested</i></CENTER>tail</BODY></html>";
    QVERIFY(editor_->SetHtml(source));
    editor_->Evaluate("getSelection().collapse(document.getElementById('edit').firstChild, 4)");
    QVERIFY(editor_->InsertHtml("EDIT"));
    const QString saved = *editor_->Text();
    QVERIFY(saved.contains("hereEDIT"));
    const auto literal = [](const QString& text) {
      return QString::fromUtf8(QJsonDocument(QJsonArray{text}).toJson(QJsonDocument::Compact)) + "[0]";
    };
    const QString same = QString(
                             "(p=>p(%1).isEqualNode(p(%2.replace('EDIT',''))))"
                             "(h=>new DOMParser().parseFromString(h,'text/html').documentElement)")
                             .arg(literal(source), literal(saved));
    QVERIFY2(editor_->Evaluate(same).toBool(), qPrintable(saved));
  }

  void droppedPicturesAreInserted() {
    QTemporaryDir folder;
    QImage image(4, 4, QImage::Format_RGB32);
    image.fill(Qt::green);
    QVERIFY(image.save(folder.filePath("a.png")));
    Load("<p>x</p>");
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(folder.filePath("a.png"))});
    Drop(data);
    QTRY_COMPARE(editor_->Evaluate("document.images.length").toInt(), 1);
  }

  void theLastOfManyDocumentsCounts() {
    for (int i = 0; i < 5; ++i) {
      QTimer::singleShot(0, editor_, [this, i] { editor_->SetHtml(QString("<p>number %1</p>").arg(i)); });
    }
    QTRY_COMPARE(editor_->PlainText().trimmed(), QString("number 4"));
    QCOMPARE(*editor_->Text(), QString("<p>number 4</p>"));
  }

  void documentsComeBackByteForByte() {
    test::TemporaryFolder folder;
    EditorDocument document(*editor_, FoldersIn(folder));
    test::ScriptedPrompts prompts;
    const std::string western = "<html><body>caf\xE9 \x81</body></html>";  // not UTF-8, and a byte without a meaning
    for (const std::string& bytes : {std::string(kLetter), western, std::string("<meta charset=koi8-r>\xF0\xD2\x81"),
                                     std::string("\xEF\xBB\xBF<p>mark"), std::string("\xFF\xFE<\0p\0>\0x\0", 10)}) {
      QVERIFY(platform::ReplaceFile(folder.path() / "in.html", bytes));
      QVERIFY(document.Open(folder.path() / "in.html"));
      QVERIFY(document.SaveTo(folder.path() / "out.html"));
      QCOMPARE(*platform::ReadFile(folder.path() / "out.html", 10000), bytes);
    }
    QVERIFY(platform::ReplaceFile(folder.path() / "in.html", western));
    QVERIFY(document.Open(folder.path() / "in.html"));
    QVERIFY(editor_->InsertHtml(QString::fromUtf8("Ω")));
    QVERIFY(document.HasUnsavedChanges());
    QVERIFY(document.SaveTo(folder.path() / "out.html"));
    QVERIFY(!document.HasUnsavedChanges());
    QVERIFY(platform::ReadFile(folder.path() / "out.html", 10000)
                ->starts_with("<html><meta charset=\"windows-1252\"><body>&#937;caf\xE9 "));
    QVERIFY(!document.SaveTo(folder.path() / "missing" / "out.html"));
  }

  void whatWasNotSavedIsRecovered() {
    test::TemporaryFolder folder;
    {
      EditorDocument document(*editor_, FoldersIn(folder));
      QVERIFY(document.Open(folder.Write("letters/letter.html", "<p>was</p><img src=\"a.png\">")));
      QVERIFY(document.KeepAside());
      QVERIFY(!document.drafts().AreOffered() && !std::filesystem::exists(folder.path() / "data" / "Autosave.htm"));
      QVERIFY(editor_->InsertHtml("<p>not saved</p>"));
      QTRY_VERIFY(std::filesystem::exists(folder.path() / "data" / "Autosave.htm"));
      QVERIFY(editor_->InsertHtml("<p>at the last moment</p>"));
      QVERIFY(document.KeepAside());
    }
    EditorDocument next(*editor_, FoldersIn(folder));
    QVERIFY(next.StartNew(""));
    QVERIFY(next.drafts().AreOffered());
    QVERIFY(next.Recover());
    QVERIFY(editor_->Text()->contains("not saved") && editor_->Text()->contains("at the last moment"));
    QCOMPARE(next.BaseFolder(), folder.path() / "letters");
    QVERIFY(next.FileName().empty() && next.HasUnsavedChanges());
    QVERIFY(!next.drafts().AreOffered());
    // Saved elsewhere it takes its pictures along, and what is sent still finds them.
    folder.Write("letters/a.png", "picture");
    QVERIFY(!next.SaveTo(folder.path() / "data" / "Group.mdb"));
    QVERIFY(next.SaveTo(folder.path() / "other.html"));
    QVERIFY(platform::ReadFile(folder.path() / "other.html", 10000)->find("other_files/a.png") != std::string::npos);
    QVERIFY(std::filesystem::exists(folder.path() / "other_files/a.png"));
    QCOMPARE(next.BaseFolder(), folder.path() / "letters");
    QVERIFY(next.SaveTo(folder.path() / "letters/letter.html"));
    QVERIFY(platform::ReadFile(folder.path() / "letters/letter.html", 10000)->find("\"a.png\"") != std::string::npos);
    QVERIFY(!std::filesystem::exists(folder.path() / "data" / "Autosave.htm"));
    QVERIFY(next.StartNew(""));
    QVERIFY(next.BaseFolder().empty());
  }

  void aSaveIsNotFollowedByASnapshot() {
    test::TemporaryFolder folder;
    EditorDocument document(*editor_, FoldersIn(folder));
    QVERIFY(document.StartNew(""));
    QVERIFY(editor_->InsertHtml("x"));
    QTRY_VERIFY(editor_->IsModified());
    QVERIFY(document.SaveTo(folder.path() / "saved.html"));
    QTest::qWait(1500);  // longer than it takes to be kept aside
    QVERIFY(!std::filesystem::exists(folder.path() / "data" / "Autosave.htm"));
  }
};

}  // namespace quillcast::desktop

Q_DECLARE_METATYPE(quillcast::desktop::EditorState)
QTEST_MAIN(quillcast::desktop::EditorTest)
#include "editor_test.moc"
