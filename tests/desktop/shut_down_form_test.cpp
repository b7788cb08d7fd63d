// The countdown, second by second; nothing here switches anything off.
#include "desktop/run/shut_down_form.h"

#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTextBrowser>
#include <QTimer>
#include <memory>

#include "desktop/form_rig.h"
#include "desktop/shell/help_key.h"

namespace quillcast::desktop {

class ShutDownFormTest : public QObject {
  Q_OBJECT

  // A countdown whose seconds pass at the test's word alone.
  struct Countdown {
    int orders = 0;
    bool allowed = false;
    ShutDownForm form{[this] {
                        ++orders;
                        return allowed;
                      },
                      nullptr};
    QTimer& timer = *form.findChild<QTimer*>("SecondTimer");

    Countdown() {
      form.show();
      timer.setInterval(1 << 30);
    }
    QString Label() const { return form.findChild<QLabel*>("RemainingLabel")->text(); }
    void Cancel() { QTest::mouseClick(form.findChild<QPushButton*>("CancelButton"), Qt::LeftButton); }
    void Pass(int seconds) {
      while (seconds-- > 0) test::PassTime(timer);
    }
  };

 private slots:
  void secondsAreCountedFromTheMomentOfOpening() {
    ShutDownForm form([] { return false; }, nullptr);
    const auto& timer = *form.findChild<QTimer*>("SecondTimer");
    QVERIFY(timer.isActive());
    QCOMPARE(timer.interval(), 1000);
    QCOMPARE(timer.timerType(), Qt::PreciseTimer);
    QStringList texts;
    for (const auto* label : form.findChildren<QLabel*>()) texts << label->text();
    QCOMPARE(texts.join('|'),
             QString("Quillcast is going to shut down the system in 60 seconds.|If you do not want "
                     "to shut down Windows, please press the Cancel button.|Remaining Time :|60|Seconds."));
    QCOMPARE(form.windowTitle(), QString("Shut Down"));
  }

  void theOrderComesOnTheTickThatWritesZero() {
    for (const bool allowed : {true, false}) {
      Countdown countdown;
      countdown.allowed = allowed;
      for (int left = 60; left > 0; --left) {
        QCOMPARE(countdown.Label(), QString::number(left));
        QCOMPARE(countdown.orders, 0);
        countdown.Pass(1);
      }
      QCOMPARE(countdown.Label(), QString("0"));
      QCOMPARE(countdown.orders, 1);
      QVERIFY(!countdown.timer.isActive());
      QCOMPARE(countdown.form.isVisible(), !allowed);  // after a refusal it stands at 0 until Cancel
      countdown.Pass(5);
      QCOMPARE(countdown.Label() + QString::number(countdown.orders), QString("01"));
      if (!allowed) countdown.Cancel();
      QVERIFY(!countdown.form.isVisible());
    }
  }

  void cancelAloneStopsIt() {
    for (const int passed : {0, 1, 30, 59}) {
      Countdown countdown;
      countdown.Pass(passed);
      QTest::keyClick(&countdown.form, Qt::Key_F4, Qt::AltModifier);
      QTest::keyClick(&countdown.form, Qt::Key_Escape);
      countdown.form.close();  // as the window manager asks
      QVERIFY(countdown.form.isVisible() && countdown.timer.isActive());
      QCOMPARE(countdown.Label(), QString::number(60 - passed));
      countdown.Cancel();
      QVERIFY(!countdown.form.isVisible());
      countdown.Pass(60);
      QCOMPARE(countdown.orders, 0);
      QCOMPARE(countdown.Label(), QString::number(60 - passed));
    }
  }

  void helpStandsBesideItWhereverItIs() {
    test::FormRig rig;
    HelpKey key(rig.folders);
    qApp->installEventFilter(&key);
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    const QSize size = ShutDownForm([] { return false; }, nullptr).sizeHint();
    const QRect room(screen.topLeft(), screen.size() - size);
    for (const QPoint at : {room.center(), room.topLeft(), room.topRight(), room.bottomLeft(), room.bottomRight()}) {
      Countdown countdown;
      countdown.form.move(at);
      QTest::keyClick(countdown.form.findChild<QPushButton*>("CancelButton"), Qt::Key_F1);
      const auto* help = countdown.form.findChild<QDialog*>("HelpForm");
      QVERIFY(help != nullptr && help->isVisible() && !help->isModal());
      QVERIFY(help->findChild<QTextBrowser*>()->source().path().endsWith("/Welcome.htm"));
      QVERIFY2(!help->frameGeometry().intersects(countdown.form.frameGeometry()), "it covers Cancel");
      QVERIFY(screen.contains(help->frameGeometry()));
      QVERIFY(help->height() >= 150);
      countdown.Pass(1);
      countdown.Cancel();
      QCOMPARE(countdown.Label(), QString("59"));
      QVERIFY(!countdown.form.isVisible());
    }
  }
};

}  // namespace quillcast::desktop

QTEST_MAIN(quillcast::desktop::ShutDownFormTest)
#include "shut_down_form_test.moc"
