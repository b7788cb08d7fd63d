// What a client told the mailbox about one message, beside its content.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace quillcast::smtp {

// One RCPT that was answered 250.
struct ReceivedRecipient {
  std::string address;   // bare, source route removed; "Postmaster" may stand without a domain
  std::string notify;    // NOTIFY as it was given, upper case: "SUCCESS,FAILURE"; empty when it was not
  std::string original;  // ORCPT, decoded: "rfc822;bob@example.net"
};

// One transaction, from MAIL on; what of it is kept stands in the store's index.
struct ReceivedEnvelope {
  std::string sender;  // empty for the null sender <>
  std::vector<ReceivedRecipient> recipients;
  std::string body;         // "7BIT", "8BITMIME" or "BINARYMIME"; empty when it was not said
  std::string dsn_return;   // RET: "FULL" or "HDRS"
  std::string envelope_id;  // ENVID, decoded
  bool utf8 = false;        // SMTPUTF8 (RFC 6531)
  std::string helo;         // the name the client gave itself
  std::string peer;         // "127.0.0.1:54321"
  bool tls = false;
  std::string user;  // who signed in; empty when nobody did
};

}  // namespace quillcast::smtp
