// The windows of the Help menu: the help itself, the tutorial, the tips, the update check, and what the program is.
#include <QAbstractItemView>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>
#include <QTextBrowser>
#include <QUrl>

#include "desktop/account/email_manager_form.h"
#include "desktop/document/html_editor.h"
#include "desktop/main_window.h"
#include "desktop/run/run_pace_form.h"
#include "desktop/run/send_mail_form1.h"
#include "desktop/shell/help_form.h"
#include "desktop/shell/help_key.h"
#include "desktop/shell/main_form.h"
#include "desktop/shell/tips_form.h"
#include "desktop/shell/tutorial_form.h"
#include "desktop/shell/update_main_form.h"
#include "desktop/tab_walk.h"

namespace quillcast::desktop {

class HelpFormsTest : public QObject {
  Q_OBJECT

  static void PressIn(QWidget& form, const char* button) {
    QTest::mouseClick(form.findChild<QPushButton*>(button), Qt::LeftButton);
  }

 private slots:
  void theTutorialDoesEachStepForWhoeverAsks() {
    OpenScene scene;
    scene.window->Dispatch(CommandId::kTutorial);
    scene.window->Dispatch(CommandId::kTutorial);
    QCOMPARE(scene.window->findChildren<TutorialForm*>().size(), 1);
    auto* tutorial = scene.window->findChild<TutorialForm*>();
    const auto do_it = [&] { PressIn(*tutorial, "DoItButton"); };
    const auto says = [&] { return tutorial->findChild<QLabel*>("StatusLine")->text(); };
    const auto next = [&] { PressIn(*tutorial, "NextButton"); };
    for (int page = 0; page < 5; ++page) next();
    do_it();
    QVERIFY2(says().contains("Practice is off, so these letters would go to a real server."), qPrintable(says()));
    for (int page = 0; page < 4; ++page) PressIn(*tutorial, "BackButton");
    do_it();
    QCOMPARE(says(), QString("Practice is on."));
    next();
    do_it();
    QCOMPARE(says(), QString("The letter goes to Tutorial."));
    QCOMPARE(*scene.rig.Store().CountRecipients("Tutorial"), 3);
    do_it();  // again does no harm
    QCOMPARE(*scene.rig.Store().CountRecipients("Tutorial"), 3);
    next();
    do_it();
    QCOMPARE(scene.Find<QLineEdit>("SubjectTextBox").text(), QString("Hello $*MergeFirstName*$"));
    QVERIFY(scene.Editor().Text()->contains("Dear $*MergeFirstName*$"));
    QCOMPARE(scene.Find<QComboBox>("ToComboBox").currentText(), QString("Tutorial"));
    next();
    const auto has_the_keys = [&] {
      return tutorial->isActiveWindow() && tutorial->focusWidget()->objectName() == "DoItButton";
    };
    test::WhileOpen("PreviewForm", [&](QDialog& form) {
      // As desktops do where a window goes.
      connect(&form, &QDialog::finished, scene.window.get(), [&] { scene.window->activateWindow(); });
    });
    do_it();
    QTRY_VERIFY(has_the_keys());  // or the next key would be typed into the letter
    next();
    test::WhileOpen("SendMailForm1", [&](QDialog& form) {
      QVERIFY(!tutorial->isVisible());  // nothing covers what stops a run
      auto& send = static_cast<SendMailForm1&>(form);
      PressIn(form, "SendButton");
      QTRY_COMPARE(send.stage(), SendMailForm1::Stage::kFinished);
    });
    do_it();
    QTRY_VERIFY(tutorial->isVisible());
    QTRY_VERIFY(has_the_keys());
    QCOMPARE(says(), QString("Letters have arrived."));
    next();
    test::WhileOpen("PracticeForm", [](QDialog& form) {
      QTRY_COMPARE(form.findChild<QAbstractItemView*>("PracticeList")->model()->rowCount(), 3);
    });
    do_it();
    next();
    QCOMPARE(tutorial->focusWidget()->objectName(), QString("CloseButton"));
    do_it();
    QCOMPARE(says(), QString("Practice is off."));
    QCOMPARE(*scene.rig.settings.Read("Account", "Server", ""), std::string());
  }

  void theTutorialKeepsItsHandsOffAnAccount() {
    Scene scene;
    scene.rig.FillInAccount();
    const auto server = *scene.rig.settings.Read("Account", "Server", "");
    scene.Open();
    scene.window->Dispatch(CommandId::kTutorial);
    auto* tutorial = scene.window->findChild<TutorialForm*>();
    PressIn(*tutorial, "NextButton");
    PressIn(*tutorial, "DoItButton");
    const QString said = tutorial->findChild<QLabel*>("StatusLine")->text();
    QVERIFY2(said.contains("There is a mail account already"), qPrintable(said));
    for (int page = 1; page < 6; ++page) {  // to the sending, and to what arrived
      PressIn(*tutorial, "NextButton");
      if (page < 4) continue;
      PressIn(*tutorial, "DoItButton");  // no window opens, or the test would wait for ever
      QCOMPARE(tutorial->findChild<QLabel*>("StatusLine")->text(), said);
    }
    QCOMPARE(*scene.rig.settings.Read("Account", "Server", ""), server);
  }

  void theHelpShowsItsContentsSearchesAndGoesBack() {
    OpenScene scene;
    scene.window->Dispatch(CommandId::kHelpTopics);
    auto* help = scene.window->findChild<HelpForm*>();
    auto* page = help->findChild<QTextBrowser*>("HelpPage");
    auto* contents = help->findChild<QAbstractItemView*>("ContentsList");
    const auto row = [&](int at) { return contents->model()->index(at, 0).data().toString(); };
    const auto open = [&] { return page->source().fileName(); };
    QVERIFY(contents->model()->rowCount() >= 25);
    QCOMPARE(row(0) + '|' + open(), QString("Welcome|Welcome.htm"));
    QCOMPARE(contents->currentIndex().row(), 0);
    contents->setCurrentIndex(contents->model()->index(1, 0));
    QCOMPARE(row(1) + '|' + open(), QString("Your first mailing|First Mailing.htm"));
    PressIn(*help, "BackButton");
    QCOMPARE(open(), QString("Welcome.htm"));
    QCOMPARE(contents->currentIndex().row(), 0);
    auto* search = help->findChild<QLineEdit*>("HelpSearchTextBox");
    QTest::keyClicks(search, "leave out picture");
    QVERIFY(contents->model()->rowCount() < 10);
    QCOMPARE(open(), QString("Welcome.htm"));  // until one is chosen
    QTest::keyClick(search, Qt::Key_Return);
    QVERIFY(open() != "Welcome.htm" && help->isVisible());
    QCOMPARE(page->textCursor().selectedText().toLower(), QString("leave"));
    QTest::keyClicks(search, " zzz");
    QCOMPARE(contents->model()->rowCount(), 0);
    search->clear();
    PressIn(*help, "WelcomeButton");
    QCOMPARE(open(), QString("Welcome.htm"));
  }

  void theBestHitsStandInSight() {
    OpenScene scene;
    HelpForm help(scene.rig.folders, "Welcome.htm", scene.window.get());
    help.setAttribute(Qt::WA_DeleteOnClose, false);
    help.resize(500, 300);
    help.show();
    auto* contents = help.findChild<QAbstractItemView*>("ContentsList");
    QTest::keyClicks(help.findChild<QLineEdit*>("HelpSearchTextBox"), "mail");
    const auto* hits = contents->model();
    QVERIFY(hits->rowCount() > 10);
    const auto in_sight = [&] { return contents->visualRect(hits->index(0, 0)).top(); };
    QTRY_COMPARE(in_sight(), 0);
    QTest::keyClick(help.findChild<QLineEdit*>("HelpSearchTextBox"), Qt::Key_Return);
    QCOMPARE(contents->currentIndex().row(), 0);
    QCOMPARE(help.findChild<QTextBrowser*>("HelpPage")->textCursor().selectedText().toLower(), QString("mail"));
  }

  void eachWindowHasOneHelp() {
    OpenScene scene;
    HelpKey key(scene.rig.folders);
    qApp->installEventFilter(&key);
    test::WhileOpen("ThreadForm", [](QDialog& form) {
      for (int press = 0; press < 2; ++press) {
        form.activateWindow();
        QTRY_VERIFY(form.isActiveWindow());
        QTest::keyClick(&form, Qt::Key_F1);
        QCOMPARE(form.findChildren<HelpForm*>().size(), 1);
        QTRY_VERIFY(form.findChild<HelpForm*>()->isActiveWindow());
      }
      form.findChild<HelpForm*>()->close();
    });
    scene.window->Dispatch(CommandId::kThreads);
    for (int time = 0; time < 2; ++time) scene.window->Dispatch(CommandId::kHelpTopics);
    QCOMPARE(scene.window->findChildren<HelpForm*>(Qt::FindDirectChildrenOnly).size(), 1);
  }

  // A page opens where it tells of what has the keyboard.
  void thePaceHasItsPlaceInThePage() {
    test::FormRig rig;
    HelpKey key(rig.folders);
    qApp->installEventFilter(&key);
    RunPaceForm pace([] { return run::PaceTexts(); }, {}, {}, rig.clock, nullptr);
    EmailManagerForm account(rig.program, nullptr);
    account.findChild<QTabWidget*>("AccountTabs")->setCurrentIndex(3);
    for (const auto& [form, begins] :
         {std::pair<QDialog*, const char*>(&pace, "Not faster than"), {&account, "Pace. How many"}}) {
      form->show();
      form->activateWindow();
      QVERIFY(QTest::qWaitForWindowActive(form));
      QTest::keyClick(form->findChild<QLineEdit*>("RateTextBox"), Qt::Key_F1);
      auto* page = form->findChild<HelpForm*>()->findChild<QTextBrowser*>("HelpPage");
      const auto top = [&] { return page->cursorRect(page->document()->find(begins)).top(); };
      QTRY_VERIFY2(top() >= 0 && top() < page->height() / 4, qPrintable(QString::number(top())));
    }
  }

  void theTabKeyComesToEverything() {
    OpenScene scene;
    const test::OneProfile environment;
    auto* help = new HelpForm(scene.rig.folders, "Welcome.htm", scene.window.get());
    auto* followed = new HelpForm(scene.rig.folders, "Welcome.htm", scene.window.get());
    scene.window->Dispatch(CommandId::kTutorial);
    auto* tutorial = scene.window->findChild<TutorialForm*>();
    PressIn(*tutorial, "NextButton");
    TipsForm tips(scene.rig.program, scene.window.get());
    UpdateMainForm update(scene.rig.program, environment, scene.window.get());
    const struct {
      QDialog* form;
      const char* from;
      const char* way;
    } rows[] = {
        {help, "HelpSearchTextBox", "HelpSearchTextBox ContentsList HelpPage WelcomeButton CloseButton"},
        {followed, "HelpSearchTextBox", "HelpSearchTextBox ContentsList HelpPage BackButton WelcomeButton CloseButton"},
        {tutorial, "DoItButton", "DoItButton BackButton NextButton CloseButton"},
        {&tips, "TipsCheckBox", "TipsCheckBox TipBeforeButton NextTipButton MoreButton CloseButton"},
        {&update, "ProxyCheckBox", "ProxyCheckBox TimeoutTextBox CheckButton HomePageButton CloseButton"},
    };
    for (const auto& row : rows) {
      row.form->show();
      row.form->activateWindow();
      QVERIFY(QTest::qWaitForWindowActive(row.form));
      if (row.form == followed) followed->findChild<QTextBrowser*>()->setSource(QUrl("Troubles.htm"));
      row.form->findChild<QWidget*>(row.from)->setFocus();
      QCOMPARE(test::Names(test::TabWalk(*row.form)).join(' '), QString(row.way));
      row.form->hide();
    }
  }

  // The window is shown before the document is loaded, as it is where the engine takes longer than the splash.
  void theTipAtTheStartWaitsForTheDocument() {
    for (const bool has_message : {false, true}) {
      Scene scene;
      QVERIFY(scene.rig.settings.Write("Options", "Tips", "1"));
      scene.window = std::make_unique<MainForm>(scene.rig.program);
      scene.window->LoadLists();
      scene.window->show();
      scene.window->ShowTipsAtStart();
      QVERIFY(QApplication::activeModalWidget() == nullptr);
      if (has_message)
        scene.window->Open({scene.rig.folder.Write("one.eml", "Subject: One\r\n\r\nHello.\r\n").string()});
      int opened = 0;
      test::WhileOpen(has_message ? "MessageForm" : "TipsForm", [&](QDialog&) { ++opened; });
      scene.window->LoadDocument();
      QTRY_COMPARE(opened, 1);
      QTest::qWait(100);
      QVERIFY(QApplication::activeModalWidget() == nullptr);  // and only once
    }
  }

  void aboutCopiesTheSystemAndNobodysSecrets() {
    Scene scene;
    scene.rig.FillInAccount();
    QVERIFY(scene.rig.settings.Write("Account", "Password", "swordfish"));
    scene.Open();
    test::WhileOpen("AboutForm", [](QDialog& form) { PressIn(form, "CopyButton"); });
    scene.window->Dispatch(CommandId::kAbout);
    const QString copied = QGuiApplication::clipboard()->text();
    for (const QString there :
         {"Tarnwick Quillcast Classic Edition 1.0", "SQLite 3.", "OpenSSL 3.", "(LGPL-3.0-only)", qVersion()})
      QVERIFY2(copied.contains(there), qPrintable(copied));
    for (const char* secret : {"swordfish", "@"}) QVERIFY2(!copied.contains(secret), qPrintable(copied));
  }

  void theUpdateCheckKeepsItsProxyAndTellsWhatItCannotReach() {
    OpenScene scene;
    test::WhileOpen("UpdateMainForm", [&scene](QDialog& form) {
      const auto box = [&form](const char* name) { return form.findChild<QLineEdit*>(name); };
      QVERIFY(!box("AddressTextBox")->isEnabled());
      form.findChild<QCheckBox*>("ProxyCheckBox")->setChecked(true);
      PressIn(form, "CheckButton");
      QCOMPARE(scene.rig.Shown(), QString("warn: Please enter the address of the proxy."));
      QCOMPARE(form.focusWidget(), box("AddressTextBox"));
      QCOMPARE(*scene.rig.settings.Read("Options", "Proxy", "0"),
               std::string("0"));  // nothing is kept of what is wrong
      QTest::keyClicks(box("AddressTextBox"), "127.0.0.1");
      QTest::keyClicks(box("PortTextBox"), "x1");
      PressIn(form, "CheckButton");
      QTRY_COMPARE(form.findChild<QLabel*>("StatusLine")->text(),
                   QString("The proxy 127.0.0.1:1 cannot be reached. Check the address and the port of the proxy."));
      PressIn(form, "HomePageButton");
    });
    scene.window->Dispatch(CommandId::kUpdate);
    QCOMPARE(*scene.rig.settings.Read("Options", "Proxy", "0") + *scene.rig.settings.Read("Options", "Port", ""),
             std::string("11"));
    QCOMPARE(scene.rig.desktop.opened.back(), std::string("https://www.quillcast.example/"));
  }

  void helpAndTipsOpen() {
    OpenScene scene;
    QVERIFY(scene.rig.settings.Write("Options", "Tips", "0"));
    scene.window->ShowTipsAtStart();  // nothing opens, or the test would wait for ever
    test::WhileOpen("TipsForm", [](QDialog& form) {
      QCOMPARE(form.focusWidget(), form.findChild<QPushButton*>("NextTipButton"));
      const QString first = form.findChild<QLabel*>("TipText")->text();
      QTest::mouseClick(form.findChild<QPushButton*>("NextTipButton"), Qt::LeftButton);
      QVERIFY(form.findChild<QLabel*>("TipText")->text() != first);
      QCOMPARE(form.findChild<QLabel*>("TipSeries")->text(), QString("People: tip 2 of 30"));
      PressIn(form, "MoreButton");
      QCOMPARE(form.findChild<QTextBrowser*>("HelpPage")->source().fileName(), QString("Group Manager 2.htm"));
    });
    scene.window->Dispatch(CommandId::kTips);
    QCOMPARE(scene.rig.settings.Read("Options", "FirstTip", "")->c_str(), "3");
    QCOMPARE(scene.rig.settings.Read("Options", "Tips", "")->c_str(), "0");
    scene.window->Dispatch(CommandId::kHelpTopics);
    auto* page = scene.window->findChild<QWidget*>("HelpPage");
    QVERIFY(page != nullptr && page->isVisible());
  }
};

}  // namespace quillcast::desktop

QTEST_MAIN(quillcast::desktop::HelpFormsTest)
#include "help_forms_test.moc"
