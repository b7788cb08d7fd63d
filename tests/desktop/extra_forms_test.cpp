// The dialogs for message files that take the message of the main window, or make it: what they check, do and say.
#include <QAction>
#include <QBuffer>
#include <QPrintPreviewDialog>
#include <QPrintPreviewWidget>
#include <QPrinter>
#include <QProcess>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextTable>
#include <memory>

#include "desktop/form_rig.h"
#include "desktop/hands.h"
#include "desktop/mail_file/extra_form1.h"
#include "desktop/mail_file/extra_form2.h"
#include "desktop/mail_file/foreign_page.h"
#include "desktop/run/extra_form3.h"
#include "html/simple_page.h"
#include "platform/file_attributes.h"

namespace quillcast::desktop {
namespace {

using std::filesystem::perms;

struct Scene : test::Hands<Scene> {
  test::FormRig rig;
  std::unique_ptr<QDialog> form;

  void Show(std::unique_ptr<QDialog> dialog) {
    form = std::move(dialog);
    form->show();
    QVERIFY(QTest::qWaitForWindowActive(form.get()));
  }
  // Presses it and waits until it can be pressed again.
  QString Run(const char* button) {
    Press(button);
    if (!QTest::qWaitFor([&] { return Find<QWidget>(button).isEnabled(); })) return "still running";
    return rig.Shown();
  }

  // Prints into "out.pdf" until another printer is put there.
  ExtraForm1& OpenPrint(const std::string& message) {
    const auto file = rig.folder.Write("a.eml", message);
    Show(std::make_unique<ExtraForm1>(rig.program, file, nullptr));
    auto& print = static_cast<ExtraForm1&>(*form);
    print.choose_printer = [pdf = Pdf()](QPrinter& printer) {
      printer.setPageSize(QPageSize(QPageSize::A4));
      printer.setOutputFileName(pdf);
      return true;
    };
    return print;
  }
  QString Pdf() const { return PathToQt(rig.folder / "out.pdf"); }
  // The pages of the PDF as texts, by a program of others; blanks and line ends in a row count as one.
  QStringList Printed() const {
    QProcess reader;
    reader.start("pdftotext", {"-layout", Pdf(), "-"});
    reader.waitForFinished();
    QStringList pages = QString::fromUtf8(reader.readAllStandardOutput()).split('\f', Qt::SkipEmptyParts);
    for (QString& page : pages) page = page.simplified();
    return pages;
  }
  std::vector<mail_file::ImportedBody> taken;
  void OpenImport() {
    const auto take = [this](const mail_file::ImportedBody& body) {
      taken.push_back(body);
      return Result<bool>(true);
    };
    Show(std::make_unique<ExtraForm2>(rig.program, std::filesystem::path(), take, nullptr));
  }
  void OpenExport(const std::string& html = "<p>Dear $*MergeFirstName*$</p>") {
    document::MessageDocument message;
    message.subject = "Hello";
    message.html = html;
    Show(std::make_unique<ExtraForm3>(rig.program, std::move(message), nullptr));
  }
};

constexpr const char* kPage =
    "Subject: Prices\r\nContent-Type: text/html; charset=utf-8\r\n\r\n<script>no</script><p>Gr\xC3\xBC\xC3\x9F"
    "e</p><table><tr><td>one<td>two</table><img src=http://x.example/t.gif alt=logo>";
constexpr const char* kPrinted = "inform: Print process has been completed.";
constexpr const char* kImported = "inform: Import process has been completed.";
constexpr const char* kExported = "inform: Export process has been completed.";

}  // namespace

class ExtraFormsTest : public QObject {
  Q_OBJECT

 private slots:
  void exportsTheMessage() {
    Scene scene;
    scene.rig.FillInAccount();
    scene.OpenExport();
    QCOMPARE(scene.Run("ExportButton"), "warn: Please specify a file.");
    QCOMPARE(scene.form->focusWidget()->objectName(), "FilePathTextBox");
    const auto file = scene.rig.folder.Write("letter.eml", "old");
    scene.Type("FilePathTextBox", PathToQt(file));
    QVERIFY2(scene.Status().contains("letter.eml is there already"), qPrintable(scene.Status()));
    QCOMPARE(scene.Run("ExportButton"), kExported);
    QVERIFY2(scene.Status().contains("The message is in " + PathToQt(file) + "."), qPrintable(scene.Status()));
    const std::string read = test::ReadAll(file);
    QVERIFY(read.find("Dear $*MergeFirstName*$") != std::string::npos && read.find("X-Unsent") == std::string::npos);
    scene.Press("HeaderCheckBox");
    QCOMPARE(scene.Run("ExportButton"), kExported);
    QVERIFY(test::ReadAll(file).find("X-Unsent: 1\r\n") != std::string::npos);
    scene.Press("CancelButton");
    QVERIFY(!scene.form->isVisible());
  }

  // A failure is told in the status line, and the box comes as ever.
  void tellsWhatTheExportCouldNotDo() {
    Scene scene;
    scene.OpenExport();
    const auto file = scene.rig.folder / "letter.eml";
    scene.Type("FilePathTextBox", PathToQt(file));
    QCOMPARE(scene.Run("ExportButton"), kExported);
    QVERIFY2(scene.Status().contains("account"), qPrintable(scene.Status()));
    QVERIFY(!std::filesystem::exists(file));
    scene.rig.FillInAccount();
    scene.Type("FilePathTextBox", "/nowhere/letter.eml");
    QCOMPARE(scene.Run("ExportButton"), kExported);
    QVERIFY2(scene.Status().contains("/nowhere"), qPrintable(scene.Status()));
    const auto picture = scene.rig.folder.Write("p.gif", "GIF89a\x01");
    scene.OpenExport("<img src=" + picture.string() + ">");
    scene.Type("FilePathTextBox", PathToQt(picture));
    QCOMPARE(scene.Run("ExportButton"), "");
    QVERIFY2(scene.Status().contains("that the message is made of"), qPrintable(scene.Status()));
    QCOMPARE(test::ReadAll(picture), "GIF89a\x01");
  }

  void importsABody() {
    Scene scene;
    scene.OpenImport();
    QCOMPARE(scene.Run("ImportButton"), "warn: Please specify a file.");
    QCOMPARE(scene.form->focusWidget()->objectName(), "FilePathTextBox");
    scene.rig.prompts.files = {scene.rig.folder.Write("a.eml", "Subject: Hi\r\n\r\na < b\r\n")};
    scene.Press("FilePathButton");
    QCOMPARE(scene.rig.Shown(), "open: Import Mail Message");
    QCOMPARE(scene.Run("ImportButton"), kImported);
    QCOMPARE(scene.taken.back().subject.c_str(), "Hi");
    QCOMPARE(scene.taken.back().html.c_str(), "a &lt; b<br>\n");
    const std::string no_end = "Content-Type: multipart/mixed\r\n\r\n--b\r\n\r\nrest\r\n";
    scene.Type("FilePathTextBox", PathToQt(scene.rig.folder.Write("b.eml", no_end)));
    QCOMPARE(scene.Run("ImportButton"), QString("warn: Error 259: Could not find boundry mark. | ") + kImported);
    QCOMPARE(scene.taken.size(), 2U);  // what was loaded is used all the same
    QVERIFY2(scene.Status().contains("multipart") && scene.Status().contains("is in the window"),
             qPrintable(scene.Status()));
    IgnoreErrors(scene.rig.settings.Write("Account", "Extended", "1"));
    QCOMPARE(scene.Run("ImportButton").right(QString(kImported).size()), kImported);
    QVERIFY2(scene.taken.back().html.find("rest") != std::string::npos, scene.taken.back().html.c_str());
    scene.Type("FilePathTextBox", "/nowhere/a.eml");
    QCOMPARE(scene.Run("ImportButton"), QString("warn: Error 258: File IO error. | ") + kImported);
    QVERIFY2(scene.Status().contains("/nowhere/a.eml") && scene.Status().contains("stays as it is"),
             qPrintable(scene.Status()));
    QCOMPARE(scene.taken.size(), 3U);
    scene.Press("CancelButton");
    QVERIFY(!scene.form->isVisible());
  }

  void checksTheMarginsInTheirOrder() {
    Scene scene;
    scene.OpenPrint(kPage);
    const auto complains = [&](const char* box, const QString& text, const char* warning) {
      scene.Type(box, text);
      QCOMPARE(scene.Run("PrintButton"), warning);
      if (warning != QString(kPrinted)) QCOMPARE(scene.form->focusWidget()->objectName(), box);
    };
    const QString file = scene.Find<QLineEdit>("FilePathTextBox").text();
    complains("RightMarginTextBox", "", "warn: Please enter your margin.");
    complains("TopMarginTextBox", "", "warn: Please enter your margin.");
    complains("LeftMarginTextBox", "0", "warn: Please enter a valid margin.");
    complains("FilePathTextBox", "", "warn: Please specify a file.");
    scene.Type("FilePathTextBox", file);
    complains("LeftMarginTextBox", "100", "warn: Please enter a valid margin.");
    scene.Type("LeftMarginTextBox", "-9x.9");  // digits alone pass
    QCOMPARE(scene.Find<QLineEdit>("LeftMarginTextBox").text(), "99");
    complains("TopMarginTextBox", "100", "warn: Please enter a valid margin.");
    scene.Type("TopMarginTextBox", "1");
    complains("RightMarginTextBox", "", "warn: Please enter your margin.");
    complains("RightMarginTextBox", "1", kPrinted);
  }

  void printsEachForm() {
    Scene scene;
    scene.OpenPrint(kPage);
    scene.Find<QLineEdit>("RightMarginTextBox").setFocus();
    QTest::keyClick(scene.form.get(), Qt::Key_Tab);
    QCOMPARE(scene.form->focusWidget()->objectName(), "HTMLRadioButton");  // the chosen one
    scene.Type("HeaderTextBox", "My heading");
    const QString page = "My heading Gr\u00FC\u00DFe one two logo 1/1";
    for (const auto& [format, text] :
         {std::pair("HTMLRadioButton", page), std::pair("RTFRadioButton", page), std::pair("TEXTRadioButton", page)}) {
      scene.Press(format);
      QCOMPARE(scene.Run("PrintButton"), kPrinted);
      QCOMPARE(scene.Status(), "Pages printed: 1, into " + scene.Pdf() + ".");
      QCOMPARE(scene.Printed().join('|').remove(" http://x.example/t.gif"), text);
    }
    scene.Press("XMLRadioButton");
    QCOMPARE(scene.Run("PrintButton"), kPrinted);
    QVERIFY2(scene.Printed().join(' ').contains("<?xml version"), qPrintable(scene.Printed().join(' ')));
  }

  void showsThePagesBeforeTheyArePrinted() {
    Scene scene;
    scene.OpenPrint(kPage);
    for (const char* format : {"HTMLRadioButton", "TEXTRadioButton"}) {
      scene.Press(format);
      int pages = 0;
      QTimer look;
      connect(&look, &QTimer::timeout, this, [&] {
        auto* preview = scene.form->findChild<QPrintPreviewDialog*>("PrintPreviewDialog");
        if (preview == nullptr || !preview->isVisible()) return;
        QVERIFY(!preview->grab().isNull());
        pages = preview->findChild<QPrintPreviewWidget*>()->pageCount();
        preview->close();
      });
      look.start(50);
      scene.Press("PreviewButton");
      QTRY_COMPARE(pages, 1);
      QTRY_VERIFY(scene.form->findChild<QPrintPreviewDialog*>("PrintPreviewDialog") == nullptr);
    }
    QCOMPARE(scene.rig.Shown(), "");
    // Its button prints as the dialog does: all of the message, by the printer that is chosen there.
    QTimer press;
    connect(&press, &QTimer::timeout, this, [&] {
      auto* preview = scene.form->findChild<QPrintPreviewDialog*>("PrintPreviewDialog");
      for (QAction* action : preview == nullptr ? QList<QAction*>() : preview->findChildren<QAction*>()) {
        if (preview->isVisible() && action->text() == "Print") action->trigger();
      }
      if (QWidget* other = QApplication::activeModalWidget(); other != preview && other != nullptr) other->close();
    });
    press.start(50);
    scene.Press("PreviewButton");
    QTRY_VERIFY(!scene.Printed().isEmpty());
    QTRY_VERIFY(scene.Find<QWidget>("PrintButton").isEnabled());
    QCOMPARE(scene.rig.Shown(), kPrinted);
  }

  void asksBeforeItPrintsIntoALockedFile() {
    Scene scene;
    auto& form = scene.OpenPrint(kPage);
    const auto file = scene.rig.folder.Write("out.pdf", "old");
    std::filesystem::permissions(file, perms::owner_read);
    const QString asked = "ask: The output file is locked./Would you like to unlock it now? | ";
    QCOMPARE(scene.Run("PrintButton"), asked + "warn: Error 255: Cancelled by user. | " + kPrinted);
    QVERIFY2(scene.Status().contains("out.pdf is locked and was left as it is."), qPrintable(scene.Status()));
    QCOMPARE(test::ReadAll(file), "old");
    scene.rig.prompts.answers = {platform::Answer::kYes};
    QCOMPARE(scene.Run("PrintButton"), asked + kPrinted);
    QCOMPARE(scene.Printed().size(), 1);
    QVERIFY(!platform::IsLocked(file));
    const auto letter = scene.rig.folder / "a.eml";  // which is not unlocked, since it is never written
    std::filesystem::permissions(letter, perms::owner_read);
    form.choose_printer = [&](QPrinter& printer) {
      printer.setOutputFileName(PathToQt(letter));
      return true;
    };
    QCOMPARE(scene.Run("PrintButton"), QString("warn: Error 203: Could not initialize printer. | ") + kPrinted);
    QVERIFY(platform::IsLocked(letter));
  }

  void tellsHowPrintingFailed() {
    Scene scene;
    auto& form = scene.OpenPrint(kPage);
    form.choose_printer = [](QPrinter&) { return false; };
    QCOMPARE(scene.Run("PrintButton"), QString("warn: Error 255: Cancelled by user. | ") + kPrinted);
    QCOMPARE(scene.Status(), "Nothing was printed: it was cancelled.");
    scene.Type("TopMarginTextBox", "");
    QCOMPARE(scene.Run("PrintButton"), "warn: Please enter your margin.");
    QCOMPARE(scene.Status(), "");  // nothing of the try before
    scene.Type("TopMarginTextBox", "20");
    form.choose_printer = [](QPrinter& printer) {
      printer.setOutputFileName("/nowhere/out.pdf");
      return true;
    };
    QCOMPARE(scene.Run("PrintButton"), QString("warn: Error 203: Could not initialize printer. | ") + kPrinted);
    QVERIFY2(scene.Status().contains("/nowhere"), qPrintable(scene.Status()));
    const auto letter = scene.rig.folder / "a.eml";
    form.choose_printer = [&](QPrinter& printer) {
      printer.setOutputFileName(PathToQt(letter));
      return true;
    };
    QCOMPARE(scene.Run("PrintButton"), QString("warn: Error 203: Could not initialize printer. | ") + kPrinted);
    QVERIFY2(scene.Status().contains("is the message file itself"), qPrintable(scene.Status()));
    QCOMPARE(test::ReadAll(letter), kPage);
    scene.Type("FilePathTextBox", "/nowhere/a.eml");
    QCOMPARE(scene.Run("PrintButton"),
             "warn: Error 258: File IO error. | warn: There was an error creating the message handle.");
    QVERIFY2(scene.Status().contains("Error 258: File IO error. "), qPrintable(scene.Status()));
    scene.Type("FilePathTextBox", PathToQt(scene.rig.folder.Write("b.eml", "Content-Type: image/png\r\n\r\nx")));
    QCOMPARE(scene.Run("PrintButton"), "");
    QVERIFY2(scene.Status().contains("The message has no text."), qPrintable(scene.Status()));
    QVERIFY(!std::filesystem::exists(scene.rig.folder / "out.pdf"));
  }

  // White words are read on the ground that they were written for.
  void paintsTheGroundOfWhatArrangesThePage() {
    for (const char* cell :
         {"<tr><td bgcolor=#000080>x", "<tr><td bgcolor=#000080><p>x", "<tr bgcolor=#000080><td>x",
          "<tr><td bgcolor=#000080><table><tr><td>y<td>x</table>", "<tr><td bgcolor=#000080><p>y</p>x",
          "<tr><td bgcolor=000080><font color=white><p>y<p>x", "<tr><td style='background:#000080'>y<hr><b>x</b>"}) {
      const ForeignPage page(ToQt(html::Simplify(std::string("<table>") + cell + "</table>", 1000).html), {}, nullptr);
      const QTextCursor word = page.find("x");
      QVERIFY2(!word.isNull(), cell);
      QBrush behind = word.charFormat().background();
      if (behind.style() == Qt::NoBrush) behind = word.blockFormat().background();
      if (behind.style() == Qt::NoBrush && word.currentTable() != nullptr)
        behind = word.currentTable()->format().background();
      QVERIFY2(behind.color() == QColor("#000080"), cell);
    }
  }

  // Small files that are large pictures.
  void picturesTakeNoMoreThanTheirRoom() {
    QImage tall(1000, 4000, QImage::Format_RGB32);
    tall.fill(Qt::white);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    QVERIFY(tall.save(&buffer, "PNG"));
    const std::vector<mail_file::ShownPicture> pictures(20, {"image/png", bytes.toStdString()});
    platform::CancelToken cancel;
    qsizetype size = 0;
    const auto images = DecodePictures(pictures, cancel);
    for (const QImage& image : images) size += image.sizeInBytes();
    QCOMPARE(images.size(), pictures.size());
    QCOMPARE(images.front().size(), tall.size());
    QVERIFY2(size <= 64 << 20, qPrintable(QString::number(size)));
    const QImage huge = tall.scaled(1000, 20000);
    buffer.seek(0);
    QVERIFY(huge.save(&buffer, "PNG"));
    QVERIFY(DecodePictures({{"image/png", bytes.toStdString()}}, cancel).front().isNull());
    cancel.Request();
    QVERIFY(DecodePictures(pictures, cancel).front().isNull());
  }

  void asksAboutALockedFileThatIsChosen() {
    Scene scene;
    scene.rig.FillInAccount();
    scene.OpenExport();
    const auto file = scene.rig.folder.Write("locked.eml", "old");
    std::filesystem::permissions(file, perms::owner_read);
    scene.Press("ChooseButton");  // nothing is picked
    QCOMPARE(scene.rig.Shown(), "save: Export Mail Message");
    const auto& question = scene.rig.prompts.last_file_question;
    QCOMPARE(question.filter.c_str(), "Email Files (*.eml)|*.eml|All Files (*.*)|*.*");
    QVERIFY(question.ask_before_overwriting);
    scene.rig.prompts.files = {file};
    const QString asked =
        "save: Export Mail Message | ask: The output file is locked./Would you like to unlock it now?";
    scene.Press("ChooseButton");
    QCOMPARE(scene.rig.Shown(), asked);
    QCOMPARE(scene.Find<QLineEdit>("FilePathTextBox").text(), "");
    scene.Type("FilePathTextBox", PathToQt(file));  // typed, it is left as it is
    QCOMPARE(scene.Run("ExportButton"), kExported);
    QCOMPARE(test::ReadAll(file), "old");
    scene.rig.prompts.answers = {platform::Answer::kYes};
    scene.Press("ChooseButton");
    QCOMPARE(scene.rig.Shown(), asked);
    QVERIFY(!platform::IsLocked(file));
    QCOMPARE(scene.Run("ExportButton"), kExported);
    QVERIFY(test::ReadAll(file).find("Subject: Hello") != std::string::npos);
    const std::string settings = test::ReadAll(scene.rig.folders.settings);
    scene.Type("FilePathTextBox", PathToQt(scene.rig.folders.settings));
    QCOMPARE(scene.Run("ExportButton"), "");
    QVERIFY2(scene.Status().contains("keeps its own files there"), qPrintable(scene.Status()));
    QCOMPARE(test::ReadAll(scene.rig.folders.settings), settings);
  }
};

}  // namespace quillcast::desktop

QTEST_MAIN(quillcast::desktop::ExtraFormsTest)
#include "extra_forms_test.moc"
