// The dialog of the search: who is found, while one types too, and what is done with those that were found.

#include <QClipboard>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QLayout>
#include <QPrintDialog>
#include <QPrinter>
#include <QRegularExpression>
#include <QScrollBar>
#include <QSignalSpy>
#include <memory>

#include "desktop/form_rig.h"
#include "desktop/hands.h"
#include "desktop/recipients/recipient_grid.h"
#include "desktop/recipients/recipient_print_form.h"
#include "desktop/recipients/recipient_search_form.h"
#include "desktop/recipients/work_panel.h"
#include "desktop/widgets/row_list.h"
#include "desktop/widgets/status_line.h"
#include "recipients/store_connection.h"
#include "support/room_on_disk.h"

namespace quillcast::desktop {

namespace {

constexpr const char* kChoose = "warn: Please specify an email address.";

struct Scene : test::Hands<Scene> {
  test::FormRig rig;
  std::unique_ptr<RecipientSearchForm> form;

  // Four recipients of "Readers", and one of another group.
  Scene() {
    rig.AddGroup("Readers", {"ada@x.org", "bob@Y.org", "o'neill@x.org", "zoe@z.net"});
    rig.AddGroup("Others", {"ada@x.org"});
    Run("UPDATE [Emails] SET [G-FirstName] = 'Zo\xC3\xAB', [G-LastName] = 'Vos', [G-Address1] = '1 Dock Road' "
        "WHERE [G-Email] = 'zoe@z.net'");
    form = std::make_unique<RecipientSearchForm>(rig.program, "Readers", nullptr);
    form->show();
    QVERIFY(QTest::qWaitForWindowActive(form.get()));
  }
  void Run(const std::string& sql) const {
    QVERIFY(recipients::OpenStore(rig.folders.Database())->Execute(sql.c_str()));
  }
  RowList& Grid() const { return Find<RowList>("MSFlexGrid"); }
  void Choose(const char* field, const char* compare) const {
    Find<QComboBox>("FieldComboBox").setCurrentText(field);
    Find<QComboBox>("CompareComboBox").setCurrentText(compare);
  }
  // What stands in the grid: its rows, their cells.
  QString Rows() const {
    QStringList rows;
    const auto* model = Grid().model();
    for (int row = 0; row < model->rowCount(); ++row) {
      QStringList cells;
      for (int column = 0; column < model->columnCount(); ++column)
        cells << model->index(row, column).data().toString();
      rows << cells.join(' ').simplified();
    }
    return rows.join(" | ");
  }
  // Searches by the button, and gives what was found.
  QString Search(const char* field, const char* compare, const QString& term) {
    Find<QLineEdit>("EntryTextBox").clear();
    Choose(field, compare);
    {
      const QSignalBlocker quiet(&Find<QLineEdit>("EntryTextBox"));
      Find<QLineEdit>("EntryTextBox").setText(term);
    }
    Press("SearchButton");
    WaitForEnd();
    return Rows();
  }
  // Presses Delete, and waits for what is done beside the window.
  void Delete() const {
    Press("DeleteButton");
    QTRY_VERIFY(Find<QPushButton>("DeleteButton").isEnabled());
  }
  void WaitForEnd() const { QTRY_VERIFY(!Status().contains("Searching")); }
};

}  // namespace

class SearchFormTest : public QObject {
  Q_OBJECT

 private slots:
  void opensWithTheGivenChoices() {
    Scene scene;
    auto& fields = scene.Find<QComboBox>("FieldComboBox");
    QCOMPARE(fields.count(), 19);
    QCOMPARE(fields.currentText(), "Email");
    QCOMPARE(fields.itemText(7), "Address 1");
    QCOMPARE(fields.itemText(18), "All fields");
    auto& compare = scene.Find<QComboBox>("CompareComboBox");
    QCOMPARE(compare.currentText(), "Equals");
    QCOMPARE(compare.itemText(1) + '/' + compare.itemText(2) + '/' + compare.itemText(3),
             "Contains/Starts with/Ends with");
    QCOMPARE(scene.form->focusWidget()->objectName(), "EntryTextBox");
  }

  void findsByWhatIsChosenAndSaysHowMany() {
    struct Case {
      const char *field, *compare, *term, *rows, *says;
    };
    for (const Case& c :
         {Case{"Email", "Contains", "X.ORG", "1 ada@x.org | 2 o'neill@x.org", "2 recipients were found."},
          Case{"Email", "Ends with", ".net", "1 Zo\xC3\xAB Vos zoe@z.net", "1 recipient was found."},
          Case{"Email", "Equals", "nobody@x.org", "", "Nobody was found."},
          Case{"Address 1", "Contains", "Dock", "",
               "A search in \"Address 1\" alone finds nothing. Search all fields: they hold this one."},
          Case{"All fields", "Contains", "dock", "1 Zo\xC3\xAB Vos zoe@z.net", "1 recipient was found."}}) {
      Scene scene;
      QCOMPARE(scene.Search(c.field, c.compare, c.term), c.rows);
      QCOMPARE(scene.Status(), c.says);
      QCOMPARE(scene.rig.Shown(), "");
    }
  }

  void anEmptyTermIsWarnedOfByTheButtonAlone() {
    Scene scene;
    auto& term = scene.Find<QLineEdit>("EntryTextBox");
    scene.Choose("Email", "Contains");
    QTest::keyClicks(&term, "x");
    QTRY_COMPARE(scene.Rows(), "1 ada@x.org | 2 o'neill@x.org");
    QTest::keyClick(&term, Qt::Key_Backspace);
    QTRY_COMPARE(scene.Rows(), "");
    QCOMPARE(scene.rig.Shown(), "");
    // A search that is still on its way fills nothing again.
    QTest::keyClicks(&term, "x");
    QTest::keyClick(&term, Qt::Key_Backspace);
    QTest::qWait(100);
    QCOMPARE(scene.Rows() + scene.Status(), "");
    scene.Grid().setFocus();
    scene.Press("SearchButton");
    QCOMPARE(scene.rig.Shown(), "warn: Please enter your search term.");
    QCOMPARE(scene.form->focusWidget(), &term);
  }

  void findsWhileOneTypesAsLongAsTheGroupAnswers() {
    Scene scene;
    auto& term = scene.Find<QLineEdit>("EntryTextBox");
    scene.Choose("All fields", "Contains");
    for (const auto& [typed, rows] : std::vector<std::pair<const char*, const char*>>{
             {"o", "1 ada@x.org | 2 bob@Y.org | 3 o'neill@x.org | 4 Zo\xC3\xAB Vos zoe@z.net"},
             {"b", "1 bob@Y.org"},
             {"q", ""}}) {
      QTest::keyClicks(&term, typed);
      QTRY_COMPARE(scene.Rows(), QString(rows));
    }
    QCOMPARE(scene.Status(), "Nobody was found.");
    QVERIFY(scene.Find<QLabel>("EmptyState").text().startsWith("Nobody here."));
    QTest::keyClick(&term, Qt::Key_Backspace);
    QTRY_COMPARE(scene.Rows(), "1 bob@Y.org");

    auto busy = recipients::OpenStore(scene.rig.folders.Database());
    QVERIFY(busy->Execute("BEGIN EXCLUSIVE"));
    QTest::keyClick(&term, Qt::Key_Backspace);
    QTRY_VERIFY2(scene.Status().startsWith("Press Search"), qPrintable(scene.Status()));
    QVERIFY(busy->Execute("ROLLBACK"));
    QTest::keyClicks(&term, "'");
    QCOMPARE(scene.Grid().size(), 1U);  // what was there stays, and no more is looked for
    QTest::keyClick(&term, Qt::Key_Return);
    QTRY_COMPARE(scene.Rows(), "1 o'neill@x.org");
    QTest::keyClick(&term, Qt::Key_Backspace);  // it answers again
    QTRY_COMPARE(scene.Grid().size(), 4U);
    QCOMPARE(scene.rig.Shown(), "");
  }

  void changesTheChosenRow() {
    Scene scene;
    scene.Search("Email", "Contains", "x.org");
    scene.Press("ModifyButton");
    QCOMPARE(scene.rig.Shown(), kChoose);
    QVERIFY(!scene.form->has_changed());
    QTest::keyClick(&scene.Grid(), Qt::Key_Down);
    QTest::keyClick(&scene.Grid(), Qt::Key_Down);
    test::WhileOpen("RecipientModifyForm2", [&](QDialog& form) {
      QCOMPARE(test::Text(form, "EmailTextBox"), "o'neill@x.org");
      form.findChild<QLineEdit*>("FirstNameTextBox")->setText("Shan");
      test::Press(form, "OKButton");
    });
    QTest::keyClick(&scene.Grid(), Qt::Key_Return);  // does not search anew
    QCOMPARE(scene.Rows(), "1 ada@x.org | 2 Shan o'neill@x.org");
    QCOMPARE(scene.Grid().currentIndex().row(), 1);
    QCOMPARE(scene.form->focusWidget(), &scene.Grid());
    scene.Grid().selectAll();  // the current row is the second still
    test::WhileOpen("RecipientModifyForm2",
                    [&](QDialog& form) { QCOMPARE(test::Text(form, "EmailTextBox"), "o'neill@x.org"); });
    scene.form->activateWindow();
    QTRY_VERIFY(scene.Grid().hasFocus());
    QTest::keyClick(&scene.Grid(), Qt::Key_Enter);
    QCOMPARE(scene.Status(), "2 recipients are chosen. This is for one, the current row: o'neill@x.org.");
    scene.Grid().Choose(0);
    scene.Run("DELETE FROM [Emails] WHERE [G-Email] = 'ada@x.org'");
    for (const char* button : {"ModifyButton", "DeleteButton"}) {
      scene.Press(button);
      QVERIFY2(scene.Status().startsWith("The recipient is no longer there."), qPrintable(scene.Status()));
    }
    QCOMPARE(scene.rig.Shown(), "");
    QCOMPARE(scene.Rows(), "1 (no longer in the group) | 2 Shan o'neill@x.org");
    QVERIFY(scene.form->has_changed());
    QCOMPARE(scene.Search("First Name", "Equals", "shan"), "1 Shan o'neill@x.org");
  }

  void aSearchThatEndsUnderTheQuestionPutsNobodyElseInItsPlace() {
    Scene scene;
    scene.Search("Email", "Contains", "x.org");
    scene.Grid().Choose(0);
    scene.rig.prompts.answers = {platform::Answer::kYes};
    scene.rig.prompts.meanwhile = [&] {
      scene.Find<QLineEdit>("EntryTextBox").setText("neill");
      QTRY_COMPARE(scene.Rows(), "1 o'neill@x.org");
    };
    scene.Delete();
    QCOMPARE(scene.rig.Shown(), "ask: Are you sure you want to delete 'ada@x.org'?");
    QCOMPARE(scene.Rows(), "1 o'neill@x.org");
    QCOMPARE(scene.Search("Email", "Contains", "x.org"), "1 o'neill@x.org");
  }

  void deletesAfterAQuestion() {
    Scene scene;
    scene.Search("Email", "Contains", "x.org");
    scene.Press("DeleteButton");
    QCOMPARE(scene.rig.Shown(), kChoose);
    scene.Grid().Choose(0);
    scene.Press("DeleteButton");
    QCOMPARE(scene.rig.Shown(), "ask: Are you sure you want to delete 'ada@x.org'?");
    QCOMPARE(scene.Grid().size(), 2U);
    scene.rig.prompts.answers.assign(4, platform::Answer::kYes);
    scene.Grid().setFocus();
    QTest::keyClick(&scene.Grid(), Qt::Key_Delete);
    QTRY_COMPARE(scene.Rows(), "1 o'neill@x.org");
    QTRY_COMPARE(scene.form->focusWidget(), &scene.Grid());
    QCOMPARE(scene.Status(), "1 recipient was deleted. 1 recipient is left.");
    QCOMPARE(scene.rig.Store().CountRecipients("Readers").ValueOr(-1), 3);
    QCOMPARE(scene.Grid().Chosen().size(), 0U);  // the neighbour is what is deleted next, and looks chosen to nobody
    int height_at_work = 0;
    QObject::connect(scene.form->findChild<WorkPanel*>(), &WorkPanel::Started, scene.form.get(), [&] {
      scene.form->layout()->activate();
      height_at_work = scene.Grid().height();
    });
    scene.rig.Shown();
    scene.Delete();
    QCOMPARE(scene.rig.Shown(), "ask: Are you sure you want to delete 'o'neill@x.org'?");
    QCOMPARE(scene.Rows() + scene.Status(), "1 recipient was deleted. Nobody is left.");
    QCOMPARE(height_at_work, scene.Grid().height());
    scene.Press("DeleteButton");
    QCOMPARE(scene.rig.Shown(), kChoose);
    scene.Search("Email", "Contains", "o");
    scene.rig.Shown();
    scene.Grid().Choose(0);
    scene.Delete();
    QCOMPARE(scene.rig.Shown(), "ask: Are you sure you want to delete 'bob@Y.org'?");
    QTest::mouseClick(scene.Grid().viewport(), Qt::LeftButton, {}, scene.Grid().viewport()->rect().bottomLeft());
    scene.Press("DeleteButton");
    QCOMPARE(scene.rig.Shown(), kChoose);  // a click beside the rows means nobody
    scene.Run("INSERT INTO [Emails] ([G-ID], [G-Email]) VALUES (1, 'bob@Y.org')");
    scene.Search("Email", "Contains", "o");
    scene.rig.Shown();
    scene.Grid().selectAll();
    scene.Delete();
    QCOMPARE(scene.rig.Shown(), "ask: Are you sure you want to delete 2 recipients from 'Readers'?");
    QCOMPARE(scene.rig.Store().CountRecipients("Readers").ValueOr(-1), 0);
    QCOMPARE(scene.rig.Store().CountRecipients("Others").ValueOr(-1), 1);
  }

  void movesAndCopiesWhatWasFound() {
    Scene scene;
    scene.Press("MoveButton");
    QCOMPARE(scene.Status(), "Nobody was found who could be moved or copied.");
    const auto act = [&scene](const char* group, const char* button, const std::function<void(QDialog&)>& then = {}) {
      test::WhileOpen("RecipientMoveForm", [=, &scene](QDialog& form) {
        auto* ok = form.findChild<QPushButton*>("OKButton");
        QTest::mouseClick(ok, Qt::LeftButton);
        QCOMPARE(scene.rig.Shown(), "warn: Please specify a group.");
        form.findChild<QComboBox*>("GroupComboBox")->setCurrentText(group);
        form.findChild<QAbstractButton*>(button)->click();
        QTest::mouseClick(ok, Qt::LeftButton);
        if (then) then(form);
      });
      scene.Press("MoveButton");
    };
    scene.Search("Email", "Contains", "x.org");
    act("Others", "MoveRadioButton");  // and the question is answered with No
    QCOMPARE(scene.rig.Shown(), "ask: Are you sure you want to move 2 recipients from 'Readers' to 'Others'?");
    QCOMPARE(scene.Grid().size(), 2U);
    scene.rig.prompts.answers = {platform::Answer::kYes};
    act("Others", "MoveRadioButton", [](QDialog& form) {  // one of them is there already, and stays
      auto* there = form.findChild<RowList*>("DuplicatesList");
      QTRY_VERIFY(there->isVisible());
      QCOMPARE(there->model()->index(0, 0).data().toString(), "ada@x.org");
    });
    scene.WaitForEnd();
    QCOMPARE(scene.Rows(), "1 ada@x.org");
    QCOMPARE(scene.Status(), "1 recipient was moved to “Others”. 1 was there already. 1 recipient is left.");
    QCOMPARE(scene.rig.Store().CountRecipients("Others").ValueOr(-1), 2);

    // Nobody is chosen after a deletion: the command takes all until somebody is.
    scene.Run("INSERT INTO [Emails] ([G-ID], [G-Email]) SELECT 1, 'new' || [ID] || '@q.org' FROM [Emails] LIMIT 3");
    scene.Search("Email", "Contains", "q.org");
    scene.Grid().Choose(1);
    scene.rig.prompts.answers = {platform::Answer::kYes};
    scene.Delete();
    for (const char* asked : {"2 recipients", "one recipient"}) {
      scene.rig.Shown();
      test::WhileOpen("RecipientMoveForm", [&](QDialog& form) {
        form.findChild<QComboBox*>("GroupComboBox")->setCurrentText("Others");
        form.findChild<QAbstractButton*>("MoveRadioButton")->click();
        test::Press(form, "OKButton");
      });
      scene.Press("MoveButton");
      QCOMPARE(scene.rig.Shown(),
               QString("ask: Are you sure you want to move %1 from 'Readers' to 'Others'?").arg(asked));
      QTest::keyClick(&scene.Grid(), Qt::Key_Up);
    }
    scene.Run("DELETE FROM [Emails] WHERE [G-Email] LIKE 'new%'");

    // Return presses the button that has the keyboard; the one that closes does nothing else, and OK comes before it.
    test::WhileOpen("RecipientMoveForm", [](QDialog& form) {
      auto* cancel = form.findChild<QPushButton*>("CancelButton");
      form.findChild<QComboBox*>("GroupComboBox")->setCurrentText("Others");
      form.findChild<QAbstractButton*>("CopyRadioButton")->click();
      form.findChild<QPushButton*>("OKButton")->setFocus();
      QTest::keyClick(form.focusWidget(), Qt::Key_Tab);
      QCOMPARE(form.focusWidget(), cancel);
      QTest::keyClick(cancel, Qt::Key_Return);
      QVERIFY(!form.isVisible());
    });
    scene.Find<QWidget>("MoveButton").setFocus();
    QTest::keyClick(scene.form->focusWidget(), Qt::Key_Return);
    QCOMPARE(scene.rig.Store().CountRecipients("Others").ValueOr(-1), 2);

    scene.Search("Email", "Contains", "z");
    test::WhileOpen("RecipientMoveForm", [](QDialog& form) {
      test::WhileOpen("GroupNewForm", [](QDialog& name) {
        QTest::keyClicks(name.findChild<QLineEdit*>("NameTextBox"), "Found");
        test::Press(name, "OKButton");
      });
      form.findChild<QComboBox*>("GroupComboBox")->setCurrentText("Others");
      form.findChild<QPushButton*>("NewGroupButton")->setFocus();
      QTest::keyClick(form.focusWidget(), Qt::Key_Return);
      QCOMPARE(form.findChild<QComboBox*>("GroupComboBox")->currentText(), "Found");
      form.findChild<QAbstractButton*>("CopyRadioButton")->click();
      QTest::keyClick(form.findChild<QComboBox*>("GroupComboBox"), Qt::Key_Return);
      QTRY_VERIFY(!form.isVisible());
    });
    scene.Press("MoveButton");
    QCOMPARE(scene.rig.Shown(), "");
    QCOMPARE(scene.Status(), "1 recipient was copied to “Found”.");
    QCOMPARE(scene.rig.Store().CountRecipients("Found").ValueOr(-1), 1);
    QCOMPARE(scene.rig.Store().CountRecipients("Readers").ValueOr(-1), 3);
    QVERIFY(scene.form->has_changed());
  }

  void printsToPdf() {
    Scene scene;
    scene.Press("PrintButton");
    QCOMPARE(scene.Status(), "Nobody was found who could be printed.");
    scene.Search("Email", "Contains", "ada");
    test::WhileOpen("PrintDialog", [](QDialog& form) {
      const QFileInfo file(qobject_cast<QPrintDialog*>(&form)->printer()->outputFileName());
      QCOMPARE(file.fileName(), "recipients.pdf");
      QVERIFY2(file.dir().exists(), qPrintable(file.path()));
    });
    scene.Press("PrintButton");
    scene.Run(
        "WITH RECURSIVE [n](x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM [n] WHERE x < 200) INSERT INTO [Emails] "
        "([G-ID], [G-Email]) SELECT 1, 'many' || x || '@x.org' FROM [n]");
    const auto keys = *scene.rig.Store().ListKeys(scene.rig.Store().RequireGroup("Readers")->id, "");
    StatusLine status(nullptr);
    const auto print = [&](const QString& file) {
      auto printer = std::make_shared<QPrinter>(QPrinter::HighResolution);
      printer->setOutputFileName(file);
      RecipientPrintForm::PrintOn(scene.rig.program, printer, "Recipients of “Readers”", keys, status, nullptr);
      const bool has_failed = test::TextColour(status) == LineColour(NoteKind::kFailure, QApplication::palette());
      return (has_failed ? "failed: " : "") + status.text();
    };
    const auto file = scene.rig.folder / "list.pdf";
    const QString said = print(PathToQt(file));
    const auto entries = std::distance(std::filesystem::directory_iterator(scene.rig.folder.path()), {});
    const int pages =
        QString::fromLatin1(QByteArray::fromStdString(test::ReadAll(file))).count(QRegularExpression("/Type /Page\\b"));
    QVERIFY(pages >= 3 && pages <= 5);
    QCOMPARE(said, QString("%1 pages were printed. They are in %2.").arg(pages).arg(PathToQt(file)));
    QCOMPARE(std::filesystem::status(file).permissions(), std::filesystem::perms(0600));
    const QString nowhere = print("/nowhere/list.pdf");
    QVERIFY2(nowhere.startsWith("failed: Cannot create /nowhere/list.pdf"), qPrintable(nowhere));
    const std::string whole = test::ReadAll(file);
    std::optional<test::RoomOnDisk> full_under_way(8192);
    const QString told = print(PathToQt(file));
    full_under_way.reset();
    QVERIFY2(told.startsWith("failed: Cannot write " + PathToQt(file)), qPrintable(told));
    std::filesystem::permissions(file, std::filesystem::perms(0400));
    scene.rig.Shown();
    QVERIFY(!print(PathToQt(file)).contains("printed"));  // locked, and to be left so
    QVERIFY2(scene.rig.Shown().startsWith("ask: "), "whether it is to be unlocked");
    QCOMPARE(test::ReadAll(file), whole);
    QCOMPARE(std::distance(std::filesystem::directory_iterator(scene.rig.folder.path()), {}), entries);
  }

  void aFailureIsToldInTheStatusLine() {
    Scene scene;
    scene.Search("Email", "Contains", "x.org");
    scene.Grid().Choose(0);
    auto busy = recipients::OpenStore(scene.rig.folders.Database());
    QVERIFY(busy->Execute("BEGIN IMMEDIATE"));
    scene.rig.prompts.answers = {platform::Answer::kYes};
    scene.Press("DeleteButton");
    QVERIFY(!scene.Find<QWidget>("SearchButton").isEnabled());
    QTest::keyClick(scene.form.get(), Qt::Key_Escape);  // who does not want to wait
    QTRY_VERIFY(scene.Find<QWidget>("SearchButton").isEnabled());
    QVERIFY(scene.form->isVisible());
    QVERIFY2(scene.Status().contains("Another program is using it"), qPrintable(scene.Status()));
    QCOMPARE(scene.Grid().size(), 2U);
    QVERIFY(busy->Execute("DELETE FROM [Groups]; COMMIT"));
    QCOMPARE(scene.Search("Email", "Contains", "x.org"), "");
    QVERIFY2(scene.Status().contains("Readers"), qPrintable(scene.Status()));
  }

  void showsManyByTheirKeys() {
    Scene scene;
    scene.Run(
        "WITH RECURSIVE [n](x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM [n] WHERE x < 100000) INSERT INTO [Emails] "
        "([G-ID], [G-Email], [G-LastName]) SELECT 1, 'many' || x || '@x.org', x FROM [n]");
    scene.Find<QLineEdit>("EntryTextBox").clear();
    scene.Choose("Email", "Starts with");
    scene.Find<QLineEdit>("EntryTextBox").setText("many");
    scene.Press("SearchButton");
    QTRY_COMPARE_WITH_TIMEOUT(scene.Grid().size(), 100'000U, 20'000);
    scene.Grid().setFocus();
    scene.Grid().Choose(50'000);
    QTest::keyClick(&scene.Grid(), Qt::Key_Up);
    const int top = scene.Grid().verticalScrollBar()->value();
    scene.rig.prompts.answers = {platform::Answer::kYes};
    scene.Delete();
    QCOMPARE(scene.Grid().currentIndex().row(), 49'999);
    QCOMPARE(scene.Grid().model()->index(49'999, 2).data().toString(), "50001");
    QCOMPARE(scene.Grid().verticalScrollBar()->value(), top);
    QTest::keyClick(&scene.Grid(), Qt::Key_End);
    QCOMPARE(scene.Grid().model()->index(99'998, 3).data().toString(), "many100000@x.org");
    QTest::keySequence(&scene.Grid(), QKeySequence::Copy);
    QTRY_COMPARE(QGuiApplication::clipboard()->text(), "\t100000\tmany100000@x.org\n");
  }

  void rowsAreFetchedAsTheyAreShown() {
    test::FormRig rig;
    rig.AddGroup("Readers", {"a@x.org", "b@x.org", "c@x.org"});
    const std::int64_t group = rig.Store().RequireGroup("Readers")->id;
    const auto keys = *rig.Store().ListKeys(group, "");
    RecipientRows rows(rig.folders.Database(), nullptr);
    QSignalSpy troubles(&rows, &RecipientRows::Trouble);
    QSignalSpy changes(&rows, &RecipientRows::Changed);
    rows.Reset({keys[0]}, group);
    QCOMPARE(rows.At(0)->email, "a@x.org");
    rows.Append(std::span(keys).subspan(1));
    QCOMPARE(rows.At(2)->email, "c@x.org");
    rows.Remove(std::array<std::size_t, 2>{0, 2});
    QCOMPARE(rows.At(0)->email, "b@x.org");
    auto busy = recipients::OpenStore(rig.folders.Database());
    QVERIFY(busy->Execute("BEGIN EXCLUSIVE"));
    rows.Reset(keys, group);
    for (std::size_t row = 0; row < keys.size(); ++row) QCOMPARE(rows.At(row), nullptr);
    QCOMPARE(troubles.count(), 1);  // and nobody waited for each
    QVERIFY(busy->Execute("ROLLBACK"));
    QTRY_COMPARE(changes.count(), 1);
    QCOMPARE(rows.At(1)->email, "b@x.org");
    QVERIFY(busy->Execute("UPDATE [Emails] SET [G-ID] = 77 WHERE [G-Email] = 'b@x.org'"));
    rows.Reset(keys, group);
    QCOMPARE(rows.At(1)->id, std::int64_t{0});  // in another group by now
    QCOMPARE(rows.At(2)->email, "c@x.org");
  }

  void rowsHaveTheGivenColours() {
    Scene scene;
    scene.Search("Email", "Contains", "x.org");
    const auto* model = scene.Grid().model();
    QCOMPARE(model->index(0, 0).data(Qt::BackgroundRole).value<QColor>(), QColor(255, 200, 0));
    QCOMPARE(model->index(1, 3).data(Qt::BackgroundRole).value<QColor>(), QColor(255, 255, 192));
  }
};

}  // namespace quillcast::desktop

QTEST_MAIN(quillcast::desktop::SearchFormTest)
#include "search_form_test.moc"
