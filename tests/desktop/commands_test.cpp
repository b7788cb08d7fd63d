// The commands of the main window: each row of their table done once, and the ways that lead to it.
#include <QAction>
#include <QCheckBox>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QImage>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QToolBar>
#include <QToolButton>
#include <array>
#include <functional>
#include <map>
#include <vector>

#include "desktop/document/picture_form.h"
#include "desktop/main_window.h"
#include "desktop/shell/command_bar.h"
#include "desktop/shell/message_header.h"

namespace quillcast::desktop {
namespace {

using enum CommandId;

// What stands there before a command: a body, all of it selected, or the subject "ab" with the keys in its box.
constexpr const char* kOne = "<p>one</p>";
constexpr const char* kTwoByTwo =
    "<table><tbody><tr><td>a</td><td>b</td></tr><tr><td>c</td><td>d</td></tr></tbody></table>";
constexpr const char* kTyped = "typed";
constexpr const char* kSelected = "selected";
constexpr const char* kUndone = "undone";

struct Row {
  CommandId id;
  std::array<int, 2> numbers;  // in the menu and in the toolbar
  const char* effect;          // what is different afterwards
  const char* given = kOne;
};

constexpr auto kRows = std::to_array<Row>({
    {kNew, {}, "body: <p><br></p> | subject: "},
    {kOpen, {1, 83}, "open: Open"},
    {kSave, {2, 84}, "save: Save"},
    {kSaveAs, {}, "save: Save"},
    {kPrint,
     {4, 85},
     "ask: Please consider your environmental responsibility before printing./Do you still want to print this "
     "document?"},
    {kProperties, {5, 86}, "PropertiesForm"},
    {kExit, {6}, "window: closed"},
    {kUndo, {7, 87}, "subject: ", kTyped},
    {kRedo, {8, 88}, "subject: ab", kUndone},
    {kCut, {9, 89}, "clipboard: ab | selected:  | subject: ", kSelected},
    {kCopy, {10, 90}, "clipboard: ab", kSelected},
    {kPaste, {11, 91}, "selected:  | subject: cd", kSelected},
    {kPastePlain, {}, "selected:  | subject: cd", kSelected},
    {kDelete, {12, 92}, "selected:  | subject: ", kSelected},
    {kSelectAll, {13}, "selected: ab", kTyped},
    {kFind, {14, 93}, "keys: FindTextBox"},
    {kSource, {}, "keys: SourceTextBox"},
    {kZoomIn, {}, "says: Zoom: 110 %"},
    {kZoomOut, {}, "says: Zoom: 90 %"},
    {kZoomReset, {}, "says: Zoom: 100 %"},
    {kDateTime, {15}, "DateTimeForm"},
    {kTemplate, {16}, "TemplateForm"},
    {kAddAttachment, {17}, "open: File Attachment"},
    {kDeleteAttachment, {18}, "warn: There is no file to delete."},
    {kMergeEmail, {67}, "body: <p>$*MergeEmail*$</p>"},
    {kMergeTitle, {68}, "body: <p>$*MergeTitle*$</p>"},
    {kMergeFirstName, {69}, "body: <p>$*MergeFirstName*$</p>"},
    {kMergeLastName, {70}, "body: <p>$*MergeLastName*$</p>"},
    {kMergeCountry, {71}, "body: <p>$*MergeCountry*$</p>"},
    {kMergeState, {72}, "body: <p>$*MergeState*$</p>"},
    {kMergeCity, {73}, "body: <p>$*MergeCity*$</p>"},
    {kMergeAddress1, {104}, "body: <p>$*MergeAddress1*$</p>"},
    {kMergeAddress2, {74}, "body: <p>$*MergeAddress2*$</p>"},
    {kMergeZipCode, {75}, "body: <p>$*MergeZIPCode*$</p>"},
    {kMergePhone, {76}, "body: <p>$*MergePhone*$</p>"},
    {kMergeFax, {77}, "body: <p>$*MergeFax*$</p>"},
    {kMergeCompany, {78}, "body: <p>$*MergeCompany*$</p>"},
    {kMergeJobTitle, {79}, "body: <p>$*MergeJobTitle*$</p>"},
    {kMergeWebSite, {80}, "body: <p>$*MergeWebSite*$</p>"},
    {kMergeAdditional1, {105}, "body: <p>$*MergeField1*$</p>"},
    {kMergeAdditional2, {106}, "body: <p>$*MergeField2*$</p>"},
    {kMergeAdditional3, {107}, "body: <p>$*MergeField3*$</p>"},
    {kPicture, {23}, "PictureForm"},
    {kHyperlink, {24}, "LinkForm"},
    {kLine, {21}, "LineForm"},
    {kTable, {22}, "TableForm"},
    {kFont, {19}, "FontForm"},
    {kTextColour, {}, "QColorDialog"},
    {kBody, {20}, "BodyForm"},
    {kNormal, {}, "body: <p>one</p>", "<h2>one</h2>"},
    {kHeading1, {}, "body: <h1>one</h1>"},
    {kHeading2, {}, "body: <h2>one</h2>"},
    {kHeading3, {}, "body: <h3>one</h3>"},
    {kQuote, {}, "body: <blockquote>one</blockquote>"},
    {kPreformatted, {}, "body: <pre>one</pre>"},
    {kBold, {27, 94}, "body: <p><b>one</b></p>"},
    {kItalic, {28, 95}, "body: <p><i>one</i></p>"},
    {kUnderline, {29, 96}, "body: <p><u>one</u></p>"},
    {kAlignLeft, {30, 97}, "body: <p style=\"text-align: left;\">one</p>", "<p style='text-align: right'>one</p>"},
    {kCentre, {31, 98}, "body: <p style=\"text-align: center;\">one</p>"},
    {kAlignRight, {32, 99}, "body: <p style=\"text-align: right;\">one</p>"},
    {kIndent,
     {33, 101},
     "body: <blockquote style=\"margin: 0 0 0 40px; border: none; padding: 0px;\"><p>one</p></blockquote>"},
    {kOutdent, {34, 100}, "body: <p>one</p>", "<blockquote><p>one</p></blockquote>"},
    {kBullets, {35, 102}, "body: <ul><li>one</li></ul>"},
    {kNumbers, {36, 103}, "body: <ol><li>one</li></ol>"},
    {kRemoveHyperlink, {25}, "body: <p>one</p>", "<p><a href='x'>one</a></p>"},
    {kRemoveFormatting, {26}, "body: <p>one</p>", "<p><b>one</b></p>"},
    {kRowAbove, {}, "body: /|_|_/|a|b/|c|d", kTwoByTwo},
    {kRowBelow, {}, "body: /|a|b/|_|_/|c|d", kTwoByTwo},
    {kColumnLeft, {}, "body: /|_|a|b/|_|c|d", kTwoByTwo},
    {kColumnRight, {}, "body: /|a|_|b/|c|_|d", kTwoByTwo},
    {kDeleteRow, {}, "body: /|c|d", kTwoByTwo},
    {kDeleteColumn, {}, "body: /|b/|d", kTwoByTwo},
    {kDeleteTable, {}, "body: <br>", kTwoByTwo},
    {kMailPreview, {37}, "desktop: Preview.eml"},
    {kPreview, {}, "PreviewForm"},
    {kSend, {38}, "SendMailForm1"},
    {kHistory, {41}, "HistoryManagerForm"},
    {kAccount, {39}, "EmailManagerForm"},
    {kGroups, {40}, "GroupManagerForm"},
    {kSignature, {42}, "SignatureManagerForm"},
    {kImport, {43}, "RecipientImportForm"},
    {kExport, {44}, "RecipientExportForm"},
    {kThreads, {52}, "ThreadForm"},
    {kSplash, {}, "splash: 0"},
    {kDomainTools, {53}, "DomainToolsForm"},
    {kExtraForm1, {54}, "ExtraForm1"},
    {kExtraForm2, {55}, "ExtraForm2"},
    {kExtraForm3, {56}, "ExtraForm3"},
    {kExtraForm4, {57}, "ExtraForm4"},
    {kExtraForm5, {58}, "ExtraForm5 | ask: Are you sure you want to cancel the process?"},
    {kHelpTopics, {59}, "opens: HelpForm"},
    {kTutorial, {60}, "opens: TutorialForm"},
    {kTips, {61}, "TipsForm"},
    {kSupport, {63}, "SupportForm"},
    {kUpdate, {64}, "UpdateMainForm"},
    {kHomePage, {65}, "desktop: https://www.quillcast.example/"},
    {kAbout, {66}, "AboutForm"},
});

// Wants every key for itself, as the page and the text boxes want some, which differ by desktop.
class Greedy final : public QObject {
 protected:
  bool eventFilter(QObject*, QEvent* event) override {
    if (event->type() == QEvent::ShortcutOverride) event->accept();
    return event->type() == QEvent::ShortcutOverride;
  }
};

// The body's HTML; of a table its rows behind "/" and its cells behind "|".
QString BodyOf(const Scene& scene) {
  QString body = *scene.Editor().Text();
  body = body.mid(body.indexOf("<body>") + 6);
  body.truncate(body.indexOf("</body>"));
  for (const char* quiet : {"<table>", "</table>", "<tbody>", "</tbody>", "</tr>", "</td>"}) body.remove(quiet);
  return body.replace("<tr>", "/").replace("<td>", "|").replace("&nbsp;", "_");
}

// Windows that stand beside the main one, which goes on meanwhile.
const QStringList kBeside = {"HelpForm", "TutorialForm"};

// What a person can see of the window, by what each of it is.
std::map<QString, QString> Look(const Scene& scene) {
  const auto& subject = scene.Find<QLineEdit>("SubjectTextBox");
  std::map<QString, QString> seen = {{"body", BodyOf(scene)},
                                     {"subject", subject.text()},
                                     {"selected", subject.selectedText()},
                                     {"clipboard", QGuiApplication::clipboard()->text()},
                                     {"keys", scene.Focus()},
                                     {"says", scene.Status()},
                                     {"splash", ToQt(*scene.rig.settings.Read("Options", "Splash", "1"))},
                                     {"window", scene.window->isVisible() ? "there" : "closed"}};
  for (const QWidget* widget : QApplication::topLevelWidgets()) {
    if (widget->isVisible() && kBeside.contains(widget->objectName())) seen["opens"] = widget->objectName();
  }
  return seen;
}

// Closes whatever opens over the window, and keeps its name.
class Closer final : public QObject {
 public:
  Closer() {
    connect(&look_, &QTimer::timeout, this, [this] {
      QWidget* open = QApplication::activePopupWidget();
      if (open == nullptr) open = QApplication::activeModalWidget();
      if (open == nullptr) return;
      opened += open->objectName().isEmpty() ? open->metaObject()->className() : open->objectName();
      open->close();
    });
    look_.start(5);
  }
  QStringList opened;

 private:
  QTimer look_;
};

// Everything that a command does, in one line.
QString EffectOf(Scene& scene, const std::function<void()>& run) {
  const auto before = Look(scene);
  scene.rig.desktop.opened.clear();
  scene.rig.Shown();
  Closer closer;
  run();
  QStringList effects = closer.opened;
  const QString shown = scene.rig.Shown();
  if (!shown.isEmpty()) effects << shown;
  for (const auto& file : scene.rig.desktop.opened) effects << "desktop: " + ToQt(file);
  for (const auto& [what, now] : Look(scene)) {
    const auto was = before.find(what);
    if (was == before.end() || was->second != now) effects << what + ": " + now;
  }
  return effects.join(" | ");
}

}  // namespace

class CommandsTest : public QObject {
  Q_OBJECT

  // With an account, a group and a subject, so that nothing stands in the way.
  static void MakeReady(Scene& scene) {
    scene.rig.FillInAccount();
    scene.rig.AddGroup("Customers", {"bob@example.net"});
    scene.Open();
    scene.Find<QComboBox>("ToComboBox").setCurrentText("Customers");
  }

  static void Put(Scene& scene, const QString& given) {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
      if (kBeside.contains(widget->objectName())) widget->close();
    }
    if (!scene.window->isVisible()) scene.window->show();
    scene.window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(scene.window.get()));
    scene.window->Say("-");
    scene.Find<QComboBox>("ToComboBox").setCurrentText("Customers");
    QVERIFY(scene.rig.settings.Write("Options", "Splash", "1"));
    QVERIFY(scene.rig.settings.Write("Window", "Zoom", "100"));
    QGuiApplication::clipboard()->setText("cd");
    auto& subject = scene.Find<QLineEdit>("SubjectTextBox");
    subject.setFocus();
    subject.clear();
    QTest::keyClicks(&subject, "ab");
    scene.Editor().SetHtml("<html><body>" + (given.startsWith('<') ? given : kOne) + "</body></html>");
    if (given == kSelected) subject.selectAll();
    if (given == kUndone) subject.undo();
    if (!given.startsWith('<')) return;
    scene.Editor().setFocus();
    scene.Editor().Evaluate("getSelection().selectAllChildren(document.querySelector('td,a,p,h2'))");
  }

 private slots:
  void eachRowDoesTheSameByEachWay() {
    Scene scene;
    MakeReady(scene);
    auto* bar = scene.window->findChild<CommandBar*>();
    auto* header = scene.window->findChild<MessageHeader*>();
    QCOMPARE(kRows.size(), Commands().size());
    for (const Row& row : kRows) {
      const Command& command = RowOf(row.id);
      QCOMPARE(command.numbers, row.numbers);
      const QString expected = row.effect;
      const auto by = [&](const QString& way, const std::function<void()>& run) {
        Put(scene, row.given);
        if (row.id == kExtraForm5) scene.rig.prompts.answers = {platform::Answer::kYes};  // it asks before it closes
        const QString effect = EffectOf(scene, run);
        QVERIFY2(effect == expected, qPrintable(NameOf(command) + ", by " + way + ": " + effect));
      };
      for (const int number : row.numbers) {
        if (number != 0) by(QString::number(number), [&] { scene.window->Dispatch(number); });
      }
      if (QAction* action = bar->ActionOf(row.id)) {
        by("the menu", [&] {
          action->setEnabled(true);
          action->trigger();
        });
      }
      auto* button = command.name.empty() ? nullptr : header->findChild<QPushButton*>(ToQt(command.name));
      if (button != nullptr) by("its button", [button] { button->click(); });
    }
  }

  void theMenusHaveEachCommandThatIsBuiltAndTheToolbarItsButtons() {
    OpenScene scene;
    auto* bar = scene.window->findChild<CommandBar*>();
    CommandId came = kAbout;
    QObject::disconnect(bar, nullptr, scene.window.get(), nullptr);
    connect(bar, &CommandBar::Triggered, this, [&came](CommandId id) { came = id; });
    QList<QAction*> shown;
    for (const QMenu* menu : scene.window->menuBar()->findChildren<QMenu*>()) {
      shown += menu->actions();
      QStringList keys;
      for (const QAction* action : menu->actions()) {
        const QString key = QKeySequence::mnemonic(action->text()).toString();
        QVERIFY2(key.isEmpty() || !keys.contains(key), qPrintable(action->text()));
        keys << key;
      }
    }
    const auto& tools = scene.Find<QToolBar>("Toolbar");
    for (const Command& command : Commands()) {
      const QString name = NameOf(command);
      QAction* action = bar->ActionOf(command.id);
      QVERIFY2(action != nullptr, qPrintable(name));
      QVERIFY2(shown.count(action) == 1 && !action->text().isEmpty(), qPrintable(name));
      for (const bool is_button : {false, true}) {
        auto* button = qobject_cast<QToolButton*>(tools.widgetForAction(action));
        if (is_button && button == nullptr) continue;
        action->setEnabled(true);
        came = command.id == kAbout ? kNew : kAbout;
        is_button ? button->click() : action->trigger();
        QVERIFY2(came == command.id, qPrintable(name));
      }
    }
    const auto place = [&tools](QWidget* button) { return tools.layout()->indexOf(button); };
    for (const CommandId id : {kProperties, kCut, kCopy, kPaste, kDelete}) {
      QVERIFY2(place(tools.findChild<QToolButton*>("MergeTagButton")) < place(tools.widgetForAction(bar->ActionOf(id))),
               "a small window cuts off what has no other way");
    }
    for (const char* name : {"TableButton", "PictureButton", "HyperlinkButton"}) {
      QVERIFY(tools.findChild<QToolButton*>(name) != nullptr);
    }
  }

  void everyKeyOfTheMenusWorksWhereverTheCaretIs_data() {
    QTest::addColumn<QString>("field");
    for (const char* field : {"Editor", "SubjectTextBox", "FindTextBox", "SourceTextBox", "FromComboBox", "ToComboBox",
                              "AttachmentComboBox", "SendingMethodComboBox", "PriorityComboBox", "FormatComboBox",
                              "RRRCheckBox", "StyleComboBox", "FontNameComboBox", "FontSizeComboBox", "SendButton"}) {
      QTest::newRow(field) << field;
    }
  }
  void everyKeyOfTheMenusWorksWhereverTheCaretIs() {
    QFETCH(QString, field);
    OpenScene scene;
    auto* bar = scene.window->findChild<CommandBar*>();
    if (field == "FindTextBox") scene.window->Dispatch(kFind);
    if (field == "SourceTextBox") scene.window->Dispatch(kSource);
    QObject::disconnect(bar, nullptr, scene.window.get(), nullptr);
    QObject::disconnect(&scene.Editor(), nullptr, bar, nullptr);
    EditorState everything;
    everything.can_undo = everything.can_redo = true;
    everything.link = "x";
    bar->Show(everything);
    auto* widget = field == "Editor" ? scene.Editor().InputWidget() : scene.window->findChild<QWidget*>(field);
    widget->setFocus();
    Greedy greedy;
    widget->installEventFilter(&greedy);
    std::vector<CommandId> came;
    connect(bar, &CommandBar::Triggered, this, [&came](CommandId id) { came.push_back(id); });
    int pressed = 0;
    for (const Command& command : Commands()) {
      if (command.keys.empty() || command.id == kDelete) continue;
      came.clear();
      const QKeyCombination keys = QKeySequence(ToQt(command.keys))[0];
      QTest::keyClick(widget, keys.key(), keys.keyboardModifiers());
      QVERIFY2(came == std::vector{command.id}, qPrintable(NameOf(command)));
      QTest::simulateEvent(widget, true, keys.key(), keys.keyboardModifiers(), {}, true);  // held
      QVERIFY2(came.size() == 1 || command.place.menu == Menu::kEdit, qPrintable(NameOf(command)));
      ++pressed;
    }
    QVERIFY2(pressed >= 34, qPrintable(QString::number(pressed)));
  }

  void numbersLeadToTheirRowsAndOthersNowhere() {
    OpenScene scene;
    for (const int nothing : {-1, 0, 3, 45, 51, 62, 81, 82, 108, 100000}) scene.window->Dispatch(nothing);
    QCOMPARE(scene.rig.Shown(), QString());
    QVERIFY(!scene.Editor().IsModified());
    scene.Editor().SetHtml("<html><body><p>one</p></body></html>");
    scene.window->Dispatch(13);
    for (const int number : {94, 28, 96}) scene.window->Dispatch(number);
    QVERIFY2(scene.Editor().Text()->contains("<p><b><i><u>one</u></i></b></p>"), qPrintable(*scene.Editor().Text()));
    auto* bar = scene.window->findChild<CommandBar*>();
    QTRY_VERIFY(bar->ActionOf(kBold)->isChecked() && bar->ActionOf(kItalic)->isChecked());
    QVERIFY(!bar->ActionOf(kCentre)->isChecked());
  }

  void importExportAndSupportCheckFirst() {
    OpenScene scene;
    scene.window->Dispatch(CommandId::kImport);
    QCOMPARE(scene.rig.Shown(), QString("warn: There is no group to import the data to."));
    QCOMPARE(scene.Focus(), QString("GroupButton"));
    scene.Editor().setFocus();
    scene.window->Dispatch(CommandId::kExport);
    QCOMPARE(scene.rig.Shown(), QString("warn: There is no group to export the data from."));
    QCOMPARE(scene.Focus(), QString("GroupButton"));
    test::WhileOpen("EmailManagerForm", [](QDialog&) {});
    scene.window->Dispatch(CommandId::kSupport);
    QCOMPARE(scene.rig.Shown(), QString("warn: Please fill out the Mail Account section in Email Manager."));
  }

  void theEditMenuWorksWhereTheCaretIs() {
    OpenScene scene;
    auto* subject = scene.window->findChild<QLineEdit*>("SubjectTextBox");
    subject->setFocus();
    subject->setText("ab");
    const auto paste = scene.window->findChild<CommandBar*>()->ActionOf(CommandId::kPaste);
    QGuiApplication::clipboard()->setText("cd");
    paste->trigger();
    QCOMPARE(subject->text(), QString("abcd"));
    scene.window->Dispatch(CommandId::kUndo);
    QCOMPARE(subject->text(), QString("ab"));
    scene.window->Dispatch(CommandId::kPastePlain);
    QCOMPARE(subject->text(), QString("abcd"));
    scene.window->Dispatch(CommandId::kSelectAll);
    scene.window->Dispatch(CommandId::kDelete);
    QCOMPARE(subject->text(), QString());
    QVERIFY(!scene.Editor().IsModified());
    // The key deletes where the focus is and nowhere else.
    scene.Editor().SetHtml("<html><body><p>ab</p></body></html>");
    scene.Editor().Evaluate("getSelection().collapse(document.body.firstChild.firstChild,1)");
    auto* box = scene.window->findChild<QComboBox*>("AttachmentComboBox");
    box->setFocus();
    QTest::keyClick(box, Qt::Key_Delete);
    QCOMPARE(scene.Editor().PlainText(), QString("ab"));
    scene.Editor().setFocus();
    scene.window->Dispatch(CommandId::kDelete);
    QCOMPARE(scene.Editor().PlainText(), QString("a"));
  }

  void theFontDialogStartsFromWhatIsThere() {
    OpenScene scene;
    const QString html =
        "<html><body><p><b><font face=\"DejaVu Serif\" size=\"5\" color=\"#ff0000\">loud</font></b></p></body></html>";
    const auto ask = [&](const std::function<void(QDialog&)>& change) {
      scene.Editor().SetHtml(html);
      scene.Editor().Evaluate("getSelection().selectAllChildren(document.querySelector('font'))");
      test::WhileOpen("FontForm", [&](QDialog& form) {
        change(form);
        form.findChild<QPushButton*>("OKButton")->click();
      });
      scene.window->Dispatch(CommandId::kFont);
      return *scene.Editor().Text();
    };
    QCOMPARE(ask([](QDialog& form) {
               const QFont sample = form.findChild<QLabel*>("SampleLabel")->font();
               QVERIFY(sample.bold() && !sample.italic());
               QCOMPARE(sample.pointSize(), 18);
               QCOMPARE(form.findChild<QComboBox*>("FamilyComboBox")->currentText(), QString("DejaVu Serif"));
               QCOMPARE(form.findChild<QLabel*>("SampleLabel")->palette().color(QPalette::WindowText), QColor(Qt::red));
             }),
             html);
    const QString changed = ask([](QDialog& form) {
      for (const char* box : {"BoldCheckBox", "UnderlineCheckBox", "StrikeCheckBox"})
        form.findChild<QCheckBox*>(box)->click();
      form.findChild<QComboBox*>("SizeComboBox")->setCurrentIndex(6);
    });
    for (const char* there : {"<u>", "<strike>", "size=\"7\""}) QVERIFY2(changed.contains(there), qPrintable(changed));
    QVERIFY2(!changed.contains("<b>"), qPrintable(changed));
  }

  void aLinkIsAskedForCheckedChangedAndTakenAway() {
    OpenScene scene;
    const QString before = "<h1>Prices</h1><p>see</p>";
    scene.Editor().SetHtml("<html><body>" + before + "</body></html>");
    scene.Editor().Evaluate("getSelection().selectAllChildren(document.querySelector('p'))");
    const auto type = [](QDialog& form, const char* box, const QString& text) {
      auto* field = form.findChild<QLineEdit*>(box);
      field->selectAll();
      QTest::keyClicks(field, text);
    };
    const auto ok = [](QDialog& form) {
      QTest::mouseClick(form.findChild<QPushButton*>("OKButton"), Qt::LeftButton);
      return form.findChild<QLabel*>("StatusLine")->text();
    };
    const auto ask = [&](const std::function<void(QDialog&)>& act) {
      test::WhileOpen("LinkForm", act);
      scene.window->Dispatch(CommandId::kHyperlink);
      return BodyOf(scene);
    };
    QCOMPARE(ask([&](QDialog& form) {
               QCOMPARE(ok(form), QString("Please enter the address of a page."));
               QVERIFY(form.isVisible());
               type(form, "AddressTextBox", "example.org/a");
               QCOMPARE(form.findChild<QLabel*>("StatusLine")->text(), QString("Leads to https://example.org/a"));
               type(form, "LinkTextBox", "look");
               ok(form);
             }),
             QString("<h1>Prices</h1><p><a href=\"https://example.org/a\">look</a></p>"));
    scene.Editor().Evaluate("getSelection().collapse(document.querySelector('a').firstChild,1)");
    QCOMPARE(ask([&](QDialog& form) {
               QCOMPARE(form.findChild<QLineEdit*>("AddressTextBox")->text(), QString("https://example.org/a"));
               form.findChild<QComboBox*>("KindComboBox")->setCurrentIndex(1);
               type(form, "AddressTextBox", "ada@example.org");
               type(form, "LinkSubjectTextBox", "Hi $*MergeFirstName*$");
               ok(form);
             }),
             "<h1>Prices</h1><p><a href=\"mailto:ada@example.org?subject=Hi%20$*MergeFirstName*$\">look</a></p>");
    QCOMPARE(ask([&](QDialog& form) {
               QCOMPARE(form.findChild<QLineEdit*>("LinkSubjectTextBox")->text(), QString("Hi $*MergeFirstName*$"));
               form.findChild<QComboBox*>("KindComboBox")->setCurrentIndex(2);
               QCOMPARE(ok(form), QString("Please choose or name a place in the message."));
               form.findChild<QComboBox*>("PlaceComboBox")->setCurrentIndex(0);
               ok(form);
             }),
             QString("<h1 id=\"prices\">Prices</h1><p><a href=\"#prices\">look</a></p>"));
    QCOMPARE(ask([](QDialog& form) { form.findChild<QPushButton*>("RemoveButton")->click(); }),
             QString("<h1 id=\"prices\">Prices</h1><p>look</p>"));
  }

  void aPictureIsAskedForCheckedAndChanged() {
    OpenScene scene;
    QImage image(2400, 1200, QImage::Format_RGB32);
    image.fill(Qt::red);
    const auto photo = scene.rig.folder.path() / "photo.bmp";
    QVERIFY(image.save(PathToQt(photo)));
    const auto put = [](QDialog& form, const char* box, const char* text) {
      form.findChild<QLineEdit*>(box)->selectAll();
      QTest::keyClicks(form.findChild<QLineEdit*>(box), text);
    };
    const auto text = [](QDialog& form, const char* box) { return form.findChild<QLineEdit*>(box)->text(); };
    test::WhileOpen("PictureForm", [&](QDialog& form) {
      auto* ok = form.findChild<QPushButton*>("OKButton");
      auto* browse = form.findChild<QPushButton*>("BrowseButton");
      QVERIFY(!ok->isEnabled());  // nothing is chosen
      scene.rig.prompts.files = {scene.rig.folder.Write("page.png", "<html>")};
      browse->click();
      QTRY_VERIFY(form.findChild<QLabel*>("StatusLine")->text().contains("page.png is no picture"));
      QCOMPARE(form.focusWidget(), browse);  // for the next attempt
      QVERIFY(!ok->isEnabled());
      scene.rig.prompts.files = {photo};
      browse->click();
      QVERIFY(!ok->isEnabled());  // while it is looked at
      QTRY_VERIFY(ok->isEnabled());
      QVERIFY(form.findChild<QCheckBox*>("SmallerCheckBox")->isChecked());
      const QString said = form.findChild<QLabel*>("StatusLine")->text();
      QVERIFY2(said.contains("2,400") && said.contains("1,200") && said.contains("600 pixels"), qPrintable(said));
      QCOMPARE(text(form, "WidthTextBox") + 'x' + text(form, "HeightTextBox"), QString("600x300"));
      put(form, "HeightTextBox", "120");
      QCOMPARE(text(form, "WidthTextBox"), QString("240"));
      form.findChild<QLineEdit*>("BorderTextBox")->clear();
      scene.rig.Shown();
      ok->click();
      QCOMPARE(form.findChild<QLabel*>("StatusLine")->text(), QString("Please enter your border."));
      QCOMPARE(scene.rig.Shown(), QString());
      QCOMPARE(form.focusWidget()->objectName(), QString("BorderTextBox"));
      put(form, "BorderTextBox", "2");
      put(form, "AlternativeTextBox", "A red field");
      ok->click();
      QTRY_VERIFY(!form.isVisible());
    });
    scene.window->Dispatch(CommandId::kPicture);
    const QString copy = PathToQt(scene.rig.folders.Pictures() / "photo.jpg");
    const QString picture =
        "<img src=\"file://" + copy + "\" alt=\"A red field\" width=\"240\" height=\"120\" border=\"2\"";
    QVERIFY2(scene.Editor().Text()->contains(picture), qPrintable(*scene.Editor().Text()));
    QCOMPARE(QImage(copy).size(), QSize(1200, 600));
    scene.Editor().Evaluate(
        "(r=>{r.selectNode(document.images[0]);getSelection().removeAllRanges();"
        "getSelection().addRange(r)})(document.createRange())");
    QTRY_COMPARE(scene.Editor().State().picture.natural.width, 1200);
    test::WhileOpen("PictureForm", [&](QDialog& form) {
      QCOMPARE(text(form, "WidthTextBox"), QString("240"));
      QCOMPARE(text(form, "AlternativeTextBox"), QString("A red field"));
      put(form, "WidthTextBox", "100");
      form.findChild<QPushButton*>("OKButton")->click();
    });
    scene.window->Dispatch(CommandId::kPicture);
    QVERIFY2(scene.Editor().Text()->contains("width=\"100\" height=\"50\""), qPrintable(*scene.Editor().Text()));
    scene.window->Dispatch(CommandId::kUndo);
    QVERIFY2(scene.Editor().Text()->contains(picture), qPrintable(*scene.Editor().Text()));
  }

  void aTallPictureKeepsItsRatioInTheBoxes() {
    test::FormRig rig;
    QImage image(600, 12000, QImage::Format_Mono);
    const auto tall = rig.folder.path() / "tall.png";
    QVERIFY(image.save(PathToQt(tall)));
    PictureForm form(rig.prompts, rig.folders.Pictures(), 0, nullptr);
    auto* width = form.findChild<QLineEdit*>("WidthTextBox");
    const auto size = [&] { return width->text() + 'x' + form.findChild<QLineEdit*>("HeightTextBox")->text(); };
    form.Take(tall);
    QTRY_COMPARE(size(), QString("500x9999"));
    for (const auto& [typed, becomes] : {std::pair{"60", "60x1200"}, std::pair{"600", "500x9999"}}) {
      width->selectAll();
      QTest::keyClicks(width, typed);
      QCOMPARE(size(), QString(becomes));
    }
    form.Show({.address = "https://example.org/a.png", .choice = {.width = "600", .height = "12000"}, .natural = {}});
    QCOMPARE(size(), QString("500x9999"));
  }

  void aTableIsAskedForAndChanged() {
    OpenScene scene;
    QMenu& changes = *scene.window->findChild<QMenu*>("TableMenu");
    test::WhileOpen("TableForm", [&scene](QDialog& form) {
      const auto box = [&form](const char* name) { return form.findChild<QLineEdit*>(name); };
      const auto ok = [&form] {
        QTest::mouseClick(form.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok), Qt::LeftButton);
      };
      box("RowsTextBox")->clear();
      QTest::keyClicks(box("RowsTextBox"), "-1x");
      QCOMPARE(box("RowsTextBox")->text(), QString("1"));
      box("BorderTextBox")->setText("0");
      ok();
      QCOMPARE(scene.rig.Shown(), QString("warn: Please enter a valid border."));
      QCOMPARE(form.focusWidget(), box("BorderTextBox"));
      box("BorderTextBox")->setText("2");
      ok();
      QVERIFY(!form.isVisible());
    });
    scene.window->Dispatch(CommandId::kTable);
    QVERIFY2(scene.Editor().Text()->contains("border=\"2\" width=\"100%\""), qPrintable(*scene.Editor().Text()));
    QTRY_VERIFY(changes.isEnabled());
    changes.actions().at(1)->trigger();
    QCOMPARE(scene.Editor().Evaluate("document.querySelectorAll('td').length").toInt(), 4);
    scene.window->Dispatch(CommandId::kUndo);
    QCOMPARE(scene.Editor().Evaluate("document.querySelectorAll('td').length").toInt(), 2);
    scene.Editor().Evaluate("getSelection().collapse(document.body,0)");
    QTRY_VERIFY(!changes.isEnabled());
  }
};

}  // namespace quillcast::desktop

QTEST_MAIN(quillcast::desktop::CommandsTest)
#include "commands_test.moc"
