#include "cli/chosen_ones.h"

#include "platform/text.h"

namespace quillcast::cli {
namespace {

Result<Choice> StatesFrom(const std::string& text) {
  Choice choice;
  for (const std::string_view part : platform::Split(text, ',')) {
    const std::string_view word = platform::Trim(part);
    if (word == run::kSkipped) {
      choice.skipped = true;
      continue;
    }
    std::size_t n = 0;
    while (n < run::kResultStates && word != run::Name(static_cast<run::ResultState>(n))) ++n;
    if (n == run::kResultStates) {
      return Error{Failure::kUsage, Say("\"{}\" is no state of a recipient.", platform::Printable(word, 60)),
                   Say("The states are: {}.", StateNames())};
    }
    choice.rows.states.set(n);
  }
  return choice;
}

}  // namespace

std::string StateNames() {
  std::string names;
  for (std::size_t n = 0; n < run::kResultStates; ++n) {
    names += run::Name(static_cast<run::ResultState>(n)) + std::string(", ");
  }
  return names + run::kSkipped;
}

void AddReplyOption(CLI::App& command, ChosenOnes& chosen) {
  command
      .add_option("--reply", chosen.replies,
                  "Of them only those whom the server answered with a code that begins so, parted by commas: 452, 45, "
                  "5.2, 5.2.2, 250")
      ->type_name("CODES");
}

Result<Choice> ChoiceFrom(const ChosenOnes& chosen) {
  auto choice = chosen.states.empty() ? Choice{run::StateSet().set()} : StatesFrom(chosen.states);
  if (!choice) return choice.error();
  auto replies = run::RepliesFrom(chosen.replies);
  if (!replies) return replies.error();
  choice->rows.replies = *std::move(replies);
  return choice;
}

}  // namespace quillcast::cli
