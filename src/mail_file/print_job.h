// A print that another program draws: what the command tells `quillcast-desktop`, and what that tells back. Pages are
// laid out by the toolkit, which the command is without.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "mail_file/mail_message.h"
#include "mail_file/message_pages.h"

namespace quillcast::mail_file {

// The message file is the program's standard input, and what it tells its standard output. The PDF goes into the file
// that is open under this number, and that whoever starts it places.
inline constexpr int kPrintedFile = 3;
inline constexpr std::string_view kPrintJob = "--print-message";  // the first argument

struct PrintJob {
  PrintForm form;
  LoadMode mode = LoadMode::kPlain;
  std::string printer;  // its name; empty for a PDF
  std::string target;   // what the PDF is called, for errors
  std::string pages;    // "1-3,7"; empty for all
};
std::vector<std::string> AsArguments(const PrintJob& job);
PrintJob ReadArguments(std::span<const std::string> arguments);

// What is told: a line for each page, and how it ended.
struct PrintNews {
  int page = 0;
  int of = 0;
  PrintedMessage printed;
  bool has_ended = false;  // else the other program broke off
};
std::string LineOfPage(int page, int of);
std::string LinesOfEnd(const PrintedMessage& printed);
// One line, without its end.
void TakeLine(std::string_view line, PrintNews& news);

}  // namespace quillcast::mail_file
