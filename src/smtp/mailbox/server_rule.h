// Whom the mailbox turns away: rules that a person gives to see how a sending program takes a refusal.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/result.h"
#include "smtp/server_reply.h"

namespace quillcast::smtp {

// Where a rule is asked: for the sender at MAIL, for a recipient at RCPT, or for each recipient at the end of data.
enum class RuleStage { kSender, kRecipient, kData };
enum class RuleKind { kRefuse, kDefer };

// A rule only turns away: none lets an address through that a later one refuses.
struct ServerRule {
  RuleStage stage = RuleStage::kRecipient;
  std::string pattern;  // "*" is any text, "?" any one octet; the rest stands for itself, upper and lower case alike
  int code = 550;
};

// "bob@*=550", "MAIL:*@spam.example=553", "DATA:*@slow.example=451". kRefuse takes 500 to 599, kDefer 400 to 499; other
// codes and an empty pattern fail with kUsage.
Result<ServerRule> ParseServerRule(std::string_view text, RuleKind kind);

// The whole of `text`, not a part of it. ASCII case does not matter.
bool MatchesGlob(std::string_view pattern, std::string_view text);

// The reply of the first rule of that stage which matches the address; nothing when none does.
std::optional<ServerReply> FindRefusal(const std::vector<ServerRule>& rules, RuleStage stage, std::string_view address);

}  // namespace quillcast::smtp
