// The connection test's window, and the box of a report with its Save and Print.
#include <QLabel>
#include <QPrinter>
#include <QProcess>
#include <QPushButton>
#include <QRegularExpression>
#include <QTest>
#include <QVBoxLayout>

#include "desktop/domain/report_box.h"
#include "desktop/form_rig.h"
#include "desktop/widgets/status_line.h"

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
};

}  // namespace quillcast::desktop

QTEST_MAIN(quillcast::desktop::ExtraForm5Test)
#include "extra_form5_test.moc"
