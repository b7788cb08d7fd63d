// The windows of the recipients, measured from inside, in a process without an editor.
//   bench_lists show PROFILE GROUP: until the group manager shows the group, its end after that, and the peak memory
//   bench_lists import PROFILE GROUP FILE: a delimited list through the dialog, from the press of its button to the end
#include <fmt/format.h>

#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QTableView>
#include <QTimer>

#include "desktop/recipients/group_manager_form.h"
#include "desktop/recipients/recipient_import_form.h"
#include "desktop/widgets/qt_text.h"
#include "event_loop.h"
#include "platform/environment.h"
#include "platform/keyring.h"
#include "profile/startup.h"

namespace quillcast {
namespace {

QByteArray PeakKiB() {
  QFile status("/proc/self/status");
  if (!status.open(QIODevice::ReadOnly)) return "0";
  for (const QByteArray& line : status.readAll().split('\n')) {
    if (line.startsWith("VmHWM:")) return line.mid(6).simplified().split(' ').first();
  }
  return "0";
}

// Agrees to everything, and picks one file.
class Agreeing final : public platform::Prompts {
 public:
  explicit Agreeing(std::filesystem::path file) : file_(std::move(file)) {}
  bool is_told() const { return is_told_; }
  void Warn(std::string_view text) override { fmt::print(stderr, "{}\n", text); }
  void Inform(std::string_view) override { is_told_ = true; }
  void Critical(std::string_view text) override { Warn(text); }
  platform::Answer Ask(std::string_view) override { return platform::Answer::kYes; }
  platform::Answer AskOrCancel(std::string_view) override { return platform::Answer::kYes; }
  bool Consent(std::string_view) override { return true; }
  std::vector<std::filesystem::path> PickOpenFile(const platform::FileQuestion&) override { return {file_}; }
  std::filesystem::path PickSaveFile(const platform::FileQuestion&) override { return {}; }
  std::filesystem::path PickFolder(std::string_view) override { return {}; }

 private:
  std::filesystem::path file_;
  bool is_told_ = false;
};

// Painted, and then its last row as well.
void Show(const profile::Program& program, const QString& group) {
  const double begun = Now();
  desktop::GroupManagerForm form(program, nullptr);
  form.show();
  form.findChild<QComboBox*>("GroupComboBox")->setCurrentText(group);
  auto& grid = *form.findChild<QAbstractItemView*>("MSFlexGrid");
  auto& total = *form.findChild<QLabel*>("Total");
  WaitFor([&] {
    return grid.model()->rowCount() > 0 && total.text().remove(',').toLongLong() == grid.model()->rowCount();
  });
  grid.viewport()->repaint();
  fmt::print("shown {:.3f}\nrows {}\n", Now() - begun, grid.model()->rowCount());
  const double jump = Now();
  grid.scrollToBottom();
  grid.viewport()->repaint();
  fmt::print("jump {:.4f}\npeak {}\n", Now() - jump, PeakKiB().toStdString());
}

void Choose(const desktop::RecipientImportForm& form, const char* name, int entry) {
  form.findChild<QComboBox*>(name)->setCurrentIndex(entry);
}

void Import(const profile::Program& program, const Agreeing& person, const QString& group) {
  desktop::RecipientImportForm form(program, group, nullptr);
  form.show();
  form.findChild<QRadioButton*>("RadioButton2")->setChecked(true);
  form.findChild<QPushButton*>("BrowseButton")->click();
  form.findChild<QPushButton*>("GetDataButton")->click();
  WaitFor([&] { return form.findChild<QComboBox*>("ComboBox1")->count() > 1; });
  Choose(form, "ComboBox1", 3);
  Choose(form, "ComboBox3", 1);
  Choose(form, "ComboBox4", 2);
  Choose(form, "ComboBox7", 4);
  const double begun = Now();
  form.findChild<QPushButton*>("ImportButton")->click();
  WaitFor([&] { return person.is_told(); });
  fmt::print("imported {:.3f}\npeak {}\n", Now() - begun, PeakKiB().toStdString());
}

int Measure(const profile::Folders& folders, int argc, char** argv) {
  if (const auto prepared = profile::PrepareFolders(folders); !prepared) return 74;
  profile::SettingsStore settings(folders.settings);
  Agreeing person(argc > 4 ? argv[4] : "");
  platform::XdgDesktop desktop(false);
  platform::clsExitWindows power(platform::PowerPlacesOf(platform::ProcessEnvironment()));
  platform::Keyring keyring({});
  platform::SystemClock clock;
  platform::SystemEntropy entropy;
  const profile::Program program{folders, settings, person, desktop, power, clock, entropy, keyring};
  if (std::string_view(argv[1]) == "show") {
    Show(program, argv[3]);
  } else {
    Import(program, person, argv[3]);
  }
  return 0;
}

}  // namespace
}  // namespace quillcast

int main(int argc, char** argv) {
  using namespace quillcast;
  if (argc < 4) return 64;
  QApplication application(argc, argv);
  const platform::ProcessEnvironment environment;
  return Measure(
      profile::ResolveFolders(environment, desktop::PathFromQt(QApplication::applicationFilePath()), argv[2]), argc,
      argv);
}
