#include "account/practice.h"

#include <algorithm>

#include "profile/program.h"

namespace quillcast::account {
namespace {

using enum AccountKey;

constexpr const char* kSection = "Options";
constexpr const char* kPracticeKey = "Practice";  // the port of the mailbox; empty when nobody practises
constexpr const char* kHost = "127.0.0.1";
constexpr const char* kSender = "Practice";
constexpr const char* kAddress = "practice@quillcast.example";

bool Names(const AccountSettings& account, std::string_view port) {
  return !port.empty() && account[kServer] == kHost && account[kPort] == port;
}

// Makes the mailbox on this port the account's server.
AccountSettings PointedAt(std::string_view port, AccountSettings account) {
  if (account[kName].empty()) account.Set(kName, kSender);
  if (account[kEmail].empty()) account.Set(kEmail, kAddress);
  account.Set(kServer, kHost);
  account.Set(kPort, std::string(port));
  account.Set(kAuth, "0");
  account.Set(kSecurity, "Automatic");
  return account;
}

}  // namespace

Sentence InWords(const PracticeEnd& end) {
  if (!end.has_other_server) return "Practice has ended.";
  if (!end.lacks_sender) return "Practice has ended: the account names a server of its own now.";
  return "Practice has ended: the account names a server of its own now. It still lacks an address of your own.";
}

std::vector<std::string> PracticeMessages(const std::filesystem::path& folder) {
  std::vector<std::string> files;
  std::error_code failed;
  for (auto entry = std::filesystem::directory_iterator(folder, failed);
       !failed && entry != std::filesystem::directory_iterator(); entry.increment(failed)) {
    if (entry->path().extension() == ".eml") files.push_back(entry->path().filename().string());
  }
  std::sort(files.rbegin(), files.rend());
  return files;
}

bool Practice::WasOn() const {
  const auto account = AccountSettings::Load(settings_);
  const auto port = settings_.Read(kSection, kPracticeKey, "");
  return account && port && Names(*account, *port);
}

bool Practice::Serves() const {
  const auto account = AccountSettings::Load(settings_);
  return is_on() && account && Names(*account, mailbox_->port());
}

// Another window may practise by now, with a mailbox of its own.
Result<void> Practice::Forget(std::string_view port) {
  const auto noted = settings_.Read(kSection, kPracticeKey, "");
  if (!noted) return noted.error();
  return *noted == port ? settings_.Write(kSection, kPracticeKey, "") : Result<void>();
}

Result<platform::FolderLock> Practice::Lock() const {
  return LockAccount(settings_, profile::kWindowPatience.lock_wait, platform::CancelToken());
}

Result<void> Practice::Begin(std::function<void()> arrived) {
  const auto lock = Lock();
  if (!lock) return lock.error();
  Stop();
  smtp::MailboxOptions options;
  options.store = folder_;
  options.kept = [arrived = std::move(arrived)](const smtp::MailboxMessage&) { arrived(); };
  auto mailbox = smtp::RunningMailbox::Start(std::move(options), clock_);
  if (!mailbox) return mailbox.error();
  auto account = AccountSettings::Load(settings_);
  if (!account) return account.error();
  auto saved = PointedAt((*mailbox)->port(), std::move(*account)).Save(settings_);
  if (!saved) return saved;
  mailbox_ = std::move(*mailbox);
  return settings_.Write(kSection, kPracticeKey, mailbox_->port());
}

// A server that somebody has named meanwhile stays, and is not written to from an address that nobody has.
Result<void> Practice::TakeOut(AccountSettings account, std::string_view port) {
  const bool is_server = Names(account, port);
  if (account[kEmail] == kAddress) {
    if (is_server) return settings_.DeleteSection(kAccountSection);
    if (account[kName] == kSender) account.Set(kName, "");
    account.Set(kEmail, "");
  } else if (is_server) {
    account.Set(kServer, "");
  } else {
    return {};
  }
  return account.Save(settings_);
}

Result<PracticeEnd> Practice::End() {
  const auto lock = Lock();
  if (!lock) return lock.error();
  const std::string port =
      is_on() ? mailbox_->port() : IgnoreErrors(settings_.Read(kSection, kPracticeKey, ""), std::string());
  const auto account = AccountSettings::Load(settings_);
  if (!account) return account.error();
  const bool has_other = !Names(*account, port) && !(*account)[kServer].empty();
  const PracticeEnd end{.has_other_server = has_other, .lacks_sender = has_other && (*account)[kEmail] == kAddress};
  const auto taken_out = TakeOut(*account, port);
  const auto forgotten = taken_out ? Forget(port) : taken_out;
  if (!forgotten) return forgotten.error();
  Stop();
  return end;
}

Result<std::optional<PracticeEnd>> Practice::EndWhereLeft() {
  if (!is_on()) return std::optional<PracticeEnd>();
  const auto account = AccountSettings::Load(settings_);
  if (!account) return account.error();
  if (Names(*account, mailbox_->port())) return std::optional<PracticeEnd>();
  const auto end = End();
  return end ? Result<std::optional<PracticeEnd>>(*end) : end.error();
}

}  // namespace quillcast::account
