// The window of the runs that are kept, and the notice that offers to go on with one that was cut off.
#include "desktop/run/kept_runs_form.h"

#include <QTableView>

#include "desktop/hands.h"
#include "desktop/main_window.h"
#include "desktop/run/history_manager_form.h"
#include "desktop/run/send_mail_form1.h"
#include "desktop/tab_walk.h"
#include "desktop/widgets/row_list.h"
#include "platform/file.h"
#include "run/frozen/frozen_pace.h"
#include "run/run_words.h"
#include "support/kept_mailing.h"

namespace quillcast::desktop {

using test::Press;

class KeptRunsFormTest : public QObject {
  Q_OBJECT

  static bool IsOn(const QWidget& window, const char* name) {
    return window.findChild<QPushButton*>(name)->isEnabled();
  }
  static QString Status(const QWidget& window) { return test::Text(window, "StatusLine"); }

  // What the list of recipients says where it has none.
  static QString Empty(const QWidget& window) {
    return window.findChild<QWidget*>("PeopleGrid")->findChild<QLabel*>("EmptyState")->text();
  }

  // A line of the list of runs, its columns parted by " | ".
  static QString LineOf(const QWidget& window, int row) {
    const auto* rows = window.findChild<QTableView*>("KeptRunsGrid")->model();
    QStringList cells;
    for (int column = 0; column < rows->columnCount(); ++column) cells << rows->index(row, column).data().toString();
    return cells.join(" | ");
  }

 private slots:
  void offersForEachStateWhatCanBeDone() {
    test::FormRig rig;
    QVERIFY(test::LeaveCutOff(rig.folders, "Readers", true));
    KeptRunsForm form(rig.program, nullptr);
    form.show();
    QVERIFY2(Status(form).contains(
                 "1 recipient was deferred, not reached, or refused because of the account, and is to be tried again."),
             qPrintable(Status(form)));
    QVERIFY2(!Status(form).contains("in this state"), "what is told of them is told once");
    QCOMPARE(test::RowsOf(form, "KeptRunsGrid").size(), 1);
    QCOMPARE(LineOf(form, 0).section(" | ", 0, 0), QString("1"));
    QCOMPARE(LineOf(form, 0).section(" | ", 2),
             QString("Hello | Readers | can be resumed: 1 sent, 1 refused, 1 deferred, 1 unknown, 1 not tried; 1 to be "
                     "tried again"));
    struct Case {
      const char* whom;
      std::optional<run::RunKind> kind;
      std::int64_t recipients;
    };
    std::optional<GoOnRequest> asked;
    form.go_on = [&](const GoOnRequest& request) { asked = request; };
    auto* whom = form.findChild<QComboBox*>("StateComboBox");
    using run::RunKind;
    for (const Case& c : std::initializer_list<Case>{{"Not tried, or to be tried again", RunKind::kResume, 2},
                                                     {"Deferred and failed", RunKind::kRetry, 1},
                                                     {"Refused", RunKind::kRetry, 1},
                                                     {"Unknown", RunKind::kResume, 1},
                                                     {"All who are not known to have got it", {}, 4},
                                                     {"Sent", {}, 1},
                                                     {"Everybody", {}, 5}}) {
      whom->setCurrentText(c.whom);
      QCOMPARE(IsOn(form, "SendToTheseButton"), c.kind.has_value());
      QCOMPARE(form.findChild<QPushButton*>("SendToTheseButton")->text(),
               c.recipients == 2 ? QString("Go on with The&se…") : QString("&Send to These…"));
      QCOMPARE(Status(form).contains("choose one state"), !c.kind && QString(c.whom) != "Sent");
      QVERIFY(IsOn(form, "SaveListButton"));
      QVERIFY(!IsOn(form, "MakeGroupButton"));
      if (!c.kind) continue;
      asked.reset();
      rig.prompts.answers = {platform::Answer::kYes};
      Press(form, "SendToTheseButton");
      QVERIFY(asked);
      QCOMPARE(asked->kind, *c.kind);
      QCOMPARE(asked->recipients, c.recipients);
      QCOMPARE(rig.Shown().contains("may get this one twice"), QString(c.whom) == "Unknown");
    }
    auto* reply = form.findChild<QLineEdit*>("ReplyTextBox");
    whom->setCurrentText("Refused");
    reply->setText("5.7");
    QVERIFY(!IsOn(form, "SendToTheseButton") && !IsOn(form, "SaveListButton"));
    QCOMPARE(Empty(form), QString("Nobody is in this state with this reply."));
    QVERIFY2(!Status(form).contains("0 recipients"), qPrintable(Status(form)));
    reply->setText("3");
    QVERIFY2(Status(form).contains("\"3\" begins no code of a reply"), qPrintable(Status(form)));
    QCOMPARE(Empty(form), QString());
    QVERIFY(!IsOn(form, "SendToTheseButton"));
    reply->setText("5.1, 452");
    Press(form, "SendToTheseButton");
    QCOMPARE(asked->recipients, 1);
    QCOMPARE(asked->choice.replies.size(), 2U);
    reply->clear();
    rig.prompts.answers = {platform::Answer::kNo};
    whom->setCurrentText("Unknown");
    asked.reset();
    Press(form, "SendToTheseButton");
    QVERIFY2(!asked, "nobody is sent to twice who was not asked for");
  }

  // Who is in a state, and what the server said; the window opens on the first state that somebody is in.
  void namesWhoIsInTheState() {
    test::FormRig rig;
    QVERIFY(test::LeaveCutOff(rig.folders, "Readers"));
    KeptRunsForm form(rig.program, nullptr);
    form.show();
    auto* whom = form.findChild<QComboBox*>("StateComboBox");
    auto* people = form.findChild<RowList*>("PeopleGrid")->model();
    const auto row = [&](int column) { return people->index(0, column).data().toString(); };
    QCOMPARE(whom->currentIndex(), 0);
    QCOMPARE(people->rowCount(), 1);
    QCOMPARE(row(1), ToQt(test::FakeRows::AddressAt(5)));
    QCOMPARE(row(3), QString());
    whom->setCurrentText("Refused");
    QCOMPARE(people->rowCount(), 1);
    QCOMPARE(row(0), QString("2"));
    QCOMPARE(row(2), QString("refused"));
    QVERIFY2(row(3).startsWith("550 5.1.1 nobody (Error 8: "), qPrintable(row(3)));
    auto* table = form.findChild<QTableView*>("PeopleGrid");
    QVERIFY(table->columnWidth(2) >= table->fontMetrics().horizontalAdvance("deferred, to be tried again"));
    whom->setCurrentText("Everybody");
    QCOMPARE(people->rowCount(), 5);
    QVERIFY2(Status(form).contains("To send to some of these, choose one state"), qPrintable(Status(form)));
    form.findChild<QLineEdit*>("ReplyTextBox")->setText("451");
    QCOMPARE(people->rowCount(), 1);
    QCOMPARE(row(0), QString("3"));
    form.findChild<QLineEdit*>("GroupTextBox")->setText("One");
    Press(form, "MakeGroupButton");
    QTRY_COMPARE(Status(form), QString("The group One was made of 1 recipient."));
    QVERIFY(test::LeaveCutOff(rig.folders, "Others", false, 4));  // everybody was tried
    KeptRunsForm others(rig.program, nullptr);
    QCOMPARE(others.findChild<QComboBox*>("StateComboBox")->currentText(), QString("Deferred and failed"));
    QCOMPARE(others.findChild<RowList*>("PeopleGrid")->size(), std::size_t{1});
  }

  // Two mailings of one subject are told apart by their groups.
  void aLongSubjectLeavesRoomForTheGroupAndItsStanding() {
    test::FormRig rig;
    QVERIFY(test::LeaveCutOff(rig.folders, "Readers in Oslo", true));
    KeptRunsForm form(rig.program, nullptr);
    form.show();
    const auto* table = form.findChild<QTableView*>("KeptRunsGrid");
    const auto* model = table->model();
    for (int column = 0; column < model->columnCount(); ++column) {
      const QString text = model->index(0, column).data().toString();
      QVERIFY2(table->columnWidth(column) >= table->fontMetrics().horizontalAdvance(text), qPrintable(text));
    }
    QVERIFY(table->viewport()->height() >= 6 * table->rowHeight(0));
    QVERIFY2(form.width() <= 1280 && form.height() <= 860, "below the title on a small screen");
  }

  // Enter sends nothing, and whoever comes back from sending finds the run that was chosen.
  void aNameMakesAGroupAndTheChoiceStays() {
    test::FormRig rig;
    QVERIFY(test::LeaveCutOff(rig.folders, "Readers"));
    QVERIFY(test::LeaveCutOff(rig.folders, "Others"));
    KeptRunsForm form(rig.program, nullptr);
    form.show();
    int asked = 0;
    form.go_on = [&](const GoOnRequest&) { ++asked; };
    auto* grid = form.findChild<RowList*>("KeptRunsGrid");
    grid->Choose(1);
    auto* group = form.findChild<QLineEdit*>("GroupTextBox");
    group->setFocus();
    QTest::keyClicks(group, "Left");
    QTest::keyClick(group, Qt::Key_Return);
    QTRY_VERIFY2(Status(form).startsWith("The group Left was made of"), qPrintable(Status(form)));
    QCOMPARE(asked, 0);
    QTRY_VERIFY(IsOn(form, "SendToTheseButton"));
    Press(form, "SendToTheseButton");
    QCOMPARE(asked, 1);
    QCOMPARE(grid->Chosen(), std::vector<std::size_t>{1});
  }

  void takesThemOutAndForgets() {
    test::FormRig rig;
    QVERIFY(test::LeaveCutOff(rig.folders, "Readers"));
    KeptRunsForm form(rig.program, nullptr);
    form.show();
    form.findChild<QComboBox*>("StateComboBox")->setCurrentText("All who are not known to have got it");
    form.findChild<QLineEdit*>("GroupTextBox")->setText(" Left ");
    Press(form, "MakeGroupButton");
    QTRY_VERIFY2(Status(form).startsWith("The group Left was made of 4 recipients"), qPrintable(Status(form)));
    QCOMPARE(*rig.Store().CountRecipients("Left"), 4);
    auto* make_group = form.findChild<QPushButton*>("MakeGroupButton");
    make_group->setFocus();
    QTest::keyClick(&form, Qt::Key_Return);  // of a window that is not active
    QTRY_VERIFY2(make_group->isEnabled() && Status(form).endsWith("exists. Specify a different name."),
                 qPrintable(Status(form)));
    QCOMPARE(form.focusWidget(), make_group);
    QCOMPARE(*rig.Store().CountRecipients("Left"), 4);
    rig.prompts.files = {rig.folder / "page.html"};
    Press(form, "PageButton");
    QTRY_COMPARE(Status(form), ToQt("The report is in " + (rig.folder / "page.html").string() + "."));
    const std::string named =
        "Hello to Readers " +
        run::MomentText(std::chrono::floor<std::chrono::seconds>(rig.clock.Now()), rig.clock).substr(0, 10);
    QCOMPARE(rig.prompts.last_file_question.name, named + ", report.html");
    rig.prompts.files = {rig.folders.RunJournal()};
    Press(form, "SaveListButton");
    QCOMPARE(rig.prompts.last_file_question.name, named + ", recipients.csv");
    QVERIFY(rig.prompts.last_file_question.ask_before_overwriting);
    QVERIFY2(Status(form).contains("runs.db"), qPrintable(Status(form)));
    rig.prompts.files = {rig.folder / "list.csv"};
    Press(form, "SaveListButton");
    QTRY_COMPARE(Status(form), ToQt("4 recipients were written to " + (rig.folder / "list.csv").string() + "."));
    QVERIFY2(test::ReadAll(rig.folder / "list.csv").find("r1@example.org") == std::string::npos, "who has it");
    rig.Shown();
    rig.prompts.answers = {platform::Answer::kYes};
    Press(form, "ForgetButton");
    QCOMPARE(rig.Shown(),
             QString("ask: \"Hello\" to Readers can be resumed. 1 recipient was not tried; nothing was sent there. 1 "
                     "recipient is unknown: the message was out and no answer came, so it may have arrived. It is not "
                     "sent again unless you ask for it. Are you sure you want to forget it?"));
    QTRY_COMPARE(test::RowsOf(form, "KeptRunsGrid").size(), 0);
    QVERIFY(!IsOn(form, "SendToTheseButton") && !IsOn(form, "ForgetButton"));
  }

  // To a server that nobody is: the run is made, and tells why; nobody is lost by it.
  void goesOnInTheSendingWindow() {
    test::FormRig rig;
    rig.FillInAccount("1");
    QVERIFY(rig.settings.Write("Account", "Name", "Grace"));
    QVERIFY(test::LeaveCutOff(rig.folders, "Readers"));
    SendMailForm1 form(rig.program,
                       {1,
                        run::RunKind::kResume,
                        run::SetOf({run::ResultState::kNotTried}),
                        "Hello",
                        "Readers",
                        1,
                        {.rate = "30/min"}},
                       SendMailForm1::Server::kReal, nullptr);
    form.show();
    QCOMPARE(test::Text(form, "HeadingLabel"), QString("“Hello” to Readers, 1 recipient"));
    const QString route = test::Text(form, "RouteLabel");
    QVERIFY2(route.startsWith("From Ada <ada@example.org> over 127.0.0.1"), qPrintable(route));  // as the letter says
    // What is other by now can be read before it goes.
    QTRY_VERIFY(test::RowsOf(form, "NotesList").size() > 2);
    const QStringList changes = test::RowsOf(form, "NotesList");
    QCOMPARE(changes[0], QString("The letter goes out as it was when the run began."));
    QVERIFY2(changes.join('\n').contains("There is no group Readers any more."), qPrintable(changes.join('\n')));
    QVERIFY2(changes.join('\n').contains("the account's server has changed."), qPrintable(changes.join('\n')));
    QVERIFY(form.findChild<QWidget*>("NotesList")->isVisible());
    QCOMPARE(test::Text(form, "PaceLabel"), "Pace: 30 a minute (as this run was told before, else the mail account)");
    test::WhileOpen("RunPaceForm", [](QDialog& pace) {
      QCOMPARE(test::Text(pace, "RateTextBox"), QString("30/min"));
      pace.findChild<QLineEdit*>("ConnectionsTextBox")->setText("2");
      pace.findChild<QPushButton*>("UseButton")->click();
    });
    Press(form, "PaceButton");
    QCOMPARE(test::Text(form, "PaceLabel"), QString("Pace: 30 a minute, 2 connections (for this run alone)"));
    Press(form, "SendButton");
    QTRY_COMPARE(form.stage(), SendMailForm1::Stage::kFinished);
    QVERIFY2(Status(form).contains("0 messages were sent, 1 failed."), qPrintable(Status(form)));
    QVERIFY2(Status(form).contains("as it was when the run began"), qPrintable(Status(form)));
    KeptRunsForm runs(rig.program, nullptr);
    QVERIFY2(LineOf(runs, 0).endsWith("| can be resumed: 1 sent, 1 refused, 1 deferred, 1 failed, 1 unknown; 1 to be "
                                      "tried again (its first run was cut off)"),
             qPrintable(LineOf(runs, 0)));
    QVERIFY2(LineOf(runs, 1).endsWith("| went on with 1 |  | 1 recipient"), qPrintable(LineOf(runs, 1)));
    // And whoever goes on once more does so at that pace.
    std::optional<GoOnRequest> asked;
    runs.go_on = [&](const GoOnRequest& request) { asked = request; };
    runs.findChild<QComboBox*>("StateComboBox")->setCurrentText("Deferred and failed");
    Press(runs, "SendToTheseButton");
    QVERIFY(asked);
    QCOMPARE(asked->pace.connections, std::string("2"));
  }

  // Since the mailing began, whichever run went on with it meanwhile; and with the pace that is chosen in the window.
  void whatHasChangedGoesByTheChosenPace() {
    test::FormRig rig;
    rig.FillInAccount("1");
    const auto begun = run::FrozenPaceText({{}, {.quota_hour = "500"}});
    QVERIFY(test::LeaveCutOff(rig.folders, "Readers", false, 5, begun));
    QVERIFY(rig.settings.Write("Account", "QuotaHour", "7"));
    {
      const platform::CancelToken none;
      const auto journal = run::OpenJournal(rig.folders, rig.clock, none);
      QVERIFY((*journal)->GoOn(1, run::RunKind::kResume, run::WhoIsLeft(),
                               {"base", run::FrozenPaceText({{}, {.quota_hour = "7"}})}));
    }
    SendMailForm1 form(rig.program,
                       {.run = 1, .choice = run::WhoIsLeft(), .subject = "Hello", .group = "Readers", .recipients = 1},
                       SendMailForm1::Server::kReal, nullptr);
    form.OfferAccount([&](QWidget*) { QVERIFY(rig.settings.Write("Account", "SlowDown", "1")); });
    form.show();
    const auto changed = [&] { return test::RowsOf(form, "NotesList").filter("pace has changed").join('/'); };
    QTRY_COMPARE(changed(), QString("Since then the account's pace has changed, and the run goes by what it is now: "
                                    "QuotaHour."));
    struct Case {
      const char *press, *an_hour, *changed;
    };
    for (const Case& c : {Case{"UseButton", "90", ""}, Case{"AccountPaceButton", "90", "SlowDown."}}) {
      test::WhileOpen("RunPaceForm", [&](QDialog& pace) {
        pace.findChild<QLineEdit*>("QuotaHourTextBox")->setText(c.an_hour);
        Press(pace, c.press);
      });
      Press(form, "PaceButton");
      QTRY_COMPARE(changed().section(": ", 1), QString(c.changed));
    }
  }

  // Another program may go on with it while the window asks; one recipient of these was not tried.
  void nothingIsSentToOthersThanTheWindowTellsOf() {
    test::FormRig rig;
    rig.FillInAccount("1");
    QVERIFY(test::LeaveCutOff(rig.folders, "Readers"));
    GoOnRequest request{.run = 1, .choice = run::WhoIsLeft(), .subject = "Hello", .group = "Readers", .recipients = 3};
    SendMailForm1 form(rig.program, request, SendMailForm1::Server::kReal, nullptr);
    form.show();
    auto* button = form.findChild<QPushButton*>("SendButton");
    QTest::mouseClick(button, Qt::LeftButton);
    QTRY_COMPARE(button->text(), QString("Close"));
    const QString status = test::Text(form, "StatusLine");
    QVERIFY2(status.contains("meanwhile, and 1 recipient is left."), qPrintable(status));
  }

  // Whoever begins, goes on with or forgets a run: what is chosen stays, and what was told of the last button.
  void theListFollowsWhatOthersDo() {
    test::FormRig rig;
    QVERIFY(test::LeaveCutOff(rig.folders, "Readers"));
    KeptRunsForm form(rig.program, nullptr);
    form.show();
    auto* grid = form.findChild<RowList*>("KeptRunsGrid");
    form.findChild<QLineEdit*>("GroupTextBox")->setText("Left");
    Press(form, "MakeGroupButton");
    const QString told = "The group Left was made of 1 recipient.";
    QTRY_COMPARE(Status(form), told);
    QVERIFY(test::LeaveCutOff(rig.folders, "Others, whose name is so long that it would go on below in a line", true));
    QTRY_COMPARE(grid->size(), std::size_t{2});
    QVERIFY2(LineOf(form, 0).contains("| Hello | Others"), qPrintable(LineOf(form, 0)));
    QCOMPARE(grid->rowHeight(0), grid->rowHeight(1));
    QCOMPARE(grid->Chosen(), std::vector<std::size_t>{1});
    QCOMPARE(Status(form), told);
    QVERIFY(IsOn(form, "SendToTheseButton"));
    const platform::CancelToken none;
    const auto journal = run::OpenJournal(rig.folders, rig.clock, none);
    {
      const auto run = (*journal)->GoOn(1, run::RunKind::kResume, run::WhoIsLeft(), {"base"});
      QVERIFY(run);
      QTRY_VERIFY2(LineOf(form, 1).contains("| goes on: "), qPrintable(LineOf(form, 1)));
      QCOMPARE(grid->size(), std::size_t{3});
      QVERIFY2(LineOf(form, 2).endsWith("| 1 recipient, goes on"), qPrintable(LineOf(form, 2)));
      QCOMPARE(grid->Chosen(), std::vector<std::size_t>{1});
      QVERIFY(!IsOn(form, "SendToTheseButton") && !IsOn(form, "ForgetButton"));
      grid->Choose(2);
    }  // nobody ends it
    QTRY_VERIFY2(LineOf(form, 2).endsWith("| 1 recipient, cut off"), qPrintable(LineOf(form, 2)));
    QTRY_VERIFY2(LineOf(form, 1).contains("| can be resumed: "), qPrintable(LineOf(form, 1)));
    QCOMPARE(grid->Chosen(), std::vector<std::size_t>{2});
    QVERIFY((*journal)->Forget(1));
    QTRY_COMPARE(grid->size(), std::size_t{1});
    QCOMPARE(grid->Chosen(), std::vector<std::size_t>{0});
    QVERIFY2(Status(form).contains("to be tried again"), qPrintable(Status(form)));
  }

  // What a resume leaves stands in the history behind the window of the runs as soon as it is over.
  void theHistoryShowsWhatWasSentFromTheRuns() {
    test::FormRig rig;
    const auto leave = [&](const char* file) { QVERIFY(platform::ReplaceFile(rig.folders.History() / file, "x")); };
    leave("01-02-2026_10-00-00_Hello.txt");
    leave("01-03-2026_10-00-00_Hello.txt");
    HistoryManagerForm history(rig.program, nullptr);
    history.show();
    history.findChild<QComboBox*>("OrderComboBox")->setCurrentText("Newest first");
    auto* grid = history.findChild<RowList*>("HistoryGrid");
    grid->Choose(1);
    history.show_runs = [&](const std::string& chosen, const auto& sent) {
      QCOMPARE(chosen, "01-02-2026_10-00-00_Hello");
      leave("01-04-2026_10-00-00_Hello.txt");
      sent();
      QCOMPARE(grid->size(), std::size_t{3});
      leave("01-05-2026_10-00-00_Hello.txt");
    };
    Press(history, "RunsButton");
    QCOMPARE(grid->size(), std::size_t{4});
    QCOMPARE(grid->Chosen(), std::vector<std::size_t>{3});
    QCOMPARE(Status(history), QString("4 of 4 shown."));
  }

  void aDamagedRunIsToldAtTheStart() {
    Scene scene;
    QVERIFY(test::LeaveCutOff(scene.rig.folders, "Alpha"));
    auto journal = platform::Database::Open(scene.rig.folders.RunJournal(), platform::OpenMode::kReadWrite);
    QVERIFY(journal->Execute("UPDATE mailings SET recipients = -1"));
    scene.Open();
    QTRY_VERIFY2(scene.Status().startsWith("What the journal has of 1 run is damaged: #1."),
                 qPrintable(scene.Status()));
  }

  // It hides no other, and can be forgotten.
  void forgetsWhatIsDamaged() {
    test::FormRig rig;
    QVERIFY(test::LeaveCutOff(rig.folders, "Alpha"));
    QVERIFY(test::LeaveCutOff(rig.folders, "Beta"));
    auto journal = platform::Database::Open(rig.folders.RunJournal(), platform::OpenMode::kReadWrite);
    QVERIFY(journal->Execute("UPDATE mailings SET recipients = -1 WHERE id = 2"));
    KeptRunsForm form(rig.program, nullptr);
    form.show();
    auto* grid = form.findChild<RowList*>("KeptRunsGrid");
    QCOMPARE(grid->size(), std::size_t{2});
    QVERIFY2(LineOf(form, 0).contains("| Alpha | can be resumed"), qPrintable(LineOf(form, 0)));
    QCOMPARE(LineOf(form, 1), QString("2 |  | Hello | Beta | damaged: it can only be forgotten"));
    QCOMPARE(Status(form), QString("What the journal has of 1 run is damaged: #2. See the end of the list."));
    grid->Choose(1);
    QVERIFY2(Status(form).startsWith("What is kept of this run is damaged"), qPrintable(Status(form)));
    for (const char* button : {"SendToTheseButton", "SaveListButton", "MakeGroupButton", "PageButton"}) {
      QVERIFY2(!IsOn(form, button), button);
    }
    QCOMPARE(form.findChild<RowList*>("PeopleGrid")->size(), std::size_t{0});
    rig.prompts.answers = {platform::Answer::kYes};
    Press(form, "ForgetButton");
    QTRY_COMPARE(Status(form), QString("1 damaged run was forgotten."));
    QCOMPARE(grid->size(), std::size_t{1});
    QVERIFY(IsOn(form, "SendToTheseButton"));
  }

  // Runs… in the history opens with the run whose report is chosen there, be it one that went on with another.
  void theHistoryOpensTheRunOfTheChosenReport() {
    Scene scene;
    QVERIFY(test::LeaveCutOff(scene.rig.folders, "Alpha"));
    {
      const platform::CancelToken none;
      const auto journal = run::OpenJournal(scene.rig.folders, scene.rig.clock, none);
      QVERIFY((*journal)->GoOn(1, run::RunKind::kResume, run::WhoIsLeft(), {"01-02-2026_10-00-00_Hello"}));
    }
    QVERIFY(test::LeaveCutOff(scene.rig.folders, "Beta"));
    QVERIFY(platform::ReplaceFile(scene.rig.folders.History() / "01-02-2026_10-00-00_Hello.txt", "x"));
    scene.Open();
    QString chosen;
    test::WhileOpen("HistoryManagerForm", [&](QDialog& history) {
      history.findChild<RowList*>("HistoryGrid")->Choose(0);
      test::WhileOpen("KeptRunsForm", [&](QDialog& form) {
        const auto rows = form.findChild<RowList*>("KeptRunsGrid")->Chosen();
        if (rows.size() == 1) chosen = LineOf(form, static_cast<int>(rows[0]));
      });
      Press(history, "RunsButton");
    });
    scene.Find<QAction>("HistoryButton").trigger();
    QVERIFY2(chosen.startsWith("2 | ") && chosen.endsWith("| 1 recipient, cut off"), qPrintable(chosen));

    // Of one that was forgotten none is chosen, so that nothing is sent for another.
    KeptRunsForm form(scene.rig.program, nullptr);
    form.ChooseReport("01-02-2020_10-00-00_Gone");
    form.show();
    QCOMPARE(form.findChild<RowList*>("KeptRunsGrid")->Chosen(), std::vector<std::size_t>{});
    QVERIFY2(Status(form).startsWith("The run of the report that is chosen in the history is no longer kept."),
             qPrintable(Status(form)));
    QVERIFY(!IsOn(form, "SendToTheseButton"));
  }

  // The run that the notice names is the one that the window opens with, whichever is newer or was put off.
  void theNoticeOpensTheRunThatItNames() {
    Scene scene;
    QVERIFY(test::LeaveCutOff(scene.rig.folders, "Alpha"));
    QVERIFY(test::LeaveCutOff(scene.rig.folders, "Beta"));
    scene.Open();
    QTRY_VERIFY2(scene.Notice().startsWith("The run “Hello” to Beta was cut off."), qPrintable(scene.Notice()));
    const auto chosen_by_notice = [&] {
      QString chosen;
      test::WhileOpen("KeptRunsForm", [&](QDialog& form) {
        const auto rows = form.findChild<RowList*>("KeptRunsGrid")->Chosen();
        if (rows.size() == 1) chosen = LineOf(form, static_cast<int>(rows[0]));
        QCOMPARE(form.focusWidget()->objectName(), QString("SendToTheseButton"));
      });
      Press(*scene.window, "GoOnWithRunButton");
      return chosen;
    };
    QVERIFY(chosen_by_notice().contains("| Beta |"));
    Press(*scene.window, "LaterButton");
    QTRY_VERIFY2(scene.Notice().startsWith("The run “Hello” to Alpha was cut off."), qPrintable(scene.Notice()));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);  // the buttons of the notice before
    QVERIFY(chosen_by_notice().contains("| Alpha |"));
  }

  // It is there for who has only the keyboard, which goes back to the message with it.
  void theNoticeIsReachedByTheKeyboardAndGivesItBack() {
    Scene scene;
    QVERIFY(test::LeaveCutOff(scene.rig.folders, "Alpha"));
    scene.Open();
    QTRY_VERIFY2(scene.Notice().startsWith("The run “Hello” to Alpha was cut off."), qPrintable(scene.Notice()));
    scene.window->activateWindow();
    auto* subject = scene.window->findChild<QWidget*>("SubjectTextBox");
    subject->setFocus();
    const QStringList back = test::Names(test::TabWalk(*scene.window, Qt::ShiftModifier));
    const auto later = back.indexOf("LaterButton");
    QVERIFY2(later > 0 && later < 10 && back.value(later + 1) == "GoOnWithRunButton", qPrintable(back.join(' ')));
    subject->setFocus();
    bool is_open = false;
    test::WhileOpen("KeptRunsForm", [&](QDialog&) { is_open = true; });
    QTest::keyClick(scene.window.get(), Qt::Key_N, Qt::AltModifier);
    QTRY_VERIFY(is_open);
    scene.window->activateWindow();
    QTRY_VERIFY(scene.window->isActiveWindow());
    subject->setFocus();
    QTest::keyClick(scene.window.get(), Qt::Key_J, Qt::AltModifier);
    QTRY_VERIFY(!scene.Notice().startsWith("The run"));
    QCOMPARE(scene.window->focusWidget(), subject);
  }

  void clearingTheHistoryKeepsWhatCanBeResumed() {
    test::FormRig rig;
    QVERIFY(test::LeaveCutOff(rig.folders, "Readers"));
    {
      const platform::CancelToken none;
      const auto journal = run::OpenJournal(rig.folders, rig.clock, none);
      test::FakeRows rows(2);
      const auto over = (*journal)->Begin({"Over", "Others", "", {}}, rows, {}, {"base"});
      recipients::Recipient recipient;
      std::int64_t position = 0;
      QVERIFY(over && (*over)->Next(recipient, position));
      (*over)->GoesOut(position);
      (*over)->Settled(position, {smtp::State::kSent, smtp::ResultCode::kSuccess, {250, "2.0.0", "taken"}, {}});
      QVERIFY((*over)->Next(recipient, position));
      (*over)->GoesOut(position);
      QVERIFY((*over)->End());
    }
    HistoryManagerForm history(rig.program, nullptr);
    history.show();
    QString told;
    rig.prompts.meanwhile = [&] { told = Status(history); };
    Press(history, "ClearHistoryButton");
    QVERIFY2(Status(history).startsWith("No report is kept here now"), "it is not cleared");
    QCOMPARE(rig.Shown(), QString("ask: Are you sure you want to delete your history?"));
    rig.prompts.answers = {platform::Answer::kYes};
    for (int more = 0; more < 4; ++more) QVERIFY(test::LeaveCutOff(rig.folders, "Readers"));
    Press(history, "ClearHistoryButton");
    QCOMPARE(told, QString("Clearing the history forgets 1 run too, with 1 recipient of whom nobody knows whether the "
                           "message arrived."));
    QTRY_VERIFY(!history.isVisible());
    QVERIFY2(history.cleared().contains("The run \"Hello\" to Readers was kept, for it can be resumed."),
             qPrintable(history.cleared()));
    QVERIFY2(
        history.cleared().contains("1 run was forgotten, with 1 recipient of whom nobody knows whether the message "
                                   "arrived."),
        qPrintable(history.cleared()));
    QCOMPARE(history.cleared().count("for it can be resumed"), 3);
    QVERIFY2(history.cleared().contains(" So were 2 more."), qPrintable(history.cleared()));
    KeptRunsForm runs(rig.program, nullptr);
    QCOMPARE(test::RowsOf(runs, "KeptRunsGrid").size(), 5);
  }
};

}  // namespace quillcast::desktop

QTEST_MAIN(quillcast::desktop::KeptRunsFormTest)
#include "kept_runs_form_test.moc"
