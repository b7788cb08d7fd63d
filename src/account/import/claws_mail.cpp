#include <array>

#include "account/import/key_file.h"
#include "account/import/program_readers.h"

namespace quillcast::account {
namespace {

namespace fs = std::filesystem;

// One section of the file, as it stands there.
struct ClawsSection {
  FoundAccount account;
  std::string incoming_user;
  std::string sending_user;
  std::string port;
  bool has_own_port = false;
  bool signs_in = false;
};

std::string SecurityOfNumber(std::string_view ssl_smtp) {
  constexpr std::array<std::string_view, 3> kMeanings = {"None", "TLS", "STARTTLS"};
  const bool is_known = ssl_smtp.size() == 1 && ssl_smtp >= "0" && ssl_smtp <= "2";
  return is_known ? std::string(kMeanings.at(static_cast<std::size_t>(ssl_smtp.front() - '0'))) : std::string();
}

struct ClawsKey {
  std::string_view key;
  void (*take)(ClawsSection& section, std::string_view value);
};

constexpr auto kClawsKeys = std::to_array<ClawsKey>({
    {"account_name", [](ClawsSection& s, std::string_view v) { s.account.account_name = v; }},
    {"name", [](ClawsSection& s, std::string_view v) { s.account.name = v; }},
    {"address", [](ClawsSection& s, std::string_view v) { s.account.email = v; }},
    {"smtp_server", [](ClawsSection& s, std::string_view v) { s.account.server = v; }},
    {"set_smtpport", [](ClawsSection& s, std::string_view v) { s.has_own_port = v == "1"; }},
    {"smtp_port", [](ClawsSection& s, std::string_view v) { s.port = PortFrom(v); }},
    {"ssl_smtp", [](ClawsSection& s, std::string_view v) { s.account.security = SecurityOfNumber(v); }},
    {"use_smtp_auth", [](ClawsSection& s, std::string_view v) { s.signs_in = v == "1"; }},
    {"user_id", [](ClawsSection& s, std::string_view v) { s.incoming_user = v; }},
    {"smtp_user_id", [](ClawsSection& s, std::string_view v) { s.sending_user = v; }},
});

// Whoever signs in for sending and names nobody is the one who fetches the mail.
FoundAccount AccountOf(ClawsSection section) {
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
  ClawsSection section;
  const auto end_section = [&] {
    if (current != nullptr) found.Add(AccountOf(std::exchange(section, {})));
    current = nullptr;
  };
  ReadKeyFile(accountrc, [&](const KeyLine& line) {
    if (line.section.data() != current) end_section();
    if (!line.section.starts_with("Account") || found.is_over()) return;
    current = line.section.data();
    section.account.file = file;
    for (const auto& row : kClawsKeys) {
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
