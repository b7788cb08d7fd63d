#include "cli/chosen_ones.h"

#include "platform/text.h"

namespace quillcast::cli {
namespace {

Result<run::StateSet> StatesFrom(const std::string& text) {
  run::StateSet states;
  for (const std::string_view part : platform::Split(text, ',')) {
    const std::string_view word = platform::Trim(part);
    std::size_t n = 0;
    while (n < run::kResultStates && word != run::Name(static_cast<run::ResultState>(n))) ++n;
    if (n == run::kResultStates) {
      return Error{Failure::kUsage, Say("\"{}\" is no state of a recipient.", platform::Printable(word, 60)),
                   Say("The states are: {}.", StateNames())};
    }
    states.set(n);
  }
  return states;
}

}  // namespace

std::string StateNames() {
  std::string names;
  for (std::size_t n = 0; n < run::kResultStates; ++n) {
    names += (n == 0 ? "" : ", ") + std::string(run::Name(static_cast<run::ResultState>(n)));
  }
  return names;
}

void AddReplyOption(CLI::App& command, ChosenOnes& chosen) {
  command
      .add_option("--reply", chosen.replies,
                  "Of them only those whom the server answered with a code that begins so, parted by commas: 452, 45, "
                  "5.2, 5.2.2, 250")
      ->type_name("CODES");
}

Result<run::RecipientChoice> ChoiceFrom(const ChosenOnes& chosen) {
  const auto states = chosen.states.empty() ? run::StateSet().set() : StatesFrom(chosen.states);
  if (!states) return states.error();
  auto replies = run::RepliesFrom(chosen.replies);
  if (!replies) return replies.error();
  return run::RecipientChoice(*states, *std::move(replies));
}

}  // namespace quillcast::cli
