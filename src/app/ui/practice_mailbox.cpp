#include "app/ui/practice_mailbox.h"

#include <QMetaObject>

#include "sending/account_settings.h"
#include "smtp/mailbox_server.h"

namespace quillcast::app {
namespace {

using enum sending::AccountKey;

constexpr const char* kSection = "Options";
constexpr const char* kKey = "Practice";

}  // namespace

bool PracticeMailbox::WasOn() const { return program_.settings.Read(kSection, kKey, "0").ValueOr("0") == "1"; }

Result<void> PracticeMailbox::Begin() {
  Stop();
  smtp::MailboxOptions options;
  options.listen = "127.0.0.1:0";
  options.store = folder();
  options.kept = [this](const smtp::MailboxMessage&) { QMetaObject::invokeMethod(this, [this] { emit Arrived(); }); };
  auto server = smtp::MailboxServer::Listen(options, program_.clock);
  if (!server) return server.error();
  const std::string& address = server->address();
  auto account = sending::AccountSettings::Load(program_.settings);
  if (!account) return account.error();
  if ((*account)[kName].empty()) account->Set(kName, "Practice");
  if ((*account)[kEmail].empty()) account->Set(kEmail, "practice@quillcast.example");
  account->Set(kServer, "127.0.0.1");
  account->Set(kPort, address.substr(address.rfind(':') + 1));
  account->Set(kAuth, "0");
  account->Set(kSecurity, "Automatic");
  auto saved = account->Save(program_.settings);
  if (!saved) return saved;
  stop_ = std::make_unique<platform::CancelToken>();
  // Why it ended does not matter: who sends to it then is told that nobody answers.
  thread_ = std::thread([this, mailbox = std::move(*server)]() mutable { IgnoreErrors(mailbox.Run(*stop_)); });
  return program_.settings.Write(kSection, kKey, "1");
}

Result<void> PracticeMailbox::End() {
  Stop();
  auto forgotten = program_.settings.Write(kSection, kKey, "0");
  if (!forgotten) return forgotten;
  return program_.settings.DeleteSection(sending::kAccountSection);
}

void PracticeMailbox::Stop() {
  if (!thread_.joinable()) return;
  stop_->Request();
  thread_.join();
}

}  // namespace quillcast::app
