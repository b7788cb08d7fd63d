#include "smtp/sasl/digest.h"
#include "smtp/sasl/sasl_mechanism.h"

namespace quillcast::smtp {
namespace {

class CramMd5 final : public SaslMechanism {
 public:
  explicit CramMd5(const Credentials& credentials) : credentials_(credentials) {}
  SmtpLine Name() const override { return "CRAM-MD5"; }
  std::optional<platform::Secret> Start() override { return {}; }

  Result<platform::Secret> Step(std::string_view challenge) override {
    // To an empty challenge the answer would be the same each time, and could be used again.
    if (challenge.empty()) return Error{Failure::kBadData, "The server's challenge is empty."};
    if (answered_) return Error{Failure::kBadData, "The server asked for more than CRAM-MD5 has to say."};
    answered_ = true;
    std::string response = CramMd5Response(credentials_.user, credentials_.password, challenge);
    if (response.empty()) return Error{Failure::kUnavailable, "This computer's policy does not allow CRAM-MD5."};
    return platform::Secret(std::move(response));
  }

 private:
  Credentials credentials_;
  bool answered_ = false;
};

}  // namespace

std::unique_ptr<SaslMechanism> MakeCramMd5(const Credentials& credentials) {
  return std::make_unique<CramMd5>(credentials);
}

}  // namespace quillcast::smtp
