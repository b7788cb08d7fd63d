// The dialog that asks for help, against the built-in mailbox and servers that fail.
#include "desktop/support/support_form.h"

#include <QScreen>
#include <QTabWidget>
#include <atomic>
#include <memory>

#include "desktop/form_rig.h"
#include "desktop/hands.h"
#include "desktop/widgets/qt_text.h"
#include "platform/file.h"
#include "smtp/mailbox/running_mailbox.h"
#include "smtp/scripted_server.h"

namespace quillcast::desktop {
namespace {

constexpr const char* kFailed =
    " | ask: Sending your support request to Tarnwick failed./Would you like to visit the online support form instead?";

class DeskAddress final : public platform::Environment {
 public:
  std::string address = "desk@support.example";
  std::optional<std::string> Get(const char*) const override { return address; }
};

struct Scene : test::Hands<Scene> {
  test::FormRig rig;
  DeskAddress environment;
  std::atomic<int> arrived = 0;
  std::unique_ptr<smtp::RunningMailbox> mailbox;
  std::unique_ptr<SupportForm> form;

  void Listen() {
    smtp::MailboxOptions options;
    options.store = rig.folder.path() / "Mailbox";
    options.kept = [this](const smtp::MailboxMessage&) { ++arrived; };
    mailbox = std::move(*smtp::RunningMailbox::Start(std::move(options), rig.clock));
    rig.FillInAccount(mailbox->port());
  }
  void Open(SupportForm::Server server = SupportForm::Server::kReal) {
    form = std::make_unique<SupportForm>(rig.program, environment, "High", server, nullptr);
    form->show();
    if (!QTest::qWaitForWindowActive(form.get())) qFatal("The form did not open.");
  }
  void Describe(const QString& text) const { Find<QPlainTextEdit>("DescriptionTextBox").setPlainText(text); }
  void SendToTheEnd() const {
    Press("OKButton");
    QTRY_VERIFY(Find("OKButton").isEnabled());
  }
};

}  // namespace

class SupportFormTest : public QObject {
  Q_OBJECT

 private slots:
  void opensFilledIn() {
    Scene scene;
    scene.rig.FillInAccount();
    scene.Open();
    QCOMPARE(scene.Text("NameTextBox"), "Ada");
    QCOMPARE(scene.Text("EmailTextBox"), "ada@example.org");
    QCOMPARE(scene.Text("ProductTextBox"), "Tarnwick Quillcast Classic Edition 1.0");
    QVERIFY(!scene.Text("OSTextBox").isEmpty());
    const auto& topics = scene.Find<QComboBox>("TopicComboBox");
    QStringList texts;
    for (int i = 0; i < topics.count(); ++i) texts << topics.itemText(i);
    QCOMPARE(texts.join('|'),
             "Bug Report|Sales Query|Support Request|Criticism or Complaint|Product Idea and Suggestion");
    QCOMPARE(topics.currentText(), "Support Request");
    QCOMPARE(scene.Find<QComboBox>("PriorityComboBox").currentText(), "High");
    QCOMPARE(scene.Find<QComboBox>("DriveListBox").itemText(0), "/");
    QCOMPARE(scene.Find<QPlainTextEdit>("DescriptionTextBox").toPlainText() + scene.Text("AttachmentTextBox"), "");
    QCOMPARE(scene.Focus(), "DescriptionTextBox");
    QTRY_COMPARE(scene.Find("CheckBox1").toolTip(), "There was no run yet.");
    for (const char* box : {"CheckBox1", "CheckBox2", "CheckBox3"}) QVERIFY(!scene.Find(box).isEnabled());
  }

  void takesOneAttachment() {
    Scene scene;
    scene.Open();
    scene.Press("AddButton");
    QCOMPARE(scene.rig.Shown(), "open: Technical Support");
    QCOMPARE(scene.Text("AttachmentTextBox"), "");
    scene.rig.prompts.files = {"/a/picture.png"};
    scene.Press("AddButton");
    QCOMPARE(scene.Text("AttachmentTextBox"), "/a/picture.png");
    scene.Press("RemoveButton");
    QCOMPARE(scene.Text("AttachmentTextBox"), "");
  }

  void refusesWhatCannotBeSent() {
    Scene scene;
    scene.rig.FillInAccount("1");
    scene.Open();
    scene.Find<QTabWidget>("SupportTabs").setCurrentIndex(1);
    scene.Press("OKButton");
    QCOMPARE(scene.rig.Shown(), "warn: Please enter your description.");
    QCOMPARE(scene.Focus(), "DescriptionTextBox");
    scene.Describe("Help");
    scene.Find<QLineEdit>("EmailTextBox").setText("nobody");
    scene.Press("OKButton");
    QCOMPARE(scene.Focus(), "EmailTextBox");
    scene.Find<QLineEdit>("EmailTextBox").setText("ada@example.org");
    scene.environment.address = "desk";
    scene.Press("OKButton");
    QVERIFY2(scene.Status().contains("QUILLCAST_SUPPORT_ADDRESS"), qPrintable(scene.Status()));
    QCOMPARE(scene.rig.Shown(), "");
  }

  void sendsARequestOnce() {
    Scene scene;
    scene.Listen();
    scene.Open();
    scene.Describe("Help");
    for (int press = 0; press < 2; ++press) scene.SendToTheEnd();
    QCOMPARE(scene.rig.Shown(),
             "inform: Your message has been successfully sent to Tarnwick./Please click Cancel to quit.");
    QVERIFY2(scene.Status().contains("was sent"), qPrintable(scene.Status()));
    QCOMPARE(scene.arrived.load(), 1);
    scene.Describe("Help me");
    scene.SendToTheEnd();
    QCOMPARE(scene.arrived.load(), 2);
    scene.Press("CancelButton");
    QVERIFY(!scene.form->isVisible());
    scene.Open(SupportForm::Server::kPractice);
    QVERIFY(scene.Status().contains("nowhere else"));
    scene.Describe("Help");
    scene.SendToTheEnd();
    QVERIFY2(scene.Status().contains("nowhere else"), qPrintable(scene.Status()));
  }

  void sendsOverNoServerThatNobodyHasRead() {
    for (const auto server : {SupportForm::Server::kPractice, SupportForm::Server::kReal}) {
      Scene scene;
      scene.rig.FillInAccount("1");
      scene.Open(server);
      scene.Listen();  // there from now on
      scene.Describe("Help");
      for (int press = 0; press < 2; ++press) scene.Press("OKButton");
      const QString told = "Nothing was sent: the account names another server by now, 127.0.0.1, port " +
                           ToQt(scene.mailbox->port()) + ". Look whether that is right, and send once more.";
      QCOMPARE(scene.Status(), told);
      QCOMPARE(scene.rig.Shown(), "");
      QTRY_VERIFY(scene.Find("OKButton").isEnabled());
      QCOMPARE(scene.Focus(), "OKButton");
      QCOMPARE(scene.arrived.load(), 0);
      scene.SendToTheEnd();
      QCOMPARE(scene.arrived.load(), 1);
      QVERIFY2(!scene.Status().contains("nowhere else"), qPrintable(scene.Status()));
    }
  }

  // The server changes behind the look at it, before the request goes.
  void tellsOfAServerThatChangedOnTheWay() {
    struct Changing final : QObject {
      explicit Changing(Scene& changed) : scene(changed) {}
      bool eventFilter(QObject* status, QEvent* event) override {
        if (event->type() == QEvent::PaletteChange && scene.Status().startsWith("Sending"))
          scene.rig.FillInAccount("2");
        return QObject::eventFilter(status, event);
      }
      Scene& scene;
    };
    Scene scene;
    scene.rig.FillInAccount("1");
    scene.Open(SupportForm::Server::kPractice);  // its line has a colour, and loses it when it is sent
    Changing changing(scene);
    scene.Find("StatusLine").installEventFilter(&changing);
    scene.Describe("Help");
    scene.SendToTheEnd();
    QCOMPARE(scene.rig.Shown(), "");
    QCOMPARE(scene.Status(),
             "Nothing was sent: the account names another server by now, 127.0.0.1, port 2. Look "
             "whether that is right, and send once more.");
  }

  void offersTheOnlineFormAfterAFailure() {
    Scene scene;
    scene.rig.FillInAccount("1");
    scene.Open();
    scene.Describe("Help");
    scene.rig.prompts.answers = {platform::Answer::kNo, platform::Answer::kYes};
    scene.SendToTheEnd();
    QCOMPARE(
        scene.rig.Shown(),
        QString("warn: There was an error sending your message./Error 9: There was an error connecting to the SMTP "
                "mail server.") +
            kFailed);
    QVERIFY(scene.rig.desktop.opened.empty());
    scene.Find<QLineEdit>("AttachmentTextBox").setText("/nowhere/picture.png");
    scene.SendToTheEnd();
    QVERIFY(scene.rig.Shown().startsWith("warn: There was an error sending your message./Error 10: "));
    QVERIFY2(scene.Status().contains("/nowhere/picture.png"), qPrintable(scene.Status()));
    QCOMPARE(scene.rig.desktop.opened, std::vector<std::string>{"https://www.quillcast.example/support"});
  }

  void isGivenUpByCancel() {
    std::atomic<bool> over = false;
    std::atomic<bool> reached = false;
    const smtp::ScriptedServer silent([&](smtp::Peer&, int) {
      reached = true;
      while (!over) std::this_thread::sleep_for(std::chrono::milliseconds(10));
    });
    Scene scene;
    scene.rig.FillInAccount(std::to_string(silent.port()));
    scene.Open();
    scene.Describe("Help");
    scene.Press("OKButton");
    QTRY_VERIFY(reached);
    QVERIFY(!scene.Find("OKButton").isEnabled() && !scene.Find("SupportTabs").isEnabled());
    QTest::keyClick(scene.form.get(), Qt::Key_Escape);
    QTRY_VERIFY(scene.Find("OKButton").isEnabled());
    QCOMPARE(scene.rig.Shown(), "");  // one's own cancel is no failure
    QCOMPARE(scene.Status(), "The request was not sent: it was cancelled.");
    QVERIFY(scene.form->isVisible());
    over = true;
    for (const char* description : {"Help", "Help me"}) {  // what was typed is not lost at one key
      scene.Describe(description);
      QTest::keyClick(scene.form.get(), Qt::Key_Escape);
      QVERIFY2(scene.Status().contains("throws it away"), qPrintable(scene.Status()));
      QVERIFY(scene.form->isVisible());
    }
    QTest::keyClick(scene.form.get(), Qt::Key_Escape);
    QVERIFY(!scene.form->isVisible());
  }

  void showsWhatGoesAlong() {
    Scene scene;
    scene.rig.FillInAccount();
    const auto report = scene.rig.folders.History() / "07-03-2026_09-05-07_Hello.txt";
    QVERIFY(platform::ReplaceFile(report, "x"));
    scene.Open();
    QTRY_VERIFY(scene.Find("CheckBox1").isEnabled());
    QVERIFY(!scene.Find("CheckBox2").isEnabled());
    scene.Find<QCheckBox>("CheckBox1").click();
    auto& pages = scene.Find<QTabWidget>("SupportTabs");
    const auto& contents = scene.Find<QPlainTextEdit>("ContentsTextBox");
    pages.setCurrentIndex(1);
    QTRY_VERIFY(contents.toPlainText().contains("Account-Name: Ada\n"));
    const QString size = QString("Screen Resolution: %1x%2\n")
                             .arg(scene.form->screen()->size().width())
                             .arg(scene.form->screen()->size().height());
    for (const QString& line : {QString("To: desk@support.example\n"), QString("From: Ada <ada@example.org>\n"),
                                QString("Attached: 07-03-2026_09-05-07_Hello.txt (1 byte)\n"), size}) {
      QVERIFY2(contents.toPlainText().contains(line), qPrintable(line));
    }
    std::filesystem::remove(report);
    pages.setCurrentIndex(0);
    pages.setCurrentIndex(1);
    QTRY_VERIFY(contents.toPlainText().contains("There is no report of a run."));
    // A password that stands in another setting is hidden as in what is sent, wherever it is.
    for (const auto& [key, value] : {std::pair("Auth", "1"),
                                     {"Username", "ada"},
                                     {"PasswordFrom", "Command"},
                                     {"PasswordCommand", "echo secret-7"},
                                     {"Email", "secret-7@example.org"}})
      QVERIFY(scene.rig.settings.Write("Account", key, value));
    scene.Find<QCheckBox>("CheckBox1").setChecked(false);
    pages.setCurrentIndex(0);
    pages.setCurrentIndex(1);
    QTRY_VERIFY(contents.toPlainText().contains("Account-Email: "));
    QVERIFY2(!contents.toPlainText().section("Account-Email", 1).contains("secret-7"),
             qPrintable(contents.toPlainText()));
    QVERIFY(scene.rig.settings.Write("Account", "PasswordCommand", "false"));
    pages.setCurrentIndex(0);
    pages.setCurrentIndex(1);
    QTRY_VERIFY(contents.toPlainText().startsWith("The password is not known, and so is not hidden"));
  }
};

}  // namespace quillcast::desktop

QTEST_MAIN(quillcast::desktop::SupportFormTest)
#include "support_form_test.moc"
