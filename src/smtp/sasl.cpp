#include "smtp/sasl.h"

#include <fmt/format.h>

#include <array>

namespace quillcast::smtp {
namespace {

struct Row {
  AuthMode mode;
  const char* name;
  std::unique_ptr<SaslMechanism> (*make)(const Credentials&);
};
// For each mode the mechanisms that serve it, the one asked for first.
constexpr std::array kRows{
    Row{AuthMode::kLogin, "LOGIN", MakeLogin},
    Row{AuthMode::kLogin, "PLAIN", MakePlain},
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

}  // namespace

Result<std::unique_ptr<SaslMechanism>> ChooseMechanism(AuthMode mode, const Capabilities& capabilities,
                                                       const Credentials& credentials) {
  bool served = false;
  for (const Row& row : kRows) {
    if (row.mode != mode) continue;
    served = true;
    if (capabilities.Offers(row.name)) return row.make(credentials);
  }
  if (!served) {
    return Error{Failure::kUnavailable,
                 fmt::format("{} is not served by this version; choose AUTH LOGIN.", NameOf(mode))};
  }
  return Error{Failure::kUnavailable,
               fmt::format("The server does not offer {} but {}. Choose another way of signing in.", NameOf(mode),
                           fmt::join(capabilities.mechanisms, ", "))};
}

}  // namespace quillcast::smtp
