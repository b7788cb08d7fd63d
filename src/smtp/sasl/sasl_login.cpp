#include "smtp/sasl/sasl_mechanism.h"

namespace quillcast::smtp {
namespace {

class Login final : public SaslMechanism {
 public:
  explicit Login(const Credentials& credentials) : credentials_(credentials) {}
  SmtpLine Name() const override { return "LOGIN"; }
  std::optional<platform::Secret> Start() override { return {}; }
  bool OnlyPrompted() const override { return true; }

  // The user first and the password second, whatever the prompts say: servers word them in many ways, and a prompt that
  // could choose would let a server ask for the password alone.
  Result<platform::Secret> Step(std::string_view /*challenge*/) override {
    ++step_;
    if (step_ == 1) return platform::Secret(credentials_.user);
    if (step_ == 2) return platform::Secret(credentials_.password);
    return Error{Failure::kUnavailable, "The server asked for more than a user and a password."};
  }

 private:
  Credentials credentials_;
  int step_ = 0;
};

}  // namespace

std::unique_ptr<SaslMechanism> MakeLogin(const Credentials& credentials) {
  return std::make_unique<Login>(credentials);
}

}  // namespace quillcast::smtp
