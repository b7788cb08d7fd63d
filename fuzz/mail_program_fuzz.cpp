// Settings of other mail programs, any bytes: whatever is found in them can be shown and stored. The first byte says
// whose.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "account/import/key_file.h"
#include "account/import/program_readers.h"
#include "platform/text.h"
#include "platform/utf8.h"

using namespace quillcast;

namespace {

void Require(bool promise) {
  if (!promise) std::abort();
}

void Hold(const account::FoundAccounts& found) {
  for (const auto& account : found.accounts) {
    Require(!account.name.empty() && !account.email.empty() && !account.server.empty());
    for (const auto& text : {account.account_name, account.name, account.email, account.server, account.user_name})
      Require(platform::IsUtf8(text) && !platform::HoldsControl(text) && text.size() <= account::kLongestText);
    Require(account.port.empty() || platform::WholeNumberBetween(account.port, 1, 65535));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  if (size == 0) return 0;
  const std::string_view text(reinterpret_cast<const char*>(bytes) + 1, size - 1);
  const std::size_t half = text.size() / 2;
  static const platform::CancelToken never;
  account::FoundAccountList found(never);
  switch (bytes[0]) {
    case 't':
      account::AddThunderbirdAccounts(text, text.substr(half), "/p/prefs.js", found);
      break;
    case 'p':
      for (const auto& profile : account::ThunderbirdProfiles(text, "/home")) Require(!profile.empty());
      break;
    case 'c':
      account::AddClawsAccounts(text, "/p/accountrc", found);
      break;
    default:
      account::AddEvolutionAccounts(
          [&](const auto& take) {
            take("/p/way.source", text.substr(0, half));
            take("/p/who.source", text.substr(half));
          },
          "/p", found);
  }
  Hold(found.Take());
  return 0;
}
