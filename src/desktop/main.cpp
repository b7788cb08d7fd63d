// The program `quillcast-desktop`.
#include <QApplication>
#include <QCommandLineParser>
#include <QFileInfo>
#include <QLibraryInfo>
#include <QLocale>
#include <QLoggingCategory>
#include <QScreen>
#include <QTranslator>
#include <QUrl>
#include <cmath>
#include <csignal>
#include <cstdio>

#include "desktop/mail_file/print_without_window.h"
#include "desktop/sandbox.h"
#include "desktop/shell/help_key.h"
#include "desktop/shell/single_instance.h"
#include "desktop/shell/start_window.h"
#include "desktop/termination.h"
#include "desktop/widgets/icons.h"
#include "desktop/widgets/look.h"
#include "desktop/widgets/qt_prompts.h"
#include "desktop/widgets/qt_text.h"
#include "platform/environment.h"
#include "platform/keyring.h"
#include "platform/session_log.h"
#include "profile/startup.h"
#include "profile/version.h"

namespace quillcast::desktop {
namespace {

constexpr const char* kNotHandedOver = QT_TRANSLATE_NOOP(
    "Start", "The window that is open already did not take what was to be opened. Open it there, or try it once more.");

// The screen's size is in physical pixels; rounded up, because the toolkit rounds it down where its scale does not
// divide it. The other instance, where there is one, flashes when it is asked after.
profile::StartupFacts Facts(SingleInstance& instance, const std::vector<std::string>& arguments) {
  const QScreen* screen = QGuiApplication::primaryScreen();
  const qreal ratio = screen->devicePixelRatio();
  return {.window_with_our_title = instance.AnotherIsRunning(arguments),
          .version = profile::RunningSystem(),
          .screen = profile::PixelSize{static_cast<int>(std::ceil(screen->size().width() * ratio)),
                                       static_cast<int>(std::ceil(screen->size().height() * ratio))}};
}

// As the window takes them, wherever it was started: the absolute paths of files, and "mailto:" addresses.
std::vector<std::string> StartArguments(const QStringList& given) {
  std::vector<std::string> arguments;
  for (const QString& argument : given) {
    const QUrl address(argument);
    if (address.scheme() == "mailto") {
      arguments.push_back(FromQt(argument));
    } else if (!argument.isEmpty()) {
      const QString path = address.isLocalFile() ? address.toLocalFile() : argument;
      arguments.push_back(PathFromQt(QFileInfo(path).absoluteFilePath()).string());
    }
  }
  return arguments;
}

// What ends the program, told on the screen and to whoever started it; a second start ends without a word.
int Refuse(platform::Prompts& prompts, const std::string& message) {
  if (message.empty()) return 0;
  std::fprintf(stderr, "quillcast-desktop: %s\n", message.c_str());
  prompts.Critical(message);
  return 1;
}

// Switches the engine's sandbox off where it cannot work, and says so. It can be done without: the page runs no scripts
// and loads nothing remote. Null where the sandbox is used, or was switched off by whoever started this.
const char* GoOnWithoutSandbox() {
  if (std::getenv("QTWEBENGINE_DISABLE_SANDBOX") != nullptr) return nullptr;
  const Sandbox sandbox = FindSandbox();
  if (sandbox == Sandbox::kUsable) return nullptr;
  ::setenv("QTWEBENGINE_DISABLE_SANDBOX", "1", 1);
  return sandbox == Sandbox::kRoot
             ? "Started as root, so the editor runs without its sandbox. Better start it as yourself."
             : "This system lets nobody make user namespaces, so the editor runs without its sandbox.";
}

// The window in the user's language, where a catalogue of it is installed; the toolkit's own texts go along.
void Translate(const profile::Folders& folders) {
  static QTranslator ours;
  static QTranslator toolkit;
  if (!ours.load(QLocale(), "quillcast", "_", PathToQt(folders.program / "translations"))) return;
  QCoreApplication::installTranslator(&ours);
  if (toolkit.load(QLocale(), "qtbase", "_", QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
    QCoreApplication::installTranslator(&toolkit);
}

int Run(QApplication& application, const std::optional<std::filesystem::path>& profile,
        const std::vector<std::string>& arguments, const char* warning) {
  platform::ProcessEnvironment environment;
  const profile::Folders folders =
      profile::ResolveFolders(environment, PathFromQt(QApplication::applicationFilePath()), profile);
  Translate(folders);
  QtPrompts prompts(profile::kWindowTitle);
  SingleInstance instance(PathToQt(folders.data));
  const profile::StartupFacts facts = Facts(instance, arguments);
  if (facts.window_with_our_title && !arguments.empty() && !instance.handed_over()) {
    return Refuse(prompts, FromQt(QCoreApplication::translate("Start", kNotHandedOver)));
  }
  if (const auto refusal = profile::CheckStartup(facts, folders)) return Refuse(prompts, refusal->message);
  const auto prepared = profile::PrepareFolders(folders);
  if (!prepared) std::fprintf(stderr, "quillcast-desktop: %s\n", InOneLine(prepared.error()).c_str());
  profile::SettingsStore settings(folders.settings, profile::kWindowPatience);
  const auto usable = settings.CheckFile();
  if (!usable) prompts.Warn(Describe(usable.error()));

  platform::XdgDesktop desktop(true);
  platform::clsExitWindows power(platform::PowerPlacesOf(environment));
  platform::SystemClock clock;
  platform::SystemEntropy entropy;
  platform::Keyring keyring(platform::KeyringPlaceOf(environment));
  const platform::SessionLog log(folders.data, clock);
  const profile::Program program{folders, settings, prompts, desktop, power, clock, entropy, keyring};
  HelpKey help_key(folders);
  application.installEventFilter(&help_key);
  const auto window = StartWindow(program);
  QObject::connect(&instance, &SingleInstance::Raised, window.get(), &MainForm::Flash);
  QObject::connect(&instance, &SingleInstance::Asked, window.get(), &MainForm::Open);
  QObject::connect(window.get(), &MainForm::Closes, &instance, &SingleInstance::Hold);
  instance.BeginHearing();
  window->Open(arguments);
  if (warning != nullptr) window->Say(warning);
  if (!prepared) window->Say(InWords(prepared.error()));  // the cause of whatever else could not be read
  const Termination termination;
  QObject::connect(&termination, &Termination::Asked, window.get(), &MainForm::EndAtOnce);
  QObject::connect(&application, &QGuiApplication::commitDataRequest, window.get(), &MainForm::KeepAside,
                   Qt::DirectConnection);
  return QApplication::exec();
}

}  // namespace
}  // namespace quillcast::desktop

int main(int argc, char** argv) {
  std::signal(SIGCHLD, SIG_DFL);  // NOLINT: whoever started this may ignore them; no program's end could be waited for
  std::signal(SIGPIPE, SIG_IGN);  // NOLINT: a peer that is gone is told by the failing write
  if (const auto ended = quillcast::desktop::PrintWithoutWindow(argc, argv)) return *ended;
  const char* platform_name = std::getenv("QT_QPA_PLATFORM");
  const bool has_display = std::getenv("DISPLAY") != nullptr || std::getenv("WAYLAND_DISPLAY") != nullptr;
  if (platform_name == nullptr && !has_display) {
    std::fputs("quillcast-desktop: There is no display. Use the command in its place: quillcast --help\n", stderr);
    return 69;
  }
  const char* const warning = quillcast::desktop::GoOnWithoutSandbox();
  if (warning != nullptr) std::fprintf(stderr, "quillcast-desktop: %s\n", warning);
  // What the engine says of the graphics it found is for nobody. QT_LOGGING_RULES has the last word.
  QLoggingCategory::setFilterRules("qt.webenginecontext=false\njs=false");
  QApplication application(argc, argv);
  QApplication::setApplicationName("quillcast-desktop");
  QApplication::setApplicationVersion(
      QString("%1.%2").arg(quillcast::profile::kVersionMajor).arg(quillcast::profile::kVersionMinor));
  QApplication::setWindowIcon(quillcast::desktop::ProgramIcon());
  quillcast::desktop::DressWindows();
  QCommandLineParser parser;
  parser.setApplicationDescription("Quillcast Classic sends one personal e-mail to each recipient of a group.");
  parser.addHelpOption();
  parser.addVersionOption();
  parser.addPositionalArgument(
      "what", "An HTML, text or message file (.eml) to open, or a mailto: address to begin a message from.",
      "[FILE|mailto:...]");
  const QCommandLineOption profile("profile", "Keep settings, recipients and history below this folder.", "DIR");
  parser.addOption(profile);
  parser.process(application);
  std::optional<std::filesystem::path> folder;
  if (parser.isSet(profile)) folder = quillcast::desktop::PathFromQt(parser.value(profile));
  return quillcast::desktop::Run(application, folder, quillcast::desktop::StartArguments(parser.positionalArguments()),
                                 warning);
}
