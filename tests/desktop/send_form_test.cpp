// The dialog of a run, against the built-in mailbox.
#include <QClipboard>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QMessageBox>
#include <QProgressBar>
#include <QScrollBar>
#include <QSpinBox>
#include <QTableView>
#include <atomic>
#include <memory>

#include "desktop/form_rig.h"
#include "desktop/hands.h"
#include "desktop/run/report_view.h"
#include "desktop/run/send_mail_form1.h"
#include "desktop/run/shut_down_form.h"
#include "desktop/shell/main_form.h"
#include "desktop/widgets/qt_prompts.h"
#include "platform/file.h"
#include "platform/text.h"
#include "recipients/import/recipient_import.h"
#include "run/frozen/frozen_pace.h"
#include "run/kept_runs.h"
#include "smtp/mailbox/running_mailbox.h"

namespace quillcast::desktop {
namespace {

// Takes messages for as long as it lives; refuses whoever is called "no", and the sender "refused"; defers "later".
class Mailbox {
 public:
  Mailbox(const std::filesystem::path& store, const platform::Clock& clock) : mailbox_(Start(store, clock)) {}
  ~Mailbox() { Release(); }
  std::string port() const { return mailbox_->port(); }
  void GoAway() { mailbox_.reset(); }
  // From here on a message that has come whole is not answered before Release.
  void Hold() { holds_ = true; }
  void Release() {
    holds_ = false;
    holds_.notify_all();
  }
  bool has_one() const { return has_one_; }

 private:
  std::unique_ptr<smtp::RunningMailbox> Start(const std::filesystem::path& store, const platform::Clock& clock) {
    smtp::MailboxOptions options;
    options.store = store;
    options.session.rules = {{.pattern = "no@*"},
                             {.pattern = "later@*", .code = 451},
                             {.stage = smtp::RuleStage::kSender, .pattern = "refused@*"}};
    options.kept = [this](const smtp::MailboxMessage&) {
      has_one_ = true;
      holds_.wait(true);
    };
    return std::move(*smtp::RunningMailbox::Start(std::move(options), clock));
  }
  std::atomic<bool> holds_ = false;
  std::atomic<bool> has_one_ = false;
  std::unique_ptr<smtp::RunningMailbox> mailbox_;
};

}  // namespace

class SendFormTest : public QObject {
  Q_OBJECT

  struct Scene {
    test::FormRig rig;
    Mailbox mailbox{rig.folder.path() / "Mailbox", rig.clock};
    std::unique_ptr<SendMailForm1> form;
    document::MessageDocument letter;

    explicit Scene(const std::vector<std::string>& addresses) {
      rig.FillInAccount(mailbox.port());
      rig.AddGroup("Customers", addresses);
      document::MessageDocument document;
      document.subject = "Hello $*MergeEmail*$";
      document.html = "<p>Dear $*MergeEmail*$</p>";
      Open(std::move(document));
    }
    // The form for so many recipients, added in one go.
    explicit Scene(int recipients) : Scene(std::vector<std::string>()) {
      std::string text;
      for (int i = 0; i < recipients; ++i) text += "p" + std::to_string(i) + "@example.org\n";
      recipients::ImportRequest request;
      request.file = rig.folder.Write("list.txt", text);
      request.group = "Customers";
      platform::CancelToken never;
      recipients::ImportRecipients(request, {rig.folders.Database(), rig.folders.ImportReport(), "UTF-8"}, never,
                                   [](const auto&) {});
      document::MessageDocument document;
      document.html = "<p>x</p>";
      Open(std::move(document));
    }
    // The form for a message to all of the group.
    void Open(document::MessageDocument document) {
      letter = document;
      form = std::make_unique<SendMailForm1>(rig.program, std::move(document), Customers(),
                                             SendMailForm1::Server::kReal, nullptr);
      form->show();
    }
    // The same from somebody else.
    void OpenFrom(const char* email) {
      QVERIFY(rig.settings.Write("Account", "Email", email));
      Open(letter);
    }
    run::ChosenGroup Customers() const {
      return {**rig.Store().FindGroup("Customers"), *rig.Store().CountRecipients("Customers")};
    }
    // The form for a message that names a picture of its own and this one of another folder.
    std::filesystem::path OpenWithForeignPicture() {
      const std::string gif = "GIF89a\x01";
      document::MessageDocument document;
      document.html = "<img src=own.gif><img src='../home/private.gif'>";
      document.base_folder = rig.folder.Write("page/own.gif", gif).parent_path();
      auto home = rig.folder.Write("home/private.gif", gif);
      Open(std::move(document));
      return home;
    }
    void Press(const char* name) { test::Press(*form, name); }
    QString Caption() const { return form->findChild<QPushButton*>("SendButton")->text(); }
    QString Text(const char* name) const { return test::Text(*form, name); }
    QStringList Report() const {
      auto* report = form->findChild<ReportView*>("Report");
      QStringList lines;
      for (std::size_t i = 0; i < report->line_count(); ++i) lines << report->LineAt(i);
      return lines;
    }
    // The report as it stands in the history.
    QString Kept() const {
      QString text;
      for (const auto& entry : std::filesystem::directory_iterator(rig.folders.History())) {
        if (entry.path().extension() == ".txt") text += ToQt(*platform::ReadFile(entry.path(), 1 << 20));
      }
      return text;
    }
    std::size_t Arrived() const {
      std::size_t files = 0;
      for (const auto& entry : std::filesystem::directory_iterator(rig.folder.path() / "Mailbox"))
        files += entry.path().extension() == ".eml" ? 1 : 0;
      return files;
    }
  };

 private slots:
  void aRunIsSentReportedAndListed() {
    Scene scene({"a@example.org", "no@example.org", "c@example.org"});
    QCOMPARE(scene.Caption(), QString("Send"));
    QVERIFY(scene.Text("HeadingLabel").contains("3 recipients"));
    scene.mailbox.Hold();
    scene.Press("SendButton");
    QTRY_COMPARE(scene.rig.power.awake.load(), 1);
    scene.mailbox.Release();
    QTRY_COMPARE(scene.Caption(), QString("Close"));
    QCOMPARE(scene.rig.power.awake.load(), 0);
    QCOMPARE(scene.Arrived(), std::size_t{2});
    const QStringList report = scene.Report();
    QCOMPARE(report.first(), QString("Personal Sending process has been started."));
    QCOMPARE(report.count("Message sent successfully."), 2);
    QVERIFY(report.contains("There was an error sending your message."));
    QCOMPARE(report.mid(report.size() - 3).join("/"),
             QString("Personal Sending process has been completed./2 messages sent during process./"
                     "1 messages failed during process."));
    QCOMPARE(scene.form->findChild<QProgressBar*>("RunProgressBar")->text(), QString("3 of 3"));

    // Who did not get it is what a person looks for then.
    auto* table = scene.form->findChild<QTableView*>("ResultsTable")->model();
    QCOMPARE(scene.form->findChild<QComboBox*>("ResultStateComboBox")->currentText(), QString("Who did not get it"));
    QCOMPARE(table->rowCount(), 1);
    QCOMPARE(table->index(0, 1).data().toString(), QString("no@example.org"));
    QVERIFY2(table->index(0, 3).data().toString().startsWith("550 "), qPrintable(table->index(0, 3).data().toString()));
    QCOMPARE(scene.Text("ResultCountLabel"), QString("1 of 3 results"));
    QVERIFY2(scene.Text("StatusLine").endsWith("Runs… sends to some of these again, here or later from the history."),
             qPrintable(scene.Text("StatusLine")));
    QTRY_VERIFY(scene.form->findChild<QPushButton*>("RunsButton")->isVisible());
    scene.form->findChild<QComboBox*>("ResultStateComboBox")->setCurrentIndex(0);
    QCOMPARE(table->rowCount(), 3);
    scene.form->findChild<QLineEdit*>("ResultTextBox")->setText("C@EXAMPLE");
    QCOMPARE(table->rowCount(), 1);
    scene.Press("CopyResultsButton");
    QCOMPARE(QGuiApplication::clipboard()->text(), QString("3\tc@example.org\tsent\t\n"));
    const auto results = scene.rig.folder.Write("results.txt", "mine");
    std::filesystem::permissions(results, std::filesystem::perms(0444));
    scene.rig.prompts.files = {results};
    for (const auto& [answer, content] :
         {std::pair(platform::Answer::kNo, "mine"), std::pair(platform::Answer::kYes, "3\tc@example.org\tsent\t\n")}) {
      scene.rig.prompts.answers = {answer};
      scene.Press("SaveResultsButton");
      QVERIFY(scene.rig.prompts.answers.empty());
      QCOMPARE(platform::ReadFile(results, 1000)->c_str(), content);
    }
    scene.Press("SendButton");
    QVERIFY(!scene.form->isVisible());
  }

  void aPartIsSentAndShowsWhomItMeans() {
    std::vector<std::string> addresses;
    for (char letter = 'a'; letter <= 'm'; ++letter) addresses.push_back(std::string(1, letter) + "@example.org");
    Scene scene(addresses);
    scene.form->findChild<QCheckBox*>("PartialCheckBox")->setChecked(true);
    auto* first = scene.form->findChild<QSpinBox*>("FirstSpinBox");
    auto* last = scene.form->findChild<QSpinBox*>("LastSpinBox");
    const auto type = [](QSpinBox* box, const char* number) {
      box->setFocus();
      box->selectAll();
      for (const char* digit = number; *digit != 0; ++digit) {
        QTest::keyClick(box, *digit);
        QTest::qWait(300);  // longer than the pause after which the names are looked up
      }
    };
    type(first, "3");
    type(last, "12");
    first->setFocus();
    QTRY_COMPARE(scene.Text("RangeLabel"), QString("c@example.org … l@example.org"));
    type(last, "11");
    scene.Press("SendButton");
    QTRY_COMPARE(scene.Caption(), QString("Close"));
    QCOMPARE(scene.Report().at(1), QString("Partial Sending to 9 recipients (from #3 to #11)."));
    QCOMPARE(scene.Arrived(), std::size_t{9});
  }

  void whoeverIsInTheGroupByThenGetsIt() {
    Scene scene({"a@example.org", "b@example.org", "c@example.org"});
    scene.rig.AddRecipient("Customers", "d@example.org");
    scene.Press("SendButton");
    QTRY_COMPARE(scene.Caption(), QString("Close"));
    QCOMPARE(scene.Arrived(), std::size_t{4});
    QCOMPARE(scene.form->findChild<QProgressBar*>("RunProgressBar")->text(), QString("4 of 4"));
    QVERIFY2(scene.Text("StatusLine").contains("4 recipients now, not 3"), qPrintable(scene.Text("StatusLine")));
  }

  void aQuestionAboutPicturesHoldsTheButton() {
    for (const bool take : {false, true}) {
      Scene scene({"a@example.org"});
      const auto home = scene.OpenWithForeignPicture();
      scene.Press("SendButton");  // before it is known
      QTRY_VERIFY(scene.Text("PicturesLabel").contains(PathToQt(home)));
      QTRY_COMPARE(test::RowsOf(*scene.form, "NotesList").filter("own.gif goes along").size(), 1);
      QVERIFY(scene.form->findChild<QPushButton*>("TakePicturesButton")->isVisible());
      QVERIFY(!scene.form->findChild<QPushButton*>("SendButton")->isEnabled());
      scene.form->findChild<QPushButton*>("TakePicturesButton")->setFocus();  // as when the other is disabled
      QTest::keyClick(scene.form->findChild<QPushButton*>("TakePicturesButton"), Qt::Key_Return);
      QTest::qWait(50);
      QVERIFY(scene.form->findChild<QPushButton*>("TakePicturesButton")->isVisible());
      QCOMPARE(scene.Arrived(), 0U);
      scene.Press(take ? "TakePicturesButton" : "LeavePicturesButton");
      QTRY_VERIFY(scene.form->findChild<QPushButton*>("SendButton")->isEnabled());
      scene.Press("SendButton");
      QTRY_COMPARE(scene.Caption(), QString("Close"));
      const auto message = platform::ReadFile(scene.rig.folder.path() / "Mailbox" / "000001.eml", 100000);
      QVERIFY(message);
      QVERIFY(message->find("own.gif") != std::string::npos);
      QCOMPARE(message->find("filename=\"private.gif\"") != std::string::npos, take);
    }
  }

  void aFailureDoesNotAnswerForThePerson() {
    Scene scene({"a@example.org"});
    const auto settings = scene.rig.settings.file();
    const auto button = [&] { return scene.form->findChild<QPushButton*>("SendButton"); };
    {
      auto other = platform::Database::Open(settings, platform::OpenMode::kReadWrite);
      QVERIFY(other && other->Execute("BEGIN EXCLUSIVE"));
      const auto home = scene.OpenWithForeignPicture();
      scene.Press("SendButton");
      QTest::qWait(300);  // longer than the window itself would wait
      QCOMPARE(scene.form->stage(), SendMailForm1::Stage::kIdle);
      QVERIFY(other->Execute("COMMIT"));
      QTRY_VERIFY(scene.Text("PicturesLabel").contains(PathToQt(home)));
    }
    std::filesystem::rename(settings, settings.string() + ".good");
    QVERIFY(platform::ReplaceFile(settings, std::string(5000, 'x')));
    const auto home = scene.OpenWithForeignPicture();
    QTRY_VERIFY(scene.Text("PicturesLabel").contains("damaged"));
    QVERIFY(!button()->isEnabled());
    QVERIFY(!scene.form->findChild<QPushButton*>("LeavePicturesButton")->isVisible());
    std::filesystem::rename(settings.string() + ".good", settings);
    scene.Press("LookAgainButton");
    QTRY_VERIFY(scene.Text("PicturesLabel").contains(PathToQt(home)));
    QVERIFY(!button()->isEnabled());
    QCOMPARE(scene.Arrived(), 0U);
  }

  void closingAsksWhileItRuns() {
    Scene scene(20000);
    scene.Press("SendButton");
    QTRY_COMPARE(scene.Caption(), QString("Cancel"));
    QTRY_VERIFY(scene.Arrived() > 0);  // a run that has not begun is none to be gone on with
    scene.form->close();
    QCOMPARE(scene.rig.Shown(), QString("ask: Are you sure you want to cancel the sending process?"));
    QVERIFY(scene.form->isVisible());
    scene.rig.prompts.answers = {platform::Answer::kYes};
    scene.form->findChild<QCheckBox*>("ShutDownCheckBox")->setChecked(true);
    scene.Press("SendButton");
    QTRY_COMPARE(scene.Caption(), QString("Close"));
    QTest::qWait(100);
    QCOMPARE(scene.rig.power.requests.load(), 0);  // after a countdown, were there one
    const QStringList report = scene.Report();
    QVERIFY(report.contains("Personal Sending process has been completed."));
    QCOMPARE(report.count("Message sent successfully."), static_cast<int>(scene.Arrived()));
    QVERIFY(scene.Arrived() < 20000);
    QVERIFY2(scene.Text("ResultCountLabel").endsWith(" of 20,000 results"), qPrintable(scene.Text("ResultCountLabel")));
    QVERIFY(scene.Text("StatusLine").contains("not tried"));
    QVERIFY2(scene.Text("StatusLine").contains("Runs… goes on with those who are left"),
             qPrintable(scene.Text("StatusLine")));
    scene.Press("RunsButton");
    QVERIFY(scene.form->runs_wanted() && !scene.form->isVisible());
  }

  void closingAgainGivesUpTheMessageUnderWay() {
    Scene scene({"a@example.org", "b@example.org"});
    scene.mailbox.Hold();
    scene.Press("SendButton");
    QTRY_VERIFY(scene.mailbox.has_one());
    scene.rig.prompts.answers = {platform::Answer::kYes};
    scene.form->close();
    QTest::qWait(700);  // longer than a rate needs to be told
    QCOMPARE(scene.form->stage(), SendMailForm1::Stage::kRunning);
    scene.form->close();
    QTRY_COMPARE(scene.Caption(), QString("Close"));
    QCOMPARE(scene.rig.Shown(), QString("ask: Are you sure you want to cancel the sending process?"));
    auto* table = scene.form->findChild<QTableView*>("ResultsTable")->model();
    QCOMPARE(table->index(0, 2).data().toString(), QString("unknown"));
    QVERIFY2(scene.Text("StatusLine").contains("1 recipient is unknown: the message was out"),
             qPrintable(scene.Text("StatusLine")));
    QCOMPARE(scene.form->findChild<QComboBox*>("ResultStateComboBox")->currentText(), QString("Who did not get it"));
    QCOMPARE(scene.Text("ResultCountLabel"),
             QString("2 of 2 results. 1 of them is unknown: the message was out and no answer came, so it may have "
                     "arrived."));
    scene.form->findChild<QComboBox*>("ResultStateComboBox")->setCurrentText("unknown");
    QCOMPARE(scene.Text("ResultCountLabel"),
             "1 of 2 results. The message was out and no answer came: it may have arrived. It is not sent again "
             "by itself.");
    QVERIFY(scene.Text("RateLabel").endsWith("messages a second"));  // no time is left
  }

  void theConversationAppearsWhileItHappens() {
    Scene scene({"a@example.org"});
    scene.mailbox.Hold();
    scene.Press("SendButton");
    QTRY_VERIFY(scene.Report().join('\n').contains("C: (message, "));
    QVERIFY(scene.Report().contains("C: RCPT TO:<a@example.org>"));
    QVERIFY(!scene.Report().contains("Message sent successfully."));
    scene.mailbox.Release();
    QTRY_COMPARE(scene.Caption(), QString("Close"));
    QVERIFY(scene.Report().contains("Message sent successfully."));
  }

  void itSaysWhatThePaceHasItWaitFor() {
    Scene scene({"a@example.org", "b@example.org"});
    QVERIFY(scene.rig.settings.Write("Account", "Rate", "1/h"));
    scene.Press("SendButton");
    QTRY_VERIFY2(scene.Text("RateLabel").startsWith("Waits until "), qPrintable(scene.Text("RateLabel")));
    QVERIFY(scene.Text("RateLabel").endsWith(". 1 message has gone out within an hour, which is the limit."));
    QCOMPARE(scene.Arrived(), 1U);
    scene.rig.prompts.answers = {platform::Answer::kYes};
    scene.Press("SendButton");
    QTRY_COMPARE(scene.Caption(), QString("Close"));
    QCOMPARE(scene.Arrived(), 1U);
    QVERIFY(!scene.Text("RateLabel").startsWith("Waits"));
    QVERIFY2(scene.Text("StatusLine").contains("not tried"), qPrintable(scene.Text("StatusLine")));
  }

  void whoIsTriedAgainIsNotDone() {
    Scene scene({"a@example.org", "later@example.org", "c@example.org"});
    QVERIFY(scene.rig.settings.Write("Account", "Retries", "1"));
    QVERIFY(scene.rig.settings.Write("Account", "RetryAfter", "2s"));
    scene.Press("SendButton");
    QTRY_VERIFY2(scene.Text("RateLabel").startsWith("Waits until "), qPrintable(scene.Text("RateLabel")));
    auto* bar = scene.form->findChild<QProgressBar*>("RunProgressBar");
    QCOMPARE(bar->text(), QString("2 of 3, 1 to be tried again"));
    QVERIFY(bar->value() < bar->maximum());
    QTRY_COMPARE(scene.Caption(), QString("Close"));
    QCOMPARE(bar->text(), QString("3 of 3"));
  }

  void aRunIsHeldAndGoesOn() {
    Scene scene(20000);
    auto* hold = scene.form->findChild<QPushButton*>("PauseButton");
    QVERIFY(!hold->isVisible());
    scene.Press("SendButton");
    QTRY_VERIFY(scene.Arrived() > 0);
    scene.form->activateWindow();
    QTest::keyClick(scene.form.get(), Qt::Key_U, Qt::AltModifier);
    QTRY_VERIFY2(scene.Text("RateLabel").startsWith("Paused. "), qPrintable(scene.Text("RateLabel")));
    const std::size_t arrived = scene.Arrived();
    QCOMPARE(scene.Text("RateLabel"),
             "Paused. " + ToQt(platform::WithThousands(static_cast<std::int64_t>(arrived))) + " of 20,000 are done.");
    QCOMPARE(scene.rig.power.awake.load(), 0);
    QTest::qWait(1200);  // longer than the run takes to ask again
    QCOMPARE(scene.Arrived(), arrived);
    QCOMPARE(hold->text(), QString("Go &on"));
    hold->click();
    QTRY_VERIFY(scene.Arrived() > arrived);
    QCOMPARE(scene.rig.power.awake.load(), 1);
    hold->click();
    QTRY_VERIFY(scene.Text("RateLabel").startsWith("Paused. "));
    QElapsedTimer since;
    since.start();
    scene.rig.prompts.answers = {platform::Answer::kYes};
    scene.Press("SendButton");
    QTRY_COMPARE(scene.Caption(), QString("Close"));
    QVERIFY2(since.elapsed() < 1500, "a cancel waits for nothing");
    QVERIFY(!hold->isVisible());
    QVERIFY(scene.Text("StatusLine").contains("not tried"));
    QCOMPARE(scene.Report().count("Message sent successfully."), static_cast<int>(scene.Arrived()));
  }

  // As when the system ends the program, or the network stays away: the next start offers to go on; a run that the
  // person cancelled is not offered.
  void aRunThatItsProgramLeftIsOffered() {
    enum class End { kOfTheProgram, kOfTheNetwork, kByThePerson };
    for (const End end : {End::kOfTheProgram, End::kOfTheNetwork, End::kByThePerson}) {
      const bool is_cancelled = end == End::kByThePerson;
      Scene scene(20000);
      if (end == End::kOfTheNetwork) QVERIFY(scene.rig.settings.Write("Account", "NetworkWait", "1s"));
      scene.Press("SendButton");
      QTRY_VERIFY(scene.Arrived() > 0);
      QVERIFY(scene.Arrived() < 20000);
      if (end == End::kOfTheNetwork) {
        scene.mailbox.GoAway();
        QTRY_COMPARE_WITH_TIMEOUT(scene.Caption(), QString("Close"), 20000);
      }
      if (is_cancelled) {
        scene.rig.prompts.answers = {platform::Answer::kYes};
        scene.Press("SendButton");
        QTRY_COMPARE(scene.Caption(), QString("Close"));
      }
      scene.form.reset();
      MainForm next(scene.rig.program);
      next.Load();
      next.show();
      const auto is_offered = [notice = next.findChild<QWidget*>("NoticeBar")] {
        return notice->isVisible() && test::Text(*notice, "NoticeLabel").contains("was cut off.");
      };
      if (is_cancelled) QTest::qWait(500);  // longer than the window takes to look
      QTRY_COMPARE(is_offered(), !is_cancelled);
    }
  }

  void whatWasSavedStaysToldUntilAnotherFilterIsChosen() {
    Scene scene({"a@example.org"});
    scene.mailbox.Hold();
    scene.Press("SendButton");
    QTRY_VERIFY(scene.mailbox.has_one());
    scene.rig.prompts.files = {scene.rig.folder / "results.txt"};
    scene.Press("SaveResultsButton");
    QTest::qWait(300);  // longer than the window takes to look at the run again
    const QString saved = "0 results were saved as " + PathToQt(scene.rig.folder / "results.txt") + ". ";
    QCOMPARE(scene.Text("ResultCountLabel"), saved + "0 of 0 results");
    scene.mailbox.Release();
    QTRY_COMPARE(scene.Text("ResultCountLabel"), saved + "1 of 1 results");
    scene.form->findChild<QComboBox*>("ResultStateComboBox")->setCurrentText("sent");
    QVERIFY2(!scene.Text("ResultCountLabel").contains("saved"), qPrintable(scene.Text("ResultCountLabel")));
  }

  void itSaysThatItWaitsForThePassword() {
    Scene scene({"a@example.org"});
    for (const auto& [key, value] : {std::pair{"Auth", "1"}, {"Username", "ada"}, {"PasswordFrom", "Keyring"}})
      QVERIFY(scene.rig.settings.Write("Account", key, value));
    scene.rig.keyring.hangs = true;
    scene.Press("SendButton");
    QTRY_COMPARE(scene.Text("StatusLine"), QString("Asking the keyring for the password…"));
    scene.rig.prompts.answers = {platform::Answer::kYes};
    scene.Press("SendButton");
    QTRY_COMPARE(scene.Caption(), QString("Close"));
    QVERIFY2(scene.Text("StatusLine").contains("cancelled"), qPrintable(scene.Text("StatusLine")));
  }

  void theQuestionGoesWhenTheRunIsOver() {
    Scene scene({"a@example.org"});
    scene.mailbox.Hold();
    QtPrompts prompts("Test");
    profile::Program program{scene.rig.folders, scene.rig.settings, prompts,           scene.rig.desktop,
                             scene.rig.power,   scene.rig.clock,    scene.rig.entropy, scene.rig.keyring};
    scene.form = std::make_unique<SendMailForm1>(program, document::MessageDocument(), scene.Customers(),
                                                 SendMailForm1::Server::kReal, nullptr);
    scene.form->show();
    scene.Press("SendButton");
    QTRY_VERIFY(scene.mailbox.has_one());
    bool stayed = false;
    QTimer::singleShot(200, qApp, [&scene] { scene.mailbox.Release(); });
    QTimer::singleShot(5000, scene.form.get(), [&stayed] {
      if (auto* box = QApplication::activeModalWidget(); qobject_cast<QMessageBox*>(box) != nullptr) {
        stayed = true;
        box->close();
      }
    });
    scene.Press("SendButton");  // comes back when the box is gone
    QVERIFY(!stayed);
    QCOMPARE(scene.Caption(), QString("Close"));
  }

  void aServerThatRefusesEverybodyIsAskedAboutInTheDialog() {
    Scene scene(45);
    scene.OpenFrom("refused@example.org");
    auto* panel = scene.form->findChild<QWidget*>("PausePanel");
    scene.Press("SendButton");
    QTRY_VERIFY(panel->isVisible());
    QTest::qWait(700);  // longer than a rate needs to be told
    QCOMPARE(scene.Text("RateLabel"), QString());
    QCOMPARE(scene.rig.power.awake.load(), 0);
    const auto told = [&](const char* words) { return scene.Text("PauseLabel").contains(words); };
    QVERIFY2(told("20 times in a row"), qPrintable(scene.Text("PauseLabel")));
    QVERIFY2(told("“Go on” leaves out the 20 recipients who got nothing so far"), qPrintable(scene.Text("PauseLabel")));
    QCOMPARE(scene.Report().count("There was an error sending your message."), 20);
    QCOMPARE(scene.Kept().count("There was an error sending your message."), 20);  // who is asked may read the file
    scene.form->findChild<QPushButton*>("GoOnButton")->setFocus();
    QTest::keyClick(scene.form->findChild<QPushButton*>("GoOnButton"), Qt::Key_Return);
    QVERIFY(!panel->isVisible());
    QTRY_VERIFY(panel->isVisible());
    QVERIFY2(told("leaves out the 40 recipients who got"), qPrintable(scene.Text("PauseLabel")));
    scene.Press("StopButton");
    QTRY_COMPARE(scene.Caption(), QString("Close"));
    QVERIFY(!panel->isVisible());
    QVERIFY2(!scene.form->findChild<QWidget*>("ShutDownCheckBox")->isEnabled(), "nothing comes of it any more");
    QVERIFY2(scene.Text("StatusLine").contains("0 messages were sent, 40 failed. 5 recipients were not tried"),
             qPrintable(scene.Text("StatusLine")));
    QCOMPARE(scene.rig.Shown(), QString());
  }

  void cancellingWhileItWaitsForAnAnswerIsOne() {
    Scene scene(25);
    scene.OpenFrom("refused@example.org");
    scene.Press("SendButton");
    QTRY_VERIFY(scene.form->findChild<QWidget*>("PausePanel")->isVisible());
    scene.rig.prompts.answers = {platform::Answer::kYes};
    scene.Press("SendButton");
    QTRY_COMPARE(scene.Caption(), QString("Close"));
    QVERIFY(scene.Text("StatusLine").contains("5 recipients were not tried"));
  }

  void itSaysWhoSendsOverWhichServer() {
    Scene scene({"a@example.org"});
    QVERIFY(scene.rig.settings.Write("Account", "Server", "mail.example.org; mx.example.org:26"));
    QVERIFY(scene.rig.settings.Write("Account", "Port", "587"));
    SendMailForm1 real(scene.rig.program, {}, {}, SendMailForm1::Server::kReal, nullptr);
    QCOMPARE(test::Text(real, "RouteLabel"),
             QString("From Ada <ada@example.org> over mail.example.org, port 587, or mx.example.org, port 26"));
    QVERIFY(test::Text(real, "PaceLabel").isEmpty());
    QApplication::setLayoutDirection(Qt::RightToLeft);  // the brackets stay at the address
    const SendMailForm1 turned(scene.rig.program, {}, {}, SendMailForm1::Server::kReal, nullptr);
    QApplication::setLayoutDirection(Qt::LeftToRight);
    const QString route = test::Text(turned, "RouteLabel");
    QVERIFY2(route.startsWith("From \u2068Ada <ada@example.org>\u2069 over \u2068mail.example.org,"),
             qPrintable(route));
    QVERIFY(scene.rig.settings.Write("Account", "Rate", "30/min"));
    QVERIFY(scene.rig.settings.Write("Account", "Connections", "4"));
    SendMailForm1 practice(scene.rig.program, {}, {}, SendMailForm1::Server::kPractice, nullptr);
    QCOMPARE(test::Text(practice, "PaceLabel"), "Pace: 30 a minute, 4 connections (the page Pace of the mail account)");
    QVERIFY(test::Text(practice, "RouteLabel").startsWith("Practice: from Ada <ada@example.org>"));
  }

  // The account lets one an hour out; this run is told otherwise, and keeps it for those who go on with it.
  void thePaceIsChosenForOneRun() {
    Scene scene({"a@example.org", "b@example.org"});
    auto& settings = scene.rig.settings;
    QVERIFY(settings.Write("Account", "Rate", "1/h"));
    QVERIFY(settings.Write("Account", "QuotaHour", "900"));
    scene.Open({});
    const QString of_account = scene.Text("PaceLabel");
    struct Case {
      const char *field, *value;
      const char* said;  // the words of the account's dialog
    };
    test::WhileOpen("RunPaceForm", [&](QDialog& form) {
      const auto line = [&](const char* name) { return form.findChild<QLineEdit*>(name); };
      const auto* status = form.findChild<QLabel*>("StatusLine");
      QVERIFY2(!form.findChild<QPushButton*>("AccountPaceButton"), "nobody here could open the account");
      QCOMPARE(line("RateTextBox")->text(), QString("1/h"));
      QCOMPARE(line("ConnectionsTextBox")->text(), QString());
      QCOMPARE(form.focusWidget(), line("RateTextBox"));
      for (const Case& c :
           {Case{
                "RateTextBox", "fast",
                "\"fast\" is no rate. Write a number of messages from 1 to 1,000,000, \"/\", and s, min, h or day, for "
                "example 30/min."},
            Case{"ConnectionsTextBox", "51", "\"51\" is no number of connections. Write a whole number from 1 to 50."},
            Case{"NetworkWaitTextBox", "0",
                 "\"0\" is no time to wait. Write a number and s, min or h, up to a day, for example 90s, 5min or "
                 "1h."},
            Case{"BeginTextBox", "25:00",
                 "There is no time \"25:00\". Write HH:MM for the next time that it is so late, or YYYY-MM-DD "
                 "HH:MM."}}) {
        const QString before = line(c.field)->text();
        line(c.field)->setText(c.value);
        form.findChild<QPushButton*>("UseButton")->click();
        QCOMPARE(status->text(), QString(c.said));
        QCOMPARE(form.focusWidget(), line(c.field));
        QVERIFY(form.isVisible());
        line(c.field)->setText(before);
        QCOMPARE(status->text(), QString());
      }
      line("RateTextBox")->clear();
      form.reject();
    });
    scene.Press("PaceButton");
    QCOMPARE(scene.Text("PaceLabel"), of_account);
    test::WhileOpen("RunPaceForm", [](QDialog& form) {
      form.findChild<QLineEdit*>("RateTextBox")->clear();
      form.findChild<QLineEdit*>("ConnectionsTextBox")->setText("2");
      form.findChild<QLineEdit*>("BeginTextBox")->setText(" 2099-12-24 18:00");
      form.findChild<QPushButton*>("UseButton")->click();
    });
    scene.Press("PaceButton");
    QCOMPARE(scene.Text("PaceLabel"),
             QString("Pace: 900 an hour, 2 connections, not before 2099-12-24 18:00:00 (for this run alone)"));
    // Whoever looks again finds what was chosen, and may take it back.
    test::WhileOpen("RunPaceForm", [](QDialog& form) {
      auto* rate = form.findChild<QLineEdit*>("RateTextBox");
      QCOMPARE(rate->text(), QString());
      QCOMPARE(test::Text(form, "ConnectionsTextBox"), QString("2"));
      QCOMPARE(test::Text(form, "BeginTextBox"), QString("2099-12-24 18:00"));
      form.findChild<QLineEdit*>("ConnectionsTextBox")->clear();
      form.findChild<QLineEdit*>("BeginTextBox")->clear();
      form.findChild<QPushButton*>("UseButton")->click();
    });
    scene.Press("PaceButton");
    QCOMPARE(scene.Text("PaceLabel"), QString("Pace: 900 an hour (for this run alone)"));
    scene.Press("SendButton");
    QVERIFY(!scene.form->findChild<QPushButton*>("PaceButton")->isEnabled());
    QTRY_COMPARE(scene.Caption(), QString("Close"));
    QCOMPARE(scene.Arrived(), 2U);
    const platform::CancelToken none;
    const auto runs = (*run::OpenJournal(scene.rig.folders, scene.rig.clock, none))->List();
    QCOMPARE(run::OptionsIn(runs->mailings.front().runs.back().pace, scene.rig.clock),
             (run::PaceTexts{.rate = "none"}));
    QCOMPARE(settings.Read("Account", "Rate", "")->c_str(), "1/h");
  }

  // Where the account is changed from there, what was not typed for the run follows it.
  void thePaceFollowsTheAccountThatIsChanged() {
    Scene scene({"a@example.org"});
    auto& settings = scene.rig.settings;
    QVERIFY(settings.Write("Account", "Rate", "1/h"));
    QWidget* over = nullptr;
    scene.form->OfferAccount([&](QWidget* window) {
      over = window;
      QVERIFY(settings.Write("Account", "Rate", "9/h"));
      QVERIFY(settings.Write("Account", "Retries", "5"));
      QVERIFY(settings.Write("Account", "Name", "Grace"));
    });
    test::WhileOpen("RunPaceForm", [&](QDialog& form) {
      form.findChild<QLineEdit*>("ConnectionsTextBox")->setText("3");
      form.findChild<QLineEdit*>("RetriesTextBox")->setText("1");
      form.findChild<QPushButton*>("AccountPaceButton")->click();
      QCOMPARE(over, &form);
      QCOMPARE(test::Text(form, "RateTextBox"), QString("9/h"));
      QCOMPARE(test::Text(form, "ConnectionsTextBox"), QString("3"));
      QCOMPARE(test::Text(form, "RetriesTextBox"), QString("1"));
      form.reject();
    });
    scene.Press("PaceButton");
    QCOMPARE(scene.Text("PaceLabel"), QString("Pace: 9 an hour, 5 retries (the page Pace of the mail account)"));
    QVERIFY2(scene.Text("RouteLabel").startsWith("From Grace "), qPrintable(scene.Text("RouteLabel")));
  }

  void theSecondClickStartsNothingThatNobodyHasRead() {
    Scene scene({"a@example.org"});
    QVERIFY(scene.rig.settings.Write("Account", "Server", "127.0.0.1; 127.0.0.1"));
    scene.Press("SendButton");
    QTRY_VERIFY(scene.Text("StatusLine").startsWith("Nothing was sent: the account names another server"));
    scene.Press("SendButton");
    QTest::keyClick(scene.form.get(), Qt::Key_Return);
    QTest::qWait(QApplication::doubleClickInterval());
    QCOMPARE(scene.Caption(), QString("Send"));
    auto* button = scene.form->findChild<QPushButton*>("SendButton");
    QTRY_VERIFY(button->isEnabled() && button->hasFocus());
    QTest::keyClick(scene.form.get(), Qt::Key_Return);
    QTRY_COMPARE(scene.Caption(), QString("Close"));
    QCOMPARE(scene.Arrived(), std::size_t{1});
  }

  void aWindowThatGoesEndsTheRunInGoodOrder() {
    Scene scene(20000);
    scene.Press("SendButton");
    QTRY_VERIFY(scene.Arrived() > 0);
    scene.form.reset();
    std::string report;
    for (const auto& entry : std::filesystem::directory_iterator(scene.rig.folders.History())) {
      if (entry.path().extension() == ".txt") report = *platform::ReadFile(entry.path(), 10000000);
    }
    const std::string end = "Personal Sending process has been completed.\r\n" + std::to_string(scene.Arrived()) +
                            " messages sent during process.\r\n";
    QVERIFY2(report.ends_with(end), report.substr(report.size() - std::min<std::size_t>(report.size(), 300)).c_str());
  }

  void whatIsKnownIsToldAboveTheButton() {
    Scene scene({"a@example.org"});
    document::MessageDocument document;
    document.html = "<p>$*MergeCity*$ $*MergeNickName*$</p><img src='missing.png'>";
    document.attachments.Add("/nowhere/price.pdf");
    scene.Open(std::move(document));
    auto* notes = scene.form->findChild<QAbstractItemView*>("NotesList");
    QTRY_VERIFY(notes->isVisible());
    const QStringList told = test::RowsOf(*scene.form, "NotesList");
    for (const char* what : {"price.pdf", "missing.png", "$*MergeNickName*$", "no value for $*MergeCity*$"})
      QCOMPARE(told.filter(what).size(), 1);
    auto* button = scene.form->findChild<QPushButton*>("SendButton");
    QVERIFY(notes->mapTo(scene.form.get(), QPoint(0, notes->height())).y() <=
            button->mapTo(scene.form.get(), QPoint()).y());
    scene.Press("SendButton");  // the run begins once it is known that there is nothing to ask
    QTRY_VERIFY(!notes->isVisible());
    QTRY_COMPARE(scene.Caption(), QString("Close"));
  }

  void aLookOverALongListHoldsUpNothing() {
    Scene scene(20000);
    QCOMPARE(scene.Text("NotesLabel"), QString("Looking over the message and the whole group…"));
    QTRY_VERIFY(scene.Text("NotesLabel").startsWith("Nothing was found"));
  }

  void aMissingAttachmentIsToldAndNothingIsSent() {
    Scene scene({"a@example.org"});
    document::MessageDocument document;
    document.html = "<p>x</p>";
    document.attachments.Add("/nowhere/price.pdf");
    scene.Open(std::move(document));
    scene.Press("SendButton");
    QTRY_COMPARE(scene.Caption(), QString("Close"));
    QVERIFY(scene.Report().join("\n").contains("Error 10:"));
    QCOMPARE(scene.Arrived(), std::size_t{0});
  }

  void theMachineIsSwitchedOffAfterTheCountdownAlone() {
    struct Case {
      bool cancelled, allowed;
      int requests;
      bool shuts_down;
      const char *steps, *told;
    };
    for (const Case& c : {Case{true, true, 0, false, "", ""},
                          Case{false, false, 1, false, "closed skip 0, closed ask 1", "The system refused."},
                          Case{false, true, 1, true, "closed skip 0", ""}}) {
      Scene scene({"a@example.org", "no@example.org"});
      scene.rig.power.allowed = c.allowed;
      QStringList steps;
      QString told;
      scene.form->refused = [&](const QString& why) { told += why; };
      scene.form->skip_save_prompt = [&](bool skip) {
        steps << QString(scene.form->isVisible() ? "open" : "closed") + (skip ? " skip " : " ask ") +
                     QString::number(scene.rig.power.requests.load());
      };
      scene.form->findChild<QCheckBox*>("ShutDownCheckBox")->setChecked(true);
      int closed = 0;
      test::WhileOpen("ShutDownForm", [&](QDialog& countdown) {
        auto& timer = *countdown.findChild<QTimer*>("SecondTimer");
        timer.setInterval(1 << 30);
        for (int second = 0; second < 60 && !c.cancelled; ++second) test::PassTime(timer);
        if (!c.cancelled) QTRY_VERIFY(c.allowed ? !countdown.isVisible() : !told.isEmpty());
        QCOMPARE(countdown.isVisible(), c.cancelled || !c.allowed);
        QCOMPARE(told, QString(c.told));  // at once
        if (countdown.isVisible()) countdown.findChild<QPushButton*>("CancelButton")->click();
        QVERIFY(!countdown.isVisible());
        ++closed;
      });
      scene.Press("SendButton");
      QTRY_COMPARE(closed, 1);
      QCOMPARE(scene.rig.power.requests.load(), c.requests);
      QCOMPARE(scene.form->shuts_down(), c.shuts_down);
      QCOMPARE(scene.form->isVisible(), c.cancelled);
      QCOMPARE(steps.join(", "), QString(c.steps));
      QCOMPARE(scene.rig.Shown(), QString());  // in no box
    }
  }

  void anAccountThatCannotBeUsedIsTold() {
    Scene scene({"a@example.org"});
    QVERIFY(scene.rig.settings.Write("Account", "Port", "mail"));
    scene.Press("SendButton");
    QTRY_COMPARE(scene.Caption(), QString("Close"));
    QVERIFY2(scene.Text("StatusLine").contains("port"), qPrintable(scene.Text("StatusLine")));
  }

  void aLongReportIsOnlyIndexed() {
    test::TemporaryFolder folder;
    std::string text;
    for (int i = 0; i < 200000; ++i) text += "line " + std::to_string(i) + "\r\n";
    const auto file = folder.Write("report.txt", text);
    ReportView view(nullptr);
    view.resize(400, 300);
    view.show();
    view.Open(file);
    QCOMPARE(view.line_count(), std::size_t{200000});
    QCOMPARE(view.LineAt(123456), QString("line 123456"));
    QTest::keyClick(&view, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(&view, Qt::Key_C, Qt::ControlModifier);
    QVERIFY(QGuiApplication::clipboard()->text().endsWith("line 199999\n"));
    const auto* bar = view.verticalScrollBar();
    for (const int height : {150, 60, 400}) {
      view.resize(400, height);
      QCOMPARE(bar->value(), bar->maximum());
      QVERIFY(bar->maximum() > 199000);
    }
    QTest::keyClick(&view, Qt::Key_Home);
    QTest::keyClick(&view, Qt::Key_Down);
    QTest::keyClick(&view, Qt::Key_Down, Qt::ShiftModifier);
    QCOMPARE(view.accessibleDescription(), QString("line 2"));
    QTest::keyClick(&view, Qt::Key_C, Qt::ControlModifier);
    QCOMPARE(QGuiApplication::clipboard()->text(), QString("line 1\nline 2\n"));
    folder.Write("report.txt", text + "half a line");
    view.Update();
    QCOMPARE(view.line_count(), std::size_t{200000});
  }
};

}  // namespace quillcast::desktop

QTEST_MAIN(quillcast::desktop::SendFormTest)
#include "send_form_test.moc"
