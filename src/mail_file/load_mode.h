// How much a load makes of a message file that is not as it should be.
#pragma once

namespace quillcast::mail_file {

// The account's "Extended": "1" is kExtended. Both are lenient in what costs nothing: letters beyond ASCII in headers,
// wrong or missing character sets, a first line "From ", line ends of LF or CR alone, files in a text by uuencode.
// They differ where a plain load has to give up:
//   259  plain: a multipart without its boundary is one text. Extended: a line "--..." before a line "Content-..." is
//        taken as the boundary.
//   275  plain: the part cannot be opened. Extended: it is taken as it stands.
//   257, 1002  plain: BinHex that is damaged stays as it stands. Extended: what could be decoded of it is used.
enum class LoadMode { kPlain, kExtended };

}  // namespace quillcast::mail_file
