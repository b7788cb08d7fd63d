#include "mail_file/load_code.h"

#include <algorithm>
#include <array>

namespace quillcast::mail_file {
namespace {

struct Row {
  LoadCode code;
  std::string_view text;
};

// To the letter, the spelling of "boundry" too.
constexpr std::array kRows = {
    Row{LoadCode::kOutOfMemory, "Error 14: Out of memory."},
    Row{LoadCode::kException, "Error 206: Exception."},
    Row{LoadCode::kBinHex, "Error 257: There was an error decoding a BINHEX message."},
    Row{LoadCode::kFileIo, "Error 258: File IO error."},
    Row{LoadCode::kNoBoundary, "Error 259: Could not find boundry mark."},
    Row{LoadCode::kUnknownEncoding, "Error 275: Encoding method unknown."},
    Row{LoadCode::kBinHexCrc, "Error 1002: BINHEX CRC error."},
};

}  // namespace

std::string_view TextOf(LoadCode code) {
  const auto* const row = std::ranges::find(kRows, code, &Row::code);
  return row == kRows.end() ? std::string_view() : row->text;
}

}  // namespace quillcast::mail_file
