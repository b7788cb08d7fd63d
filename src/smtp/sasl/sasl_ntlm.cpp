#include "smtp/sasl/ntlm.h"
#include "smtp/sasl/sasl_mechanism.h"

namespace quillcast::smtp {
namespace {

class Ntlm final : public SaslMechanism {
 public:
  explicit Ntlm(const Credentials& credentials) : credentials_(credentials) {}
  SmtpLine Name() const override { return "NTLM"; }
  std::optional<platform::Secret> Start() override { return platform::Secret(std::string_view(negotiate_)); }

  Result<platform::Secret> Step(std::string_view challenge) override {
    if (answered_) return Error{Failure::kBadData, "The server asked for more than NTLM has to say."};
    answered_ = true;
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(credentials_.now.time_since_epoch()).count();
    return NtlmAuthenticate(
        {credentials_.user, credentials_.password, credentials_.nonce.substr(0, 8), NtlmTime(seconds)}, negotiate_,
        challenge);
  }

 private:
  Credentials credentials_;
  std::string negotiate_ = NtlmNegotiate();
  bool answered_ = false;
};

}  // namespace

std::unique_ptr<SaslMechanism> MakeNtlm(const Credentials& credentials) { return std::make_unique<Ntlm>(credentials); }

}  // namespace quillcast::smtp
