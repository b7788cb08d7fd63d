#include "smtp/mailbox/server_rule.h"

#include <fmt/format.h>

#include "platform/text.h"

namespace quillcast::smtp {
namespace {

struct StagePrefix {
  std::string_view prefix;
  RuleStage stage;
};
constexpr StagePrefix kStagePrefixes[] = {{"MAIL:", RuleStage::kSender}, {"DATA:", RuleStage::kData}};

// What a code most often means at RCPT (RFC 3463 3.2 to 3.8).
struct EnhancedRow {
  int code;
  std::string_view enhanced;
};
constexpr EnhancedRow kEnhancedAtRecipient[] = {
    {421, "4.3.2"}, {450, "4.2.1"}, {451, "4.3.0"}, {452, "4.2.2"}, {550, "5.1.1"},
    {551, "5.1.6"}, {552, "5.2.2"}, {553, "5.1.3"}, {554, "5.7.1"},
};

std::string_view EnhancedOf(RuleStage stage, int code) {
  const bool permanent = code >= 500;
  if (stage == RuleStage::kSender) return permanent ? "5.7.1" : "4.7.1";
  if (stage == RuleStage::kData) return permanent ? "5.6.0" : "4.6.0";
  for (const auto& row : kEnhancedAtRecipient) {
    if (row.code == code) return row.enhanced;
  }
  return permanent ? "5.0.0" : "4.0.0";
}

Error BadRule(std::string_view text, RuleKind kind) {
  const bool refuse = kind == RuleKind::kRefuse;
  return {Failure::kUsage, Say("\"{}\" is not a rule.", platform::Printable(text)),
          Say("Write PATTERN=CODE with a code from {}, as in \"{}\".", refuse ? "500 to 599" : "400 to 499",
              refuse ? "bob@*=550" : "*@slow.example=451")};
}

}  // namespace

Result<ServerRule> ParseServerRule(std::string_view text, RuleKind kind) {
  const auto equals = text.rfind('=');
  if (equals == std::string_view::npos) return BadRule(text, kind);
  const auto code = platform::ParseWholeNumber(text.substr(equals + 1));
  const int first = kind == RuleKind::kRefuse ? 500 : 400;
  if (!code || *code < first || *code > first + 99) return BadRule(text, kind);

  ServerRule rule;
  rule.code = static_cast<int>(*code);
  auto pattern = text.substr(0, equals);
  for (const auto& row : kStagePrefixes) {
    if (!platform::StartsWithIgnoringAsciiCase(pattern, row.prefix)) continue;
    rule.stage = row.stage;
    pattern.remove_prefix(row.prefix.size());
    break;
  }
  if (pattern.empty()) return BadRule(text, kind);
  rule.pattern = pattern;
  return rule;
}

// Only the last "*" is ever tried again, so the work is at most the product of the two lengths.
bool MatchesGlob(std::string_view pattern, std::string_view text) {
  std::size_t p = 0;
  std::size_t t = 0;
  std::size_t star = std::string_view::npos;
  std::size_t star_text = 0;
  while (t < text.size()) {
    if (p < pattern.size() && pattern[p] == '*') {
      star = p++;
      star_text = t;
    } else if (p < pattern.size() &&
               (pattern[p] == '?' || platform::AsciiLower(pattern[p]) == platform::AsciiLower(text[t]))) {
      ++p;
      ++t;
    } else if (star != std::string_view::npos) {
      p = star + 1;
      t = ++star_text;
    } else {
      return false;
    }
  }
  while (p < pattern.size() && pattern[p] == '*') ++p;
  return p == pattern.size();
}

std::optional<ServerReply> FindRefusal(const std::vector<ServerRule>& rules, RuleStage stage,
                                       std::string_view address) {
  for (const auto& rule : rules) {
    if (rule.stage != stage || !MatchesGlob(rule.pattern, address)) continue;
    const char* words = rule.code >= 500 ? "refused" : "deferred";
    return ServerReply{rule.code, std::string(EnhancedOf(stage, rule.code)),
                       fmt::format("<{}> {} by a rule of this mailbox", platform::Printable(address, 254), words)};
  }
  return {};
}

}  // namespace quillcast::smtp
