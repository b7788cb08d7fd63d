// What GMime does for the reader: one header value or one piece of encoded content at a time. Its handles and errors
// end here, and its name stands in no other file. It is never given a whole message: it recurses into parts, and keeps
// all header fields.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "mail_file/message_facts.h"
#include "mail_file/part.h"

namespace quillcast::mail_file {

// A Content-Type or Content-Disposition (RFC 2045 5.1, RFC 2183), its parameters decoded to UTF-8.
struct ParameterizedValue {
  std::string value;  // "text/plain", "attachment", in small letters; empty where there is none
  std::vector<std::pair<std::string, std::string>> parameters;

  // The first of that name, in any case; empty where there is none.
  std::string_view Parameter(std::string_view name) const;
};
ParameterizedValue ReadContentType(std::string_view field);
ParameterizedValue ReadContentDisposition(std::string_view field);

// Unstructured text (RFC 2047) as UTF-8. Letters beyond ASCII that stand there as they are: UTF-8 where they are that,
// else Windows-1252. Of a text beyond 1 MiB (kLongestField) the beginning: GLib ends the program where memory runs out.
std::string DecodeHeaderText(std::string_view text);

// One mailbox (RFC 5322 3.4), without a list's commas; nothing where it is none.
std::optional<Mailbox> ReadMailbox(std::string_view text);

std::optional<StampedTime> ReadTime(std::string_view text);

// Bytes of a character set by any name that the system knows, as UTF-8; nothing where it does not know it. Bytes that
// mean nothing there become U+FFFD and are counted.
struct ConvertedText {
  std::string text;
  std::size_t lost = 0;
};
std::optional<ConvertedText> ConvertToUtf8(std::string_view bytes, std::string_view charset);

// Decodes a stream piece by piece, from any cut on; a copy goes on from where the other one is.
class TransferDecoder {
 public:
  explicit TransferDecoder(TransferEncoding encoding);
  TransferDecoder(const TransferDecoder& other);
  TransferDecoder& operator=(const TransferDecoder& other);
  ~TransferDecoder();

  // Appends what the bytes stand for. What the encoding does not allow is passed over.
  void Decode(std::string_view bytes, std::string& out);
  // What was held back: the end of a quoted-printable line, a base64 group without its padding.
  void Finish(std::string& out);

 private:
  void FinishBase64(std::string& out);

  struct State;
  std::unique_ptr<State> state_;  // none: the bytes stand for themselves
};

}  // namespace quillcast::mail_file
