// The main window: its dispatcher, its checks, and a whole mailing through it.
#include "desktop/shell/main_form.h"

#include <QAction>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QDropEvent>
#include <QElapsedTimer>
#include <QFontDialog>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QPointer>
#include <QProgressBar>
#include <QScrollArea>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTabWidget>
#include <QTableView>
#include <QTextBrowser>
#include <QThread>
#include <QWebEnginePage>
#include <QWindow>
#include <csignal>
#include <fstream>
#include <memory>
#include <tuple>

#include "desktop/document/html_editor.h"
#include "desktop/hands.h"
#include "desktop/layout_requests.h"
#include "desktop/main_window.h"
#include "desktop/run/pictures_panel.h"
#include "desktop/run/preview_form.h"
#include "desktop/shell/command_bar.h"
#include "desktop/shell/message_header.h"
#include "desktop/shell/notices.h"
#include "desktop/shell/practice_form.h"
#include "desktop/shell/single_instance.h"
#include "desktop/shell/splash_form.h"
#include "desktop/shell/start_window.h"
#include "desktop/shell/status_panel.h"
#include "desktop/widgets/empty_state.h"
#include "document/drafts.h"
#include "platform/file.h"
#include "platform/system_name.h"

namespace quillcast::desktop {

static const QString kDeep = QString("<div>").repeated(20'000) + "deep";  // more than the editor shows

// As the toolkit does when a page comes into one that is open.
class RemadeDialog final : public QDialog {
 public:
  using QDialog::QDialog;
  void MakeAnew() {
    destroy();
    create();
    windowHandle()->setVisible(true);
  }
};

class MainFormTest : public QObject {
  Q_OBJECT

 private slots:
  void aNewUserSeesTheDefaultsAndTwoWaysOn() {
    OpenScene scene;
    QCOMPARE(scene.window->windowTitle(), QString("Tarnwick Quillcast Classic Edition"));
    QCOMPARE(scene.Box("FromComboBox"), QString());
    QCOMPARE(scene.Find<QComboBox>("SendingMethodComboBox").placeholderText(), QString("Personal"));
    QCOMPARE(scene.Box("PriorityComboBox") + scene.Box("FormatComboBox"), QString("NormalHTML"));
    QStringList panels;
    for (int i = 1; i <= 4; ++i) panels << scene.window->findChild<QLabel*>(QString("StatusPanel%1").arg(i))->text();
    QCOMPARE(panels.join(","), QString("For Help Press F1,INS,CAPS,NUM"));
    QVERIFY(scene.Notice().contains("no mail account"));
    QVERIFY(scene.window->findChild<QPushButton*>("FillInButton") != nullptr);
    QVERIFY(!scene.Editor().IsModified());
    QVERIFY(scene.window->minimumWidth() >= 640 && scene.window->minimumHeight() >= 495);
    test::LayoutRequests requests(*scene.window);
    QTRY_COMPARE(requests.Within(100), 0);
  }

  void noLetterStandsForTwoControls() {
    OpenScene scene;
    scene.window->Dispatch(CommandId::kFind);  // with the find bar
    scene.window->findChild<QWidget*>("PicturesPanel")->show();
    QHash<QChar, QString> taken;
    QStringList texts;
    for (const QAction* menu : scene.window->menuBar()->actions()) texts << menu->text();
    for (const QLabel* label : scene.window->findChildren<QLabel*>()) {
      if (label->isVisible() && label->buddy() != nullptr) texts << label->text();
    }
    for (const QAbstractButton* button : scene.window->findChildren<QAbstractButton*>()) {
      if (button->isVisible()) texts << button->text();
    }
    for (const QString& text : texts) {
      const auto at = text.indexOf('&');
      if (at < 0) continue;
      const QChar letter = text.at(at + 1).toLower();
      QVERIFY2(!taken.contains(letter), qPrintable(text + " and " + taken.value(letter)));
      taken.insert(letter, text);
    }
  }

  // Down the fields with what belongs to each, and last to what sends the message.
  void theTabKeyComesToSendingLast() {
    OpenScene scene;
    scene.window->findChild<MessageHeader*>()->AddAttachments({"/nowhere/price.pdf"});
    scene.Find<QComboBox>("FromComboBox").setFocus();
    QStringList order;
    for (int stop = 0; stop < 16; ++stop) {
      order << scene.Focus();
      QTest::keyClick(scene.window->focusWidget(), Qt::Key_Tab);
    }
    QCOMPARE(order.join(' '),
             "FromComboBox EmailButton ToComboBox GroupButton SubjectTextBox SubjectTagButton AttachmentComboBox "
             "AttachmentCountButton FileAttachmentButton DeleteAttachmentButton SendingMethodComboBox "
             "PriorityComboBox FormatComboBox RRRCheckBox SendButton PreviewButton");
    scene.window->skip_save_prompt = true;
    scene.window->close();
  }

  // Where the window is too low for all of it, what is typed into is in view.
  void theFindBarComesIntoView() {
    OpenScene scene;
    scene.window->findChild<QWidget*>("Editor")->parentWidget()->setMinimumHeight(700);
    auto& box = scene.Find<QLineEdit>("FindTextBox");
    QTRY_VERIFY(scene.window->findChild<QScrollArea*>("ScrollArea") != nullptr);
    scene.window->Dispatch(CommandId::kFind);
    QTRY_COMPARE(box.visibleRegion().boundingRect(), box.rect());
  }

  void theFirstKeyTypedAppears() {
    for (const bool signed_letter : {false, true}) {
      Scene scene;
      QVERIFY(scene.rig.settings.Write("Signature", "Status", signed_letter ? "1" : "0"));
      QVERIFY(scene.rig.settings.Write("Signature", "Message", "<html><body><p>Ada</p></body></html>"));
      scene.Open();
      QTRY_VERIFY(scene.Editor().isAncestorOf(QApplication::focusWidget()));
      QTest::keyClicks(QApplication::focusWidget(), "Dear");
      QTRY_COMPARE(scene.Editor().PlainText(), QString(signed_letter ? "DearAda" : "Dear"));
      scene.window->skip_save_prompt = true;
      scene.window->close();
    }
  }

  void theSignatureIsAnUnchangedDocument() {
    Scene scene;
    QVERIFY(scene.rig.settings.Write("Signature", "Status", "1"));
    QVERIFY(scene.rig.settings.Write("Signature", "Message", "<html><body><p>Ada</p></body></html>"));
    scene.Open();
    QCOMPARE(*scene.Editor().Text(), QString("<html><body><p>Ada</p></body></html>"));
    QVERIFY(scene.window->close());
    QCOMPARE(scene.rig.Shown(), QString());
  }

  void sendingChecksShowAndFocus() {
    struct Case {
      bool account;
      QStringList groups;
      const char *chosen, *subject, *shown, *focus;
    };
    for (const Case& c : std::initializer_list<Case>{
             {false, {}, "", "", "warn: Please fill out the Mail Account section in Email Manager.", "EmailButton"},
             {true, {"A"}, "", "", "warn: Please specify a group in the To field.", "GroupButton"},
             {true,
              {"A"},
              "A",
              "",
              "ask: This message has no subject. Are you sure you want to send it?",
              "SubjectTextBox"},
             {true, {"A"}, "A", "x", "ask: Are you sure you want to send an empty message?", "Editor"}}) {
      Scene scene;
      if (c.account) scene.rig.FillInAccount();
      for (const QString& group : c.groups) scene.rig.AddGroup(FromQt(group), {});
      scene.Open();
      scene.Find<QComboBox>("ToComboBox").setCurrentText(c.chosen);
      scene.Find<QLineEdit>("SubjectTextBox").setText(c.subject);
      Press(scene, "SendButton");
      QCOMPARE(scene.rig.Shown(), QString(c.shown));
      const bool is_editor = scene.Editor().isAncestorOf(scene.window->focusWidget());
      QCOMPARE(is_editor ? QString("Editor") : scene.Focus(), QString(c.focus));
    }
  }

  void nothingWaitsForAStoreInUse() {
    Scene scene;
    scene.rig.FillInAccount();
    scene.rig.AddGroup("Readers", {"bob@example.net"});
    scene.rig.AddGroup("Others", {"cy@example.net", "di@example.net"});
    scene.Open();
    auto* to = scene.window->findChild<QComboBox*>("ToComboBox");
    to->setCurrentText("Readers");
    auto other = platform::Database::Open(scene.rig.folders.Database(), platform::OpenMode::kReadWrite);
    QVERIFY(other->Execute("BEGIN EXCLUSIVE"));
    QElapsedTimer waited;
    waited.start();
    Press(scene, "SendButton");
    QVERIFY2(scene.Status().contains("Another program is using it"), qPrintable(scene.Status()));
    scene.window->Say({});
    to->setCurrentText("Others");
    QVERIFY2(scene.Status().contains("Another program is using it"), qPrintable(scene.Status()));
    QVERIFY2(waited.elapsed() < 3000, "the window stood still");
    QCOMPARE(scene.rig.Shown(), QString());
    QVERIFY(other->Execute("ROLLBACK"));
    QTRY_COMPARE(scene.Find<QLabel>("GroupCountLabel").text(), QString("2 recipients"));
    QCOMPARE(to->currentText(), QString("Others"));
    // A group that is to be chosen meanwhile is not forgotten over what waits already.
    QVERIFY(other->Execute("BEGIN EXCLUSIVE"));
    for (const char* chosen : {"", "Readers", ""}) scene.window->findChild<MessageHeader*>()->LoadGroups(chosen);
    QVERIFY(other->Execute("ROLLBACK"));
    QTRY_COMPARE(to->currentText(), QString("Readers"));
  }

  void groupsThatTheCommandMakesAppear() {
    Scene scene;
    scene.rig.AddGroup("Customers", {"a@example.org"});
    scene.rig.AddGroup("Old", {});
    scene.Open();
    auto* box = scene.window->findChild<QComboBox*>("ToComboBox");
    box->setCurrentText("Customers");
    const auto count = [&] { return scene.Find<QLabel>("GroupCountLabel").text(); };
    QCOMPARE(count(), QString("1 recipient"));
    QDialog elsewhere;
    elsewhere.show();
    QVERIFY(QTest::qWaitForWindowActive(&elsewhere));
    scene.rig.AddGroup("Friends", {"b@example.org"});
    scene.rig.AddRecipient("Customers", "c@example.org");
    elsewhere.close();
    scene.window->activateWindow();
    QTRY_COMPARE(box->count(), 3);
    QCOMPARE(box->currentText(), QString("Customers"));
    QTRY_COMPARE(count(), QString("2 recipients"));
  }

  void afterADeletionNoGroupIsChosen() {
    Scene scene;
    scene.rig.AddGroup("Customers", {"a@example.org"});
    scene.rig.AddGroup("Old", {});
    scene.Open();
    scene.Find<QComboBox>("ToComboBox").setCurrentText("Customers");
    scene.rig.prompts.answers = {platform::Answer::kYes};
    test::WhileOpen("GroupManagerForm", [](QDialog& manager) {
      auto& groups = *manager.findChild<QComboBox*>("GroupComboBox");
      auto& button = *manager.findChild<QPushButton*>("DeleteGroupButton");
      groups.setCurrentText("Old");
      QTRY_VERIFY(button.isEnabled());
      QTest::mouseClick(&button, Qt::LeftButton);
      QTRY_COMPARE(groups.count(), 1);
    });
    Press(scene, "GroupButton");
    QCOMPARE(scene.Find<QComboBox>("ToComboBox").count(), 1);
    QCOMPARE(scene.Box("ToComboBox"), QString());
  }

  void theFormatSpringsBack() {
    Scene scene;
    QVERIFY(scene.rig.settings.Write("Advanced", "Encoding", "Plain"));
    scene.Open();
    QCOMPARE(scene.Box("FormatComboBox"), QString("Text"));
    auto* format = scene.window->findChild<QComboBox*>("FormatComboBox");
    format->setFocus();
    QTest::keyClick(format, Qt::Key_Up);
    QCOMPARE(scene.rig.Shown(), QString("warn: You cannot send an HTML message using UUencoding./First change the "
                                        "encoding format in the advanced window."));
    QCOMPARE(scene.Box("FormatComboBox"), QString("Text"));
  }

  void openSaveAndCloseKeepTheWork() {
    OpenScene scene;
    const auto file = scene.rig.folder.Write("letter.html", "<html><body><p>letter</p></body></html>");
    scene.Editor().InsertHtml("<p>work</p>");
    scene.rig.prompts.files = {file};
    scene.rig.prompts.answers = {platform::Answer::kCancel};
    scene.window->Dispatch(CommandId::kOpen);
    QCOMPARE(scene.rig.Shown(), QString("open: Open | ask or cancel: Do you want to save the changes?"));
    QVERIFY(scene.Editor().Text()->contains("work"));
    scene.rig.prompts.answers = {platform::Answer::kNo};
    scene.window->Dispatch(CommandId::kOpen);
    scene.rig.Shown();
    QVERIFY(scene.Editor().Text()->contains("letter") && !scene.Editor().IsModified());
    QVERIFY(document::Drafts(scene.rig.folders.data).ReadOffered()->document.html.find("work") != std::string::npos);
    scene.Editor().InsertHtml("<b>changed</b>");
    scene.window->Dispatch(CommandId::kSave);
    QCOMPARE(scene.rig.Shown(), QString());
    QVERIFY(platform::ReadFile(file, 1000)->find("changed") != std::string::npos);
    scene.Editor().InsertHtml("again");
    scene.rig.prompts.answers = {platform::Answer::kCancel};
    QVERIFY(!scene.window->close());
    QVERIFY(scene.window->isVisible());
    std::filesystem::remove(file);
    std::filesystem::create_directories(file / "in the way");
    scene.rig.prompts.answers = {platform::Answer::kYes};
    QVERIFY(!scene.window->close());
    QVERIFY2(scene.Status().contains("letter.html"), qPrintable(scene.Status()));
    std::filesystem::remove_all(file);
    scene.rig.prompts.answers = {platform::Answer::kNo};
    QVERIFY(scene.window->close());
    QVERIFY(!std::filesystem::exists(file));
  }

  void theDocumentsNameStandsInTheWindow() {
    OpenScene scene;
    auto& label = scene.Find<QLabel>("DocumentLabel");
    // All of it is seen at the edge, in the line of the menus.
    const auto stands_in_line = [&] {
      const QRect menu = scene.window->menuBar()->actionGeometry(scene.window->menuBar()->actions().front());
      return label.width() == label.sizeHint().width() &&
             label.geometry().right() == label.parentWidget()->width() - 1 && label.y() == menu.y() &&
             label.height() == menu.height();
    };
    QCOMPARE(scene.window->windowTitle(), QString("Tarnwick Quillcast Classic Edition"));
    QCOMPARE(label.text(), QString("New message"));
    QTRY_VERIFY(stands_in_line());
    scene.Editor().InsertHtml("<p>x</p>");
    QTRY_COMPARE(label.text(), QString("New message, not saved"));
    QTRY_VERIFY(stands_in_line());
    const auto file = scene.rig.folder.path() / (std::string(60, 'w') + " Spring.html");
    scene.rig.prompts.files = {file};
    scene.window->Dispatch(CommandId::kSave);
    QVERIFY2(label.text().contains(u'\u2026') && label.text().endsWith("Spring.html"), qPrintable(label.text()));
    scene.window->resize(scene.window->minimumSize());
    QTRY_VERIFY(stands_in_line());
    QVERIFY(!scene.Find<QWidget>("qt_menubar_ext_button").isVisible());  // it leaves the menus their room
    QCOMPARE(label.toolTip(), PathToQt(file));
    // Saved, it names its character set, and is the same again at the next start.
    QVERIFY(platform::ReadFile(file, 1000)->starts_with("<html><head><meta charset=\"utf-8\"></head>"));
    scene.Find<QLineEdit>("SubjectTextBox").setText("Spring");
    QVERIFY(scene.window->close());
    scene.Open();
    auto* restore = scene.window->findChild<QPushButton*>("RestoreButton");
    QVERIFY(restore != nullptr);
    restore->click();
    QTRY_VERIFY(scene.Find<QLabel>("DocumentLabel").text().endsWith("Spring.html"));
    QVERIFY(!scene.Editor().IsModified());
    scene.window->Dispatch(CommandId::kNew);
    QCOMPARE(scene.Find<QLabel>("DocumentLabel").text(), QString("New message"));
  }

  void recentDocumentsAreOpenedAsOpenDoes() {
    OpenScene scene;
    auto& menu = scene.Find<QMenu>("RecentMenu");
    const auto entries = [&menu] {
      emit menu.aboutToShow();
      QStringList texts;
      for (const QAction* action : menu.actions()) texts << QString(action->text()).section('/', -1);
      return texts.join(" | ");
    };
    QCOMPARE(entries(), QString("None yet"));
    const std::string first = scene.rig.folder.Write("first & more.html", "<p>first</p>");
    const std::string second = scene.rig.folder.Write("second.html", "<p>second</p>");
    for (const auto& file : {first, second}) {
      scene.window->Open({file});
      QTRY_VERIFY(entries().startsWith(ToQt(std::filesystem::path(file).filename().string()).replace('&', "&&")));
    }
    QCOMPARE(entries(), QString("second.html | first && more.html |  | &Clear"));
    scene.Editor().InsertHtml("work ");
    scene.rig.prompts.answers = {platform::Answer::kCancel};
    menu.actions().at(1)->trigger();
    QCOMPARE(scene.rig.Shown(), QString("ask or cancel: Do you want to save the changes?"));
    QVERIFY(scene.Editor().PlainText().contains("work"));
    std::filesystem::remove(first);
    menu.actions().at(1)->trigger();
    QCOMPARE(scene.Status(), ToQt(first + " is no longer there. It was taken off the list."));
    QCOMPARE(entries(), QString("second.html |  | &Clear"));
    menu.actions().last()->trigger();
    QCOMPARE(entries(), QString("None yet"));
  }

  void whatIsDroppedOnTheWindowOpensOnceItIsFree() {
    OpenScene scene;
    const QString file = QString::fromStdString(scene.rig.folder.Write("letter.htm", "<p>letter</p>"));
    QWidget* target = scene.window.get();
    const auto drop = [&](const QString& what) {
      QMimeData data;
      data.setUrls({QUrl::fromLocalFile(what)});
      QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
      enter.ignore();
      QApplication::sendEvent(target, &enter);
      if (!enter.isAccepted()) return false;
      QDropEvent event(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
      QApplication::sendEvent(target, &event);
      return true;
    };
    QVERIFY(!drop("/nowhere/a.pdf"));
    test::WhileOpen("AboutForm", [&](QDialog&) {
      QVERIFY(drop(file));
      QCOMPARE(scene.Status(), file + " waits until this window is free.");
    });
    scene.window->Dispatch(CommandId::kAbout);
    QTRY_COMPARE(scene.Editor().PlainText(), QString("letter"));

    // Over the source it is the window's, too: no address of a file comes into the text.
    auto& source = scene.Find<QPlainTextEdit>("SourceTextBox");
    scene.window->Dispatch(CommandId::kSource);
    source.setPlainText("<p>typed</p>");
    target = source.viewport();
    QVERIFY(!drop("/nowhere/a.png"));
    auto* const pasted = new QMimeData();
    pasted->setUrls({QUrl::fromLocalFile(file)});
    QApplication::clipboard()->setMimeData(pasted);
    source.paste();
    QCOMPARE(source.toPlainText(), QString("<p>typed</p>"));
    scene.rig.prompts.answers = {platform::Answer::kNo};
    QVERIFY(drop(file));
    QTRY_COMPARE(scene.Editor().PlainText(), QString("letter"));
    QVERIFY(!source.isVisible());
  }

  void whatAStartBringsIsOpenedAsOpenDoes() {
    Scene scene;
    const std::string first = scene.rig.folder.Write("first.html", "<html><body><p>first</p></body></html>");
    const std::string second = scene.rig.folder.Write("second.txt", "second");
    scene.window = std::make_unique<MainForm>(scene.rig.program);
    scene.window->Open({first, second});
    QCOMPARE(scene.Status(), ToQt(first + " waits until this window is free."));
    scene.window->Load();
    scene.window->show();
    QTRY_COMPARE(scene.Editor().PlainText(), QString("first"));
    QVERIFY2(scene.Status().contains("Not opened: " + ToQt(second)), qPrintable(scene.Status()));
    scene.window->Open({second});
    QTRY_COMPARE(scene.Editor().PlainText(), QString("second"));
    QCOMPARE(scene.Status(), QString("For Help Press F1"));
    test::WhileOpen("AboutForm", [&](QDialog&) {
      for (const auto& file : {second, first}) scene.window->Open({file});
      QCOMPARE(scene.Status(), ToQt(first + " waits until this window is free, in the place of " + second + "."));
    });
    scene.window->Dispatch(CommandId::kAbout);
    QTRY_VERIFY2(scene.Status().contains("Not opened: " + ToQt(second)), qPrintable(scene.Status()));
    QCOMPARE(scene.Editor().PlainText(), QString("first"));
    scene.Editor().InsertHtml("work ");
    scene.rig.prompts.answers = {platform::Answer::kCancel};
    scene.window->Open({first});
    QTRY_VERIFY(!scene.rig.prompts.shown.empty());
    QCOMPARE(scene.rig.Shown(), QString("ask or cancel: Do you want to save the changes?"));
    QVERIFY(scene.Editor().PlainText().contains("work"));
    scene.rig.prompts.answers = {platform::Answer::kCancel};
    scene.window->Open({first, second});
    QTRY_COMPARE(scene.Status(), ToQt("Not opened: " + first + ", " + second + "."));
    scene.window->skip_save_prompt = true;
    scene.window->Open({"/nowhere/letter.html"});
    QTRY_VERIFY2(scene.Status().contains("/nowhere/letter.html"), qPrintable(scene.Status()));
    QVERIFY(scene.Editor().PlainText().contains("work"));
    const std::string photo = scene.rig.folder.Write("photo.jpg", std::string("\xFF\xD8\xFF\xE0\0\x10JFIF", 10));
    scene.window->Open({photo});
    QTRY_COMPARE(scene.Status(),
                 ToQt(photo + " is neither HTML nor text. Name an HTML file, as word processors save one "
                              "too, or a text file whose name ends in .txt."));
    QVERIFY(scene.Editor().PlainText().contains("work"));
    scene.window->Open({"/nowhere/page.html", first});
    QTRY_VERIFY2(scene.Status().endsWith("Not opened: " + ToQt(first) + "."), qPrintable(scene.Status()));
    QVERIFY2(scene.Status().contains("/nowhere/page.html"), qPrintable(scene.Status()));
  }

  void aDialogKeepsTheKeysWhenTheProgramIsStartedAgain() {
    OpenScene scene;
    RemadeDialog dialog(scene.window.get());
    dialog.setModal(true);
    dialog.show();
    for (const bool is_made_anew : {false, true}) {
      if (is_made_anew) dialog.MakeAnew();
      QCOMPARE(QApplication::activeModalWidget(), &dialog);
      for (const auto& ask : {std::function<void()>([&] { scene.window->Flash(); }),
                              std::function<void()>([&] { scene.window->activateWindow(); })}) {
        ask();
        QCoreApplication::processEvents();
        QTRY_VERIFY(dialog.isActiveWindow());
        QVERIFY(!scene.window->isActiveWindow());
      }
    }
    dialog.close();
    scene.window->Flash();
    QTRY_VERIFY(scene.window->isActiveWindow());
  }

  void whatIsSaidAgainStandsAsLongAgain() {
    StatusPanel panel(nullptr);
    auto& end = *panel.findChild<QTimer*>();
    end.setTimerType(Qt::PreciseTimer);  // a coarse one may end with the one before
    panel.Say("Saved.");
    QTest::qWait(50);
    const int left = end.remainingTime();
    panel.Say("Saved.");
    QVERIFY(end.remainingTime() > left);
    end.start(0);
    QTRY_COMPARE(panel.text(), QString("For Help Press F1"));
  }

  void aMessageFileIsShownAndTheMessageStays() {
    OpenScene scene;
    scene.Editor().InsertHtml("work");
    const std::string picture = scene.rig.folder.Write("local.png", "");
    const std::string file =
        scene.rig.folder.Write("Letter.EML",
                               "From: \"eve@bank.example\" <eve@example.org>\r\nTo: a@x.org\r\nCc: b@x.org\r\nBcc: "
                               "c@x.org\r\nSubject: Hello\r\nContent-Type: text/html\r\n\r\n<p>Read "
                               "<a href='https://x.example/'>this</a><img src='" +
                                   picture + "' alt='(picture)'><script>no</script>");
    bool seen = false;
    test::WhileOpen("MessageForm", [&](QDialog& form) {
      auto& page = *form.findChild<QTextBrowser*>("MessagePage");
      QTRY_COMPARE(page.toPlainText().trimmed(), QString("Read this(picture)"));
      const auto field = [&](const char* name) {
        const auto* label = form.findChild<QLabel*>(name);
        return label->isVisible() ? label->text() : QString("hidden");
      };
      QCOMPARE(field("FromLabel"), QString("\"eve@bank.example\" <eve@example.org>"));
      QCOMPARE(field("ToLabel") + field("CcLabel") + field("BccLabel"), QString("a@x.orgb@x.orgc@x.org"));
      emit page.anchorClicked(QUrl("https://x.example/"));
      QVERIFY(test::Text(form, "MessageStatus").contains("https://x.example/"));
      QCOMPARE(page.toPlainText().trimmed(), QString("Read this(picture)"));
      QCOMPARE(page.document()->resource(QTextDocument::ImageResource, QUrl::fromLocalFile(ToQt(picture))), QVariant());
      for (const auto& [button, tool] :
           {std::pair("ExtractButton", "ExtraForm4"), {"ImportButton", "ExtraForm2"}, {"PrintButton", "ExtraForm1"}}) {
        test::WhileOpen(tool, [&](QDialog& opened) { QCOMPARE(test::Text(opened, "FilePathTextBox"), ToQt(file)); });
        test::Press(form, button);
      }
      seen = true;
    });
    scene.window->Open({file});
    QTRY_VERIFY(seen && QApplication::activeModalWidget() == nullptr);
    QCOMPARE(scene.Editor().PlainText(), QString("work"));
    seen = false;
    test::WhileOpen("MessageForm", [&](QDialog& form) {
      QTRY_VERIFY(test::Text(form, "FaultsLabel").contains("Error 258: File IO error."));
      QVERIFY(!form.findChild<QLabel*>("CcLabel")->isVisible());
      QVERIFY(!form.findChild<QPushButton*>("ExtractButton")->isEnabled());
      seen = true;
    });
    scene.window->Open({"/nowhere/letter.eml"});
    QTRY_VERIFY(seen && QApplication::activeModalWidget() == nullptr);
    seen = false;
    test::WhileOpen("MessageForm", [&](QDialog& form) {
      const auto* instead = form.findChild<QTextBrowser*>("MessagePage")->findChild<EmptyState*>();
      QTRY_VERIFY2(instead->text().contains("it is encrypted"), qPrintable(instead->text()));
      QVERIFY(instead->isVisible());
      QCOMPARE(form.findChild<QTabWidget*>("MessageTabs")->tabText(1), QString("&Parts (1 attached)"));
      const auto* parts = form.findChild<QTableView*>("PartList")->model();
      QCOMPARE(parts->index(0, 2).data().toString(), QString("Part 0.p7m"));
      QCOMPARE(test::Text(form, "DateLabel"), QString("2026-11-14 22:40:05 -03:30"));
      for (const char* field : {"FromLabel", "ToLabel", "SubjectLabel"})
        QVERIFY2(form.findChild<QLabel*>(field)->minimumSizeHint().width() < 700, field);
      seen = true;
    });
    const std::string word(300, 'w');
    scene.window->Open({scene.rig.folder
                            .Write("sealed.eml", "From: " + word + "@x.org\r\nTo: " + word + " <a@x.org>\r\nSubject: " +
                                                     word + "\r\nDate: Sat, 14 Nov 2026 22:40:05 -0330\r\n" +
                                                     "Content-Type: application/pkcs7-mime\r\n\r\nx\r\n")
                            .string()});
    QTRY_VERIFY(seen && QApplication::activeModalWidget() == nullptr);
  }

  void aLinkBeginsAMessageOnceTheWindowIsFree() {
    Scene scene;
    QVERIFY(scene.rig.settings.Write("Signature", "Status", "1"));
    QVERIFY(scene.rig.settings.Write("Signature", "Message", "<html><body><p>Ada</p></body></html>"));
    scene.rig.AddGroup("Customers", {"bob@example.net"});
    scene.Open();
    auto& subject = scene.Find<QLineEdit>("SubjectTextBox");
    subject.setText("Winter");
    const auto ask = [&](QDialog&) {
      scene.window->Open({"mailto:bob@example.net?subject=Spring&body=One%20%3C%20two%0D%0Athree&attach=x"});
      QTest::qWait(50);
      QCOMPARE(subject.text(), QString("Winter"));
      QVERIFY2(scene.Status().endsWith("waits until this window is free."), qPrintable(scene.Status()));
    };
    test::WhileOpen("AboutForm", ask);
    scene.window->Dispatch(CommandId::kAbout);
    QTRY_COMPARE(subject.text(), QString("Spring"));
    QTRY_VERIFY2(scene.Editor().Text()->contains("<p>One &lt; two<br>\nthree</p><p><br></p><p>Ada</p>"),
                 qPrintable(*scene.Editor().Text()));
    QVERIFY2(scene.Status().endsWith("Left out of the link: bob@example.net, attach."), qPrintable(scene.Status()));
    QCOMPARE(scene.Notice(), QString("An unfinished message was kept: “Winter”."));
    QCOMPARE(scene.rig.Shown(), QString());
    scene.window->Open({"mailto:?body=%00"});
    QTRY_VERIFY2(scene.Status().startsWith("The link asks for nothing"), qPrintable(scene.Status()));
    QCOMPARE(subject.text(), QString("Spring"));
    const auto drafts = [&] {
      int count = 0;
      for (const auto& entry : std::filesystem::directory_iterator(scene.rig.folders.data))
        count += entry.path().filename().string().starts_with("Recovered") && entry.path().extension() == ".fields";
      return count;
    };
    // Another link takes the place of what the one before made, but not of what somebody did to it.
    const auto pick = [&](const char* box, int row) { scene.Find<QComboBox>(box).setCurrentIndex(row); };
    const std::function<void()> works[] = {[] {},
                                           [&] { scene.Editor().InsertHtml("work"); },
                                           [&] { subject.setText("Mine"); },
                                           [&] { pick("ToComboBox", 0); },
                                           [&] { scene.Find<QCheckBox>("RRRCheckBox").click(); },
                                           [&] { pick("PriorityComboBox", 0); },
                                           [&] { pick("FormatComboBox", 1); },
                                           [] {}};
    int kept = drafts();
    int number = 0;
    for (const auto& work : works) {
      scene.window->Open({"mailto:?body=Four&subject=Link" + std::to_string(++number)});
      QTRY_COMPARE(subject.text(), QString("Link%1").arg(number));
      QTRY_VERIFY(scene.Editor().PlainText().startsWith("Four"));
      kept += number > 2 ? 1 : 0;
      QCOMPARE(drafts(), kept);
      QCOMPARE(scene.rig.Shown().count("save the changes"), number > 2 ? 1 : 0);
      work();
    }
  }

  void whatComesWhileTheWindowClosesTakesNoPlace() {
    for (const auto answer : {platform::Answer::kYes, platform::Answer::kNo, platform::Answer::kCancel}) {
      OpenScene scene;
      const std::string theirs = scene.rig.folder.Write("theirs.html", "<html><body><p>theirs</p></body></html>");
      const auto mine = scene.rig.folder / "mine.html";
      scene.rig.prompts.files = {mine};
      scene.Editor().InsertHtml("<p>work</p>");
      scene.rig.prompts.answers = {answer};
      scene.rig.prompts.meanwhile = [&] {
        scene.window->Open({theirs});
        QTest::qWait(20);
      };
      const bool stays = answer == platform::Answer::kCancel;
      QCOMPARE(scene.window->close(), !stays);
      QCOMPARE(scene.rig.Shown().count("Do you want to save the changes?"), 1);
      const auto kept = answer == platform::Answer::kYes ? mine : scene.rig.folders.data / "Autosave.htm";
      if (!stays) {
        QTest::qWait(50);
        QVERIFY(platform::ReadFile(kept, 1000)->find("work") != std::string::npos);
        QVERIFY(scene.window->close());
      }
      // Opening asks once more, and gets "No".
      if (stays) QTRY_COMPARE(scene.Editor().PlainText(), QString("theirs"));
      QCOMPARE(scene.rig.Shown().count("Do you want to save the changes?"), stays ? 1 : 0);
    }
  }

  void aStartThatComesWhileTheWindowClosesIsNotTakenBeforeItIsDecided() {
    const test::TemporaryFolder folder;
    using Arguments = std::vector<std::string>;
    for (const auto& [stays, arguments] :
         {std::pair(true, Arguments{"/letter.html"}), {false, {"/letter.html"}}, {false, {}}}) {
      auto first = std::make_unique<SingleInstance>(PathToQt(folder.path()));
      QVERIFY(!first->AnotherIsRunning({}));
      first->BeginHearing();
      QSignalSpy raised(first.get(), &SingleInstance::Raised);
      QSignalSpy asked(first.get(), &SingleInstance::Asked);
      first->Hold(true);
      bool another_runs = false;
      bool is_taken = false;
      const std::unique_ptr<QThread> start(QThread::create([&, arguments = arguments] {
        SingleInstance second(PathToQt(folder.path()));
        another_runs = second.AnotherIsRunning(arguments);
        is_taken = second.handed_over();
      }));
      start->start();
      QTRY_COMPARE(raised.size(), 1);
      QTest::qWait(stays ? 3200 : 50);  // longer than one that says nothing is listened to
      QVERIFY(start->isRunning() && asked.isEmpty());
      if (stays) first->Hold(false);
      QCOMPARE(asked.size(), stays ? 1 : 0);
      if (!stays) first.reset();
      QVERIFY(start->wait(5000));
      QCOMPARE(another_runs, stays);  // else it is the first from here on
      QCOMPARE(is_taken, stays);
    }
  }

  void aSavedMessageIsNotSavedOverOnLeaving() {
    OpenScene scene;
    const auto file = scene.rig.folder.Write("letter.html", "<html><body><p>letter</p></body></html>");
    scene.rig.prompts.files = {file};
    scene.window->Dispatch(CommandId::kOpen);
    scene.Editor().InsertHtml("again");
    scene.rig.prompts.answers = {platform::Answer::kNo};
    QVERIFY(scene.window->close());
    QVERIFY(platform::ReadFile(file, 1000)->find("again") == std::string::npos);
  }

  void picturesFromElsewhereAreAskedAboutOnce() {
    for (const bool take : {false, true}) {
      Scene scene;
      scene.rig.FillInAccount();
      const auto home = scene.rig.folder.Write("home/private.gif", "GIF89a\x01");
      scene.Open();
      scene.rig.prompts.files = {scene.rig.folder.Write("page/letter.html", "<img src='../home/private.gif'>")};
      scene.window->Dispatch(CommandId::kOpen);
      const auto* panel = scene.window->findChild<QWidget*>("PicturesPanel");
      const auto* question = panel->findChild<QLabel*>("PicturesLabel");
      QTRY_VERIFY(panel->isVisible() && question->text().contains(PathToQt(home)));
      QCOMPARE(scene.Notice(), QString());
      panel->findChild<QPushButton*>(take ? "TakePicturesButton" : "LeavePicturesButton")->click();
      QTRY_VERIFY(!panel->isVisible());
      QVERIFY(!scene.Editor().IsModified());
      scene.window->skip_save_prompt = true;
      scene.window->close();
    }
  }

  void aLookAtPicturesIsOverWithItsPanel() {
    const test::FormRig rig;
    document::MessageDocument document;
    document.html = "<img src='a.gif'>";
    for (int i = 0; i < 500; ++i) PicturesPanel(rig.program, nullptr).LookAt(document);
  }

  void noClickMeantForANoticeAnswersAboutPictures() {
    Scene scene;
    scene.rig.FillInAccount();
    const auto home = scene.rig.folder.Write("home/private.gif", "GIF89a\x01");
    scene.Open();
    scene.Find<QLineEdit>("SubjectTextBox").setText("Spring");
    scene.window->Dispatch(CommandId::kNew);
    const auto place = [&](const char* name) {
      QTest::qWait(50);  // until the layout is made
      const auto* button = scene.window->findChild<QPushButton*>(name);
      return QRect(button->mapTo(scene.window.get(), QPoint()), button->size());
    };
    const QRect before = place("RestoreButton").united(place("DiscardButton"));
    scene.rig.prompts.files = {scene.rig.folder.Write("page/letter.html", "<img src='../home/private.gif'>")};
    scene.window->Dispatch(CommandId::kOpen);
    QTRY_VERIFY(scene.Find<QLabel>("PicturesLabel").text().contains(PathToQt(home)));
    QVERIFY(!place("TakePicturesButton").intersects(before));
  }

  void thePreviewListsPicturesAndAsksAboutOthers() {
    test::FormRig rig;
    rig.FillInAccount();
    rig.AddGroup("Customers", {"bob@example.net"});
    document::MessageDocument document;
    document.html = "<img src='own.gif'><img src='../home/private.gif'>";
    document.base_folder = rig.folder.Write("page/own.gif", "GIF89a\x01").parent_path();
    const QString home = PathToQt(rig.folder.Write("home/private.gif", "GIF89a\x01"));
    PreviewForm form(rig.program, document, {**rig.Store().FindGroup("Customers"), 1}, {}, nullptr);
    form.show();
    const auto says = [&](const QString& words) { return !test::RowsOf(form, "NotesList").filter(words).isEmpty(); };
    const auto* send = form.findChild<QPushButton*>("SendToMyselfButton");
    QTRY_VERIFY(says("own.gif goes along") && says(home + " lies outside"));
    QVERIFY(!send->isEnabled());
    auto* take = form.findChild<QPushButton*>("TakePicturesButton");
    QTRY_VERIFY(take->isVisible());
    take->click();
    QTRY_VERIFY(says("private.gif goes along"));
    QTRY_VERIFY(send->isEnabled());
    QVERIFY(form.picture_places().Hold(rig.folder / "home/private.gif"));
  }

  void closingCleansUpAndTheFlagAsksNothing() {
    OpenScene scene;
    QVERIFY(platform::ReplaceFile(scene.rig.folders.PreviewMessage(), "x"));
    const auto needed = scene.rig.folder.Write("data/ImportBody/11-14-2026_22-40-05/a.gif", "GIF89a");
    const auto left = scene.rig.folder.Write("data/ImportBody/11-14-2026_22-40-06/a.gif", "GIF89a");
    scene.Editor().InsertHtml("work <img src=\"" + PathToQt(needed) + "\">");
    scene.window->skip_save_prompt = true;
    QVERIFY(scene.window->close());
    QCOMPARE(scene.rig.Shown(), QString());
    QVERIFY(!std::filesystem::exists(scene.rig.folders.PreviewMessage()));
    QVERIFY(!std::filesystem::exists(left.parent_path()));
    QVERIFY2(std::filesystem::exists(needed), "the draft, which is offered next time, shows it");
  }

  void theSourceCanBeEdited() {
    OpenScene scene;
    scene.Editor().SetHtml("<html><head><!-- kept --></head>\r\n<body><p>one</p></body></html>");
    auto* source = scene.window->findChild<QPlainTextEdit*>("SourceTextBox");
    scene.window->Dispatch(CommandId::kSource);
    QVERIFY(source->isVisible());
    scene.window->Dispatch(CommandId::kSource);
    QVERIFY(!scene.Editor().IsModified());
    QVERIFY(scene.Editor().Text()->contains("\r\n"));
    scene.window->Dispatch(CommandId::kSource);
    source->setPlainText("<html><body><p>two</p></body></html>");
    QTRY_VERIFY(std::filesystem::exists(scene.rig.folders.data / "Autosave.htm"));
    scene.window->Dispatch(CommandId::kSource);
    QVERIFY(scene.Editor().IsModified());
    QCOMPARE(scene.Editor().PlainText(), QString("two"));

    // One change leaves the rest as it is: no-break spaces, and line ends of both kinds.
    scene.Editor().SetHtml(QString::fromUtf8("<title>a\u00a0b</title>\r\n<body><p>c\u00a0!</p></body>\r\n"));
    scene.window->Dispatch(CommandId::kSource);
    source->moveCursor(QTextCursor::Start);
    source->insertPlainText("<!-- new -->");
    QTest::keyClick(source, Qt::Key_Return, Qt::ShiftModifier);
    scene.window->Dispatch(CommandId::kSource);
    QCOMPARE(*scene.Editor().Text(),
             QString::fromUtf8("<!-- new -->\r\n<title>a\u00a0b</title>\r\n<body><p>c\u00a0!</p></body>\r\n"));

    // What the editor cannot show stays in the source, and is saved from there.
    scene.window->Dispatch(CommandId::kSource);
    source->setPlainText(kDeep);
    for (const CommandId command : {CommandId::kSource, CommandId::kBold, CommandId::kLine, CommandId::kSource}) {
      scene.Find<QLabel>("StatusPanel1").clear();
      scene.window->Dispatch(command);
      QVERIFY(source->isVisible() && scene.Status().contains("stand in each other"));
    }
    const auto file = scene.rig.folder.path() / "deep.html";
    scene.rig.prompts.files = {file};
    scene.window->Dispatch(CommandId::kSaveAs);
    QVERIFY(ToQt(test::ReadAll(file)).endsWith(kDeep) && !scene.Editor().IsModified());
    scene.window->Dispatch(CommandId::kNew);
    QVERIFY(!source->isVisible() && scene.Editor().isVisible());
    scene.rig.prompts.files = {file};
    scene.window->Dispatch(CommandId::kOpen);
    QVERIFY(source->isVisible() && source->toPlainText().endsWith(kDeep) && !scene.Editor().IsModified());
    QCOMPARE(scene.Focus(), QString("SourceTextBox"));
    source->setPlainText("<p>mended");
    scene.window->Dispatch(CommandId::kSource);
    QCOMPARE(scene.Editor().PlainText(), QString("mended"));
  }

  void aCrashOfThePageLeavesTheSourceAsItStands() {
    for (const QString& html : {QString("<p>one</p>"), kDeep}) {
      OpenScene scene;
      scene.Editor().SetHtml(html);
      auto& source = scene.Find<QPlainTextEdit>("SourceTextBox");
      if (!source.isVisible()) scene.window->Dispatch(CommandId::kSource);
      QCOMPARE(scene.Find<QLabel>("DocumentLabel").text(), QString("New message"));
      QTest::keyClicks(&source, "typed");
      QCOMPARE(scene.Find<QLabel>("DocumentLabel").text(), QString("New message, not saved"));
      QSignalSpy restored(&scene.Editor(), &HtmlEditor::Restored);
      const auto page = scene.Editor().findChild<QWebEnginePage*>()->renderProcessPid();
      QCOMPARE(::kill(static_cast<pid_t>(page), SIGKILL), 0);
      QTRY_COMPARE(restored.size(), 1);
      QVERIFY(source.isVisible() && source.toPlainText() == "typed" + html);
      QCOMPARE(scene.Focus(), QString("SourceTextBox"));
      QCOMPARE(scene.Find<QLabel>("DocumentLabel").text(), QString("New message, not saved"));
      scene.window->Dispatch(CommandId::kSource);
      QCOMPARE(*scene.Editor().Text(), "typed" + html);
    }
  }

  void thePreviewCallsNothingRightThatHasAFault() {
    test::FormRig rig;
    rig.FillInAccount();
    rig.AddGroup("Customers", {"a@example.org"});
    for (const bool is_missing : {true, false}) {
      document::MessageDocument document;
      document.html = "<p>x</p>";
      document.attachments.Add(is_missing ? "/nowhere/price.pdf" : rig.folder.Write("price.pdf", "x").string());
      PreviewForm form(rig.program, document, {**rig.Store().FindGroup("Customers"), 1}, {}, nullptr);
      auto* label = form.findChild<QLabel*>("NotesLabel");
      QTRY_VERIFY(!label->text().contains("Looking"));
      QCOMPARE(!test::RowsOf(form, "NotesList").filter("price.pdf").isEmpty(), is_missing);
      QCOMPARE(label->text().contains("Nothing was found"), !is_missing);
    }
  }

  void thePreviewShowsThePartsThatGoOut() {
    test::FormRig rig;
    rig.FillInAccount();
    rig.AddGroup("Customers", {"a@example.org"});
    document::MessageDocument document;
    document.html = "<p>x</p>";
    for (const auto& [encoding, text_part, tabs] :
         {std::tuple("MIME", "1", "&HTML &Text"), std::tuple("MIME", "0", "&HTML"),
          std::tuple("Plain", "1", "&Text")}) {
      QVERIFY(rig.settings.Write("Advanced", "Encoding", encoding));
      QVERIFY(rig.settings.Write("Account", "TextPart", text_part));
      for (const int recipients : {0, 1}) {
        PreviewForm form(rig.program, document, {**rig.Store().FindGroup("Customers"), recipients}, {}, nullptr);
        form.show();
        const auto shown = [&] {
          const auto* all = form.findChild<QTabWidget*>("PreviewTabs");
          QStringList names;
          for (int tab = 0; tab < all->count(); ++tab) {
            if (all->isTabVisible(tab)) names << all->tabText(tab);
          }
          return names.join(' ');
        };
        QTRY_COMPARE(test::Text(form, "SubjectLabel"), QString("(no subject)"));
        QCOMPARE(shown(), QString(tabs));
        QVERIFY(form.findChild<QTabWidget*>("PreviewTabs")->currentWidget()->isVisible());
        auto* send = form.findChild<QPushButton*>("SendToMyselfButton");
        QTRY_COMPARE(send->isEnabled(), recipients > 0);
        QCOMPARE(test::Text(form, "StatusLine").contains("choose a group"), recipients == 0);
      }
    }
  }

  void recoveringAsksBeforeWhatWasTypedIsLost() {
    Scene scene;
    scene.rig.folder.Write("data/Autosave.htm", "<html><body>recovered</body></html>");
    scene.Open();
    scene.Editor().InsertHtml("new text");
    const auto restore = [&] { Press(scene, "RestoreButton"); };
    scene.rig.prompts.answers = {platform::Answer::kCancel};
    restore();
    QCOMPARE(scene.rig.Shown(), QString("ask or cancel: Do you want to save the changes?"));
    QVERIFY(scene.Editor().Text()->contains("new text"));
    scene.rig.prompts.answers = {platform::Answer::kNo};
    restore();
    QVERIFY(scene.Editor().Text()->contains("recovered"));
  }

  // A draft that the editor cannot show stands before none that it can.
  void aDraftThatIsNestedTooDeeplyComesAsSource() {
    Scene scene;
    scene.rig.folder.Write("data/Recovered.htm", kDeep.toStdString());
    scene.rig.folder.Write("data/Autosave.htm", "<html><body>later</body></html>");
    scene.Open();
    auto* source = scene.window->findChild<QPlainTextEdit*>("SourceTextBox");
    Press(scene, "RestoreButton");
    QVERIFY(source->isVisible() && source->toPlainText() == kDeep);
    QVERIFY2(scene.Status().contains("stand in each other"), qPrintable(scene.Status()));
    QCOMPARE(scene.Focus(), QString("SourceTextBox"));
    scene.rig.prompts.answers = {platform::Answer::kNo};
    Press(scene, "RestoreButton");
    QVERIFY(scene.Editor().isVisible() && scene.Editor().Text()->contains("later"));
    QCOMPARE(scene.Focus(), QString("Editor"));
    QVERIFY2(!scene.Notice().isEmpty(), "it is lost");
  }

  static void Import(Scene& scene, const std::filesystem::path& message, QString* told = nullptr) {
    test::WhileOpen("ExtraForm2", [&](QDialog& form) {
      form.findChild<QLineEdit*>("FilePathTextBox")->setText(PathToQt(message));
      form.findChild<QPushButton*>("ImportButton")->click();
      QTRY_VERIFY(form.findChild<QPushButton*>("ImportButton")->isEnabled());
      if (told != nullptr) *told = test::Text(form, "StatusLine");
    });
    scene.window->Dispatch(CommandId::kExtraForm2);
    QCOMPARE(scene.rig.Shown(), "inform: Import process has been completed.");
  }

  void anImportKeepsAnOpenedLetterAndNothingOfAnEmptyOne() {
    for (const auto& [name, restored] :
         {std::pair("letter.html", "a letter"), {"letter.txt", "a letter"}, {"", "of last week"}}) {
      const bool is_opened = *name != '\0';
      Scene scene;
      scene.rig.folder.Write("data/Recovered.htm", "<p>of last week");
      IgnoreErrors(scene.rig.settings.Write("Advanced", "Encoding", "Plain"));
      scene.Open();
      const bool is_text = std::string_view(name).ends_with(".txt");
      if (is_opened) {
        scene.rig.prompts.files = {
            scene.rig.folder.Write(name, is_text ? "a letter" : "<html><body><p>a letter</p></body></html>").string()};
        scene.window->Dispatch(CommandId::kOpen);
      }
      scene.rig.Shown();
      QString told;
      Import(scene, scene.rig.folder.Write("a.eml", "Content-Type: text/html\r\n\r\n<p>imported"), &told);
      QCOMPARE(told.contains("is kept"), is_opened);
      Press(scene, "RestoreButton");
      QTRY_COMPARE(scene.Editor().PlainText().trimmed(), restored);
    }
  }

  void oneImportAfterTheOtherIsTakenBack() {
    Scene scene;
    scene.rig.folder.Write("data/Recovered.htm", "<p>of last week");
    IgnoreErrors(scene.rig.settings.Write("Advanced", "Encoding", "Plain"));
    scene.Open();
    scene.Editor().InsertHtml("work");
    for (const char* text : {"first", "second"}) {
      Import(scene, scene.rig.folder.Write(std::string(text) + ".eml",
                                           std::string("Content-Type: text/html\r\n\r\n<p>") + text));
    }
    for (const char* text : {"first", "work", "of last week", "second"}) {
      scene.rig.prompts.answers = {platform::Answer::kNo};
      Press(scene, "RestoreButton");
      QTRY_COMPARE(scene.Editor().PlainText().trimmed(), text);
    }
  }

  void anImportKeepsWhatItReplaces() {
    Scene scene;
    scene.rig.AddGroup("Customers", {"a@x.org"});
    scene.Open();
    const QString before = FillIn(scene);
    const auto message = scene.rig.folder.Write(
        "a.eml", "Subject: Spring sale\r\nContent-Type: text/html\r\n\r\n<script>x</script><p>Hello <b>you</b>");
    IgnoreErrors(scene.rig.settings.Write("Advanced", "Encoding", "Plain"));  // picking HTML would be refused in a box
    Import(scene, message);
    QCOMPARE(
        Fields(scene),
        QString(before).replace("Spring|", "Spring sale|").replace("|Text|", "|HTML|").replace("|work", "|Hello you"));
    QVERIFY(scene.Editor().Text()->contains("<p>Hello <b>you</b>"));
    scene.rig.prompts.answers = {platform::Answer::kCancel};  // it has no name yet, and is in no file
    scene.window->Dispatch(CommandId::kNew);
    QCOMPARE(scene.rig.Shown(), "ask or cancel: Do you want to save the changes?");
    Press(scene, "RestoreButton");
    QTRY_COMPARE(Fields(scene), before);
    QCOMPARE(scene.rig.Shown(), "");
    QVERIFY2(scene.Notice().contains("Spring sale"), "the import is lost");
    scene.rig.prompts.answers = {platform::Answer::kNo};
    Press(scene, "RestoreButton");
    QTRY_VERIFY(Fields(scene).contains("Spring sale|"));
    scene.rig.Shown();
    scene.Editor().InsertHtml("more");  // which is work
    scene.rig.prompts.answers = {platform::Answer::kCancel};
    Press(scene, "RestoreButton");
    QCOMPARE(scene.rig.Shown(), "ask or cancel: Do you want to save the changes?");
  }

  // Everything that stands in the window, one line each.
  static QString Fields(const Scene& scene) {
    auto* box = scene.window->findChild<QComboBox*>("AttachmentComboBox");
    QStringList lines = {scene.Find<QLineEdit>("SubjectTextBox").text(),
                         scene.Box("ToComboBox"),
                         scene.Box("PriorityComboBox"),
                         scene.Box("FormatComboBox"),
                         scene.Box("SendingMethodComboBox"),
                         scene.Find<QCheckBox>("RRRCheckBox").isChecked() ? "receipt" : "none"};
    for (int i = 0; i < box->count(); ++i) lines << box->itemText(i);
    return lines.join('|') + '|' + scene.Editor().PlainText().trimmed();
  }
  static QString FillIn(const Scene& scene) {
    scene.Find<QLineEdit>("SubjectTextBox").setText("Spring");
    scene.Find<QComboBox>("ToComboBox").setCurrentText("Customers");
    scene.Find<QComboBox>("PriorityComboBox").setCurrentText("High");
    scene.Find<QComboBox>("FormatComboBox").setCurrentText("Text");
    scene.Find<QComboBox>("SendingMethodComboBox").setCurrentText("Bulk Sending");
    scene.Find<QCheckBox>("RRRCheckBox").setChecked(true);
    scene.window->findChild<MessageHeader*>()->AddAttachments({"/tmp/a.pdf", "/tmp/b.pdf"});
    scene.Editor().InsertHtml("work");
    return "Spring|Customers|High|Text|Bulk Sending|receipt|/tmp/a.pdf|/tmp/b.pdf|work";
  }
  // A letter that could be sent.
  static void WriteToFriends(const Scene& scene) {
    scene.rig.AddGroup("Friends", {"bob@example.net"});
    auto& to = scene.Find<QComboBox>("ToComboBox");
    to.addItem("Friends");
    to.setCurrentText("Friends");
    QTest::keyClicks(&scene.Find<QLineEdit>("SubjectTextBox"), "x");
    scene.Editor().InsertHtml("<p>Dear you</p>");
  }
  static void Press(const Scene& scene, const char* button) {
    QTest::mouseClick(&scene.Find<QPushButton>(button), Qt::LeftButton);
  }

  void closingKeepsAllFieldsForTheNextStart() {
    Scene scene;
    scene.rig.FillInAccount();
    scene.rig.AddGroup("Customers", {"bob@example.net"});
    scene.Open();
    const QString filled = FillIn(scene);
    QVERIFY(scene.window->close());
    QCOMPARE(scene.rig.Shown(), QString("ask or cancel: Do you want to save the changes?"));
    scene.Open();
    QCOMPARE(Fields(scene), QString("||Normal|HTML||none|"));
    QCOMPARE(scene.Notice(), QString("An unfinished message was kept: “Spring”."));
    Press(scene, "RestoreButton");
    QCOMPARE(Fields(scene), filled);
    QVERIFY(scene.Editor().IsModified());
    QCOMPARE(scene.Notice(), QString());
    // A body that is saved comes back as its file.
    scene.rig.prompts.files = {scene.rig.folder / "letter.html"};
    scene.window->Dispatch(CommandId::kSave);
    scene.rig.Shown();
    QVERIFY(scene.window->close());
    scene.Open();
    Press(scene, "RestoreButton");
    QCOMPARE(Fields(scene), filled);
    QVERIFY(!scene.Editor().IsModified());
    scene.Editor().InsertHtml("more");
    scene.window->Dispatch(CommandId::kSave);
    QVERIFY(platform::ReadFile(scene.rig.folder / "letter.html", 1000)->find("more") != std::string::npos);
    QCOMPARE(scene.rig.Shown(), QString());
    // A message without work leaves nothing.
    scene.Find<QLineEdit>("SubjectTextBox").clear();
    scene.window->findChild<MessageHeader*>()->Clear();
    QVERIFY(scene.window->close());
    scene.Open();
    QCOMPARE(scene.Notice(), QString());
  }

  void aSubjectAloneIsKeptWhileItIsTyped() {
    OpenScene scene;
    QTest::keyClicks(scene.window->findChild<QLineEdit*>("SubjectTextBox"), "Spring");
    QTRY_VERIFY(std::filesystem::exists(scene.rig.folders.data / "Autosave.fields"));
    QVERIFY(!scene.Editor().IsModified());
    // So is the group that was made for it; whom the message goes to says the person alone.
    test::WhileOpen("GroupManagerForm", [](QDialog& manager) {
      test::WhileOpen("GroupNewForm", [](QDialog& form) {
        QTest::keyClicks(form.findChild<QLineEdit*>(), "Gardeners");
        QTest::keyClick(&form, Qt::Key_Return);
      });
      test::Press(manager, "NewGroupButton");
    });
    Press(scene, "GroupButton");
    QCOMPARE(scene.Box("ToComboBox"), QString());
    QCOMPARE(scene.Find<QComboBox>("ToComboBox").count(), 1);
    scene.Find<QComboBox>("ToComboBox").setCurrentIndex(0);
    QTRY_VERIFY(platform::ReadFile(scene.rig.folders.data / "Autosave.fields", 10000)->find("Group: Gardeners") !=
                std::string::npos);
  }

  void newClearsAllFieldsAndKeepsThem() {
    Scene scene;
    scene.rig.FillInAccount();
    scene.rig.AddGroup("Customers", {"bob@example.net"});
    scene.Open();
    const QString filled = FillIn(scene);
    scene.rig.prompts.answers = {platform::Answer::kCancel};
    scene.window->Dispatch(CommandId::kNew);
    QCOMPARE(Fields(scene), filled);
    scene.rig.prompts.answers = {platform::Answer::kNo};
    scene.window->Dispatch(CommandId::kNew);
    QCOMPARE(Fields(scene), QString("||Normal|HTML||none|"));
    QCOMPARE(scene.Notice(), QString("An unfinished message was kept: “Spring”."));
    scene.rig.Shown();
    // What stands there when it is taken up again is kept in its turn.
    scene.Find<QLineEdit>("SubjectTextBox").setText("Autumn");
    Press(scene, "RestoreButton");
    QCOMPARE(scene.rig.Shown(), QString());
    QCOMPARE(Fields(scene), filled);
    QCOMPARE(scene.Notice(), QString("An unfinished message was kept: “Autumn”."));
    Press(scene, "DiscardButton");
    QCOMPARE(scene.Notice(), QString());
  }

  void aDraftThatCannotBeKeptHoldsTheWindowOnce() {
    OpenScene scene;
    std::filesystem::create_directories(scene.rig.folders.data / "Autosave.fields" / "in the way");
    scene.Find<QLineEdit>("SubjectTextBox").setText("Spring");
    QVERIFY(!scene.window->close());
    QVERIFY2(scene.Status().contains("Autosave.fields"), qPrintable(scene.Status()));
    // One that was kept since is lost again only after a word of it.
    std::filesystem::remove_all(scene.rig.folders.data / "Autosave.fields");
    scene.Find<QLineEdit>("SubjectTextBox").setText("Summer");
    QTRY_VERIFY(std::filesystem::exists(scene.rig.folders.data / "Autosave.fields"));
    std::filesystem::remove(scene.rig.folders.data / "Autosave.fields");
    std::filesystem::create_directories(scene.rig.folders.data / "Autosave.fields" / "in the way");
    QVERIFY(!scene.window->close());
    QVERIFY(scene.window->close());
    QCOMPARE(scene.rig.Shown(), QString());
  }

  void severalAttachmentsAreTakenOutAtOnce() {
    OpenScene scene;
    auto* header = scene.window->findChild<MessageHeader*>();
    auto* total = scene.window->findChild<QPushButton*>("AttachmentCountButton");
    auto* box = scene.window->findChild<QComboBox*>("AttachmentComboBox");
    QVERIFY(!total->isVisible());
    QStringList files;
    for (const char* name : {"a.pdf", "b.pdf", "c.pdf"}) files << PathToQt(scene.rig.folder.Write(name, "123456"));
    header->AddAttachments(files + QStringList{"/nowhere/d.pdf"});
    QCOMPARE(total->text(), QString::fromUtf8("4 files, 18 bytes, 1 not there…"));
    box->setCurrentIndex(-1);
    scene.window->Dispatch(CommandId::kDeleteAttachment);
    QCOMPARE(scene.rig.Shown(), QString("warn: Please specify a file to delete."));
    QCOMPARE(scene.Focus(), QString("AttachmentComboBox"));
    const auto take_out = [](QDialog& form, QDialogButtonBox::StandardButton end) {
      auto* list = form.findChild<QTableView*>("AttachmentsList");
      for (const int row : {0, 2, 3})
        list->selectionModel()->select(list->model()->index(row, 0), QItemSelectionModel::Select);
      test::Press(form, "RemoveButton");
      QCOMPARE(test::Text(form, "AttachmentsTotal"), QString("1 file, 6 bytes"));
      QTest::mouseClick(form.findChild<QDialogButtonBox*>()->button(end), Qt::LeftButton);
    };
    test::WhileOpen("AttachmentsForm", [&](QDialog& form) { take_out(form, QDialogButtonBox::Cancel); });
    QTest::mouseClick(total, Qt::LeftButton);
    QCOMPARE(box->count(), 4);
    test::WhileOpen("AttachmentsForm", [&](QDialog& form) { take_out(form, QDialogButtonBox::Ok); });
    QTest::mouseClick(total, Qt::LeftButton);
    QCOMPARE(box->count(), 1);
    QCOMPARE(box->currentText(), files.at(1));
    QCOMPARE(total->text(), QString::fromUtf8("1 file, 6 bytes…"));
    QCOMPARE(scene.rig.Shown(), QString());
  }

  void previewOpensTheMessageWithItsTags() {
    Scene scene;
    scene.rig.FillInAccount();
    scene.Open();
    scene.Editor().InsertHtml("<p>Dear $*MergeFirstName*$</p>");
    scene.window->Dispatch(CommandId::kMailPreview);
    QCOMPARE(scene.rig.desktop.opened, std::vector<std::string>{"Preview.eml"});
    // What is sent names its character set, too: the account's.
    const auto message = platform::ReadFile(scene.rig.folders.PreviewMessage(), 100000);
    for (const char* there : {"$*MergeFirstName*$", "<meta charset=3D\"windows-1252\">"})
      QVERIFY2(message->find(there) != std::string::npos, message->c_str());
    QVERIFY(scene.Editor().IsModified());
  }

  void aBeginnerPractisesFromNothingToArrivedMessages() {
    OpenScene scene;
    Press(scene, "PractiseButton");
    QVERIFY(scene.Notice().contains("Practice"));
    QCOMPARE(scene.Box("FromComboBox"), QString("Practice <practice@quillcast.example>"));
    scene.rig.AddGroup("Friends", {"bob@example.net", "eve@example.net"});
    scene.rig.prompts.files = {scene.rig.folder.Write("more.txt", "Call Mallory, mallory@example.net, tomorrow.")};
    scene.rig.prompts.answers = {platform::Answer::kYes};
    scene.Find<QComboBox>("ToComboBox").addItem("Friends");
    scene.Find<QComboBox>("ToComboBox").setCurrentText("Friends");
    test::WhileOpen("RecipientImportForm", [&](QDialog& form) {
      for (const char* button : {"RadioButton1", "BrowseButton", "ImportButton"})
        QTest::mouseClick(form.findChild<QAbstractButton*>(button), Qt::LeftButton, {}, {5, 5});
      QTRY_COMPARE(*scene.rig.Store().CountRecipients("Friends"), std::int64_t{3});
      QTRY_VERIFY(form.findChild<QPushButton*>("ImportButton")->isEnabled());
    });
    scene.window->Dispatch(CommandId::kImport);
    QTRY_COMPARE(scene.Find<QLabel>("GroupCountLabel").text(), QString("3 recipients"));
    QTest::keyClicks(scene.window->findChild<QLineEdit*>("SubjectTextBox"), "For $*MergeEmail*$");
    scene.Editor().InsertHtml("<p>Dear $*MergeEmail*$</p>");
    scene.rig.Shown();

    test::WhileOpen("PreviewForm", [](QDialog& form) {
      form.findChild<QSpinBox*>("RecipientSpinBox")->setValue(3);
      QTRY_COMPARE(test::Text(form, "SubjectLabel"), QString("For mallory@example.net"));
      QTRY_VERIFY(test::Text(form, "NotesLabel").contains("Nothing was found"));
      QCOMPARE(form.findChild<QPlainTextEdit*>("PreviewText")->toPlainText().trimmed(), "Dear mallory@example.net");
      test::Press(form, "SendToMyselfButton");
      QTRY_VERIFY(test::Text(form, "StatusLine").contains("on its way to practice@"));
    });
    Press(scene, "PreviewButton");

    test::WhileOpen("SendMailForm1", [](QDialog& form) {
      auto* button = form.findChild<QPushButton*>("SendButton");
      QTest::mouseClick(button, Qt::LeftButton);
      QTRY_COMPARE(button->text(), QString("Close"));
    });
    Press(scene, "SendButton");
    QCOMPARE(scene.rig.Shown(), QString());
    QTRY_VERIFY(scene.Notice().contains("4 messages have arrived"));
    const auto message = platform::ReadFile(scene.rig.folders.data / "Practice" / "000002.eml", 100000);
    QVERIFY(message && message->find("Subject: For bob@example.net") != std::string::npos);
    const QString text = ToQt(*message).remove("=\r\n");
    QVERIFY2(text.contains("<p>Dear=20bob@example.net</p>"), qPrintable(text));
    test::WhileOpen("PracticeForm", [](QDialog& form) {
      const auto* list = form.findChild<QTableView*>("PracticeList")->model();
      QCOMPARE(list->rowCount(), 4);
      QCOMPARE(list->index(0, 0).data().toString(), QString("mallory@example.net"));
      QCOMPARE(list->index(2, 1).data().toString(), QString("For bob@example.net"));
      QTRY_VERIFY(form.findChild<QTextBrowser*>("MessagePage")->toPlainText().contains("mallory@example.net"));
      test::WhileOpen("ExtraForm4", [&](QDialog& opened) {
        QVERIFY(test::Text(opened, "FilePathTextBox").endsWith("Practice/000004.eml"));
      });
      test::Press(form, "ExtractButton");
      auto& filter = *form.findChild<QLineEdit*>("FilterTextBox");
      QTest::keyClicks(&filter, "BOB@example");
      QTRY_COMPARE(list->rowCount(), 1);
      QTRY_VERIFY(form.findChild<QTextBrowser*>("MessagePage")->toPlainText().contains("Dear bob@example.net"));
      QTest::keyClicks(&filter, "x");
      QTRY_COMPARE(list->rowCount(), 0);
      QTRY_COMPARE(form.findChild<QTextBrowser*>("MessagePage")->toPlainText(), QString());
      filter.setText(QString::fromUtf8("bob@example.net F\xC3\x96R"));  // words of both fields, whatever their accents
      QTRY_COMPARE(list->rowCount(), 1);
      filter.clear();
      QTRY_COMPARE(list->rowCount(), 4);
      QCOMPARE(form.findChild<QTableView*>("PracticeList")->currentIndex().row(), 2);  // the one that was found
    });
    Press(scene, "ShowPracticeButton");
    Press(scene, "EndPracticeButton");
    QVERIFY(scene.Notice().contains("no mail account"));
    QCOMPARE(scene.Status(), QString("Practice has ended."));
  }

  void practiceEndsWhereAnotherProgramNamesAServer() {
    const QString ended = "Practice has ended: the account names a server of its own now.";
    for (const bool looks_before_the_watch : {false, true}) {
      OpenScene scene;
      Press(scene, "PractiseButton");
      QVERIFY(scene.Notice().contains("nowhere else"));
      profile::SettingsStore theirs(scene.rig.folders.settings);
      QVERIFY(theirs.Write("Account", "Email", "ada@real.example"));
      if (looks_before_the_watch) QVERIFY(theirs.Write("Account", "Name", "Ada"));
      const auto named = [&theirs] {
        return static_cast<bool>(theirs.Write("Account", "Server", "mail.real.example"));
      };
      if (looks_before_the_watch) {
        WriteToFriends(scene);
        test::WhileOpen("SendMailForm1", [](QDialog& form) {
          QVERIFY(test::Text(form, "RouteLabel").contains("over mail.real.example"));
          form.reject();
        });
        QVERIFY(named());
        Press(scene, "SendButton");
        QTRY_COMPARE(scene.Status(), ended);
        QCOMPARE(scene.Notice(), QString());
      } else {
        // A run that goes on may still send there: what is shown is true, and practice ends behind it.
        QDialog above(scene.window.get());
        above.setModal(true);
        above.show();
        QVERIFY(named());
        QTRY_COMPARE(scene.Notice(), QString());
        QVERIFY(!scene.rig.settings.Read("Options", "Practice", "")->empty());
        above.close();
        QTRY_COMPARE(scene.Status(), ended + " It still lacks a name of your own.");
        QVERIFY(scene.Notice().startsWith("The mail account is not complete yet."));
      }
      QVERIFY(scene.rig.settings.Read("Options", "Practice", "")->empty());
      QCOMPARE(scene.rig.settings.Read("Account", "Server", "")->c_str(), "mail.real.example");
      QCOMPARE(scene.rig.settings.Read("Account", "Email", "")->c_str(), "ada@real.example");
    }
  }

  // From the window that sends, by way of the pace of its run, to the account's page.
  void theAccountsPaceIsReachedFromTheSendingWindow() {
    Scene scene;
    scene.rig.FillInAccount("1");
    scene.Open();
    WriteToFriends(scene);
    QString page;
    test::WhileOpen("SendMailForm1", [&](QDialog& send) {
      test::WhileOpen("RunPaceForm", [&](QDialog& pace) {
        test::WhileOpen("EmailManagerForm", [&](QDialog& account) {
          const auto* tabs = account.findChild<QTabWidget*>("AccountTabs");
          page = tabs->tabText(tabs->currentIndex()) + ' ' + account.focusWidget()->objectName();
          account.findChild<QLineEdit*>("RateTextBox")->setText("7/h");
          account.findChild<QPushButton*>("OKButton")->click();
        });
        pace.findChild<QPushButton*>("AccountPaceButton")->click();
        QTRY_COMPARE(test::Text(pace, "RateTextBox"), QString("7/h"));
      });
      send.findChild<QPushButton*>("PaceButton")->click();
      QVERIFY(test::Text(send, "PaceLabel").startsWith("Pace: 7 an hour (the page"));
    });
    Press(scene, "SendButton");
    QCOMPARE(page, QString("Pace RateTextBox"));
  }

  void nothingIsSentOverAServerThatWasNotShown() {
    OpenScene scene;
    Press(scene, "PractiseButton");
    WriteToFriends(scene);
    test::WhileOpen("SendMailForm1", [&](QDialog& form) {
      const auto* route = form.findChild<QLabel*>("RouteLabel");
      QVERIFY(route->text().contains("nowhere else"));
      QVERIFY(scene.rig.settings.Write("Account", "Server", "mail.real.example"));
      auto* button = form.findChild<QPushButton*>("SendButton");
      QTest::mouseClick(button, Qt::LeftButton);
      QTRY_VERIFY(test::Text(form, "StatusLine").startsWith("Nothing was sent: the account"));
      QVERIFY2(button->text() != "Close" && button->text() != "Cancel", qPrintable(button->text()));
      QVERIFY(route->text().contains("over mail.real.example"));
      form.reject();
    });
    Press(scene, "SendButton");
    QTRY_VERIFY(scene.Notice().contains("not complete yet"));
  }

  void thePracticeMailboxIsLookedThroughWhole() {
    test::FormRig rig;
    constexpr int kMessages = 3000;
    for (int n = 1; n <= kMessages; ++n) {
      const std::string to = "person" + std::to_string(n) + "@x.org";
      rig.folder.Write("Practice/" + QString("%1.eml").arg(n, 6, 10, QChar('0')).toStdString(),
                       "To: " + to + "\r\n\r\n");
    }
    std::filesystem::create_directory(rig.folder / "Practice" / "000000.eml");
    PracticeForm form(rig.settings, rig.folder / "Practice", {}, nullptr);
    const auto* list = form.findChild<QTableView*>("PracticeList")->model();
    QCOMPARE(list->rowCount(), kMessages + 1);
    QVERIFY2(!list->index(kMessages, 1).data().toString().isEmpty(), "it does not say why it cannot be read");
    form.findChild<QLineEdit*>("FilterTextBox")->setText("person1@");
    QTRY_COMPARE(list->rowCount(), 1);
    QCOMPARE(list->index(0, 0).data().toString(), QString("person1@x.org"));
  }

  void practiceNeverTakesTheAccountOfItsOwner() {
    OpenScene scene;
    Press(scene, "PractiseButton");
    const std::string port = *scene.rig.settings.Read("Account", "Port", "");
    test::WhileOpen("EmailManagerForm", [](QDialog& form) {
      form.findChild<QLineEdit*>("FullNameTextBox")->setText("Ada");
      form.findChild<QLineEdit*>("EmailTextBox")->setText("ada@example.org");
      test::Press(form, "OKButton");
    });
    scene.window->Dispatch(CommandId::kAccount);
    QVERIFY(scene.Notice().contains("Practice"));  // still its server
    scene.window->skip_save_prompt = true;
    scene.window->close();
    for (const char* file : {"000001.eml", "000001.txt", "000002.eml"}) {
      std::ofstream(scene.rig.folders.data / "Practice" / file) << "Subject: x\r\n";
    }
    scene.rig.folder.Write("data/Recovered.htm", "<p>kept</p>");
    scene.Open();
    QVERIFY2(scene.Notice().contains("2 messages have arrived"), qPrintable(scene.Notice()));  // goes on after a start
    Press(scene, "DiscardButton");                                                             // which stood beside it
    test::WhileOpen("EmailManagerForm", [](QDialog& form) {
      form.findChild<QLineEdit*>("ServerTextBox")->setText("mail.example.org");
      form.findChild<QLineEdit*>("PortTextBox")->setText("587");
      test::Press(form, "OKButton");
    });
    scene.window->Dispatch(CommandId::kAccount);
    QCOMPARE(scene.Notice(), QString());
    scene.window->skip_save_prompt = true;
    scene.window->close();
    scene.Open();
    QCOMPARE(scene.Notice(), QString());
    QCOMPARE(scene.rig.settings.Read("Account", "Server", "")->c_str(), "mail.example.org");
    QCOMPARE(scene.Box("FromComboBox"), QString("Ada <ada@example.org>"));
  }

  void theNoticeOfAMissingAccountIsTrueWhenTheWindowIsComeBackTo() {
    OpenScene scene;
    QDialog other;
    const auto come_back = [&] {
      other.show();
      other.activateWindow();
      QVERIFY(QTest::qWaitForWindowActive(&other));
      scene.window->activateWindow();
      QVERIFY(QTest::qWaitForWindowActive(scene.window.get()));
    };
    auto* practise = scene.window->findChild<QPushButton*>("PractiseButton");
    practise->setFocus();
    come_back();
    QCOMPARE(QApplication::focusWidget(), practise);
    // Pressed before the window has looked.
    scene.rig.FillInAccount("587");
    QTest::mouseClick(practise, Qt::LeftButton);
    QVERIFY2(scene.Status().startsWith("There is a mail account already"), qPrintable(scene.Status()));
    QCOMPARE(scene.Notice(), QString());
    QCOMPARE(scene.rig.settings.Read("Account", "Port", "")->c_str(), "587");
    QVERIFY(scene.rig.settings.DeleteSection("Account"));
    come_back();
    QVERIFY(scene.Notice().contains("no mail account"));
    scene.rig.FillInAccount("587");
    come_back();
    QCOMPARE(scene.Notice(), QString());
    QCOMPARE(scene.Box("FromComboBox"), QString("Ada <ada@example.org>"));
  }

  void practiceThatWasLeftEndsAtTheStart() {
    OpenScene scene;
    Press(scene, "PractiseButton");
    scene.window->skip_save_prompt = true;
    scene.window->close();
    scene.window.reset();
    QVERIFY(scene.rig.settings.Write("Account", "Server", "mail.real.example"));
    scene.Open();
    QVERIFY2(scene.Status().startsWith("Practice has ended: the account names"), qPrintable(scene.Status()));
    QVERIFY(scene.Notice().contains("not complete yet"));
    QCOMPARE(scene.Box("FromComboBox"), QString());
    QCOMPARE(scene.rig.settings.Read("Account", "Email", "")->c_str(), "");
  }

  // What cannot be read for a moment has not ended.
  void practiceOutlastsSettingsThatAreLockedForAMoment() {
    OpenScene scene;
    Press(scene, "PractiseButton");
    QVERIFY(scene.Notice().contains("nowhere else"));
    auto other = platform::Database::Open(scene.rig.folders.settings, platform::OpenMode::kReadWrite);
    QVERIFY(other && other->Execute("BEGIN EXCLUSIVE"));
    scene.window->findChild<Notices*>()->LookAtPractice();
    QVERIFY(scene.Notice().contains("nowhere else"));
    QVERIFY(other->Execute("COMMIT"));
    scene.window->skip_save_prompt = true;
    scene.window->close();
    scene.window.reset();
    QVERIFY(other->Execute("BEGIN EXCLUSIVE"));
    scene.Open();
    QCOMPARE(scene.Box("PriorityComboBox"), QString("Normal"));
    QVERIFY(!scene.Notice().contains("nowhere else"));
    QVERIFY(other->Execute("COMMIT"));
    QTRY_VERIFY(scene.Notice().contains("nowhere else"));
  }

  void theSplashStandsForASecondBeforeTheWindow() {
    test::FormRig rig;
    QVERIFY(rig.settings.Write("Options", "Tips", "0"));
    SplashForm steps("Any System 1");
    QSignalSpy values(steps.findChild<QProgressBar*>(), &QProgressBar::valueChanged);
    steps.Run();
    QCOMPARE(values.size(), 500);
    QCOMPARE(values.first().first().toInt() * 1000 + values.last().first().toInt(), 1500);
    QCOMPARE(test::Text(steps, "VersionNumber"), QString("1.0"));
    QCOMPARE(test::Text(steps, "WindowsVersion"), QString("Any System 1"));
    steps.close();

    QElapsedTimer since;
    since.start();
    const auto window = StartWindow(rig.program);
    QPointer<SplashForm> splash;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
      if (widget != &steps && widget->objectName() == "SplashForm") splash = qobject_cast<SplashForm*>(widget);
    }
    QVERIFY(splash && splash->isVisible() && !window->isVisible());
    QCOMPARE(test::Text(*splash, "WindowsVersion"), ToQt(platform::SystemName()));
    QVERIFY(QApplication::overrideCursor() != nullptr);
    QTRY_VERIFY(window->isVisible());
    QVERIFY2(since.elapsed() >= 1000, qPrintable(QString::number(since.elapsed())));
    QTRY_VERIFY(!splash);
    QVERIFY(QApplication::overrideCursor() == nullptr);
    window->skip_save_prompt = true;
    window->close();

    QVERIFY(rig.settings.Write("Options", "Splash", "0"));
    const auto at_once = StartWindow(rig.program);
    for (QWidget* widget : QApplication::topLevelWidgets())
      QVERIFY(widget == &steps || !widget->inherits("SplashForm"));
    QTRY_VERIFY(at_once->isVisible());
    at_once->skip_save_prompt = true;
    at_once->close();
  }

  void theStartOpensOneWindowAtATime() {
    struct Case {
      const char *splash, *file, *opens;
    };
    for (const Case& c :
         {Case{"0", "", "TipsForm over New message"}, Case{"0", "letter.html", "TipsForm over letter.html"},
          Case{"0", "letter.eml", "MessageForm over New message"},
          Case{"1", "letter.eml", "MessageForm over New message"}}) {
      test::FormRig rig;
      QVERIFY(rig.settings.Write("Options", "Splash", c.splash));
      const auto window = StartWindow(rig.program);
      QStringList opened;
      QTimer look;
      connect(&look, &QTimer::timeout, window.get(), [&] {
        QStringList names;
        for (QWidget* widget : QApplication::topLevelWidgets()) {
          if (!widget->isVisible() || qobject_cast<QDialog*>(widget) == nullptr) continue;
          names << widget->objectName();
          QTimer::singleShot(0, widget, &QWidget::close);
        }
        const QString letter = test::Text(*window, "DocumentLabel");
        if (!names.isEmpty())
          opened << names.join('+') + " over " + letter + (window->isVisible() ? "" : " before the window");
      });
      look.start(100);
      if (*c.file != 0) window->Open({rig.folder.Write(c.file, "Subject: x\r\n\r\nx")});
      QTRY_VERIFY(window->isVisible() && !opened.isEmpty());
      QTest::qWait(250);
      QCOMPARE(opened, QStringList(c.opens));
      window->skip_save_prompt = true;
      window->close();
    }
  }

  void thePanelsOfTheLocksAreDimmedUnlessTheyHold() {
    OpenScene scene;
    const auto lit = [&scene] {
      QString names;
      for (int i = 2; i <= 4; ++i) {
        auto* panel = scene.window->findChild<QLabel*>(QString("StatusPanel%1").arg(i));
        if (panel->isEnabled()) names += panel->text() + ' ';
      }
      return names;
    };
    QCOMPARE(lit(), QString("INS "));
    struct Key {
      Qt::Key key;
      quint32 scan_code, modifiers;  // as the system counts them, before the key
      const char* lit;
    };
    for (const Key& c : {Key{Qt::Key_A, 38, 0x10, "INS NUM "}, Key{Qt::Key_CapsLock, 66, 0x10, "INS CAPS NUM "},
                         Key{Qt::Key_A, 38, 0x12, "INS CAPS NUM "}, Key{Qt::Key_A, 0, 0, "INS CAPS NUM "},
                         Key{Qt::Key_NumLock, 77, 0x12, "INS CAPS "}, Key{Qt::Key_CapsLock, 66, 0x02, "INS "}}) {
      QKeyEvent press(QEvent::KeyPress, c.key, Qt::NoModifier, c.scan_code, 0, c.modifiers);
      QCoreApplication::sendEvent(scene.window->findChild<QLineEdit*>("SubjectTextBox"), &press);
      QCOMPARE(lit(), QString(c.lit));
    }
  }

  void theSubjectHasAMenuOfTagsOfItsOwn() {
    OpenScene scene;
    auto* subject = scene.window->findChild<QLineEdit*>("SubjectTextBox");
    subject->setText("For  only");
    subject->setCursorPosition(4);
    auto* tags = scene.window->findChild<QMenu*>("SubjectTagMenu");
    QCOMPARE(tags->actions().size(), 18);
    tags->actions().at(2)->trigger();
    QCOMPARE(subject->text(), QString("For $*MergeFirstName*$ only"));
    QCOMPARE(scene.Focus(), QString("SubjectTextBox"));
    QVERIFY(!scene.Editor().IsModified());
    emit subject->customContextMenuRequested({});
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    QVERIFY(menu != nullptr && menu->actions().contains(tags->menuAction()));
    menu->close();
  }

  void anotherMethodSaysThatARunIsPersonal() {
    OpenScene scene;
    auto* method = scene.window->findChild<QComboBox*>("SendingMethodComboBox");
    for (const auto& [index, is_said] :
         {std::pair{0, false}, std::pair{1, true}, std::pair{0, false}, std::pair{2, true}}) {
      scene.window->Say("x");
      method->setCurrentIndex(index);
      emit method->activated(index);
      QCOMPARE(scene.Status().contains("personal"), is_said);
    }
  }
};

}  // namespace quillcast::desktop

QTEST_MAIN(quillcast::desktop::MainFormTest)
#include "main_form_test.moc"
