// How fast the account lets messages go out.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "account/account_settings.h"
#include "run/pace/pace_rules.h"

namespace quillcast::account {

// As they are stored; an empty one is none.
run::PaceTexts PaceTextsOf(const AccountSettings& account);

// One of the account's settings of pace, by its key's name.
struct NamedPace {
  std::string_view name;
  std::string run::PaceTexts::*text;
  AccountKey key;
};
// All of them; there is none for when a run begins.
std::vector<NamedPace> PaceNames();
// "Rate=30/min, Retries=3": those that ask for something; empty where none does.
std::string PaceInWords(const run::PaceTexts& texts);
// What a run is told so that it goes as `wanted` where `otherwise` counts for what it is not told: those that differ,
// "none" for an empty one.
run::PaceTexts InsteadOf(const run::PaceTexts& otherwise, const run::PaceTexts& wanted);

struct PaceFault {
  AccountKey key;
  Error error;
};
// The first of them that cannot be read.
std::optional<PaceFault> FaultInPace(const run::PaceTexts& texts);
// The same of the account's; those that are said in place of it are not looked at.
std::optional<PaceFault> FaultInPace(const AccountSettings& account, const run::PaceTexts& instead = {});
// Naming the setting. kNotConfigured.
Error CannotBeUsed(const PaceFault& fault);

}  // namespace quillcast::account
