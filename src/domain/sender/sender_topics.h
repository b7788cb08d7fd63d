// The parts of the check of a sending domain, one for each thing that is looked up. Each adds what it found, or returns
// false where answers are missing, which are then wanted.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "domain/sender/answers.h"
#include "domain/sender/finding.h"
#include "domain/sender/sender_check.h"

namespace quillcast::domain {

using Findings = std::vector<Finding>;

// Whether a message can pass in the name of the domain: by SPF, by its signature, by either.
enum class Passing { kNo, kUnknown, kYes };

// Where the domain's own mail goes (RFC 5321 5.1, RFC 7505). `servers` gets the hosts.
bool CheckMx(const std::string& domain, Answers& answers, Findings& found, std::vector<std::string>& servers);

// The server's addresses that others see: no loopback and no private ones. Nothing while they are not known.
std::optional<std::vector<net::IpAddress>> PublicAddresses(const std::string& server, Answers& answers);

// `passing` becomes kYes where the record lets all those addresses send, kNo where receivers take no record.
bool CheckSpf(const SenderQuestion& question, const std::vector<net::IpAddress>& addresses, Answers& answers,
              Findings& found, Passing& passing);

// `passing` becomes kYes where a key was found that receivers take, kNo where none of the given selectors has one.
bool CheckDkim(const SenderQuestion& question, Answers& answers, Findings& found, Passing& passing);

// `passing`: by SPF or by the signature.
bool CheckDmarc(const std::string& domain, Passing passing, Answers& answers, Findings& found);

bool CheckSts(const std::string& domain, const std::vector<std::string>& servers, Answers& answers, StsFile& file,
              Findings& found);

// The names of the server's addresses, and whether they lead back (RFC 1912 2.1).
bool CheckReverseNames(const std::string& server, const std::vector<net::IpAddress>& addresses, Answers& answers,
                       Findings& found);

}  // namespace quillcast::domain
