// The parts of the check of a sending domain, one for each thing that is looked up. Each adds what it found as far as
// the answers go.
#pragma once

#include <string>
#include <vector>

#include "domain/sender/answers.h"
#include "domain/sender/finding.h"
#include "domain/sender/seen_server.h"
#include "domain/sender/sender_check.h"

namespace quillcast::domain {

using Findings = std::vector<Finding>;

// Whether a message can pass in one way.
enum class Passing { kNo, kUnknown, kYes };

// Each way in which it can (RFC 7489 3.1). SPF speaks for the envelope's domain, which is always that of the From
// address; a signature may be of that domain itself, or of the organisation that it belongs to.
struct Ways {
  Passing spf = Passing::kUnknown;
  Passing key = Passing::kUnknown;
  Passing organisations_key = Passing::kNo;
};

// Where the domain's own mail goes (RFC 5321 5.1, RFC 7505).
struct MailHosts {
  Known known = Known::kNotYet;
  std::vector<std::string> names = {};
};
MailHosts CheckMx(const std::string& domain, Answers& answers, Findings& found);

// kYes where the record lets all those servers send, kNo where receivers take no record.
struct SpfPassing {
  Known known = Known::kNotYet;
  Passing passing = Passing::kUnknown;
};
SpfPassing CheckSpf(const SenderQuestion& question, const std::vector<SeenServer>& servers, Answers& answers,
                    Findings& found);

// Each is kYes where a key was found that receivers take, kNo where none of the given selectors has one. The
// organisation's are looked for where the domain has none itself.
struct KeysPassing {
  Known known = Known::kYes;
  Passing own = Passing::kUnknown;
  Passing organisations = Passing::kNo;
};
KeysPassing CheckDkim(const SenderQuestion& question, Answers& answers, Findings& found);

Known CheckDmarc(const std::string& domain, const Ways& ways, Answers& answers, Findings& found);

Known CheckSts(const std::string& domain, const std::vector<std::string>& servers, Answers& answers, StsFile& file,
               Findings& found);

// The names of a server's addresses, and whether they lead back (RFC 1912 2.1). A server of another organisation than
// the domain's may pass the mail on, and is not the sender's to mend.
Known CheckReverseNames(const std::string& domain, const SeenServer& server, Answers& answers, Findings& found);

}  // namespace quillcast::domain
