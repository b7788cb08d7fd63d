#include "desktop/shell/splash_form.h"

#include <QGuiApplication>
#include <QLabel>
#include <QProgressBar>
#include <QScreen>
#include <QVBoxLayout>

#include "desktop/widgets/icons.h"
#include "desktop/widgets/qt_text.h"
#include "profile/version.h"

namespace quillcast::desktop {
namespace {

constexpr int kBarSteps = 500;

}  // namespace

SplashForm::SplashForm(std::string_view system_name)
    : QWidget(nullptr, Qt::SplashScreen | Qt::FramelessWindowHint), progress_(new QProgressBar(this)) {
  setObjectName("SplashForm");
  setFixedSize(420, 250);
  setStyleSheet(
      "#SplashForm { background: #1f5f8b; } QLabel { color: white; } "
      "QProgressBar { border: none; background: #17486a; max-height: 4px; } QProgressBar::chunk { background: #f2b84b; "
      "}");
  setAttribute(Qt::WA_StyledBackground);
  auto* sign = new QLabel(this);
  sign->setPixmap(ProgramIcon().pixmap(64, 64));
  auto* name = new QLabel("Quillcast Classic", this);
  QFont large = name->font();
  large.setPointSize(large.pointSize() + 12);
  large.setBold(true);
  name->setFont(large);
  auto* version = new QLabel(QString("%1.%2").arg(profile::kVersionMajor).arg(profile::kVersionMinor), this);
  version->setObjectName("VersionNumber");
  auto* system = new QLabel(ToQt(system_name), this);
  system->setObjectName("WindowsVersion");
  system->setTextFormat(Qt::PlainText);
  progress_->setTextVisible(false);
  progress_->setRange(0, kBarSteps);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(28, 24, 28, 20);
  column->addWidget(sign);
  column->addWidget(name);
  column->addWidget(version);
  column->addWidget(system);
  column->addStretch(1);
  column->addWidget(progress_);
  const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
  move(screen.center() - rect().center());
}

bool SplashForm::IsWanted(const profile::SettingsStore& settings) {
  return IgnoreErrors(settings.Read("Options", "Splash", "1"), "1") != "0";
}

Result<void> SplashForm::SetWanted(profile::SettingsStore& settings, bool wanted) {
  return settings.Write("Options", "Splash", wanted ? "1" : "0");
}

void SplashForm::Run() {
  show();
  repaint();
  for (int step = 1; step <= kBarSteps; ++step) progress_->setValue(step);
  progress_->repaint();
}

}  // namespace quillcast::desktop
