// The windows that ask for what goes into a message: what each refuses and where the keys then are, and what it puts
// into the body.
#include <QDialogButtonBox>
#include <QListWidget>
#include <QSignalSpy>
#include <QTabWidget>
#include <array>
#include <functional>
#include <tuple>
#include <vector>

#include "desktop/document/body_form.h"
#include "desktop/document/date_time_form.h"
#include "desktop/document/editor_document.h"
#include "desktop/document/html_editor.h"
#include "desktop/document/line_form.h"
#include "desktop/document/properties_form.h"
#include "desktop/document/signature_manager_form.h"
#include "desktop/document/table_form.h"
#include "desktop/document/template_form.h"
#include "desktop/hands.h"
#include "desktop/main_window.h"
#include "desktop/shell/command_table.h"
#include "desktop/widgets/empty_state.h"
#include "document/body_colours.h"
#include "document/document_pictures.h"
#include "document/own_templates.h"
#include "document/signature.h"
#include "document/table_html.h"
#include "platform/file.h"
#include "profile/main_window_contents.h"
#include "support/fake_clock.h"

namespace quillcast::desktop {
namespace {

using platform::Answer;

constexpr const char* kPicture =
    "iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAADUlEQVR42mNkYPhfDwAChwGA60e6kgAAAABJRU5ErkJggg==";

std::string PngBytes() { return QByteArray::fromBase64(kPicture).toStdString(); }

// Types into a box, or chooses in a list.
void Enter(QDialog& form, const char* name, const QString& value) {
  if (auto* choices = form.findChild<QComboBox*>(name)) return choices->setCurrentText(value);
  auto* box = form.findChild<QLineEdit*>(name);
  box->setFocus();
  box->selectAll();
  QTest::keyClick(box, Qt::Key_Delete);
  box->insert(value);  // as pasting does
}

void Press(QDialog& form, QDialogButtonBox::StandardButton which = QDialogButtonBox::Ok) {
  QTest::mouseClick(form.findChild<QDialogButtonBox*>()->button(which), Qt::LeftButton);
}

// A message in an editor of its own, and what belongs to it.
struct Desk {
  test::FormRig rig;
  HtmlEditor editor;
  EditorDocument document{editor, rig.folders};

  Desk() { editor.resize(600, 400); }
  QString Body() {
    const QString html = *editor.Text();
    const auto begin = html.indexOf('>', html.indexOf("<body")) + 1;
    return html.mid(begin, html.indexOf("</body>") - begin);
  }
};

using Entries = std::vector<std::pair<const char*, const char*>>;

struct InsertionRow {
  const char* name;
  Entries entries;
  const char* shown;  // and then the control that has the keys
  const char* focus;
  const char* html;  // nothing where it was refused
};

}  // namespace

class ComposeFormsTest : public QObject {
  Q_OBJECT

 private slots:
  void lines() {
    const std::vector<InsertionRow> rows = {
        {"as it opens", {}, "", "", "<hr>"},
        {"all that is not usual", Entries{{"WidthTextBox", "50"}, {"HeightTextBox", "4"}, {"AlignComboBox", "Right"}},
         "", "", R"(<hr align="right" width="50%" size="4">)"},
        {"no width", {{"WidthTextBox", ""}}, "warn: Please enter your width.", "WidthTextBox", ""},
        {"what is no digit does not come in", Entries{{"WidthTextBox", "-3x4\u0664"}, {"HeightTextBox", "1.2.3"}}, "",
         "", R"(<hr width="34%" size="1.23">)"}};
    for (const auto& row : rows) {
      test::FormRig rig;
      LineForm form(rig.prompts, nullptr);
      form.show();
      for (const auto& [box, value] : row.entries) Enter(form, box, value);
      Press(form);
      QCOMPARE(QString(row.name) + ": " + rig.Shown(), QString(row.name) + ": " + row.shown);
      QCOMPARE(form.result() == QDialog::Accepted, *row.html != '\0');
      if (*row.html == '\0') QCOMPARE(form.focusWidget()->objectName(), QString(row.focus));
      if (*row.html != '\0') QCOMPARE(ToQt(document::LineHtml(form.Choice())), QString(row.html));
    }
    test::FormRig rig;
    LineForm solid(rig.prompts, nullptr);
    solid.show();
    QTest::keyClick(solid.findChild<QCheckBox*>("SolidCheckBox"), Qt::Key_Space);
    QTest::keyClick(&solid, Qt::Key_Return);
    QCOMPARE(ToQt(document::LineHtml(solid.Choice())), QString("<hr noshade>"));
  }

  void tables() {
    const std::vector<InsertionRow> rows = {
        {"an alignment taken back", Entries{{"AlignComboBox", "Right"}, {"AlignComboBox", "As the text"}}, "", "",
         "<Table cell"},
        {"beyond the border", {{"BorderTextBox", "99.5"}}, "warn: Please enter a valid border.", "BorderTextBox", ""}};
    for (const auto& row : rows) {
      test::FormRig rig;
      TableForm form(rig.prompts, nullptr);
      form.show();
      for (const auto& [box, value] : row.entries) Enter(form, box, value);
      Press(form);
      QCOMPARE(QString(row.name) + ": " + rig.Shown(), QString(row.name) + ": " + row.shown);
      if (*row.html == '\0') QCOMPARE(form.focusWidget()->objectName(), QString(row.focus));
      if (*row.html != '\0') QVERIFY2(ToQt(document::TableHtml(form.Choice())).contains(row.html), row.name);
    }
  }

  void theDateAndTheTimeGoInTogether() {
    Desk desk;
    test::FakeClock clock;
    QVERIFY(desk.editor.SetHtml("<html><body><p>on x</p></body></html>"));
    desk.editor.Evaluate(
        "getSelection().setBaseAndExtent(document.body.firstChild.firstChild,3,"
        "document.body.firstChild.firstChild,4)");
    DateTimeForm form(desk.rig.prompts, clock, desk.editor, nullptr);
    form.show();
    QCOMPARE(test::RowsOf(form, "DateListBox"),
             QStringList({"7/3/26", "07/03/2026", "2026/07/03", "Friday, July 03, 2026"}));
    QCOMPARE(test::RowsOf(form, "TimeListBox").mid(0, 2), QStringList({"09:05:07 AM", "09:05:07"}));
    Press(form);
    QCOMPARE(desk.rig.Shown(), QString("warn: Please select date format."));
    QCOMPARE(form.focusWidget()->objectName(), QString("DateListBox"));
    QTest::keyClick(form.focusWidget(), Qt::Key_Down);
    QTest::keyClick(form.focusWidget(), Qt::Key_End);
    Press(form);
    QCOMPARE(desk.rig.Shown(), QString("warn: Please select time format."));
    QCOMPARE(form.focusWidget()->objectName(), QString("TimeListBox"));
    QTest::keyClick(form.focusWidget(), Qt::Key_Down);  // the first row: nothing was chosen
    QTest::keyClick(form.focusWidget(), Qt::Key_Return);
    QVERIFY(!form.isVisible());
    QCOMPARE(desk.Body(), QString("<p>on Friday, July 03, 2026 - 09:05:07 AM</p>"));
    desk.editor.Run(EditorCommand::kUndo);
    QCOMPARE(desk.Body(), QString("<p>on x</p>"));
  }

  void pageColoursAreCheckedAndUndoneAtOnce() {
    test::FormRig rig;
    const document::BodyColours found{.text = "navy", .background = "#FFFFFF"};
    const std::vector<InsertionRow> rows = {
        {"left as it is, a name too", {}, "", "", "navy|||||#FFFFFF"},
        {"typed", {{"LinkColourTextBox", "#0a0B0c"}}, "", "", "navy|#0a0B0c||||#FFFFFF"},
        {"a name", {{"TextColourTextBox", "red"}}, "warn: Please enter a valid text colour.", "TextColourTextBox", ""},
        {"the first of two", Entries{{"BackgroundColourTextBox", "x"}, {"ActiveColourTextBox", "#GGGGGG"}},
         "warn: Please enter a valid active link colour.", "ActiveColourTextBox", ""}};
    for (const auto& row : rows) {
      BodyForm form(rig.prompts, rig.folders.Pictures(), found, nullptr);
      form.show();
      QVERIFY(test::Text(form, "StatusLine").contains("#1A5276"));  // how a colour is written
      for (const auto& [box, value] : row.entries) Enter(form, box, value);
      const auto sample = [&form](QString box) {
        return form.findChild<QPushButton*>(box.replace("TextBox", "Button"))->icon().pixmap(18).toImage();
      };
      const bool is_refused = *row.html == '\0';
      if (is_refused) QCOMPARE(sample(row.focus), sample("LinkColourTextBox"));  // as of an empty box
      Press(form);
      QCOMPARE(QString(row.name) + ": " + rig.Shown(), QString(row.name) + ": " + row.shown);
      if (is_refused) {
        QCOMPARE(form.focusWidget()->objectName(), QString(row.focus));
        continue;
      }
      QVERIFY(sample("TextColourTextBox") != sample("ActiveColourTextBox"));  // a name that was found
      const auto now = form.Choice();
      QCOMPARE(ToQt(now.text + '|' + now.link + '|' + now.visited + '|' + now.active + '|' + now.picture + '|' +
                    now.background),
               QString(row.html));
    }
    QVERIFY(rig.prompts.shown.empty());
  }

  void oneUndoTakesThePageColoursBack() {
    OpenScene scene;
    HtmlEditor& editor = scene.Editor();
    const QString before =
        "<html><head><title>t</title></head><body dir=\"ltr\" text=\"#111111\"><p>one</p></body></html>";
    editor.SetHtml(before);
    editor.InsertHtml("A");
    const QString typed = *editor.Text();
    scene.rig.prompts.files = {scene.rig.folder.Write("paper.png", PngBytes())};
    test::WhileOpen("BodyForm", [](QDialog& form) {
      Enter(form, "TextColourTextBox", "");
      Enter(form, "LinkColourTextBox", "#1A5276");
      test::Press(form, "BrowseButton");
      QTRY_VERIFY(form.findChild<QPushButton*>("NoneButton")->isEnabled());
      Press(form);
    });
    scene.window->Dispatch(CommandId::kBody);
    const QString coloured = *editor.Text();
    const auto copy = scene.rig.folders.Pictures() / "paper.png";
    const QString picture = ToQt(document::FileAddress(copy));
    QVERIFY2(coloured.contains("<body dir=\"ltr\" link=\"#1A5276\" background=\"" + picture + "\">"),
             qPrintable(coloured));
    QVERIFY(std::filesystem::exists(copy));
    editor.InsertHtml("B");
    const QString both = *editor.Text();
    QVERIFY(both != coloured);
    for (const auto& [command, html] :
         std::initializer_list<std::pair<CommandId, QString>>{{CommandId::kUndo, coloured},
                                                              {CommandId::kUndo, typed},
                                                              {CommandId::kUndo, before},
                                                              {CommandId::kRedo, typed},
                                                              {CommandId::kRedo, coloured},
                                                              {CommandId::kRedo, both}}) {
      scene.window->Dispatch(command);
      QCOMPARE(*editor.Text(), html);
    }
  }

  void aDesignIsCheckedInOrder() {
    Desk desk;
    QVERIFY(desk.document.StartNew(""));
    TemplateForm form(desk.rig.program, desk.document, desk.editor, nullptr);
    form.show();
    QCOMPARE(test::RowsOf(form, "EmailListBox"), QStringList({"Government", "Health", "Legal", "Sports", "Travel"}));
    QStringList by_tab;
    for (const QWidget* at = form.nextInFocusChain(); at != &form; at = at->nextInFocusChain()) {
      const bool is_stop = at->isVisible() && at->isEnabled() && (at->focusPolicy() & Qt::TabFocus) != 0;
      if (is_stop && !at->objectName().isEmpty()) by_tab << at->objectName();
    }
    QCOMPARE(by_tab.join(' '),
             QString("EmailListBox CompanyTextBox WebSiteTextBox EmailTextBox SubjectTextBox OwnListBox KeepButton "
                     "ImportButton OKButton CancelButton"));
    const std::array<std::array<const char*, 3>, 5> steps = {
        {{"Please select a template.", "EmailListBox", ""},
         {"Please enter your company name.", "CompanyTextBox", "Hills & Sea, with www.tarnwickco.example"},
         {"Please enter your web site.", "WebSiteTextBox", "hills.example"},
         {"Please enter unsubscribe email.", "EmailTextBox", "leave@hills.example"},
         {"Please enter unsubscribe subject.", "SubjectTextBox", "Leave"}}};
    for (const auto& [message, control, value] : steps) {
      Press(form);
      QCOMPARE(desk.rig.Shown(), QString("warn: ") + message);
      QCOMPARE(form.focusWidget()->objectName(), QString(control));
      if (*value == '\0') {
        QTest::keyClick(form.focusWidget(), Qt::Key_End);
      } else {
        QTest::keyClicks(form.focusWidget(), value);
      }
    }
    QTest::keyClick(form.focusWidget(), Qt::Key_Return);
    QTRY_VERIFY(!form.isVisible());
    QVERIFY(desk.rig.Shown().isEmpty());  // nothing was changed, so nothing is asked
    const QString html = *desk.editor.Text();
    // The company's own web site is replaced in its turn.
    QVERIFY(html.contains("Hills & Sea, with hills.example"));
    QVERIFY(html.contains("mailto:leave@hills.example?subject=Leave"));
    QVERIFY(html.contains(ToQt((desk.rig.folders.program / "Template5.jpg").string())));
    for (const auto& sample :
         {document::kSampleCompany, document::kSampleWebSite, document::kSampleMailbox, document::kSampleSubject})
      QVERIFY2(!html.contains(ToQt(sample)), std::string(sample).c_str());
    QVERIFY(!desk.document.HasUnsavedChanges());
  }

  void whatWasChangedIsOfferedToBeSavedBeforeATemplate() {
    struct Case {
      Answer answer;
      QString saved;  // in the file that is picked
      bool replaced, is_draft;
    };
    for (const Case& c : {Case{Answer::kCancel, "", false, false}, Case{Answer::kNo, "", true, true},
                          Case{Answer::kYes, "<p>mine</p>", true, false}, Case{Answer::kYes, "none", false, false}}) {
      Scene scene;
      scene.rig.FillInAccount();
      scene.rig.AddGroup("Customers", {"bob@example.net"});
      QVERIFY(document::OwnTemplates(scene.rig.folders.Templates())
                  .Keep("Monthly", {"<html><body><p>kept</p></body></html>", {}, {}}, document::IfThere::kFail));
      scene.Open();
      scene.Find<QLineEdit>("SubjectTextBox").setText("Papers");
      scene.Editor().SetHtml("<html><body><p>mine</p></body></html>", {}, true);
      const auto file = scene.rig.folder.path() / "mine.html";
      if (c.saved != "none") scene.rig.prompts.files = {file};
      scene.rig.prompts.answers = {c.answer};
      test::WhileOpen("TemplateForm", [&c](QDialog& form) {
        form.findChild<QListWidget*>("OwnListBox")->setCurrentRow(0);
        Press(form);
        if (c.replaced) QTRY_VERIFY(!form.isVisible());
        if (!c.replaced) QVERIFY(form.isVisible());
      });
      scene.window->Dispatch(CommandId::kTemplate);
      QCOMPARE(scene.rig.Shown(), QString("ask or cancel: Do you want to save the changes?") +
                                      (c.answer == Answer::kYes ? " | save: Save" : ""));
      QVERIFY(scene.Editor().Text()->contains(c.replaced ? "<p>kept</p>" : "<p>mine</p>"));
      QCOMPARE(ToQt(test::ReadAll(file)).contains("<p>mine</p>"), c.saved.startsWith('<'));
      QCOMPARE(scene.Find<QLineEdit>("SubjectTextBox").text(), QString("Papers"));
      QCOMPARE(!scene.Notice().isEmpty(), c.is_draft);
    }
  }

  // It is in no file.
  void whatATemplateFilledInIsNeverLost() {
    const auto use_template = [](Scene& scene) {
      test::WhileOpen("TemplateForm", [](QDialog& form) {
        form.findChild<QListWidget*>("OwnListBox")->setCurrentRow(0);
        Press(form);
        QTRY_VERIFY(!form.isVisible());
      });
      scene.window->Dispatch(CommandId::kTemplate);
    };
    for (const auto& [way, shown, leave] :
         std::vector<std::tuple<const char*, const char*, std::function<void(Scene&)>>>{
             {"New", "", [](Scene& scene) { scene.window->Dispatch(CommandId::kNew); }},
             {"Open", "open: Open", [](Scene& scene) { scene.window->Dispatch(CommandId::kOpen); }},
             {"a second one", "", use_template}}) {
      Scene scene;
      scene.rig.FillInAccount();
      scene.rig.AddGroup("Customers", {"bob@example.net"});
      const document::OwnTemplates own(scene.rig.folders.Templates());
      QVERIFY(own.Keep("Monthly", {"<html><body><p>first</p></body></html>", {}, {}}, document::IfThere::kFail));
      scene.Open();
      use_template(scene);
      QVERIFY2(scene.Editor().Text()->contains("<p>first</p>") && scene.Notice().isEmpty(), way);
      QVERIFY(own.Keep("Monthly", {"<html><body><p>next</p></body></html>", {}, {}}, document::IfThere::kReplace));
      scene.rig.prompts.files = {scene.rig.folder.Write("other.html", "<p>other</p>")};
      leave(scene);
      QCOMPARE(QString(way) + ": " + scene.rig.Shown(), QString(way) + ": " + shown);
      QVERIFY2(!scene.Editor().Text()->contains("<p>first</p>") && !scene.Notice().isEmpty(), way);
      QVERIFY(ToQt(document::Drafts(scene.rig.folders.data).ReadOffered()->document.html).contains("<p>first</p>"));
    }
  }

  void thePreviewFollowsWhatIsTyped() {
    Desk desk;
    QVERIFY(desk.document.StartNew(""));
    TemplateForm form(desk.rig.program, desk.document, desk.editor, nullptr);
    form.show();
    auto* preview = form.findChild<HtmlEditor*>("TemplatePreview");
    QTRY_VERIFY(!preview->Evaluate("1").isNull());  // the engine is there
    QSignalSpy shown(&form, &TemplateForm::Shown);
    auto* designs = form.findChild<QListWidget*>("EmailListBox");
    // All in one page, for another takes the engine far longer.
    for (int row = 0; row < 5; ++row) {
      designs->setCurrentRow(row);
      QTRY_COMPARE(shown.size(), row + 1);
      QVERIFY(preview->Text()->contains(QString("Template%1.jpg").arg(row + 1)));
      QTRY_VERIFY(preview->Evaluate("Array.from(document.images).every(image => image.naturalWidth > 0)").toBool());
      QCOMPARE(preview->Evaluate("window.designs=(window.designs||0)+1").toInt(), row + 1);
    }
    // Of those that are passed over quickly the last alone.
    for (int row = 0; row < 5; ++row) designs->setCurrentRow(row);
    QTRY_COMPARE(shown.size(), 6);
    QVERIFY(preview->PlainText().contains(ToQt(document::kSampleCompany)));
    QTest::keyClicks(form.findChild<QLineEdit*>("CompanyTextBox"), "Hills <b>");
    QTRY_VERIFY(preview->PlainText().contains("Hills"));
    Enter(form, "WebSiteTextBox", "https://hills.example");
    form.findChild<QLineEdit*>("EmailTextBox")->setFocus();
    QTRY_VERIFY2(test::Text(form, "NotesLabel").contains("hills.example"), qPrintable(test::Text(form, "NotesLabel")));
    auto* site = form.findChild<QLineEdit*>("WebSiteTextBox");
    site->setFocus();
    site->setText("hills.example");
    QTRY_VERIFY2(!test::Text(form, "NotesLabel").contains("web site"), "mended, and told still");
    QVERIFY(site->width() >= 200);
    // What was typed last is shown, so that nothing replaces the page from here on.
    QTRY_VERIFY(preview->PlainText().contains("hills.example") && !preview->PlainText().contains("https://"));
    // Nothing of it can be typed into, and Escape is the window's.
    preview->Evaluate("document.body.innerHTML='<p contenteditable>a</p>';document.querySelector('p').focus()");
    preview->setFocus();
    QTest::keyClick(preview->InputWidget(), Qt::Key_X);
    QVERIFY(preview->Evaluate("document.querySelector('p')===document.activeElement").toBool());
    QCOMPARE(preview->PlainText().trimmed(), QString("a"));
    QVERIFY(preview->is_read_only());
    QTest::keyClick(preview->InputWidget(), Qt::Key_Escape);
    QVERIFY(!form.isVisible());
  }

  void aTemplateFolderThatCannotBeReadIsTold() {
    Desk desk;
    QVERIFY(platform::ReplaceFile(desk.rig.folders.Templates(), "in the way"));
    TemplateForm form(desk.rig.program, desk.document, desk.editor, nullptr);
    form.show();
    QTRY_VERIFY2(test::Text(form, "StatusLine").contains("Templates"), qPrintable(test::Text(form, "StatusLine")));
    const auto* empty = form.findChild<QListWidget*>("OwnListBox")->findChild<EmptyState*>();
    QVERIFY2(empty->isVisible() && !empty->text().startsWith("None"), qPrintable(empty->text()));
  }

  // The engine's time grows with the square of the depth.
  void whatIsNestedTooDeeplyIsToldBeforeItIsLoaded() {
    Desk desk;
    std::string deep = "<html><body>";
    for (int n = 0; n < 100'000; ++n) deep += "<div>";
    QVERIFY(desk.document.Open(desk.rig.folder.Write("plain.html", "<p>kept")));
    QVERIFY(!desk.document.StartFrom(deep));
    QVERIFY(desk.editor.Text()->contains("kept") && desk.document.FileName().filename() == "plain.html");
    QVERIFY(!desk.document.StartNew(deep));  // a signature
    QVERIFY(!desk.editor.Text()->contains("kept") && desk.document.FileName().empty());
    QVERIFY(platform::EnsureFolder(desk.rig.folders.Templates()));
    QVERIFY(platform::ReplaceFile(desk.rig.folders.Templates() / "Deep.htm", deep));
    TemplateForm form(desk.rig.program, desk.document, desk.editor, nullptr);
    form.show();
    auto* own = form.findChild<QListWidget*>("OwnListBox");
    QTRY_COMPARE(own->count(), 1);
    own->setCurrentRow(0);
    QTRY_VERIFY2(test::Text(form, "StatusLine").contains("stand in each other"),
                 qPrintable(test::Text(form, "StatusLine")));
    QVERIFY(document::SaveSignature({true, deep}, desk.rig.settings));
    SignatureManagerForm signature(desk.rig.program, nullptr);
    signature.show();
    QTRY_VERIFY(test::Text(signature, "StatusLine").contains("stand in each other"));
  }

  // A picture that takes its time: longer than it takes to close the window.
  void whatIsClosedInTheMiddleOfACopyKeepsNothing() {
    Desk desk;
    const auto picture = desk.rig.folder.Write("letter/sea.png", PngBytes());
    std::filesystem::resize_file(picture, std::uintmax_t{256} * 1024 * 1024);
    QVERIFY(
        desk.document.Open(desk.rig.folder.Write("letter/a.html", "<html><body><img src=\"sea.png\"></body></html>")));
    const document::OwnTemplates own(desk.rig.folders.Templates());
    {
      TemplateForm form(desk.rig.program, desk.document, desk.editor, nullptr);
      form.show();
      test::WhileOpen("TemplateNameForm", [](QDialog& dialog) {
        Enter(dialog, "NameTextBox", "Monthly");
        Press(dialog);
      });
      test::Press(form, "KeepButton");
      QCOMPARE(test::Text(form, "StatusLine"), QString("Copying… Cancel gives it up."));
      Press(form);  // would give it up, too
      QVERIFY(form.isVisible());
      Press(form, QDialogButtonBox::Cancel);
    }
    QVERIFY(!own.Has("Monthly"));
    {
      SignatureManagerForm form(desk.rig.program, nullptr);
      form.show();
      QVERIFY(QSignalSpy(&form, &SignatureManagerForm::Ready).wait());
      auto* editor = form.findChild<HtmlEditor*>("SignatureEditor");
      QVERIFY(editor->SetHtml("<img src=\"" + ToQt(document::FileAddress(picture)) + "\">"));
      Press(form, QDialogButtonBox::Save);
      QCOMPARE(test::Text(form, "StatusLine"), QString("Copying the pictures… Close gives it up."));
      QVERIFY(form.isVisible());
      QTest::keyClick(editor->InputWidget(), Qt::Key_Escape);  // closes it, also from the text
      QVERIFY(!form.isVisible());
    }
    QCoreApplication::processEvents();
    QCOMPARE(desk.rig.settings.Read("Signature", "Message", "absent")->c_str(), "absent");
  }

  void ownTemplatesAreKeptAndGivenAway() {
    Desk desk;
    desk.rig.folder.Write("letter/sea.png", PngBytes());
    const auto letter = desk.rig.folder.Write("letter/letter.html", "<html><body><img src=\"sea.png\">L</body></html>");
    QVERIFY(desk.document.Open(letter));
    TemplateForm form(desk.rig.program, desk.document, desk.editor, nullptr);
    form.show();
    const auto status = [&form] { return test::Text(form, "StatusLine"); };
    const auto name = [](const char* text, const char* refused = nullptr) {
      test::WhileOpen("TemplateNameForm", [text, refused](QDialog& dialog) {
        Enter(dialog, "NameTextBox", text);
        Press(dialog);
        QCOMPARE(dialog.isVisible(), refused != nullptr);
        if (refused == nullptr) return;
        QCOMPARE(test::Text(dialog, "StatusLine"), QString(refused));
        QTest::qWait(1);  // until it is laid out
        const auto* line = dialog.findChild<QLabel*>("StatusLine");
        QVERIFY2(line->height() >= line->heightForWidth(line->width()), "it is cut");
        QCOMPARE(dialog.focusWidget()->objectName(), QString("NameTextBox"));
      });
    };
    QVERIFY(!form.findChild<QPushButton*>("DeleteButton")->isEnabled());
    name("travel", "That is the name of a design. Please enter another one.");
    test::Press(form, "KeepButton");
    name(".hidden", "The name of a template begins with no dot and no blank, and ends with no blank.");
    test::Press(form, "KeepButton");
    name(" Monthly ");
    test::Press(form, "KeepButton");
    QTRY_COMPARE(test::RowsOf(form, "OwnListBox"), QStringList("Monthly"));
    QTRY_COMPARE(status(), QString("The message is kept as the template “Monthly”."));
    QVERIFY(QFile::exists(PathToQt(desk.rig.folders.Templates() / "Pictures" / "sea.png")));
    QTRY_VERIFY(form.findChild<QPushButton*>("KeepButton")->isEnabled());
    // The name is taken: asked, and left.
    name("Monthly", "");
    test::Press(form, "KeepButton");
    QCOMPARE(desk.rig.Shown(), QString("ask: There is a template “Monthly” already./Would you like to replace it?"));

    desk.rig.prompts.files = {desk.rig.folder.path() / "out" / "away.html"};
    std::filesystem::create_directories(desk.rig.folder.path() / "out");
    test::Press(form, "ExportButton");
    QTRY_VERIFY(status().contains("away.html"));
    QVERIFY(QFile::exists(PathToQt(desk.rig.folder.path() / "out" / "away_files" / "sea.png")));
    QTRY_VERIFY(form.findChild<QPushButton*>("ImportButton")->isEnabled());
    test::WhileOpen("TemplateNameForm", [](QDialog& dialog) {
      QCOMPARE(test::Text(dialog, "NameTextBox"), QString("away"));
      Press(dialog);
    });
    test::Press(form, "ImportButton");
    QTRY_COMPARE(test::RowsOf(form, "OwnListBox"), QStringList({"Monthly", "away"}));
    QTRY_VERIFY(form.findChild<QPushButton*>("RenameButton")->isEnabled());
    name("away");  // the same: nothing is asked
    test::Press(form, "RenameButton");
    name("Yearly");
    test::Press(form, "RenameButton");
    QCOMPARE(test::RowsOf(form, "OwnListBox"), QStringList({"Monthly", "Yearly"}));
    QCOMPARE(desk.rig.Shown(), QString("save: Export | open: Import"));
    test::Press(form, "DeleteButton");
    QCOMPARE(desk.rig.Shown(), QString("ask: Are you sure you want to delete the template “Yearly”?"));
    QCOMPARE(test::RowsOf(form, "OwnListBox").size(), 2);
    desk.rig.prompts.answers = {Answer::kYes};
    test::Press(form, "DeleteButton");
    QCOMPARE(test::RowsOf(form, "OwnListBox"), QStringList("Monthly"));
    // What was broken from outside is told, and nothing is lost.
    form.findChild<QListWidget*>("OwnListBox")->setCurrentRow(0);
    std::filesystem::remove(desk.rig.folders.Templates() / "Monthly.htm");
    Press(form);
    QTRY_COMPARE(status(), QString("There is no template \"Monthly\". Choose one that is listed."));
    QVERIFY(form.isVisible() && desk.editor.Text()->contains("sea.png"));
    // Without the designs there is a remedy.
    profile::Folders bare = desk.rig.folders;
    bare.program = desk.rig.folder.path() / "bare";
    const profile::Program program{bare,           desk.rig.settings, desk.rig.prompts, desk.rig.desktop,
                                   desk.rig.power, desk.rig.clock,    desk.rig.entropy, desk.rig.keyring};
    TemplateForm broken(program, desk.document, desk.editor, nullptr);
    broken.show();
    broken.findChild<QListWidget*>("EmailListBox")->setCurrentRow(4);
    QTRY_VERIFY(test::Text(broken, "StatusLine").contains("Install the program again"));
  }

  void propertiesTellWhatWouldHurt() {
    test::FormRig rig;
    document::MessageDocument message;
    message.html =
        "<html lang=\"de\" dir=\"rtl\"><head><title>News</title><meta charset=\"utf-8\"></head><body><p>Three words "
        "here</p><a href=\"https://a.example/x\">https://b.example</a><img src=\"gone.png\"></body></html>";
    message.base_folder = rig.folder.path();
    PropertiesForm form(message, rig.folder.path() / "news.html", false, nullptr);
    form.show();
    QSignalSpy known(&form, &PropertiesForm::Known);
    QVERIFY(known.wait());
    const auto label = [&form](const char* name) { return test::Text(form, name); };
    QCOMPARE(label("LocationLabel"), PathToQt(rig.folder.path() / "news.html"));
    QCOMPARE(label("TitleLabel"), QString("News"));
    QCOMPARE(label("DirectionLabel"), QString("Right to Left"));
    QCOMPARE(label("LanguageLabel"), QString("German (Standard)"));
    QCOMPARE(label("CharSetLabel"), QString("Unicode (UTF-8)"));
    QVERIFY2(label("StatusLine").startsWith("4 words"), qPrintable(label("StatusLine")));
    QVERIFY(test::RowsOf(form, "FindingsList").size() >= 3);
    QCOMPARE(test::RowsOf(form, "LinksList").size(), 1);
    QVERIFY(test::RowsOf(form, "LinksList").front().contains("https://a.example/x"));
    QVERIFY(test::RowsOf(form, "PicturesList").front().contains("gone.png"));
    QVERIFY(form.findChild<QTabWidget*>()->tabText(1).endsWith("(1)"));
    QTest::keyClick(&form, Qt::Key_Return);
    QVERIFY(!form.isVisible());

    PropertiesForm fresh({}, {}, true, nullptr);
    const auto empty = [&fresh] {
      return fresh.findChild<QWidget*>("LinksList")->findChild<QLabel*>("EmptyState")->text();
    };
    QCOMPARE(empty(), QString("Looking at the message…"));
    QSignalSpy nothing(&fresh, &PropertiesForm::Known);
    QVERIFY(nothing.wait());
    QCOMPARE(empty(), QString("The message has no links."));
    for (const auto& [name, text] : std::initializer_list<std::pair<const char*, const char*>>{
             {"LocationLabel", "Unsaved"}, {"TitleLabel", "Not Available"}, {"DirectionLabel", "None"}})
      QCOMPARE(test::Text(fresh, name), QString(text));
  }

  void theSignatureIsKeptToTheByteAndBeginsMessages() {
    OpenScene scene;
    const auto with = [&scene](const std::function<void(QDialog&)>& act) {
      // Its editor waits in a loop of its own, which has to be over.
      test::WhileOpen("SignatureManagerForm", act,
                      [](const QDialog& form) { return form.findChild<QPushButton*>("SaveButton")->isEnabled(); });
      scene.window->Dispatch(CommandId::kSignature);
    };
    const auto html = [](QDialog& form) { return *form.findChild<HtmlEditor*>("SignatureEditor")->Text(); };
    const QString built_in = ToQt(document::kBuiltInSignature);
    with([&](QDialog& form) {
      QCOMPARE(html(form), built_in);
      QVERIFY(!form.findChild<QCheckBox*>("SignatureCheckBox")->isChecked());
      form.findChild<QCheckBox*>("SignatureCheckBox")->click();
      Press(form, QDialogButtonBox::Close);
    });
    QCOMPARE(scene.rig.settings.Read("Signature", "Status", "absent")->c_str(), "absent");
    with([&](QDialog& form) {
      form.findChild<QCheckBox*>("SignatureCheckBox")->click();
      Press(form, QDialogButtonBox::Save);
      QTRY_VERIFY(!form.isVisible());
    });
    QCOMPARE(scene.rig.settings.Read("Signature", "Status", "")->c_str(), "1");
    QCOMPARE(ToQt(*scene.rig.settings.Read("Signature", "Message", "")), built_in);
    scene.window->Dispatch(CommandId::kNew);
    QCOMPARE(*scene.Editor().Text(), built_in);
    QVERIFY(!scene.Editor().IsModified());
    with([&](QDialog& form) {
      auto* editor = form.findChild<HtmlEditor*>("SignatureEditor");
      QVERIFY(form.findChild<QCheckBox*>("SignatureCheckBox")->isChecked());
      editor->Run(EditorCommand::kSelectAll);
      editor->InsertHtml("Ada");
      editor->InsertPictures({PathToQt(scene.rig.folder.Write("me.png", PngBytes()))});
      QTRY_VERIFY(editor->Text()->contains("me.png"));
      Press(form, QDialogButtonBox::Save);
      QTRY_VERIFY(!form.isVisible());
    });
    scene.window->Dispatch(CommandId::kNew);
    QVERIFY(scene.Editor().Text()->contains("Ada"));
    QVERIFY(scene.Editor().Text()->contains(ToQt(document::FileAddress(scene.rig.folders.Pictures() / "me.png"))));
    scene.rig.Shown();
    scene.rig.prompts.answers = {Answer::kNo, Answer::kYes};
    with([&](QDialog& form) {
      Press(form, QDialogButtonBox::Reset);
      QCOMPARE(scene.rig.Shown(), QString("ask: You are just about to wipe out your signature settings./Are you sure "
                                          "you want to proceed?"));
      QVERIFY(form.isVisible() && html(form).contains("Ada"));
      Press(form, QDialogButtonBox::Reset);
      QVERIFY(!form.isVisible());
    });
    with([&](QDialog& form) { QCOMPARE(html(form), built_in); });
    scene.window->Dispatch(CommandId::kNew);
    QVERIFY(!scene.Editor().Text()->contains("Verdana"));  // the built-in one is shown, never put in unasked
  }

  void aSignatureFromElsewhereIsShownSafely() {
    std::string large = "<html><body>";
    while (large.size() < 5 * 1024 * 1024) large += "<p>Information contained in this email.</p>";
    for (const auto& [html, told] : std::vector<std::pair<std::string, const char*>>{
             {"Ada\nLovelace", "no HTML"},
             {"<body onload=\"document.title='ran'\"><script>document.title='ran'</script>Ada", "script"},
             {large + "</body></html>", "of each message"}}) {
      test::FormRig rig;
      QVERIFY(document::SaveSignature({true, html}, rig.settings));
      SignatureManagerForm form(rig.program, nullptr);
      QSignalSpy ready(&form, &SignatureManagerForm::Ready);
      form.show();
      QVERIFY(ready.wait());
      auto* notes = form.findChild<QLabel*>("SignatureNotesLabel");
      QTRY_VERIFY2(notes->isVisible() && notes->text().contains(told), qPrintable(notes->text()));
      auto* editor = form.findChild<HtmlEditor*>("SignatureEditor");
      QVERIFY(editor->Evaluate("document.title").toString() != "ran");
      QCOMPARE(*editor->Text(), ToQt(html));
    }
    // What cannot be kept stays in the editor; what cannot be read is not written over.
    test::FormRig rig;
    SignatureManagerForm open(rig.program, nullptr);
    open.show();
    QVERIFY(QSignalSpy(&open, &SignatureManagerForm::Ready).wait());
    QVERIFY(
        platform::ReplaceFile(rig.folders.settings, "no database at all, but longer than a page of one needs to be"));
    Press(open, QDialogButtonBox::Save);
    QTRY_VERIFY(open.findChild<QPushButton*>("SaveButton")->isEnabled());
    QVERIFY(open.isVisible() && !test::Text(open, "StatusLine").isEmpty());
    SignatureManagerForm form(rig.program, nullptr);
    form.show();
    QTRY_VERIFY(!test::Text(form, "StatusLine").isEmpty());
    QVERIFY(!form.findChild<QPushButton*>("SaveButton")->isEnabled());
  }

  // What takes the engine long comes behind the window, and once.
  void theSignatureOpensAtOnce() {
    test::FormRig rig;
    SignatureManagerForm form(rig.program, nullptr);
    QSignalSpy ready(&form, &SignatureManagerForm::Ready);
    auto* editor = form.findChild<HtmlEditor*>("SignatureEditor");
    QStringList order;
    connect(editor, &HtmlEditor::Loaded, this, [&] { order << (form.isVisible() ? "loaded" : "loaded unseen"); });
    form.show();
    QVERIFY(!form.findChild<QPushButton*>("SaveButton")->isEnabled());
    order << "shown";
    QVERIFY(ready.wait());
    QCOMPARE(order, QStringList({"shown", "loaded"}));
    QTest::keyClick(editor->InputWidget(), Qt::Key_Tab);
    QTRY_COMPARE(form.focusWidget()->objectName(), QString("SignatureCheckBox"));
    QVERIFY(!editor->IsModified());
  }
};

}  // namespace quillcast::desktop

QTEST_MAIN(quillcast::desktop::ComposeFormsTest)
#include "compose_forms_test.moc"
