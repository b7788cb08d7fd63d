#include <array>

#include "account/import/key_file.h"
#include "account/import/program_readers.h"

namespace quillcast::account {
namespace {

namespace fs = std::filesystem;

// One section of the file, as it stands there.
struct Section {
  FoundAccount account;
  std::string incoming_user;
  std::string sending_user;
  std::string port;
  bool has_own_port = false;
  bool signs_in = false;
};

std::string SecurityFrom(std::string_view ssl_smtp) {
  constexpr std::array<std::string_view, 3> kMeanings = {"None", "TLS", "STARTTLS"};
  const bool is_known = ssl_smtp.size() == 1 && ssl_smtp >= "0" && ssl_smtp <= "2";
  return is_known ? std::string(kMeanings.at(static_cast<std::size_t>(ssl_smtp.front() - '0'))) : std::string();
}

struct AccountKeyOfTheirs {
  std::string_view key;
  void (*take)(Section& section, std::string_view value);
};

constexpr auto kKeys = std::to_array<AccountKeyOfTheirs>({
    {"account_name", [](Section& s, std::string_view v) { s.account.account_name = v; }},
    {"name", [](Section& s, std::string_view v) { s.account.name = v; }},
    {"address", [](Section& s, std::string_view v) { s.account.email = v; }},
    {"smtp_server", [](Section& s, std::string_view v) { s.account.server = v; }},
    {"set_smtpport", [](Section& s, std::string_view v) { s.has_own_port = v == "1"; }},
    {"smtp_port", [](Section& s, std::string_view v) { s.port = PortFrom(v); }},
    {"ssl_smtp", [](Section& s, std::string_view v) { s.account.security = SecurityFrom(v); }},
    {"use_smtp_auth", [](Section& s, std::string_view v) { s.signs_in = v == "1"; }},
    {"user_id", [](Section& s, std::string_view v) { s.incoming_user = v; }},
    {"smtp_user_id", [](Section& s, std::string_view v) { s.sending_user = v; }},
});

// Whoever signs in for sending and names nobody is the one who fetches the mail.
FoundAccount AccountFrom(Section section) {
  FoundAccount account = std::move(section.account);
  if (section.has_own_port) account.port = std::move(section.port);
  if (section.signs_in)
    account.user_name = section.sending_user.empty() ? std::move(section.incoming_user) : section.sending_user;
  account.program = "Claws Mail";
  return account;
}

}  // namespace

void AddClawsAccounts(std::string_view accountrc, const fs::path& file, FoundAccountList& found) {
  const char* current = nullptr;  // where the name of the section stands, which tells those of one name apart
  Section section;
  const auto end_section = [&] {
    if (current != nullptr) found.Add(AccountFrom(std::exchange(section, {})));
    current = nullptr;
  };
  ReadKeyFile(accountrc, [&](const KeyLine& line) {
    if (line.section.data() != current) end_section();
    if (!line.section.starts_with("Account") || found.is_over()) return;
    current = line.section.data();
    section.account.file = file;
    for (const auto& row : kKeys) {
      if (row.key == line.key) row.take(section, line.value.substr(0, kLongestText + 1));
    }
  });
  end_section();
  found.TellLeftOut(file);
}

void ReadClawsMail(const fs::path& folder, FoundAccountList& found) {
  const fs::path file = folder / "accountrc";
  AddClawsAccounts(found.Read(file), file, found);
}

}  // namespace quillcast::account
