// The import's dialog where store, file and person fail it: box, report, status and store tell the same.
#include <QElapsedTimer>
#include <filesystem>
#include <fstream>

#include "desktop/import_scene.h"
#include "platform/sqlite.h"
#include "support/read_only_disk.h"

namespace quillcast::desktop {

namespace {

constexpr int kLines = 300;

struct Scene : ImportScene {
  // A group of one, and a list of new ones that is mapped.
  void OpenWithList() {
    std::string list;
    for (int n = 0; n < kLines; ++n) list += "u" + std::to_string(n) + "@x.org," + std::string(400, 'n') + "\n";
    OpenWith(list);
    Press("RadioButton2");
    GetData();
    Step("ComboBox1", 1);
    Step("ComboBox3", 2);
  }
  qsizetype Stored() const { return *rig.Store().CountRecipients("Readers") - 1; }
  QString Report() const { return QString::fromStdString(test::ReadAll(rig.folders.ImportReport())); }
  // The box, the report and the store count the same, which is given; -1 where they do not.
  qsizetype ToldOfAll(const QString& shown) const {
    const auto stored = Stored();
    const bool same =
        shown == kConsent + " | " + Done(static_cast<int>(stored), 0, 0) && Report().count("Email Added : ") == stored;
    return same ? stored : -1;
  }
};

}  // namespace

class ImportFormFaultsTest : public QObject {
  Q_OBJECT

 private slots:
  void whatCannotBeWrittenIsTold() {
    Scene scene;
    scene.OpenWithList();
    {
      const test::ReadOnlyDisk disk;
      QCOMPARE(scene.Import(), kConsent + " | " + Done(0, 0, 0));
    }
    QVERIFY2(scene.Status().contains(PathToQt(scene.rig.folders.Database().filename())), qPrintable(scene.Status()));
    QCOMPARE(scene.Stored(), 0);
    // Without a report the import goes on, and says so.
    std::filesystem::remove(scene.rig.folders.ImportReport());
    std::filesystem::create_directories(scene.rig.folders.ImportReport() / "in the way");
    QCOMPARE(scene.Import(), kConsent + " | " + Done(kLines, 0, 0));
    QVERIFY2(scene.Warnings().startsWith("There is no report."), qPrintable(scene.Warnings()));
    QCOMPARE(scene.Stored(), kLines);
  }

  void aFileThatIsGoneIsTold() {
    Scene scene;
    scene.OpenWithList();
    std::filesystem::remove(PathFromQt(scene.Find<QLineEdit>("BrowseTextBox").text()));
    QCOMPARE(scene.ToldOfAll(scene.Import()), 0);
    QVERIFY2(scene.Status().contains("list.txt"), qPrintable(scene.Status()));
    // So is one that was emptied meanwhile; there is nothing wrong with that.
    scene.rig.folder.Write("list.txt", "");
    QCOMPARE(scene.ToldOfAll(scene.Import()), 0);
    QVERIFY2(scene.Status().startsWith("Read as "), qPrintable(scene.Status()));
  }

  // Each place where it may wait long: for a store that another program has, and for the end of a file that has none.
  void cancellingEndsEachWait() {
    for (const bool locked : {true, false}) {
      Scene scene;
      scene.OpenWithList();
      auto database = *platform::Database::Open(scene.rig.folders.Database(), platform::OpenMode::kReadWrite);
      if (locked) QVERIFY(database.Execute("BEGIN IMMEDIATE"));
      if (!locked) {
        const auto list = PathFromQt(scene.Find<QLineEdit>("BrowseTextBox").text());
        std::filesystem::resize_file(list, std::uintmax_t{400} << 30);  // zeros, which take no room
      }
      scene.rig.prompts.answers = {platform::Answer::kYes};
      scene.Press("ImportButton");
      QTest::qWait(100);
      scene.rig.prompts.answers = {platform::Answer::kNo};
      scene.Press("CancelButton");
      QCOMPARE(scene.rig.Shown(), kConsent + " | " + kCancelQuestion);
      QVERIFY(scene.form->isVisible());
      scene.rig.prompts.answers = {platform::Answer::kYes};
      QElapsedTimer closing;
      closing.start();
      scene.Press("CancelButton");
      QCOMPARE(scene.rig.Shown(), kCancelQuestion);
      QTRY_VERIFY(!scene.form->isVisible());
      scene.form.reset();
      QVERIFY2(closing.elapsed() < 1000, qPrintable(QString::number(closing.elapsed())));
      QCOMPARE(scene.rig.Shown(), "");
      if (locked) QVERIFY(database.Execute("ROLLBACK"));
      QCOMPARE(scene.Report().count("Email Added : "), scene.Stored());
      QVERIFY2(!scene.Report().contains("Import Completed"), qPrintable(scene.Report()));
    }
  }

  // Another program may keep mappings anew while the window stands open.
  void damagedMappingsAreRemovedWhereTheyAreDamagedStill() {
    for (const bool is_mended : {false, true}) {
      Scene scene;
      QVERIFY(scene.rig.settings.Write("Import", "Mappings", "{{"));
      scene.OpenWithList();
      QTRY_VERIFY(!scene.Sample().isEmpty());
      scene.Press("RadioButton2");
      if (is_mended) QVERIFY(scene.rig.settings.Write("Import", "Mappings", R"({"Mended":{}})"));
      scene.rig.prompts.answers = {platform::Answer::kYes};
      scene.Press("RemoveMappingButton");
      QCOMPARE(scene.rig.Shown(), "ask: The kept mappings are damaged. Would you like to remove all of them?");
      QCOMPARE(scene.Entries("MappingComboBox"), is_mended ? "Mended" : "");
      QCOMPARE(scene.Status(),
               is_mended ? "The kept mappings can be read again; none was removed." : "No mapping is kept any more.");
    }
  }

  void aLockThatIsGivenBackIsWaitedFor() {
    Scene scene;
    scene.OpenWithList();
    auto database = *platform::Database::Open(scene.rig.folders.Database(), platform::OpenMode::kReadWrite);
    QVERIFY(database.Execute("BEGIN IMMEDIATE"));
    QTimer::singleShot(300, [&database] { IgnoreErrors(database.Execute("ROLLBACK")); });
    QCOMPARE(scene.ToldOfAll(scene.Import()), kLines);
  }
};

}  // namespace quillcast::desktop

QTEST_MAIN(quillcast::desktop::ImportFormFaultsTest)
#include "import_form_faults_test.moc"
