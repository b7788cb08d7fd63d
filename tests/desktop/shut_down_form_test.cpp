// The countdown, second by second; nothing here switches anything off.
#include "desktop/run/shut_down_form.h"

#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTextBrowser>
#include <QTimer>
#include <atomic>
#include <memory>
#include <thread>

#include "desktop/form_rig.h"
#include "desktop/shell/help_key.h"

namespace quillcast::desktop {

class ShutDownFormTest : public QObject {
  Q_OBJECT

  // What the label read when it was painted last.
  class PaintWatch final : public QObject {
   public:
    explicit PaintWatch(QLabel* label) : label_(label) { label->installEventFilter(this); }
    QString text;
    bool eventFilter(QObject* /*watched*/, QEvent* event) override {
      if (event->type() == QEvent::Paint) text = label_->text();
      return false;
    }

   private:
    QLabel* label_;
  };

  // A countdown whose seconds pass at the test's word alone.
  struct Countdown {
    std::atomic<int> orders = 0;
    std::atomic<int> cancels = 0;
    std::atomic<bool> answers = true;
    bool allowed = false;
    QStringList steps;
    ShutDownForm form{[this](const platform::CancelToken& cancel) -> Result<void> {
                        ++orders;
                        while (!answers && cancel.Requested() == platform::Stop::kNone) std::this_thread::yield();
                        if (cancel.Requested() != platform::Stop::kNone) ++cancels;
                        return allowed ? Result<void>() : Error{Failure::kNotPermitted, "It refused.", ""};
                      },
                      nullptr};
    QTimer& timer = *form.findChild<QTimer*>("SecondTimer");

    Countdown() {
      form.at_zero = [this] { steps << "asked at " + Label() + ", order " + QString::number(orders); };
      form.answered = [this](const Result<void>& off) { steps << (off ? "taken" : "refused"); };
      form.show();
      timer.setInterval(1 << 30);
    }
    QString Label() const { return form.findChild<QLabel*>("RemainingLabel")->text(); }
    void Cancel() { QTest::mouseClick(form.findChild<QPushButton*>("CancelButton"), Qt::LeftButton); }
    void Pass(int seconds) {
      while (seconds-- > 0) test::PassTime(timer);
    }
  };

  static Result<void> Nothing(const platform::CancelToken& /*unused*/) { return {}; }

 private slots:
  void secondsAreCountedFromTheMomentOfOpening() {
    ShutDownForm form(Nothing, nullptr);
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
      QVERIFY(!countdown.timer.isActive());
      QTRY_COMPARE(countdown.steps.size(), 2);
      QCOMPARE(countdown.steps.join(", "), QString("asked at 0, order 0, ") + (allowed ? "taken" : "refused"));
      QCOMPARE(countdown.orders, 1);
      QCOMPARE(countdown.form.isVisible(), !allowed);  // after a refusal it stands at 0 until Cancel
      countdown.Pass(5);
      QCOMPARE(countdown.Label() + QString::number(countdown.orders.load()), QString("01"));
      if (!allowed) countdown.Cancel();
      QVERIFY(!countdown.form.isVisible());
    }
  }

  void zeroIsSeenAndCancelHeardWhileTheSystemIsAsked() {
    for (const bool allowed : {true, false}) {
      Countdown countdown;
      countdown.allowed = allowed;  // it may have taken the order before the cancel came
      countdown.answers = false;
      QVERIFY(QTest::qWaitForWindowExposed(&countdown.form));
      countdown.Pass(59);
      PaintWatch painted(countdown.form.findChild<QLabel*>("RemainingLabel"));
      countdown.Pass(1);
      QTRY_COMPARE(countdown.orders, 1);
      QTRY_COMPARE(painted.text, QString("0"));
      QVERIFY(countdown.form.isVisible());
      countdown.Cancel();
      QTRY_VERIFY(!countdown.form.isVisible());
      QCOMPARE(countdown.cancels, 1);
      QCOMPARE(countdown.form.result(), static_cast<int>(allowed ? QDialog::Accepted : QDialog::Rejected));
      QCOMPARE(countdown.steps.last(), QString(allowed ? "taken" : "refused"));
      QCOMPARE(countdown.orders, 1);
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
    const QSize size = ShutDownForm(Nothing, nullptr).sizeHint();
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
