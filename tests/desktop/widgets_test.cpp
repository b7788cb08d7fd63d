// What windows are built with: it can be read in light and dark, stands in line, and is reached by keys.
#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QStyleFactory>
#include <QTabWidget>
#include <QTest>
#include <QTextDocument>
#include <QTextEdit>
#include <QThread>
#include <atomic>
#include <memory>
#include <thread>

#include "desktop/layout_requests.h"
#include "desktop/seen_colours.h"
#include "desktop/widgets/background_task.h"
#include "desktop/widgets/contrast.h"
#include "desktop/widgets/count_bar.h"
#include "desktop/widgets/filter_box.h"
#include "desktop/widgets/focus_ring.h"
#include "desktop/widgets/folding_line.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/icons.h"
#include "desktop/widgets/look.h"
#include "desktop/widgets/note_panel.h"
#include "desktop/widgets/notice_bar.h"
#include "desktop/widgets/progress_panel.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/row_colours.h"
#include "desktop/widgets/row_list.h"
#include "desktop/widgets/status_line.h"

namespace quillcast::desktop {
namespace {

constexpr std::array<NoteKind, 3> kKinds = {NoteKind::kInformation, NoteKind::kWarning, NoteKind::kFailure};

QPalette Light() { return QApplication::style()->standardPalette(); }

QString Say(const char* what, const QColor& one, const QColor& other) {
  return QString("%1: %2 on %3 is %4 to 1").arg(what, one.name(), other.name()).arg(Contrast(one, other));
}

}  // namespace

class WidgetsTest : public QObject {
  Q_OBJECT

  static void UseTheme(bool dark) { QApplication::setPalette(dark ? test::DarkPalette() : Light()); }
  static void ReadsOn(const char* what, const QColor& text, const QColor& ground, double least = 4.5) {
    QVERIFY2(text.alpha() == 255 && Contrast(text, ground) >= least, qPrintable(Say(what, text, ground)));
  }

 private slots:
  void initTestCase() {
    QApplication::setStyle(QStyleFactory::create("fusion"));
    DressWindows();
  }
  void cleanup() {
    UseTheme(false);
    QApplication::setLayoutDirection(Qt::LeftToRight);
  }

  // What the system repeats while a key is down.
  void aHeldKeyPressesOnceAndTypesOn() {
    QDialog window;
    QPushButton button(&window);
    QLineEdit line(&window);
    QTextEdit text(&window);
    button.setDefault(true);
    int presses = 0;
    connect(&button, &QPushButton::clicked, [&presses] { ++presses; });
    window.show();
    const auto press = [](QWidget& widget, int key, const char* words, bool is_held) {
      for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        QKeyEvent event(type, key, Qt::NoModifier, words, is_held);
        QApplication::sendEvent(&widget, &event);
      }
    };
    for (const int key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space}) press(button, key, "", true);
    press(line, Qt::Key_Return, "\r", true);
    QCOMPARE(presses, 0);
    press(line, Qt::Key_Space, " ", true);
    QCOMPARE(line.text(), QString(" "));
    press(text, Qt::Key_Return, "\r", true);
    QCOMPARE(text.toPlainText(), QString("\n"));
    press(line, Qt::Key_Return, "\r", false);
    press(button, Qt::Key_Space, " ", false);
    QCOMPARE(presses, 2);
  }

  // Whatever the window's own button would do.
  void returnInAFilterPressesNothingAndEscapeEmptiesItFirst() {
    QDialog window;
    QPushButton button(&window);
    button.setDefault(true);
    FilterBox filter("FilterTextBox", "Filter", "Filter", &window);
    QSignalSpy pressed(&button, &QPushButton::clicked);
    window.show();
    QTest::keyClicks(&filter, "ada");
    for (const int key : {Qt::Key_Return, Qt::Key_Enter}) QTest::keyClick(&filter, static_cast<Qt::Key>(key));
    QVERIFY(pressed.isEmpty());
    QTest::keyClick(&filter, Qt::Key_Escape);
    QVERIFY(window.isVisible());
    QCOMPARE(filter.text(), QString());
    QTest::keyClick(&filter, Qt::Key_Escape);
    QVERIFY(!window.isVisible());
  }

  // By the table of an independent program.
  void contrastIsThatOfTheStandard() {
    struct Case {
      const char *one, *other;
      double ratio;
    };
    for (const Case& c :
         {Case{"#000000", "#ffffff", 21.0}, Case{"#767676", "#ffffff", 4.54}, Case{"#777777", "#ffffff", 4.48},
          Case{"#ffffff", "#ff0000", 4.00}, Case{"#1f5f8b", "#efefef", 5.95}, Case{"#123456", "#123456", 1.0}}) {
      const double ratio = Contrast(QColor(c.one), QColor(c.other));
      QVERIFY2(std::abs(ratio - c.ratio) < 0.01, qPrintable(Say("expected otherwise", c.one, c.other)));
      QCOMPARE(Contrast(QColor(c.other), QColor(c.one)), ratio);
    }
  }

  void everythingThatIsSaidCanBeRead_data() {
    QTest::addColumn<bool>("dark");
    QTest::newRow("light") << false;
    QTest::newRow("dark") << true;
  }
  void everythingThatIsSaidCanBeRead() {
    QFETCH(bool, dark);
    UseTheme(dark);
    const QPalette palette = QApplication::palette();
    const QColor window = palette.color(QPalette::Window);
    QVERIFY((window.lightness() < 128) == dark);
    for (const NoteKind kind : kKinds) {
      const NoteColours panel = PanelColours(kind, palette);
      ReadsOn("panel", panel.text, panel.ground);
      ReadsOn("sign", panel.sign, panel.ground);
      ReadsOn("line", LineColour(kind, palette), window);
      QVERIFY(kind == NoteKind::kInformation || LineColour(kind, palette) != palette.color(QPalette::WindowText));
      QVERIFY((panel.ground.lightness() < 128) == dark);
    }
    for (const OnGround* row : {&kPaleRow, &kAmberRow, &kHeadRow, &kChosenRow}) ReadsOn("row", row->text, row->ground);
    for (const auto role : {QPalette::Base, QPalette::Button})
      ReadsOn("empty box", palette.color(QPalette::PlaceholderText), palette.color(role));
  }

  // Windows stay open while the desktop turns dark.
  void openWindowsFollowTheTheme() {
    QDialog dialog;
    auto* column = new FormColumn(&dialog);
    auto* line = column->Add(new StatusLine(&dialog));
    line->Say("It failed.", NoteKind::kFailure);
    auto* panel = column->Add(new NotePanel(NoteKind::kWarning, "Panel", "PanelLabel", &dialog));
    panel->SetText("Take care.");
    auto* list = column->Add(new RowList(
        "Rows", "Rows", {{}}, [](std::size_t, int) { return QString(); }, &dialog));
    list->SetEmptyText("Add some.");
    QPushButton* button = column->Add(new QPushButton(Icon("send"), {}, &dialog));
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    for (const bool dark : {true, false, true}) {
      UseTheme(dark);
      QCoreApplication::processEvents();
      for (QWidget* said : {static_cast<QWidget*>(line), static_cast<QWidget*>(panel), static_cast<QWidget*>(button),
                            list->viewport()}) {
        const QImage picture = said->grab().toImage();
        const QColor ground = picture.pixelColor(8, picture.height() / 2);
        QVERIFY2((ground.lightness() < 128) == dark, said->metaObject()->className());
        ReadsOn(said->metaObject()->className(), test::Strongest(picture, ground), ground);
      }
    }
  }

  // However long what is said is, and be it one word, the window keeps its width, and all of it can be read.
  void aLongReasonMakesNoWindowWider() {
    const QString words = QString("The way to the server is lost, and is tried again then. ").repeated(8);
    const QString word(400, 'x');
    for (const QString& said : {words, word}) {
      QDialog dialog;
      auto* column = new FormColumn(&dialog);
      auto* line = column->Add(new StatusLine(&dialog));
      auto* panel = column->Add(new NotePanel(NoteKind::kWarning, "Panel", "PanelLabel", &dialog));
      auto* progress = column->Add(new ProgressPanel("SendButton", "Send", &dialog));
      progress->AddBar("Bar", "The whole run:");
      column->addStretch(1);
      dialog.resize(520, 700);
      dialog.show();
      QVERIFY(QTest::qWaitForWindowExposed(&dialog));
      line->Say(said);
      panel->SetText(said);
      progress->SayRate(said);
      QTest::qWait(50);
      QCOMPARE(dialog.width(), 520);
      QVERIFY(dialog.layout()->minimumSize().width() <= 520);
      for (const StatusLine* label : dialog.findChildren<StatusLine*>()) {
        QVERIFY(label->text().size() > 100);
        QVERIFY2(label->height() >= label->heightForWidth(label->width()), qPrintable(label->objectName()));
      }
      const auto* button = progress->button();
      QVERIFY(dialog.rect().contains(QRect(button->mapTo(&dialog, QPoint(0, 0)), button->size())));
    }
  }

  // In the order in which they are given.
  void aLineThatIsSaidOftenKeepsItsRoom() {
    for (const bool keeps : {false, true}) {
      QDialog dialog;
      auto* column = new FormColumn(&dialog);
      auto* line = column->Add(new StatusLine(&dialog));
      column->addStretch(1);
      if (keeps) line->KeepRoom(2);
      dialog.resize(200, 400);
      dialog.show();
      const auto height_of = [&](const QString& text) {
        line->Say(text);
        dialog.layout()->activate();
        return line->height();
      };
      const QString longest = QString("It waits for a server. ").repeated(6);
      const int lowest = height_of("Short.");
      const int highest = height_of(longest);
      QVERIFY(highest > lowest);
      QCOMPARE(lowest >= 2 * line->fontMetrics().lineSpacing(), keeps);
      QCOMPARE(height_of("Short.") == highest, keeps);
    }
  }

  void listsOpenWithTheGivenColours() {
    const QStringList given = {"#ffffff", "#104224", "#ffffff", "#5f5f8f"};
    RowList list(
        "Rows", "Rows", {{"Runs"}}, [](std::size_t, int) { return QString(); }, nullptr, RowColourSet::kGiven);
    const QPalette head = list.horizontalHeader()->palette();
    const QPalette rows = list.palette();
    QCOMPARE((QStringList{head.color(QPalette::ButtonText).name(), head.color(QPalette::Button).name(),
                          rows.color(QPalette::HighlightedText).name(), rows.color(QPalette::Highlight).name()}),
             given);
  }

  // A head counts as the first row, so that what is below it begins with the other colour.
  void rowsTakeTurnsInTheirColours() {
    for (const bool dark : {false, true}) {
      UseTheme(dark);
      for (const char* title : {"", "Runs"}) {
        RowList list(
            "Rows", "Rows", {{title}}, [](std::size_t row, int) { return QString("run %1").arg(row); }, nullptr,
            RowColourSet::kGiven);
        list.resize(300, 200);
        list.Reset(4);
        list.Choose(3);
        list.show();
        const QImage picture = list.viewport()->grab().toImage();
        const auto ground_of = [&](int row) {
          return picture.pixelColor(250, list.rowViewportPosition(row) + list.rowHeight(row) / 2);
        };
        const bool has_head = *title != 0;
        QCOMPARE(ground_of(0), has_head ? kAmberRow.ground : kPaleRow.ground);
        QCOMPARE(ground_of(1), has_head ? kPaleRow.ground : kAmberRow.ground);
        QCOMPARE(ground_of(2), ground_of(0));
        QCOMPARE(ground_of(3), kChosenRow.ground);
        for (const int row : {0, 1, 3}) {
          const QRect place(0, list.rowViewportPosition(row), 200, list.rowHeight(row));
          ReadsOn("row", test::Strongest(picture.copy(place), ground_of(row)), ground_of(row));
        }
        QCOMPARE(list.horizontalHeader()->isVisible(), has_head);
        if (has_head) {
          const QImage head = list.horizontalHeader()->grab().toImage();
          ReadsOn("head", test::Strongest(head, head.pixelColor(250, 10)), head.pixelColor(250, 10));
        }
      }
    }
  }

  void homeAndEndGoToTheFirstRowAndTheLast() {
    RowList list(
        "Rows", "Rows", {{"A"}, {"B"}}, [](std::size_t, int) { return QString("x"); }, nullptr);
    list.Reset(100);
    list.show();
    const std::pair<Qt::Key, std::size_t> steps[] = {
        {Qt::Key_End, 99}, {Qt::Key_Up, 98}, {Qt::Key_Home, 0}, {Qt::Key_Down, 1}};
    for (const auto& [key, row] : steps) {
      QTest::keyClick(&list, key);
      QCOMPARE(list.Chosen(), std::vector<std::size_t>{row});
    }
  }

  // What others wrote is no page: a tip that were one would show its links and open the files that it names.
  void aTipShowsAForeignTextAsItStands() {
    for (const QString text : {"<b>x</b><img src=\"/dev/zero\">", "550 <h1>Expired</h1>\n <a href='x'>renew</a>",
                               "a < b", "&lt;b&gt;", "plain"}) {
      RowList list(
          "Rows", "Rows", {{}}, [text](std::size_t, int) { return text; }, nullptr);
      list.Grow(1);
      const QString tip = list.model()->index(0, 0).data(Qt::ToolTipRole).toString();
      QTextDocument shown;
      Qt::mightBeRichText(tip) ? shown.setHtml(tip) : shown.setPlainText(tip);
      QCOMPARE(shown.toPlainText(), text);
    }
  }
  void anEmptyListCopiesNothing() {
    const RowList list(
        "Rows", "Rows", {{"Name"}}, [](std::size_t, int) { return "a"; }, nullptr);
    QGuiApplication::clipboard()->setText("mine");
    list.Copy();
    QCOMPARE(QGuiApplication::clipboard()->text(), "mine");
  }
  void aLongListAsksForWhatIsOnTheScreen() {
    std::size_t asked = 0;
    RowList list(
        "Rows", "Rows", {{"#", 6, true}, {"Name"}}, [&](std::size_t row, int) { return ++asked, QString::number(row); },
        nullptr);
    list.resize(300, 400);
    list.Reset(400000);
    list.Grow(500000);
    list.show();
    QVERIFY(QTest::qWaitForWindowExposed(&list));
    list.Choose(499999);
    list.grab();
    QVERIFY2(asked > 0 && asked < 2000, qPrintable(QString::number(asked)));
    QCOMPARE(list.Chosen(), std::vector<std::size_t>{499999});
    list.Reset(3);
    QVERIFY(list.Chosen().empty());
    QTest::keyClick(&list, Qt::Key_Down);  // takes the row that the list came to
    QCOMPARE(list.Chosen(), std::vector<std::size_t>{0});
  }

  // Row 0 is short, row 1 three times as long as the list is wide, row 90 longer still. What is chosen below does not
  // scroll back, in either direction.
  void aLongTextIsCutGoesOnBelowOrIsScrolledTo() {
    for (const auto direction : {Qt::LeftToRight, Qt::RightToLeft}) {
      QApplication::setLayoutDirection(direction);
      for (const LongText way : {LongText::kCut, LongText::kWrapped, LongText::kWhole}) {
        RowList list(
            "Rows", "Rows", {{}},
            [](std::size_t row, int) {
              return QString("word ").repeated(row == 90 ? 60 : row == 1 ? 30 : 1);
            },
            nullptr);
        list.SetLongText(way);
        list.resize(300, 200);
        list.Reset(3);
        list.show();
        QVERIFY(QTest::qWaitForWindowExposed(&list));
        const int letters = list.fontMetrics().horizontalAdvance("word ");
        QCOMPARE(list.rowHeight(0), list.rowHeight(2));
        QCOMPARE(list.rowHeight(1) > 2 * list.rowHeight(0), way == LongText::kWrapped);
        const QScrollBar* bar = list.horizontalScrollBar();
        QCOMPARE(bar->isVisible(), way == LongText::kWhole);
        QCOMPARE(list.columnWidth(0) >= 29 * letters, way == LongText::kWhole);
        list.Choose(0);
        for (const Qt::Key key : {direction == Qt::LeftToRight ? Qt::Key_Right : Qt::Key_Left, Qt::Key_Down}) {
          QTest::keyClick(&list, key);
          QCOMPARE(bar->value() > 0, way == LongText::kWhole);
        }
        QCOMPARE(list.Chosen(), std::vector<std::size_t>{1});
        list.Grow(100);
        list.Choose(90);
        QCOMPARE(list.columnWidth(0) >= 59 * letters, way == LongText::kWhole);
        const int before = list.rowHeight(1);
        list.resize(31 * letters, 200);
        QCOMPARE(list.rowHeight(1) < before, way == LongText::kWrapped);
        // The end of a row that is higher than the list.
        list.resize(6 * letters, 4 * list.rowHeight(0));
        const QModelIndex longest = list.model()->index(90, 0);
        list.scrollTo(longest, QAbstractItemView::PositionAtBottom);
        const int below = list.viewport()->height() - list.visualRect(longest).bottom();
        QVERIFY2(way != LongText::kWrapped || std::abs(below) < list.rowHeight(0), qPrintable(QString::number(below)));
        list.Reset(1);
        QTRY_VERIFY(!bar->isVisible());
        QCOMPARE(list.columnWidth(0), list.viewport()->width());
      }
    }
  }

  void anEmptyListNamesTheNextStep() {
    RowList list(
        "Rows", "Rows", {{}}, [](std::size_t, int) { return QString("x"); }, nullptr);
    list.SetEmptyText("Send a message to see one.");
    list.resize(200, 200);
    list.show();
    const auto* text = list.findChild<QLabel*>("EmptyState");
    const auto told = [&] { return QAccessible::queryAccessibleInterface(&list)->text(QAccessible::Description); };
    QVERIFY(text->isVisible() && list.viewport()->rect() == text->geometry());
    QCOMPARE(told(), QString("Send a message to see one."));
    list.resize(300, 100);
    QCOMPARE(text->geometry(), list.viewport()->rect());
    list.Grow(1);
    QVERIFY(!text->isVisible());
    QCOMPARE(told(), QString());
    list.Reset(0);
    QVERIFY(text->isVisible());
  }

  // Also while a box stands over it, when nothing that was put away is gone yet.
  void aNoticeHasTheButtonsOfItsOwnOffers() {
    NoticeBar bar(nullptr);
    for (const auto& offers : {QStringList{"&Fill in", "&Practise"}, QStringList{"Restore", "Discard"}}) {
      bar.Show("x", {{offers[0], "first", [] {}}, {offers[1], "second", [] {}}});
      QCoreApplication::processEvents();  // deletes nothing, as the loop of a box does not
      QStringList seen;
      for (const auto* button : bar.findChildren<QPushButton*>()) {
        if (button->isVisible()) seen << button->text();
      }
      QCOMPARE(seen, offers);
    }
  }

  void fieldsBeginInOneLine() {
    for (const auto direction : {Qt::LeftToRight, Qt::RightToLeft}) {
      QApplication::setLayoutDirection(direction);
      QDialog dialog;
      auto* column = new FormColumn(&dialog);
      auto* pages = column->Add(new QTabWidget(&dialog));
      std::vector<QWidget*> fields;
      for (const char* page : {"One", "Two"}) {
        auto* place = new QWidget(&dialog);
        auto* rows = new FormColumn(place);
        fields.push_back(rows->AddGrid()->Add("A", QString("%1:").arg(page), new QLineEdit()));
        FormGrid* box = rows->AddBox("Box");
        fields.push_back(box->Add("B", "A label that is rather long:", new QComboBox()));
        auto* narrow = new QLineEdit();
        narrow->setFixedWidth(60);
        fields.push_back(box->Add("C", "Narrow:", narrow, {new QLabel("pixels")}));
        fields.push_back(rows->AddBox("Without labels")->AddPlain("D", new QCheckBox("Switch")));
        FormGrid* indented = rows->AddGrid();
        indented->AddWide("E", new QRadioButton("Method"));
        indented->Indent(40);
        fields.push_back(indented->Add("F", "Below:", new QLineEdit()));
        pages->addTab(place, page);
      }
      dialog.show();
      QVERIFY(QTest::qWaitForWindowExposed(&dialog));
      QSet<int> lines;
      for (int page = 0; page < 2; ++page) {
        pages->setCurrentIndex(page);
        QCoreApplication::processEvents();
        for (const QWidget* field : fields) {
          if (!field->isVisible()) continue;
          const QRect place(field->mapTo(&dialog, QPoint()), field->size());
          lines << (direction == Qt::RightToLeft ? dialog.width() - place.right() : place.left());
        }
      }
      QCOMPARE(lines.size(), 1);
      test::LayoutRequests requests(dialog);
      QTRY_COMPARE(requests.Within(100), 0);
      QFont larger = dialog.font();
      larger.setPointSize(2 * larger.pointSize());
      dialog.setFont(larger);
      fields.at(1)->hide();
      QTRY_COMPARE(requests.Within(100), 0);
      auto* label = dialog.findChild<QLabel*>();
      QCOMPARE(label->buddy(), fields.front());
      fields.front()->setEnabled(false);
      QVERIFY(!label->isEnabled());
      fields.front()->setEnabled(true);
      QVERIFY(label->isEnabled());
    }
  }

  // A box that grows up to 100 pixels, one that grows, one that does not, and one that is not there.
  void aLineFoldsWhereItHasNoRoom() {
    struct Case {
      int width;
      const char* places;  // of each: line, begin and width
    };
    for (const auto& [width, places] : {Case{400, "0:0+100 0:110+200 0:320+80"}, Case{260, "0:0+60 0:70+100 0:180+80"},
                                        Case{259, "0:0+100 0:110+149 1:0+80"}, Case{150, "0:0+100 1:0+150 2:0+80"},
                                        Case{100, "0:0+100 1:0+100 2:0+80"}}) {
      for (const auto direction : {Qt::LeftToRight, Qt::RightToLeft}) {
        QWidget window;
        window.setLayoutDirection(direction);
        auto* line = new FoldingLine(&window, 10);
        std::vector<QWidget*> boxes;
        for (const auto& [least, most] : {std::pair(60, 100), std::pair(100, QWIDGETSIZE_MAX), std::pair(80, 80)}) {
          auto* box = new QWidget(&window);
          box->setMinimumSize(least, 20);
          box->setMaximumSize(most, 20);
          box->setSizePolicy(least == 80 ? QSizePolicy::Fixed : QSizePolicy::Expanding, QSizePolicy::Fixed);
          boxes.push_back(box);
          line->addWidget(box);
        }
        auto* absent = new QWidget(&window);
        absent->setMinimumSize(90, 90);
        absent->hide();
        line->addWidget(absent);
        window.resize(width, 100);
        window.show();
        QStringList seen;
        for (const QWidget* box : boxes) {
          const QRect at = QStyle::visualRect(direction, window.rect(), box->geometry());
          seen << QString("%1:%2+%3").arg(at.top() / 26).arg(at.left()).arg(at.width());
        }
        QCOMPARE(seen.join(' '), QString(places));
        QCOMPARE(line->sizeHint(), QSize(260, 20));
        QCOMPARE(line->heightForWidth(width), boxes.back()->geometry().bottom() + 1);
        QCOMPARE(line->minimumSize(), QSize(100, line->heightForWidth(width)));  // a window as low has to scroll
      }
    }
  }

  // Also where the controls were made in another order than they stand in.
  void theTabKeyFollowsTheRows() {
    QDialog dialog;
    auto* third = new QLineEdit(&dialog);
    auto* fourth = new QPushButton("&Go", &dialog);
    auto* second = new QLineEdit(&dialog);
    auto* column = new FormColumn(&dialog);
    auto* first = column->AddGrid()->Add("First", "&First:", new QLineEdit());
    FormGrid* rows = column->AddBox("Box");
    rows->Add("Second", "&Second:", second, {third});
    column->Add(fourth);
    auto* both = new QWidget(&dialog);  // a field of two controls
    auto* fifth = new QLineEdit(both);
    auto* sixth = new QPushButton("Beside", both);
    both->setFocusProxy(fifth);
    rows->Add("Fifth", "F&ifth:", both);
    auto* alone = rows->Add("Seventh", "Seventh:", new QLineEdit());
    auto* eighth = new QPushButton("B&utton", &dialog);
    auto* ninth = new QPushButton("Longer button", &dialog);
    rows->AddButton(both, eighth);
    rows->AddButton(alone, ninth);
    QDialogButtonBox* box = column->AddButtons(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    QCOMPARE(dialog.focusWidget(), first);
    for (QWidget* next : {static_cast<QWidget*>(second), static_cast<QWidget*>(third), static_cast<QWidget*>(fourth),
                          static_cast<QWidget*>(fifth), static_cast<QWidget*>(sixth), static_cast<QWidget*>(alone),
                          static_cast<QWidget*>(eighth), static_cast<QWidget*>(ninth),
                          static_cast<QWidget*>(box->button(QDialogButtonBox::Ok))}) {
      QTest::keyClick(dialog.focusWidget(), Qt::Key_Tab);
      QCOMPARE(dialog.focusWidget(), next);
    }
    for (const auto& [key, control] : {std::pair(Qt::Key_F, first), std::pair(Qt::Key_I, fifth)}) {
      QTest::keyClick(fourth, key, Qt::AltModifier);
      QCOMPARE(dialog.focusWidget(), control);
    }
    QCOMPARE(fifth->objectName() + fifth->accessibleName(), QString("FifthFifth"));
    QCOMPARE(QRect(eighth->pos(), QSize(eighth->width(), 0)), QRect(ninth->x(), eighth->y(), ninth->width(), 0));
    QCOMPARE(second->mapTo(&dialog, QPoint()).x(), alone->mapTo(&dialog, QPoint()).x());
    QVERIFY(third->geometry().right() > ninth->x());  // other rows go on to the end
    box->button(QDialogButtonBox::Cancel)->click();
    QVERIFY(!dialog.isVisible() && dialog.result() == QDialog::Rejected);
  }

  void theFocusIsSeenOnEveryControl() {
    for (const bool dark : {false, true}) {
      UseTheme(dark);
      QDialog dialog;
      auto* column = new FormColumn(&dialog);
      const std::vector<QWidget*> controls = {new QLineEdit(),
                                              new QPushButton("Button"),
                                              new QCheckBox("Check"),
                                              new QRadioButton("Radio"),
                                              new QComboBox(),
                                              new RowList(
                                                  "Rows", "Rows", {{}}, [](auto, auto) { return QString(); }, nullptr),
                                              (new QTabWidget())->tabBar()};
      for (QWidget* control : controls) {
        auto* tabs = qobject_cast<QTabWidget*>(control->parentWidget());
        if (tabs != nullptr) tabs->addTab(new QWidget(), "Page");
        column->Add(tabs != nullptr ? tabs : control);
      }
      dialog.show();
      QVERIFY(QTest::qWaitForWindowActive(&dialog));
      for (QWidget* control : controls) {
        control->setFocus(Qt::TabFocusReason);
        QCoreApplication::processEvents();
        auto* ring = dialog.findChild<FocusRing*>();
        QVERIFY(ring != nullptr && ring->isVisible() && ring->control() == control);
        const QImage picture = dialog.grab(ring->geometry()).toImage();
        const QColor window = dialog.palette().color(QPalette::Window);
        for (const QPoint& at : {QPoint(6, 0), QPoint(6, picture.height() - 1), QPoint(0, picture.height() / 2)})
          ReadsOn(control->metaObject()->className(), picture.pixelColor(at), window, 3.0);
      }
      QTest::mouseClick(controls[1], Qt::LeftButton);
      QVERIFY(!dialog.findChild<FocusRing*>()->isVisible());
      QTest::keyClick(controls[1], Qt::Key_Shift);
      QVERIFY(dialog.findChild<FocusRing*>()->isVisible());
    }
  }

  // On both parts of a bar that is half full, in either direction.
  void theTextOfABarIsSeen() {
    for (const auto direction : {Qt::LeftToRight, Qt::RightToLeft}) {
      for (const bool dark : {false, true}) {
        UseTheme(dark);
        QApplication::setLayoutDirection(direction);
        ProgressPanel panel("CancelButton", "Cancel", nullptr);
        CountBar* bar = panel.AddBar("ProgressBar", "Lines read:");
        QCOMPARE(bar->accessibleName(), QString("Lines read"));
        bar->setFormat("MMMMMMMMMMMMMMMM");
        bar->Count(std::uint64_t{1} << 60, std::uint64_t{1} << 61);
        bar->setFixedWidth(300);
        panel.show();
        QVERIFY(QTest::qWaitForWindowExposed(&panel));
        const QImage picture = bar->grab().toImage();
        const bool full_is_left = direction == Qt::LeftToRight;
        for (const bool left : {true, false}) {
          const QImage half = picture.copy(left ? 100 : 152, 4, 45, picture.height() - 8);
          const QColor ground = dark || left == full_is_left
                                    ? bar->palette().color(left == full_is_left ? QPalette::Highlight : QPalette::Base)
                                    : QColor(Qt::white);
          ReadsOn(left ? "left half" : "right half", test::Strongest(half, ground), ground);
        }
        QSignalSpy pressed(&panel, &ProgressPanel::Pressed);
        panel.findChild<QPushButton*>("CancelButton")->click();
        QCOMPARE(pressed.size(), 1);
      }
    }
  }

  // A sentence keeps its full stop behind it, and stands on the window's side.
  void textsKeepTheirDirection() {
    for (const auto direction : {Qt::LeftToRight, Qt::RightToLeft}) {
      QApplication::setLayoutDirection(direction);
      RowList list(
          "Rows", "Rows", {{}}, [](std::size_t, int) { return QString("/HHHHH."); }, nullptr);
      list.setFocusPolicy(Qt::NoFocus);
      list.resize(400, 100);
      list.Reset(1);
      list.show();
      const QImage row = list.viewport()->grab().toImage().copy(0, 0, list.viewport()->width(), list.rowHeight(0));
      const QColor ground = row.pixelColor(row.width() / 2, 2);
      const auto has_ink = [&](int x, int from, int height) {
        return Contrast(test::Strongest(row.copy(x, from, 1, height), ground), ground) > 2;
      };
      int last = row.width() - 1;
      while (last > 0 && !has_ink(last, 0, row.height())) --last;
      QVERIFY(!has_ink(last, 0, row.height() / 2));
      QCOMPARE(last > row.width() / 2, direction == Qt::RightToLeft);
    }
  }

  // What it returns is called on the window's thread; a failure is a result like any other.
  void workBesideAWindowComesBackOrEnds() {
    auto window = std::make_unique<QObject>();
    auto* task = new BackgroundTask(window.get());
    QString told;
    task->Start([&](const platform::CancelToken&) {
      const Result<int> result = Error{Failure::kNotPermitted, "It is gone.", ""};
      QThread* worker = QThread::currentThread();
      return [&told, result, worker] {
        told = QString(worker == QThread::currentThread() ? "there: " : "here: ") + InWords(result.error());
      };
    });
    QVERIFY(task->is_running());
    QTRY_COMPARE(told, QString("here: It is gone."));
    QVERIFY(!task->is_running());

    std::atomic<int> ended = 0;
    const auto until_cancelled = [&](const platform::CancelToken& cancel) {
      while (cancel.Requested() == platform::Stop::kNone) std::this_thread::yield();
      ++ended;
      return [&told] { told = "cancelled"; };
    };
    task->Start(until_cancelled);
    task->Cancel();
    QTRY_COMPARE(told, QString("cancelled"));
    task->Start(until_cancelled);
    told = "";
    window.reset();  // closing cancels, waits, and hears no more
    QCOMPARE(ended.load(), 2);
    QCoreApplication::processEvents();
    QCOMPARE(told, QString());
  }
};

}  // namespace quillcast::desktop

QTEST_MAIN(quillcast::desktop::WidgetsTest)
#include "widgets_test.moc"
