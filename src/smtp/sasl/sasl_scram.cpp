// SCRAM (RFC 5802, RFC 7677) without channel binding: neither side learns the password from the other, and the server
// has to prove that it knows it.
#include <fmt/format.h>

#include <algorithm>

#include "platform/base64.h"
#include "platform/text.h"
#include "smtp/sasl/digest.h"
#include "smtp/sasl/sasl_mechanism.h"
#include "smtp/sasl/sasl_prep.h"
#include "smtp/sasl/scram.h"

namespace quillcast::smtp {
namespace {

constexpr std::string_view kNoBinding = "n,,";
constexpr std::string_view kNoBindingCoded = "biws";
// A second of work, as long as a cancel may wait; servers ask for some thousand to a million.
constexpr std::int64_t kMostRounds = 2'000'000;

Error Senseless(std::string_view what) {
  return {Failure::kBadData, "The server broke the exchange that signs in: " + std::string(what) + "."};
}

// RFC 5802 5.1: a comma would end the name.
std::string EscapedName(std::string_view name) {
  return platform::ReplaceAll(platform::ReplaceAll(name, "=", "=3D"), ",", "=2C");
}

class Scram final : public SaslMechanism {
 public:
  Scram(SmtpLine name, const EVP_MD* digest, const Credentials& credentials)
      : name_(std::move(name)), digest_(digest), credentials_(credentials) {}
  SmtpLine Name() const override { return name_; }
  std::optional<platform::Secret> Start() override;
  Result<platform::Secret> Step(std::string_view challenge) override;
  Result<void> Finish() override;

 private:
  Result<platform::Secret> Prove(std::string_view server_first);
  Result<platform::Secret> Verify(std::string_view server_last);

  SmtpLine name_;
  const EVP_MD* digest_;
  Credentials credentials_;
  std::string nonce_;
  std::string first_;  // the client's first message without what stands before its name
  std::optional<Error> bad_name_;
  platform::Secret server_proof_;  // what the server has to show; empty until ours is out
  bool proved_ = false;
  bool over_ = false;
};

std::optional<platform::Secret> Scram::Start() {
  const auto user = SaslPrep(credentials_.user);
  if (!user) {
    bad_name_ = user.error();
    return {};  // told when the server asks
  }
  nonce_ = platform::Base64(credentials_.nonce);
  first_ = "n=" + EscapedName(user->view()) + ",r=" + nonce_;
  return platform::Secret(std::string(kNoBinding) + first_);
}

Result<platform::Secret> Scram::Step(std::string_view challenge) {
  if (over_) return Senseless("it asked for more than it may");
  if (bad_name_) return *bad_name_;
  if (server_proof_.empty()) return Prove(challenge);
  over_ = true;
  return Verify(challenge);
}

Result<platform::Secret> Scram::Prove(std::string_view server_first) {
  const auto nonce = ScramAttribute(server_first, 0, 'r');
  const auto coded_salt = ScramAttribute(server_first, 1, 's');
  const auto rounds = platform::ParseWholeNumber(ScramAttribute(server_first, 2, 'i').value_or(""));
  const auto salt = platform::DecodeBase64(coded_salt.value_or("?"));
  if (!nonce || !salt || salt->empty() || !rounds) return Senseless("its first message makes no sense");
  if (!nonce->starts_with(nonce_) || nonce->size() == nonce_.size()) return Senseless("it did not take our nonce");
  if (*rounds < 1 || *rounds > kMostRounds) return Senseless("it asks for too many rounds, or none");

  const auto password = SaslPrep(credentials_.password);
  if (!password) return password.error();
  std::string last = "c=" + std::string(kNoBindingCoded) + ",r=" + std::string(*nonce);
  auto proofs = ComputeScramProofs(digest_, DeriveKey(digest_, password->view(), *salt, static_cast<int>(*rounds)),
                                   first_ + "," + std::string(server_first) + "," + last);
  if (!proofs)
    return Error{Failure::kUnavailable, fmt::format("This computer's policy does not allow {}.", name_.text())};
  server_proof_ = std::move(proofs->server);
  last += ",p=" + platform::Base64(proofs->client.view());
  return platform::Secret(std::move(last));
}

// "e=..." tells that the proof was not taken; the refusal itself follows our empty response.
Result<platform::Secret> Scram::Verify(std::string_view server_last) {
  if (ScramAttribute(server_last, 0, 'e')) return platform::Secret();
  const auto coded = ScramAttribute(server_last, 0, 'v');
  const auto proof = platform::DecodeBase64(coded.value_or("?"));
  proved_ = proof && SameSecret(*proof, server_proof_.view());
  if (!proved_)
    return Senseless("it could not prove that it knows the password. It may not be the server that it says it is");
  return platform::Secret();
}

Result<void> Scram::Finish() {
  if (proved_) return {};
  return Senseless("it did not prove that it knows the password. It may not be the server that it says it is");
}

}  // namespace

std::unique_ptr<SaslMechanism> MakeScramSha256(const Credentials& credentials) {
  return std::make_unique<Scram>(SmtpLine("SCRAM-SHA-256"), EVP_sha256(), credentials);
}

std::unique_ptr<SaslMechanism> MakeScramSha1(const Credentials& credentials) {
  return std::make_unique<Scram>(SmtpLine("SCRAM-SHA-1"), EVP_sha1(), credentials);
}

}  // namespace quillcast::smtp
