// The dialogs of the account, the threading modes and the history.
#include <QElapsedTimer>
#include <QRadioButton>
#include <QTabWidget>
#include <QToolButton>
#include <memory>

#include "account/stored_account.h"
#include "desktop/account/email_manager_form.h"
#include "desktop/account/outlook_express_form.h"
#include "desktop/account/thread_form.h"
#include "desktop/form_rig.h"
#include "desktop/hands.h"
#include "desktop/run/history_manager_form.h"
#include "desktop/widgets/row_list.h"
#include "platform/file.h"
#include "platform/sqlite.h"

namespace quillcast::desktop {

using test::Press;
using test::Text;
using test::Type;

class AccountFormsTest : public QObject {
  Q_OBJECT

  static void FillIn(QDialog& form) {
    Type(form, "FullNameTextBox", "Ada");
    Type(form, "EmailTextBox", "ada@example.org");
    Type(form, "ServerTextBox", "mail.example.org");
  }

 private slots:
  void checksWarnTurnThePageAndFocus() {
    struct Case {
      const char *control, *value, *warning, *focus, *page = "General";
    };
    for (const Case& c :
         {Case{"EmailTextBox", "ada", "", "EmailTextBox"},
          Case{"ServerTextBox", " ; ;", "warn: Please enter your mail server.", "ServerTextBox"},
          Case{"ServerTextBox", "-h", "", "ServerTextBox"},
          Case{"AuthCheckBox", "1", "warn: You must enter the username.", "UsernameTextBox"},
          Case{"PasswordFromComboBox", "Command", "", "PasswordCommandTextBox"},
          Case{"RetriesTextBox", "often", "", "RetriesTextBox", "Pace"},
          Case{"ThirdRadioButton", "1", "warn: You must enter the queue directory.", "ThirdCommandButton", "Method"}}) {
      test::FormRig rig;
      EmailManagerForm form(rig.program, nullptr);
      form.show();
      FillIn(form);
      if (auto* button = form.findChild<QAbstractButton*>(c.control)) {
        button->setChecked(true);
      } else if (auto* choice = form.findChild<QComboBox*>(c.control)) {
        form.findChild<QCheckBox*>("AuthCheckBox")->setChecked(true);
        Type(form, "UsernameTextBox", "ada");
        choice->setCurrentText(c.value);
      } else {
        Type(form, c.control, c.value);
      }
      Press(form, "OKButton");
      QCOMPARE(rig.Shown(), QString(c.warning));
      QVERIFY(form.isVisible());
      QCOMPARE(form.focusWidget()->objectName(), QString(c.focus));
      auto* tabs = form.findChild<QTabWidget*>("AccountTabs");
      QCOMPARE(tabs->tabText(tabs->currentIndex()), QString(c.page));
      QCOMPARE(rig.settings.Read("Account", "Name", "never")->c_str(), "never");
    }
  }

  void okSavesAndTellsTheMainWindow() {
    test::FormRig rig;
    EmailManagerForm form(rig.program, nullptr);
    form.show();
    account::SenderTexts told;
    form.changed = [&](const account::SenderTexts& texts) { told = texts; };
    FillIn(form);
    Type(form, "PortTextBox", "5a8x7");  // letters do not arrive
    Type(form, "TimeoutTextBox", "10");
    QCOMPARE(Text(form, "TimeoutUnitLabel"), QString("Minutes"));
    QTest::mouseClick(form.findChild<QCheckBox*>("AuthCheckBox"), Qt::LeftButton, {}, QPoint(8, 8));
    Type(form, "UsernameTextBox", "ada");
    Type(form, "PasswordTextBox", "secret");
    Press(form, "OKButton");
    QVERIFY(!form.isVisible());
    const auto account = account::AccountSettings::Load(rig.settings);
    QCOMPARE((*account)[account::AccountKey::kPort].c_str(), "587");
    QCOMPARE((*account)[account::AccountKey::kPassword].c_str(), "secret");
    QCOMPARE((*account)[account::AccountKey::kAuth].c_str(), "1");
    QCOMPARE(told.from.c_str(), "Ada <ada@example.org>");
    QCOMPARE(told.method.c_str(), "Personal Sending");
  }

  // Two accounts of one name in a home of their own; beside them a file that is a pipe.
  static std::vector<account::AccountRoot> AHome(const test::FormRig& rig) {
    const std::string twin =
        "account_name=Twin\nname=Ada\nset_smtpport=1\nsmtp_port=587\nssl_smtp=2\nuse_smtp_auth=1\n";
    rig.folder.Write("home/.claws-mail/accountrc",
                     "[Account: 1]\n" + twin + "address=one@example.org\nsmtp_server=one.example\nsmtp_user_id=one\n" +
                         "[Account: 2]\n" + twin +
                         "address=two@example.org\nsmtp_server=two.example\nsmtp_user_id=two\n" +
                         "[Account: 3]\nname=Eve\naddress=eve@example.org\nsmtp_server=three.example\n");
    rig.folder.Write("home/.thunderbird/profiles.ini/a-folder", "");
    return account::AccountRoots(rig.folder / "home");
  }

  void anAccountOfAnotherProgramIsTakenOver() {
    test::FormRig rig;
    EmailManagerForm form(rig.program, nullptr);
    form.account_places = [&] { return AHome(rig); };
    form.show();
    std::string sender;
    form.imported = [&](const std::string& from) { sender = from; };
    Type(form, "PortTextBox", "2525");
    Type(form, "TimeoutTextBox", "7");
    const auto take_over = [&](const std::function<void(QDialog&)>& act) {
      test::WhileOpen("OutlookExpressForm", act,
                      [](const QDialog& dialog) { return dialog.findChild<RowList*>("AccountListBox")->size() == 3; });
      Press(form, "ImportButton");
    };
    take_over([&](QDialog& dialog) {
      QVERIFY(Text(dialog, "PassedOverLabel").contains("profiles.ini"));
      QCOMPARE(Text(dialog, "StatusLine"), QString("3 accounts were found."));
      Press(dialog, "OKButton");
      QCOMPARE(rig.Shown(), QString("warn: Please select an account."));
      QVERIFY(dialog.isVisible());
      auto* list = dialog.findChild<RowList*>("AccountListBox");
      list->Choose(2);
      QVERIFY(!dialog.findChild<QCheckBox*>("PortCheckBox")->isEnabled());
      list->Choose(1);
      QCOMPARE(list->model()->index(1, 2).data().toString(), "two.example, port 587, security STARTTLS, user two");
      Press(dialog, "CancelButton");
    });
    QCOMPARE(rig.settings.Read("Account", "Name", "never")->c_str(), "never");
    take_over([&](QDialog& dialog) {
      dialog.findChild<RowList*>("AccountListBox")->Choose(1);
      Press(dialog, "OKButton");
    });
    QCOMPARE(sender.c_str(), "Ada <two@example.org>");
    for (const auto& [control, text] :
         std::vector<std::pair<const char*, const char*>>{{"FullNameTextBox", "Ada"},
                                                          {"EmailTextBox", "two@example.org"},
                                                          {"ServerTextBox", "two.example"},
                                                          {"PortTextBox", "25"},
                                                          {"TimeoutTextBox", "7"},
                                                          {"SecurityComboBox", "Automatic"},
                                                          {"UsernameTextBox", ""}}) {
      QCOMPARE(Text(form, control), QString(text));
    }
    QCOMPARE(Text(form, "StatusLine"), QString("The account is taken over and saved."));
    Type(form, "PasswordTextBox", "of-before");
    take_over([&](QDialog& dialog) {
      dialog.findChild<RowList*>("AccountListBox")->Choose(0);
      for (const char* box : {"PortCheckBox", "SecurityCheckBox", "UserNameCheckBox"})
        dialog.findChild<QCheckBox*>(box)->setChecked(true);
      Press(dialog, "OKButton");
    }  // namespace quillcast::desktop
    );
    for (const auto& [control, text] :
         std::vector<std::pair<const char*, const char*>>{{"ServerTextBox", "one.example"},
                                                          {"PortTextBox", "587"},
                                                          {"SecurityComboBox", "STARTTLS"},
                                                          {"AuthCheckBox", "1"},
                                                          {"UsernameTextBox", "one"},
                                                          {"PasswordTextBox", ""},
                                                          {"StatusLine",
                                                           "The account is taken over and saved. Type its password: "
                                                           "that of the server or user before is not kept."},
                                                          {"TimeoutTextBox", "7"}}) {
      QCOMPARE(Text(form, control), QString(text));
    }
    QCOMPARE(rig.settings.Read("Account", "Timeout", "never")->c_str(), "never");  // OK was not pressed
    form.reject();
    QCOMPARE(rig.settings.Read("Account", "Server", "")->c_str(), "one.example");
  }

  void aPasswordThatWasTypedForTheServerOfBeforeIsNotTheImportedOnes() {
    test::FormRig rig;
    rig.FillInAccount();
    EmailManagerForm form(rig.program, nullptr);
    form.account_places = [&] { return AHome(rig); };
    form.show();
    form.findChild<QCheckBox*>("AuthCheckBox")->setChecked(true);
    Type(form, "UsernameTextBox", "ada");
    form.findChild<QComboBox*>("PasswordFromComboBox")->setCurrentText("Keyring");
    Type(form, "PasswordTextBox", "of-before");
    test::WhileOpen(
        "OutlookExpressForm",
        [&](QDialog& dialog) {
          dialog.findChild<RowList*>("AccountListBox")->Choose(1);
          Press(dialog, "OKButton");
        },
        [](const QDialog& dialog) { return dialog.findChild<RowList*>("AccountListBox")->size() == 3; });
    Press(form, "ImportButton");
    QCOMPARE(Text(form, "ServerTextBox") + Text(form, "UsernameTextBox"), QString("two.exampleada"));
    QCOMPARE(Text(form, "PasswordTextBox"), QString());
    QVERIFY(form.findChild<QWidget*>("PasswordTextBox")->isEnabled());
  }

  void rulesFollowTheControls() {
    test::FormRig rig;
    QVERIFY(rig.settings.Write("Account", "CharSet", "Martian"));
    EmailManagerForm form(rig.program, nullptr);
    QCOMPARE(Text(form, "CharSetComboBox"), QString("Martian"));  // which is none of its choices
    form.findChild<QComboBox*>("ContentEncodingComboBox")->setCurrentText("None");
    QVERIFY(form.findChild<QWidget*>("AutoWrapCheckBox")->isEnabled());
    form.findChild<QCheckBox*>("AutoWrapCheckBox")->setChecked(true);
    QVERIFY(form.findChild<QWidget*>("WrapTextBox")->isEnabled());
    auto* arrows = form.findChild<QWidget*>("WrapUpDown");
    QVERIFY(arrows->isEnabled());
    for (const auto& [typed, key, counted] : {std::tuple("60", Qt::Key_Up, "61"),
                                              {"32", Qt::Key_Down, "32"},
                                              {"128", Qt::Key_Up, "128"},
                                              {"", Qt::Key_Up, "32"}}) {
      Type(form, "WrapTextBox", typed);
      QTest::keyClick(form.findChild<QLineEdit*>("WrapTextBox"), key);
      QCOMPARE(Text(form, "WrapTextBox"), QString(counted));
    }
    QTest::mouseClick(arrows->findChild<QToolButton*>(), Qt::LeftButton);
    QCOMPARE(Text(form, "WrapTextBox"), QString("33"));
    form.findChild<QRadioButton*>("ThirdRadioButton")->setChecked(true);
    rig.prompts.files = {"/var/queue"};
    form.findChild<QPushButton*>("ThirdCommandButton")->click();
    QCOMPARE(Text(form, "ThirdPathTextBox"), QString("/var/queue/"));
    QCOMPARE(rig.Shown(), QString("folder: Please select the destination folder."));
  }

  void thePasswordIsWhereTheAccountSays() {
    test::FormRig rig;
    const auto stored = [&rig](const char* key) { return QString(rig.settings.Read("Account", key, "none")->c_str()); };
    const auto choose = [](QDialog& form, const char* place) {
      form.findChild<QComboBox*>("PasswordFromComboBox")->setCurrentText(place);
    };
    {
      EmailManagerForm form(rig.program, nullptr);
      form.show();
      FillIn(form);
      auto* box = form.findChild<QLineEdit*>("PasswordTextBox");
      auto* command = form.findChild<QLineEdit*>("PasswordCommandTextBox");
      QVERIFY(!form.findChild<QComboBox*>("PasswordFromComboBox")->isEnabled());
      form.findChild<QCheckBox*>("AuthCheckBox")->setChecked(true);
      Type(form, "UsernameTextBox", "ada");
      Type(form, "PasswordTextBox", "secret");
      for (const auto& [place, text, says] : std::vector<std::tuple<const char*, const char*, const char*>>{
               {"Command", "", "what the command prints"},
               {"Settings", "secret", ""},
               {"Keyring", "", "goes into the keyring when this is saved"}}) {
        choose(form, place);
        QCOMPARE(box->text() + "|" + box->placeholderText(), QString(text) + "|" + says);
        QCOMPARE(box->isEnabled(), *says == 0);
        QCOMPARE(command->isEnabled(), QString(place) == "Command");
      }
      Type(form, "ServerTextBox", "mail.other.example");
      QCOMPARE(box->text(), QString("secret"));  // to be seen before it goes there
      QVERIFY(box->isEnabled());
      Type(form, "ServerTextBox", "mail.example.org");
      rig.keyring.refuses = true;
      Press(form, "OKButton");
      QTRY_COMPARE(Text(form, "StatusLine"), QString("Nothing was saved. The keyring was not unlocked. Unlock it."));
      QVERIFY(form.isVisible());
      QCOMPARE(stored("Name"), QString("none"));
      rig.keyring.refuses = false;
      rig.keyring.hangs = true;
      Press(form, "OKButton");
      QVERIFY(!form.findChild<QPushButton*>("OKButton")->isEnabled());
      QCOMPARE(Text(form, "StatusLine"), QString("Asking the keyring…"));
      Press(form, "TestButton");
      QTRY_COMPARE(Text(form, "StatusLine"), QString("Nothing was saved. Asking the keyring was cancelled."));
      rig.keyring.hangs = false;
      Press(form, "OKButton");
      QTRY_VERIFY(!form.isVisible());
    }
    QCOMPARE(QString(rig.keyring.Only().c_str()) + stored("Password") + stored("PasswordFrom"), "secretKeyring");
    {
      EmailManagerForm form(rig.program, nullptr);
      form.show();
      auto* box = form.findChild<QLineEdit*>("PasswordTextBox");
      QCOMPARE(box->placeholderText(), QString("in the keyring"));
      QVERIFY(!box->isEnabled());
      rig.keyring.hangs = true;
      Press(form, "TestButton");
      QCOMPARE(Text(form, "StatusLine"), QString("Asking the keyring for the password… Trying mail.example.org…"));
      for (const char* other : {"OKButton", "ResetButton", "ImportButton", "AdvancedButton"})
        QVERIFY2(!form.findChild<QPushButton*>(other)->isEnabled(), other);
      Press(form, "TestButton");
      QTRY_COMPARE(Text(form, "StatusLine"), QString("The test was stopped."));
      QVERIFY(form.findChild<QPushButton*>("ImportButton")->isEnabled());
      rig.keyring.hangs = false;
      Type(form, "ServerTextBox", "mail.evil.example");
      QCOMPARE(box->placeholderText(), QString("the keyring has none for ada at mail.evil.example"));
      QVERIFY(box->isEnabled());
      Press(form, "OKButton");
      QCOMPARE(Text(form, "StatusLine"),
               QString("The keyring has no password for ada at mail.evil.example. Give the account its "
                       "password; it goes into the keyring when the account is saved."));
      QVERIFY(form.isVisible() && form.focusWidget() == box);
      Type(form, "ServerTextBox", "mail.example.org");
      QCOMPARE(box->placeholderText(), QString("in the keyring"));
      QVERIFY(!box->isEnabled());
      Press(form, "ChangePasswordButton");
      QVERIFY(box->isEnabled() && form.focusWidget() == box);
      QTest::keyClicks(box, "other");
      Press(form, "OKButton");
      QTRY_VERIFY(!form.isVisible());
    }
    QCOMPARE(QString(rig.keyring.Only().c_str()) + stored("Password"), QString("other"));
    rig.keyring.refuses = true;
    {
      EmailManagerForm form(rig.program, nullptr);
      form.show();
      choose(form, "Settings");
      Type(form, "PasswordTextBox", "typed");
      Press(form, "OKButton");
      QTRY_VERIFY(Text(form, "StatusLine").startsWith("The keyring still has the password: "));
      QVERIFY(form.isVisible());
      Press(form, "OKButton");
      QVERIFY2(!form.isVisible(), "it was told once");
    }
    EmailManagerForm form(rig.program, nullptr);
    form.show();
    Press(form, "ResetButton");
    QVERIFY2(form.isVisible() && stored("Name") == "Ada", "it is asked first");
    rig.prompts.answers = {platform::Answer::kYes};
    Press(form, "ResetButton");
    QTRY_VERIFY(
        Text(form, "StatusLine").startsWith("The keyring may still have the password: The keyring was not unlocked."));
    QCOMPARE(test::Text(form, "ServerTextBox"), QString());  // OK would save what is shown
    QCOMPARE(form.findChild<QComboBox*>("PasswordFromComboBox")->currentText(), QString("Settings"));
    QVERIFY(form.isVisible() && stored("Name") == "none");
  }

  void whatCannotBeReadIsNotShownAsTheAccount() {
    test::FormRig rig;
    rig.FillInAccount("2525");
    auto other = platform::Database::Open(rig.folders.settings, platform::OpenMode::kReadWrite);
    QVERIFY(other && other->Execute("BEGIN EXCLUSIVE"));
    EmailManagerForm form(rig.program, nullptr);
    form.show();
    auto* port = form.findChild<QLineEdit*>("PortTextBox");
    QVERIFY2(Text(form, "StatusLine").contains("is locked"), qPrintable(Text(form, "StatusLine")));
    QVERIFY(!port->isEnabled() && !form.findChild<QPushButton*>("OKButton")->isEnabled());
    QVERIFY(other->Execute("COMMIT"));
    QTRY_COMPARE(port->text(), QString("2525"));
    QVERIFY(port->isEnabled() && form.findChild<QPushButton*>("OKButton")->isEnabled());
    QCOMPARE(Text(form, "StatusLine"), QString());
    QVERIFY(form.findChild<QLineEdit*>("FullNameTextBox")->hasFocus());
  }

  // Held as another program holds it.
  static platform::FolderLock Locked(const test::FormRig& rig) {
    return *account::LockAccount(rig.settings, {}, platform::CancelToken());
  }

  void theWindowLivesWhileAnotherSavesTheAccount() {
    test::FormRig rig;
    rig.FillInAccount();
    const QString waiting = "Waiting for another window or program that is saving the account…";
    for (const char* button : {"OKButton", "ResetButton"}) {
      EmailManagerForm form(rig.program, nullptr);
      form.show();
      std::optional<platform::FolderLock> held = Locked(rig);
      rig.prompts.answers = {platform::Answer::kYes, platform::Answer::kYes, platform::Answer::kYes};
      QElapsedTimer watch;
      watch.start();
      Press(form, button);
      QVERIFY2(watch.elapsed() < 1000, "the window stood still");
      QCOMPARE(Text(form, "StatusLine"), waiting);
      QVERIFY(!form.findChild<QTabWidget*>("AccountTabs")->isEnabled());
      Press(form, "TestButton");
      QTRY_VERIFY(Text(form, "StatusLine").endsWith("that saves the account was cancelled."));
      QVERIFY(form.isVisible() && form.findChild<QTabWidget*>("AccountTabs")->isEnabled());
      {
        EmailManagerForm closed(rig.program, nullptr);
        closed.show();
        Press(closed, button);
        QCOMPARE(Text(closed, "StatusLine"), waiting);
      }
      QVERIFY(watch.elapsed() < 5000);
      Press(form, button);
      QCOMPARE(Text(form, "StatusLine"), waiting);
      held.reset();
      QTRY_VERIFY(!form.isVisible());
      rig.prompts.shown.clear();
    }
    QCOMPARE(rig.settings.Read("Account", "Name", "gone")->c_str(), "gone");
  }

  void okKeepsWhatAnotherHasChangedMeanwhile() {
    test::FormRig rig;
    rig.FillInAccount();
    const auto stored = [&rig](const char* key) { return QString(rig.settings.Read("Account", key, "")->c_str()); };
    std::string told;
    {
      EmailManagerForm form(rig.program, nullptr);
      form.show();
      form.changed = [&](const account::SenderTexts& texts) { told = texts.from; };
      QVERIFY(rig.settings.Write("Account", "Name", "Eve") && rig.settings.Write("Account", "Server", "mx.example"));
      Type(form, "TimeoutTextBox", "7");
      Press(form, "OKButton");
      QVERIFY(!form.isVisible());
    }
    QCOMPARE(stored("Name") + " " + stored("Server") + " " + stored("Timeout"), QString("Eve mx.example 7"));
    QVERIFY(told.starts_with("Eve <"));
    EmailManagerForm form(rig.program, nullptr);
    form.show();
    QVERIFY(rig.settings.Write("Account", "Username", "eve") && rig.settings.Write("Account", "Auth", "1"));
    Type(form, "ServerTextBox", "third.example");
    Press(form, "OKButton");
    QVERIFY(form.isVisible());
    QCOMPARE(Text(form, "StatusLine"),
             "Nothing was saved. Another window or program has changed the account's server, security or sign-in "
             "meanwhile. Look at the account as it is now, and try again.");
    QCOMPARE(stored("Server") + " " + stored("Username"), QString("mx.example eve"));
  }

  void presetsAreOfferedNeverForced() {
    test::FormRig rig;
    EmailManagerForm form(rig.program, nullptr);
    form.show();
    FillIn(form);
    QVERIFY(!form.findChild<QWidget*>("PresetBar")->isVisible());
    Type(form, "EmailTextBox", "ada@gmail.com");
    QVERIFY(form.findChild<QWidget*>("PresetBar")->isVisible());
    QCOMPARE(Text(form, "ServerTextBox"), QString("mail.example.org"));
    Press(form, "PresetButton");
    QCOMPARE(Text(form, "ServerTextBox") + Text(form, "PortTextBox") + Text(form, "SecurityComboBox") +
                 Text(form, "UsernameTextBox"),
             QString("smtp.gmail.com587STARTTLSada@gmail.com"));
    QVERIFY(!form.findChild<QWidget*>("PresetBar")->isVisible());
  }

  void aTestTellsWhatItFound() {
    test::FormRig rig;
    EmailManagerForm form(rig.program, nullptr);
    form.show();
    FillIn(form);
    Type(form, "ServerTextBox", "127.0.0.1");
    Type(form, "PortTextBox", "9");  // nobody listens there
    Press(form, "TestButton");
    QTRY_VERIFY(!rig.prompts.shown.empty());
    QCOMPARE(rig.Shown(), QString("warn: Error 9: There was an error connecting to the SMTP mail server."));
    QVERIFY(form.findChild<QPushButton*>("OKButton")->isEnabled());
    Type(form, "ServerTextBox", "127.0.0.1:x");
    Press(form, "TestButton");
    QTRY_VERIFY(!rig.prompts.shown.empty());
    QVERIFY(Text(form, "StatusLine").contains("\"127.0.0.1:x\" names no port"));
  }

  void threadModesAreKept() {
    test::FormRig rig;
    {
      ThreadForm form(rig.settings, nullptr);
      QVERIFY(form.findChild<QRadioButton*>("SMTPSecondRadioButton")->isChecked());
      form.findChild<QRadioButton*>("SMTPNoRadioButton")->setChecked(true);
      form.findChild<QRadioButton*>("IMAP4SingleRadioButton")->setChecked(true);
      form.accept();
    }
    QCOMPARE(rig.settings.Read("SMTP-Thread", "Mode", "")->c_str(), "No");
    QCOMPARE(rig.settings.Read("POP3-Thread", "Mode", "")->c_str(), "Second");
    QCOMPARE(rig.settings.Read("IMAP4-Thread", "Mode", "")->c_str(), "Single");
    ThreadForm again(rig.settings, nullptr);
    QVERIFY(test::Text(again, "NoteLabel").contains("no effect yet"));
    QVERIFY(again.findChild<QRadioButton*>("SMTPNoRadioButton")->isChecked());
  }

  void historyListsOpensAndClears() {
    test::FormRig rig;
    const auto history = rig.folders.History();
    for (const char* file : {"07-03-2026_09-05-07_Hello.txt", "07-03-2026_09-05-07_Hello.eml",
                             "01-02-2027_10-00-00_News.txt", "odd.txt"}) {
      QVERIFY(platform::ReplaceFile(history / file, "x"));
    }
    HistoryManagerForm form(rig.program, nullptr);
    form.show();
    auto* grid = form.findChild<RowList*>("HistoryGrid");
    QCOMPARE(grid->size(), 3U);
    QVERIFY(!form.findChild<QPushButton*>("OpenLogButton")->isEnabled());
    form.findChild<QComboBox*>("OrderComboBox")->setCurrentText("Newest first");
    QCOMPARE(grid->model()->index(0, 0).data().toString(), "Date = 01-02-2027  -  Time = 10-00-00 - Subject = News");
    grid->Choose(0);
    Press(form, "OpenMessageButton");
    QCOMPARE(rig.Shown(), QString("warn: Original Message is not available."));
    Press(form, "OpenLogButton");
    QCOMPARE(rig.desktop.opened, std::vector<std::string>{"01-02-2027_10-00-00_News.txt"});
    Type(form, "FilterTextBox", "hello");
    QCOMPARE(grid->size(), 1U);
    Press(form, "ClearHistoryButton");
    QCOMPARE(rig.Shown(), QString("ask: Are you sure you want to delete your history?"));
    QVERIFY(form.isVisible());
    rig.prompts.answers = {platform::Answer::kYes};
    Press(form, "ClearHistoryButton");
    QVERIFY(!form.isVisible());
    QVERIFY(std::filesystem::is_empty(history));
    QCOMPARE(form.cleared(), QString("4 files were deleted."));
  }

  void theOnlyRunIsReachedByKeyboard() {
    test::FormRig rig;
    QVERIFY(platform::ReplaceFile(rig.folders.History() / "07-03-2026_09-05-07_Hello.txt", "x"));
    HistoryManagerForm form(rig.program, nullptr);
    form.show();
    QVERIFY(QTest::qWaitForWindowActive(&form));
    auto* grid = form.findChild<RowList*>("HistoryGrid");
    QTest::keyClick(grid, Qt::Key_Down);
    QVERIFY(form.findChild<QPushButton*>("OpenLogButton")->isEnabled());
    QTest::keyClick(grid, Qt::Key_Return);
    QCOMPARE(rig.desktop.opened, std::vector<std::string>{"07-03-2026_09-05-07_Hello.txt"});
  }
};

}  // namespace quillcast::desktop

QTEST_MAIN(quillcast::desktop::AccountFormsTest)
#include "account_forms_test.moc"
