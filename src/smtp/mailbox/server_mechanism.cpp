#include "smtp/mailbox/server_mechanism.h"

#include <fmt/format.h>

#include <array>
#include <utility>

#include "platform/base64.h"
#include "platform/text.h"
#include "smtp/sasl/digest.h"
#include "smtp/sasl/sasl_prep.h"
#include "smtp/sasl/scram.h"

namespace quillcast::smtp {
namespace {

constexpr int kScramRounds = 4096;

ServerStep Ask(std::string challenge) { return {std::move(challenge)}; }
ServerStep Welcome() { return {{}, {235, "2.7.0", "Welcome"}}; }
ServerStep Wrong() { return {{}, {535, "5.7.8", "User name or password not right"}}; }
ServerStep Broken(const char* what) { return {{}, {501, "5.5.2", what}}; }

ServerStep Judge(std::string_view user, std::string_view password, const ServerAccount& account) {
  const bool same_user = SameSecret(user, account.user);
  return SameSecret(password, account.password) && same_user ? Welcome() : Wrong();
}

class Plain final : public ServerMechanism {
 public:
  explicit Plain(const ServerAccount& account) : account_(account) {}
  // authorization-id NUL user NUL password (RFC 4616 2). Nobody may act for somebody else here.
  ServerStep Step(std::string_view response) override {
    const auto parts = platform::Split(response, '\0');
    if (parts.size() != 3) return Broken("That is not a PLAIN response");
    if (!parts[0].empty() && parts[0] != parts[1]) return {{}, {535, "5.7.8", "Sign in as yourself"}};
    return Judge(parts[1], parts[2], account_);
  }

 private:
  ServerAccount account_;
};

class Login final : public ServerMechanism {
 public:
  explicit Login(const ServerAccount& account) : account_(account) {}
  std::string Begin() override { return "Username:"; }
  ServerStep Step(std::string_view response) override {
    if (user_) return Judge(*user_, response, account_);
    user_ = response;
    return Ask("Password:");
  }

 private:
  ServerAccount account_;
  std::optional<std::string> user_;
};

// RFC 2195.
class CramMd5 final : public ServerMechanism {
 public:
  explicit CramMd5(const ServerAccount& account)
      : account_(account), challenge_("<" + platform::Base64(account.nonce) + "@mailbox>") {}
  std::string Begin() override { return challenge_; }
  ServerStep Step(std::string_view response) override {
    const std::string wanted = CramMd5Response(account_.user, account_.password, challenge_);
    return SameSecret(response, wanted) && !wanted.empty() ? Welcome() : Wrong();
  }

 private:
  ServerAccount account_;
  std::string challenge_;
};

// RFC 5802 and 7677, without channel binding.
class ScramSha256 final : public ServerMechanism {
 public:
  explicit ScramSha256(const ServerAccount& account) : account_(account) {}
  ServerStep Step(std::string_view response) override {
    if (verdict_) return response.empty() ? *verdict_ : Broken("That is one response too many");
    return server_first_.empty() ? First(response) : Last(response);
  }

 private:
  ServerStep First(std::string_view message);
  ServerStep Last(std::string_view message);

  ServerAccount account_;
  std::string header_;       // of the client's first message: "n,,"
  std::string client_bare_;  // that message without it
  std::string server_first_;
  std::optional<ServerStep> verdict_;  // what follows the client's empty response
};

ServerStep ScramSha256::First(std::string_view message) {
  const auto flag_end = message.find(',');
  const auto header_end = message.find(',', flag_end == std::string_view::npos ? flag_end : flag_end + 1);
  const bool no_binding = message.starts_with("n,") || message.starts_with("y,");
  if (header_end == std::string_view::npos || !no_binding) return Broken("That is not a SCRAM message");
  header_ = message.substr(0, header_end + 1);
  client_bare_ = message.substr(header_end + 1);
  const auto nonce = ScramAttribute(client_bare_, 1, 'r');
  if (!ScramAttribute(client_bare_, 0, 'n') || !nonce || nonce->empty()) return Broken("That is not a SCRAM message");
  const auto salt = account_.nonce.substr(0, account_.nonce.size() / 2);
  const auto ours = account_.nonce.substr(salt.size());
  server_first_ = fmt::format("r={}{},s={},i={}", *nonce, platform::Base64(ours), platform::Base64(salt), kScramRounds);
  return Ask(server_first_);
}

ServerStep ScramSha256::Last(std::string_view message) {
  const auto proof_at = message.rfind(",p=");
  const auto nonce = ScramAttribute(server_first_, 0, 'r');
  if (proof_at == std::string_view::npos || ScramAttribute(message, 0, 'c') != platform::Base64(header_) ||
      ScramAttribute(message, 1, 'r') != nonce) {
    return Broken("That is not the end of a SCRAM exchange");
  }
  const auto user = SaslPrep(account_.user);
  const auto password = SaslPrep(account_.password);
  if (!user || !password) return Wrong();
  const auto salt = account_.nonce.substr(0, account_.nonce.size() / 2);
  const auto proofs =
      ComputeScramProofs(EVP_sha256(), DeriveKey(EVP_sha256(), password->view(), salt, kScramRounds),
                         client_bare_ + "," + server_first_ + "," + std::string(message.substr(0, proof_at)));
  const auto shown = platform::DecodeBase64(message.substr(proof_at + 3));
  std::string name(ScramAttribute(client_bare_, 0, 'n').value_or(""));
  name = platform::ReplaceAll(platform::ReplaceAll(name, "=2C", ","), "=3D", "=");
  if (!proofs || !shown || !SameSecret(*shown, proofs->client.view()) || name != user->view()) return Wrong();
  verdict_ = Welcome();
  return Ask("v=" + platform::Base64(proofs->server.view()));
}

template <typename Mechanism>
std::unique_ptr<ServerMechanism> Make(const ServerAccount& account) {
  return std::make_unique<Mechanism>(account);
}

struct Row {
  std::string_view name;
  std::unique_ptr<ServerMechanism> (*make)(const ServerAccount&);
};
constexpr std::array kRows{
    Row{"PLAIN", Make<Plain>},
    Row{"LOGIN", Make<Login>},
    Row{"CRAM-MD5", Make<CramMd5>},
    Row{"SCRAM-SHA-256", Make<ScramSha256>},
};

}  // namespace

std::unique_ptr<ServerMechanism> MakeServerMechanism(std::string_view name, const ServerAccount& account) {
  for (const Row& row : kRows) {
    if (platform::EqualsIgnoringAsciiCase(row.name, name)) return row.make(account);
  }
  return nullptr;
}

std::string ServerMechanismNames(std::string_view separator) {
  std::string out;
  for (const Row& row : kRows) out.append(out.empty() ? "" : separator).append(row.name);
  return out;
}

}  // namespace quillcast::smtp
