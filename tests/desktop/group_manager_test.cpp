// The group manager: what each of its buttons checks, asks, writes and shows.
#include <QAction>
#include <QClipboard>
#include <QHeaderView>
#include <QMap>
#include <QScrollBar>
#include <QSet>
#include <QTableView>
#include <memory>

#include "desktop/form_rig.h"
#include "desktop/hands.h"
#include "desktop/recipients/group_manager_form.h"
#include "desktop/widgets/note.h"
#include "recipients/edit/move_recipients.h"
#include "recipients/store_connection.h"
#include "support/read_only_disk.h"

namespace quillcast::desktop {
namespace {

struct Manager {
  test::FormRig rig;
  std::unique_ptr<GroupManagerForm> form;
  QStringList told;  // to whoever shows the groups

  explicit Manager(const char* opened = nullptr) {
    rig.AddGroup("Empty", {});
    rig.AddGroup("Readers", {"zoe@x.org", "ada@x.org", "Max@x.org"});
    if (opened != nullptr) Open(opened);
  }
  void Open(const char* group = "") {
    form = std::make_unique<GroupManagerForm>(rig.program, nullptr);
    QObject::connect(form.get(), &GroupManagerForm::GroupsChanged, form.get(),
                     [this](const QString& before, const QString& now) { told << before + ">" + now; });
    form->show();
    QVERIFY(QTest::qWaitForWindowActive(form.get()));
    Choose(group);
  }
  void Choose(const QString& group) const {
    Box().setCurrentIndex(Box().findText(group));
    Wait();
  }
  void Wait() const { QTRY_VERIFY(Grid().isEnabled()); }
  void Press(const char* button) const {
    test::Press(*form, button);
    Wait();
  }
  // In the grid, once it has the keyboard again.
  void Key(int key, Qt::KeyboardModifiers modifiers = {}) const {
    form->activateWindow();
    Grid().setFocus();
    QTRY_VERIFY(Grid().hasFocus());
    QTest::keyClick(&Grid(), static_cast<Qt::Key>(key), modifiers);
  }
  QComboBox& Box() const { return *form->findChild<QComboBox*>("GroupComboBox"); }
  QTableView& Grid() const { return *form->findChild<QTableView*>("MSFlexGrid"); }
  QString Total() const { return test::Text(*form, "Total"); }
  QString Status() const { return test::Text(*form, "StatusLine"); }
  // "1:zoe@x.org 2:..."
  QString Rows() const {
    QStringList rows;
    const auto* model = Grid().model();
    for (int row = 0; row < model->rowCount(); ++row)
      rows << model->index(row, 0).data().toString() + ":" + model->index(row, 3).data().toString();
    return rows.join(' ');
  }
  QStringList Groups() const {
    QStringList groups;
    for (int i = 0; i < Box().count(); ++i) groups << Box().itemText(i);
    return groups;
  }
  void Select(std::initializer_list<int> rows) const {
    Grid().clearSelection();
    for (const int row : rows) {
      Grid().selectionModel()->select(Grid().model()->index(row, 0),
                                      QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }
  }
};

// Types into the dialog's boxes and presses OK there.
void FillIn(const char* dialog, const std::vector<std::pair<const char*, const char*>>& texts) {
  test::WhileOpen(dialog, [texts](QDialog& form) {
    for (const auto& [box, text] : texts) {
      form.findChild<QLineEdit*>(box)->selectAll();
      QTest::keyClicks(form.findChild<QLineEdit*>(box), text);
    }
    test::Press(form, "OKButton");
  });
}

}  // namespace

class GroupManagerTest : public QObject {
  Q_OBJECT

  void Answer(Manager& manager, std::deque<platform::Answer> answers) {
    manager.rig.prompts.answers = std::move(answers);
  }

 private slots:
  void checksComeInTheGivenOrder() {
    const QString group = "warn: Please specify a group.";
    const QString nobody = "warn: The selected group does not contain any recipients.";
    struct Case {
      const char* button;
      QString none_chosen, nobody_there;
    };
    std::vector<Case> cases = {{"AddButton", group, "RecipientAddForm"},
                               {"RenameGroupButton", group, "GroupRenameForm"},
                               {"DeleteGroupButton", group, "ask: Are you sure you want to delete 'Empty'?"},
                               {"ImportButton", "RecipientImportForm", "RecipientImportForm"},
                               {"SortButton", group, "SortForm"},
                               {"MergeButton", group, "MergeForm"},
                               {"ExportButton", "RecipientExportForm", "RecipientExportForm"}};
    for (const char* button : {"ModifyButton", "DeleteButton", "SearchButton", "MoveButton", "PrintButton",
                               "CapitalizeButton", "DuplicatesButton", "WhereButton"})
      cases.push_back({button, group, nobody});
    for (const Case& c : cases) {
      Manager manager;
      for (const auto& [chosen, expected] : {std::pair("", c.none_chosen), {"Empty", c.nobody_there}}) {
        manager.Open(chosen);
        QString opened;
        if (expected.endsWith("Form")) test::WhileOpen(expected, [&](QDialog& form) { opened = form.objectName(); });
        manager.Press(c.button);
        QCOMPARE(c.button + opened + manager.rig.Shown(), c.button + expected);
      }
      QCOMPARE(*manager.rig.Store().ListGroupNames(), (std::vector<std::string>{"Empty", "Readers"}));
    }
  }

  // The same command has the same key in the window beside, and no key stands for two.
  void neighboursHaveTheSameKeys() {
    Manager manager("Readers");
    const auto keys_of = [](const QDialog& form) {
      QMap<QString, QString> keys;
      for (const auto* button : form.findChildren<QPushButton*>()) {
        const QString key = QKeySequence::mnemonic(button->text()).toString();
        if (key.isEmpty()) continue;
        keys[button->objectName()] = key;
      }
      return keys;
    };
    const auto here = keys_of(*manager.form);
    QCOMPARE(here["ModifyButton"], QString("Alt+M"));
    QCOMPARE(QSet<QString>(here.cbegin(), here.cend()).size(), here.size());
    QMap<QString, QString> there;
    test::WhileOpen("RecipientSearchForm", [&](QDialog& form) { there = keys_of(form); });
    manager.Press("SearchButton");
    QCOMPARE(there.size(), 5);
    for (auto key = there.cbegin(); key != there.cend(); ++key) QCOMPARE(here[key.key()], key.value());
  }

  void withoutGroupsNothingIsImportedOrExported() {
    test::FormRig rig;
    GroupManagerForm form(rig.program, nullptr);
    for (const auto& [button, warning] : std::initializer_list<std::pair<const char*, const char*>>{
             {"ImportButton", "warn: There is no group to import the data to."},
             {"ExportButton", "warn: There is no group to export the data from."}}) {
      test::Press(form, button);
      QCOMPARE(rig.Shown(), QString(warning));
    }
  }

  void readingDisablesEverythingAndCounts() {
    Manager manager("");
    QCOMPARE(manager.Rows() + manager.Total(), QString());
    manager.Choose("Empty");
    manager.Box().setFocus();
    QTest::keyClick(&manager.Box(), Qt::Key_Down);
    QCOMPARE(manager.Total(), QString("Reading Group"));
    QVERIFY(manager.form->findChild<QPushButton*>("CancelButton")->isVisible());
    QVERIFY(!manager.Box().isEnabled() && !manager.Grid().isEnabled());
    for (auto* button : manager.form->findChildren<QPushButton*>())
      QVERIFY2(button->isEnabled() == (button->objectName() == "CancelButton"), qPrintable(button->objectName()));
    manager.Wait();
    QVERIFY(!manager.form->findChild<QPushButton*>("CancelButton")->isVisible());
    QCOMPARE(manager.Total(), QString("3"));
    QCOMPARE(manager.Rows(), QString("1:zoe@x.org 2:ada@x.org 3:Max@x.org"));
    QVERIFY(manager.form->findChild<QPushButton*>("CloseButton")->isEnabled());
    QCOMPARE(manager.rig.Shown(), QString());
  }

  void aRecipientIsAddedModifiedAndDeleted() {
    Manager manager("Readers");
    auto& undo = *manager.form->findChild<QPushButton*>("UndoButton");
    QVERIFY(!undo.isEnabled());
    FillIn("RecipientAddForm", {{"EmailTextBox", "bob@x.org"}, {"FirstNameTextBox", "Bob"}});
    manager.Key(Qt::Key_Insert);
    QCOMPARE(manager.Rows(), QString("1:zoe@x.org 2:ada@x.org 3:Max@x.org 4:bob@x.org"));
    QCOMPARE(manager.Total(), QString("4"));
    QCOMPARE(manager.Grid().currentIndex().row(), 3);
    FillIn("RecipientModifyForm1", {{"EmailTextBox", "BOB@x.net"}});
    manager.Key(Qt::Key_Return);
    QCOMPARE(manager.rig.Shown() + manager.Status(), QString());
    QCOMPARE(manager.Rows(), QString("1:zoe@x.org 2:ada@x.org 3:Max@x.org 4:BOB@x.net"));
    QCOMPARE(manager.Grid().model()->index(3, 1).data().toString(), QString("Bob"));
    manager.Select({1});
    manager.Press("DeleteButton");  // No
    QCOMPARE(manager.rig.Shown(), QString("ask: Are you sure you want to delete 'ada@x.org'?"));
    QCOMPARE(manager.Total(), QString("4"));
    Answer(manager, {platform::Answer::kYes, platform::Answer::kYes});
    manager.Key(Qt::Key_Delete);
    manager.Wait();
    QCOMPARE(manager.Rows(), QString("1:zoe@x.org 2:Max@x.org 3:BOB@x.net"));
    QCOMPARE(manager.Total(), QString("3"));
    QVERIFY(undo.isEnabled());
    QCOMPARE(manager.Status(), QString("1 recipient was deleted."));
    test::WhileOpen("RecipientAddForm", [](QDialog&) {});
    manager.Press("AddButton");  // what an earlier command said is gone with the next one
    QCOMPARE(manager.Status(), QString());
    manager.Key(Qt::Key_A, Qt::ControlModifier);
    manager.Press("DeleteButton");
    QCOMPARE(manager.Rows(), QString());
    QCOMPARE(manager.Total(), QString("0"));
    QVERIFY(manager.rig.Shown().endsWith("ask: Are you sure you want to delete 3 recipients from 'Readers'?"));
    manager.Press("ModifyButton");
    QCOMPARE(manager.rig.Shown(), QString("warn: The selected group does not contain any recipients."));
    Answer(manager, {platform::Answer::kYes});
    undo.setFocus();
    QTest::keyClick(&undo, Qt::Key_Space);
    QTRY_COMPARE(manager.Rows(), QString("1:zoe@x.org 2:Max@x.org 3:BOB@x.net"));
    QTRY_COMPARE(manager.form->focusWidget(), &manager.Grid());
    QCOMPARE(manager.rig.Shown(), "ask: Do you want to bring back who was deleted from 'Readers'? Recipients: 3");
  }

  void groupsAreMadeRenamedAndDeleted() {
    Manager manager("");
    FillIn("GroupNewForm", {{"NameTextBox", "Authors"}});
    manager.Press("NewGroupButton");
    QCOMPARE(manager.Groups(), (QStringList{"Empty", "Readers", "Authors"}));
    QCOMPARE(manager.Box().currentText(), QString("Authors"));
    manager.Choose("Readers");
    FillIn("GroupRenameForm", {{"NameTextBox", "Old readers"}});
    manager.Press("RenameGroupButton");
    QCOMPARE(manager.Groups(), (QStringList{"Empty", "Old readers", "Authors"}));
    QCOMPARE(manager.Box().currentText(), QString("Old readers"));
    QCOMPARE(manager.Total(), QString("3"));
    emit manager.Grid().horizontalHeader()->sectionClicked(3);
    manager.Wait();
    QCOMPARE(manager.Rows(), QString("1:ada@x.org 2:Max@x.org 3:zoe@x.org"));
    Answer(manager, {platform::Answer::kYes});
    manager.Press("DeleteGroupButton");
    QCOMPARE(manager.rig.Shown(), QString("ask: Are you sure you want to delete 'Old readers'?"));
    QCOMPARE(manager.Groups(), (QStringList{"Empty", "Authors"}));
    QCOMPARE(manager.Box().currentText() + manager.Rows() + manager.Total(), QString("0"));
    QCOMPARE(manager.told, (QStringList{">Authors", "Readers>Old readers", "Old readers>"}));
    Answer(manager, {platform::Answer::kYes});
    manager.Press("UndoButton");
    QCOMPARE(manager.Groups(), (QStringList{"Empty", "Old readers", "Authors"}));
    QCOMPARE(manager.Box().currentText() + manager.Total(), QString("Old readers3"));
    QCOMPARE(manager.Rows(), QString("1:zoe@x.org 2:ada@x.org 3:Max@x.org"));  // no longer by a heading
    QVERIFY(!manager.form->findChild<QPushButton*>("UndoButton")->isEnabled());
    // What another program did can be taken back too, once a group is read.
    QVERIFY(recipients::DeleteWholeGroup(manager.rig.Store(), "Empty", {}));
    manager.Open("Authors");
    QVERIFY(manager.form->findChild<QPushButton*>("UndoButton")->isEnabled());
    Answer(manager, {platform::Answer::kYes, platform::Answer::kYes});
    manager.Press("UndoButton");
    manager.Choose("Authors");
    QVERIFY(!manager.form->findChild<QPushButton*>("UndoButton")->isEnabled());
    QVERIFY(recipients::DeleteWholeGroup(manager.rig.Store(), "Empty", {}));
    manager.Choose("Empty");
    QVERIFY2(manager.Status().contains("no longer there"), qPrintable(manager.Status()));
    QVERIFY(manager.form->findChild<QPushButton*>("UndoButton")->isEnabled());
    manager.Press("UndoButton");
    // A name from elsewhere is no markup in the tip.
    auto other = recipients::OpenStore(manager.rig.folders.Database());
    QVERIFY(other->Execute("UPDATE [Groups] SET [GroupName] = '<img src=\"/x.png\">' WHERE [GroupName] = 'Authors'"));
    manager.Open("<img src=\"/x.png\">");
    Answer(manager, {platform::Answer::kYes});
    manager.Press("DeleteGroupButton");
    const QString tip = manager.form->findChild<QPushButton*>("UndoButton")->toolTip();
    QVERIFY2(tip.contains("&lt;img") && !tip.contains("<img"), qPrintable(tip));
  }

  void namesAreCapitalizedAfterALook() {
    Manager manager;
    recipients::Recipient recipient;
    recipient.values[recipients::kEmail] = "nell@x.org";
    recipient.values[recipients::kLastName] = "o'neill";
    auto store = manager.rig.Store();
    QVERIFY(*store.AddRecipientIfNew(store.RequireGroup("Readers")->id, recipient));
    manager.Open("Readers");
    for (const bool agrees : {false, true}) {
      test::WhileOpen("CapitalizeForm", [agrees](QDialog& form) {
        QTRY_COMPARE(test::Text(form, "StatusLine"),
                     QString("Are you sure you want to change the name of one recipient in 'Readers'?"));
        const auto* changes = form.findChild<QTableView*>("ChangesList")->model();
        QCOMPARE(changes->rowCount(), 1);
        QCOMPARE(changes->index(0, 1).data().toString() + changes->index(0, 2).data().toString(), "o'neillO'Neill");
        QTest::mouseClick(form.findChild<QPushButton*>(agrees ? "OKButton" : "CancelButton"), Qt::LeftButton);
      });
      manager.Press("CapitalizeButton");
      QCOMPARE(manager.Grid().model()->index(3, 2).data().toString(), QString(agrees ? "O'Neill" : "o'neill"));
    }
    QCOMPARE(manager.Status(), QString("1 recipient was changed."));
    test::WhileOpen("CapitalizeForm", [](QDialog& form) {
      QTRY_COMPARE(test::Text(form, "StatusLine"), QString("All names are written as names are."));
      QVERIFY(!form.findChild<QPushButton*>("OKButton")->isEnabled());
    });
    manager.Press("CapitalizeButton");
    Answer(manager, {platform::Answer::kYes});
    manager.Press("UndoButton");
    QTRY_COMPARE(manager.Grid().model()->index(3, 2).data().toString(), QString("o'neill"));
  }

  void theOrderIsPickedAndKept() {
    Manager manager("Readers");
    test::WhileOpen("SortForm", [](QDialog& form) {
      form.findChild<QComboBox*>("FieldComboBox1")->setCurrentText("Country");
      form.findChild<QComboBox*>("FieldComboBox2")->setCurrentText("Email Address");
      form.findChild<QAbstractButton*>("DescendingCheckBox2")->setChecked(true);
      test::Press(form, "OKButton");
    });
    manager.Press("SortButton");
    QCOMPARE(manager.Rows(), QString("1:zoe@x.org 2:Max@x.org 3:ada@x.org"));
    QCOMPARE(manager.rig.Store().RequireGroup("Readers")->sort_sql, std::string("[G-Country], [G-Email] DESC"));
    test::WhileOpen("SortForm", [](QDialog& form) {
      QCOMPARE(form.findChild<QComboBox*>("FieldComboBox2")->currentText(), QString("Email Address"));
      QVERIFY(form.findChild<QAbstractButton*>("DescendingCheckBox2")->isChecked());
      for (const char* box : {"FieldComboBox1", "FieldComboBox2"}) form.findChild<QComboBox*>(box)->setCurrentIndex(0);
      test::Press(form, "OKButton");
    });
    manager.Press("SortButton");
    QCOMPARE(manager.Rows(), QString("1:zoe@x.org 2:ada@x.org 3:Max@x.org"));
    QCOMPARE(manager.rig.Store().RequireGroup("Readers")->sort_sql, std::string());
  }

  void groupsAreMergedAfterAQuestion() {
    Manager manager;
    manager.rig.AddGroup("Guests", {"ADA@x.org", "bob@x.org"});
    manager.Open("Readers");
    for (const bool agrees : {false, true}) {
      if (agrees) Answer(manager, {platform::Answer::kYes});
      test::WhileOpen("MergeForm", [&](QDialog& form) {
        auto* list = form.findChild<QTableView*>("GroupsList");
        QCOMPARE(list->model()->rowCount(), 2);
        if (!agrees) test::Press(form, "OKButton");
        list->selectAll();
        test::Press(form, "OKButton");
        if (!agrees) return;
        QTRY_COMPARE(test::Text(form, "StatusLine"), QString("1 recipient came in. 1 was there already."));
        QCOMPARE(test::RowsOf(form, "DuplicatesList"), QStringList("ADA@x.org"));
        QVERIFY(!list->isVisible() && form.findChild<QTableView*>("DuplicatesList")->isVisible());
      });
      manager.Press("MergeButton");
      const QString question =
          "ask: Are you sure you want to move everybody in 'Empty', 'Guests' to 'Readers' and delete those groups?";
      QCOMPARE(manager.rig.Shown(), agrees ? question : "warn: Please specify a group. | " + question);
      QCOMPARE(manager.Groups(), agrees ? QStringList{"Readers"} : QStringList({"Empty", "Readers", "Guests"}));
    }
    QTRY_COMPARE(manager.Rows(), QString("1:zoe@x.org 2:ada@x.org 3:Max@x.org 4:bob@x.org"));
    QCOMPARE(manager.Status(), QString("1 recipient came in. 1 was there already."));
  }

  void duplicatesAreShownAndDeleted() {
    Manager manager;
    manager.rig.AddRecipient("Readers", "Ada <ada@x.org>");
    manager.rig.AddGroup("Guests", {"MAX@x.org"});
    manager.Open("Readers");
    const auto rows = [](QDialog& form, const char* list, int columns) {
      const auto* model = form.findChild<QTableView*>(list)->model();
      QStringList texts;
      for (int row = 0; row < model->rowCount(); ++row) {
        for (int column = 0; column < columns; ++column) texts << model->index(row, column).data().toString();
      }
      return texts.join('|');
    };
    Answer(manager, {platform::Answer::kYes});
    test::WhileOpen("DuplicatesForm", [&](QDialog& form) {
      auto* status = form.findChild<QLabel*>("StatusLine");
      auto* erase = form.findChild<QPushButton*>("DeleteDuplicatesButton");
      QTRY_COMPARE(status->text(), QString("1 address stands there more than once."));
      QCOMPARE(rows(form, "DuplicatesList", 3), "ada@x.org|Readers|ada@x.org|ada@x.org|Readers|Ada <ada@x.org>");
      form.findChild<QAbstractButton*>("AllGroupsCheckBox")->click();
      QTRY_COMPARE(status->text(), QString("2 addresses stand there more than once."));
      QVERIFY(!erase->isEnabled());
      QVERIFY(
          recipients::OpenStore(manager.rig.folders.Database())
              ->Execute("WITH RECURSIVE [n](x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM [n] WHERE x < 10001) INSERT "
                        "INTO [Emails] ([G-ID], [G-Email]) SELECT 1, 'same@x.org' FROM [n]"));
      form.findChild<QAbstractButton*>("AllGroupsCheckBox")->click();
      form.findChild<QAbstractButton*>("AllGroupsCheckBox")->click();
      QTRY_COMPARE(status->text(), QString("3 addresses stand there more than once. The first 10,000 of 10,005 entries "
                                           "are listed."));
      form.findChild<QAbstractButton*>("AllGroupsCheckBox")->click();
      QTRY_VERIFY(erase->isEnabled());
      QTest::mouseClick(erase, Qt::LeftButton);
    });
    manager.Press("DuplicatesButton");
    QCOMPARE(manager.rig.Shown(), QString("ask: Are you sure you want to delete one duplicate from 'Readers'?"));
    QTRY_COMPARE(manager.Rows(), QString("1:zoe@x.org 2:ada@x.org 3:Max@x.org"));
    manager.Select({2});
    test::WhileOpen("WhereForm", [&](QDialog& form) {
      QTRY_COMPARE(test::Text(form, "StatusLine"), QString("Max@x.org is in 2 groups."));
      QCOMPARE(rows(form, "HoldersList", 2), QString("Readers|Max@x.org|Guests|MAX@x.org"));
    });
    manager.Press("WhereButton");
  }

  void theGridIsWorkedByKeys() {
    Manager manager("Readers");
    auto& grid = manager.Grid();
    manager.Key(Qt::Key_M);
    QTRY_COMPARE(grid.currentIndex().row(), 2);
    manager.Key(Qt::Key_Home);
    manager.Key(Qt::Key_Down, Qt::ShiftModifier);
    manager.Key(Qt::Key_C, Qt::ControlModifier);
    QTRY_COMPARE(manager.Status(), QString("2 recipients were copied as text."));
    QCOMPARE(QGuiApplication::clipboard()->text(), QString("\t\tzoe@x.org\n\t\tada@x.org\n"));
    FillIn("RecipientModifyForm1", {{"FirstNameTextBox", "Ada"}});  // the row that has the keyboard
    manager.Key(Qt::Key_Return);
    QCOMPARE(grid.model()->index(1, 1).data().toString(), QString("Ada"));
    QVERIFY2(manager.Status().endsWith("the current row: ada@x.org."), qPrintable(manager.Status()));
    const auto& status = *manager.form->findChild<QLabel*>("StatusLine");
    const auto database = manager.rig.folders.Database();
    const auto aside = manager.rig.folder / "aside";
    for (const auto& [key, modifiers] : std::initializer_list<std::pair<Qt::Key, Qt::KeyboardModifiers>>{
             {Qt::Key_M, {}}, {Qt::Key_C, Qt::ControlModifier}}) {
      std::filesystem::rename(database, aside);
      manager.Key(key, modifiers);
      QTRY_COMPARE(test::TextColour(status), LineColour(NoteKind::kFailure, QApplication::palette()));
      std::filesystem::rename(aside, database);
      manager.Grid().clearSelection();
      manager.Press("ModifyButton");
      QCOMPARE(test::TextColour(status), LineColour(NoteKind::kInformation, QApplication::palette()));
      manager.Select({0, 1});
    }

    const auto press_heading = [&](int column) {
      const int x = grid.horizontalHeader()->sectionViewportPosition(column) + 20;
      QTest::mouseClick(grid.horizontalHeader()->viewport(), Qt::LeftButton, {}, {x, 5});
      manager.Wait();
    };
    press_heading(3);
    QCOMPARE(manager.Rows(), QString("1:ada@x.org 2:Max@x.org 3:zoe@x.org"));
    press_heading(3);
    QCOMPARE(manager.Rows(), QString("1:zoe@x.org 2:Max@x.org 3:ada@x.org"));
    FillIn("RecipientAddForm", {{"EmailTextBox", "nell@x.org"}});
    manager.Press("AddButton");
    QVERIFY(manager.Rows().endsWith("4:nell@x.org"));
    grid.findChild<QAction*>("OrderOfGroupAction")->trigger();
    manager.Wait();
    QCOMPARE(manager.Rows(), QString("1:zoe@x.org 2:ada@x.org 3:Max@x.org 4:nell@x.org"));
    QCOMPARE(*manager.rig.Store().CountRecipients("Readers"), std::int64_t{4});
    QVERIFY(manager.rig.Store().RequireGroup("Readers")->sort_sql.empty());
  }

  void aNameThatNobodyCouldEnterCanBeChanged() {
    Manager manager;
    auto other = recipients::OpenStore(manager.rig.folders.Database());
    QVERIFY(other->Execute("UPDATE [Groups] SET [GroupName] = 'O''Neill' WHERE [GroupName] = 'Readers'"));
    manager.Open("O'Neill");
    QCOMPARE(manager.Box().currentText() + manager.Total(), QString("O'Neill3"));
    FillIn("GroupRenameForm", {{"NameTextBox", "Readers"}});
    manager.Press("RenameGroupButton");
    QCOMPARE(manager.Groups(), (QStringList{"Empty", "Readers"}));
    QCOMPARE(manager.Rows(), QString("1:zoe@x.org 2:ada@x.org 3:Max@x.org"));
  }

  void whatOthersDoMeanwhileIsSaid() {
    Manager manager("Readers");
    auto store = manager.rig.Store();
    const auto group = store.RequireGroup("Empty")->id;
    auto other = recipients::OpenStore(manager.rig.folders.Database());
    QVERIFY(other && other->Execute(("DELETE FROM [Groups] WHERE [ID] = " + std::to_string(group)).c_str()));
    manager.Choose("Empty");
    const QString gone = "The group “Empty” is no longer there.";
    QVERIFY2(manager.Status().startsWith(gone), qPrintable(manager.Status()));
    QCOMPARE(manager.Box().currentText() + manager.Rows() + manager.Total(), QString("0"));
    QCOMPARE(manager.Groups() + manager.told, (QStringList{"Readers", "Empty>"}));
    manager.Choose("Readers");
    for (const auto& [change, button] :
         {std::pair("UPDATE [Emails] SET [G-ID] = 77 WHERE [G-Email] = 'ada@x.org'", "ModifyButton"),
          std::pair("DELETE FROM [Emails] WHERE [G-Email] = 'ada@x.org'", "DeleteButton"),
          std::pair("", "WhereButton")}) {
      QVERIFY(other->Execute(change));
      manager.Choose("Readers");
      manager.Grid().selectRow(1);
      manager.Press(button);
      QVERIFY2(manager.Status().startsWith("The recipient is no longer there."), qPrintable(manager.Status()));
    }
    QCOMPARE(manager.rig.Shown(), QString());
    QCOMPARE(manager.Rows(), QString("1:zoe@x.org 2:(no longer in the group) 3:Max@x.org"));
    QVERIFY(other->Execute("BEGIN IMMEDIATE"));
    Answer(manager, {platform::Answer::kYes});
    manager.Select({0});
    test::Press(*manager.form, "DeleteButton");
    QVERIFY(!manager.Grid().isEnabled());
    QTest::keyClick(manager.form.get(), Qt::Key_Escape);  // ends the wait, not the window
    manager.Wait();
    QVERIFY(manager.form->isVisible());
    QVERIFY2(!manager.Status().isEmpty(), "why nothing was deleted");
    QCOMPARE(test::TextColour(*manager.form->findChild<QLabel*>("StatusLine")),
             LineColour(NoteKind::kInformation, QApplication::palette()));  // it was wanted
    QCOMPARE(manager.Total(), QString("3"));
    Answer(manager, {platform::Answer::kYes});
    test::Press(*manager.form, "DeleteGroupButton");
    test::Press(*manager.form, "CancelButton");
    manager.Wait();
    QCOMPARE(manager.Box().currentText() + manager.Total(), QString("Readers3"));
    QVERIFY(other->Execute("ROLLBACK"));
    QVERIFY(other->Execute("UPDATE [Groups] SET [GroupName] = 'Writers'"));
    manager.Press("AddButton");  // the chosen group has another name now
    QVERIFY2(manager.Status().contains("is no longer there"), qPrintable(manager.Status()));
    QCOMPARE(manager.Box().currentText() + manager.Rows() + manager.Total(), QString("0"));
    QCOMPARE(manager.Groups() + manager.told, (QStringList{"Writers", "Empty>", "Readers>"}));
  }

  // Another program has renamed the group that is shown, and made one of its old name.
  void whoIsNotDeletedIsNotTakenOut() {
    Manager manager("Readers");
    auto other = recipients::OpenStore(manager.rig.folders.Database());
    const auto before = *manager.rig.Store().CountRecipients("Readers");
    QVERIFY(other->Execute("UPDATE [Groups] SET [GroupName] = 'Writers' WHERE [GroupName] = 'Readers'"));
    QVERIFY(manager.rig.Store().CreateGroupIfFree("Readers"));
    Answer(manager, {platform::Answer::kYes});
    manager.Select({0, 1});
    manager.Press("DeleteButton");
    manager.Wait();
    QCOMPARE(manager.Status(), "0 recipients were deleted.");
    QCOMPARE(manager.Rows() + manager.Total(), "0");
    QCOMPARE(*manager.rig.Store().CountRecipients("Writers"), before);
  }

  void whatOthersDoUnderADialogIsSaid() {
    struct Case {
      const char *dialog, *button, *change;
      QString told;
    };
    const char* no_recipient = "DELETE FROM [Emails] WHERE [G-Email] = 'zoe@x.org'";
    const char* no_group = "DELETE FROM [Groups] WHERE [GroupName] = 'Readers'";
    for (const Case& c :
         {Case{"RecipientModifyForm1", "ModifyButton", no_recipient, "The recipient is no longer there."},
          Case{"RecipientMoveForm", "MoveButton", no_recipient,
               "0 recipients were moved to “Empty”. 1 is no longer there."},
          Case{"RecipientMoveForm", "MoveButton", no_group, "There is no group \"Readers\"."},
          Case{"MergeForm", "MergeButton", "DELETE FROM [Groups] WHERE [GroupName] = 'Empty'",
               "There is no group \"Empty\"."},
          Case{"SortForm", "SortButton", no_group, "There is no group \"Readers\"."}}) {
      Manager manager("Readers");
      manager.rig.prompts.answers = {platform::Answer::kYes};
      QString told;
      test::WhileOpen(c.dialog, [&](QDialog& form) {
        QVERIFY(recipients::OpenStore(manager.rig.folders.Database())->Execute(c.change));
        for (const char* box : {"GroupComboBox", "FieldComboBox1"})
          if (auto* list = form.findChild<QComboBox*>(box)) list->setCurrentIndex(list->count() - 1);
        if (auto* list = form.findChild<QTableView*>("GroupsList")) list->selectRow(0);
        auto* ok = form.findChild<QPushButton*>("OKButton");
        QTest::mouseClick(ok, Qt::LeftButton);
        QTRY_VERIFY(!form.isVisible() || ok->isEnabled());
        if (const auto* status = form.findChild<QLabel*>("StatusLine")) told = status->text();
      });
      manager.Press(c.button);
      QVERIFY2((told + manager.Status()).contains(c.told), qPrintable(c.dialog + (": " + told) + manager.Status()));
    }
  }

  void aStoreThatCannotBeWrittenIsToldByEachButton() {
    Manager manager;
    auto other = recipients::OpenStore(manager.rig.folders.Database());
    QVERIFY(other->Execute("UPDATE [Emails] SET [G-FirstName] = 'ada'") &&
            other->Execute("INSERT INTO [Emails] ([G-ID], [G-Email]) SELECT [G-ID], [G-Email] FROM [Emails]"));
    auto store = manager.rig.Store();
    QVERIFY(recipients::SortGroup(store, "Readers", "[G-City]"));  // to be taken back
    manager.Open("Readers");
    const QString rows = manager.Rows();
    const auto list = PathToQt(manager.rig.folder.Write("list.txt", "new@x.org\n"));
    const test::ReadOnlyDisk disk;
    for (const auto& [button, dialog] : {std::pair("NewGroupButton", "GroupNewForm"),
                                         {"RenameGroupButton", "GroupRenameForm"},
                                         {"DeleteGroupButton", ""},
                                         {"AddButton", "RecipientAddForm"},
                                         {"ModifyButton", "RecipientModifyForm1"},
                                         {"DeleteButton", ""},
                                         {"MoveButton", "RecipientMoveForm"},
                                         {"DuplicatesButton", "DuplicatesForm"},
                                         {"UndoButton", ""},
                                         {"ImportButton", "RecipientImportForm"},
                                         {"CapitalizeButton", "CapitalizeForm"},
                                         {"SortButton", "SortForm"},
                                         {"MergeButton", "MergeForm"}}) {
      QString told;
      if (*dialog != '\0') {
        test::WhileOpen(dialog, [&](QDialog& form) {
          for (const char* box : {"GroupComboBox", "FieldComboBox1"})
            if (auto* choice = form.findChild<QComboBox*>(box)) choice->setCurrentIndex(choice->count() - 1);
          for (const auto& [box, text] :
               {std::pair("NameTextBox", QString("C")), {"EmailTextBox", "new@x.org"}, {"BrowseTextBox", list}})
            if (auto* line = form.findChild<QLineEdit*>(box)) line->setText(text);
          if (auto* groups = form.findChild<QTableView*>("GroupsList")) groups->selectRow(0);
          QPushButton* act = nullptr;
          for (const char* name : {"ImportButton", "DeleteDuplicatesButton", "OKButton"})
            if (act == nullptr) act = form.findChild<QPushButton*>(name);
          QTRY_VERIFY(act->isEnabled());
          manager.rig.prompts.answers = {platform::Answer::kYes};
          QTest::mouseClick(act, Qt::LeftButton);
          QTRY_VERIFY(!form.isVisible() || act->isEnabled());
          if (const auto* status = form.findChild<QLabel*>("StatusLine")) told = status->text();
        });
      }
      manager.Select({0});
      manager.rig.prompts.answers = {platform::Answer::kYes};
      manager.Press(button);
      told += ' ' + manager.Status();
      QVERIFY2(told.contains("Give yourself the permission to write"), qPrintable(button + (": " + told)));
      QCOMPARE(manager.Box().currentText() + manager.Rows(), "Readers" + rows);
    }
    QCOMPARE(*store.ListGroupNames(), (std::vector<std::string>{"Empty", "Readers"}));
    QCOMPARE(*store.CountRecipients("Readers"), std::int64_t{6});
  }

  void anOrderThatIsNotUnderstoodHidesNoCommand() {
    Manager manager;
    auto other = recipients::OpenStore(manager.rig.folders.Database());
    QVERIFY(other->Execute("UPDATE [Groups] SET [SortSQL] = 'random()' WHERE [GroupName] = 'Readers'"));
    manager.Open("Readers");
    const auto says = [&] { return manager.Status().startsWith("The stored order of this group is not understood"); };
    QVERIFY2(says(), qPrintable(manager.Status()));
    QCOMPARE(manager.Box().currentText() + manager.Rows() + manager.Total(), QString("Readers3"));
    manager.Press("ModifyButton");
    QCOMPARE(manager.Status(), QString("Choose a recipient first."));
    manager.Press("PrintButton");
    QVERIFY(says());
    FillIn("RecipientAddForm", {{"EmailTextBox", "bob@x.org"}});
    manager.Press("AddButton");
    QCOMPARE(manager.Rows() + manager.Total(), QString("4"));  // one alone would look like all
    QVERIFY2(manager.Status().startsWith("The recipient was added. The stored order of this group"),
             qPrintable(manager.Status()));
    FillIn("GroupRenameForm", {{"NameTextBox", "Writers"}});
    manager.Press("RenameGroupButton");
    manager.Grid().findChild<QAction*>("OrderByAddressAction")->trigger();  // a view of its own
    manager.Wait();
    QCOMPARE(manager.Rows(), QString("1:ada@x.org 2:bob@x.org 3:Max@x.org 4:zoe@x.org"));
    for (const char* dialog : {"RecipientSearchForm", "RecipientExportForm", "SortForm"}) {
      test::WhileOpen(dialog, [&](QDialog& form) {
        if (auto* note = form.findChild<QLabel*>("NoteLabel"); QByteArray(dialog) == "SortForm") {
          QVERIFY2(note->text().contains("random()"), qPrintable(note->text()));
          test::Press(form, "OKButton");
        }
      });
      manager.Press(QByteArray(dialog).replace("Recipient", "").replace("Form", "Button"));
    }
    QCOMPARE(manager.Rows(), QString("1:zoe@x.org 2:ada@x.org 3:Max@x.org 4:bob@x.org"));
    QCOMPARE(manager.rig.Store().RequireGroup("Writers")->sort_sql, std::string());
    QVERIFY(other->Execute("UPDATE [Groups] SET [SortSQL] = ','"));
    Answer(manager, {platform::Answer::kYes});
    manager.Press("DeleteGroupButton");
    QCOMPARE(manager.Groups(), QStringList("Empty"));
  }

  void rowsFarDownAreReadByKey() {
    Manager manager;
    const auto group = manager.rig.Store().RequireGroup("Empty")->id;
    {
      auto other = recipients::OpenStore(manager.rig.folders.Database());
      QVERIFY(other->Execute(("WITH RECURSIVE [n](x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM [n] WHERE x < 20000) "
                              "INSERT INTO [Emails] ([G-ID], [G-Email]) SELECT " +
                              std::to_string(group) + ", 'n' || x || '@x.org' FROM [n]")
                                 .c_str()));
    }
    manager.Open("Empty");
    QTRY_COMPARE(manager.Total(), QString("20,000"));
    manager.Key(Qt::Key_End);
    const auto last = manager.Grid().model()->index(19999, 3);
    QCOMPARE(last.data().toString(), QString("n20000@x.org"));
    QVERIFY(manager.Grid().visualRect(last).isValid());

    // A group that is read again is where it was.
    auto& top = *manager.Grid().verticalScrollBar();
    const auto address = [&](int row) { return manager.Grid().model()->index(row, 3).data().toString(); };
    const auto read_again = [&](const char* others_do = "") {
      QVERIFY(recipients::OpenStore(manager.rig.folders.Database())->Execute(others_do));
      manager.Grid().findChild<QAction*>("OrderOfGroupAction")->trigger();
      manager.Wait();
    };
    manager.Grid().selectRow(1005);
    top.setValue(1000);
    read_again();
    QCOMPARE(address(manager.Grid().currentIndex().row()), QString("n1006@x.org"));
    QCOMPARE(top.value(), 1000);
    read_again("DELETE FROM [Emails] WHERE [G-Email] = 'n11@x.org'");
    QCOMPARE(address(manager.Grid().currentIndex().row()), QString("n1006@x.org"));
    QCOMPARE(top.value(), 999);
    read_again("DELETE FROM [Emails] WHERE [G-Email] = 'n1006@x.org'");
    QCOMPARE(address(manager.Grid().currentIndex().row()), QString("n1007@x.org"));
    QCOMPARE(top.value(), 999);
    Answer(manager, {platform::Answer::kYes});
    manager.Key(Qt::Key_Delete);
    manager.Wait();
    QCOMPARE(address(manager.Grid().currentIndex().row()), QString("n1008@x.org"));
    QCOMPARE(top.value(), 999);
    QCOMPARE(manager.Total(), QString("19,997"));
  }
};

}  // namespace quillcast::desktop

QTEST_MAIN(quillcast::desktop::GroupManagerTest)
#include "group_manager_test.moc"
