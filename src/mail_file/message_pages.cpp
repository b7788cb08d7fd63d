#include "mail_file/message_pages.h"

#include <array>
#include <utility>

#include "document/number_rules.h"
#include "mail_file/load_settings.h"

namespace quillcast::mail_file {
namespace {

constexpr std::size_t kMost = std::size_t{8} * 1024 * 1024;  // bytes that are laid out

using Rule = document::NumberRule<PrintForm, PrintControl>;
constexpr std::array kMargins = {
    Rule{&PrintForm::left, "margin", PrintControl::kLeft, 1, 99, document::Digits::kWithFraction},
    Rule{&PrintForm::top, "margin", PrintControl::kTop, 1, 99, document::Digits::kWithFraction},
    Rule{&PrintForm::right, "margin", PrintControl::kRight, 1, 99, document::Digits::kWithFraction},
};

// Of a text that goes on the writing of it ends early, which is no failure.
Result<PrintedBody> ReadText(const MailMessage& message, BodyFormat format) {
  PrintedBody body;
  const auto take = [&body](std::string_view piece) -> Result<void> {
    const auto room = kMost - body.text.size();
    body.page.is_cut = piece.size() > room;
    body.text += piece.substr(0, room);
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

Result<PrintedBody> ReadPrintedBody(const MailMessage& message, BodyFormat format,
                                    const platform::CancelToken* cancel) {
  if (format == BodyFormat::kText || format == BodyFormat::kXml) return ReadText(message, format);
  auto page = ReadShownBody(message, kMost, cancel);
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

}  // namespace quillcast::mail_file
