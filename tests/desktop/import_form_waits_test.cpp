// The import's dialog while a look at the file is under way: each press that waits for it, with each that can come
// next.
#include <QDropEvent>
#include <QMimeData>
#include <QTimer>
#include <QWheelEvent>
#include <functional>
#include <utility>
#include <vector>

#include "desktop/import_scene.h"
#include "support/stored_archive.h"

namespace quillcast::desktop {

namespace {

constexpr const char* kList = "first name,last name,email,city\nAda,Love,ada@x.org,Ulm\n";
constexpr const char* kOther = "company,e-mail\nMills,bob@x.org\n";
constexpr const char* kEmpty = "||";
constexpr const char* kIgnored = "Ignore|Ignore|Ignore";
constexpr const char* kByHand = "Field 3 = email|Field 2 = last name|Ignore";
constexpr const char* kByHeadings = "Field 3 = email|Field 1 = first name|Field 4 = city";
constexpr const char* kKept = "Field 3 = email|Field 4 = city|Ignore";
constexpr const char* kAsked = "asked for a name";

struct Scene : ImportScene {
  std::filesystem::path other;
  QTimer closer;
  int files = 0;
  bool was_asked_for_a_name = false;

  Scene() {
    recipients::KeptMapping kept{"Kept", *recipients::ParseMapping("Email Address=3,First Name=4")};
    kept.skip = 1;
    IgnoreErrors(recipients::KeepMapping(rig.settings, kept));
    rig.AddGroup("Others", {});
    other = rig.folder.Write("other.txt", kOther);
    OpenWith(kList);
    Press("RadioButton2");
    Step("MappingComboBox", 1);
    QObject::connect(&closer, &QTimer::timeout, &closer, [this] {
      auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
      if (dialog == nullptr || dialog->objectName() != "MappingKeepForm") return;
      was_asked_for_a_name = true;
      dialog->reject();
    });
    closer.start(5);
  }
  // A list that is mapped by hand, and is looked at again.
  void Begin() {
    rig.Shown();
    was_asked_for_a_name = false;
    form->activateWindow();
    Press("RadioButton2");
    Find<QComboBox>("DataComboBox").setCurrentText("Readers");
    Pick(kList, ("list" + std::to_string(files++) + ".txt").c_str());
    GetData();
    Step("ComboBox1", 3);
    Step("ComboBox3", 2);
    QCOMPARE(Mapped(), kByHand);
    rig.prompts.files.clear();
    Press("Rfc4180CheckBox");
  }
  // What the table shows at its end was not there before.
  void WaitForTheLook() {
    auto& table = Find<QTableWidget>("SampleTable");
    if (table.rowCount() > 1) table.item(1, 0)->setText("before");
    QTRY_VERIFY(!Sample().isEmpty() && !Sample().startsWith("before"));
    QTRY_VERIFY(Find<QWidget>("ImportButton").isEnabled() && QApplication::activeModalWidget() == nullptr);
  }
  QString Shown() {
    const QString shown = rig.Shown();
    if (was_asked_for_a_name) return kAsked;
    return shown.startsWith(kConsent) && shown.count(kConsent) == 1 ? kConsent : shown;
  }
  void Type(const char* box, const QString& text) const {
    auto& line = Find<QLineEdit>(box);
    line.setFocus();
    line.selectAll();
    QTest::keyClicks(&line, text);
  }
  void Drop() const {
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(PathToQt(other))});
    QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(form.get(), &enter);
    QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(form.get(), &drop);
  }
  void TurnWheel(QWidget& over) const {
    const QPoint at = over.rect().center();
    QWheelEvent event(at, over.mapToGlobal(at), {}, {0, -120}, Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&over, &event);
  }
  // As its letter does: the path is typed, and its box is not left.
  void TypePathAndPress(const char* button) const {
    Type("BrowseTextBox", PathToQt(other));
    Find<QAbstractButton>(button).click();
  }
};

// What the lists show at the end of the look. kGivenUp: nothing where fields were waited for; else what they showed.
enum class Lists { kAsItWaits, kGivenUp, kItsOwn };

struct Press {
  const char* name;
  std::function<void(Scene&)> press;
  QString mapped = {};  // by it; where it is nothing that fills the lists, what they showed before
  QString shown = {};   // once it is done, where that is at the end of the look
  Lists lists = Lists::kItsOwn;
  bool is_nothing = false;  // for what waits
};

std::function<void(Scene&)> Button(const char* name) {
  return [name](Scene& scene) {
    scene.rig.prompts.answers = {platform::Answer::kYes};
    scene.Press(name);
  };
}

std::function<void(Scene&)> Step(const char* list, int entries) {
  return [list, entries](Scene& scene) { scene.Step(list, entries); };
}

Press Nothing(const char* name, std::function<void(Scene&)> press) {
  return {name, std::move(press), {}, {}, Lists::kAsItWaits, true};
}

std::vector<Press> WhatWaits() {
  return {{"Get Data", Button("GetDataButton"), kIgnored},
          {"Map by Headings", Button("ProposeButton"), kByHeadings},
          {"Apply", Button("ApplyMappingButton"), kKept},
          {"columns", [](Scene& scene) { scene.TypeColumns("1,2,3,4"); }, kIgnored},
          {"Import", Button("ImportButton"), kByHand, kConsent},
          {"Keep As…", Button("KeepMappingButton"), kByHand, kAsked}};
}

std::vector<Press> WhatIsNext() {
  std::vector<Press> all = {
      Nothing("nothing", [](Scene&) {}),
      Nothing("Alt alone", [](Scene& scene) { QTest::keyClick(scene.form.get(), Qt::Key_Alt); }),
      Nothing("Caps Lock", [](Scene& scene) { QTest::keyClick(scene.form.get(), Qt::Key_CapsLock); }),
      Nothing("the desktop's key", [](Scene& scene) { QTest::keyClick(scene.form.get(), Qt::Key_Super_L); }),
      Nothing("a scroll", [](Scene& scene) { scene.TurnWheel(*scene.Find<QTableWidget>("SampleTable").viewport()); }),
      Nothing("a press beside",
              [](Scene& scene) {
                QTest::mouseClick(scene.form.get(), Qt::LeftButton, {}, {2, 2});
              }),
      {"harvest", Button("RadioButton1"), {}, {}, Lists::kAsItWaits},
      {"Browse", Button("BrowseButton"), {}, "open: Import Recipients", Lists::kAsItWaits},
      {"group", Step("DataComboBox", -1), {}, {}, Lists::kAsItWaits},
      {"a wheel over a list",
       [](Scene& scene) { scene.TurnWheel(scene.Find<QWidget>("DataComboBox")); },
       {},
       {},
       Lists::kAsItWaits},
      {"another mapping", Step("MappingComboBox", 1), {}, {}, Lists::kAsItWaits},
      {"a path", [](Scene& scene) { scene.Type("BrowseTextBox", "/nowhere"); }, {}, {}, Lists::kAsItWaits},
      {"columns that are not left", [](Scene& scene) { scene.Type("ColumnsTextBox", "1"); }, {}, {}, Lists::kAsItWaits},
      {"kind", Step("KindComboBox", 1), {}, {}, Lists::kGivenUp},
      {"encoding", Step("EncodingComboBox", 1), {}, {}, Lists::kGivenUp},
      {"first line", Button("SkipCheckBox"), {}, {}, Lists::kGivenUp},
      {"RFC 4180", Button("Rfc4180CheckBox"), {}, {}, Lists::kGivenUp},
      {"heading", Step("HeadingComboBox1", 1), {}, {}, Lists::kGivenUp},
      {"a dropped file", [](Scene& scene) { scene.Drop(); }, kEmpty},
      {"a path, Get Data", [](Scene& scene) { scene.TypePathAndPress("GetDataButton"); }, kIgnored},
      {"a path, Import", [](Scene& scene) { scene.TypePathAndPress("ImportButton"); }, kEmpty,
       "warn: There is no data to import."},
      {"a path, Apply", [](Scene& scene) { scene.TypePathAndPress("ApplyMappingButton"); }, kIgnored},
      // Last: a file that is come back to has its mapping again.
      {"a path, Map by Headings", [](Scene& scene) { scene.TypePathAndPress("ProposeButton"); },
       "Field 2 = e-mail|Ignore|Ignore"}};
  for (Press& press : WhatWaits()) {
    press.lists = press.shown.isEmpty() ? Lists::kItsOwn : Lists::kAsItWaits;
    all.push_back(std::move(press));
  }
  return all;
}

// What is pressed, with what was pressed before it still to come.
std::pair<QString, QString> Expected(const Press& waits, const Press& next) {
  const bool fills = waits.shown.isEmpty();
  if (next.lists == Lists::kItsOwn) return {next.mapped, next.shown};
  const QString mapped = fills && next.lists == Lists::kGivenUp ? kEmpty : waits.mapped;
  if (next.is_nothing) return {mapped, waits.shown};
  const bool lacks_fields = fills && waits.mapped == kIgnored && !next.shown.isEmpty();
  const bool is_deed = next.shown == kConsent || next.shown == kAsked;
  return {mapped, lacks_fields && is_deed ? "warn: Please select at least one field to import." : next.shown};
}

}  // namespace

class ImportFormWaitsTest : public QObject {
  Q_OBJECT

 private slots:
  void eachGivesWayToWhatIsPressedNext() {
    for (const Press& waits : WhatWaits()) {
      Scene scene;
      for (const Press& next : WhatIsNext()) {
        scene.Begin();
        waits.press(scene);
        next.press(scene);
        scene.WaitForTheLook();
        const auto [mapped, shown] = Expected(waits, next);
        const QString pair = QString("%1, then %2: ").arg(waits.name, next.name);
        QCOMPARE(pair + scene.Mapped(), pair + mapped);
        QCOMPARE(pair + scene.Shown(), pair + shown);
      }
    }
  }

  // A mapping that waits is come back to with its file, unless it was given up before.
  void aFileThatIsLeftKeepsWhatStillWaits() {
    Scene scene;
    for (const Press& next : WhatIsNext()) {
      const bool is_given_up = next.lists == Lists::kGivenUp;
      if (!is_given_up && !next.is_nothing) continue;
      scene.Begin();
      const auto left = PathFromQt(scene.Find<QLineEdit>("BrowseTextBox").text());
      scene.Press("ApplyMappingButton");
      next.press(scene);
      scene.Drop();
      scene.PickFile(left);
      scene.WaitForTheLook();
      const QString row = next.name + QString(": ");
      QCOMPARE(row + scene.Mapped(), row + (is_given_up ? kEmpty : kKept));
    }
  }

  // A drive that is away takes no mapping with it.
  void aFileThatCannotBeReadKeepsItsMapping() {
    Scene scene;
    scene.Begin();
    const auto left = PathFromQt(scene.Find<QLineEdit>("BrowseTextBox").text());
    const auto away = left.parent_path() / "away.txt";
    scene.Press("ApplyMappingButton");
    scene.WaitForTheLook();
    scene.Drop();
    scene.WaitForTheLook();
    std::filesystem::rename(left, away);
    scene.PickFile(left);
    QTRY_VERIFY2(scene.Status().contains("No such file"), qPrintable(scene.Status()));
    QCOMPARE(scene.Mapped(), kEmpty);
    scene.Drop();
    scene.WaitForTheLook();
    std::filesystem::rename(away, left);
    scene.PickFile(left);
    QTRY_COMPARE(scene.Mapped(), kKept);
  }

  void anEncodingThatIsTakenBackIsFoundOut() {
    Scene scene;
    scene.Pick("\xC4\xE4,a@x.org\n", "old.txt");
    QTRY_COMPARE(scene.Sample(), QString::fromUtf8("\u00C4\u00E4|a@x.org"));
    auto& box = scene.Find<QComboBox>("EncodingComboBox");
    box.setFocus();
    box.lineEdit()->selectAll();
    QTest::keyClicks(box.lineEdit(), "windows-1251");
    QTest::keyClick(box.lineEdit(), Qt::Key_Tab);
    box.setEditText("");
    QTRY_COMPARE(scene.Sample(), QString::fromUtf8("\u0414\u0434|a@x.org"));
    box.setFocus();
    QTest::keyClick(box.lineEdit(), Qt::Key_Tab);
    QTRY_COMPARE(scene.Sample(), QString::fromUtf8("\u00C4\u00E4|a@x.org"));
  }

  void anImportWaitsForNoLookAtAnEmptiedPath() {
    Scene scene;
    scene.Begin();
    scene.Find<QLineEdit>("BrowseTextBox").clear();
    scene.Press("ImportButton");
    QCOMPARE(scene.rig.Shown(), "warn: Please specify a file.");
    QCOMPARE(scene.Status(), "");
  }

  // The one that was picked last, by hand or by a mapping, where the file has it.
  void aFileThatIsLeftKeepsItsSheet() {
    struct Row {
      const char* name;
      const char* of_mapping;  // the sheet that it takes
      bool is_picked;          // by hand, before
      bool waits;              // the look has not come back when the file is left
      bool harvests;
      QString sheet;
    };
    for (const Row& row : {Row{"none", "", false, false, false, "One"},
                           {"by hand", "", true, false, false, "T&wo"},
                           {"by hand, and a harvest", "", true, false, true, "T&wo"},
                           {"by hand, the mapping waits", "", true, true, false, "T&wo"},
                           {"by hand, the mapping's is lacking", "Nope", true, false, false, "T&wo"},
                           {"by hand, the mapping's is lacking and waits", "Nope", true, true, false, "T&wo"},
                           {"by the mapping", "T&wo", false, false, true, "T&wo"},
                           {"by the mapping that waits", "T&wo", false, true, false, "T&wo"},
                           {"lacking", "Nope", false, false, false, "One"}}) {
      Scene scene;
      recipients::KeptMapping kept{"Kept", *recipients::ParseMapping("Email Address=1")};
      kept.sheet = row.of_mapping;
      IgnoreErrors(recipients::KeepMapping(scene.rig.settings, kept));
      const auto book = scene.rig.folder.Write("book.xlsx", test::StoredArchive(test::TwoSheets()));
      scene.PickFile(book);
      QTRY_COMPARE(scene.Entries("SheetComboBox"), "One|T&wo");
      if (row.is_picked) {
        scene.Step("SheetComboBox", 1);
        scene.WaitForTheLook();
      }
      scene.Press("ApplyMappingButton");
      if (!row.waits) scene.WaitForTheLook();
      if (row.harvests) scene.Press("RadioButton1");
      scene.Drop();
      scene.WaitForTheLook();
      scene.PickFile(book);
      const QString name = row.name + QString(": ");
      if (row.harvests) {
        scene.rig.Shown();
        QCOMPARE(name + scene.Import(), name + kConsent + " | " + Done(1, 0, 0));
        QCOMPARE(name + scene.Addresses(), name + "old@x.org, b@x.org,");
      }
      if (!row.harvests)
        QTRY_COMPARE(name + scene.Sample(), name + (row.sheet == "One" ? "As of March / E-Mail / a@x.org" : "b@x.org"));
      QCOMPARE(name + scene.Find<QComboBox>("SheetComboBox").currentText(), name + row.sheet);
    }
  }

  // It is told before anybody of another sheet comes in: one that a mapping wants, and one that was shown.
  void aSheetThatTheFileLacksIsTold() {
    recipients::KeptMapping kept{"Kept", *recipients::ParseMapping("Email Address=1")};
    kept.sheet = "Nope";
    const auto two = test::StoredArchive(test::TwoSheets());
    auto renamed = test::TwoSheets();
    for (auto& part : renamed) {
      const auto at = part.content.find("'One'");
      if (at != std::string::npos) part.content.replace(at, 5, "'New'");
    }
    const auto other = test::StoredArchive(renamed);
    struct Row {
      const char* name;
      bool is_listed;  // a look has shown the sheets
      bool is_changed;
      std::function<void(Scene&)> then;
      QString warning;
    };
    const auto apply = Button("ApplyMappingButton");
    const QString lacks_nope = "The file has no sheet “Nope”. “One” is read.";
    const QString lacks_one = "The file has no sheet “One”. “New” is read.";
    for (const Row& row : {Row{"a mapping's", false, false, apply, lacks_nope},
                           {"a mapping's, given up", false, false,
                            [&](Scene& scene) {
                              apply(scene);
                              scene.TypeColumns("1");
                            },
                            lacks_nope},
                           {"a mapping's, the sheets are listed", true, false, apply, lacks_nope},
                           {"a mapping's, left and come back to", true, false,
                            [&](Scene& scene) {
                              apply(scene);
                              scene.Drop();
                              scene.PickFile(scene.rig.folder.path() / "book.xlsx");
                            },
                            lacks_nope},
                           {"the one that was shown", true, true, Step("KindComboBox", 2), lacks_one},
                           {"the one that was shown, left and come back to", true, true,
                            [&](Scene& scene) {
                              scene.Drop();
                              scene.WaitForTheLook();
                              scene.PickFile(scene.rig.folder.path() / "book.xlsx");
                            },
                            lacks_one}}) {
      for (const char* mode : {"RadioButton1", "RadioButton2"}) {
        Scene scene;
        IgnoreErrors(recipients::KeepMapping(scene.rig.settings, kept));
        const auto book = scene.rig.folder.Write("book.xlsx", two);
        scene.PickFile(book);
        const QString name = row.name + QString(": ");
        if (row.is_listed) {
          QTRY_COMPARE(name + scene.Entries("SheetComboBox"), name + "One|T&wo");
          scene.GetData();
          scene.Step("ComboBox1", 1);
        }
        if (row.is_changed) scene.rig.folder.Write("book.xlsx", other);
        row.then(scene);
        scene.Press(mode);
        scene.rig.prompts.answers = {platform::Answer::kYes};
        scene.Press("ImportButton");
        QTRY_VERIFY2(scene.Warnings().startsWith(row.warning), qPrintable(name + scene.Warnings()));
        QCOMPARE(name + scene.Addresses(), name + "old@x.org,");
        QCOMPARE(name + scene.rig.Shown(), name);
      }
    }
  }

  // By the next look, also after one that failed.
  void aSheetThatIsAddedIsListed() {
    auto one = test::TwoSheets();
    for (auto& part : one) {
      const std::string second = "<sheet name='T&amp;wo' r:id='rId4'/>";
      const auto at = part.content.find(second);
      if (at != std::string::npos) part.content.erase(at, second.size());
    }
    for (const bool was_away : {false, true}) {
      Scene scene;
      const auto book = scene.rig.folder.Write("book.xlsx", test::StoredArchive(one));
      scene.PickFile(book);
      QTRY_COMPARE(scene.Entries("SheetComboBox"), "One");
      if (was_away) {
        std::filesystem::remove(book);
        scene.Press("GetDataButton");
        QTRY_VERIFY2(scene.Status().contains("No such file"), qPrintable(scene.Status()));
      }
      scene.rig.folder.Write("book.xlsx", test::StoredArchive(test::TwoSheets()));
      scene.Press("GetDataButton");
      QTRY_COMPARE(scene.Entries("SheetComboBox"), "One|T&wo");
      QVERIFY(scene.Find<QWidget>("SheetComboBox").isVisible());
      scene.Step("SheetComboBox", 1);
      QTRY_COMPARE(scene.Sample(), "b@x.org");
      for (const int step : {1, 1}) scene.Step("KindComboBox", step);  // as a text, and as a spreadsheet again
      QTRY_COMPARE(scene.Sample(), "b@x.org");
      scene.GetData();
      scene.Step("ComboBox1", 1);
      scene.closer.stop();
      QCOMPARE(scene.Keep("Second").sheet, "T&wo");
    }
  }

  void anImportThatWaitsIsTold() {
    Scene scene;
    scene.Begin();
    scene.Press("ImportButton");
    QCOMPARE(scene.Status(), "Import waits for the look at the file.");
    scene.Step("MappingComboBox", 1);
    QCOMPARE(scene.Status(), "The import that waited was given up.");
    scene.WaitForTheLook();
    QVERIFY2(scene.Status().endsWith(" The import that waited was given up."), qPrintable(scene.Status()));
    QCOMPARE(scene.rig.Shown(), "");
    scene.Press("Rfc4180CheckBox");
    scene.WaitForTheLook();
    QVERIFY2(!scene.Status().contains("given up"), qPrintable(scene.Status()));
  }
};

}  // namespace quillcast::desktop

QTEST_MAIN(quillcast::desktop::ImportFormWaitsTest)
#include "import_form_waits_test.moc"
