// Parts whose content is more than transfer-encoded: BinHex, uuencode with its own first line, winmail.dat; and those
// whose encoding nobody knows.
#pragma once

#include <string>

#include "mail_file/found_files.h"

namespace quillcast::mail_file {

// Goes through the parts that the structure of the file has, and sets or adds what is found in them.
// Fails when the file cannot be read (kIo) or it was cancelled (kTryAgain).
Result<void> UnpackParts(FoundFiles& found);
// The files within one part's text, where it is a text of the body: for one that has become that since.
Result<void> UnpackText(FoundFiles& found, std::size_t place);

// What BinHex comes to, read to its end; a fault is told.
struct BinHexLook {
  bool is_used = false;  // as the mode says
  std::string name;
};
Result<BinHexLook> LookAtBinHex(FoundFiles& found, const PartSource& source);

}  // namespace quillcast::mail_file
