// The domain tools' windows against servers on loopback.
#include <QClipboard>
#include <QElapsedTimer>
#include <QGuiApplication>

#include "desktop/domain/conversion_form.h"
#include "desktop/domain/domain_check_form.h"
#include "desktop/domain/domain_tools_form.h"
#include "desktop/domain/mx_lookup_form.h"
#include "desktop/form_rig.h"
#include "desktop/hands.h"
#include "domain/sender/kept_check.h"
#include "platform/text.h"
#include "smtp/scripted_server.h"
#include "support/dns_server.h"

namespace quillcast::desktop {
namespace {

template <typename Form>
struct Scene : test::Hands<Scene<Form>> {
  test::FormRig rig;
  Form form;

  template <typename... More>
  explicit Scene(More&&... more) : form(rig.program, std::forward<More>(more)...) {}
  void Open() {
    form.show();
    if (!QTest::qWaitForWindowActive(&form)) qFatal("The form did not open.");
  }
};

using ToolsScene = Scene<DomainToolsForm>;
constexpr auto kTools = {"Label",       "DomainTextBox",  "ExtensionComboBox", "WhoisButton",   "SaveButton",
                         "PrintButton", "DomainIPButton", "IPDomainButton",    "MXLookupButton"};

std::unique_ptr<net::DnsServer> Names() {
  return std::make_unique<net::DnsServer>(std::vector{
      net::AddressRecord("host.example", "192.0.2.7"), net::AddressRecord("host.example", "2001:db8::7"),
      net::PtrRecord("7.2.0.192.in-addr.arpa", "host.example"), net::MxRecord("mail.example", 20, "b.example"),
      net::MxRecord("mail.example", 10, "a.example"), net::TxtRecord("mail.example", {"v=spf1 +all"})});
}

}  // namespace

class DomainFormsTest : public QObject {
  Q_OBJECT

 private slots:
  void checksTheNameInTheGivenOrder() {
    ToolsScene scene(nullptr);
    scene.Open();
    QCOMPARE(scene.Find<QComboBox>("ExtensionComboBox").currentText(), ".com");
    for (const auto& [typed, told] : std::vector<std::pair<const char*, const char*>>{
             {"", "warn: Please specify your domain."},
             {"-", "warn: Domain name must be at least 2 characters."},
             {"._ -", "warn: Domain name must be at least 2 characters."}}) {
      scene.Type("DomainTextBox", typed);
      scene.Find("SaveButton").setFocus();
      scene.Press("WhoisButton");
      QCOMPARE(scene.rig.Shown(), told);
      QCOMPARE(scene.Focus(), "DomainTextBox");
    }
    scene.Type("DomainTextBox", "a.b_c D-9");
    QCOMPARE(scene.Find<QLineEdit>("DomainTextBox").text(), "abcD-9");
    scene.Press("SaveButton");
    scene.Press("PrintButton");
    QCOMPARE(scene.rig.Shown(), "warn: There is no data to save. | warn: There is no data to print.");
  }

  void asksTheRegistryAndWhomItNames() {
    const smtp::ScriptedServer server([](smtp::Peer& peer, int) {
      peer.Say("Asked: " + peer.Line() + "\nSecond line\nRegistrar WHOIS Server: whois.registrar.example\n");
    });
    ToolsScene scene(nullptr);
    std::string extension;
    scene.form.server_for = [&](std::string_view asked) {
      extension = asked;
      return net::HostPort{"127.0.0.1", server.port()};
    };
    scene.Open();
    scene.Type("DomainTextBox", "example");
    scene.Find<QComboBox>("ExtensionComboBox").setCurrentText(".ORG");
    scene.Press("WhoisButton");
    QCOMPARE(scene.Disabled(kTools).split(' ').size(), static_cast<qsizetype>(kTools.size()));
    QTRY_COMPARE(scene.Disabled(kTools), "");
    QCOMPARE(scene.Text("ResultTextBox"),
             "Asked: example.ORG\nSecond line\nRegistrar WHOIS Server: whois.registrar.example\n");
    QCOMPARE(extension, std::string(".ORG"));
    QCOMPARE(scene.Focus(), "WhoisButton");
    QVERIFY(scene.Find("ReferralButton").isVisible());
    QVERIFY(scene.Find<QPushButton>("ReferralButton").text().contains("whois.registrar.example"));
    QCOMPARE(server.connections(), 1);
  }

  // The rows only offer: their beginnings, and their letters in capitals, are extensions of their own.
  void asksForTheExtensionThatWasTyped() {
    const smtp::ScriptedServer server([](smtp::Peer& peer, int) { peer.Say("Asked: " + peer.Line() + "\n"); });
    ToolsScene scene(nullptr);
    std::string extension;
    scene.form.server_for = [&](std::string_view asked) {
      extension = asked;
      return net::HostPort{"127.0.0.1", server.port()};
    };
    scene.Open();
    auto& extensions = scene.Find<QComboBox>("ExtensionComboBox");
    const int rows = extensions.count();
    scene.Type("DomainTextBox", "example");
    for (const auto& [typed, by_enter] : std::vector<std::pair<const char*, bool>>{
             {".co", false}, {".in", true}, {".COM", false}, {".NET", true}, {".org", true}}) {
      extensions.setFocus();
      extensions.lineEdit()->selectAll();
      QTest::keyClicks(extensions.lineEdit(), typed);
      if (by_enter) {
        QTest::keyClick(extensions.lineEdit(), Qt::Key_Return);
      } else {
        scene.Press("WhoisButton");
      }
      QTRY_COMPARE(scene.Text("ResultTextBox"), QString("Asked: example%1\n").arg(typed));
      QTRY_COMPARE(scene.Disabled(kTools), "");
      QCOMPARE(extension, std::string(typed));
      QCOMPARE(extensions.currentText(), typed);
      QCOMPARE(extensions.count(), rows);
    }
  }

  void aFailureLeavesTheBoxEmptyAndSaysWhy() {
    ToolsScene scene(nullptr);
    scene.form.server_for = [](std::string_view) { return net::HostPort{"127.0.0.1", 1}; };
    scene.Open();
    scene.Type("DomainTextBox", "example");
    scene.Press("WhoisButton");
    QTRY_COMPARE(scene.Disabled(kTools), "");
    QCOMPARE(scene.Text("ResultTextBox"), "");
    QVERIFY2(scene.Status().contains("127.0.0.1"), qPrintable(scene.Status()));
    QCOMPARE(scene.rig.Shown(), "");
    QVERIFY(!scene.Find("ReferralButton").isVisible());
  }

  // A server that says nothing: the person need not wait for it.
  void endsAQuestionWhenThePersonDoes() {
    std::atomic<bool> over = false;
    const smtp::ScriptedServer silent([&](smtp::Peer& peer, int) {
      peer.Line();
      while (!over) std::this_thread::sleep_for(std::chrono::milliseconds(10));
    });
    ToolsScene scene(nullptr);
    scene.form.server_for = [&](std::string_view) { return net::HostPort{"127.0.0.1", silent.port()}; };
    scene.Open();
    scene.Type("DomainTextBox", "example");
    scene.Press("WhoisButton");
    QVERIFY(scene.Find("CancelButton").isEnabled());
    scene.Press("CancelButton");
    QTRY_COMPARE(scene.Disabled(kTools), "");
    QVERIFY(!scene.Status().isEmpty());
    scene.Press("WhoisButton");
    QTest::keyClick(&scene.form, Qt::Key_Escape);
    QVERIFY(!scene.form.isVisible());
    over = true;
  }

  // As long as an answer may be: the window goes on, and the file gets what came.
  void showsTheLongestAnswersAtOnce() {
    for (const auto& [repeated, most_lines] : std::initializer_list<std::pair<std::string, int>>{
             {"x", 1000}, {"\n", 20001}, {"\t", 1000}, {"\xCC\x81", 1000}, {"\xD7\x90 a1", 1000}}) {
      std::string answer(
          "\0\xE2\x80\xAE"
          "xxx",
          7);
      while (answer.size() + repeated.size() <= domain::kLongestWhoisAnswer) answer += repeated;
      const smtp::ScriptedServer server([&](smtp::Peer& peer, int) {
        peer.Line();
        peer.Say(answer);
      });
      ToolsScene scene(nullptr);
      scene.form.server_for = [&](std::string_view) { return net::HostPort{"127.0.0.1", server.port()}; };
      scene.Open();
      scene.Type("DomainTextBox", "example");
      qint64 longest = 0;
      QElapsedTimer between;
      between.start();
      QTimer turns;
      connect(&turns, &QTimer::timeout, this, [&] { longest = std::max(longest, between.restart()); });
      turns.start(10);
      scene.Press("WhoisButton");
      QTRY_COMPARE_WITH_TIMEOUT(scene.Disabled(kTools), "", 60000);
      QTest::qWait(50);
      QVERIFY2(longest < 1000, qPrintable(QString::number(longest)));
      QVERIFY(scene.Text("ResultTextBox").startsWith("??xxx"));
      QVERIFY(scene.Find<QPlainTextEdit>("ResultTextBox").blockCount() <= most_lines);
      const auto file = scene.rig.folder / "saved.txt";
      scene.rig.prompts.files = {file};
      scene.Press("SaveButton");
      QVERIFY(test::ReadAll(file).find(platform::WithLineEnds(answer.substr(4))) != std::string::npos);
    }
  }

  void keepsTheFirstAnswerUntilTheSecondCame() {
    const smtp::ScriptedServer server([](smtp::Peer& peer, int) {
      peer.Line();
      peer.Say("whois: whois.registrar.invalid\n");
    });
    ToolsScene scene(nullptr);
    scene.form.server_for = [&](std::string_view) { return net::HostPort{"127.0.0.1", server.port()}; };
    scene.Open();
    scene.Type("DomainTextBox", "example");
    scene.Press("WhoisButton");
    QTRY_VERIFY(scene.Find("ReferralButton").isVisible());
    scene.Press("ReferralButton");
    QCOMPARE(scene.Text("ResultTextBox"), "whois: whois.registrar.invalid\n");
    scene.Press("CancelButton");
    QTRY_COMPARE(scene.Disabled(kTools), "");
    QCOMPARE(scene.Text("ResultTextBox"), "whois: whois.registrar.invalid\n");
    QVERIFY(scene.Find("ReferralButton").isVisible());
  }

  void opensTheOtherLookUps() {
    ToolsScene scene(nullptr);
    scene.Open();
    for (const auto& [button, form] :
         std::vector<std::pair<const char*, const char*>>{{"DomainIPButton", "DomainIPForm"},
                                                          {"IPDomainButton", "IPDomainForm"},
                                                          {"MXLookupButton", "MXLookupForm"},
                                                          {"CheckButton", "DomainCheckForm"}}) {
      QString opened;
      QTimer::singleShot(100, &scene.form, [&] {
        opened = QApplication::activeModalWidget()->objectName();
        qobject_cast<QDialog*>(QApplication::activeModalWidget())->reject();
      });
      scene.Press(button);
      QCOMPARE(opened, form);
    }
  }

  void convertsNamesAndAddresses() {
    const auto names = Names();
    Scene<DomainIPForm> to_ip(nullptr);
    to_ip.form.servers = {names->endpoint()};
    to_ip.Open();
    to_ip.Press("ConvertButton");
    QCOMPARE(to_ip.rig.Shown(), "warn: Please enter your domain.");
    to_ip.Type("InputTextBox", "host.example");
    QTest::keyClick(&to_ip.Find("InputTextBox"), Qt::Key_Return);
    QTRY_COMPARE(to_ip.Text("OutputTextBox"), "192.0.2.7\n2001:db8::7\n");
    to_ip.Type("InputTextBox", "gone.example");
    to_ip.Press("ConvertButton");
    QTRY_VERIFY2(to_ip.Status().contains("gone.example"), qPrintable(to_ip.Status()));
    QCOMPARE(to_ip.Text("OutputTextBox"), "192.0.2.7\n2001:db8::7\n");  // a failure leaves it as it was
    to_ip.Type("InputTextBox", "host.example");
    QTest::mouseDClick(&to_ip.Find("ConvertButton"), Qt::LeftButton);  // asks once, and does not cancel
    to_ip.Press("ConvertButton");
    QTRY_COMPARE(to_ip.Status(), "2 addresses of host.example.");
    const net::DnsServer silent([](const std::string&, bool) { return std::vector<std::string>(); });
    to_ip.form.servers = {silent.endpoint()};
    to_ip.Press("ConvertButton");
    QCOMPARE(to_ip.Disabled({"InputTextBox", "ConvertButton", "CancelButton"}), "InputTextBox ConvertButton");
    to_ip.Press("CancelButton");
    QTRY_COMPARE(to_ip.Disabled({"InputTextBox", "ConvertButton", "CancelButton"}), "CancelButton");

    Scene<IPDomainForm> to_name(nullptr);
    to_name.form.servers = {names->endpoint()};
    to_name.Open();
    to_name.Press("ConvertButton");
    QCOMPARE(to_name.rig.Shown(), "warn: Please enter your IP.");
    to_name.Type("InputTextBox", "192.0.2.7");
    to_name.Press("ConvertButton");
    QTRY_COMPARE(to_name.Text("OutputTextBox"), "host.example\n");
  }

  void looksUpMailHostsAtTheChosenServer() {
    const auto names = Names();
    const test::TemporaryFolder folder;
    Scene<MXLookupForm> scene(
        nullptr, folder.Write("resolv.conf", "nameserver 192.0.2.53\nnameserver ::1\nnameserver ::ffff:77\n"));
    scene.Open();
    auto& servers = scene.Find<QComboBox>("MXComboBox");
    QCOMPARE(servers.count(), 3);
    QCOMPARE(servers.currentText(), "");
    const QString server = ToQt(net::ToString(names->endpoint()));
    struct Case {
      QString server;
      const char *domain, *told, *focus;
    };
    for (const Case& c : {Case{"", "", "Please select a DNS server.", "MXComboBox"},
                          Case{server, "", "Please specify your domain.", "MXTextBox"},
                          Case{server, ".", "Domain name must be at least 2 characters.", "MXTextBox"}}) {
      servers.setCurrentText(c.server);
      scene.Type("MXTextBox", c.domain);
      scene.Press("MXButton");
      QCOMPARE(scene.rig.Shown(), QString("warn: ") + c.told);
      QCOMPARE(scene.Focus(), c.focus);
    }
    scene.Type("MXTextBox", "mail.example");
    scene.Press("MXButton");
    QCOMPARE(scene.Disabled({"DNSLabel", "MXComboBox", "DomainLabel", "MXTextBox", "MXButton"}),
             "DNSLabel MXComboBox DomainLabel MXTextBox MXButton");
    QTRY_VERIFY(scene.Find("MXButton").isEnabled());
    QCOMPARE(scene.Text("ReportTextBox"), "a.example\nb.example\n");
    // A server that begins as an offered one, and one in capitals, are taken as typed.
    for (const char* typed : {"192.0.2.5", "192.0.2.53", "::FFFF:7"}) {
      servers.setFocus();
      servers.lineEdit()->selectAll();
      QTest::keyClicks(servers.lineEdit(), typed);
      QTest::keyClick(servers.lineEdit(), Qt::Key_Tab);
      QCOMPARE(servers.currentText(), typed);
    }
    servers.lineEdit()->setText(server);
    scene.Find<QPlainTextEdit>("ReportTextBox").clear();
    QTest::keyClick(servers.lineEdit(), Qt::Key_Return);
    QTRY_COMPARE(scene.Text("ReportTextBox"), "a.example\nb.example\n");
    QCOMPARE(servers.count(), 3);
    servers.setCurrentText("no address");
    scene.Press("MXButton");
    QTRY_COMPARE(scene.Text("ReportTextBox"), "Invalid Parameter");
    QVERIFY(!scene.Status().isEmpty());
  }

  void saysThatThereAreNoNameServers() {
    Scene<MXLookupForm> scene(nullptr, "/nowhere/resolv.conf");
    QString told;
    scene.form.tell = [&](const QString& text) { told = text; };
    scene.Open();
    QTRY_COMPARE(told, "GetNetworkParams sizing failed with error 2");
    scene.Press("MXButton");
    QCOMPARE(scene.rig.Shown(), "warn: There is no DNS server.");
    auto& servers = scene.Find<QComboBox>("MXComboBox");
    servers.lineEdit()->setText("192.0.2.53");
    servers.setFocus();
    QTest::keyClick(servers.lineEdit(), Qt::Key_Return);
    QCOMPARE(scene.rig.Shown(), "warn: There is no DNS server.");
  }

  void checksASendersDomainAndKeepsTheResult() {
    const auto names = Names();
    Scene<DomainCheckForm> scene("Mail.example", nullptr);
    scene.form.servers = {names->endpoint()};
    QVERIFY(scene.rig.settings.Write("Account", "Email", "ada@mail.example"));
    scene.Open();
    scene.Press("CheckButton");
    const QAbstractItemModel& findings = *scene.Find<QAbstractItemView>("FindingsList").model();
    const auto is_told = [&](const char* verdict, const char* what) {
      for (int row = 0; row < findings.rowCount(); ++row) {
        if (findings.index(row, 0).data() == verdict && findings.index(row, 2).data().toString().contains(what))
          return true;
      }
      return false;
    };
    QTRY_VERIFY(is_told("Bad", "everybody in the world"));
    QVERIFY(is_told("Good", "a.example"));
    QVERIFY2(scene.Status().contains("mail.example"), qPrintable(scene.Status()));
    QAbstractItemView& list = scene.Find<QAbstractItemView>("FindingsList");
    list.setCurrentIndex(findings.match(findings.index(0, 1), Qt::DisplayRole, "SPF").constFirst());
    QTest::keySequence(&list, QKeySequence::Copy);
    QCOMPARE(
        QGuiApplication::clipboard()->text(),
        "Bad\tSPF\tThe record lets everybody in the world send for mail.example. Name those who send for you alone, "
        "and end it with \"~all\" or \"-all\".\n");
    list.clearSelection();
    scene.Press("CopyButton");
    QCOMPARE(QGuiApplication::clipboard()->text().count('\n'), findings.rowCount());
    QCOMPARE(QGuiApplication::clipboard()->text().count('\t'), 2 * findings.rowCount());
    const auto kept = domain::RememberSenderCheck(scene.rig.settings, "mail.example", scene.rig.clock.Now());
    QVERIFY(kept && kept->has_value());
    scene.Type("DomainTextBox", "");
    scene.Press("CheckButton");
    QCOMPARE(scene.rig.Shown(), "warn: Please specify your domain.");
  }

  void beginsWithTheAccountsDomain() {
    test::FormRig rig;
    rig.FillInAccount();
    const DomainCheckForm form(rig.program, {}, nullptr);
    QCOMPARE(test::Text(form, "DomainTextBox"), "example.org");
  }
};

}  // namespace quillcast::desktop

QTEST_MAIN(quillcast::desktop::DomainFormsTest)
#include "domain_forms_test.moc"
