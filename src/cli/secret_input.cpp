#include "cli/secret_input.h"

#include <fmt/format.h>
#include <termios.h>
#include <unistd.h>

#include <cstdio>
#include <iostream>

#include "cli/output.h"
#include "platform/file.h"

namespace quillcast::cli {
namespace {

constexpr std::uint64_t kLongestSecretFile = 64ULL * 1024;

// Switches the terminal's echo off for its life.
class NoEcho {
 public:
  NoEcho() {
    if (::tcgetattr(STDIN_FILENO, &before_) != 0) return;
    termios silent = before_;
    silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    changed_ = ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent) == 0;
  }
  NoEcho(const NoEcho&) = delete;
  NoEcho& operator=(const NoEcho&) = delete;
  ~NoEcho() {
    if (changed_) ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &before_);
  }

 private:
  termios before_{};
  bool changed_ = false;
};

}  // namespace

Result<std::string> SecretFromFile(const std::filesystem::path& file) {
  auto content = platform::ReadFileOrPipe(file, kLongestSecretFile);
  if (!content) return content;
  std::string secret = content->substr(0, content->find_first_of("\r\n"));
  if (secret.empty()) {
    return Error{Failure::kBadData, Say("{} holds no password.", file.string()), "Put the password on its first line."};
  }
  return secret;
}

Result<std::string> SecretFromTerminal(const std::string& question) {
  Print(stderr, fmt::format("{}: ", question));
  std::fflush(stderr);
  const NoEcho silent;
  std::string secret;
  const bool answered = static_cast<bool>(std::getline(std::cin, secret));
  Print(stderr, "\n");
  if (!answered || secret.empty()) return Error{Failure::kUsage, "No password was given.", "Use --password-file."};
  return secret;
}

}  // namespace quillcast::cli
