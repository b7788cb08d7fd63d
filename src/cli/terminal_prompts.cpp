#include "cli/terminal_prompts.h"

#include <fmt/format.h>

#include <cstdio>
#include <iostream>
#include <string>

#include "cli/output.h"
#include "platform/text.h"

namespace quillcast::cli {

using platform::Answer;

void TerminalPrompts::Show(std::string_view text) { Print(stderr, ForTerminal(text) + "\n"); }

char TerminalPrompts::AskFor(std::string_view text, std::string_view choices) const {
  Show(text);
  if (assume_yes) return choices.front();
  if (!may_ask) {
    Print(stderr, "Nobody is there to answer; --yes answers for you.\n");
    return 0;
  }
  Print(stderr, fmt::format("[{}] ", fmt::join(choices, "/")));
  std::fflush(stderr);
  std::string line;
  if (!std::getline(std::cin, line) || line.empty()) return 0;
  return platform::AsciiLower(line.front());
}

Answer TerminalPrompts::Ask(std::string_view text) { return AskFor(text, "yn") == 'y' ? Answer::kYes : Answer::kNo; }

Answer TerminalPrompts::AskOrCancel(std::string_view text) {
  const char answer = AskFor(text, "ync");
  if (answer == 'y') return Answer::kYes;
  return answer == 'n' ? Answer::kNo : Answer::kCancel;
}

bool TerminalPrompts::Consent(std::string_view text) { return AskFor(text, "yn") == 'y'; }

}  // namespace quillcast::cli
