// The particulars of a connection test, beside its report: a line each, for a list or a terminal.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "domain/connection/connection_test.h"
#include "platform/sentence.h"

namespace quillcast::domain {

struct ConnectionFact {
  Sentence what;
  Sentence value;  // safe to show

  bool operator==(const ConnectionFact&) const = default;
};

// In this order: the server, the time of each step, the addresses, encryption and the certificate, ways of signing in,
// extensions. What was not reached is left out.
std::vector<ConnectionFact> FactsOf(const ConnectionTest& test);

// "host:port", safe to show.
std::string TextOf(const smtp::Server& server);

// The texts with commas between them, safe to show; what goes beyond so many octets is left out.
std::string Joined(const std::vector<std::string>& texts, std::size_t longest);

// "2026-11-27", of Greenwich.
std::string DayOf(std::chrono::system_clock::time_point moment);

// "name", "connect", "tls", "greeting", "ehlo", "starttls", "sign-in", "quit": for programs.
const char* WordOf(smtp::ConnectionStep step);

}  // namespace quillcast::domain
