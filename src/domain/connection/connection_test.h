// The connection test: tries a mail server as a run would, without a message and without a password, and tells what
// came of each step. What it means for the account is connection_verdict's.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "net/connect.h"
#include "net/resolver.h"
#include "net/tls_facts.h"
#include "platform/cancel.h"
#include "platform/clock.h"
#include "smtp/capabilities.h"
#include "smtp/client/client_options.h"
#include "smtp/client/connection_watch.h"
#include "smtp/outcome.h"

namespace quillcast::domain {

// What a server says it can do, on one side of TLS. Texts are safe to show.
struct Offer {
  smtp::Capabilities known = {};
  std::vector<std::string> extensions = {};  // as the server writes them, "SIZE 1000"; without those of signing in
  std::vector<std::string> sign_in = {};     // 50 mechanisms at most, whether known here or not
};

struct StepTime {
  smtp::ConnectionStep step;
  platform::Duration took;
};

// What came of one server.
struct ConnectionTest {
  smtp::Server server;
  smtp::Security security = smtp::Security::kAutomatic;
  smtp::Outcome outcome;
  // The text of the result's code where it is a failure, then the conversation, each line ended by CRLF: 1,000 lines of
  // it at most. Secrets are masked, and all is safe to show.
  std::string report;
  std::vector<StepTime> steps;  // where the outcome is a failure, the last one is where
  std::vector<net::TriedAddress> addresses;
  std::optional<net::TlsFacts> tls;
  std::optional<Offer> in_clear;
  std::optional<Offer> under_tls;
  net::NameFault name_fault = net::NameFault::kNone;
  std::string odd;                       // the beginning of what is no reply, safe to show
  std::string unfinished;                // the first line of a reply whose end did not come, safe to show
  bool in_clear_after_starttls = false;  // more than the 220 came
  bool said_anything = false;            // a whole reply
  bool speaks_tls = false;               // it said nothing in clear, and then took a handshake
  bool cut_short = false;                // the time for all was up before that for its step

  // Of a list, which is tried in its order until one takes mail:
  std::vector<ConnectionTest> others;  // that failed as well, each without others of its own
  std::vector<smtp::Server> untried;   // behind the one that takes mail, or for which no time was left

  bool Works() const { return outcome.code == smtp::ResultCode::kSuccess; }
  // Also where it parts badly: it has taken the messages by then.
  bool TakesMail() const { return Works() || outcome.code == smtp::ResultCode::kQuitFailed; }
  std::optional<smtp::ConnectionStep> last_step() const {
    return steps.empty() ? std::nullopt : std::optional(steps.back().step);
  }
  // The test ended within this one of its steps.
  bool EndedAt(const StepTime& step) const { return &step == &steps.back() && !Works(); }
};

// Ends within a quarter of a second of a cancel, with kCancelled in the outcome, and by itself after twice the time
// that the options give one step, whatever comes. Of a list that has no server that takes mail the first is told that
// could be found. Each that says nothing at all is tried once more under TLS when all were tried: that takes 10 seconds
// more at most, for all of them together.
ConnectionTest TestConnection(const smtp::ClientOptions& options, const platform::Clock& clock,
                              const platform::CancelToken& cancel);

}  // namespace quillcast::domain
