#include "smtp/sasl/sasl_mechanism.h"

#include <fmt/format.h>

#include <array>

namespace quillcast::smtp {
namespace {

struct Row {
  AuthMode mode;
  const char* name;
  std::unique_ptr<SaslMechanism> (*make)(const Credentials&);
};
// For each mode the mechanisms that serve it, the best first. Whoever asks for CRAM-MD5 wants the password not to
// travel: SCRAM does that better.
constexpr std::array kRows{
    Row{AuthMode::kLogin, "LOGIN", MakeLogin},
    Row{AuthMode::kLogin, "PLAIN", MakePlain},
    Row{AuthMode::kLogin, "SCRAM-SHA-256", MakeScramSha256},
    Row{AuthMode::kLogin, "SCRAM-SHA-1", MakeScramSha1},
    Row{AuthMode::kCramMd5, "SCRAM-SHA-256", MakeScramSha256},
    Row{AuthMode::kCramMd5, "SCRAM-SHA-1", MakeScramSha1},
    Row{AuthMode::kCramMd5, "CRAM-MD5", MakeCramMd5},
    Row{AuthMode::kNtlm, "NTLM", MakeNtlm},
};

struct ModeName {
  AuthMode mode;
  const char* name;
};
constexpr std::array kModeNames{
    ModeName{AuthMode::kLogin, "AUTH LOGIN"},
    ModeName{AuthMode::kCramMd5, "CRAM MD5"},
    ModeName{AuthMode::kNtlm, "NTLM"},
};

const char* NameOf(AuthMode mode) {
  for (const ModeName& row : kModeNames) {
    if (row.mode == mode) return row.name;
  }
  return "";
}

// The best that the server offers for a mode; nullptr when there is none.
const Row* RowFor(AuthMode mode, const Capabilities& capabilities) {
  for (const Row& row : kRows) {
    if (row.mode == mode && capabilities.Offers(row.name)) return &row;
  }
  return nullptr;
}

}  // namespace

bool CanSignIn(AuthMode mode, const Capabilities& capabilities) { return RowFor(mode, capabilities) != nullptr; }

Result<std::unique_ptr<SaslMechanism>> ChooseMechanism(AuthMode mode, const Capabilities& capabilities,
                                                       const Credentials& credentials) {
  if (const Row* row = RowFor(mode, capabilities)) return row->make(credentials);
  if (capabilities.mechanisms.empty()) {
    return Error{Failure::kUnavailable, "The server offers no way of signing in that is known here."};
  }
  return Error{Failure::kUnavailable, Say("The server does not offer {} but {}. Choose another way of signing in.",
                                          NameOf(mode), fmt::to_string(fmt::join(capabilities.mechanisms, ", ")))};
}

}  // namespace quillcast::smtp
