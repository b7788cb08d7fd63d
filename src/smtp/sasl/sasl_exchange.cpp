#include "smtp/sasl/sasl_exchange.h"

#include <array>
#include <utility>

#include "platform/base64.h"

namespace quillcast::smtp {
namespace {

constexpr std::size_t kLongestCommand = 510;  // octets before CRLF (RFC 5321 4.5.3.1.4)
constexpr std::size_t kLongestLine = 12286;   // the same for the lines of an exchange (RFC 4954 4)

struct Refusal {
  int code;
  const char* words;
};
constexpr std::array kRefusals{
    Refusal{432, "The server asks for a change of the password, or a sign-in by AUTH LOGIN, first."},
    Refusal{454, "The server cannot check the password at present. Try again later."},
    Refusal{504, "The server does not take this way of signing in. Choose another."},
    Refusal{530, "The server asks for an encrypted connection first. Set Security to STARTTLS or TLS."},
    Refusal{534, "This way of signing in is too weak for the server. Choose another."},
    Refusal{538, "The server takes the password over an encrypted connection only. Set Security to STARTTLS or TLS."},
};

}  // namespace

SecretLine SaslExchange::Begin() {
  const SmtpLine command = SmtpLine("AUTH").Then(mechanism_->Name());
  initial_ = mechanism_->Start();
  if (!initial_) return SecretLine(command);
  traces_.AddResponse(initial_->view());
  SecretLine line = SecretLine::Coded(*initial_).Behind(command);
  // What would make the command too long waits until the server asks for it.
  if (line.text().size() > kLongestCommand) return SecretLine(command);
  return line;
}

Result<SecretLine> SaslExchange::Answer(std::string_view challenge) {
  const auto plain = platform::DecodeBase64(challenge);
  if (!plain)
    return Error{Failure::kBadData, "The server broke the exchange that signs in: its challenge is no base 64."};
  if (!mechanism_->OnlyPrompted()) traces_.AddChallenge(*plain);
  // The first message was not in the command, or the server passed it over.
  const bool asks_for_the_first = !std::exchange(challenged_, true) && plain->empty() && initial_;
  Result<platform::Secret> response =
      asks_for_the_first ? platform::Secret(initial_->view()) : mechanism_->Step(*plain);
  if (!response) return response.error();
  SecretLine line = SecretLine::Coded(*response);
  if (line.text().size() > kLongestLine) {
    return Error{Failure::kBadData, "The user and the password are too long for SMTP."};
  }
  traces_.AddResponse(response->view());
  return line;
}

const char* AuthRefusal(int code) {
  for (const Refusal& row : kRefusals) {
    if (row.code == code) return row.words;
  }
  if (code / 100 == 4) return "The server did not sign in at present. Try again later.";
  return "The server did not take the user or the password.";
}

}  // namespace quillcast::smtp
