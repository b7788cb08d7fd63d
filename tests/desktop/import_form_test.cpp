// The dialog of the import: what it checks, what it shows of a file, what it imports, and how it is given up.
#include <QAbstractItemView>
#include <QCheckBox>
#include <QDropEvent>
#include <QElapsedTimer>
#include <QFile>
#include <QMimeData>
#include <QProgressBar>
#include <QScrollBar>
#include <QTimer>

#include "desktop/import_scene.h"
#include "support/stored_archive.h"

namespace quillcast::desktop {

namespace {

using Scene = ImportScene;

}  // namespace

class ImportFormTest : public QObject {
  Q_OBJECT

 private slots:
  void opensWithTheGivenChoices() {
    Scene scene;
    scene.rig.AddGroup("Zebras", {});
    scene.rig.AddGroup("Ants", {});
    scene.Open("Ants");
    QCOMPARE(scene.Entries("DataComboBox"), "Zebras|Ants");
    QCOMPARE(scene.Find<QComboBox>("DataComboBox").placeholderText(), "Choose a group");
    QCOMPARE(scene.Find<QComboBox>("DataComboBox").currentText(), "Ants");
    QCOMPARE(scene.Entries("DelimitComboBox"), "Tab|Colon|Space|Comma|Semicolon");
    QVERIFY(scene.Find<QAbstractButton>("RadioButton1").isChecked());
    for (int field = 1; field <= 18; ++field) {
      QCOMPARE(scene.Find<QComboBox>(QString("ComboBox%1").arg(field)).count(), 0);
    }
    QVERIFY(scene.form->findChild<QScrollBar*>("VScrollBar") != nullptr);
    for (const bool delimited : {false, true}) {
      scene.Press(delimited ? "RadioButton2" : "RadioButton1");
      for (const char* name : {"DelimitComboBox", "QuotationCheckBox", "Rfc4180CheckBox", "GetDataButton", "ComboBox1",
                               "ComboBox18", "SkipCheckBox", "SampleTable"}) {
        QVERIFY2(scene.Find<QWidget>(name).isEnabled() == delimited, name);
      }
      for (const QLabel* label : scene.form->findChildren<QLabel*>()) {
        if (label->isVisible() && label->buddy() != nullptr)
          QVERIFY2(label->isEnabled() == label->buddy()->isEnabled(), qPrintable(label->text()));
      }
    }
    for (const auto& [box, other] :
         {std::pair("QuotationCheckBox", "Rfc4180CheckBox"), std::pair("Rfc4180CheckBox", "QuotationCheckBox")}) {
      scene.Press(box);
      QVERIFY2(!scene.Find<QWidget>(other).isEnabled(), box);
      scene.Press(box);
      QVERIFY2(scene.Find<QWidget>(other).isEnabled(), box);
    }
  }

  void complainsInOrder() {
    const auto complains = [](Scene& scene, const char* button, const char* warning, const char* focus) {
      scene.Press(button);
      QTRY_VERIFY(!scene.rig.prompts.shown.empty());
      QCOMPARE(scene.rig.Shown(), warning);
      QCOMPARE(scene.form->focusWidget()->objectName(), focus);
    };
    Scene none;
    none.Open();
    none.Press("RadioButton2");
    complains(none, "GetDataButton", "warn: Please specify a file.", "BrowseTextBox");
    complains(none, "ImportButton", "warn: Please specify a file.", "BrowseTextBox");
    none.Find<QLineEdit>("BrowseTextBox").setText("/nowhere");
    complains(none, "ImportButton", "warn: There is no group to import.", "DataComboBox");
    Scene scene;
    scene.rig.AddGroup("Readers", {});
    scene.Open();
    scene.Press("RadioButton2");
    scene.Pick("a@x.org,Ada\n");
    complains(scene, "ImportButton", "warn: Please select a group.", "DataComboBox");
    scene.Step("DataComboBox", 1);
    complains(scene, "ImportButton", "warn: There is no data to import.", "GetDataButton");
    scene.GetData();
    complains(scene, "ImportButton", "warn: Please select at least one field to import.", "ComboBox1");
    scene.Step("ComboBox3", 2);
    complains(scene, "ImportButton", "warn: Email Address field is required.", "ComboBox1");
    scene.Step("ComboBox1", 1);
    scene.rig.prompts.answers = {platform::Answer::kNo};
    scene.Press("ImportButton");
    QCOMPARE(scene.rig.Shown(), kConsent);
    QCOMPARE(scene.Addresses(), "");
    scene.Press("ReportButton");
    QCOMPARE(scene.rig.Shown(), "warn: Report is not available for this session.");
    QCOMPARE(scene.Import(), kConsent + " | " + Done(1, 0, 0));
    QCOMPARE(scene.Addresses(), "a@x.org,Ada");
    scene.Press("ReportButton");
    QCOMPARE(scene.rig.desktop.opened, std::vector<std::string>{"ReportButton.txt"});
  }

  void harvests() {
    Scene scene("Ada <ada@x.org>, ada@x.org; o'neill@x.org old@x.org");
    QCOMPARE(scene.Import(), kConsent + " | " + Done(2, 2, 0));
    QCOMPARE(scene.Addresses(), "old@x.org, ada@x.org, neill@x.org,");
    QVERIFY2(scene.Warnings().startsWith("1 address was cut, the first to neill@x.org"), qPrintable(scene.Warnings()));
    scene.Press("RadioButton2");
    scene.Press("SkipCheckBox");
    QVERIFY2(scene.Warnings().startsWith("1 address was cut"), qPrintable(scene.Warnings()));
    scene.Press("RadioButton1");
  }

  void getDataFillsTheLists() {
    Scene scene("\" Ada \" ; \"ada@x.org\";\nBob;bob@x.org;x;y\n");
    scene.Press("RadioButton2");
    QCOMPARE(scene.Find<QComboBox>("DelimitComboBox").currentText(), "Semicolon");
    QVERIFY2(scene.Status().contains("The delimiter seems to be “Semicolon”"), qPrintable(scene.Status()));
    scene.Press("QuotationCheckBox");
    scene.GetData();
    QCOMPARE(scene.Entries("ComboBox1"), "Ignore|Field 1 =  Ada |Field 2 = ada@x.org|Field 3 = ");
    QCOMPARE(scene.Entries("ComboBox18"), scene.Entries("ComboBox1"));
    QCOMPARE(scene.Find<QComboBox>("ComboBox18").currentText(), "Ignore");
    scene.Step("ComboBox1", 2);
    scene.Step("DelimitComboBox", -1);
    scene.GetData();
    QTRY_COMPARE(scene.Find<QComboBox>("ComboBox1").currentText(), "Ignore");
  }

  void theListsAreThoseOfTheLastReading() {
    Scene scene("Ada;Love;ada@x.org\n");
    scene.Press("RadioButton2");
    QTest::keyClick(&scene.Find<QComboBox>("DelimitComboBox"), Qt::Key_Up);
    scene.Press("GetDataButton");
    QTRY_COMPARE(scene.Entries("ComboBox1"), "Ignore|Field 1 = Ada;Love;ada@x.org");
    QTest::keyClick(&scene.Find<QComboBox>("DelimitComboBox"), Qt::Key_Down);
    QTRY_COMPARE(scene.Sample(), "Ada|Love|ada@x.org");
    scene.Step("HeadingComboBox3", 1);
    QCOMPARE(scene.Find<QComboBox>("ComboBox1").currentText(), "Field 3 = ada@x.org");
    // Of a file that cannot be read there is nothing but "Ignore".
    std::filesystem::remove(PathFromQt(scene.Find<QLineEdit>("BrowseTextBox").text()));
    scene.Press("GetDataButton");
    QTRY_COMPARE(scene.Entries("ComboBox18"), "Ignore");
    QCOMPARE(scene.Find<QComboBox>("ComboBox1").currentText(), "Ignore");
  }

  void theTableShowsWhatWouldBeStored() {
    Scene scene("First,Mail\n\"Ada, B\",ada@x.org\n");
    scene.Press("RadioButton2");
    QCOMPARE(scene.Sample(), "First|Mail| / \"Ada| B\"|ada@x.org");
    scene.Press("Rfc4180CheckBox");
    QTRY_COMPARE(scene.Sample(), "First|Mail / Ada, B|ada@x.org");
    scene.Press("SkipCheckBox");
    QCOMPARE(scene.Sample(), "Ada, B|ada@x.org");
    // A list above a field leads to the one in the panel, and the other way round.
    scene.Step("HeadingComboBox2", 1);
    QCOMPARE(scene.Find<QComboBox>("ComboBox1").currentText(), "Field 2 = Mail");
    scene.Step("ComboBox3", 1);
    QCOMPARE(scene.Find<QComboBox>("HeadingComboBox1").currentText(), "First Name");
    scene.Step("HeadingComboBox1", 1);
    QCOMPARE(scene.Find<QComboBox>("ComboBox3").currentText(), "Ignore");
    QCOMPARE(scene.Find<QComboBox>("ComboBox4").currentText(), "Field 1 = First");
    scene.Step("ComboBox3", 1);
    QCOMPARE(scene.Import(), kConsent + " | " + Done(1, 0, 0));
    QCOMPARE(scene.Addresses(), "old@x.org, ada@x.org,Ada, B");
  }

  void headingsProposeAMapping() {
    Scene scene("Vorname;Nachname;E-Mail\nAda;Lovelace;ada@x.org\nJ\xC3\xB6rg;\xC3\x96l;j\xE4@x.org\n");
    scene.Press("RadioButton2");
    QVERIFY(!scene.Find<QAbstractButton>("SkipCheckBox").isChecked());
    scene.Press("ProposeButton");
    QVERIFY(scene.Find<QAbstractButton>("SkipCheckBox").isChecked());
    QCOMPARE(scene.Find<QComboBox>("ComboBox1").currentText(), "Field 3 = E-Mail");
    QCOMPARE(scene.Find<QComboBox>("HeadingComboBox1").currentText(), "First Name");
    QVERIFY2(scene.Warnings().startsWith("1 byte is not UTF-8, on line 3"), qPrintable(scene.Warnings()));
    QCOMPARE(scene.Import(), kConsent + " | " + Done(1, 0, 1));
    QCOMPARE(scene.Addresses(), "old@x.org, ada@x.org,Ada");
    scene.Pick("Ada,ada@x.org\n", "plain.txt");
    QTRY_VERIFY(!scene.Find<QWidget>("ProposeButton").isEnabled());
    QVERIFY(!scene.Find<QAbstractButton>("SkipCheckBox").isChecked());
    scene.Pick(std::string(24, ',') + "Email\n" + std::string(24, ',') + "ada@x.org\n", "wide.csv");
    QTRY_VERIFY(scene.Find<QWidget>("ProposeButton").isEnabled());
    scene.Press("ProposeButton");
    QTRY_COMPARE(scene.Find<QComboBox>("ComboBox1").currentText(), "Field 1 = Email");
    QCOMPARE(scene.Find<QLineEdit>("ColumnsTextBox").text() + ": " + scene.Sample(), "25: ada@x.org");
    QCOMPARE(scene.Warnings(), "");
    QCOMPARE(scene.Import(), kConsent + " | " + Done(0, 1, 0));
    scene.Press("QuotationCheckBox");
    scene.Pick("Ada,ada@x.org\n", "other.txt");
    QVERIFY(!scene.Find<QAbstractButton>("QuotationCheckBox").isChecked());  // it was for the other file
    scene.Pick("BEGIN:VCARD\nN:Love;Ada\nEMAIL:vcard@x.org\nEND:VCARD\n", "cards.vcf");
    QTRY_VERIFY(scene.Find<QWidget>("ProposeButton").isEnabled());
    scene.Press("ProposeButton");
    for (const char* name : {"DelimitComboBox", "QuotationCheckBox", "SkipCheckBox"})
      QVERIFY2(!scene.Find<QWidget>(name).isEnabled(), name);
    QCOMPARE(scene.Import(), kConsent + " | " + Done(1, 0, 0));
    QVERIFY2(scene.Addresses().endsWith("vcard@x.org,Ada"), qPrintable(scene.Addresses()));
  }

  void columnsBehindTheEighteenthAreTaken() {
    Scene scene;
    const std::string far(24, ';');
    scene.OpenWith("Name" + far + "Post\nAda" + far + "ada@x.org\nBob" + far + "bob@x.org\n");
    scene.Press("RadioButton2");
    QVERIFY2(scene.Status().contains("“Columns” makes others"), qPrintable(scene.Status()));
    scene.GetData();
    scene.Step("ComboBox1", 1);
    scene.TypeColumns("0");
    QCOMPARE(scene.Status(), "\"0\" is no column of a list. Name columns by their numbers, as in \"25,1,2\".");
    // Nothing is done with other columns than the box says.
    for (const char* button : {"ImportButton", "GetDataButton", "KeepMappingButton"}) {
      scene.Press(button);
      QCOMPARE(scene.rig.Shown(), "");
      QCOMPARE(scene.form->focusWidget()->objectName(), "ColumnsTextBox");
    }
    scene.TypeColumns("25, 1");
    QCOMPARE(scene.Mapped(), "||");  // the fields are others
    QTRY_COMPARE(scene.Sample(), "Post|Name / ada@x.org|Ada / bob@x.org|Bob");
    QCOMPARE(scene.Mapped(), "Ignore|Ignore|Ignore");
    scene.Press("SkipCheckBox");
    scene.Step("ComboBox1", 1);
    scene.Step("ComboBox3", 2);
    QCOMPARE(scene.Keep("Shop").columns, (std::vector<std::size_t>{25, 1}));
    scene.Pick("x\n", "other.csv");
    QCOMPARE(scene.Find<QLineEdit>("ColumnsTextBox").text(), "");  // they were the other file's
    scene.Step("MappingComboBox", 1);
    QTest::keyClick(&scene.Find<QWidget>("ApplyMappingButton"), Qt::Key_Space);
    QTRY_VERIFY2(scene.Warnings().contains("1 column that is taken stands in no line that was read: 25."),
                 qPrintable(scene.Warnings()));
    scene.Pick("a" + far + "b\nZoe" + far + "zoe@x.org\n", "next.csv");
    QTest::keyClick(&scene.Find<QWidget>("ApplyMappingButton"), Qt::Key_Space);
    QTRY_COMPARE(scene.Mapped(), "Field 1 = b|Field 2 = a|Ignore");
    QCOMPARE(scene.Import(), kConsent + " | " + Done(1, 0, 0));
    QVERIFY2(scene.Addresses().endsWith(" zoe@x.org,Zoe"), qPrintable(scene.Addresses()));
    scene.Press("RadioButton1");  // a harvest looks at all of them
    scene.TypeColumns("1");
    QCOMPARE(scene.Import(), kConsent + " | " + Done(0, 1, 0));
  }

  // The look has not come back when the buttons are pressed: nobody has turned the event loop.
  void whatIsPressedDuringALookIsForWhatItShows() {
    Scene scene("Vorname;E-Mail;Ort\nAda;ada@x.org;Ulm\n");
    scene.Press("RadioButton2");
    scene.Press("ProposeButton");
    scene.TypeColumns("2,3,1");
    scene.Press("ProposeButton");
    QCOMPARE(scene.Import(), kConsent + " | " + Done(1, 0, 0));
    QCOMPARE(scene.Addresses(), "old@x.org, ada@x.org,Ada");
    const QString mapped = "Field 1 = E-Mail|Field 3 = Vorname|Field 2 = Ort";
    QCOMPARE(scene.Mapped(), mapped);
    scene.Keep("Shop");
    scene.form->activateWindow();  // the dialog that asked for the name was
    QVERIFY(QTest::qWaitForWindowActive(scene.form.get()));
    // What is kept, and imported, after "Apply" is what that maps, and not what was mapped before.
    scene.TypeColumns("1,2");
    QCOMPARE(scene.Import(), "warn: Please select at least one field to import.");
    scene.Step("ComboBox1", 1);
    const auto apply = [&scene] { QTest::keyClick(&scene.Find<QWidget>("ApplyMappingButton"), Qt::Key_Space); };
    apply();
    QCOMPARE(scene.Import(), kConsent + " | " + Done(0, 1, 0));
    scene.TypeColumns("1,2");
    QTRY_COMPARE(scene.Sample(), "Ada|ada@x.org");
    apply();
    test::WhileOpen("MappingKeepForm", [&](QDialog& dialog) {
      QTest::keyClicks(dialog.focusWidget(), "Again");
      QTest::keyClick(&dialog, Qt::Key_Return);
    });
    scene.Press("KeepMappingButton");
    QTRY_VERIFY(recipients::FindMapping(scene.rig.settings, "Again"));
    QCOMPARE(recipients::FindMapping(scene.rig.settings, "Again")->mapping,
             recipients::FindMapping(scene.rig.settings, "Shop")->mapping);
    scene.form->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(scene.form.get()));
    // Columns that are typed meanwhile have others in its places; headings may be none of theirs.
    apply();
    scene.TypeColumns("3");
    scene.Press("ProposeButton");
    QTRY_VERIFY2(scene.Status().contains("None of the first lines looks like headings."), qPrintable(scene.Status()));
    QCOMPARE(scene.Mapped(), "Ignore|Ignore|Ignore");
    // An import that waits is for the file that it was pressed for; one that was typed last is looked at first.
    scene.TypeColumns("2,3");
    scene.Press("ImportButton");
    scene.Pick("E-Mail;Vorname\nbob@x.org;Bob\n", "other.txt");
    QTRY_VERIFY2(scene.Status().startsWith("Format"), qPrintable(scene.Status()));
    QCOMPARE(scene.rig.Shown(), "");
    scene.Press("ProposeButton");
    scene.Find<QLineEdit>("BrowseTextBox").setText("/nowhere/list.txt");
    QCOMPARE(scene.Import(), "warn: There is no data to import.");
  }

  // What the table shows is of other columns than those that are typed by now, and goes with the look.
  void aHarvestBreaksALookOff() {
    Scene scene("Ada,ada@x.org\n");
    scene.Press("RadioButton2");
    scene.TypeColumns("2,1");
    scene.Press("RadioButton1");
    QCOMPARE(scene.Import(), kConsent + " | " + Done(1, 0, 0));
    scene.Press("RadioButton2");
    QCOMPARE(scene.Sample(), "");
    QCOMPARE(scene.Find<QLabel>("EmptyState").text(),
             "The look at the file ended with the import. “Get Data” takes another.");
    scene.GetData();
    QCOMPARE(scene.Sample(), "ada@x.org|Ada");
    QCOMPARE(scene.rig.Shown(), "");
  }

  void aMappingIsAppliedWholeOrNotAtAll() {
    Scene scene;
    recipients::KeptMapping turned{"Turned", *recipients::ParseMapping("Email Address=3,First Name=4,City=1")};
    turned.skip = 1;
    turned.columns = {4, 2, 3, 1};
    QVERIFY(recipients::KeepMapping(scene.rig.settings, turned));
    const char* list = "first,last,mail,city\nAda,Love,ada@x.org,London\n";
    scene.OpenWith(list);
    scene.Press("RadioButton2");
    scene.Step("MappingComboBox", 1);
    const auto apply = [&scene] { QTest::keyClick(&scene.Find<QWidget>("ApplyMappingButton"), Qt::Key_Space); };
    const QString proposed = "Field 3 = mail|Field 1 = first|Field 4 = city";
    const QString applied = "Field 3 = mail|Field 4 = first|Field 1 = city";
    // A look that fails leaves nothing to import.
    scene.Press("ProposeButton");
    QTRY_COMPARE(scene.Mapped(), proposed);
    scene.Step("KindComboBox", 2);
    QTRY_VERIFY2(scene.Status().contains("is no whole archive"), qPrintable(scene.Status()));
    apply();
    QCOMPARE(scene.Import(), "warn: There is no data to import.");
    scene.Step("KindComboBox", -2);
    QTRY_VERIFY2(scene.Status().startsWith("Format"), qPrintable(scene.Status()));
    QCOMPARE(scene.Mapped(), "||");
    apply();
    QTRY_COMPARE(scene.Mapped(), applied);
    // A file that was left before the look at it ended has it when it is come back to.
    scene.TypeColumns("1,2,3,4");
    scene.Press("ProposeButton");
    QTRY_COMPARE(scene.Mapped(), proposed);
    apply();
    scene.Pick("x\n", "other.txt");
    scene.Pick(list);
    QTRY_COMPARE(scene.Mapped(), applied);
    QCOMPARE(scene.Find<QLineEdit>("ColumnsTextBox").text(), "4,2,3,1");
    // A field that was picked meanwhile was one of the look before.
    std::filesystem::remove(PathFromQt(scene.Find<QLineEdit>("BrowseTextBox").text()));
    apply();
    scene.Step("HeadingComboBox1", 1);
    QCOMPARE(scene.Import(), "warn: There is no data to import.");
  }

  // What is ticked counts where it can be ticked.
  void quotesAreTakenOffDelimitedTextAlone() {
    Scene scene("BEGIN:VCARD\nN:Love;Ada\nEMAIL:vcard@x.org\nEND:VCARD\n");
    scene.Press("RadioButton2");
    scene.Step("KindComboBox", 1);
    QTRY_VERIFY(scene.Find<QWidget>("QuotationCheckBox").isEnabled());
    scene.Press("QuotationCheckBox");
    QTest::keyClick(&scene.Find<QComboBox>("KindComboBox"), Qt::Key_Up);
    QTRY_VERIFY2(scene.Sample().startsWith("vcard@x.org|"), qPrintable(scene.Sample()));
    QVERIFY(!scene.Find<QWidget>("QuotationCheckBox").isEnabled());
    scene.GetData();
    QVERIFY2(scene.Entries("ComboBox1").startsWith("Ignore|Field 1 = vcard@x.org|"),
             qPrintable(scene.Entries("ComboBox1")));
    scene.Step("ComboBox1", 1);
    QCOMPARE(scene.Import(), kConsent + " | " + Done(1, 0, 0));
    QVERIFY2(scene.Addresses().contains(" vcard@x.org,"), qPrintable(scene.Addresses()));
  }

  void theWarningsAreThoseThatStillHold() {
    Scene scene("\"Ada\",\"ada@x.org\"\n\"Bob\",\"bob@x.org\"\n");
    scene.Press("RadioButton2");
    const auto warns = [&](const char* of) { return scene.Warnings().contains(of); };
    QTRY_VERIFY2(warns("stand in quotes"), qPrintable(scene.Warnings()));
    scene.Find<QCheckBox>("QuotationCheckBox").setFocus();
    scene.Press("QuotationCheckBox");
    QVERIFY2(scene.Find<QCheckBox>("QuotationCheckBox").hasFocus(), "the lines that are shown took the keyboard");
    QCOMPARE(scene.Warnings(), "");
    scene.GetData();
    scene.Step("ComboBox1", 1);
    QVERIFY2(warns("None of the lines shown here has an address"), qPrintable(scene.Warnings()));
    scene.Step("ComboBox1", 1);
    QCOMPARE(scene.Warnings(), "");
    QCOMPARE(scene.Import(), kConsent + " | " + Done(2, 0, 0));
    QVERIFY(scene.Find<QProgressBar>("ProgressBar").value() > 0);
    QString columns = "c1";
    for (int n = 2; n <= 19; ++n) columns += QString(",c%1").arg(n);
    scene.Pick(FromQt(columns + ",First Name,E-Mail\n" + columns + ",Ada,ada@x.org\n"), "wide.csv");
    QCOMPARE(scene.Find<QProgressBar>("ProgressBar").value(), 0);
    QTRY_VERIFY2(warns("2 fields stand behind the eighteenth") && warns("“E-Mail”") && warns("“First Name”"),
                 qPrintable(scene.Warnings()));
    QVERIFY(warns("The mapping of the other file was set back."));
    scene.GetData();
    scene.Step("ComboBox3", 1);
    QVERIFY(!warns("was set back") && warns("behind the eighteenth"));
  }

  void aMappingIsKeptUnderAName() {
    Scene scene("Vorname;Ort;E-Mail\nAda;Ulm;ada@x.org\n");
    scene.Press("RadioButton2");
    QVERIFY(!scene.Find<QWidget>("ApplyMappingButton").isEnabled());
    scene.Press("KeepMappingButton");
    QCOMPARE(scene.rig.Shown(), "warn: Please select at least one field to import.");
    scene.Press("ProposeButton");
    const auto keep = [&](const char* name, const char* status) { QCOMPARE(scene.TypeMappingName(name), status); };
    // Of several lines, and not cut.
    keep(std::string(101, 'x').c_str(), "The name of a mapping has 100 characters at most. Give it a shorter one.");
    keep("\x08", "A mapping is kept under a name. Name it for where the lists come from.");
    keep("Web shop", "");
    QCOMPARE(scene.Entries("MappingComboBox"), "Web shop");
    const recipients::KeptMapping shop{
        "Web shop", *recipients::ParseMapping("Email Address=3,First Name=1,City=2"), ';', false, false, 1};
    QCOMPARE(*recipients::FindMapping(scene.rig.settings, "Web shop"), shop);
    // One of the same name is replaced after a question, which is answered with No and then with Yes.
    scene.Press("SkipCheckBox");
    scene.rig.prompts.answers = {platform::Answer::kNo};
    keep("web SHOP", "");
    QCOMPARE(scene.rig.Shown(), "ask: The mapping “web SHOP” is kept already./Would you like to replace it?");
    QCOMPARE(*recipients::FindMapping(scene.rig.settings, "Web shop"), shop);
    // A file that lacks a field of it, in another reading: what is missing is told, and stands at "Ignore".
    scene.Pick("x,1\nAda,Ulm\n", "other.csv");
    QTRY_COMPARE(scene.Find<QComboBox>("DelimitComboBox").currentText(), "Comma");
    scene.Step("MappingComboBox", 1);
    QTest::keyClick(&scene.Find<QWidget>("ApplyMappingButton"), Qt::Key_Space);
    QTRY_COMPARE(scene.Find<QComboBox>("DelimitComboBox").currentText(), "Semicolon");
    QTRY_VERIFY2(scene.Warnings().contains("field 3 of a line, for “Email Address”"), qPrintable(scene.Warnings()));
    QCOMPARE(scene.Mapped(), "Ignore|Field 1 = x,1|Ignore");
    scene.Pick("a;b;c;d\nAda;Ulm;ada@x.org;1\n", "right.csv");
    QTest::keyClick(&scene.Find<QWidget>("ApplyMappingButton"), Qt::Key_Space);
    QTRY_COMPARE(scene.Mapped(), "Field 3 = c|Field 1 = a|Field 2 = b");
    QVERIFY(scene.Find<QAbstractButton>("SkipCheckBox").isChecked());
    QCOMPARE(scene.Import(), kConsent + " | " + Done(1, 0, 0));
    // Lines before the headings, as a kept one may leave out.
    auto report = shop;
    report.skip = 2;
    QVERIFY(recipients::KeepMapping(scene.rig.settings, report));
    scene.Pick("A report\nv;o;m\nEve;Bonn;eve@x.org\n", "report.csv");
    QTest::keyClick(&scene.Find<QWidget>("ApplyMappingButton"), Qt::Key_Space);
    QTRY_COMPARE(scene.Mapped(), "Field 3 = m|Field 1 = v|Field 2 = o");
    QCOMPARE(scene.Sample(), "Eve|Bonn|eve@x.org");
    scene.rig.prompts.answers = {platform::Answer::kYes};
    scene.Press("RemoveMappingButton");
    QCOMPARE(scene.rig.Shown(), "ask: Would you like to remove the mapping “Web shop”?");
    QVERIFY(recipients::ListMappingNames(scene.rig.settings)->empty());
    QVERIFY(!scene.Find<QWidget>("RemoveMappingButton").isEnabled());
  }

  void anotherFileSetsTheMappingBack() {
    Scene scene("Vorname;Ort;E-Mail\nAda;Ulm;ada@x.org\n");
    scene.Press("RadioButton2");
    scene.Press("ProposeButton");
    const QString mapped = scene.Mapped();
    scene.Pick("Bob;Rom;bob@x.org\n", "other.txt");
    QTRY_VERIFY2(scene.Warnings().startsWith("The mapping of the other file was set back."),
                 qPrintable(scene.Warnings()));
    QCOMPARE(scene.Mapped(), "||");
    scene.Pick("Vorname;Ort;E-Mail\nAda;Ulm;ada@x.org\n");
    QTRY_COMPARE(scene.Mapped(), mapped);
    QVERIFY(scene.Find<QAbstractButton>("SkipCheckBox").isChecked());
    QCOMPARE(scene.Warnings(), "");
    scene.Press("GetDataButton");
    QTRY_COMPARE(scene.Mapped(), "Ignore|Ignore|Ignore");
  }

  // What was given up since does not come back with the file.
  void ofAFileTheLastMappingIsRemembered() {
    for (const char* last : {"GetDataButton", "ProposeButton"}) {
      Scene scene("Vorname;Ort;E-Mail\nAda;Ulm;ada@x.org\n");
      const auto list = scene.rig.folder.path() / "list.txt";
      scene.Press("RadioButton2");
      scene.Press("ProposeButton");
      scene.Pick("Bob;Rom;bob@x.org\n", "other.txt");
      scene.PickFile(list);
      QTRY_VERIFY(scene.Find<QComboBox>("ComboBox1").count() > 0);
      if (last == std::string("ProposeButton")) scene.TypeColumns("1,3,2");
      scene.Press(last);
      if (last == std::string("GetDataButton")) QTRY_COMPARE(scene.Mapped(), "Ignore|Ignore|Ignore");
      scene.PickFile(scene.rig.folder.path() / "other.txt");
      QTRY_VERIFY(!scene.Sample().isEmpty());
      scene.PickFile(list);
      QTRY_VERIFY(!scene.Sample().isEmpty());
      QCOMPARE(scene.Mapped(), "||");
    }
  }

  // A button that is pressed by its letter takes no keyboard focus: what was set for the file before does not hold for
  // the one that is typed.
  void aPathThatIsTypedCountsForEveryButton() {
    for (const auto& [button, mapped] : {std::pair("GetDataButton", "Ignore|Ignore|Ignore"),
                                         {"ApplyMappingButton", "Field 2 = oz@x.org|Field 1 = \u00D6zil|Ignore"},
                                         {"ImportButton", "||"}}) {
      const bool harvests = QString(button) == "ImportButton";
      Scene scene;
      const recipients::KeptMapping kept{"Kept", *recipients::ParseMapping("Email Address=2,First Name=1")};
      QVERIFY(recipients::KeepMapping(scene.rig.settings, kept));
      scene.OpenWith("\xC4\xE4,a@x.org\n");
      scene.Press("RadioButton2");
      scene.Step("MappingComboBox", 1);
      scene.Press("SkipCheckBox");
      scene.Step("EncodingComboBox", 2);
      QTRY_COMPARE(scene.Sample(), "");
      if (harvests) scene.Press("RadioButton1");
      auto& box = scene.Find<QLineEdit>("BrowseTextBox");
      box.setFocus();
      box.selectAll();
      QTest::keyClicks(&box, PathToQt(scene.rig.folder.Write("other.txt", "\u00D6zil,oz@x.org\n")));
      scene.rig.prompts.answers = {platform::Answer::kYes};
      scene.Find<QPushButton>(button).click();
      QVERIFY2(!scene.Find<QAbstractButton>("SkipCheckBox").isChecked(), mapped);
      QCOMPARE(scene.Find<QComboBox>("EncodingComboBox").currentIndex(), 0);
      if (harvests) QTRY_COMPARE(scene.Addresses(), "old@x.org, oz@x.org,");
      if (!harvests) QTRY_COMPARE(scene.Sample(), QString::fromUtf8("\u00D6zil|oz@x.org"));
      QCOMPARE(scene.Mapped(), QString::fromUtf8(mapped));
    }
  }

  // There may be millions of them; the headings that the fields are told by stand in the last.
  void ofManyLinesThatAreLeftOutTheLastIsLookedAt() {
    Scene scene;
    recipients::KeptMapping kept{"Kept", *recipients::ParseMapping("Email Address=1")};
    kept.skip = 30;
    QVERIFY(recipients::KeepMapping(scene.rig.settings, kept));
    std::string list;
    for (int n = 1; n <= 32; ++n) list += "u" + std::to_string(n) + "@x.org\n";
    scene.OpenWith(list);
    scene.Press("RadioButton2");
    scene.Step("MappingComboBox", 1);
    scene.Press("ApplyMappingButton");
    QTRY_COMPARE(scene.Sample(), "u31@x.org / u32@x.org");
    QCOMPARE(scene.Mapped(), "Field 1 = u30@x.org|Ignore|Ignore");
    for (const char* shown : {"u1@x.org / u2@x.org / ", "u31@x.org / u32@x.org"}) {
      scene.Press("SkipCheckBox");
      QTRY_VERIFY2(scene.Sample().startsWith(shown), qPrintable(scene.Sample()));
    }
    QCOMPARE(scene.Import(), kConsent + " | " + Done(2, 0, 0));
  }

  void whatIsPickedDuringTheFirstLookStays() {
    Scene scene;
    scene.rig.AddGroup("Readers", {});
    scene.Open("Readers");
    scene.Press("RadioButton2");
    scene.PickFile(scene.rig.folder.Write("list.txt", "Ada:x;ada@x.org\nBob:y;bob@x.org\n"));
    scene.Step("DelimitComboBox", 1);  // the look has not come back: nobody has turned the event loop
    QCOMPARE(scene.Find<QComboBox>("DelimitComboBox").currentText(), "Colon");
    QTRY_COMPARE(scene.Sample(), "Ada|x;ada@x.org / Bob|y;bob@x.org");
    QCOMPARE(scene.Find<QComboBox>("DelimitComboBox").currentText(), "Colon");
    scene.Pick("Ada;ada@x.org\nBob;bob@x.org\n", "other.txt");
    QTRY_COMPARE(scene.Find<QComboBox>("DelimitComboBox").currentText(), "Semicolon");
  }

  void aLongFieldIsWholeInItsEntry() {
    Scene scene;
    const QString text = QString(990, 'x') + "end";
    scene.OpenWith(FromQt(text + "," + QString(3000, 'y') + "\n"));
    scene.Press("RadioButton2");
    scene.GetData();
    auto& list = scene.Find<QComboBox>("ComboBox1");
    QCOMPARE(list.itemText(1), "Field 1 = " + text);
    QCOMPARE(list.itemText(2), "Field 2 = " + QString(1000, 'y') + QString::fromUtf8("…"));
    scene.Step("ComboBox1", 1);
    QVERIFY2(list.toolTip().contains(text), qPrintable(list.toolTip()));
    QVERIFY(list.width() < 500 && list.view()->textElideMode() == Qt::ElideRight);
  }

  void kindAndSheetCanBeChosen() {
    Scene scene(test::StoredArchive(test::TwoSheets()));
    scene.Press("RadioButton2");
    QTRY_COMPARE(scene.Entries("SheetComboBox"), "One|T&wo");
    QCOMPARE(scene.Find<QComboBox>("SheetComboBox").currentText(), "One");
    QCOMPARE(scene.Find<QComboBox>("KindComboBox").currentText(), "Found: spreadsheet");
    // The headings stand in the third row, and are left out with the title and the empty row before them.
    scene.Press("ProposeButton");
    QCOMPARE(scene.Sample(), "a@x.org");
    QCOMPARE(scene.Import(), kConsent + " | " + Done(1, 0, 0));
    QVERIFY(scene.Keep("Any").sheet.empty());
    scene.Step("SheetComboBox", 1);
    scene.Press("SkipCheckBox");
    QTRY_COMPARE(scene.Sample(), "b@x.org");
    QCOMPARE(scene.Import(), kConsent + " | " + Done(1, 0, 0));
    // The sheet that was picked is kept with the mapping, and picked with it.
    auto kept = scene.Keep("Second");
    QCOMPARE(kept.sheet, "T&wo");
    scene.Step("SheetComboBox", -1);
    QTRY_COMPARE(scene.Sample(), "As of March / E-Mail / a@x.org");
    scene.Press("ApplyMappingButton");
    QTRY_COMPARE(scene.Sample(), "b@x.org");
    QCOMPARE(scene.Warnings(), "");
    kept.sheet = "June";
    QVERIFY(recipients::KeepMapping(scene.rig.settings, kept));
    scene.Press("ApplyMappingButton");
    QTRY_COMPARE(scene.Warnings(), "The file has no sheet “June”. “T&wo” is read.");
    scene.Step("KindComboBox", 1);
    QTRY_VERIFY2(scene.Status().startsWith("Format: delimited text"), qPrintable(scene.Status()));
    scene.Pick("dn: x,a@x.org\n", "other.txt");
    QTRY_COMPARE(scene.Find<QComboBox>("KindComboBox").currentText(), "Found: LDIF");
    QVERIFY(!scene.Find<QWidget>("SheetComboBox").isVisible());
    scene.Step("KindComboBox", 1);
    QTRY_COMPARE(scene.Sample(), "dn: x|a@x.org");
    scene.Step("KindComboBox", 1);
    QTRY_VERIFY2(scene.Status().contains("is no whole archive"), qPrintable(scene.Status()));
    QCOMPARE(scene.Sample(), "");
    QCOMPARE(scene.Find<QLabel>("EmptyState").text(), "The file could not be read.");
  }

  // What has no end is given up with the dialog, or for another file.
  // Also where the fields that wait with it are given up.
  void aHarvestIsOfTheSheetThatWasChosen() {
    recipients::KeptMapping kept{"Second", *recipients::ParseMapping("Email Address=1")};
    kept.sheet = "T&wo";
    for (const bool comes_back : {false, true}) {
      Scene scene;
      QVERIFY(recipients::KeepMapping(scene.rig.settings, kept));
      scene.OpenWith(comes_back ? test::StoredArchive(test::TwoSheets()) : "old@x.org\n");
      scene.Press("RadioButton2");
      scene.Step("MappingComboBox", 1);
      if (comes_back) {
        QTRY_COMPARE(scene.Entries("SheetComboBox"), "One|T&wo");
        scene.Press("ApplyMappingButton");
        QTRY_COMPARE(scene.Sample(), "b@x.org");
        scene.Pick("old@x.org\n", "other.txt");
        scene.Press("RadioButton1");
        auto& box = scene.Find<QLineEdit>("BrowseTextBox");
        box.setFocus();
        box.selectAll();
        QTest::keyClicks(&box, PathToQt(scene.rig.folder.path() / "list.txt"));
      } else {
        scene.PickFile(scene.rig.folder.Write("book.xlsx", test::StoredArchive(test::TwoSheets())));
        scene.Press("ApplyMappingButton");
        scene.Press("RadioButton1");
      }
      scene.rig.prompts.answers = {platform::Answer::kYes};
      scene.Find<QPushButton>("ImportButton").click();
      QTRY_COMPARE(scene.Addresses(), "old@x.org, b@x.org,");
    }
  }

  void aLongLookIsGivenUp() {
    Scene scene;
    scene.rig.AddGroup("Readers", {});
    scene.Open("Readers");
    const auto endless = scene.rig.folder.Write("endless.txt", "");
    std::filesystem::resize_file(endless, std::uintmax_t{400} << 30);  // zeros, which take no room
    scene.PickFile(endless);
    QTRY_VERIFY2(scene.Status().startsWith("Looking at "), qPrintable(scene.Status()));
    scene.Pick("a@x.org\n");
    QTRY_VERIFY2(scene.Status().startsWith("Format: delimited text"), qPrintable(scene.Status()));
    scene.PickFile(endless);
    QTRY_VERIFY(scene.Status().startsWith("Looking at "));
    QElapsedTimer closing;
    closing.start();
    QTest::keyClick(scene.form.get(), Qt::Key_Escape);
    scene.form.reset();
    QVERIFY2(closing.elapsed() < 1000, qPrintable(QString::number(closing.elapsed())));
  }

  // What a file is encoded in takes reading all of it.
  void theFirstLookReadsAFileOnce() {
    Scene scene;
    scene.rig.AddGroup("Readers", {});
    scene.Open("Readers");
    const std::string text = "Ada;ada@x.org\n" + std::string(std::size_t{32} << 20, '\n');
    const auto file = scene.rig.folder.Write("large.txt", text);
    const auto read = [] {
      QFile counts("/proc/self/io");
      return counts.open(QIODevice::ReadOnly) ? counts.readLine().split(' ').value(1).trimmed().toLongLong() : 0;
    };
    const qint64 before = read();
    scene.PickFile(file);
    QTRY_VERIFY2(scene.Status().contains("Encoding: UTF-8"), qPrintable(scene.Status()));
    if (before == 0) QSKIP("this system counts no bytes that are read");
    const qint64 bytes = read() - before;
    QVERIFY2(bytes < static_cast<qint64>(text.size()) * 3 / 2, qPrintable(QString::number(bytes)));
  }

  void theEncodingCanBeOverruled() {
    Scene scene("\xC4\xE4,a@x.org\n");
    scene.Press("RadioButton2");
    QVERIFY2(scene.Status().contains("windows-1252"), qPrintable(scene.Status()));
    QCOMPARE(scene.Sample(), QString::fromUtf8("\u00C4\u00E4|a@x.org"));
    auto& encoding = scene.Find<QComboBox>("EncodingComboBox");
    encoding.setFocus();
    encoding.lineEdit()->selectAll();
    QTest::keyClicks(encoding.lineEdit(), "windows-1251");
    QTest::keyClick(encoding.lineEdit(), Qt::Key_Tab);
    QTRY_COMPARE(scene.Sample(), QString::fromUtf8("\u0414\u0434|a@x.org"));
    // It is kept with the mapping, and holds for another file once that is applied, until another is chosen.
    scene.Step("HeadingComboBox2", 1);
    QCOMPARE(scene.Keep("Shop").encoding, "windows-1251");
    scene.Pick("\xC4\xE4,b@x.org\n", "other.txt");
    QTRY_COMPARE(scene.Sample(), QString::fromUtf8("\u00C4\u00E4|b@x.org"));
    scene.Press("ApplyMappingButton");
    QTRY_COMPARE(scene.Sample(), QString::fromUtf8("\u0414\u0434|b@x.org"));
    encoding.setCurrentIndex(1);
    scene.Step("EncodingComboBox", -1);
    QTRY_COMPARE(scene.Sample(), QString::fromUtf8("\u00C4\u00E4|b@x.org"));
    scene.form->activateWindow();  // the dialog that asked for the name was, and leaving a box says that it is done
    QVERIFY(QTest::qWaitForWindowActive(scene.form.get()));
    encoding.setFocus();
    encoding.lineEdit()->selectAll();
    QTest::keyClicks(encoding.lineEdit(), "klingon");
    QTest::keyClick(encoding.lineEdit(), Qt::Key_Tab);
    QTRY_VERIFY2(scene.Status().contains("no known encoding"), qPrintable(scene.Status()));
  }

  void aFileCanBeDropped() {
    Scene scene;
    scene.rig.AddGroup("Readers", {});
    scene.Open("Readers");
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(PathToQt(scene.rig.folder.Write("dropped.txt", "a@x.org\n")))});
    QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(scene.form.get(), &enter);
    QVERIFY(enter.isAccepted());
    QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(scene.form.get(), &drop);
    QVERIFY(scene.Find<QLineEdit>("BrowseTextBox").text().endsWith("dropped.txt"));
    QTRY_VERIFY2(scene.Status().contains("UTF-8"), qPrintable(scene.Status()));
    QCOMPARE(scene.Import(), kConsent + " | " + Done(1, 0, 0));
  }

  void aFailureIsToldInTheStatusLine() {
    Scene scene("PK\3\4 no archive");
    QVERIFY2(scene.Status().contains("is damaged"), qPrintable(scene.Status()));
    scene.Find<QLineEdit>("BrowseTextBox").setText("/nowhere/list.txt");
    QCOMPARE(scene.Import(), kConsent + " | " + Done(0, 0, 0));
    QVERIFY2(scene.Status().contains("/nowhere/list.txt"), qPrintable(scene.Status()));
  }

  void cancellingIsAskedAbout() {
    Scene scene;
    std::string text;
    for (int n = 0; n < 200'000; ++n) text += "u" + std::to_string(n) + "@x.org\n";
    scene.OpenWith(text);
    scene.rig.prompts.answers = {platform::Answer::kYes, platform::Answer::kNo};
    scene.Press("ImportButton");
    QCOMPARE(scene.rig.Shown(), kConsent);
    for (const char* name :
         {"BrowseTextBox", "BrowseButton", "DataComboBox", "RadioButton2", "ImportButton", "ReportButton"})
      QVERIFY2(!scene.Find<QWidget>(name).isEnabled(), name);
    scene.Press("CancelButton");
    QCOMPARE(scene.rig.Shown(), kCancelQuestion);
    QVERIFY(scene.form->isVisible());
    scene.rig.prompts.answers = {platform::Answer::kYes};
    QTest::keyClick(scene.form.get(), Qt::Key_Escape);
    QCOMPARE(scene.rig.Shown(), kCancelQuestion);
    QTRY_VERIFY(!scene.form->isVisible());
    QCOMPARE(scene.rig.Shown(), "");
    const auto stored = *scene.rig.Store().CountRecipients("Readers");
    const auto report = QString::fromStdString(test::ReadAll(scene.rig.folders.ImportReport()));
    QCOMPARE(report.count("Email Added : "), stored - 1);  // what is there is told, and one was there before
    QVERIFY(stored < 200'001);
    scene.Open();
    scene.Press("CancelButton");
    QVERIFY(!scene.form->isVisible());
    QCOMPARE(scene.rig.Shown(), "");
  }

  void anImportThatEndsWhileItIsAskedAboutIsNotGivenUp() {
    Scene scene;
    std::string text;
    for (int n = 0; n < 50'000; ++n) text += "u" + std::to_string(n) + "@x.org\n";
    scene.OpenWith(text);
    scene.rig.prompts.answers = {platform::Answer::kYes};
    scene.Press("ImportButton");
    scene.rig.prompts.meanwhile = [&] {
      QVERIFY(QTest::qWaitFor([&] { return !scene.form->findChild<QTimer*>()->isActive(); }, 20'000));
    };
    scene.rig.prompts.answers = {platform::Answer::kYes};
    scene.Press("CancelButton");
    QCOMPARE(scene.rig.Shown(), kConsent + " | " + kCancelQuestion + " | " + Done(50'000, 0, 0));
    QVERIFY(scene.form->isVisible());
  }
};

}  // namespace quillcast::desktop

QTEST_MAIN(quillcast::desktop::ImportFormTest)
#include "import_form_test.moc"
