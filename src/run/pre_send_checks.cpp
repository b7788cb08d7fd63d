#include "run/pre_send_checks.h"

#include <algorithm>
#include <array>

#include "platform/text.h"

namespace quillcast::run {
namespace {

enum class Kind { kWarning, kQuestion };

bool LooksLikeAReply(std::string_view subject) {
  const std::string start = platform::AsciiUpper(subject.substr(0, 4));
  return start.starts_with("RE:") || start.starts_with("FW:") || start == "RE :" || start == "FW :";
}

bool IsEmptyBody(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c == ' ' || c == '\r' || c == '\n'; });
}

struct Row {
  bool (*applies)(const SendingFacts&);
  Kind kind;
  const char* text;  // "{}" stands for the group
  Refusal refusal;
};

constexpr Refusal kNoGroup{SendControl::kGroup, Failure::kUsage};
constexpr Refusal kNotThisSubject{SendControl::kSubject, Failure::kNotPermitted};

constexpr auto kRows = std::to_array<Row>({
    {[](const SendingFacts& f) { return !f.account_filled_in; },
     Kind::kWarning,
     "Please fill out the Mail Account section in Email Manager.",
     {SendControl::kAccount, Failure::kNotConfigured}},
    {[](const SendingFacts& f) { return f.groups.empty(); }, Kind::kWarning,
     "Please create at least one group of recipients.", kNoGroup},
    {[](const SendingFacts& f) { return f.group.empty(); }, Kind::kWarning, "Please specify a group in the To field.",
     kNoGroup},
    {[](const SendingFacts& f) { return !f.group_is_there; }, Kind::kWarning, "There is no group {}.", kNoGroup},
    {[](const SendingFacts& f) { return f.subject.empty(); }, Kind::kQuestion,
     "This message has no subject. Are you sure you want to send it?", kNotThisSubject},
    {[](const SendingFacts& f) { return LooksLikeAReply(f.subject); }, Kind::kQuestion,
     "Never employ spam tactics like using RE: or FW: in the subject line.\r\n"
     "You should be sure that you know what you are doing.\r\n"
     "Are you sure you want to continue?",
     kNotThisSubject},
    {[](const SendingFacts& f) { return IsEmptyBody(f.body_text); },
     Kind::kQuestion,
     "Are you sure you want to send an empty message?",
     {SendControl::kBody, Failure::kNotPermitted}},
    {[](const SendingFacts& f) { return f.recipients == 0; }, Kind::kWarning,
     "The selected group does not contain any recipients.", kNoGroup},
});

}  // namespace

std::optional<Refusal> CheckBeforeSending(const SendingFacts& facts, platform::Prompts& prompts) {
  for (const Row& row : kRows) {
    if (!row.applies(facts)) continue;
    const std::string text = Sentence(row.text, {platform::Printable(facts.group, 100)}).InEnglish();
    if (row.kind == Kind::kQuestion) {
      if (prompts.Ask(text) == platform::Answer::kYes) continue;
    } else {
      prompts.Warn(text);
    }
    return row.refusal;
  }
  return {};
}

}  // namespace quillcast::run
