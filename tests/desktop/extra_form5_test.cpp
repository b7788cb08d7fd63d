// The connection test's window, and the box of a report with its Save and Print.
#include "desktop/domain/extra_form5.h"

#include <QElapsedTimer>
#include <QPrinter>
#include <QProcess>
#include <QRegularExpression>
#include <QScrollBar>
#include <QTextEdit>
#include <QVBoxLayout>
#include <atomic>
#include <thread>

#include "desktop/domain/meaning_box.h"
#include "desktop/domain/report_box.h"
#include "desktop/form_rig.h"
#include "desktop/hands.h"
#include "desktop/widgets/status_line.h"
#include "smtp/scripted_server.h"

namespace quillcast::desktop {
namespace {

// A window with nothing but a report in it.
struct ReportScene {
  test::FormRig rig;
  QWidget window;
  StatusLine* status = new StatusLine(&window);
  ReportBox* report = new ReportBox("Report", "Report", "Nothing yet", rig.program, *status, &window);

  ReportScene() {
    auto* column = new QVBoxLayout(&window);
    for (QWidget* widget :
         std::initializer_list<QWidget*>{report, report->save_button(), report->print_button(), status})
      column->addWidget(widget);
    report->choose_printer = [pdf = Pdf()](QPrinter& printer) {
      printer.setPageSize(QPageSize(QPageSize::A4));
      printer.setOutputFileName(pdf);
      return true;
    };
    window.show();
  }
  QString Pdf() const { return PathToQt(rig.folder / "out.pdf"); }
  // By a program of others, the lines parted by "|".
  QString Printed() const {
    QProcess reader;
    reader.start("pdftotext", {"-layout", Pdf(), "-"});
    reader.waitForFinished();
    QStringList lines = QString::fromUtf8(reader.readAllStandardOutput()).split(QRegularExpression("[\n\f]"));
    for (QString& line : lines) line = line.simplified();
    lines.removeAll("");
    return lines.join('|');
  }
  QString Print() {
    QTest::mouseClick(report->print_button(), Qt::LeftButton);
    if (!QTest::qWaitFor([&] { return status->text() != "Printing…"; })) return "still printing";
    return rig.Shown();
  }
};

constexpr const char* kQuestion = "ask: Are you sure you want to cancel the process?";

struct TestScene : test::Hands<TestScene> {
  test::FormRig rig;
  ExtraForm5 form{rig.program, nullptr};

  TestScene() {
    form.show();
    if (!QTest::qWaitForWindowActive(&form)) qFatal("The form did not open.");
  }
  QString Report() const { return Find<QPlainTextEdit>("Report").toPlainText(); }
  QString Meaning() const { return Find<QTextEdit>("MeaningBox").toPlainText(); }
  QString Disabled() const {
    return Hands::Disabled({"Report", "Label1", "ServerTextBox", "Label2", "PortTextBox", "ProcessButton", "SaveButton",
                            "PrintButton", "CancelButton"});
  }
};

}  // namespace

class ExtraForm5Test : public QObject {
  Q_OBJECT

 private slots:
  void savesAReport() {
    ReportScene scene;
    const auto file = scene.rig.folder / "report.txt";
    scene.rig.prompts.files = {file};
    QTest::mouseClick(scene.report->save_button(), Qt::LeftButton);
    QCOMPARE(scene.rig.Shown(), "warn: There is no data to save.");
    QVERIFY(!std::filesystem::exists(file));
    scene.report->Show("one\r\ntwo");
    QTest::mouseClick(scene.report->save_button(), Qt::LeftButton);
    QCOMPARE(scene.rig.Shown(), "save: Save");
    QCOMPARE(test::ReadAll(file), "one\r\ntwo\r\n");
    QVERIFY2(scene.status->text().contains("report.txt"), qPrintable(scene.status->text()));
    scene.rig.prompts.files = {"/nowhere/report.txt"};
    QTest::mouseClick(scene.report->save_button(), Qt::LeftButton);
    QVERIFY2(scene.status->text().contains("/nowhere"), qPrintable(scene.status->text()));
  }

  void printsAReport() {
    ReportScene scene;
    const QString question =
        "ask: Do you still want to print this document?/Please consider your environmental responsibility before "
        "printing.";
    QCOMPARE(scene.Print(), "warn: There is no data to print.");
    QStringList lines;
    for (int line = 1; line <= 200; ++line) lines << QString("S: 250-line %1").arg(line);
    lines << QString(300, 'x');  // wider than a page
    scene.report->Show(lines.join('\n'));
    QCOMPARE(scene.Print(), question);
    QVERIFY(!std::filesystem::exists(scene.rig.folder / "out.pdf"));  // the answer was No
    scene.rig.prompts.answers = {platform::Answer::kYes};
    QCOMPARE(scene.Print(), question);
    QVERIFY2(scene.status->text().endsWith("pages were printed."), qPrintable(scene.status->text()));
    const QString head = "Tarnwick Quillcast Classic 1.0|------------------------------------|";
    QCOMPARE(scene.Printed().replace("x|x", "xx"), head + lines.join('|'));  // none lost, none twice between two pages
    scene.report->choose_printer = [](QPrinter& printer) {
      printer.setOutputFileName("/nowhere/out.pdf");
      return true;
    };
    scene.rig.prompts.answers = {platform::Answer::kYes};
    QCOMPARE(scene.Print(), question);  // no box tells of the failure
    QVERIFY2(scene.status->text().contains("/nowhere"), qPrintable(scene.status->text()));
  }

  void checksInOrder() {
    TestScene scene;
    QCOMPARE(scene.Focus(), "ServerTextBox");
    const auto complains = [&](const QString& server, const QString& port, const char* box, const char* warning,
                               const QString& status) {
      scene.Type("ServerTextBox", server);
      scene.Type("PortTextBox", port);
      scene.Press("ProcessButton");
      QCOMPARE(scene.rig.Shown(), warning);
      QCOMPARE(scene.Focus(), box);
      QCOMPARE(scene.Text("StatusLine"), status);
    };
    complains("", "", "ServerTextBox", "warn: Please enter your mail server.", "");
    complains("localhost", "", "PortTextBox", "warn: Please enter your port.", "");
    complains("localhost", "smtp", "PortTextBox", "warn: Please enter your port.", "");  // digits alone pass
    complains("localhost", "70000", "PortTextBox", "", "\"70000\" is no port of a mail server.");
    complains("https://mail.example.org", "587", "ServerTextBox", "",
              "Server: \"https://mail.example.org\" is no name of a mail server.");
    QCOMPARE(scene.Report(), "");
  }

  // By keys alone, from the empty boxes to the end.
  void triesAServer() {
    TestScene scene;
    std::atomic<bool> go = false;
    const smtp::ScriptedServer server([&](smtp::Peer& peer, int) {
      while (!go) std::this_thread::sleep_for(std::chrono::milliseconds(5));
      peer.Say("220 mx \x1B[2J ESMTP\r\n");
      for (std::string line = peer.Line(); !line.empty(); line = peer.Line())
        peer.Say(line == "QUIT" ? "221 bye\r\n" : "250-mx\r\n250 AUTH PLAIN\r\n");
    });
    QTest::keyClicks(scene.form.focusWidget(), "127.0.0.1");
    QTest::keyClick(scene.form.focusWidget(), Qt::Key_Tab);
    QTest::keyClicks(scene.form.focusWidget(), QString::number(server.port()));
    QTest::keyClick(scene.form.focusWidget(), Qt::Key_Return);
    QCOMPARE(scene.Disabled(), "Report Label1 ServerTextBox Label2 PortTextBox ProcessButton SaveButton PrintButton");
    QCOMPARE(scene.Focus(), "CancelButton");
    QCOMPARE(scene.Report(), "");
    go = true;
    QTRY_COMPARE(scene.Disabled(), "");
    QCOMPARE(scene.Focus(), "ProcessButton");
    QCOMPARE(scene.Report(),
             "S: 220 mx ?[2J ESMTP\nC: EHLO [127.0.0.1]\nS: 250-mx\nS: 250 AUTH PLAIN\nC: QUIT\nS: 221 bye\n");
    QVERIFY2(scene.Meaning().contains("no harm"), qPrintable(scene.Meaning()));
    const auto facts = test::RowsOf(scene.form, "FactsList");
    QVERIFY2(facts.contains("Waiting for the greeting") && facts.contains("Signing in"), qPrintable(facts.join('|')));
    QCOMPARE(scene.rig.Shown(), "");
    QStringList order;
    for (int turn = 0; turn < 9; ++turn, QTest::keyClick(scene.form.focusWidget(), Qt::Key_Tab)) order << scene.Focus();
    QCOMPARE(order.join(' '),
             "ProcessButton CancelButton ServerTextBox PortTextBox Report MeaningBox FactsList SaveButton PrintButton");
  }

  void tellsAFailureInTheReport() {
    TestScene scene;
    scene.Type("ServerTextBox", "127.0.0.1");
    scene.Type("PortTextBox", "1");
    scene.Press("ProcessButton");
    QTRY_COMPARE(scene.Disabled(), "");
    QCOMPARE(scene.Report(), "Error 9: There was an error connecting to the SMTP mail server.\n");
    QCOMPARE(scene.Meaning().section('\n', 0, 0), "127.0.0.1 is there, and nothing listens on its port 1.");
    QCOMPARE(scene.rig.Shown(), "");  // no box
  }

  // Three servers that refuse at length: all of it can be read, and the facts keep some rows.
  void showsHoweverMuchThereIsToSay() {
    TestScene scene;
    const smtp::ScriptedServer server([](smtp::Peer& peer, int) {
      for (int line = 0; line < 4; ++line)
        peer.Say("554-5.7.1 Your address is on our list of those that may not send\r\n");
      peer.Say("554 5.7.1 no service\r\n");
    });
    const QString one = QString("127.0.0.1:%1").arg(server.port());
    scene.Type("ServerTextBox", QStringList{one, one, one}.join(';'));
    scene.Type("PortTextBox", "25");
    scene.Press("ProcessButton");
    QTRY_COMPARE(scene.Disabled(), "");
    auto& meaning = scene.Find<QTextEdit>("MeaningBox");
    QCOMPARE(scene.Meaning().count("no service"), 3);
    QTRY_VERIFY(meaning.verticalScrollBar()->maximum() > 0);
    QVERIFY(scene.Find("FactsList").height() >= 130 && meaning.geometry().bottom() < scene.Find("FactsList").y());
    meaning.setFocus();
    QTest::keyClick(&meaning, Qt::Key_End, Qt::ControlModifier);
    QVERIFY(meaning.viewport()->rect().contains(meaning.cursorRect()));
    // With the room for it there is nothing to scroll, and no room is kept for nothing.
    scene.form.resize(scene.form.width(), 1400);
    QTRY_COMPARE(meaning.verticalScrollBar()->maximum(), 0);
    QVERIFY(meaning.height() - meaning.document()->size().height() < 2);
  }

  // The scroll bar of a first, low layout narrows the text, which may need one line more beside it.
  void hidesNoLineWhereThereIsRoomAtAnyWidth() {
    QWidget window;
    auto* box = new MeaningBox(&window);
    window.resize(900, 600);
    window.show();
    for (int width = 300; width < 900; width += 5) {
      box->resize(width, 20);
      box->Show({"This works, but the message and the name would go over the network in clear, for anybody to read.",
                 "Providers take mail from their customers on port 587 (STARTTLS) or 465 (TLS)."},
                NoteKind::kWarning);
      QCoreApplication::processEvents();
      QVERIFY2(box->verticalScrollBar()->maximum() > 0, qPrintable(QString::number(width)));
      box->resize(width, box->sizeHint().height());
      QCoreApplication::processEvents();
      QVERIFY2(box->verticalScrollBar()->maximum() == 0, qPrintable(QString::number(width)));
    }
  }

  // Whether something runs or not.
  void asksBeforeItCloses() {
    TestScene scene;
    scene.Press("CancelButton");
    QCOMPARE(scene.rig.Shown(), kQuestion);
    QVERIFY(scene.form.isVisible());
    const smtp::ScriptedServer server([](smtp::Peer& peer, int) { peer.Stall(); });
    scene.Type("ServerTextBox", "127.0.0.1");
    scene.Type("PortTextBox", QString::number(server.port()));
    scene.Press("ProcessButton");
    scene.Press("CancelButton");
    QVERIFY(scene.form.isVisible() && !scene.Find("ProcessButton").isEnabled());
    scene.rig.prompts.answers = {platform::Answer::kYes};
    QElapsedTimer timer;
    timer.start();
    QTest::keyClick(&scene.form, Qt::Key_Escape);
    QVERIFY(!scene.form.isVisible() && timer.elapsed() < 1000);
    QCOMPARE(scene.rig.Shown(), QString(kQuestion) + " | " + kQuestion);
  }
};

}  // namespace quillcast::desktop

QTEST_MAIN(quillcast::desktop::ExtraForm5Test)
#include "extra_form5_test.moc"
