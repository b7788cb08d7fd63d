// What became of one attempt to send, as the number that the report's texts are keyed on.
#pragma once

namespace quillcast::smtp {

// The numbering is fixed: it is shown to people and kept in reports.
enum class ResultCode : int {
  kSuccess = 0,
  kException = 1,           // anything that has no number of its own
  kOutOfMemory = 3,         //
  kMessageRefused = 4,      // DATA or the message itself refused; larger than the server's SIZE
  kGreetingRefused = 5,     // EHLO and HELO refused; STARTTLS refused or its certificate not trusted
  kQuitFailed = 6,          //
  kSenderRefused = 7,       // MAIL refused
  kRecipientRefused = 8,    // RCPT refused; SMTPUTF8 needed and not offered
  kConnectFailed = 9,       //
  kFileNotOpened = 10,      // an attachment is missing or may not be read
  kFileNotRead = 11,        // an attachment failed under way
  kNoServer = 15,           //
  kConnectionLost = 16,     //
  kHostNotFound = 17,       //
  kBadResponse = 18,        // a senseless greeting or reply
  kNoThread = 19,           //
  kCancelled = 20,          //
  kResolveTimeout = 21,     //
  kConnectTimeout = 22,     //
  kAuthRefused = 24,        //
  kAuthNotOffered = 25,     //
  kAuthProtocolError = 26,  //
  kReplyTimeout = 27,       //
};

}  // namespace quillcast::smtp
