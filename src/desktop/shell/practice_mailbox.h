// The built-in mailbox beside the window, for a person who wants to practise before they have an account.
#pragma once

#include <QObject>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "account/account_settings.h"
#include "platform/cancel.h"
#include "platform/result.h"
#include "profile/program.h"

namespace quillcast::desktop {

// The names of the messages' files in its folder, the last that arrived first.
std::vector<std::string> PracticeMessages(const std::filesystem::path& folder);

class PracticeMailbox final : public QObject {
  Q_OBJECT
 public:
  PracticeMailbox(const profile::Program& program, QObject* parent) : QObject(parent), program_(program) {}
  ~PracticeMailbox() override { Stop(); }

  // An earlier session was practising, and the account still names its mailbox.
  bool WasOn() const;
  // The account was changed: practice ends where it names another server now. True when it did.
  bool EndsWith(const account::AccountSettings& account);
  // Starts the mailbox and makes it the account's server; the sender's name and address are filled in where they are
  // missing.
  Result<void> Begin();
  // Stops it, and takes it out of the account; a sender's name and address that are the person's own stay.
  Result<void> End();
  bool is_on() const { return thread_.joinable(); }
  // It is on, and is the account's server: what is sent goes nowhere else.
  bool Serves() const;
  std::filesystem::path folder() const { return program_.folders.data / "Practice"; }

 signals:
  void Arrived();  // a message

 private:
  void Stop();
  Result<void> Forget();

  const profile::Program& program_;
  std::unique_ptr<platform::CancelToken> stop_;
  std::thread thread_;
  std::string port_;
};

}  // namespace quillcast::desktop
