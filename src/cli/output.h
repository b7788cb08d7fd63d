// Where a command writes: results to standard output, complaints and progress to standard error.
#pragma once

#include <chrono>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "platform/result.h"

namespace quillcast::cli {

// Text that is safe to show: CR LF as a line end, each line by platform::Printable and cut at 20,000 bytes, for it may
// hold what files and servers say.
std::string ForTerminal(std::string_view text);

// Writes without buts: a stream that is closed, full or a broken pipe fails for good and is asked with std::ferror at
// the end, for no run may break off because nobody listens any more. What a stream holds back it lets go at line ends,
// so that who reads has whole lines wherever it ends.
void Print(std::FILE* stream, std::string_view text);

// No call fails: whether all was written is asked once, at the end, and becomes the exit code.
class Output {
 public:
  bool json = false;
  bool quiet = false;

  // A result for people; nothing with --json. A line end is added.
  void Line(std::string_view text) const;
  // HTML as it is, for a file or another program; a terminal gets it made safe. Nothing with --json.
  void Html(std::string_view html) const;
  // One line of several texts, parted by tabs; none of their own is shown.
  void Columns(const std::vector<std::string>& texts) const;
  // A result for programs, one object a line; nothing without --json.
  void Object(const nlohmann::ordered_json& object) const;
  // Something worth knowing, on standard error; nothing with --quiet.
  void Note(std::string_view text) const;
  // A failure, on standard error, with its remedy. Returns its exit code.
  int Fail(const Error& error) const;
  // A check of the user's input that failed. Returns 64.
  int Complain(std::string_view text) const;
  // How far a long piece of work is: one line on a terminal, rewritten ten times a second at most; nothing elsewhere.
  void Progress(std::string_view text);
  void EndProgress();

 private:
  std::chrono::steady_clock::time_point last_progress_;
  bool progress_shown_ = false;
};

}  // namespace quillcast::cli
