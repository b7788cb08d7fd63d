// The text of the body, whichever view holds it: nothing that was typed is lost, or called saved.
#include <QClipboard>
#include <QColorDialog>
#include <QComboBox>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QWebEnginePage>
#include <csignal>
#include <set>

#include "desktop/document/typed_text.h"
#include "desktop/main_window.h"
#include "platform/file.h"

namespace quillcast::desktop {

static const QString kDeep = QString("<div>").repeated(20'000) + "deep";  // more than the editor shows
static const QString kPage = "<html><head></head><body><p>one two</p></body></html>";

constexpr const char* kWithin = "(t=>getSelection().collapse(t,4))(document.body.firstChild.firstChild)";
constexpr const char* kInBold = "(b=>getSelection().collapse(b,1))(document.querySelector('b').firstChild)";

class HeldTextTest : public QObject {
  Q_OBJECT

  static pid_t Page(const Scene& scene) {
    return static_cast<pid_t>(scene.Editor().findChild<QWebEnginePage*>()->renderProcessPid());
  }
  static QPlainTextEdit& Source(const Scene& scene) { return scene.Find<QPlainTextEdit>("SourceTextBox"); }
  static QString Draft(const Scene& scene) {
    const auto kept = platform::ReadFile(scene.rig.folders.data / "Autosave.htm", 10'000'000);
    return kept ? ToQt(*kept) : QString();
  }
  static QString Label(const Scene& scene) { return scene.Find<QLabel>("DocumentLabel").text(); }
  static void Type(const Scene& scene, const char* text) {
    for (const char* c = text; *c != 0; ++c)
      QTest::sendKeyEvent(QTest::Click, scene.Editor().InputWidget(), QTest::asciiToKey(*c), *c, Qt::NoModifier);
  }
  // A letter whose caret stands in that place, while the keys are in that field.
  static void BeginAt(Scene& scene, const char* field, const char* place) {
    scene.Open();
    scene.window->Dispatch(CommandId::kNew);
    scene.Editor().SetHtml("<html><head></head><body><p>one two</p><p><b>ac</b></p></body></html>");
    scene.Editor().BeginTyping();
    scene.Find<QWidget>(field).setFocus();
    QTest::qWait(100);  // the page hears who has the keys
    scene.Editor().Evaluate(place);
  }
  static void ShowSource(const Scene& scene, const QString& html, bool changed) {
    scene.Editor().SetHtml(html);
    if (!Source(scene).isVisible()) scene.window->Dispatch(CommandId::kSource);
    QVERIFY(Source(scene).isVisible());
    if (changed) QTest::keyClicks(&Source(scene), "typed");
  }

 private slots:
  void whatIsKnownOfATextThatIsTyped() {
    TypedText text;
    text.Begin("a", false);
    QVERIFY(!text.is_changed() && !text.is_unseen());
    QVERIFY2(text.Change(), "the first change is to be looked at");
    QVERIFY2(!text.Change(), "it will be");
    text.See("ab", false);  // what was asked before the second
    QVERIFY(text.seen() == "ab" && text.is_unseen());
    text.Save();
    QVERIFY2(text.is_changed(), "the file has not got the second");
    text.See("abc", true);
    text.Save();
    QVERIFY(!text.is_changed());
    text.Change();
    QVERIFY2(text.Lose() && !text.Lose() && text.is_changed() && text.seen() == "abc", "its view died");
    text.Begin("other", true);
    text.See("other", true);
    QVERIFY(text.is_changed());
    for (const auto& [took, pause] : {std::pair(0, 1000), std::pair(100, 2000), std::pair(60'000, 5000)})
      QCOMPARE(TypedText::Pause(took), pause);
  }

  // Of the whole table: what works in the page takes the source with it, or leaves it where the page cannot show it;
  // what only reads lets it stand.
  void noCommandLosesTheSource() {
    QTimer closes;
    connect(&closes, &QTimer::timeout, this, [] {
      if (auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget())) dialog->reject();
    });
    closes.start(10);
    const std::set<CommandId> elsewhere = {CommandId::kFind, CommandId::kSend, CommandId::kImport, CommandId::kExport};
    for (const auto& [html, changed] : {std::pair(kPage, false), {kPage, true}, {kDeep, true}}) {
      OpenScene scene;
      const QString begin = changed ? "typed" : "";
      for (const Command& command : Commands()) {
        if (command.id == CommandId::kExit || command.id == CommandId::kSplash) continue;
        // A document that is too deep takes a second to be looked at: with the one command that wants the page most.
        if (html == kDeep && command.id != CommandId::kTemplate) continue;
        ShowSource(scene, html, changed);
        scene.window->activateWindow();
        // The connection test asks before it closes, and stays for any other answer.
        const bool asks_to_close = command.id == CommandId::kExtraForm5;
        scene.rig.prompts.answers = {asks_to_close ? platform::Answer::kYes : platform::Answer::kCancel};
        auto& said = scene.Find<QLabel>("StatusPanel1");
        said.clear();
        scene.window->Dispatch(command.id);
        for (QWidget* window : QApplication::topLevelWidgets()) {
          if (window != scene.window.get() && window->isVisible()) window->close();
        }
        const auto text = scene.Editor().Text();
        const QByteArray name = NameOf(command).toUtf8();
        QVERIFY2(text, name);
        const bool is_new = command.id == CommandId::kNew && !changed;
        const bool edits = command.place.menu == Menu::kEdit || command.place.menu == Menu::kMergeTag;
        const bool is_shown = Source(scene).isVisible();
        if (is_shown && !edits) QVERIFY2(*text == begin + html, name);
        if (!is_shown && !is_new) QVERIFY2(text->contains(begin) && text->contains("two"), name);
        QVERIFY2(!changed || scene.Editor().IsModified(), name);
        if (html == kDeep) QVERIFY2(is_shown, name);
        if (elsewhere.contains(command.id)) continue;
        QVERIFY2(scene.Focus() == (is_shown ? "SourceTextBox" : "Editor"), name + " " + scene.Focus().toUtf8());
      }
    }
  }

  void theSourceIsKeptAsADraft() {
    OpenScene scene;
    ShowSource(scene, kPage, true);
    scene.window->Dispatch(CommandId::kSource);
    QVERIFY2(Draft(scene).contains("typed"), "it was left before it rested");
    // A change that is taken back is one.
    scene.window->Dispatch(CommandId::kSource);
    Source(scene).selectAll();
    QTest::keyClick(&Source(scene), Qt::Key_Delete);
    QTRY_COMPARE(Draft(scene), QString());
    Source(scene).undo();
    QTRY_VERIFY(Draft(scene).contains("typed"));
    // Nor does it wait for a rest.
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < 4000 && !Draft(scene).contains("....")) {
      QTest::keyClicks(&Source(scene), ".");
      QTest::qWait(50);
    }
    QVERIFY(clock.elapsed() < 4000);
  }

  void savedIsSavedAlsoFromTheSource() {
    for (const QString& html : {kPage, kDeep}) {
      OpenScene scene;
      ShowSource(scene, html, true);
      for (int i = 0; i < 5; ++i) QTest::keyClick(&Source(scene), Qt::Key_Backspace);
      scene.rig.prompts.files = {scene.rig.folder.path() / "letter.html"};
      scene.window->Dispatch(CommandId::kSave);
      QCOMPARE(Label(scene), QString("letter.html"));
      QVERIFY(Source(scene).isVisible());
      QTest::keyClicks(&Source(scene), "x");
      QCOMPARE(Label(scene), QString("letter.html, not saved"));
      scene.window->Dispatch(CommandId::kSave);
      QVERIFY(ToQt(*platform::ReadFile(scene.rig.folder.path() / "letter.html", 1'000'000)).contains("x"));
      if (html == kDeep) continue;
      scene.window->Dispatch(CommandId::kSource);
      QCOMPARE(Label(scene), QString("letter.html"));
    }
  }

  // A page that is stopped, and goes on.
  void whatThePageDoesNotTellIsNeitherSavedNorSent() {
    Scene scene;
    scene.rig.FillInAccount();
    scene.rig.AddGroup("Customers", {"bob@example.net"});
    scene.Open();
    scene.Editor().SetHtml(kPage);
    const auto file = scene.rig.folder.path() / "letter.html";
    scene.rig.prompts.files = {file};
    scene.window->Dispatch(CommandId::kSave);
    Type(scene, "typed ");
    QTRY_VERIFY(scene.Editor().Text()->contains("typed"));
    const pid_t page = Page(scene);
    QCOMPARE(::kill(page, SIGSTOP), 0);
    for (const CommandId command : {CommandId::kSave, CommandId::kMailPreview, CommandId::kPreview, CommandId::kSend}) {
      scene.Find<QLabel>("StatusPanel1").clear();
      scene.window->Dispatch(command);
      QVERIFY2(scene.Status().contains("does not answer"), qPrintable(scene.Status()));
    }
    QVERIFY(!ToQt(*platform::ReadFile(file, 10000)).contains("typed") && Label(scene).endsWith("not saved"));
    QCOMPARE(::kill(page, SIGCONT), 0);
    QTRY_VERIFY(scene.Editor().Text());
    scene.window->Dispatch(CommandId::kSave);
    QVERIFY(ToQt(*platform::ReadFile(file, 10000)).contains("typed") && Label(scene) == "letter.html");
  }

  void closingTellsWhatBecomesOfATextThatIsNotTold() {
    OpenScene scene;
    scene.Editor().SetHtml(kPage);
    Type(scene, "typed ");
    QTRY_VERIFY(Draft(scene).contains("typed"));
    QCOMPARE(::kill(Page(scene), SIGSTOP), 0);
    scene.rig.prompts.answers = {platform::Answer::kNo, platform::Answer::kNo};
    QVERIFY(!scene.window->close());
    QVERIFY2(scene.Status().contains("does not answer") && scene.Status().contains("seen last") &&
                 !scene.Status().contains("without a draft"),
             qPrintable(scene.Status()));
    QVERIFY(scene.window->close());
    QVERIFY(Draft(scene).contains("typed"));
    QCOMPARE(::kill(Page(scene), SIGKILL), 0);
  }

  // As they are where the editor is shown.
  void picturesOfElsewhereInTheSourceAreAskedAbout() {
    for (const CommandId command : {CommandId::kSave, CommandId::kSend}) {
      Scene scene;
      scene.rig.FillInAccount();
      const auto home = scene.rig.folder.Write("home/private.gif", "GIF89a\x01");
      scene.Open();
      scene.rig.prompts.files = {scene.rig.folder.Write("page/letter.html", FromQt(kPage))};
      scene.window->Dispatch(CommandId::kOpen);
      scene.window->Dispatch(CommandId::kSource);
      QTest::keyClicks(&Source(scene), "<img src='../home/private.gif'>");
      scene.window->Dispatch(command);
      QTRY_VERIFY(scene.Find<QLabel>("PicturesLabel").text().contains(PathToQt(home)));
      QVERIFY(Source(scene).isVisible());
    }
  }

  void typingWithoutARestIsSeenToo() {
    OpenScene scene;
    scene.Editor().SetHtml(kPage);
    QSignalSpy restored(&scene.Editor(), &HtmlEditor::Restored);
    QString typed;
    for (int i = 0; i < 60; ++i) {
      Type(scene, "k");
      QTest::qWait(50);
    }
    QCOMPARE(::kill(Page(scene), SIGKILL), 0);
    QTRY_COMPARE(restored.size(), 1);
    const auto left = scene.Editor().Text()->count('k');
    QVERIFY2(left >= 25, qPrintable(QString::number(left)));
    // Whoever typed a moment ago is told that a letter may be missing, also where none is: the page had it already.
    const bool is_whole = restored.first().first().toBool();
    QVERIFY2(!is_whole || left == 60, qPrintable(QString::number(left)));
    QVERIFY(scene.Status().contains("may be missing") == !is_whole);
    QVERIFY(Label(scene).endsWith("not saved"));
    QVERIFY(Draft(scene).count('k') >= 25);
  }

  void aPageThatDiesBehindADialogKeepsItsPlace() {
    OpenScene scene;
    scene.Editor().SetHtml(kPage);
    scene.Editor().Evaluate(kWithin);
    QTest::qWait(200);  // the place is told
    QSignalSpy restored(&scene.Editor(), &HtmlEditor::Restored);
    test::WhileOpen("LineForm", [&](QDialog& form) {
      ::kill(Page(scene), SIGKILL);
      QTRY_COMPARE(restored.size(), 1);
      form.accept();
    });
    scene.window->Dispatch(CommandId::kLine);
    QVERIFY2(scene.Editor().Text()->contains(QRegularExpression("one.*<hr.*two")), qPrintable(*scene.Editor().Text()));
    scene.window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(scene.window.get()));
    QTRY_VERIFY(scene.Editor().isAncestorOf(QApplication::focusWidget()));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Y);
    QTRY_VERIFY2(scene.Editor().Text()->contains(QRegularExpression("<hr[^>]*>(<[^>]*>)*y")),
                 qPrintable(*scene.Editor().Text()));
  }

  // What was switched on for the text to come holds for the first letter, too, wherever the keys were.
  void theFirstLetterIsAsItWasSwitchedOn() {
    struct Case {
      const char *place, *field, *command, *typed;
    };
    for (const Case& c :
         {Case{"", "Editor", "Bold", "<p><b>yz</b>one"}, Case{kWithin, "Editor", "Bold", "one <b>yz</b>two"},
          Case{"", "SubjectTextBox", "Bold", "<p><b>yz</b>one"},
          Case{kWithin, "SubjectTextBox", "Ctrl+I", "one <i>yz</i>two"},
          Case{kInBold, "SubjectTextBox", "Bold", "<b>a</b>yz<b>c</b>"},
          Case{"", "SubjectTextBox", "Size", "<p><font size=\"6\">yz</font>one"},
          Case{kWithin, "Editor", "Colour", "one <font color=\"#ff0000\">yz</font>two"},
          Case{"", "SubjectTextBox", "Colour", "<p><font color=\"#ff0000\">yz</font>one"},
          Case{"", "SubjectTextBox", "Centre", "text-align: center;\">yzone"}}) {
      Scene scene;
      const QString command = c.command;
      BeginAt(scene, c.field, c.place);
      if (command == "Ctrl+I") {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_I, Qt::ControlModifier);
      } else if (command == "Size") {
        emit scene.Find<QComboBox>("FontSizeComboBox").activated(5);
      } else if (command == "Colour") {
        QTimer::singleShot(300, [] {
          auto* dialog = qobject_cast<QColorDialog*>(QApplication::activeModalWidget());
          dialog->setCurrentColor("#ff0000");
          dialog->accept();
        });
        scene.window->Dispatch(CommandId::kTextColour);
      } else {
        scene.window->Dispatch(command == "Bold" ? CommandId::kBold : CommandId::kCentre);
      }
      scene.window->activateWindow();
      QTRY_VERIFY(scene.Editor().isAncestorOf(QApplication::focusWidget()));
      QTest::qWait(100);
      Type(scene, "yz");
      QTRY_VERIFY2(scene.Editor().Text()->contains(c.typed), qPrintable(*scene.Editor().Text()));
    }
  }

  void aTagIsAsTheLettersToCome() {
    const char* const selected = "getSelection().selectAllChildren(document.querySelector('b'))";
    struct Case {
      const char *place, *field, *before, *text;
    };
    for (const Case& c : {Case{"", "Editor", "", "<p><b>$*MergeEmail*$</b>one"},
                          Case{"", "SubjectTextBox", "", "<p><b>$*MergeEmail*$</b>one"},
                          Case{"", "Editor", "x", "<p>x<b>$*MergeEmail*$</b>one"},
                          Case{kInBold, "Editor", "", "<b>a</b>$*MergeEmail*$<b>c</b>"},
                          Case{selected, "Editor", "", "<p>$*MergeEmail*$</p>"}}) {
      Scene scene;
      BeginAt(scene, c.field, c.place);
      Type(scene, c.before);
      QTRY_VERIFY(scene.Editor().Text()->contains(QString(c.before) + "one"));
      scene.window->Dispatch(CommandId::kBold);
      const QString switched = *scene.Editor().Text();  // what is selected is changed at once
      scene.window->Dispatch(CommandId::kMergeEmail);
      QVERIFY2(scene.Editor().Text()->contains(c.text), qPrintable(*scene.Editor().Text()));
      scene.window->Dispatch(CommandId::kUndo);
      QTRY_COMPARE(*scene.Editor().Text(), switched);
    }
  }

  void theFindBarGivesTheKeysBack() {
    OpenScene scene;
    scene.Editor().SetHtml(kPage);
    scene.window->Dispatch(CommandId::kFind);
    auto& box = scene.Find<QLineEdit>("FindTextBox");
    QVERIFY(box.isVisible());
    scene.window->Dispatch(CommandId::kSource);
    QVERIFY2(!box.isVisible(), "it would find in a page that is not shown");
    QCOMPARE(scene.Focus(), QString("SourceTextBox"));
  }

  void filesArePastedNowhereAsText() {
    OpenScene scene;
    for (const char* address : {"file:///home/ada/letter.html", "file://server/share/x"}) {
      ShowSource(scene, kPage, false);
      auto* files = new QMimeData;
      files->setUrls({QUrl(address)});
      files->setText(address);
      QGuiApplication::clipboard()->setMimeData(files);
      Source(scene).paste();
      QCOMPARE(Source(scene).toPlainText(), kPage);
      scene.window->Dispatch(CommandId::kSource);
      scene.window->Dispatch(CommandId::kPastePlain);
      QVERIFY(scene.Status().contains("cannot be pasted"));
      QTest::qWait(100);  // the page would take it by its own way
      QCOMPARE(*scene.Editor().Text(), kPage);
    }
  }

  void aFullDiskIsToldWhenItBegins() {
    OpenScene scene;
    std::filesystem::create_directories(scene.rig.folders.data / "Autosave.htm" / "in the way");
    Type(scene, "typed");
    QTRY_VERIFY2(scene.Status().contains("No draft can be kept"), qPrintable(scene.Status()));
    const QString told = scene.Status();
    scene.rig.prompts.answers = {platform::Answer::kNo};
    QVERIFY(!scene.window->close());
    QCOMPARE(scene.Status(), told + " Close again to leave without a draft.");
    scene.window->Say("Another sentence.");
    QVERIFY2(scene.Status().startsWith("Another") && scene.Status().contains("No draft can be kept"),
             qPrintable(scene.Status()));
    std::filesystem::remove_all(scene.rig.folders.data / "Autosave.htm");
    Type(scene, "more");
    QTRY_COMPARE(scene.Status(), QString("Another sentence."));
  }
};

}  // namespace quillcast::desktop

QTEST_MAIN(quillcast::desktop::HeldTextTest)
#include "held_text_test.moc"
