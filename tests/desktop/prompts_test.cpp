// The questions of the desktop, as they are seen and answered by keys.
#include <QApplication>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QTest>
#include <QTimer>

#include "desktop/widgets/qt_prompts.h"
#include "support/temporary_folder.h"

namespace quillcast::desktop {

class PromptsTest : public QObject {
  Q_OBJECT
  desktop::QtPrompts prompts_{"The program"};

  // Calls `act` with the dialog that is open next, and rejects it where it is open still.
  template <typename Dialog>
  static void WhenOpen(const std::function<void(Dialog&)>& act, int tries = 100) {
    QTimer::singleShot(20, qApp, [=] {
      auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
      if (dialog != nullptr && dialog->isActiveWindow()) {
        act(*dialog);
        QTimer::singleShot(2000, dialog, &QDialog::reject);  // a button pressed by its letter takes a moment
      } else if (tries > 0) {
        WhenOpen<Dialog>(act, tries - 1);
      } else {
        qFatal("no dialog was opened");
      }
    });
  }

 private slots:
  void initTestCase() { QApplication::setAttribute(Qt::AA_DontUseNativeDialogs); }

  // Return takes the harmless answer, and what is asked about is never markup.
  void boxesShowTheirTextAndTakeKeys() {
    const std::string text = "<b>Tom</b> & Jerry\r\nnext";
    struct Case {
      std::function<int()> ask;
      QMessageBox::Icon icon;
      Qt::Key key;
      int answer;
    };
    const auto number = [](platform::Answer answer) { return static_cast<int>(answer); };
    for (const Case& c : std::initializer_list<Case>{
             {[&] { return prompts_.Warn(text), 0; }, QMessageBox::Warning, Qt::Key_Return, 0},
             {[&] { return prompts_.Inform(text), 0; }, QMessageBox::Information, Qt::Key_Escape, 0},
             {[&] { return prompts_.Critical(text), 0; }, QMessageBox::Critical, Qt::Key_Return, 0},
             {[&] { return number(prompts_.Ask(text)); }, QMessageBox::Question, Qt::Key_Return,
              number(platform::Answer::kNo)},
             {[&] { return number(prompts_.Ask(text)); }, QMessageBox::Question, Qt::Key_Y,
              number(platform::Answer::kYes)},
             {[&] { return number(prompts_.AskOrCancel(text)); }, QMessageBox::Question, Qt::Key_Return,
              number(platform::Answer::kYes)},
             {[&] { return number(prompts_.AskOrCancel(text)); }, QMessageBox::Question, Qt::Key_N,
              number(platform::Answer::kNo)},
             {[&] { return number(prompts_.AskOrCancel(text)); }, QMessageBox::Question, Qt::Key_Escape,
              number(platform::Answer::kCancel)},
             {[&] { return int{prompts_.Consent(text)}; }, QMessageBox::Question, Qt::Key_Return, 0},
             {[&] { return int{prompts_.Consent(text)}; }, QMessageBox::Question, Qt::Key_Escape, 0},
         }) {
      WhenOpen<QMessageBox>([&c](QMessageBox& box) {
        QCOMPARE(box.text(), QString("<b>Tom</b> & Jerry\nnext"));
        QCOMPARE(box.textFormat(), Qt::PlainText);
        QCOMPARE(box.icon(), c.icon);
        QCOMPARE(box.windowTitle(), QString("The program"));
        const bool is_letter = c.key >= Qt::Key_A && c.key <= Qt::Key_Z;
        QTest::keyClick(&box, c.key, is_letter ? Qt::AltModifier : Qt::NoModifier);
      });
      QCOMPARE(c.ask(), c.answer);
    }
  }

  void aSavedFileGetsTheEndingOfItsKind() {
    const test::TemporaryFolder folder;
    const platform::FileQuestion question{.title = "Save",
                                          .filter = "HTML Files (*.html;*.htm)|*.html;*.htm|All Files (*.*)|*.*",
                                          .name = "Hello to Readers 2026-11-27, report.html",
                                          .ask_before_overwriting = true};
    struct Case {
      const char* typed;  // nothing: what is proposed is taken
      int filter;
      const char* saved;
    };
    for (const Case& c : std::initializer_list<Case>{{"letter", 0, "letter.html"},
                                                     {"letter.htm", 0, "letter.htm"},
                                                     {"letter", 1, "letter"},
                                                     {nullptr, 0, "Hello to Readers 2026-11-27, report.html"}}) {
      WhenOpen<QFileDialog>([&](QFileDialog& dialog) {
        QCOMPARE(dialog.windowTitle(), QString("Save"));
        QCOMPARE(dialog.nameFilters(), QStringList({"HTML Files (*.html *.htm)", "All Files (*)"}));
        dialog.setDirectory(QString::fromStdString(folder.path().string()));
        dialog.selectNameFilter(dialog.nameFilters().at(c.filter));
        emit dialog.filterSelected(dialog.nameFilters().at(c.filter));
        auto* name = dialog.findChild<QLineEdit*>("fileNameEdit");
        if (c.typed != nullptr) name->setText(c.typed);
        QTest::keyClick(name, Qt::Key_Return);
      });
      QCOMPARE(prompts_.PickSaveFile(question), folder.path() / c.saved);
    }
    WhenOpen<QFileDialog>([](QFileDialog& dialog) { dialog.reject(); });
    QVERIFY(prompts_.PickSaveFile(question).empty());
  }
};

}  // namespace quillcast::desktop

QTEST_MAIN(quillcast::desktop::PromptsTest)
#include "prompts_test.moc"
