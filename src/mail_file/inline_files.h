// Files that stand in a text, as mail had them before MIME: uuencode, yEnc, BinHex.
#pragma once

#include "mail_file/found_files.h"

namespace quillcast::mail_file {

// Looks through a text, decoded, and adds each file as a part and to its `files_within`. yEnc is refused:
// kUnknownEncoding. Fails when the file cannot be read.
Result<void> FindInlineFiles(FoundFiles& found, std::size_t text);

// Where the lines of a uuencoded file begin, behind its line "begin 644 name", and the name; nothing where no such line
// comes in the bytes.
struct UuencodedBegin {
  std::uint64_t begin = 0;
  std::string name;
};
Result<std::optional<UuencodedBegin>> FindUuencoded(const MessageFile& file, ByteRange bytes);

}  // namespace quillcast::mail_file
