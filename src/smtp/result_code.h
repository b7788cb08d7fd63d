// What became of one attempt to send, as a number, and the text that people read for it.
#pragma once

#include <cstdint>
#include <string>

namespace quillcast::smtp {

// The numbering is fixed: it is shown to people and kept in reports. result_code.cpp has the text of each; the reason
// and what to do about it stand in the Outcome, since one number has many.
enum class ResultCode : std::int32_t {
  kSuccess = 0,
  kException = 1,           // anything that has no number of its own
  kOutOfMemory = 3,         // the message would have grown without measure
  kMessageRefused = 4,      // DATA or the message itself refused; larger than the server's SIZE
  kGreetingRefused = 5,     // EHLO and HELO refused; STARTTLS refused or its certificate not trusted
  kQuitFailed = 6,          // of a test: the server did not part as it should
  kSenderRefused = 7,       // MAIL refused
  kRecipientRefused = 8,    // RCPT refused; SMTPUTF8 needed and not offered
  kConnectFailed = 9,       // nobody listens there, or the network does not lead there
  kFileNotOpened = 10,      // an attachment is missing or may not be read
  kFileNotRead = 11,        // an attachment failed under way
  kNoServer = 15,           // the account names none
  kConnectionLost = 16,     // the server, or the network, ended it under way
  kHostNotFound = 17,       // no name server knows the host, or could be asked for it
  kBadResponse = 18,        // a senseless greeting or reply
  kNoThread = 19,           // nothing here gives it: only its text is kept
  kCancelled = 20,          // the person stopped before the server had taken it
  kResolveTimeout = 21,     // of the name servers
  kConnectTimeout = 22,     // of the first contact, TLS from the first byte included
  kAuthRefused = 24,        // the user or the password
  kAuthNotOffered = 25,     // no mechanism that the account's mode takes
  kAuthProtocolError = 26,  // the exchange that signs in was broken, or the server did not prove itself
  kReplyTimeout = 27,       // the server did not answer, or did not take a block, in its time
};

// The text of the result table, or "Error N: Unknown Error." for a code that has no row.
std::string ResultText(std::int32_t code);

// The same from the copy that the account test uses: it has no row for code 6. Deliberate.
std::string TestResultText(std::int32_t code);

// "There was an error sending your message.", a line end, and the text of the code.
std::string WriteSendStatus(std::int32_t code);

inline constexpr const char* kSentText = "Message sent successfully.";

}  // namespace quillcast::smtp
