#include "account/account_steps.h"

#include <algorithm>

#include "profile/main_window_contents.h"
#include "smtp/client/client.h"
#include "smtp/result_code.h"

namespace quillcast::account {
namespace {

constexpr const char* kAccountWorks = "Your SMTP settings appear to be functioning correctly.";

// There is no message to follow; the log is kept for a test that fails.
class TestListener final : public smtp::JobSource {
 public:
  explicit TestListener(std::vector<std::string>& log) : log_(log) {}

  smtp::Job* NextJob() override { return nullptr; }
  void Finished(smtp::Job&, const smtp::Outcome&) override {}
  void LogLine(std::string_view line) override { log_.emplace_back(line); }
  void Progress(std::uint64_t, std::uint64_t) override {}

 private:
  std::vector<std::string>& log_;
};

}  // namespace

SenderTexts TextsOf(const AccountSettings& saved) {
  const auto& methods = RowOf(AccountKey::kMethod).choices;
  const auto chosen = std::find(methods.begin(), methods.end(), saved[AccountKey::kMethod]);
  const auto position = chosen == methods.end() ? 0 : static_cast<std::size_t>(chosen - methods.begin());
  return {.from = saved[AccountKey::kName] + " <" + saved[AccountKey::kEmail] + ">",
          .method = profile::kSendingMethods.at(position)};
}

bool AgreesToReset(platform::Prompts& prompts) {
  constexpr const char* kQuestion =
      "You are just about to wipe out all your SMTP settings.\r\nAre you sure you want to proceed?";
  return prompts.Ask(kQuestion) == platform::Answer::kYes;
}

Result<SenderTexts> TextsAfterReset(const profile::SettingsStore& store) {
  auto contents = profile::LoadMainWindow(store, {});
  if (!contents) return contents.error();
  return SenderTexts{std::move(contents->from), std::move(contents->method)};
}

void PickQueueFolder(AccountSettings& shown, platform::Prompts& prompts) {
  std::string path = prompts.PickFolder("Please select the destination folder.").string();
  if (path.empty()) return;
  if (!path.ends_with('/')) path += '/';
  shown.Set(AccountKey::kThirdPath, std::move(path));
}

AccountTest TestAccount(const AccountSettings& shown, const AccountSecrets& secrets, const platform::Clock& clock,
                        const platform::CancelToken& cancel) {
  AccountTest test;
  if (const auto options = secrets.SignInOptionsOf(shown, cancel)) {
    TestListener listener(test.log);
    test.outcome = smtp::Client(*options, clock, cancel).Test(listener);
  } else {
    test.outcome.code =
        options.error().failure == Failure::kTryAgain ? smtp::ResultCode::kCancelled : test.outcome.code;
    test.outcome.reason = InOneLine(options.error());
  }
  test.text = test.Works() ? kAccountWorks : smtp::TestResultText(static_cast<int>(test.outcome.code));
  return test;
}

}  // namespace quillcast::account
