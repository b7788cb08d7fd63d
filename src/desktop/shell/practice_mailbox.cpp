#include "desktop/shell/practice_mailbox.h"

#include <QMetaObject>
#include <algorithm>

#include "account/account_settings.h"
#include "smtp/mailbox/mailbox_server.h"

namespace quillcast::desktop {
namespace {

using account::AccountKey;
constexpr auto kServer = AccountKey::kServer;
constexpr auto kPort = AccountKey::kPort;
constexpr auto kEmail = AccountKey::kEmail;

constexpr const char* kSection = "Options";
constexpr const char* kKey = "Practice";  // the port of the mailbox; empty when nobody practises
constexpr const char* kHost = "127.0.0.1";
constexpr const char* kName = "Practice";
constexpr const char* kAddress = "practice@quillcast.example";

bool Names(const account::AccountSettings& account, std::string_view port) {
  return !port.empty() && account[kServer] == kHost && account[kPort] == port;
}

}  // namespace

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

bool PracticeMailbox::WasOn() const {
  const auto account = account::AccountSettings::Load(program_.settings);
  const auto port = program_.settings.Read(kSection, kKey, "");
  return account && port && Names(*account, *port);
}

bool PracticeMailbox::Serves() const {
  const auto account = account::AccountSettings::Load(program_.settings);
  return is_on() && account && Names(*account, port_);
}

bool PracticeMailbox::EndsWith(const account::AccountSettings& account) {
  if (!is_on() || Names(account, port_)) return false;
  Stop();
  IgnoreErrors(Forget());  // the next start sees that the account names another server
  return true;
}

Result<void> PracticeMailbox::Forget() { return program_.settings.Write(kSection, kKey, ""); }

Result<void> PracticeMailbox::Begin() {
  Stop();
  smtp::MailboxOptions options;
  options.listen = "127.0.0.1:0";
  options.store = folder();
  options.kept = [this](const smtp::MailboxMessage&) { QMetaObject::invokeMethod(this, [this] { emit Arrived(); }); };
  auto server = smtp::MailboxServer::Listen(options, program_.clock);
  if (!server) return server.error();
  const std::string& address = server->address();
  auto account = account::AccountSettings::Load(program_.settings);
  if (!account) return account.error();
  if ((*account)[AccountKey::kName].empty()) account->Set(AccountKey::kName, kName);
  if ((*account)[kEmail].empty()) account->Set(kEmail, kAddress);
  account->Set(kServer, kHost);
  port_ = address.substr(address.rfind(':') + 1);
  account->Set(kPort, port_);
  account->Set(AccountKey::kAuth, "0");
  account->Set(AccountKey::kSecurity, "Automatic");
  auto saved = account->Save(program_.settings);
  if (!saved) return saved;
  stop_ = std::make_unique<platform::CancelToken>();
  // Why it ended does not matter: who sends to it then is told that nobody answers.
  thread_ = std::thread([this, mailbox = std::move(*server)]() mutable { IgnoreErrors(mailbox.Run(*stop_)); });
  return program_.settings.Write(kSection, kKey, port_);
}

Result<void> PracticeMailbox::End() {
  Stop();
  auto forgotten = Forget();
  if (!forgotten) return forgotten;
  auto account = account::AccountSettings::Load(program_.settings);
  if (!account) return account.error();
  if ((*account)[kEmail] == kAddress) return program_.settings.DeleteSection(account::kAccountSection);
  account->Set(kServer, "");
  return account->Save(program_.settings);
}

void PracticeMailbox::Stop() {
  if (!thread_.joinable()) return;
  stop_->Request();
  thread_.join();
}

}  // namespace quillcast::desktop
