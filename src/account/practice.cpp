#include "account/practice.h"

#include <algorithm>

#include "profile/program.h"

namespace quillcast::account {
namespace {

using enum AccountKey;

constexpr const char* kSection = "Options";
constexpr const char* kPracticeKey = "Practice";    // the port of the mailbox; empty when nobody practises
constexpr const char* kBeforeSection = "Practice";  // what the account had, by its keys
constexpr const char* kHost = "127.0.0.1";
constexpr const char* kAddress = "practice@quillcast.example";

// What practice takes of the account, and gives back. Whoever sets a port has chosen the way to the server, and what
// belongs to it; nobody chooses a name by setting an address.
struct TakenKey {
  AccountKey key;
  const char* practices;  // empty for the mailbox's port
  bool fills_in;          // where the account has none; the others are replaced
  AccountKey chosen_with;
};
constexpr auto kTaken = std::to_array<TakenKey>({
    {kName, "Practice", true, kName},
    {kEmail, kAddress, true, kEmail},
    {kServer, kHost, false, kPort},
    {kPort, "", false, kPort},
    {kAuth, "0", false, kPort},
    {kSecurity, "Automatic", false, kPort},
});

bool Names(const AccountSettings& account, std::string_view port) {
  return !port.empty() && account[kServer] == kHost && account[kPort] == port;
}

// The account as it is while the mailbox on this port is its server.
AccountSettings PointedAt(std::string_view port, AccountSettings account) {
  for (const auto& [key, practices, fills_in, chosen_with] : kTaken) {
    if (fills_in && !account[key].empty()) continue;
    account.Set(key, std::string(key == kPort ? port : practices));
  }
  return account;
}

}  // namespace

// Nobody practises where the port is empty.
struct Practice::Note {
  std::string port;
  AccountSettings before;  // of its values, those that were taken
};

namespace {

// What nobody has set meanwhile is as it was before.
AccountSettings GivenBack(AccountSettings account, std::string_view port, const AccountSettings& before) {
  const AccountSettings found = account;
  const AccountSettings left = PointedAt(port, before);
  for (const auto& [key, practices, fills_in, chosen_with] : kTaken) {
    if (found[key] == left[key] && found[chosen_with] == left[chosen_with]) account.Set(key, before[key]);
  }
  return account;
}

}  // namespace

Sentence InWords(const PracticeEnd& end) {
  if (!end.has_other_server) return "Practice has ended.";
  if (end.lacks_name && end.lacks_address) {
    return "Practice has ended: the account names a server of its own now. It still lacks a name and an address of "
           "your "
           "own.";
  }
  if (end.lacks_name) {
    return "Practice has ended: the account names a server of its own now. It still lacks a name of your own.";
  }
  if (end.lacks_address) {
    return "Practice has ended: the account names a server of its own now. It still lacks an address of your own.";
  }
  return "Practice has ended: the account names a server of its own now.";
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

Result<Practice::Note> Practice::Noted() const {
  std::vector<profile::SettingName> names = {{kSection, kPracticeKey, ""}};
  for (const auto& taken : kTaken) names.push_back({kBeforeSection, RowOf(taken.key).name, RowOf(taken.key).fallback});
  auto values = settings_.ReadAll(names);
  if (!values) return values.error();
  Note note{.port = std::move(values->front()), .before = {}};
  for (std::size_t i = 0; i < kTaken.size(); ++i) note.before.Set(kTaken[i].key, std::move((*values)[i + 1]));
  return note;
}

// Both or neither: an account that names a mailbox of which there is no note would keep it for ever.
Result<void> Practice::Write(const AccountSettings& account, const Note& note) {
  std::vector<profile::SectionValue> values = {{kSection, kPracticeKey, note.port}};
  for (const auto& taken : kTaken) {
    const auto name = RowOf(taken.key).name;
    values.push_back({kAccountSection, name, account[taken.key]});
    values.push_back({kBeforeSection, name, note.before[taken.key]});
  }
  return settings_.WriteAll(values);
}

Result<bool> Practice::WasOn() const {
  const auto account = AccountSettings::Load(settings_);
  if (!account) return account.error();
  const auto note = Noted();
  if (!note) return note.error();
  return Names(*account, note->port);
}

bool Practice::Serves() const {
  const auto account = AccountSettings::Load(settings_);
  if (account) served_ = is_on() && Names(*account, mailbox_->port());
  return is_on() && served_;
}

Result<platform::FolderLock> Practice::Lock() const {
  return LockAccount(settings_, profile::kWindowPatience.lock_wait, platform::CancelToken());
}

Result<void> Practice::Begin(std::function<void()> arrived) {
  const auto lock = Lock();
  if (!lock) return lock.error();
  const auto account = AccountSettings::Load(settings_);
  if (!account) return account.error();
  const auto note = Noted();
  if (!note) return note.error();
  const auto filled_in = AccountIsFilledIn(settings_);
  if (!filled_in) return filled_in.error();
  if (*filled_in && !Names(*account, note->port)) {
    return Error{Failure::kNotPermitted,
                 "There is a mail account already, and practice would take its place, so it stays off.",
                 "To practise, start Quillcast with a profile of its own; the help says how, under Files and folders."};
  }
  Stop();
  smtp::MailboxOptions options;
  options.store = folder_;
  options.kept = [arrived = std::move(arrived)](const smtp::MailboxMessage&) { arrived(); };
  auto mailbox = smtp::RunningMailbox::Start(std::move(options), clock_);
  if (!mailbox) return mailbox.error();
  const AccountSettings own = GivenBack(*account, note->port, note->before);
  const std::string port = (*mailbox)->port();
  auto written = Write(PointedAt(port, own), {.port = port, .before = own});
  if (written) mailbox_ = std::move(*mailbox);
  return written;
}

// A server that somebody has named meanwhile stays, and is not written to from an address that nobody has.
Result<PracticeEnd> Practice::End() {
  const auto lock = Lock();
  if (!lock) return lock.error();
  const auto account = AccountSettings::Load(settings_);
  if (!account) return account.error();
  const auto note = Noted();
  if (!note) return note.error();
  const std::string port = is_on() ? mailbox_->port() : note->port;
  const AccountSettings own = GivenBack(*account, port, note->before);
  const auto written = Write(own, {.port = "", .before = {}});
  if (!written) return written.error();
  Stop();
  const bool has_other = !Names(*account, port) && !(*account)[kServer].empty();
  return PracticeEnd{
      .has_other_server = has_other, .lacks_name = own[kName].empty(), .lacks_address = own[kEmail].empty()};
}

Result<std::optional<PracticeEnd>> Practice::EndWhereLeft() {
  const auto account = AccountSettings::Load(settings_);
  if (!account) return account.error();
  const auto note = Noted();
  if (!note) return note.error();
  const std::string port = is_on() ? mailbox_->port() : note->port;
  if (port.empty() || Names(*account, port)) return std::optional<PracticeEnd>();
  const auto end = End();
  return end ? Result<std::optional<PracticeEnd>>(*end) : end.error();
}

}  // namespace quillcast::account
