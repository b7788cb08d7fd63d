// A message file on paper: what is asked for it, how it is laid out, what is printed of it, and how that ends.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "mail_file/body_formats.h"
#include "mail_file/shown_body.h"
#include "platform/complaint.h"

namespace quillcast::mail_file {

enum class PrintControl : std::uint8_t { kFile, kLeft, kTop, kRight };

// As it was typed. Margins are in millimetres, from 1 to 99; that at the bottom is the one at the top.
struct PrintForm {
  std::string file;
  std::string left = "20";
  std::string top = "20";
  std::string right = "20";
  BodyFormat format = BodyFormat::kHtml;
  std::string heading;  // a line above each page; none where it is empty
  bool is_centred = false;
  bool is_bold = false;
  bool is_underlined = false;
};
std::optional<Complaint<PrintControl>> CheckPrint(const PrintForm& form);

// What is printed: a page with its pictures, or a text as it stands.
struct PrintedBody {
  ShownBody page;
  std::string text;
  bool is_page = false;
};

// How many bytes are laid out. The tables of a page, which is a stranger's, take their time in one piece.
inline constexpr std::size_t kMostPrinted = std::size_t{8} << 20;
inline constexpr std::size_t kMostPrintedHtml = std::size_t{1} << 20;
inline constexpr std::size_t kMostPreviewed = std::size_t{256} << 10;  // in a second
inline constexpr int kMostPages = 2000;

// RTF prints what its HTML prints, XML its source. Of what is longer than about `most` bytes, or kMostPrintedHtml, the
// beginning; `page.is_cut` says so. Errors: those of WhyNothing; kIo when the file cannot be read,
// kTryAgain after a cancel.
Result<PrintedBody> ReadPrintedBody(const MailMessage& message, BodyFormat format, std::size_t most,
                                    const platform::CancelToken* cancel);

// The numbering is fixed.
enum class PrintCode : std::uint8_t {
  kPrinted = 0,
  kNoPrinter = 202,   // there is none of this name
  kNotBegun = 203,    // it takes no page
  kNotWritten = 204,  // it, or the disk, failed on the way
  kCancelled = 255,   // in the dialog that chooses the printer, or on the way
};
// "Error 202: Invalid printer."; empty for kPrinted.
std::string_view TextOf(PrintCode code);
// When nothing was loaded.
inline constexpr const char* kNoMessageHandle = "There was an error creating the message handle.";

// How a print ended.
struct PrintedMessage {
  PrintCode code = PrintCode::kPrinted;
  int pages = 0;
  std::optional<Error> error = {};      // why, where there is more to say
  std::vector<Sentence> left_out = {};  // what of the message is on no page
};
// For a status line, where it did not end with kPrinted.
Sentence WhyNotPrinted(const PrintedMessage& printed);
// Said below the last page too. The pictures are those that found no room, or could not be decoded.
std::vector<Sentence> LeftOut(bool is_cut, std::size_t pictures);

}  // namespace quillcast::mail_file
