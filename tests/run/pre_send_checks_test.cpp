// The checks before a run: what is asked and told in which order, and what comes of it.
#include "run/pre_send_checks.h"

#include <gtest/gtest.h>

#include <deque>

#include "support/scripted_prompts.h"

namespace quillcast::run {
namespace {

using platform::Answer;

TEST(PreSendChecks, RunInTheirOrder) {
  constexpr const char* kReply =
      "ask: Never employ spam tactics like using RE: or FW: in the subject line.\r\n"
      "You should be sure that you know what you are doing.\r\nAre you sure you want to continue?";
  constexpr const char* kNoSubject = "ask: This message has no subject. Are you sure you want to send it?";
  constexpr const char* kEmpty = "ask: Are you sure you want to send an empty message?";
  constexpr const char* kNobody = "warn: The selected group does not contain any recipients.";
  constexpr Refusal kNoAccount{SendControl::kAccount, Failure::kNotConfigured};
  constexpr Refusal kNoGroup{SendControl::kGroup, Failure::kUsage};
  constexpr Refusal kNotThisSubject{SendControl::kSubject, Failure::kNotPermitted};
  constexpr Refusal kNotThisBody{SendControl::kBody, Failure::kNotPermitted};
  using Answers = std::deque<Answer>;
  using Texts = std::vector<std::string>;
  struct Case {
    const char* name;
    SendingFacts facts;
    Answers answers;
    std::optional<Refusal> refusal;
    Texts shown;
  };
  for (const Case& c : std::initializer_list<Case>{
           {"good", {true, {"A"}, "A", 3, "Hello", "text", true}, {}, {}, {}},
           {"no account", SendingFacts{false, {}, "", 0, "", "", false}, Answers{}, kNoAccount,
            Texts{"warn: Please fill out the Mail Account section in Email Manager."}},
           {"no groups", SendingFacts{true, {}, "B", 0, "", "", false}, Answers{}, kNoGroup,
            Texts{"warn: Please create at least one group of recipients."}},
           {"none chosen", SendingFacts{true, {"A"}, "", 0, "", "", false}, Answers{}, kNoGroup,
            Texts{"warn: Please specify a group in the To field."}},
           {"not there", {true, {"A"}, "B\n", 0, "", "", false}, {}, kNoGroup, {"warn: There is no group B?."}},
           {"no subject, no", {true, {"A"}, "A", 0, "", "", true}, {Answer::kNo}, kNotThisSubject, {kNoSubject}},
           {"everything, yes", SendingFacts{true, {"A"}, "A", 0, "", " \r\n ", true},
            Answers{Answer::kYes, Answer::kYes}, kNoGroup, Texts{kNoSubject, kEmpty, kNobody}},
           {"re:", {true, {"A"}, "A", 1, "re: x", "t", true}, {Answer::kNo}, kNotThisSubject, {kReply}},
           {"Fw :", {true, {"A"}, "A", 1, "Fw :x", "t", true}, {Answer::kYes}, {}, {kReply}},
           {"re-", {true, {"A"}, "A", 1, "re- x", "t", true}, {}, {}, {}},
           {"RE  :", {true, {"A"}, "A", 1, "RE  : x", "t", true}, {}, {}, {}},
           {"empty body", {true, {"A"}, "A", 1, "x", "", true}, {Answer::kNo}, kNotThisBody, {kEmpty}},
           {"a tab is a body", {true, {"A"}, "A", 1, "x", "\t", true}, {}, {}, {}},
       }) {
    test::ScriptedPrompts prompts;
    prompts.answers = c.answers;
    EXPECT_EQ(CheckBeforeSending(c.facts, prompts), c.refusal) << c.name;
    EXPECT_EQ(prompts.shown, c.shown) << c.name;
    EXPECT_TRUE(prompts.answers.empty()) << c.name;
  }
}

}  // namespace
}  // namespace quillcast::run
