#include "document/link_trouble.h"

#include <algorithm>
#include <array>
#include <string>

#include "html/address_reach.h"
#include "html/local_name.h"
#include "platform/text.h"

namespace quillcast::document {
namespace {

using platform::EqualsIgnoringAsciiCase;
using platform::StartsWithIgnoringAsciiCase;

constexpr std::size_t kLongestText = 60;      // bytes of a link's words in a sentence
constexpr std::size_t kLongestAddress = 100;  // of its address
constexpr std::string_view kTagBegin = "$*";

struct Address {
  std::string scheme;  // in lower case, without its colon; empty where there is none
  std::string_view rest;
};

Address Cut(std::string_view target) {
  const std::size_t end = target.find_first_of(":/?#");
  if (end == std::string_view::npos || target[end] != ':') return {"", target};
  return {platform::AsciiLower(target.substr(0, end)), target.substr(end + 1)};
}

// What browsers read of an address: no tabs, line ends and other control characters, wherever they stand.
std::string AsRead(std::string_view target) {
  std::string read(target);
  std::erase_if(read, [](char c) { return static_cast<unsigned char>(c) < 0x20; });
  return std::string(platform::Trim(read));
}

// "example.org" of "//ada@example.org:8080/x"; empty where no server is named.
std::string HostOf(std::string_view rest) {
  if (!rest.starts_with("//")) return {};
  std::string_view host = rest.substr(2);
  host = host.substr(0, host.find_first_of("/?#"));
  host = host.substr(host.rfind('@') + 1);
  if (!host.starts_with('[')) host = host.substr(0, host.find(':'));
  return platform::AsciiLower(host);
}

bool IsHostCharacter(char c) {
  return platform::AsciiIsAlnum(c) || c == '-' || c == '.' || c == '_' || static_cast<unsigned char>(c) >= 0x80;
}

// Dotted labels, none of them empty, or an IPv6 address in its brackets.
bool IsHost(std::string_view host) {
  if (host.starts_with('[')) return host.ends_with(']') && host.find(':') != std::string_view::npos;
  const bool has_gap = host.starts_with('.') || host.find("..") != std::string_view::npos;
  return !host.empty() && !has_gap && std::all_of(host.begin(), host.end(), IsHostCharacter);
}

// 172.16.0.0 to 172.31.255.255.
bool IsInTwelveBits(std::string_view host) {
  if (!host.starts_with("172.")) return false;
  return platform::WholeNumberBetween(host.substr(4, host.find('.', 4) - 4), 16, 31).has_value();
}

// Names and addresses that lead nowhere from elsewhere (RFC 1918, 6761, 6762).
bool IsOfThisNetwork(std::string_view host) {
  constexpr auto kBegins = std::to_array<std::string_view>({"0.", "127.", "10.", "192.168.", "169.254."});
  constexpr auto kEnds = std::to_array<std::string_view>({".local", ".localhost", ".lan", ".internal", ".home.arpa"});
  constexpr auto kV6Begins = std::to_array<std::string_view>({"[fe80:", "[fc", "[fd"});
  if (host.starts_with('[')) {
    return host == "[::1]" || host == "[::]" ||
           std::any_of(kV6Begins.begin(), kV6Begins.end(), [&](auto begin) { return host.starts_with(begin); });
  }
  if (host.find('.') == std::string_view::npos) return true;
  if (host.find_first_not_of("0123456789.") == std::string_view::npos) {
    const bool begins =
        std::any_of(kBegins.begin(), kBegins.end(), [&](auto begin) { return host.starts_with(begin); });
    return begins || IsInTwelveBits(host);
  }
  return std::any_of(kEnds.begin(), kEnds.end(), [&](auto end) { return host.ends_with(end); });
}

bool IsMailAddress(std::string_view text) {
  const std::size_t at = text.rfind('@');
  if (at == std::string_view::npos || at == 0 || text.find_first_of(" \t<>,:") != std::string_view::npos) return false;
  const std::string_view host = text.substr(at + 1);
  return IsHost(host) && host.find('.') != std::string_view::npos;
}

// "report.pdf" is the name of a file, not of a server.
bool EndsAsFile(std::string_view host) {
  constexpr auto kEnds =
      std::to_array<std::string_view>({".pdf", ".doc", ".docx", ".odt", ".xls", ".xlsx", ".ppt", ".txt", ".rtf", ".zip",
                                       ".html", ".htm", ".jpg", ".png", ".csv", ".exe", ".js"});
  return std::any_of(kEnds.begin(), kEnds.end(), [&](auto end) { return host.ends_with(end); });
}

// "Dr.Who" and "St.John" begin a name behind the dot; servers are written small or great throughout.
bool IsName(std::string_view text) {
  const std::size_t at = text.rfind('.') + 1;
  return at + 1 < text.size() && platform::AsciiLower(text[at]) != text[at] &&
         platform::AsciiLower(text[at + 1]) == text[at + 1];
}

// The server that a link's words name, where they are an address; else empty.
std::string HostSaid(std::string_view text) {
  if (text.find_first_of(" \t\n@") != std::string_view::npos) return {};
  if (text.find("://") != std::string_view::npos) return HostOf(Cut(text).rest);
  std::string host = HostOf("//" + std::string(text));
  const std::size_t dot = host.rfind('.');
  if (IsName(text)) return {};
  if (dot == std::string::npos || !IsHost(host) || EndsAsFile(host)) return {};
  const std::string_view top = std::string_view(host).substr(dot + 1);
  const bool is_name =
      top.size() >= 2 && std::none_of(top.begin(), top.end(), [](char c) { return c >= '0' && c <= '9'; });
  return is_name && std::all_of(top.begin(), top.end(), platform::AsciiIsAlnum) ? host : std::string();
}

std::string_view WithoutWww(std::string_view host) { return host.starts_with("www.") ? host.substr(4) : host; }

// The same, or one a part of the other: "example.org" and "news.example.org".
bool BelongTogether(std::string_view one, std::string_view other) {
  one = WithoutWww(one);
  other = WithoutWww(other);
  const auto is_part = [](std::string_view part, std::string_view whole) {
    return part.ends_with(whole) && (part.size() == whole.size() || part[part.size() - whole.size() - 1] == '.');
  };
  return is_part(one, other) || is_part(other, one);
}

std::string ShownAddress(std::string_view address) { return platform::Printable(address, kLongestAddress); }

// How a sentence calls the link: by its words, or else by where it leads.
std::string NameOf(std::string_view text, std::string_view target) {
  return text.empty() ? ShownAddress(target) : platform::Printable(text, kLongestText);
}

std::optional<Sentence> WebTrouble(const Address& address, std::string_view target, std::string_view text) {
  const std::string name = NameOf(text, target);
  const std::string host = HostOf(address.rest);
  if (address.rest.starts_with("//http://") || address.rest.starts_with("//https://")) {
    return Say("The link “{}” leads to “{}”, which begins twice. Take the first https:// out.", name,
               ShownAddress(target));
  }
  if (!IsHost(host)) {
    return Say("The link “{}” leads to “{}”, which is no complete address. Write https://, the server and the page.",
               name, ShownAddress(target));
  }
  if (IsOfThisNetwork(host)) {
    return Say(
        "The link “{}” leads to “{}”, which only this network knows. Give it an address that everybody can reach.",
        name, ShownAddress(target));
  }
  const std::string said = HostSaid(text);
  if (said.empty() || BelongTogether(said, host)) return std::nullopt;
  return Say(
      "The link “{}” shows another address than it leads to, “{}”, and filters take that for fraud. Show where it "
      "leads, "
      "or words in its place.",
      name, ShownAddress(target));
}

constexpr bool IsScript(std::string_view scheme) { return scheme == "javascript" || scheme == "vbscript"; }

// What opens nothing in a mail reader, or nothing of somebody else's.
bool IsBlocked(std::string_view scheme) {
  constexpr auto kBlocked = std::to_array<std::string_view>({"data", "about", "blob", "view-source", "cid", "mid"});
  return IsScript(scheme) || std::find(kBlocked.begin(), kBlocked.end(), scheme) != kBlocked.end();
}

// "\x" begins at the root of a drive; "\/example.org" is a server, as browsers read it.
bool IsOfThisComputer(std::string_view target) {
  const bool is_of_root = target.starts_with('\\') && html::ReachOf(target) != html::AddressReach::kNet;
  return is_of_root || html::AddressNamesLocalFile(target);
}

// "htp", "hhttps", "ttp" for "http" or "https".
bool IsMistyped(std::string_view scheme) {
  const bool ends = scheme.ends_with('p') || scheme.ends_with("ps");
  return scheme.size() >= 2 && ends && scheme.find_first_not_of("htps") == std::string_view::npos;
}

std::optional<Sentence> MailTrouble(const Address& address, std::string_view target, std::string_view text) {
  const auto given = platform::PercentDecoded(address.rest.substr(0, address.rest.find_first_of("?#")));
  const std::string_view list = given ? platform::Trim(*given) : std::string_view();
  if (list.empty() && address.rest.find('?') != std::string_view::npos) return std::nullopt;  // "tell a friend"
  for (const auto part : platform::Split(list, ',')) {
    if (IsMailAddress(platform::Trim(part))) continue;
    return Say("The link “{}” writes to “{}”, which is no mail address. Correct it.", NameOf(text, target),
               ShownAddress(part));
  }
  const std::string_view said = platform::Trim(text);
  if (!IsMailAddress(said) || EqualsIgnoringAsciiCase(said, list)) return std::nullopt;
  return Say(
      "The link “{}” shows another address than it writes to, “{}”. Show the one it writes to, or words in its place.",
      NameOf(text, target), ShownAddress(list));
}

}  // namespace

std::string SchemeOf(std::string_view target) { return Cut(AsRead(target)).scheme; }

bool LeadsToFile(std::string_view target) { return IsOfThisComputer(AsRead(target)); }

bool CanBeFollowed(std::string_view target) {
  const std::string read = AsRead(target);
  if (read.starts_with('#') || read.starts_with(kTagBegin)) return true;
  const Address address = Cut(read);
  if (address.scheme.empty() || IsOfThisComputer(read)) return false;
  if (address.scheme == "http" || address.scheme == "https") return IsHost(HostOf(address.rest));
  return !IsBlocked(address.scheme) && !IsMistyped(address.scheme);
}

std::optional<Sentence> LinkTrouble(std::string_view given_target, std::string_view text) {
  const std::string target = AsRead(given_target);
  text = platform::Trim(text);
  const std::string name = NameOf(text, target);
  if (target.empty() || target == "#") {
    return text.empty() ? Sentence("A link without words leads nowhere. Give it an address, or take it out.")
                        : Say("The link “{}” leads nowhere. Give it an address, or take it out.", name);
  }
  const Address address = Cut(target);
  if (IsOfThisComputer(target)) {
    return Say(
        "The link “{}” leads to “{}”, a file of this computer, which nobody else can open. Put it on a web server, or "
        "attach it.",
        name, ShownAddress(target));
  }
  if (text.empty()) {
    return Say("The link to “{}” has no words to press or to hear. Give it some, or its picture an alternative text.",
               ShownAddress(target));
  }
  if (IsScript(address.scheme)) {
    return Say("The link “{}” is a script, which no mail reader runs. Give it a web address.", name);
  }
  if (IsBlocked(address.scheme)) {
    return Say("The link “{}” leads to “{}”, which no mail reader follows. Give it a web address.", name,
               ShownAddress(target));
  }
  if (target.starts_with('#') || target.find(kTagBegin) != std::string::npos) return std::nullopt;
  if (address.scheme == "http" || address.scheme == "https") return WebTrouble(address, target, text);
  if (address.scheme == "mailto") return MailTrouble(address, target, text);
  if (IsMistyped(address.scheme)) {
    return Say("The link “{}” leads to “{}”, which begins with “{}:”. Write https: there.", name, ShownAddress(target),
               address.scheme);
  }
  if (!address.scheme.empty()) return std::nullopt;
  return Say("The link “{}” leads to “{}”, which is no complete address. Write https://, the server and the page.",
             name, ShownAddress(target));
}

}  // namespace quillcast::document
