#include "net/dns/dns_answer.h"

#include <ares.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include "net/idna.h"
#include "platform/text.h"

namespace quillcast::net {
namespace {

constexpr std::uint16_t kAlias = 5;  // CNAME
constexpr std::uint16_t kNameServer = 2;
constexpr std::uint16_t kStartOfAuthority = 6;
constexpr int kMostAliases = 16;
constexpr std::uint16_t kCut = 0x0200;  // the flag of a message that is not whole

struct FreeAres {
  void operator()(char* text) const { ares_free_string(text); }
};

// Goes through a message once. What does not fit makes it fail for good; what is read from then on is empty.
class WireReader {
 public:
  explicit WireReader(std::span<const std::uint8_t> message) : message_(message) {}

  bool failed() const { return failed_; }
  std::size_t position() const { return position_; }

  std::span<const std::uint8_t> Octets(std::size_t count) {
    if (failed_ || count > message_.size() - position_) {
      failed_ = true;
      return {};
    }
    const auto octets = message_.subspan(position_, count);
    position_ += count;
    return octets;
  }
  std::uint8_t Byte() {
    const auto octets = Octets(1);
    return octets.empty() ? std::uint8_t{0} : octets[0];
  }
  std::uint16_t Number() {
    const auto high = Byte();
    return static_cast<std::uint16_t>(high << 8 | Byte());
  }
  // The library follows the pointers of a compressed name, and refuses those that lead in a circle.
  std::string Name() {
    char* text = nullptr;
    long taken = 0;
    if (failed_ || position_ >= message_.size() ||
        ares_expand_name(message_.data() + position_, message_.data(), static_cast<int>(message_.size()), &text,
                         &taken) != ARES_SUCCESS) {
      failed_ = true;
      return {};
    }
    const std::unique_ptr<char, FreeAres> owned(text);
    IgnoreOctets(static_cast<std::size_t>(taken));
    return text;
  }
  void IgnoreOctets(std::size_t count) { Octets(count); }

 private:
  std::span<const std::uint8_t> message_;
  std::size_t position_ = 0;
  bool failed_ = false;
};

struct OwnedRecord {
  std::string owner;
  DnsRecord record;
};

// What the answer section says about any name.
struct AnswerSection {
  std::vector<OwnedRecord> aliases;  // the name that each leads to is its text
  std::vector<OwnedRecord> records;
};

std::string JoinedStrings(WireReader& reader, std::size_t length) {
  std::string joined;
  const std::size_t end = reader.position() + length;
  while (!reader.failed() && reader.position() < end) {
    const auto octets = reader.Octets(reader.Byte());
    joined.append(octets.begin(), octets.end());
  }
  return joined;
}

IpAddress AddressOf(Family family, std::span<const std::uint8_t> octets) {
  IpAddress address{family};
  std::copy_n(octets.begin(), std::min(octets.size(), address.bytes.size()), address.bytes.begin());
  return address;
}

DnsRecord ReadRecord(WireReader& reader, std::uint16_t type, std::size_t length) {
  DnsRecord record;
  switch (static_cast<DnsType>(type)) {
    case DnsType::kA:
      record.address = AddressOf(Family::kIpv4, reader.Octets(4));
      break;
    case DnsType::kAaaa:
      record.address = AddressOf(Family::kIpv6, reader.Octets(16));
      break;
    case DnsType::kTxt:
      record.text = JoinedStrings(reader, length);
      break;
    case DnsType::kMx:
      record.preference = reader.Number();
      [[fallthrough]];
    case DnsType::kPtr:
      record.text = reader.Name();
      break;
  }
  return record;
}

// Nothing when the message ends before its records do, or one is longer or shorter than it says.
std::optional<AnswerSection> ReadSection(WireReader& reader, std::uint16_t count, DnsType wanted) {
  AnswerSection section;
  for (int n = 0; n < count; ++n) {
    std::string owner = reader.Name();
    const std::uint16_t type = reader.Number();
    const std::uint16_t dns_class = reader.Number();
    reader.IgnoreOctets(4);  // for how long it may be kept
    const std::uint16_t length = reader.Number();
    const std::size_t end = reader.position() + length;
    const bool alias = type == kAlias;
    if (dns_class != kInternetClass || (!alias && type != static_cast<std::uint16_t>(wanted))) {
      reader.IgnoreOctets(length);
    } else {
      DnsRecord record = ReadRecord(reader, alias ? static_cast<std::uint16_t>(DnsType::kPtr) : type, length);
      (alias ? section.aliases : section.records).push_back({std::move(owner), std::move(record)});
    }
    if (reader.failed() || reader.position() != end) return {};
  }
  return section;
}

bool SameName(std::string_view a, std::string_view b) { return platform::EqualsIgnoringAsciiCase(a, b); }

// Where the aliases lead from a name; nothing when they lead too far, as in a circle.
std::optional<std::string> EndOfAliases(const AnswerSection& section, std::string name) {
  for (int n = 0; n <= kMostAliases; ++n) {
    const auto alias = std::find_if(section.aliases.begin(), section.aliases.end(),
                                    [&](const OwnedRecord& one) { return SameName(one.owner, name); });
    if (alias == section.aliases.end()) return name;
    name = alias->record.text;
  }
  return {};
}

// Records or aliases were sent, and none has to do with the name: from where it began to where it led.
bool IsOfAnotherName(const AnswerSection& section, std::string_view begin, std::string_view end) {
  return !section.records.empty() || (!section.aliases.empty() && SameName(begin, end));
}

// A referral: the servers of a zone without its SOA record, from a server that knows nothing itself (RFC 2308 2.2).
bool LeadsElsewhere(WireReader& reader, std::uint16_t count) {
  bool has_servers = false;
  bool has_start = false;
  for (int n = 0; n < count && !reader.failed(); ++n) {
    reader.Name();
    const std::uint16_t type = reader.Number();
    reader.IgnoreOctets(6);  // the class, and for how long it may be kept
    reader.IgnoreOctets(reader.Number());
    has_servers = has_servers || type == kNameServer;
    has_start = has_start || type == kStartOfAuthority;
  }
  return has_servers && !has_start;
}

// By the server's code (RFC 1035 4.1.1).
DnsOutcome WithoutRecords(unsigned code) {
  switch (code) {
    case 0:
      return DnsOutcome::kNoData;
    case 2:
      return DnsOutcome::kServerFailed;
    case 3:
      return DnsOutcome::kNoSuchName;
    case 5:
      return DnsOutcome::kRefused;
    default:
      return DnsOutcome::kNotUnderstood;
  }
}

}  // namespace

std::string ReverseName(const IpAddress& address) {
  std::string name;
  if (address.family == Family::kIpv4) {
    for (int n = 3; n >= 0; --n) name += std::to_string(address.bytes[static_cast<std::size_t>(n)]) + ".";
    return name + "in-addr.arpa";
  }
  constexpr std::string_view kDigits = "0123456789abcdef";
  for (std::size_t n = address.bytes.size(); n-- > 0;) {
    const std::uint8_t byte = address.bytes[n];
    name += {kDigits[byte & 15U], '.', kDigits[byte >> 4U], '.'};
  }
  return name + "ip6.arpa";
}

DnsAnswer ReadDnsAnswer(std::span<const std::uint8_t> message, const DnsQuestion& question) {
  DnsAnswer answer;
  answer.outcome = DnsOutcome::kMalformed;
  answer.name = WithoutRootDot(question.name);
  WireReader reader(message);
  reader.IgnoreOctets(2);  // which question it was, for whoever sent it
  const std::uint16_t flags = reader.Number();
  const std::uint16_t questions = reader.Number();
  const std::uint16_t answers = reader.Number();
  const std::uint16_t authorities = reader.Number();
  reader.IgnoreOctets(2);  // the size of the last section, which is not read
  const bool is_reply = (flags & 0x8000U) != 0;
  for (int n = 0; n < questions && !reader.failed(); ++n) {
    reader.Name();
    reader.IgnoreOctets(4);
  }
  if (reader.failed() || !is_reply) return answer;
  auto section = ReadSection(reader, answers, question.type);
  auto name = section ? EndOfAliases(*section, answer.name) : std::nullopt;
  if (!name) return answer;
  answer.name = *std::move(name);
  answer.outcome = WithoutRecords(flags & 15U);
  if (answer.outcome != DnsOutcome::kNoData) return answer;
  for (OwnedRecord& one : section->records) {
    if (SameName(one.owner, answer.name)) answer.records.push_back(std::move(one.record));
  }
  const std::string_view asked = WithoutRootDot(question.name);
  if (!answer.records.empty()) {
    answer.outcome = DnsOutcome::kFound;
  } else if ((flags & kCut) != 0 || IsOfAnotherName(*section, asked, answer.name) ||
             LeadsElsewhere(reader, authorities)) {
    answer.outcome = DnsOutcome::kMalformed;  // what was cut off may be the records
  }
  return answer;
}

}  // namespace quillcast::net
