// The dialog that takes a message file apart: what it asks and refuses, in which order it tells what, and how it is
// left.
#include <QtGui/qevent.h>

#include <QMimeData>
#include <QProgressBar>
#include <QRadioButton>
#include <memory>

#include "desktop/form_rig.h"
#include "desktop/hands.h"
#include "desktop/mail_file/extra_form4.h"

namespace quillcast::desktop {

namespace {

namespace fs = std::filesystem;

constexpr const char* kDone = "inform: Extract process has been completed.";
constexpr const char* kDamaged =
    "To: ada@x.org\r\nContent-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\nContent-Type: text/plain\r\n\r\nHello\r\n"
    "--b\r\nContent-Disposition: attachment; filename=a.txt\r\n\r\nattached\r\n";

struct Scene : test::Hands<Scene> {
  test::FormRig rig;
  std::unique_ptr<ExtraForm4> form;

  Scene() {
    form = std::make_unique<ExtraForm4>(rig.program, nullptr);
    form->show();
    if (!QTest::qWaitForWindowActive(form.get())) qFatal("The dialog did not come forward.");
  }
  void Type(const QString& box, const fs::path& path) const { Find<QLineEdit>(box).setText(PathToQt(path)); }
  QString Extract() {
    Press("ExtractButton");
    [this] { QTRY_VERIFY(Find<QPushButton>("ExtractButton").isEnabled()); }();
    return rig.Shown();
  }
  int Percent() const {
    return Find<QProgressBar>("ProgressBar").value() * 100 / Find<QProgressBar>("ProgressBar").maximum();
  }
  QString Read(const char* name) const { return QString::fromStdString(test::ReadAll(rig.folder / name)); }
};

}  // namespace

class ExtractFormTest : public QObject {
  Q_OBJECT

 private slots:
  void beginsEmptyWithText() {
    Scene scene;
    QCOMPARE(scene.form->focusWidget()->objectName(), "FilePathTextBox");
    for (const char* name :
         {"FilePathTextBox", "ExtractPath1", "ExtractPath2", "ExtractPath3", "ExtractPath4", "ExtractPath5"})
      QCOMPARE(scene.Text(name), "");
    QVERIFY(scene.Find<QRadioButton>("TEXTButton").isChecked() &&
            !scene.Find<QCheckBox>("BodyPartCheckBox").isChecked());
  }

  void complainsInOrder() {
    Scene scene;
    const auto complains = [&scene](const char* warning) { QCOMPARE(scene.Extract(), QString("warn: ") + warning); };
    scene.Find<QWidget>("ExtractPath5").setFocus();
    complains("Please specify a file.");
  }

  void choosersAskAsGiven() {
    Scene scene;
    scene.rig.prompts.files = {"/x/letter.eml"};
    scene.Press("FilePathButton");
    QCOMPARE(scene.rig.Shown(), "open: Extract Mail Message");
    QCOMPARE(scene.Text("FilePathTextBox"), "/x/letter.eml");
    for (const auto& [format, ending] : {std::pair("TEXTButton", "Text Files (*.txt)|*.txt|"),
                                         {"HTMLButton", "HTML Files (*.html;*.htm)|*.html;*.htm|"},
                                         {"RTFButton", "RTF Files (*.rtf)|*.rtf|"},
                                         {"XMLRadioButton", "XML Files (*.xml)|*.xml|"}}) {
      scene.Press(format);
      scene.Press("ExtractButton2");
      QCOMPARE(ToQt(scene.rig.prompts.last_file_question.filter), QString(ending) + "All Files (*.*)|*.*");
      QCOMPARE(scene.rig.Shown(), "save: Extract Mail Message");
    }
    scene.Press("ExtractButton5");
    QCOMPARE(ToQt(scene.rig.prompts.last_file_question.filter), "Text Files (*.txt)|*.txt|All Files (*.*)|*.*");
    scene.rig.Shown();
    scene.Press("ExtractButton3");
    QCOMPARE(scene.rig.Shown(), "folder: Extract Mail Message");
    QCOMPARE(scene.Text("ExtractPath3"), "/x/letter.eml");
    scene.rig.prompts.files = {};
    scene.Press("ExtractButton1");
    QCOMPARE(scene.rig.Shown(), "folder: Extract Mail Message | warn: Please select the destination folder.");
  }

  void lockedFilesAreAskedAbout() {
    Scene scene;
    const auto locked = scene.rig.folder.Write("locked.txt", "kept");
    fs::permissions(locked, fs::perms::owner_read);
    scene.rig.prompts.files = {locked};
    const char* asked = "save: Extract Mail Message | ask: The output file is locked./Would you like to unlock it now?";
    scene.Press("ExtractButton4");
    QCOMPARE(scene.rig.Shown(), asked);
    QCOMPARE(scene.Text("ExtractPath4"), "");
    scene.rig.prompts.answers = {platform::Answer::kYes};
    scene.Press("ExtractButton4");
    QCOMPARE(scene.rig.Shown(), asked);
    QCOMPARE(scene.Text("ExtractPath4"), PathToQt(locked));
    // The message file too, although it is only read.
    fs::permissions(locked, fs::perms::owner_read);
    const QString asked_of_message = QString(asked).replace("save:", "open:");
    scene.Press("FilePathButton");
    QCOMPARE(scene.rig.Shown(), asked_of_message);
    QCOMPARE(scene.Text("FilePathTextBox"), "");
    QVERIFY2(scene.Status().contains("was left as it is"), qPrintable(scene.Status()));
    scene.rig.prompts.answers = {platform::Answer::kYes};
    scene.Press("FilePathButton");
    QCOMPARE(scene.rig.Shown(), asked_of_message);
    QCOMPARE(scene.Text("FilePathTextBox"), PathToQt(locked));
    QCOMPARE(scene.Status(), "");
  }

  void extractsInSpiteOfWhatIsWrong() {
    Scene scene;
    scene.Type("FilePathTextBox", scene.rig.folder.Write("letter.eml", kDamaged));
    fs::create_directory(scene.rig.folder / "parts");
    scene.Type("ExtractPath1", scene.rig.folder / "parts");
    scene.Type("ExtractPath2", scene.rig.folder / "gone" / "body");
    scene.Type("ExtractPath4", scene.rig.folder / "recipients");
    scene.Press("BodyPartCheckBox");
    QCOMPARE(scene.Extract(), QString("warn: Error 259: Could not find boundry mark. | ") + kDone);
    QCOMPARE(scene.Read("parts/a.txt"), "attached\r\n");
    QCOMPARE(scene.Read("parts/Part 1.txt"), "Hello");
    QCOMPARE(scene.Read("recipients"), "Name: \r\nAddress: ada@x.org\r\nType: Normal recipient\r\n-\r\n");
    QVERIFY2(scene.Status().contains("gone/body"), qPrintable(scene.Status()));
    QCOMPARE(scene.Percent(), 100);
    scene.Type("FilePathTextBox", scene.rig.folder / "absent.eml");
    QCOMPARE(scene.Extract(), QString("warn: Error 258: File IO error. | ") + kDone);
    QVERIFY2(scene.Status().contains("absent.eml"), qPrintable(scene.Status()));
    QCOMPARE(scene.Percent(), 0);
  }

  void saysWhatIsThereAndInWhichForm() {
    Scene scene;
    const auto type = [&](const char* box, const fs::path& path) {
      scene.Find<QLineEdit>(box).selectAll();
      QTest::keyClicks(&scene.Find<QLineEdit>(box), PathToQt(path));
    };
    type("ExtractPath2", "/nowhere/body.xml");
    QCOMPARE(scene.Status(), "body.xml will be written as text, whatever its name says.");
    scene.Press("XMLRadioButton");
    QCOMPARE(scene.Status(), "");
    type("ExtractPath4", scene.rig.folder.Write("list", "kept"));
    QCOMPARE(scene.Status(), "list is there already; it will be replaced.");
  }

  void tellsWhatWasWritten() {
    struct Row {
      const char *message, *folder;
      const char* told;  // how the status line begins
      int percent;
    };
    const std::string two =
        "Content-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\nContent-Disposition: attachment; "
        "filename=a\r\n\r\n1\r\n--b\r\nContent-Disposition: attachment; filename=a\r\n";
    const std::string whole = two + "\r\n2\r\n--b--\r\n";
    const std::string half = two + "Content-Transfer-Encoding: odd\r\n\r\n2\r\n--b--\r\n";
    for (const auto& [message, folder, told, percent] :
         {Row{whole.c_str(), "parts",
              "2 parts were written. 1 file has another name than in the message. The message has no stamps, so "
              "there is no file of them.",
              100},
          Row{half.c_str(), "parts", "1 part was written. The message has no stamps", 50},
          Row{"Subject: x\r\n\r\nHello", "parts", "The message has no parts for the folder. The message", 0},
          Row{whole.c_str(), "letter.eml", "The message has no stamps, so there is no file of them. ", 0}}) {
      Scene scene;
      fs::create_directory(scene.rig.folder / "parts");
      scene.Type("FilePathTextBox", scene.rig.folder.Write("letter.eml", message));
      scene.Type("ExtractPath1", scene.rig.folder / folder);
      scene.Type("ExtractPath5", scene.rig.folder / "stamps");
      scene.Extract();
      QVERIFY2(scene.Status().startsWith(told), qPrintable(scene.Status()));
      QCOMPARE(scene.Percent(), percent);
    }
  }

  void readsLenientlyAsTheAccountSays() {
    Scene scene;
    IgnoreErrors(scene.rig.settings.Write("Account", "Extended", "1"));
    scene.Type("FilePathTextBox", scene.rig.folder.Write("letter.eml",
                                                         "Content-Type: application/x; name=a\r\n"
                                                         "Content-Transfer-Encoding: odd\r\n\r\nas it stands\r\n"));
    scene.Type("ExtractPath1", scene.rig.folder.path());
    scene.Extract();
    QCOMPARE(scene.Read("a"), "as it stands\r\n");
  }

  void theWorkingFolderGoesWithTheDialog() {
    Scene scene;
    const auto folders = [&scene] {
      int count = 0;
      for (const auto& entry : fs::directory_iterator(scene.rig.folders.temporary))
        count += entry.is_directory() ? 1 : 0;
      return count;
    };
    const int before = folders();
    scene.Type("FilePathTextBox", scene.rig.folder.Write("letter.eml", kDamaged));
    scene.Type("ExtractPath4", scene.rig.folder / "recipients");
    scene.Extract();
    QCOMPARE(folders(), before + 1);
    scene.form.reset();
    QCOMPARE(folders(), before);
    // Where none can be made, that is passed over and told.
    scene.rig.folders.temporary = scene.rig.folder.Write("no folder", "");
    scene.form = std::make_unique<ExtraForm4>(scene.rig.program, nullptr);
    scene.Type("FilePathTextBox", scene.rig.folder / "letter.eml");
    scene.Type("ExtractPath4", scene.rig.folder / "recipients");
    QVERIFY(scene.Extract().endsWith(kDone));
    QVERIFY2(scene.Text("StatusLine").contains("no folder"), qPrintable(scene.Text("StatusLine")));
  }

  void cancelsAtOnceAndCloses() {
    Scene scene;
    scene.Type("FilePathTextBox", scene.rig.folder.Write("letter.eml", "\r\n" + std::string(20'000'000, 'x')));
    scene.Find<QRadioButton>("RTFButton").setChecked(true);
    scene.Type("ExtractPath1", scene.rig.folder.path());
    scene.Type("ExtractPath3", scene.rig.folder.path());
    scene.Press("ExtractButton");
    QVERIFY(!scene.Find<QWidget>("ExtractPath1").isEnabled() && !scene.Find<QWidget>("FilePathTextBox").isEnabled());
    scene.Press("CancelButton");
    QTRY_VERIFY(!scene.form->isVisible());
    QCOMPARE(scene.rig.Shown(), "");
  }

  void takesADroppedFile() {
    Scene scene;
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile("/x/dropped.eml")});
    QDragEnterEvent enter({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(scene.form.get(), &enter);
    QVERIFY(enter.isAccepted());
    QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(scene.form.get(), &drop);
    QCOMPARE(scene.Text("FilePathTextBox"), "/x/dropped.eml");
  }
};

}  // namespace quillcast::desktop

QTEST_MAIN(quillcast::desktop::ExtractFormTest)
#include "extract_form_test.moc"
