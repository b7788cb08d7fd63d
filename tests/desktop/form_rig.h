// A program for windows under test: folders of its own, a scripted person, a desktop that only remembers.
#pragma once

#include <QAbstractItemView>
#include <QApplication>
#include <QDialog>
#include <QTest>
#include <QTimer>
#include <QTimerEvent>
#include <atomic>
#include <functional>
#include <string>
#include <vector>

#include "desktop/widgets/qt_text.h"
#include "profile/program.h"
#include "profile/startup.h"
#include "recipients/recipient_store.h"
#include "support/fake_keyring.h"
#include "support/scripted_prompts.h"
#include "support/temporary_folder.h"

namespace quillcast::test {

class RememberingDesktop final : public platform::Desktop {
 public:
  std::vector<std::string> opened;
  Result<void> OpenFile(const std::filesystem::path& file) override {
    opened.push_back(file.filename().string());
    return {};
  }
  Result<void> OpenPage(std::string_view address) override {
    opened.emplace_back(address);
    return {};
  }
};

class RememberingPower final : public platform::Power {
 public:
  std::atomic<int> requests = 0;
  std::atomic<int> awake = 0;  // how many keep it so
  bool allowed = true;
  std::unique_ptr<platform::Awake> StayAwake(const char* /*why*/) override {
    struct Held final : platform::Awake {
      explicit Held(std::atomic<int>& count) : count_(count) { ++count_; }
      ~Held() override { --count_; }
      std::atomic<int>& count_;
    };
    return std::make_unique<Held>(awake);
  }
  Result<void> PowerOff(const platform::CancelToken& /*cancel*/) override {
    ++requests;
    return allowed ? Result<void>() : Error{Failure::kNotPermitted, "The system refused.", ""};
  }
};

class OneProfile final : public platform::Environment {
 public:
  std::optional<std::string> Get(const char* name) const override {
    if (std::string(name) == "QUILLCAST_PROGRAM_FOLDER") return std::string(QUILLCAST_TEST_PROGRAM_FOLDER);
    return {};
  }
};

struct FormRig {
  TemporaryFolder folder;
  profile::Folders folders = profile::ResolveFolders(OneProfile(), "/nowhere/bin/quillcast", folder.path());
  profile::SettingsStore settings{folders.settings, profile::kWindowPatience};
  ScriptedPrompts prompts;
  RememberingDesktop desktop;
  RememberingPower power;
  platform::SystemClock clock;
  platform::SystemEntropy entropy;
  FakeKeyring keyring;
  profile::Program program{folders, settings, prompts, desktop, power, clock, entropy, keyring};

  FormRig() {
    if (!profile::PrepareFolders(folders)) qFatal("The folders of the test could not be made.");
  }

  recipients::RecipientStore Store() const { return recipients::RecipientStore(folders.Database()); }
  void AddGroup(const std::string& name, const std::vector<std::string>& addresses) const {
    auto store = Store();
    if (!store.CreateGroupIfFree(name)) qFatal("A group of the test could not be made.");
    for (const auto& address : addresses) AddRecipient(name, address);
  }
  void AddRecipient(const std::string& group, const std::string& address) const {
    recipients::Recipient recipient;
    recipient.values[recipients::kEmail] = address;
    auto store = Store();
    const auto added = store.AddRecipientIfNew(store.RequireGroup(group)->id, recipient);
    if (!added || !*added) qFatal("A recipient of the test could not be added.");
  }
  void FillInAccount(const std::string& port = "25") {
    for (const auto& [key, value] : std::vector<std::pair<const char*, std::string>>{
             {"Name", "Ada"}, {"Email", "ada@example.org"}, {"Server", "127.0.0.1"}, {"Port", port}}) {
      IgnoreErrors(settings.Write("Account", key, value));
    }
  }
  // What the person was shown since the last call, joined by " | ", line ends as "/".
  QString Shown() {
    QStringList lines;
    for (const auto& line : prompts.shown) lines << desktop::ToQt(line).replace("\r\n", "/");
    prompts.shown.clear();
    return lines.join(" | ");
  }
};

// What a timer does when its time has passed; nothing where it is stopped.
inline void PassTime(QTimer& timer) {
  if (!timer.isActive()) return;
  QTimerEvent passed(timer.timerId());
  QCoreApplication::sendEvent(&timer, &passed);
}

inline QColor TextColour(const QWidget& line) { return line.palette().color(QPalette::WindowText); }

// What stands in the list of this name, a line for each row.
inline QStringList RowsOf(const QObject& window, const char* list) {
  const QAbstractItemModel& rows = *window.findChild<QAbstractItemView*>(list)->model();
  QStringList lines;
  for (int row = 0; row < rows.rowCount(); ++row) lines << rows.index(row, 0).data().toString();
  return lines;
}

using IsReady = std::function<bool(const QDialog&)>;

// Runs `act` once a dialog of this name is open and ready, then closes it.
inline void WhileOpen(
    const QString& name, const std::function<void(QDialog&)>& act,
    const IsReady& is_ready = [](const QDialog&) { return true; }, int tries = 200) {
  QTimer::singleShot(20, qApp, [=] {
    auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    if (dialog != nullptr && dialog->objectName() == name && is_ready(*dialog)) {
      act(*dialog);
      dialog->close();
    } else if (tries > 0) {
      WhileOpen(name, act, is_ready, tries - 1);
    } else {
      QTest::qFail(qPrintable(name + " did not open"), __FILE__, __LINE__);
    }
  });
}

}  // namespace quillcast::test
