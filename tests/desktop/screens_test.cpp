// Shows every window, light and dark; with QUILLCAST_SCREENS set to a folder, a picture of each is put there.
#include <QAbstractItemView>
#include <QAccessible>
#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFile>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMainWindow>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPrinter>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QStyleFactory>
#include <QTabBar>
#include <QTabWidget>
#include <QTest>
#include <QTranslator>
#include <memory>

#include "desktop/account/email_manager_form.h"
#include "desktop/account/outlook_express_form.h"
#include "desktop/account/thread_form.h"
#include "desktop/document/attachments_form.h"
#include "desktop/document/body_form.h"
#include "desktop/document/date_time_form.h"
#include "desktop/document/editor_document.h"
#include "desktop/document/find_bar.h"
#include "desktop/document/font_form.h"
#include "desktop/document/html_editor.h"
#include "desktop/document/line_form.h"
#include "desktop/document/link_form.h"
#include "desktop/document/picture_form.h"
#include "desktop/document/properties_form.h"
#include "desktop/document/signature_manager_form.h"
#include "desktop/document/table_form.h"
#include "desktop/document/template_form.h"
#include "desktop/document/template_name_form.h"
#include "desktop/domain/conversion_form.h"
#include "desktop/domain/domain_check_form.h"
#include "desktop/domain/domain_tools_form.h"
#include "desktop/domain/extra_form5.h"
#include "desktop/domain/mx_lookup_form.h"
#include "desktop/form_rig.h"
#include "desktop/mail_file/extra_form1.h"
#include "desktop/mail_file/extra_form2.h"
#include "desktop/mail_file/extra_form4.h"
#include "desktop/mail_file/message_form.h"
#include "desktop/recipients/capitalize_form.h"
#include "desktop/recipients/duplicates_form.h"
#include "desktop/recipients/group_manager_form.h"
#include "desktop/recipients/group_new_form.h"
#include "desktop/recipients/group_rename_form.h"
#include "desktop/recipients/mapping_keep_form.h"
#include "desktop/recipients/merge_form.h"
#include "desktop/recipients/recipient_add_form.h"
#include "desktop/recipients/recipient_export_form.h"
#include "desktop/recipients/recipient_import_form.h"
#include "desktop/recipients/recipient_modify_form1.h"
#include "desktop/recipients/recipient_modify_form2.h"
#include "desktop/recipients/recipient_move_form.h"
#include "desktop/recipients/recipient_print_form.h"
#include "desktop/recipients/recipient_search_form.h"
#include "desktop/recipients/sort_form.h"
#include "desktop/recipients/where_form.h"
#include "desktop/run/extra_form3.h"
#include "desktop/run/history_manager_form.h"
#include "desktop/run/kept_runs_form.h"
#include "desktop/run/preview_form.h"
#include "desktop/run/run_pace_form.h"
#include "desktop/run/send_mail_form1.h"
#include "desktop/run/shut_down_form.h"
#include "desktop/seen_colours.h"
#include "desktop/shell/about_form.h"
#include "desktop/shell/help_form.h"
#include "desktop/shell/main_form.h"
#include "desktop/shell/message_header.h"
#include "desktop/shell/notices.h"
#include "desktop/shell/practice_form.h"
#include "desktop/shell/splash_form.h"
#include "desktop/shell/tips_form.h"
#include "desktop/shell/tutorial_form.h"
#include "desktop/shell/update_main_form.h"
#include "desktop/support/support_form.h"
#include "desktop/tab_walk.h"
#include "desktop/widgets/empty_state.h"
#include "desktop/widgets/filter_box.h"
#include "desktop/widgets/focus_ring.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/look.h"
#include "desktop/widgets/note_panel.h"
#include "desktop/widgets/row_list.h"
#include "desktop/widgets/status_line.h"
#include "net/dns/dns_client.h"
#include "platform/file.h"
#include "platform/sqlite.h"
#include "recipients/import/kept_mappings.h"
#include "recipients/store_connection.h"
#include "support/kept_mailing.h"
#include "support/stored_archive.h"

namespace quillcast::desktop {
namespace {

constexpr const char* kLetter =
    "<html><body><h2 style='color:#1f5f8b'>Spring papers are here</h2><p>Dear $*MergeFirstName*$,</p><p>The new "
    "<b>hand-made papers</b> have arrived at our room in $*MergeCity*$. Three that you may like:</p><ul><li>Moss, 120 "
    "g, deckle edge</li><li>Chalk, 200 g</li><li><a href='https://paper-room.example/ink'>Ink</a>, for "
    "letterpress</li></ul><table border=1 cellpadding=6 cellspacing=0><tr><td>Sheet</td><td>Price</td></tr><tr><td>A4"
    "</td><td>0.90</td></tr></table><p>Yours,<br>Ada</p></body></html>";

// As a run writes it.
constexpr const char* kArrived =
    "From: Ada <ada@example.org>\r\nTo: bob@example.net\r\nSubject: =?utf-8?Q?Gr=C3=BC=C3=9Fe_f=C3=BCr_Bob?=\r\n"
    "MIME-Version: 1.0\r\nContent-Type: text/html; charset=utf-8\r\n"
    "Content-Transfer-Encoding: quoted-printable\r\n\r\n<p>Sch=C3=B6ne Gr=C3=BC=C3=9Fe, Bob</p>\r\n";

// As a reader keeps it.
constexpr const char* kReceived =
    "Received: from mail.paper-room.example (mail.paper-room.example [192.0.2.7])\r\n\tby mx.example.net with ESMTPS "
    "id "
    "4Xk2; Sat, 14 Nov 2026 22:40:05 +0100\r\nReceived: from desk (localhost [127.0.0.1])\r\n\tby "
    "mail.paper-room.example with ESMTP id 77; Sat, 14 Nov 2026 22:40:02 +0100\r\nFrom: Ada "
    "<ada@example.org>\r\nTo: Bob <bob@example.net>, carol@example.net\r\nSubject: Spring papers are here\r\nDate: "
    "Sat, 14 Nov 2026 22:40:01 +0100\r\nMIME-Version: 1.0\r\nContent-Type: multipart/mixed; boundary=m\r\n\r\n--m\r\n"
    "Content-Type: text/html; charset=utf-8\r\n\r\n<table width=600 bgcolor='#f4efe6'><tr><td><h2 "
    "style='color:#1f5f8b'>Spring papers</h2><p>Dear Bob,</p><p>The new <b>hand-made papers</b> have arrived; see "
    "<a href='https://paper-room.example/spring'>the list</a>.</p><table border=1 cellpadding=6 "
    "cellspacing=0><tr><td>Sheet<td>Price<tr><td>A4<td>0.90</table><img src=https://tracker.example/x.png "
    "alt='Our room'></table>\r\n--m\r\nContent-Type: application/pdf; name=\"Price list.pdf\"\r\n"
    "Content-Disposition: attachment\r\nContent-Transfer-Encoding: base64\r\n\r\nJVBERi0xLjQK\r\n--m--\r\n";

constexpr QChar kMark = u'\u00a7';

// Names, versions, and what people wrote.
const QStringList kNotOurs = {"Personal",
                              "bob@example.net",
                              "Ada <ada@example.org>",
                              "Bob <bob@example.net>, carol@example.net",
                              "Spring papers are here",
                              QString::fromUtf8("Gr\u00fc\u00dfe f\u00fcr Bob"),
                              "Spring papers for ",
                              "Customers",
                              "Guests",
                              "/home/ada/letter.html",
                              "SMTP",
                              "POP3",
                              "IMAP4",
                              "Linux",
                              "Quillcast Classic",
                              "Tarnwick Quillcast Classic Edition 1.0"};

// Stands in for a catalogue: marks what goes through it.
class Marking final : public QTranslator {
 public:
  bool isEmpty() const override { return false; }
  QString translate(const char*, const char* source, const char*, int) const override {
    return kMark + QString(source);
  }
};

}  // namespace

class ScreensTest : public QObject {
  Q_OBJECT

  QString folder_ = qEnvironmentVariable("QUILLCAST_SCREENS");
  QString theme_;

  // Every text that is the program's own bears the translator's mark; what people wrote, names and numbers do not.
  void LookForUntranslated(QWidget& window, const QString& name) {
    QStringList texts;
    for (const QWidget* widget : window.findChildren<QWidget*>()) {
      if (!widget->isVisible() || qobject_cast<const QDialogButtonBox*>(widget->parent()) != nullptr) continue;
      for (const char* property : {"placeholderText", "toolTip", "accessibleName"})
        texts << widget->property(property).toString();
      if (qobject_cast<const QLineEdit*>(widget) == nullptr) texts << widget->property("text").toString();
      if (const auto* box = qobject_cast<const QGroupBox*>(widget)) texts << box->title();
    }
    for (const QAction* action : window.findChildren<QAction*>()) texts << action->text();
    for (const auto* tabs : window.findChildren<QTabWidget*>()) {
      for (int i = 0; i < tabs->count(); ++i) texts << tabs->tabText(i);
    }
    const QRegularExpression letters("[A-Za-z]{2}");
    for (const QString& text : texts) {
      const bool is_ours = text.contains(letters) && !kNotOurs.contains(text);
      QVERIFY2(!is_ours || text.contains(kMark), qPrintable(name + ": " + text));
    }
  }

  // A field that does not begin where the others of its place do, and where; empty where all stand in one line.
  static QString OutOfLine(const QWidget& window) {
    const bool from_right = window.layoutDirection() == Qt::RightToLeft;
    QHash<int, int> line_of;
    for (const FormGrid* grid : window.findChildren<FormGrid*>()) {
      if (!grid->isVisible()) continue;
      for (const QLabel* label : grid->findChildren<QLabel*>(Qt::FindDirectChildrenOnly)) {
        if (label->buddy() == nullptr || label->isHidden()) continue;
        const QRect place(label->buddy()->mapTo(&window, QPoint()), label->buddy()->size());
        const int begin = from_right ? window.width() - place.right() : place.left();
        const int line = line_of.value(grid->place(), begin);
        line_of.insert(grid->place(), line);
        if (begin != line) return QString("%1 begins at %2, others at %3").arg(label->text()).arg(begin).arg(line);
      }
    }
    return {};
  }

  // The fields that labels lead to begin in one line, once the window is laid out: those of each place where grids
  // stand side by side.
  static void LookForOneLine(const QWidget& window, const QString& name) {
    QTRY_COMPARE(name + ": " + OutOfLine(window), name + ": ");
  }

  // What has the keyboard has a ring round it that is seen, wherever the Tab key comes to.
  static void LookForTheRing(QWidget& window, const QString& name) {
    window.activateWindow();
    if (window.windowType() == Qt::SplashScreen || !QTest::qWaitForWindowActive(&window)) return;
    const QPointer<QWidget> before = window.focusWidget();
    const QColor ground = window.palette().color(QPalette::Window);
    for (QWidget* widget : window.findChildren<QWidget*>()) {
      const bool is_stop = widget->isVisible() && widget->isEnabled() && (widget->focusPolicy() & Qt::TabFocus) != 0;
      if (!is_stop || widget->inherits("QQuickWidget") || widget->focusProxy() != nullptr) continue;
      widget->setFocus(Qt::TabFocusReason);
      const QString what = name + ": " + widget->metaObject()->className() + ' ' + widget->objectName();
      const auto rings = window.findChildren<FocusRing*>();
      QVERIFY2(rings.size() == 1 && rings.front()->isVisible() && rings.front()->control() == widget, qPrintable(what));
      const QRegion seen = rings.front()->visibleRegion();
      if (seen.isEmpty()) continue;  // scrolled away
      const QRect corner(seen.begin()->topLeft(), QSize(1, 1));
      const QColor line = rings.front()->grab(corner).toImage().pixelColor(0, 0);
      QVERIFY2(Contrast(line, ground) >= 3, qPrintable(what + ' ' + line.name()));
    }
    if (before) before->setFocus();
  }

  // Return presses the window's default button: that is the one with the keyboard where a button has it.
  static void LookForReturn(QWidget& window, const QString& name) {
    window.activateWindow();
    if (qobject_cast<QDialog*>(&window) == nullptr || !QTest::qWaitForWindowActive(&window)) return;
    const QPointer<QWidget> before = window.focusWidget();
    const auto buttons = window.findChildren<QPushButton*>();
    for (QPushButton* button : buttons) {
      if (!button->isVisible() || !button->isEnabled() || (button->focusPolicy() & Qt::TabFocus) == 0) continue;
      button->setFocus(Qt::TabFocusReason);
      for (const QPushButton* other : buttons) {
        const bool is_pressed = other != button && other->isDefault() && other->isVisible() && other->isEnabled();
        QVERIFY2(!is_pressed, qPrintable(name + ": on " + button->objectName() + " presses " + other->objectName()));
      }
    }
    if (before) before->setFocus();
    for (const auto* box : window.findChildren<QLineEdit*>()) {
      const bool is_filter = box->isClearButtonEnabled();  // whose Return is not the window's, nor its first Escape
      QVERIFY2(!is_filter || qobject_cast<const FilterBox*>(box) != nullptr,
               qPrintable(name + ' ' + box->objectName()));
    }
  }

  // The Tab key comes to everything in a dialog. An editor's page takes it for itself.
  static void LookForTabTraps(QWidget& window, const QString& name) {
    window.activateWindow();
    if (qobject_cast<QDialog*>(&window) == nullptr || !QTest::qWaitForWindowActive(&window)) return;
    if (window.findChild<HtmlEditor*>() != nullptr) return;
    const QPointer<QWidget> before = window.focusWidget();
    QCOMPARE(name + ": " + test::PassedByTab(window).join(' '), name + ": ");
    if (before) before->setFocus();
  }

  // What a key with Alt stands for, empty where none does.
  static QString AccessKey(const QWidget& widget) {
    if (const auto* button = qobject_cast<const QAbstractButton*>(&widget)) return button->shortcut().toString();
    if (const auto* box = qobject_cast<const QGroupBox*>(&widget))
      return QKeySequence::mnemonic(box->title()).toString();
    const auto* label = qobject_cast<const QLabel*>(&widget);
    return label != nullptr && label->buddy() != nullptr ? QKeySequence::mnemonic(label->text()).toString() : QString();
  }

  // A key that stands for two acts on neither.
  static void LookForDoubledKeys(const QWidget& window, const QString& name) {
    QMap<QString, QStringList> stand_for;
    for (const QWidget* widget : window.findChildren<QWidget*>()) {
      if (!widget->isVisible()) continue;
      stand_for[AccessKey(*widget)] << widget->objectName() + ' ' + widget->property("text").toString();
      if (const auto* tabs = qobject_cast<const QTabBar*>(widget)) {
        for (int i = 0; i < tabs->count(); ++i) {
          if (tabs->isTabVisible(i)) stand_for[QKeySequence::mnemonic(tabs->tabText(i)).toString()] << tabs->tabText(i);
        }
      } else if (const auto* menus = qobject_cast<const QMenuBar*>(widget)) {
        for (const QAction* menu : menus->actions())
          stand_for[QKeySequence::mnemonic(menu->text()).toString()] << menu->text();
      }
    }
    stand_for.remove({});
    for (auto at = stand_for.cbegin(); at != stand_for.cend(); ++at)
      QVERIFY2(at->size() == 1, qPrintable(name + ": " + at.key() + " is " + at->join(" and ")));
  }

  // `rect` is in the window's own pixels, which a scaled picture holds several of.
  static QImage Part(const QImage& whole, const QRect& rect) {
    const qreal scale = whole.devicePixelRatio();
    return whole.copy(QRectF(rect.topLeft() * scale, rect.size() * scale).toAlignedRect());
  }

  static void LookForReadable(QWidget& window, const QString& name) {
    const QImage whole = window.grab().toImage();
    for (QLabel* label : window.findChildren<QLabel*>()) {
      if (!label->isVisible() || !label->isEnabled() || label->text().isEmpty()) continue;
      const QImage picture = Part(whole, QRect(label->mapTo(&window, QPoint()), label->size()));
      const QColor ground = picture.pixelColor(0, 0);
      const QColor text = test::Strongest(picture, ground);
      QVERIFY2(label->visibleRegion().isEmpty() || Contrast(text, ground) >= 4.5,
               qPrintable(name + ": " + label->text() + ' ' + text.name() + " on " + ground.name()));
    }
  }

  // A list with nothing in it says what to do next.
  static void LookForEmpty(const QWidget& window, const QString& name) {
    for (const auto* list : window.findChildren<QAbstractItemView*>()) {
      const bool has_rows = list->model() == nullptr || list->model()->rowCount() > 0;
      if (!list->isVisible() || has_rows || list->inherits("QHeaderView")) continue;
      const auto* text = list->findChild<EmptyState*>();
      QVERIFY2(text != nullptr && text->isVisible() && !text->text().isEmpty(),
               qPrintable(name + ": " + list->objectName()));
    }
  }

  // What a dialog says of an answer, and what it warns of, stays in view, and where there is room nothing is to be
  // scrolled sideways; in the main window there always is.
  static void LookForWhatScrolls(QWidget& window, const QString& name) {
    const bool is_main = qobject_cast<QMainWindow*>(&window) != nullptr;
    for (auto* area : window.findChildren<QScrollArea*>("ScrollArea")) {
      const int needed = area->widget()->minimumSizeHint().width() + area->verticalScrollBar()->width();
      const bool has_room = is_main || needed < window.screen()->availableGeometry().width() - 8;
      QVERIFY2(!has_room || !area->horizontalScrollBar()->isVisible(), qPrintable(name + " scrolls sideways"));
    }
    for (const auto* panel : window.findChildren<NotePanel*>("WarningsPanel")) {
      const bool is_out = panel->isVisible() && panel->visibleRegion().isEmpty();
      QVERIFY2(!is_out, qPrintable(name + " scrolls its warnings away"));
    }
    for (auto* line : window.findChildren<StatusLine*>("StatusLine")) {
      if (!line->isVisible()) continue;
      const QString said = line->text();
      line->setText("Not so.");
      QVERIFY2(!line->visibleRegion().isEmpty(), qPrintable(name + " scrolls its answer away"));
      line->setText(said);
    }
  }

  // What is written on the window's controls, whatever is in them.
  static QString CaptionsOf(const QWidget& window) {
    QStringList captions{window.windowTitle()};
    for (const QWidget* widget : window.findChildren<QWidget*>()) {
      if (!widget->isVisible()) continue;
      if (const auto* button = qobject_cast<const QAbstractButton*>(widget)) captions << button->text();
      if (const auto* box = qobject_cast<const QGroupBox*>(widget)) captions << box->title();
      const auto* label = qobject_cast<const QLabel*>(widget);
      if (label != nullptr && label->buddy() != nullptr) captions << label->text();
      const auto* tabs = qobject_cast<const QTabWidget*>(widget);
      for (int i = 0; tabs != nullptr && i < tabs->count(); ++i) captions << tabs->tabText(i);
    }
    captions.removeAll(QString());
    captions.sort();
    return captions.join(" | ");
  }

  // A picture in the help shows the window as it is: it keeps the captions that were on it when it was taken.
  // QUILLCAST_HELP_PICTURES=data/help takes those anew that lie there; an empty file gets its picture too.
  void LookAtHelpPicture(QWidget& window, const QString& name) {
    constexpr const char* kKey = "Captions";
    const bool is_as_it_was = QGuiApplication::platformName() == "offscreen" && window.devicePixelRatio() == 1;
    if (theme_ != "light" || !is_as_it_was) return;  // on a wider screen a toolbar shows more
    const QString captions = CaptionsOf(window);
    const QString anew = qEnvironmentVariable("QUILLCAST_HELP_PICTURES") + '/' + name + ".png";
    if (QFile::exists(anew)) {
      QImage picture = window.grab().toImage().convertToFormat(QImage::Format_Indexed8, Qt::ThresholdDither);
      picture.setText(kKey, captions);
      QVERIFY(picture.save(anew, "PNG", 0));
      return;
    }
    const QString file = QUILLCAST_TEST_PROGRAM_FOLDER "/help/" + name + ".png";
    if (QFile::exists(file)) QCOMPARE(name + ": " + QImage(file).text(kKey), name + ": " + captions);
  }

  // Each with nothing yet, and with the answers of servers that are not there.
  void TakeDomainTools(test::FormRig& rig) {
    DomainToolsForm tools(rig.program, nullptr);
    Take(tools, "domain-tools-empty");
    tools.server_for = [](std::string_view) { return net::HostPort{"127.0.0.1", 1}; };
    tools.findChild<QLineEdit*>("DomainTextBox")->setText("example");
    tools.findChild<QPushButton*>("WhoisButton")->click();
    QTRY_VERIFY(tools.findChild<QPushButton*>("WhoisButton")->isEnabled());
    Take(tools, "domain-tools");
    DomainIPForm to_ip(rig.program, nullptr);
    Take(to_ip, "domain-to-ip");
    IPDomainForm to_name(rig.program, nullptr);
    Take(to_name, "ip-to-domain");
    MXLookupForm mx(rig.program, nullptr, rig.folder.Write("resolv.conf", "nameserver 192.0.2.53\n"));
    Take(mx, "mx-lookup");
    DomainCheckForm check(rig.program, {}, nullptr);
    Take(check, "domain-check-empty");
    check.servers = {*net::ParseDnsServer("127.0.0.1:1")};
    check.findChild<QPushButton*>("CheckButton")->click();
    QTRY_VERIFY(check.findChild<QAbstractItemView*>("FindingsList")->model()->rowCount() > 0);
    Take(check, "domain-check");
  }

  // A request with nothing written yet; one that no server takes, and what would go along with it.
  void TakeSupport(test::FormRig& rig) {
    class NoVariables final : public platform::Environment {
      std::optional<std::string> Get(const char*) const override { return {}; }
    } environment;
    SupportForm nothing_yet(rig.program, environment, "Normal", SupportForm::Server::kPractice, nullptr);
    Take(nothing_yet, "support-empty");
    SupportForm support(rig.program, environment, "Normal", SupportForm::Server::kReal, nullptr);
    support.findChild<QPlainTextEdit*>("DescriptionTextBox")->setPlainText("The preview stays empty.");
    QTRY_VERIFY(support.findChild<QCheckBox*>("CheckBox1")->isEnabled());
    support.findChild<QCheckBox*>("CheckBox1")->click();
    support.findChild<QPushButton*>("OKButton")->click();
    QTRY_VERIFY(support.findChild<QPushButton*>("OKButton")->isEnabled());
    Take(support, "support-failed");
    support.findChild<QTabWidget*>()->setCurrentIndex(1);
    QTRY_VERIFY(support.findChild<QPlainTextEdit*>("ContentsTextBox")->toPlainText().contains("Account-Name: Ada"));
    Take(support, "support-contents");
  }

  // The connection test with nothing yet, and with a server that nothing listens at.
  void TakeServerTest(test::FormRig& rig) {
    ExtraForm5 nothing_yet(rig.program, nullptr);
    Take(nothing_yet, "server-test-empty");
    ExtraForm5 refused(rig.program, nullptr);
    refused.findChild<QLineEdit*>("ServerTextBox")->setText("127.0.0.1");
    refused.findChild<QLineEdit*>("PortTextBox")->setText("1");
    refused.findChild<QPushButton*>("ProcessButton")->click();
    QTRY_VERIFY(refused.findChild<QPushButton*>("ProcessButton")->isEnabled());
    Take(refused, "server-test");
  }

  // Its pages of different kinds: without a button, with one, done already, and the last.
  void TakeTutorial(MainForm& window) {
    window.Dispatch(CommandId::kTutorial);
    auto* tutorial = window.findChild<TutorialForm*>();
    QVERIFY(tutorial != nullptr);
    for (int page = 0; page < 8; ++page) {
      if (page % 3 != 2) Take(*tutorial, QString("tutorial-%1").arg(page));
      if (page == 1) {  // there is an account
        tutorial->findChild<QPushButton*>("DoItButton")->click();
        Take(*tutorial, "tutorial-refused");
      }
      tutorial->findChild<QPushButton*>("NextButton")->click();
    }
    delete tutorial;
  }

  // The check for a newer version with nothing yet, and through a proxy that nothing listens at.
  void TakeUpdate(test::FormRig& rig) {
    const test::OneProfile environment;
    UpdateMainForm update(rig.program, environment, nullptr);
    Take(update, "update");
    update.findChild<QCheckBox*>("ProxyCheckBox")->setChecked(true);
    update.findChild<QLineEdit*>("AddressTextBox")->setText("127.0.0.1");
    update.findChild<QLineEdit*>("PortTextBox")->setText("1");
    update.findChild<QPushButton*>("CheckButton")->click();
    QTRY_VERIFY(update.findChild<QLabel*>("StatusLine")->text().contains("127.0.0.1:1"));
    Take(update, "update-failed");
  }

  // The windows that ask for what goes into the message.
  void TakeComposing(test::FormRig& rig, HtmlEditor& editor) {
    LineForm line(rig.prompts, nullptr);
    Take(line, "line");
    DateTimeForm date(rig.prompts, rig.clock, editor, nullptr);
    Take(date, "date-time");
    BodyForm colours(rig.prompts, rig.folders.Pictures(), {.text = "#1A5276", .background = "#FDF6E3"}, nullptr);
    Take(colours, "body");
    {
      HtmlEditor page;
      EditorDocument letter(page, rig.folders);
      QVERIFY(letter.StartNew(kLetter));
      TemplateForm none(rig.program, letter, page, nullptr);
      Take(none, "template-empty");
      TemplateNameForm name(rig.prompts, document::OwnTemplates(rig.folders.Templates()), none.windowTitle(), "Monthly",
                            nullptr);
      Take(name, "template-name");
      QVERIFY(document::OwnTemplates(rig.folders.Templates())
                  .Keep("Monthly", {kLetter, {}, {}}, document::IfThere::kReplace));
      TemplateForm chosen(rig.program, letter, page, nullptr);
      chosen.findChild<QLineEdit*>("CompanyTextBox")->setText("Paper Room & Sons");
      chosen.findChild<QListWidget*>("EmailListBox")->setCurrentRow(4);
      Take(chosen, "template");
    }
    document::MessageDocument message;
    message.html = kLetter;
    PropertiesForm properties(message, "/home/ada/letter.html", true, nullptr);
    QTRY_VERIFY(properties.findChild<QTabWidget*>()->isEnabled());
    Take(properties, "properties");
    PropertiesForm no_links({}, {}, true, nullptr);
    QTRY_VERIFY(no_links.findChild<QTabWidget*>()->isEnabled());
    no_links.findChild<QTabWidget*>()->setCurrentIndex(1);
    Take(no_links, "properties-empty");
    SignatureManagerForm signature(rig.program, nullptr);
    Take(signature, "signature");
  }

  // Until nothing moves any more, and a page, which paints by itself, has had its time.
  static void Settle(const QWidget& window) {
    constexpr int kRound = 25;  // milliseconds
    if (window.findChild<HtmlEditor*>() != nullptr) QTest::qWait(250);
    const auto places = [&] {
      QList<QRect> all{window.geometry()};
      for (const QWidget* widget : window.findChildren<QWidget*>()) all << widget->geometry();
      return all;
    };
    auto before = places();
    for (int still = 0, rounds = 0; still < 2 && rounds < 100; ++rounds) {
      QTest::qWait(kRound);
      const auto now = places();
      still = now == before ? still + 1 : 0;
      before = now;
    }
  }

  // A window that shows has every control inside it, and text in each that is not cut off.
  void Take(QWidget& window, const QString& name) {
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    Settle(window);
    const QSize free = window.screen()->availableGeometry().size();
    QTRY_VERIFY2(window.frameGeometry().size().boundedTo(free) == window.frameGeometry().size(),
                 qPrintable(name + " is larger than the screen"));
    for (const QPushButton* button : window.findChildren<QPushButton*>()) {
      const bool is_out = button->isVisible() && button->isDefault() && button->visibleRegion().isEmpty();
      QVERIFY2(!is_out, qPrintable(name + " scrolls its button away"));
    }
    for (const QLabel* label : window.findChildren<QLabel*>()) {
      if (!label->isVisible() || label->text().isEmpty()) continue;
      const bool fits = label->wordWrap()
                            ? label->height() >= label->heightForWidth(label->width())
                            : label->width() >= label->minimumSizeHint().width() || label->minimumWidth() == 1;
      QVERIFY2(fits, qPrintable(name + ": " + label->text()));
    }
    for (const QWidget* control : window.findChildren<QWidget*>()) {
      const bool has_text = qobject_cast<const QPushButton*>(control) != nullptr ||
                            qobject_cast<const QCheckBox*>(control) != nullptr ||
                            qobject_cast<const QRadioButton*>(control) != nullptr;
      if (!has_text || !control->isVisible()) continue;
      QVERIFY2(control->width() >= control->minimumSizeHint().width(), qPrintable(name + ": " + control->objectName()));
    }
    for (QWidget* widget : window.findChildren<QWidget*>()) {  // what the keyboard can reach says what it is
      if (!widget->isVisible() || (widget->focusPolicy() & Qt::TabFocus) == 0) continue;
      if (widget->inherits("QQuickWidget")) continue;  // the page speaks for itself
      if (widget->focusProxy() != nullptr || widget->parentWidget()->inherits("QTabWidget")) continue;
      const auto* accessible = QAccessible::queryAccessibleInterface(widget);
      QVERIFY2(accessible != nullptr && !accessible->text(QAccessible::Name).isEmpty(),
               qPrintable(name + ": " + widget->metaObject()->className() + ' ' + widget->objectName()));
    }
    if (window.objectName() != "SplashForm") {
      const auto topic = TopicOf(window.objectName());
      QVERIFY2(topic && QFile::exists(QStringLiteral(QUILLCAST_TEST_PROGRAM_FOLDER "/help/") + *topic),
               qPrintable(name + " has no help topic"));
    }
    LookForOneLine(window, name);
    LookForReadable(window, name);
    LookForEmpty(window, name);
    LookForTheRing(window, name);
    LookForReturn(window, name);
    LookForTabTraps(window, name);
    LookForDoubledKeys(window, name);
    if (theme_ == "translated") LookForUntranslated(window, name);
    if (!folder_.isEmpty()) QVERIFY(window.grab().save(folder_ + '/' + name + '-' + theme_ + ".png"));
    LookAtHelpPicture(window, name);
    LookForWhatScrolls(window, name);
  }

  // The group manager and its dialogs with nothing to show, with what has gone wrong, and at work.
  void TakeWorkOnGroups(test::FormRig& rig, GroupManagerForm& groups) {
    const auto looked = [](QDialog& form) {
      QTRY_VERIFY(!form.findChild<QLabel*>("StatusLine")->text().contains("Looking"));
    };
    const auto status = [](const QDialog& form) { return form.findChild<QLabel*>("StatusLine")->text(); };
    test::FormRig other;
    other.AddGroup("Customers", {"bob@example.net"});
    other.AddGroup("Guests", {"BOB@example.net", "eve@example.net"});
    CapitalizeForm capitals(other.program, "Customers", nullptr);
    looked(capitals);
    Take(capitals, "capitalize-empty");
    DuplicatesForm duplicates(other.program, "Customers", nullptr);
    looked(duplicates);
    Take(duplicates, "duplicates-empty");
    WhereForm where(other.program, "nobody@example.net", nullptr);
    looked(where);
    Take(where, "where-empty");
    MergeForm alone(other.program, {"Customers"}, "Customers", nullptr);
    Take(alone, "merge-empty");
    MergeForm merge(other.program, {"Customers", "Guests"}, "Customers", nullptr);
    merge.findChild<QAbstractItemView*>("GroupsList")->selectAll();
    other.prompts.answers = {platform::Answer::kYes};
    merge.show();
    merge.findChild<QPushButton*>("OKButton")->click();
    QTRY_VERIFY(merge.outcome());
    Take(merge, "merge-duplicates");
    SortForm five("[G-City], [G-Fax] DESC, [G-Title], [G-Email], [ID] DESC", nullptr);
    Take(five, "sort-five");
    SortForm unknown("random()", nullptr);
    Take(unknown, "sort-unknown");

    // Both wait for the lock, or their thread, until they are cancelled.
    auto busy = recipients::OpenStore(rig.folders.Database());
    QVERIFY(busy && busy->Execute("BEGIN EXCLUSIVE"));
    auto printer = std::make_shared<QPrinter>();
    printer->setOutputFileName(PathToQt(rig.folder / "list.pdf"));
    {
      RecipientPrintForm print(rig.program, printer, "Customers", {1, 2}, nullptr);
      Take(print, "print-progress");
      print.reject();
      QTRY_VERIFY(!print.outcome() || !print.outcome()->isEmpty());
    }
    QVERIFY(busy->Execute("ROLLBACK; BEGIN IMMEDIATE"));
    rig.prompts.answers = {platform::Answer::kYes};
    groups.findChild<QPushButton*>("DeleteGroupButton")->click();
    Take(groups, "groups-deleting");
    groups.reject();
    QTRY_VERIFY(groups.findChild<QPushButton*>("AddButton")->isEnabled());
    Take(groups, "groups-failed");
    QVERIFY(busy->Execute("UPDATE [Groups] SET [SortSQL] = 'random()'; COMMIT"));
    groups.findChild<QAbstractItemView*>("MSFlexGrid")->setCurrentIndex({});
    groups.findChild<QPushButton*>("AddButton")->setFocus();
    groups.findChild<QAction*>("OrderByAddressAction")->trigger();
    QTRY_VERIFY(groups.findChild<QPushButton*>("AddButton")->isEnabled());
    groups.findChild<QAction*>("OrderOfGroupAction")->trigger();
    QTRY_VERIFY2(status(groups).contains("not understood"), qPrintable(status(groups)));
    Take(groups, "groups-order-unknown");
    QVERIFY(busy->Execute("UPDATE [Groups] SET [SortSQL] = ''"));
  }

 private slots:
  void initTestCase() {
    QApplication::setStyle(QStyleFactory::create("fusion"));
    DressWindows();
  }

  void everyWindow_data() {
    QTest::addColumn<QString>("theme");
    QTest::newRow("light") << "light";
    QTest::newRow("dark") << "dark";
    QTest::newRow("translated, from right to left") << "translated";
  }
  void everyWindow() {
    QFETCH(QString, theme);
    theme_ = theme;
    Marking translator;
    const bool is_translated = theme == "translated";
    if (is_translated) QCoreApplication::installTranslator(&translator);
    QApplication::setLayoutDirection(is_translated ? Qt::RightToLeft : Qt::LeftToRight);
    QApplication::setPalette(theme == "dark" ? test::DarkPalette() : QApplication::style()->standardPalette());
    {
      test::FormRig fresh;
      MainForm window(fresh.program);
      window.Load();
      Take(window, "first-start");
      QVERIFY(test::LeaveCutOff(fresh.folders, "Customers"));
      window.findChild<Notices*>()->LookForCutOff();
      Take(window, "main-cut-off");
      window.skip_save_prompt = true;
      window.close();
    }
    test::FormRig rig;
    rig.FillInAccount("1");
    rig.AddGroup("Customers", {"bob@example.net", "eve@example.net", "<mallory>", "no address"});
    MainForm window(rig.program);
    window.Load();
    window.findChild<QComboBox*>("ToComboBox")->setCurrentText("Customers");
    window.findChild<QLineEdit*>("SubjectTextBox")->setText("Spring papers for $*MergeFirstName*$");
    auto* editor = window.findChild<HtmlEditor*>("Editor");
    editor->SetHtml(kLetter);
    Take(window, "main");
    window.findChild<MessageHeader*>()->AddAttachments(
        {PathToQt(rig.folder.Write("price.pdf", "x")), "/nowhere/in/a/folder/with/a/rather/long/name/leaflet.pdf"});
    window.findChild<FindBar*>()->Open("papers");
    window.Say((is_translated ? QString(kMark) : QString()) +
               QString("Addresses are still being added to a group. Close again to stop that. ").repeated(2));
    window.resize(window.minimumSize());
    QTRY_COMPARE(window.findChild<QLabel*>("FindResult")->text().isEmpty(), false);
    // Longer texts than the English ones do not all fit beside each other on the smallest screen.
    const bool has_room = window.screen()->availableGeometry().width() > 700;
    if (!is_translated || has_room) Take(window, "main-small");

    document::MessageDocument document;
    document.subject = "Spring papers for $*MergeFirstName*$";
    document.html = kLetter;
    const auto group = **rig.Store().FindGroup("Customers");
    PreviewForm preview(rig.program, document, {group, 4}, QUrl("file:///"), nullptr);
    preview.show();
    QTRY_VERIFY(!preview.findChild<QLabel*>("NotesLabel")->text().contains("Looking"));
    Take(preview, "preview");

    {
      QVERIFY(rig.settings.Write("Account", "Rate", "30/min"));
      QVERIFY(rig.settings.Write("Account", "NetworkWait", "1h"));
      SendMailForm1 before(rig.program, document, {group, 4}, SendMailForm1::Server::kReal, nullptr);
      QVERIFY(rig.settings.Write("Account", "Rate", ""));
      QVERIFY(rig.settings.Write("Account", "NetworkWait", ""));
      Take(before, "send-before");
      before.findChild<QTabWidget*>()->setCurrentIndex(1);
      Take(before, "send-before-results");
      before.findChild<QTabWidget*>()->setCurrentIndex(0);
      for (const char* shown : {"PausePanel", "PauseButton"}) before.findChild<QWidget*>(shown)->show();
      Take(before, "send-paused");
    }
    SendMailForm1 send(rig.program, document, {group, 4}, SendMailForm1::Server::kReal, nullptr);
    send.show();
    send.findChild<QPushButton*>("SendButton")->click();
    QTRY_COMPARE(send.stage(), SendMailForm1::Stage::kFinished);
    Take(send, "send");
    send.findChild<QTabWidget*>()->setCurrentIndex(0);
    Take(send, "report");

    RunPaceForm pace([] { return run::PaceTexts{.rate = "30/min"}; }, {.retries = "3"}, [](QWidget*) {}, rig.clock,
                     nullptr);
    pace.findChild<QLineEdit*>("ConnectionsTextBox")->setText("many");
    pace.accept();
    Take(pace, "run-pace");
    EmailManagerForm account(rig.program, nullptr);
    for (int page = 0; page < 4; ++page) {
      account.findChild<QTabWidget*>("AccountTabs")->setCurrentIndex(page);
      Take(account, QString("account-%1").arg(page + 1));
    }
    account.findChild<QTabWidget*>("AccountTabs")->setCurrentIndex(0);
    account.findChild<QCheckBox*>("AuthCheckBox")->setChecked(true);
    for (const char* place : {"Keyring", "Command"}) {
      account.findChild<QComboBox*>("PasswordFromComboBox")->setCurrentText(place);
      Take(account, QString("account-%1").arg(place));
    }
    OutlookExpressForm no_accounts(rig.program, {}, nullptr);
    QTRY_COMPARE(no_accounts.findChild<QLabel*>("StatusLine")->text(), "");
    Take(no_accounts, "account-import-empty");
    rig.folder.Write(
        "home/.claws-mail/accountrc",
        "[Account: 1]\naccount_name=Paper room\nname=Ada Lovelace\naddress=ada@paper-room.example\nsmtp_server="
        "mail.paper-room.example\nset_smtpport=1\nsmtp_port=587\nssl_smtp=2\nuse_smtp_auth=1\nuser_id=ada\n"
        "[Account: 2]\nname=News\n[Account: 3]\naccount_name=Home\nname=Ada\naddress=ada@home.example\n"
        "smtp_server=smtp.home.example\n");
    OutlookExpressForm accounts(rig.program, account::AccountRoots(rig.folder / "home"), nullptr);
    QTRY_COMPARE(accounts.findChild<RowList*>("AccountListBox")->size(), std::size_t{2});
    accounts.findChild<RowList*>("AccountListBox")->Choose(0);
    Take(accounts, "account-import");
    HistoryManagerForm no_history(rig.program, nullptr);
    no_history.findChild<QLineEdit*>("FilterTextBox")->setText("no such run");
    Take(no_history, "history-empty");
    for (const char* file :
         {"07-03-2026_09-05-07_Hello.txt",
          "01-02-2027_10-00-00_Hand-made papers from the four rooms by the river and their prices.txt"}) {
      QVERIFY(platform::ReplaceFile(rig.folders.History() / file, "x"));
    }
    HistoryManagerForm history(rig.program, nullptr);
    Take(history, "history");
    KeptRunsForm no_runs(rig.program, nullptr);
    Take(no_runs, "runs-empty");
    QVERIFY(test::LeaveCutOff(rig.folders, "Customers"));
    KeptRunsForm runs(rig.program, nullptr);
    Take(runs, "runs");
    {
      test::FormRig fresh;
      GroupManagerForm no_groups(fresh.program, nullptr);
      Take(no_groups, "groups-empty");
    }
    GroupManagerForm groups(rig.program, nullptr);
    groups.findChild<QComboBox*>("GroupComboBox")->setCurrentText("Customers");
    QTRY_COMPARE(groups.findChild<QLabel*>("Total")->text(), QString("4"));
    Take(groups, "groups");
    TakeWorkOnGroups(rig, groups);
    CapitalizeForm capitals(rig.program, "Customers", nullptr);
    QTRY_VERIFY(!capitals.findChild<QLabel*>("StatusLine")->text().contains("Looking"));
    Take(capitals, "capitalize");
    DuplicatesForm duplicates(rig.program, "Customers", nullptr);
    QTRY_VERIFY(!duplicates.findChild<QLabel*>("StatusLine")->text().contains("Looking"));
    Take(duplicates, "duplicates");
    WhereForm where(rig.program, "bob@example.net", nullptr);
    QTRY_VERIFY(!where.findChild<QLabel*>("StatusLine")->text().contains("Looking"));
    Take(where, "where");
    SortForm sort("[G-LastName], [G-City] DESC", nullptr);
    Take(sort, "sort");
    MergeForm merge(rig.program, {"Customers", "Guests"}, "Customers", nullptr);
    Take(merge, "merge");
    GroupNewForm new_group(rig.program, nullptr);
    Take(new_group, "group-new");
    GroupRenameForm other_name(rig.program, "Customers", nullptr);
    Take(other_name, "group-rename");
    RecipientAddForm add(rig.program, "Customers", nullptr);
    Take(add, "recipient-add");
    RecipientModifyForm1 modify(rig.program, "Customers",
                                rig.Store().FindRecipient(group.id, "bob@example.net")->value().id, nullptr);
    Take(modify, "recipient-modify");
    RecipientModifyForm2 gone(rig.program, "Customers", 77, nullptr);
    Take(gone, "recipient-gone");
    RecipientExportForm list_to_file(rig.program, "Customers", nullptr);
    list_to_file.findChild<QRadioButton*>("RadioButton2")->setChecked(true);
    list_to_file.findChild<QListWidget*>("ListFields")->item(2)->setCheckState(Qt::Checked);
    Take(list_to_file, "export");
    ExtraForm4 extract(rig.program, nullptr);
    Take(extract, "extract");
    TakeServerTest(rig);
    TakeSupport(rig);
    TakeDomainTools(rig);
    RecipientImportForm nothing_yet(rig.program, "Customers", nullptr);
    Take(nothing_yet, "import-empty");
    RecipientImportForm file_to_list(rig.program, "Customers", nullptr);
    file_to_list.findChild<QRadioButton*>("RadioButton2")->setChecked(true);
    rig.prompts.files = {rig.folder.Write(
        "people.csv",
        "Vorname;Nachname;E-Mail;Ort\nAda;Lovelace;ada@example.org;London\nJ\xC3\xB6rg;\xC3\x96l;j@example.org;"
        "K\xC3\xB6ln\nEve;;eve@example.org;\xE4\n")};
    file_to_list.findChild<QPushButton*>("BrowseButton")->click();
    QTRY_VERIFY(file_to_list.findChild<QPushButton*>("ProposeButton")->isEnabled());
    file_to_list.findChild<QPushButton*>("ProposeButton")->click();
    Take(file_to_list, "import");
    MappingKeepForm name(rig.program, "people", nullptr);
    Take(name, "mapping-keep");
    QVERIFY(
        recipients::KeepMapping(rig.settings, {"The customers of the shop by the river", {}, ';', false, false, 1}));
    RecipientImportForm from_sheet(rig.program, "Customers", nullptr);
    from_sheet.findChild<QRadioButton*>("RadioButton2")->setChecked(true);
    rig.prompts.files = {rig.folder.Write("book.xlsx", test::StoredArchive(test::TwoSheets()))};
    from_sheet.findChild<QPushButton*>("BrowseButton")->click();
    QTRY_VERIFY(from_sheet.findChild<QPushButton*>("ProposeButton")->isEnabled());
    from_sheet.findChild<QPushButton*>("ProposeButton")->click();
    from_sheet.findChild<QComboBox*>("MappingComboBox")->setCurrentIndex(0);
    Take(from_sheet, "import-sheet");
    {
      // What another program holds, both wait for.
      auto store = *platform::Database::Open(rig.folders.Database(), platform::OpenMode::kReadWrite);
      QVERIFY(store.Execute("BEGIN EXCLUSIVE"));
      list_to_file.findChild<QLineEdit*>("BrowseTextBox")->setText(PathToQt(rig.folder.path() / "out.txt"));
      for (auto [dialog, button, picture] :
           {std::tuple<QDialog*, const char*, const char*>(&from_sheet, "ImportButton", "import-run"),
            std::tuple<QDialog*, const char*, const char*>(&list_to_file, "ExportButton", "export-run")}) {
        rig.prompts.answers = {platform::Answer::kYes};
        dialog->findChild<QPushButton*>(button)->click();
        Take(*dialog, picture);
        rig.prompts.answers = {platform::Answer::kYes};
        dialog->reject();
        QTRY_VERIFY(!dialog->isVisible());
      }
      rig.prompts.shown.clear();
    }
    {
      ExtraForm1 file_to_pages(rig.program, {}, nullptr);
      Take(file_to_pages, "message-print");
      ExtraForm2 file_to_message(
          rig.program, {}, [](const mail_file::ImportedBody&) { return Result<bool>(true); }, nullptr);
      file_to_message.show();  // which makes room for what is said in it
      file_to_message.findChild<QLineEdit*>("FilePathTextBox")->setText("/nowhere/letter.eml");
      file_to_message.findChild<QPushButton*>("ImportButton")->click();
      QTRY_VERIFY(file_to_message.findChild<QLabel*>("StatusLine")->text().contains("could"));
      Take(file_to_message, "message-import");
      ExtraForm3 message_to_file(rig.program, {}, nullptr);
      message_to_file.findChild<QLineEdit*>("FilePathTextBox")->setText("/nowhere/letter.eml");
      message_to_file.findChild<QPushButton*>("ExportButton")->click();
      QTRY_VERIFY(message_to_file.findChild<QLabel*>("StatusLine")->text().contains("nowhere"));
      Take(message_to_file, "message-export");
      rig.prompts.shown.clear();
    }
    RecipientSearchForm found(rig.program, "Customers", nullptr);
    Take(found, "search-empty");
    found.findChild<QComboBox*>("CompareComboBox")->setCurrentIndex(1);
    found.findChild<QLineEdit*>("EntryTextBox")->setText("example");
    QTRY_VERIFY(found.findChild<QAbstractItemView*>("MSFlexGrid")->model()->rowCount() > 0);
    found.findChild<QAbstractItemView*>("MSFlexGrid")
        ->setCurrentIndex(found.findChild<QAbstractItemView*>("MSFlexGrid")->model()->index(0, 0));
    Take(found, "search");
    RecipientMoveForm to_others(rig.program, "Customers", {1, 2}, nullptr);
    Take(to_others, "move");
    ThreadForm threads(rig.settings, nullptr);
    Take(threads, "threads");
    TableForm table(rig.prompts, nullptr);
    Take(table, "table");
    TakeComposing(rig, *editor);
    document::AttachmentList files;
    files.Add(rig.folder.Write("price.pdf", "x").string());
    files.Add("/nowhere/leaflet.pdf");
    AttachmentsForm attachments(files, nullptr);
    Take(attachments, "attachments");
    AttachmentsForm no_attachments({}, nullptr);
    Take(no_attachments, "attachments-empty");
    LinkForm link({}, "our papers", {{"prices", "What they cost"}}, nullptr);
    Take(link, "link");
    LinkForm mail("mailto:ada@example.org?subject=Papers", "write to Ada", {}, nullptr);
    mail.findChild<QLineEdit*>("AddressTextBox")->setText("nobody");
    mail.accept();
    Take(mail, "link-mail");
    FontForm font({.family = "DejaVu Serif", .size = 5, .colour = QColor(0x1f, 0x5f, 0x8b), .bold = true}, nullptr);
    Take(font, "font");
    PictureForm no_picture(rig.prompts, rig.folders.Pictures(), 0, nullptr);
    Take(no_picture, "picture-empty");
    QImage meadow(3000, 2000, QImage::Format_RGB32);
    meadow.fill(QColor(0x6a, 0x8f, 0x5b));
    QVERIFY(meadow.save(PathToQt(rig.folder.path() / "meadow.bmp")));
    PictureForm picture(rig.prompts, rig.folders.Pictures(), 0, nullptr);
    picture.Take(rig.folder.path() / "meadow.bmp");
    QTRY_VERIFY2(picture.findChild<QCheckBox*>("SmallerCheckBox")->isEnabled(),
                 qPrintable(picture.findChild<QLabel*>("StatusLine")->text()));
    Take(picture, "picture");
    TipsForm tips(rig.program, nullptr);
    Take(tips, "tips");
    AboutForm about(rig.folders, test::OneProfile(), nullptr);
    Take(about, "about");
    about.findChild<QTabWidget*>()->setCurrentIndex(1);
    Take(about, "about-libraries");
    TakeUpdate(rig);
    TakeTutorial(window);
    const auto practised = rig.folder.Write("Practice/000001.eml", kArrived);
    rig.folder.Write("Practice/000002.eml", kArrived);
    PracticeForm practice(rig.settings, practised.parent_path(), {}, nullptr);
    QTRY_VERIFY(!practice.findChild<QLabel*>("SubjectLabel")->text().isEmpty());
    Take(practice, "practice");
    PracticeForm no_practice(rig.settings, rig.folder.path() / "Nothing", {}, nullptr);
    Take(no_practice, "practice-empty");
    MessageForm message(rig.settings, rig.folder.Write("newsletter.eml", kReceived), {}, nullptr);
    QTRY_VERIFY(message.findChild<QPushButton*>("ExtractButton")->isEnabled());
    Take(message, "message");
    auto& tabs = *message.findChild<QTabWidget*>("MessageTabs");
    for (int tab = 1; tab < tabs.count(); ++tab) {
      tabs.setCurrentIndex(tab);
      Take(message, "message-" + QString::number(tab));
    }
    MessageForm broken(rig.settings, rig.folder.Write("broken.eml", ""), {}, nullptr);
    QTRY_VERIFY(!broken.findChild<NotePanel*>("FaultsPanel")->isHidden());
    Take(broken, "message-broken");
    ShutDownForm shut_down([](const auto&) { return Result<void>(); }, nullptr);
    Take(shut_down, "shut-down");
    auto* help = new HelpForm(rig.folders, "Welcome.htm", nullptr);
    Take(*help, "help");
    delete help;
    SplashForm splash("Linux");
    splash.Run();
    Take(splash, "splash");
    window.skip_save_prompt = true;
    window.close();
  }
};

}  // namespace quillcast::desktop

QTEST_MAIN(quillcast::desktop::ScreensTest)
#include "screens_test.moc"
