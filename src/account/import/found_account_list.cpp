#include "account/import/found_account_list.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>

#include "account/account_checks.h"
#include "account/account_settings.h"
#include "platform/file.h"
#include "platform/text.h"
#include "platform/utf8.h"

namespace quillcast::account {
namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kLargestFile = 32ULL * 1024 * 1024;  // bytes; ten thousand accounts take a quarter of it

bool IsUsable(const std::string& text) {
  return text.size() <= kLongestText && platform::IsUtf8(text) && platform::Printable(text, kLongestText) == text;
}

// One of several would have a port of its own.
bool IsOneServer(const std::string& text) { return IsUsable(text) && text.find(';') == std::string::npos; }

}  // namespace

std::string PortFrom(std::string_view text) {
  const auto& bounds = *RowOf(AccountKey::kPort).bounds;
  const auto port = platform::WholeNumberBetween(text, bounds.lowest, bounds.highest);
  return port ? std::to_string(*port) : std::string();
}

bool FoundAccountList::is_over() const { return is_full_ || cancel_.Requested() != platform::Stop::kNone; }

void FoundAccountList::Add(FoundAccount account) {
  if (is_over()) return;
  if (account.name.empty() || account.email.empty() || account.server.empty()) {
    ++incomplete_;
    return;
  }
  if (!IsUsable(account.user_name)) account.user_name.clear();
  const std::array<const std::string*, 3> texts = {&account.account_name, &account.name, &account.email};
  if (!IsOneServer(account.server) ||
      !std::all_of(texts.begin(), texts.end(), [](const std::string* text) { return IsUsable(*text); })) {
    ++unusable_;
    return;
  }
  if (!IsSenderAddress(account.email) || account.email.find(',') != std::string::npos) {
    ++no_address_;
    return;
  }
  if (found_.accounts.size() == kMostAccounts) {
    is_full_ = true;
    PassOver(Say("Only the first {} accounts are shown.", NumberValue(kMostAccounts)));
    return;
  }
  found_.accounts.push_back(std::move(account));
}

void FoundAccountList::TellLeftOut(const fs::path& file) {
  const std::string where = platform::Printable(file.string(), 200);
  if (const auto count = std::exchange(incomplete_, 0); count > 0) {
    PassOver(SayOf(count, "{} account was left out for want of a name, an address or a server: {}.",
                   "{} accounts were left out for want of a name, an address or a server: {}.", where));
  }
  if (const auto count = std::exchange(unusable_, 0); count > 0) {
    PassOver(SayOf(count, "{} account was left out because its text is damaged or too long: {}.",
                   "{} accounts were left out because their text is damaged or too long: {}.", where));
  }
  if (const auto count = std::exchange(no_address_, 0); count > 0) {
    PassOver(SayOf(count, "{} account was left out because its address is none that can be answered to: {}.",
                   "{} accounts were left out because their address is none that can be answered to: {}.", where));
  }
}

void FoundAccountList::PassOver(Sentence why) {
  if (found_.passed_over.size() < kMostTold) {
    found_.passed_over.push_back(std::move(why));
  } else {
    ++found_.also_passed_over;
  }
}

std::string FoundAccountList::Read(const fs::path& file) {
  struct stat status {};
  if (::lstat(file.c_str(), &status) != 0 && (errno == ENOENT || errno == ENOTDIR)) return {};
  auto content = platform::ReadFile(file, kLargestFile);
  if (content) return *std::move(content);
  PassOver(content.error().what);
  return {};
}

}  // namespace quillcast::account
