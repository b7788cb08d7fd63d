// What the header of a message says: whom it is from and to, what it is about, and the way it came.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace quillcast::mail_file {

// Both decoded to UTF-8; the address is one even where it is in letters beyond ASCII (RFC 6532). Either may be empty.
struct Mailbox {
  std::string name;
  std::string address;
};

// For people: "Ada <ada@example.org>" in one line that is safe to show, of at most some 600 bytes. The name stands in
// quotes where it could be taken for an address, so that nobody reads another sender than there is.
std::string ShownMailbox(const Mailbox& mailbox);

// To, Cc and Bcc.
enum class RecipientType { kNormal, kCarbonCopy, kBlindCarbonCopy };

struct Recipient {
  Mailbox mailbox;
  RecipientType type = RecipientType::kNormal;
};

// A date-time of RFC 5322 3.3, also in the old forms (4.3).
struct StampedTime {
  std::string local;           // as stamped: "2026-11-14 22:40:05"
  int bias_minutes = 0;        // east of Greenwich: 330 for +0530
  std::int64_t unix_time = 0;  // seconds

  // "+330", "-300", "+0".
  std::string Bias() const;
};

// A Received field (RFC 5321 4.4), each clause without its word; what is absent is empty.
struct RelayStamp {
  std::string by;
  std::string for_whom;  // without "<" and ">"
  std::string from;      // with the comment behind it, where the host that was seen stands
  std::string id;
  std::string protocol;  // after "with"
  std::string via;
  std::optional<StampedTime> time;  // nothing where it is absent or is no date
};

struct MessageFacts {
  std::string subject;
  std::string date;  // as it stands
  std::optional<StampedTime> time;
  Mailbox from;                       // the first one
  std::vector<Recipient> recipients;  // all of To in their order, then of Cc, then of Bcc; groups as their members
  std::vector<RelayStamp> stamps;     // as they stand: the last hop first
};

// For each stamp the seconds since the one before it in time, which stands below it; nothing where either has no time,
// and for the last of them. Below 0 where clocks differ.
std::vector<std::optional<std::int64_t>> HopDelays(const std::vector<RelayStamp>& stamps);

}  // namespace quillcast::mail_file
