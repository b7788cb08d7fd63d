#include "desktop/shell/start_window.h"

#include <QApplication>
#include <QPointer>
#include <QTimer>

#include "desktop/shell/splash_form.h"
#include "desktop/widgets/soon.h"
#include "platform/system_name.h"

namespace quillcast::desktop {
namespace {

constexpr int kSplashTime = 1000;  // milliseconds

void Show(MainForm* window) {
  window->show();
  QTimer::singleShot(0, window, &MainForm::ShowTipsAtStart);
}

}  // namespace

std::unique_ptr<MainForm> StartWindow(const profile::Program& program) {
  if (!SplashForm::IsWanted(program.settings)) {
    auto window = std::make_unique<MainForm>(program);
    window->Load();
    QTimer::singleShot(0, window.get(), [made = window.get()] { Show(made); });
    return window;
  }
  QApplication::setOverrideCursor(Qt::WaitCursor);
  const QPointer splash = new SplashForm(platform::SystemName());  // goes with the application where it is not closed
  splash->setAttribute(Qt::WA_DeleteOnClose);
  splash->Run();
  auto window = std::make_unique<MainForm>(program);
  window->LoadLists();
  QTimer::singleShot(kSplashTime, window.get(), [made = window.get(), splash] {
    QApplication::restoreOverrideCursor();
    if (splash) splash->close();
    Show(made);
  });
  Soon(window.get(), [made = window.get()] { made->LoadDocument(); });
  return window;
}

}  // namespace quillcast::desktop
