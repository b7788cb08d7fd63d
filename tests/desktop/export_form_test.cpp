// The dialog of the export: what it checks, what it writes, and how it is given up.
#include <QListWidget>
#include <QRadioButton>
#include <memory>

#include "desktop/form_rig.h"
#include "desktop/hands.h"
#include "desktop/recipients/group_manager_form.h"
#include "desktop/recipients/recipient_export_form.h"
#include "platform/file_attributes.h"
#include "recipients/store_connection.h"

namespace quillcast::desktop {

namespace {

constexpr const char* kDone = "inform: 2 recipients exported successfully.";
constexpr const char* kCancelQuestion = "ask: Are you sure you want to cancel the export process?";

struct Scene : test::Hands<Scene> {
  test::FormRig rig;
  std::unique_ptr<RecipientExportForm> form;

  void Open(const QString& group = {}) {
    form = std::make_unique<RecipientExportForm>(rig.program, group, nullptr);
    form->show();
    QVERIFY(QTest::qWaitForWindowActive(form.get()));
  }
  // With two recipients, and a file to write to.
  void OpenReady() {
    rig.AddGroup("Readers", {"bob@x.org", "ada@x.org"});
    IgnoreErrors(recipients::OpenStore(rig.folders.Database())
                     ->Execute("UPDATE [Emails] SET [G-FirstName] = '=Bob', [G-City] = 'A, B' WHERE [ID] = 1"));
    Open("Readers");
    Find<QLineEdit>("BrowseTextBox").setText(PathToQt(File()));
  }
  void Key(const char* name, Qt::Key key) const {
    Find<QWidget>(name).setFocus();
    QTest::keyClick(&Find<QWidget>(name), key);
  }
  // Ticks an entry as the keyboard does; each begins with four blanks.
  void Tick(const QString& label) const {
    auto& list = Find<QListWidget>("ListFields");
    list.setCurrentItem(list.findItems("    " + label, Qt::MatchExactly).value(0));
    Key("ListFields", Qt::Key_Space);
  }
  void WaitForEnd() { QTRY_VERIFY(Find<QPushButton>("ExportButton").isEnabled()); }
  QString Export() {
    Press("ExportButton");
    WaitForEnd();
    return rig.Shown();
  }
  std::filesystem::path File() const { return rig.folder / "list.txt"; }
  QString Written() const { return QString::fromStdString(test::ReadAll(File())); }
  // More than are read before a person has looked up.
  void AddMany(int rows) {
    IgnoreErrors(recipients::OpenStore(rig.folders.Database())
                     ->Execute(("WITH RECURSIVE [n](x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM [n] WHERE x < " +
                                std::to_string(rows) +
                                ") INSERT INTO [Emails] ([G-ID], [G-Email]) SELECT 1, 'a' || x || '@x.org' FROM [n]")
                                   .c_str()));
  }
};
struct ReadyScene : Scene {
  ReadyScene() { OpenReady(); }
};

}  // namespace

class ExportFormTest : public QObject {
  Q_OBJECT

 private slots:
  void opensWithTheGivenChoices() {
    Scene scene;
    scene.rig.AddGroup("Zebras", {});
    scene.rig.AddGroup("Ants", {});
    scene.Open();
    auto& groups = scene.Find<QComboBox>("GroupComboBox");
    QCOMPARE(groups.itemText(0), "Zebras");
    QCOMPARE(groups.count(), 2);
    QCOMPARE(groups.currentIndex(), -1);
    QVERIFY(scene.Find<QRadioButton>("RadioButton1").isChecked());
    auto& fields = scene.Find<QListWidget>("ListFields");
    QCOMPARE(fields.count(), 18);
    QCOMPARE(fields.item(0)->text(), "    Email Address");
    QCOMPARE(fields.item(17)->text(), "    Additional Field 3");
    for (int row = 0; row < 18; ++row) QCOMPARE(fields.item(row)->checkState(), Qt::Unchecked);
    auto& delimiters = scene.Find<QComboBox>("DelimitComboBox");
    QStringList names;
    for (int i = 0; i < delimiters.count(); ++i) names << delimiters.itemText(i);
    QCOMPARE(names.join(' '), "Tab Colon Space Comma Semicolon");
    QCOMPARE(delimiters.currentText(), "Tab");
    for (const bool chosen_fields : {false, true}) {
      scene.Press(chosen_fields ? "RadioButton2" : "RadioButton1");
      for (const char* name : {"ListFields", "DelimitComboBox"})
        QCOMPARE(scene.Find<QWidget>(name).isEnabled(), chosen_fields);
      QVERIFY(!scene.Find<QWidget>("UpButton").isEnabled() && !scene.Find<QWidget>("DownButton").isEnabled());
    }
  }

  void complainsInOrder() {
    const auto complains = [](Scene& scene, const char* warning, const char* focus) {
      scene.Press("ExportButton");
      QCOMPARE(scene.rig.Shown(), warning);
      QCOMPARE(scene.form->focusWidget()->objectName(), focus);
    };
    Scene none;
    none.Open();
    complains(none, "warn: There is no group to export.", "GroupComboBox");
    Scene scene;
    scene.rig.AddGroup("Readers", {});
    scene.Open();
    scene.Press("RadioButton2");
    complains(scene, "warn: Please select a group.", "GroupComboBox");
    scene.Key("GroupComboBox", Qt::Key_Down);
    complains(scene, "warn: Please specify a file.", "BrowseTextBox");
    scene.Find<QLineEdit>("BrowseTextBox").setText("/nowhere/list.txt");
    complains(scene, "warn: Please select at least one field to export.", "ListFields");
  }

  void writesAddresses() {
    ReadyScene scene;
    QCOMPARE(scene.Export(), kDone);
    QCOMPARE(scene.Written(), "bob@x.org\r\nada@x.org\r\n");
  }

  void writesFieldsInTheOrderOfTheList() {
    ReadyScene scene;
    scene.Press("RadioButton2");
    scene.Tick("First Name");
    scene.Tick("City");
    scene.Tick("Email Address");
    QCOMPARE(scene.Export(), kDone);
    QCOMPARE(scene.Written(), "bob@x.org\t=Bob\tA, B\r\nada@x.org\t\t\r\n");
    for (int i = 0; i < 3; ++i) scene.Press("DownButton");
    QVERIFY(scene.Find<QListWidget>("ListFields").currentItem()->text() == "    Email Address");
    scene.Find<QComboBox>("DelimitComboBox").setCurrentText("Comma");
    QCOMPARE(scene.Export(), kDone);
    QCOMPARE(scene.Written(), "=Bob,bob@x.org,A, B\r\n,ada@x.org,\r\n");
    for (const char* box : {"Rfc4180CheckBox", "InertFormulasCheckBox"}) scene.Press(box);
    QCOMPARE(scene.Export(), kDone);
    QCOMPARE(scene.Written(), "First Name,Email Address,City\r\n'=Bob,bob@x.org,\"A, B\"\r\n,ada@x.org,\r\n");
  }

  void entriesMoveWithTheirTicks() {
    ReadyScene scene;
    scene.Press("RadioButton2");
    auto& list = scene.Find<QListWidget>("ListFields");
    auto& up = scene.Find<QPushButton>("UpButton");
    auto& down = scene.Find<QPushButton>("DownButton");
    scene.Key("ListFields", Qt::Key_Home);
    scene.Tick("Title");
    scene.Key("UpButton", Qt::Key_Space);
    QCOMPARE(list.currentRow(), 0);
    QCOMPARE(list.item(0)->text(), "    Title");
    QCOMPARE(list.item(0)->checkState(), Qt::Checked);
    QCOMPARE(list.item(1)->text(), "    Email Address");
    QCOMPARE(list.item(1)->checkState(), Qt::Unchecked);
    // A key that is pressed once too often, where the way ends, moves, ticks and writes nothing.
    scene.rig.folder.Write("list.txt", "old");
    for (const auto& [button, end] : {std::pair("UpButton", Qt::Key_Home), {"DownButton", Qt::Key_End}}) {
      scene.Key("ListFields", end);
      const QString entry = list.currentItem()->text();
      const auto tick = list.currentItem()->checkState();
      scene.Find<QWidget>(button).setFocus();
      for (const auto key : {Qt::Key_Return, Qt::Key_Space}) QTest::keyClick(scene.form->focusWidget(), key);
      QCOMPARE(list.currentItem()->text(), entry);
      QCOMPARE(list.currentItem()->checkState(), tick);
      QCOMPARE(scene.form->focusWidget()->objectName(), button);
    }
    QCOMPARE(scene.rig.Shown(), "");
    QCOMPARE(scene.Written(), "old");
    scene.Press("RadioButton1");
    QVERIFY(!up.isEnabled() && !down.isEnabled());
  }

  void everyFieldIsTickedByKeysAlone() {
    ReadyScene scene;
    scene.Press("RadioButton2");
    auto& list = scene.Find<QListWidget>("ListFields");
    auto& all = scene.Find<QCheckBox>("AllFieldsCheckBox");
    const auto ticked = [&list] {
      int count = 0;
      for (int row = 0; row < list.count(); ++row) count += list.item(row)->checkState() == Qt::Checked ? 1 : 0;
      return count;
    };
    for (int n = 0; n < 20 && !list.hasFocus(); ++n) QTest::keyClick(scene.form->focusWidget(), Qt::Key_Tab);
    for (int field = 0; field < 18; ++field) {
      QCOMPARE(all.checkState(), field == 0 ? Qt::Unchecked : Qt::PartiallyChecked);
      QTest::keyClick(&list, Qt::Key_Space);
      QTest::keyClick(&list, Qt::Key_Down);
    }
    QCOMPARE(ticked(), 18);
    QCOMPARE(all.checkState(), Qt::Checked);
    for (const int expected : {0, 18}) {
      scene.Key("AllFieldsCheckBox", Qt::Key_Space);
      QCOMPARE(ticked(), expected);
    }
    scene.Tick("City");
    scene.Key("AllFieldsCheckBox", Qt::Key_Space);
    QCOMPARE(ticked(), 18);
  }

  void browsingAsksAboutALockedFile() {
    Scene scene;
    scene.rig.AddGroup("Readers", {"a@x.org"});
    scene.Open("Readers");
    const auto file = scene.rig.folder.Write("locked.txt", "old");
    using std::filesystem::perms;
    std::filesystem::permissions(file, perms::owner_read);
    auto& box = scene.Find<QLineEdit>("BrowseTextBox");
    const QString asked = "save: Export Recipients | ask: The output file is locked./Would you like to unlock it now?";
    scene.Press("BrowseButton");  // nothing is picked
    QCOMPARE(scene.rig.Shown(), "save: Export Recipients");
    QCOMPARE(scene.rig.prompts.last_file_question.filter.c_str(), "Text Files (*.txt)|*.txt|All Files (*.*)|*.*");
    QVERIFY(!scene.rig.prompts.last_file_question.ask_before_overwriting);
    const auto own = scene.rig.folders.Database();  // refused before anything is unlocked
    std::filesystem::permissions(own, perms::owner_read);
    scene.rig.prompts.files = {own};
    scene.Press("BrowseButton");
    QCOMPARE(scene.rig.Shown(), "save: Export Recipients");
    QVERIFY(scene.Status().contains("the program keeps its own files there") && platform::IsLocked(own));
    std::filesystem::permissions(own, perms::owner_read | perms::owner_write);
    scene.rig.prompts.files = {file};
    scene.Press("BrowseButton");
    QCOMPARE(scene.rig.Shown(), asked);
    QCOMPARE(box.text(), "");
    QVERIFY(scene.Status().contains("locked.txt is locked and was left as it is."));
    box.clear();
    QTest::keyClicks(&box, PathToQt(file));  // typed, it is not asked about, and not replaced
    QVERIFY2(scene.Status().contains("Browse for it to have it unlocked."), qPrintable(scene.Status()));
    QCOMPARE(scene.Export(), "inform: 0 recipients exported successfully.");
    QCOMPARE(test::ReadAll(file), "old");
    box.clear();
    scene.rig.prompts.answers = {platform::Answer::kYes};
    scene.Press("BrowseButton");
    QCOMPARE(scene.rig.Shown(), asked);
    QCOMPARE(box.text(), PathToQt(file));
    QCOMPARE(scene.Status(), PathToQt(file.filename()) + " is there already; it will be replaced.");
    QCOMPARE(scene.Export(), "inform: 1 recipients exported successfully.");
    QCOMPARE(test::ReadAll(file), "a@x.org\r\n");
  }

  void aPathThatIsTypedTellsWhatStandsThere() {
    ReadyScene scene;
    auto& box = scene.Find<QLineEdit>("BrowseTextBox");
    const auto list = PathToQt(scene.rig.folder.Write("list", "old"));
    std::filesystem::create_symlink(scene.rig.folder / "list", scene.rig.folder / "link");
    std::filesystem::create_symlink("nothing", scene.rig.folder / "open");
    const auto locked = scene.rig.folder.Write("locked", "old");
    std::filesystem::permissions(locked, std::filesystem::perms::owner_read);
    const auto folder = PathToQt(scene.rig.folder.path()) + '/';
    for (const auto& [path, told] :
         {std::pair(list, QString("list is there already; it will be replaced.")), std::pair(list + ".txt", QString()),
          std::pair(folder, QString()),
          std::pair(PathToQt(locked), PathToQt(locked) + " is locked. Browse for it to have it unlocked."),
          std::pair(folder + "open", "Cannot write " + folder +
                                         "open: it is a link to nothing, and nothing is there. Name another file, or "
                                         "put one where the link leads."),
          std::pair(folder + "link", "link is a link to " + list + "; what is there will be replaced."),
          std::pair(PathToQt(scene.rig.folders.Database()),
                    "Cannot write " + PathToQt(scene.rig.folders.Database()) +
                        ": the program keeps its own files there. Name another file.")}) {
      box.clear();
      QTest::keyClicks(&box, path);
      QCOMPARE(scene.Status(), told);
    }
    QCOMPARE(scene.rig.Shown(), "");
  }

  void aFailureIsToldInTheStatusLine() {
    ReadyScene scene;
    scene.Find<QLineEdit>("BrowseTextBox").setText("/nowhere/at/all.txt");
    QCOMPARE(scene.Export(), "inform: 0 recipients exported successfully.");
    QVERIFY2(scene.Status().contains("/nowhere/at/all.txt"), qPrintable(scene.Status()));
    scene.Find<QLineEdit>("BrowseTextBox").setText(PathToQt(scene.File()));
    auto lock = recipients::OpenStore(scene.rig.folders.Database());
    IgnoreErrors(lock->Execute("DELETE FROM [Groups]"));
    QCOMPARE(scene.Export(), "inform: 0 recipients exported successfully.");
    QVERIFY2(scene.Status().contains("There is no group “Readers”") || scene.Status().contains("no group \"Readers\""),
             qPrintable(scene.Status()));
    QVERIFY2(!scene.Status().contains("quillcast"), "no command of a terminal in a window");
    QVERIFY(!std::filesystem::exists(scene.File()));
  }

  void cancellingIsAskedAbout() {
    ReadyScene scene;
    scene.AddMany(300'000);
    scene.Press("ExportButton");
    for (const char* name : {"GroupComboBox", "BrowseTextBox", "BrowseButton", "RadioButton1", "ExportButton"})
      QVERIFY2(!scene.Find<QWidget>(name).isEnabled(), name);
    scene.Press("CancelButton");  // answered with No
    QCOMPARE(scene.rig.Shown(), kCancelQuestion);
    QVERIFY(scene.form->isVisible());
    scene.rig.prompts.answers = {platform::Answer::kYes};
    QTest::keyClick(scene.form.get(), Qt::Key_Escape);
    QCOMPARE(scene.rig.Shown(), kCancelQuestion);
    QTRY_VERIFY(!scene.form->isVisible());
    QCOMPARE(scene.rig.Shown(), "");
    QVERIFY(scene.Written().isEmpty() || scene.Written().endsWith("@x.org\r\n"));
    QVERIFY(scene.Written().count('\n') < 300'002);
    scene.Open();
    scene.Press("CancelButton");
    QVERIFY(!scene.form->isVisible());
    QCOMPARE(scene.rig.Shown() + scene.form->said(), "");
  }

  void returnPressesTheButtonWithTheKeyboard() {
    ReadyScene scene;
    scene.rig.folder.Write("list.txt", "old");
    scene.rig.prompts.files = {scene.rig.folder / "other.txt"};
    scene.Key("BrowseButton", Qt::Key_Return);
    QVERIFY(scene.rig.Shown().startsWith("save: "));
    QCOMPARE(scene.Find<QLineEdit>("BrowseTextBox").text(), PathToQt(scene.rig.folder / "other.txt"));
    QCOMPARE(scene.Written(), "old");
    scene.Key("BrowseTextBox", Qt::Key_Return);
    scene.WaitForEnd();
    QCOMPARE(scene.rig.Shown(), kDone);
    scene.Key("CancelButton", Qt::Key_Return);
    QVERIFY(!scene.form->isVisible());
    QCOMPARE(scene.Written(), "old");
  }

  // Of a store that another program has nothing is read, so the file is as it was.
  void theManagerTellsWhatACancelledExportLeft() {
    ReadyScene scene;
    scene.rig.folder.Write("list.txt", "old");
    GroupManagerForm manager(scene.rig.program, nullptr);
    manager.show();
    test::WhileOpen("RecipientExportForm", [&](QDialog& form) {
      auto database = *platform::Database::Open(scene.rig.folders.Database(), platform::OpenMode::kReadWrite);
      QVERIFY(database.Execute("BEGIN EXCLUSIVE"));
      form.findChild<QComboBox*>("GroupComboBox")->setCurrentText("Readers");
      form.findChild<QLineEdit*>("BrowseTextBox")->setText(PathToQt(scene.File()));
      form.findChild<QPushButton*>("ExportButton")->click();
      scene.rig.prompts.answers = {platform::Answer::kYes};
      form.findChild<QPushButton*>("CancelButton")->click();
      QTRY_VERIFY(!form.isVisible());
    });
    manager.findChild<QPushButton*>("ExportButton")->click();
    const QString said = test::Text(manager, "StatusLine");
    QVERIFY2(said.contains("none was replaced"), qPrintable(said));
    QCOMPARE(scene.Written(), "old");
  }

  void anExportThatEndsWhileItIsAskedAboutIsNotGivenUp() {
    ReadyScene scene;
    scene.AddMany(50'000);
    scene.Press("ExportButton");
    scene.rig.prompts.meanwhile = [&] {
      QVERIFY(QTest::qWaitFor([&] { return !scene.form->findChild<QTimer*>()->isActive(); }));
    };
    scene.rig.prompts.answers = {platform::Answer::kYes};
    scene.Press("CancelButton");
    QCOMPARE(scene.rig.Shown(), QString(kCancelQuestion) + " | inform: 50002 recipients exported successfully.");
    QVERIFY(scene.form->isVisible());
    QCOMPARE(scene.Written().count('\n'), 50'002);
  }
};

}  // namespace quillcast::desktop

QTEST_MAIN(quillcast::desktop::ExportFormTest)
#include "export_form_test.moc"
