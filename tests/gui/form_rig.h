// A program for windows under test: folders of its own, a scripted person, a desktop that only remembers.
#pragma once

#include <QApplication>
#include <QTest>
#include <cstdlib>
#include <string>
#include <vector>

#include "app/program.h"
#include "app/startup.h"
#include "platform/ui/qt_text.h"
#include "recipients/recipient_store.h"
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
  app::Folders folders = app::ResolveFolders(OneProfile(), "/nowhere/bin/quillcast", folder.path());
  app::SettingsStore settings{folders.settings};
  ScriptedPrompts prompts;
  RememberingDesktop desktop;
  platform::SystemClock clock;
  platform::SystemEntropy entropy;
  app::Program program{folders, settings, prompts, desktop, clock, entropy};

  FormRig() {
    if (!app::PrepareFolders(folders)) qFatal("The folders of the test could not be made.");
  }

  recipients::RecipientStore Store() const { return recipients::RecipientStore(folders.Database()); }
  void AddGroup(const std::string& name, const std::vector<std::string>& addresses) const {
    auto store = Store();
    IgnoreErrors(store.CreateGroup(name));
    const auto group = store.FindGroup(name);
    for (const auto& address : addresses) IgnoreErrors(store.AddAddress((*group)->id, address));
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
    for (const auto& line : prompts.shown) lines << platform::ToQt(line).replace("\r\n", "/");
    prompts.shown.clear();
    return lines.join(" | ");
  }
};

}  // namespace quillcast::test
