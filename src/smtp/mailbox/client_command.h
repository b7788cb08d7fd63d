// Reads the arguments of MAIL, RCPT and BDAT (RFC 5321 4.1.2, RFC 3461 4, RFC 3030 2).
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "smtp/mailbox/received_envelope.h"
#include "smtp/mailbox/server_features.h"
#include "smtp/server_reply.h"

namespace quillcast::smtp {

// Views into the line; the verb as the client wrote it, in any case.
struct ClientCommand {
  std::string_view verb;
  std::string_view argument;  // without the blanks around it
};
ClientCommand SplitCommand(std::string_view line);

// Reads "FROM:<ada@example.org> SIZE=1000 ..." into the envelope. Parameters of extensions that are not among
// `features` are refused with 555, a SIZE above `size_limit` with 552. Returns the refusal when there is one; the
// envelope is then not to be used.
std::optional<ServerReply> ReadMail(std::string_view argument, Features features, std::uint64_t size_limit,
                                    ReceivedEnvelope& envelope);

// Reads "TO:<bob@example.net> NOTIFY=..." the same way. `utf8`: the message was announced with SMTPUTF8.
std::optional<ServerReply> ReadRecipient(std::string_view argument, Features features, bool utf8,
                                         ReceivedRecipient& recipient);

// The octets that follow the command; the last chunk ends the message (RFC 3030 2).
struct Chunk {
  std::uint64_t size;
  bool last;
};
// Reads "1000" or "1000 LAST".
std::optional<Chunk> ReadChunk(std::string_view argument);

// Decimal digits alone, at most 19.
std::optional<std::uint64_t> ReadNumber(std::string_view digits);

}  // namespace quillcast::smtp
