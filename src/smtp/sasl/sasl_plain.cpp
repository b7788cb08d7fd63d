#include "smtp/sasl/sasl_mechanism.h"

namespace quillcast::smtp {
namespace {

class Plain final : public SaslMechanism {
 public:
  explicit Plain(const Credentials& credentials) : credentials_(credentials) {}
  SmtpLine Name() const override { return "PLAIN"; }

  // The identity to act for is left empty: the server takes the user's own.
  std::optional<platform::Secret> Start() override {
    std::string message;
    message.reserve(credentials_.user.size() + credentials_.password.size() + 2);  // no copy is left by growing
    message += '\0';
    message += credentials_.user;
    message += '\0';
    message += credentials_.password;
    return platform::Secret(std::move(message));
  }

  Result<platform::Secret> Step(std::string_view /*challenge*/) override {
    return Error{Failure::kUnavailable, "The server asked for more than PLAIN has to say."};
  }

 private:
  Credentials credentials_;
};

}  // namespace

std::unique_ptr<SaslMechanism> MakePlain(const Credentials& credentials) {
  return std::make_unique<Plain>(credentials);
}

}  // namespace quillcast::smtp
