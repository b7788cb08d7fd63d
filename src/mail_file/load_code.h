// What went wrong while a message file was loaded: the numbers and texts by which people and scripts know it.
#pragma once

#include <string_view>

#include "platform/sentence.h"

namespace quillcast::mail_file {

// A message that loads in spite of a code is used as far as it was read.
enum class LoadCode {
  kLoaded = 0,
  kOutOfMemory = 14,
  kException = 206,  // a limit was met (limits.h), winmail.dat is damaged, or there are more messages
  kBinHex = 257,
  kFileIo = 258,           // the file cannot be read, or ended before its size; also an empty file
  kNoBoundary = 259,       // a boundary is missing, never comes, is not closed, or stands twice
  kUnknownEncoding = 275,  // a transfer encoding that is not known; yEnc
  kBinHexCrc = 1002,
};

// "Error 14: Out of memory."; empty for kLoaded.
std::string_view TextOf(LoadCode code);

// One thing that was found wrong, and about what: a sentence for people beside the text of the code.
struct LoadFault {
  LoadCode code = LoadCode::kLoaded;
  Sentence what;
};

}  // namespace quillcast::mail_file
