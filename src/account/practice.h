// Practice: the built-in mailbox as the account's server, for a person who has no account yet. Nothing leaves the
// computer while it lasts.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "account/account_settings.h"
#include "account/stored_account.h"
#include "smtp/mailbox/running_mailbox.h"

namespace quillcast::account {

// The names of the messages' files in its folder, the last that arrived first.
std::vector<std::string> PracticeMessages(const std::filesystem::path& folder);

// What became of the account when practice ended.
struct PracticeEnd {
  bool has_other_server = false;  // which somebody has named meanwhile, and which stays
  bool lacks_name = false;        // practice's own was taken back from it, as its address was
  bool lacks_address = false;
};
Sentence InWords(const PracticeEnd& end);

// Called on one thread. The mailbox goes with it, and the account keeps naming it: the next start sees that by WasOn.
// What it takes of the account is noted in the settings, and given back by the session that ends it.
class Practice {
 public:
  // Messages are kept in `folder`. The settings and the clock must outlive it.
  Practice(profile::SettingsStore& settings, const platform::Clock& clock, std::filesystem::path folder)
      : settings_(settings), clock_(clock), folder_(std::move(folder)) {}

  // An earlier session was practising, and the account still names its mailbox. Fails where that cannot be read.
  Result<bool> WasOn() const;
  // Starts the mailbox and makes it the account's server; the sender's name and address are filled in where they are
  // missing. `arrived` is called for each message, on the mailbox's thread. kNotPermitted where there is an account by
  // then; kTryAgain while somebody else saves it, here and at the end. Nothing is changed then.
  Result<void> Begin(std::function<void()> arrived);
  // Stops it, and gives the account back what was taken, as far as nobody has set it meanwhile: practice's own sender
  // and the mailbox's port never stay.
  Result<PracticeEnd> End();
  // The same where the account names it no more, whoever changed that and in whichever session it began; nothing where
  // it does, or nobody practises.
  Result<std::optional<PracticeEnd>> EndWhereLeft();
  // Stops the mailbox; the account keeps naming it, so that the next session goes on.
  void Stop() { mailbox_.reset(); }

  // Its mailbox runs; whether the account still names it, Serves tells.
  bool is_on() const { return mailbox_ != nullptr; }
  // It is on, and is the account's server: what is sent goes nowhere else. What cannot be read is as it was.
  bool Serves() const;
  const std::filesystem::path& folder() const { return folder_; }

 private:
  struct Note;
  Result<Note> Noted() const;
  Result<void> Write(const AccountSettings& account, const Note& note);
  Result<platform::FolderLock> Lock() const;

  profile::SettingsStore& settings_;
  const platform::Clock& clock_;
  const std::filesystem::path folder_;
  std::unique_ptr<smtp::RunningMailbox> mailbox_;
  mutable bool served_ = false;  // when that could be read last
};

}  // namespace quillcast::account
