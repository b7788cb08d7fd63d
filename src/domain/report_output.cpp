#include "domain/report_output.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>

#include "charset/code_page.h"
#include "platform/text.h"
#include "profile/mailer_name.h"

namespace quillcast::domain {
namespace {

constexpr std::size_t kLongestLine = 2000;  // characters
constexpr std::size_t kMostLines = 20000;   // a box lays them out in a tenth of a second
constexpr const char* kRule = "------------------------------------";

// Each tab is kept.
std::string PrintableLine(std::string_view line) {
  std::string shown;
  for (const std::string_view piece : platform::Split(line, '\t')) {
    if (piece.data() != line.data()) shown += '\t';
    shown += platform::Printable(piece, piece.size());
  }
  return shown;
}

void AppendBroken(std::string& out, std::string_view line) {
  std::size_t characters = 0;
  for (const char c : line) {
    const bool begins_one = (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
    if (begins_one && characters++ == kLongestLine) {
      out += '\n';
      characters = 1;
    }
    out += c;
  }
}

Sentence Saved(const std::filesystem::path& file, std::size_t lost, std::string_view code_page) {
  if (lost == 0) return Say("The report is in {}.", platform::Printable(file.string()));
  return SayOf(static_cast<std::int64_t>(lost),
               "{} character is not in {} and was written as \"?\". The report is in {}.",
               "{} characters are not in {} and were written as \"?\". The report is in {}.", code_page,
               platform::Printable(file.string()));
}

}  // namespace

Result<std::optional<Sentence>> SaveReport(std::string_view text, std::string_view code_page,
                                           const platform::OwnFiles& own, platform::Prompts& prompts) {
  if (text.empty()) {
    prompts.Warn("There is no data to save.");
    return std::optional<Sentence>();
  }
  const auto file = prompts.PickSaveFile(
      {.title = "Save", .filter = "Text Files (*.txt)|*.txt|All Files (*.*)|*.*", .ask_before_overwriting = true});
  if (file.empty()) return std::optional<Sentence>();
  const auto may_write = platform::MayWriteTo(file, own, prompts);
  if (!may_write) return may_write.error();
  if (!*may_write) return std::optional(platform::LeftLocked(file));
  std::string encoded;
  const std::size_t lost = charset::AppendInCodePage(encoded, platform::WithLineEnds(text), code_page);
  const auto written = platform::ReplaceChosenFile(file, own, encoded + "\r\n");
  if (!written) return written.error();
  return std::optional(Saved(file, lost, code_page));
}

std::string ShownReport(std::string_view text) {
  const std::string lines = platform::ReplaceAll(platform::ReplaceAll(text, "\r\n", "\n"), "\r", "\n");
  std::string shown;
  std::size_t count = 0;
  for (const std::string_view line : platform::Split(lines, '\n')) {
    if (count++ == kMostLines) {
      const auto left = 1 + std::count(line.data(), lines.data() + lines.size(), '\n');
      return shown + fmt::format("\n[{} more lines: Save and Print have them]", platform::WithThousands(left));
    }
    if (line.data() != lines.data()) shown += '\n';
    AppendBroken(shown, PrintableLine(line));
  }
  return shown;
}

bool MayPrintReport(std::string_view text, platform::Prompts& prompts) {
  if (text.empty()) {
    prompts.Warn("There is no data to print.");
    return false;
  }
  return prompts.Ask(
             "Do you still want to print this document?\r\n"
             "Please consider your environmental responsibility before printing.") == platform::Answer::kYes;
}

std::string PrintedReport(std::string_view text) {
  return profile::MailerName() + "\n" + kRule + "\n" + std::string(text);
}

}  // namespace quillcast::domain
