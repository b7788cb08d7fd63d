#include "mail_file/message_pages.h"

#include <algorithm>
#include <array>
#include <utility>

#include "document/number_rules.h"
#include "mail_file/body_page.h"
#include "mail_file/load_settings.h"

namespace quillcast::mail_file {
namespace {

using Rule = document::NumberRule<PrintForm, PrintControl>;
constexpr std::array kMargins = {
    Rule{&PrintForm::left, "margin", PrintControl::kLeft, 1, 99, document::Digits::kWithFraction},
    Rule{&PrintForm::top, "margin", PrintControl::kTop, 1, 99, document::Digits::kWithFraction},
    Rule{&PrintForm::right, "margin", PrintControl::kRight, 1, 99, document::Digits::kWithFraction},
};

constexpr std::size_t kLongestPrintedLine = std::size_t{32} * 1024;  // bytes
constexpr std::size_t kLongestPrintedWord = std::size_t{4} * 1024;   // characters

// Whether a line may end beside the character that begins with this byte: one of Chinese, Japanese or Korean, or a sign
// that is no letter.
bool MayEndALine(char first) { return first == ' ' || first == '\n' || static_cast<unsigned char>(first) >= 0xE3; }

// Breaks lines that are too long to be drawn in good time: each page of one takes as long as all of it, and the toolkit
// looks at a word once for each line of it.
class LineBreaker {
 public:
  std::string Take(std::string_view piece) {
    std::string out;
    for (const char c : piece) {
      const bool begins = (static_cast<unsigned char>(c) & 0xC0) != 0x80;  // a character
      if (begins && (word_ >= kLongestPrintedWord || line_ >= 2 * kLongestPrintedLine)) Break(out);
      if (begins) word_ = MayEndALine(c) ? 0 : word_ + 1;
      line_ = c == '\n' ? 0 : line_ + 1;
      out += c;
      if (c == ' ' && line_ >= kLongestPrintedLine) Break(out);
    }
    return out;
  }

 private:
  void Break(std::string& out) {
    out += '\n';
    line_ = word_ = 0;
  }

  std::size_t line_ = 0;
  std::size_t word_ = 0;
};

// Of a text that goes on the writing of it ends early, which is no failure.
Result<PrintedBody> ReadText(const MailMessage& message, BodyFormat format, std::size_t most,
                             const platform::CancelToken* cancel) {
  PrintedBody body;
  LineBreaker lines;
  const auto take = [&](std::string_view piece) -> Result<void> {
    if (cancel != nullptr && cancel->Requested() != platform::Stop::kNone)
      return Error{Failure::kTryAgain, "Reading the message was cancelled."};
    const auto room = most - std::min(most, body.text.size());
    body.page.is_cut = piece.size() > room;
    body.text += lines.Take(piece.substr(0, room));
    return body.page.is_cut ? Result<void>(Error{Failure::kBadData, "It goes on.", ""}) : Result<void>();
  };
  const auto written = WriteBody(message, format, "", take);
  if (!written && !body.page.is_cut) return written.error();
  return body;
}

}  // namespace

std::optional<Complaint<PrintControl>> CheckPrint(const PrintForm& form) {
  if (form.file.empty()) return Complaint<PrintControl>{std::string(kNoMessageFile), PrintControl::kFile};
  return document::CheckNumbers<PrintForm, PrintControl>(form, kMargins);
}

Result<PrintedBody> ReadPrintedBody(const MailMessage& message, BodyFormat format, std::size_t most,
                                    const platform::CancelToken* cancel) {
  if (format == BodyFormat::kXml) return ReadText(message, format, most, cancel);
  if (auto none = WhyNothing(message, format)) return *std::move(none);
  const bool is_page = HasPage(message) || HasPicturesBeside(message);
  if (format == BodyFormat::kText || !is_page) return ReadText(message, BodyFormat::kText, most, cancel);
  auto page = ReadShownBody(message, std::min(most, kMostPrintedHtml), cancel);
  if (!page) return page.error();
  return PrintedBody{*std::move(page), {}, true};
}

std::string_view TextOf(PrintCode code) {
  switch (code) {
    case PrintCode::kPrinted:
      break;
    case PrintCode::kNoPrinter:
      return "Error 202: Invalid printer.";
    case PrintCode::kNotBegun:
      return "Error 203: Could not initialize printer.";
    case PrintCode::kNotWritten:
      return "Error 204: Could not write to printer.";
    case PrintCode::kCancelled:
      return "Error 255: Cancelled by user.";
  }
  return "";
}

Sentence WhyNotPrinted(const PrintedMessage& printed) {
  if (printed.error) return AsSentence(*printed.error);
  switch (printed.code) {
    case PrintCode::kPrinted:
      break;
    case PrintCode::kNoPrinter:
      return "Nothing was printed: there is no such printer.";
    case PrintCode::kNotBegun:
      return "Nothing was printed: the printer takes no page.";
    case PrintCode::kNotWritten:
      return "The printer, or the disk, failed on the way.";
    case PrintCode::kCancelled:
      return printed.pages == 0 ? "Nothing was printed: it was cancelled." : "Printing was cancelled on the way.";
  }
  return "";
}

std::vector<Sentence> LeftOut(bool is_cut, std::size_t pictures) {
  std::vector<Sentence> left_out;
  if (is_cut) left_out.emplace_back("The message goes on: this is its beginning.");
  if (pictures > 0) {
    left_out.push_back(SayOf(static_cast<std::int64_t>(pictures),
                             "{} picture was left out: too large, damaged, or of an unknown kind.",
                             "{} pictures were left out: too large, damaged, or of an unknown kind."));
  }
  return left_out;
}

}  // namespace quillcast::mail_file
