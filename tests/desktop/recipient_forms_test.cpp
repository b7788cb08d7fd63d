// The dialogs that make and rename groups, and add and change recipients.
#include <QClipboard>
#include <QDialogButtonBox>
#include <QInputMethodEvent>

#include "desktop/form_rig.h"
#include "desktop/hands.h"
#include "desktop/recipients/group_new_form.h"
#include "desktop/recipients/group_rename_form.h"
#include "desktop/recipients/recipient_add_form.h"
#include "desktop/recipients/recipient_modify_form1.h"
#include "desktop/recipients/recipient_modify_form2.h"
#include "desktop/recipients/sort_form.h"
#include "recipients/store_connection.h"

namespace quillcast::desktop {

using test::Type;

class RecipientFormsTest : public QObject {
  Q_OBJECT

  static void PressOk(QDialog& form) { test::Press(form, "OKButton"); }
  static QString Status(const QDialog& form) { return test::Text(form, "StatusLine"); }
  // What stands in the status line is not cut off.
  static bool IsWhole(const QDialog& form) {
    QCoreApplication::processEvents();
    const auto& line = *form.findChild<QLabel*>("StatusLine");
    return line.height() >= line.heightForWidth(line.width());
  }
  static std::int64_t KeyOf(const test::FormRig& rig, const char* address) {
    return (*rig.Store().FindRecipient(rig.Store().RequireGroup("Readers")->id, address))->id;
  }

 private slots:
  void aNameTakesOnlyItsLetters() {
    test::FormRig rig;
    GroupNewForm form(rig.program, nullptr);
    form.show();
    auto* box = form.findChild<QLineEdit*>("NameTextBox");
    QTest::keyClicks(box, "O'Neill_ 2-");
    QCOMPARE(box->text(), QString("ONeill 2-"));
    box->setCursorPosition(1);
    QGuiApplication::clipboard()->setText(QString::fromUtf8("x\n\u00e4;y"));
    QTest::keyClick(box, Qt::Key_V, Qt::ControlModifier);
    QCOMPARE(box->text(), QString("OxyNeill 2-"));
    QCOMPARE(box->cursorPosition(), 3);
    QInputMethodEvent typed;
    typed.setCommitString(QString::fromUtf8("\u3042z"));
    QCoreApplication::sendEvent(box, &typed);
    QCOMPARE(box->text(), QString("OxyzNeill 2-"));
  }

  void aNameFromElsewhereStandsAsItIs() {
    test::FormRig rig;
    rig.AddGroup("Readers", {});
    QVERIFY(
        recipients::OpenStore(rig.folders.Database())->Execute("UPDATE [Groups] SET [GroupName] = 'O''Neill & Co'"));
    GroupRenameForm form(rig.program, "O'Neill & Co", nullptr);
    form.show();
    QVERIFY(QTest::qWaitForWindowActive(&form));
    auto* box = form.findChild<QLineEdit*>("NameTextBox");
    QCOMPARE(box->text(), QString("O'Neill & Co"));
    PressOk(form);
    QCOMPARE(rig.Shown(), QString("warn: You didn't modify the group name."));
    QTest::keyClick(box, Qt::Key_End);
    QTest::keyClicks(box, "'s 2");
    QCOMPARE(box->text(), QString("O'Neill & Cos 2"));
    PressOk(form);
    QCOMPARE(Status(form), QString("A group name holds only letters A to Z, digits, blanks and \"-\"."));
    box->selectAll();
    QTest::keyClicks(box, "x");
    QTest::keySequence(box, QKeySequence::Undo);
    QCOMPARE(box->text(), QString("O'Neill & Cos 2"));  // and no name that nobody gave
    Type(form, "NameTextBox", "O'Neill and Co");
    PressOk(form);
    QCOMPARE(*rig.Store().ListGroupNames(), std::vector<std::string>{"ONeill and Co"});
  }

  void namesThatAreRefusedKeepTheWindow() {
    test::FormRig rig;
    rig.AddGroup("Readers", {});
    rig.AddGroup("Guests", {});
    GroupNewForm make(rig.program, nullptr);
    GroupRenameForm rename(rig.program, "Readers", nullptr);
    QCOMPARE(rename.name(), QString("Readers"));
    struct Case {
      QDialog* form;
      const char *typed, *warning;
    };
    for (const Case& c :
         {Case{&make, "x ", "warn: Group name cannot end with space."},
          Case{&make, "readers", "warn: A Group with the name you specified already exists. Specify a different name."},
          Case{&rename, "", "warn: Please enter a name."},
          Case{&rename, "Readers", "warn: You didn't modify the group name."}}) {
      c.form->show();
      QVERIFY(QTest::qWaitForWindowActive(c.form));
      Type(*c.form, "NameTextBox", c.typed);
      PressOk(*c.form);
      QCOMPARE(rig.Shown(), QString(c.warning));
      QVERIFY(c.form->isVisible() && IsWhole(*c.form));
      QCOMPARE(c.form->focusWidget()->objectName(), QString("NameTextBox"));
    }
    QCOMPARE(*rig.Store().ListGroupNames(), (std::vector<std::string>{"Readers", "Guests"}));
    Type(make, "NameTextBox", "Authors");
    QTest::keyClick(make.focusWidget(), Qt::Key_Return);
    Type(rename, "NameTextBox", "Old readers");
    QTest::keyClick(rename.focusWidget(), Qt::Key_Return);
    QCOMPARE(*rig.Store().ListGroupNames(), (std::vector<std::string>{"Old readers", "Guests", "Authors"}));
    QCOMPARE(make.result() + rename.result(), 2 * QDialog::Accepted);
    QCOMPARE(rig.Shown(), QString());
  }

  void whatStandsInTheBoxesIsStored() {
    test::FormRig rig;
    rig.AddGroup("Readers", {"bob@example.net"});
    RecipientAddForm form(rig.program, "Readers", nullptr);
    form.show();
    QVERIFY(QTest::qWaitForWindowActive(&form));
    QStringList order;
    for (QWidget* at = form.focusWidget(); order.size() < 20; at = form.focusWidget()) {
      order << at->objectName();
      QTest::keyClick(at, Qt::Key_Tab);
    }
    QCOMPARE(order.join(' '),
             QString("EmailTextBox TitleComboBox FirstNameTextBox LastNameTextBox CountryComboBox StateComboBox "
                     "CityTextBox Address1TextBox Address2TextBox ZIPTextBox PhoneTextBox FaxTextBox CompanyTextBox "
                     "JobTextBox SiteTextBox Add1TextBox Add2TextBox Add3TextBox OKButton CancelButton"));
    auto* countries = form.findChild<QComboBox*>("CountryComboBox");
    QCOMPARE(countries->count() + form.findChild<QComboBox*>("StateComboBox")->count() +
                 form.findChild<QComboBox*>("TitleComboBox")->count(),
             240 + 51 + 3);
    QCOMPARE(countries->currentText(), QString());
    for (const auto& [warning, address] : std::initializer_list<std::pair<const char*, const char*>>{
             {"warn: Invalid email address.", "bob"},
             {"warn: A recipient with the email you specified already exists.", "BOB@example.net"}}) {
      Type(form, "EmailTextBox", address);
      form.findChild<QLineEdit*>("CityTextBox")->setFocus();
      PressOk(form);
      QCOMPARE(rig.Shown(), QString(warning));
      QCOMPARE(form.focusWidget()->objectName(), QString("EmailTextBox"));
      QVERIFY(!form.written());
    }
    recipients::Recipient expected;
    for (std::size_t field = 0; field < recipients::kFieldCount; ++field) {
      const QString text = field == 0 ? "o'neill@example.org" : QString("it's %1").arg(field);
      Type(form, order.at(static_cast<qsizetype>(field)).toLatin1(), text);
      expected.values.at(field) = FromQt(text);
    }
    Type(form, "CountryComboBox", "germany");  // as it is typed, not as the list has it
    Type(form, "TitleComboBox", "mr");
    expected.values[1] = "mr";
    expected.values[4] = "germany";
    QTest::keyClick(form.focusWidget(), Qt::Key_Return);
    QCOMPARE(form.result(), int{QDialog::Accepted});
    QVERIFY(rig.Store().RecipientsOfKeys(std::array{form.written()->id})->front().recipient == expected);
    QCOMPARE(form.written()->first_name + form.written()->last_name + form.written()->email,
             std::string("it's 2it's 3o'neill@example.org"));
  }

  void aChangeKeepsWhatWasNotTouched() {
    test::FormRig rig;
    rig.AddGroup("Readers", {"bob@example.net", "eve@example.net"});
    recipients::Recipient stored;
    stored.values[recipients::kEmail] = "eve@example.net";
    stored.values[recipients::kFirstName] = "Caf\xE9";  // no UTF-8
    stored.values[9] = std::string(40000, '9') + "\n9";
    const auto group = rig.Store().RequireGroup("Readers")->id;
    const auto key = KeyOf(rig, "eve@example.net");
    auto store = rig.Store();
    QVERIFY(*store.UpdateRecipientIfNew(group, key, stored));
    RecipientModifyForm1 form(rig.program, "Readers", key, nullptr);
    QCOMPARE(test::Text(form, "EmailTextBox"), QString("eve@example.net"));
    Type(form, "EmailTextBox", "bob@example.net");
    PressOk(form);
    QCOMPARE(rig.Shown(), QString("warn: A recipient with the email you specified already exists."));
    Type(form, "EmailTextBox", "EVE@example.net");
    Type(form, "CityTextBox", "Oslo");
    PressOk(form);
    QCOMPARE(rig.Shown(), QString());
    stored.values[recipients::kEmail] = "EVE@example.net";
    stored.values[6] = "Oslo";
    QVERIFY(store.RecipientsOfKeys(std::array{key})->front().recipient == stored);
    QCOMPARE(form.written()->email, std::string("EVE@example.net"));
  }

  void anOrderIsShownAsItIsStored() {
    struct Case {
      const char *stored, *shown, *country_first;
    };
    for (const Case& c :
         {Case{"", "The order of adding|Nothing more|Nothing more", "[G-Country]"},
          Case{"G-City,[G-Fax] DESC,[G-Title],G-Email desc , [G-Add1]",
               "City|Fax desc|Title|Email Address desc|Additional Field 1",
               "[G-Country], [G-Fax] DESC, [G-Title], [G-Email] DESC, [G-Add1]"},
          Case{"[G-ID], [ID] DESC", "Number of the Group|Time of Adding desc|Nothing more", "[G-Country], [ID] DESC"},
          Case{"[G-City], G-City DESC", "City|Nothing more|Nothing more", "[G-Country]"},
          Case{"random()", "changed: The order of adding|Nothing more|Nothing more", "[G-Country]"}}) {
      SortForm form(c.stored, nullptr);
      QStringList keys;
      for (int key = 1; auto* field = form.findChild<QComboBox*>(QString("FieldComboBox%1").arg(key)); ++key) {
        const bool descends = form.findChild<QAbstractButton*>(QString("DescendingCheckBox%1").arg(key))->isChecked();
        keys << field->currentText() + (descends ? " desc" : "");
      }
      QCOMPARE((form.has_changed() ? "changed: " : "") + keys.join('|'), QString(c.shown));
      form.findChild<QComboBox*>("FieldComboBox1")->setCurrentText("Country");
      QVERIFY(form.has_changed());
      QCOMPARE(ToQt(form.SortText()), QString(c.country_first));
    }
  }

  void whatOthersDeletedOrHoldIsSaidInTheWindow() {
    test::FormRig rig;
    rig.AddGroup("Readers", {"bob@example.net"});
    RecipientModifyForm2 gone(rig.program, "Readers", 77, nullptr);
    QVERIFY2(Status(gone).startsWith("The recipient is no longer there."), qPrintable(Status(gone)));
    QVERIFY(!gone.findChild<QPushButton*>("OKButton")->isEnabled());
    RecipientAddForm add(rig.program, "Nobody", nullptr);
    PressOk(add);
    QCOMPARE(rig.Shown(), QString("warn: Invalid email address."));  // before the store is looked into
    Type(add, "EmailTextBox", "ada@example.org");
    PressOk(add);
    QVERIFY2(Status(add).startsWith("The group is no longer there."), qPrintable(Status(add)));
    auto other = platform::Database::Open(rig.folders.Database(), platform::OpenMode::kReadWrite);
    QVERIFY(other && other->Execute("BEGIN IMMEDIATE"));
    GroupNewForm make(rig.program, nullptr);
    Type(make, "NameTextBox", "Guests");
    PressOk(make);
    QVERIFY(make.result() != QDialog::Accepted && !Status(make).isEmpty());
    QVERIFY(other->Execute("ROLLBACK"));
    PressOk(make);
    QCOMPARE(make.result(), int{QDialog::Accepted});
    QCOMPARE(rig.Shown(), QString());
  }
};

}  // namespace quillcast::desktop

QTEST_MAIN(quillcast::desktop::RecipientFormsTest)
#include "recipient_forms_test.moc"
