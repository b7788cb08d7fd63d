#include "html/address_reach.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>

#include "html/characters.h"
#include "platform/text.h"

namespace quillcast::html {
namespace {

template <std::size_t kCount>
bool EqualsOneIgnoringCase(const std::array<std::string_view, kCount>& names, std::string_view name) {
  return std::any_of(names.begin(), names.end(),
                     [&](std::string_view one) { return platform::EqualsIgnoringAsciiCase(one, name); });
}

std::string_view WithoutSlashes(std::string_view text) {
  return text.substr(std::min(text.find_first_not_of(kSlashes), text.size()));
}

// "C:\x", "c|/x".
bool BeginsWithDrive(std::string_view text) {
  return text.size() >= 3 && IsLetter(text[0]) && (text[1] == ':' || text[1] == '|') && IsSlash(text[2]);
}

// The same, and "UNC\server\x".
bool BeginsWithDevice(std::string_view text) {
  return BeginsWithDrive(text) ||
         (text.size() > 3 && platform::StartsWithIgnoringAsciiCase(text, "UNC") && IsSlash(text[3]));
}

// "ada@example.org:8080" of "ada@example.org:8080/x".
std::string_view AuthorityOf(std::string_view text) { return text.substr(0, text.find_first_of("/\\?#")); }

// Of "/x%20y?z", "/x y": as much as a person's folder begins in. In a text each of many addresses goes on to its end.
constexpr std::size_t kLongestReadPath = 200;
std::string PathOf(std::string_view text) {
  constexpr std::size_t kOctetsOfEscape = 3;
  text = text.substr(0, kLongestReadPath * kOctetsOfEscape);
  std::string_view path = text.substr(0, text.find_first_of("?#"));
  if (path.size() == kLongestReadPath * kOctetsOfEscape)
    path = path.substr(0, path.find('%', path.size() - 2));  // no half
  return platform::PercentDecoded(path).value_or(std::string(path)).substr(0, kLongestReadPath);
}

// "file:///x", "C:\x" and "example.org:C:\x", where a server and its port would stand.
bool HoldsFile(std::string_view text) {
  const std::string_view written = AuthorityOf(text);
  const std::string authority = platform::PercentDecoded(written).value_or("");
  if (written.size() == text.size() || !IsSlash(text[written.size()]) || !authority.ends_with(':')) return false;
  const std::string_view before = std::string_view(authority).substr(0, authority.size() - 1);
  const auto is_of_name = [](char c) { return platform::AsciiIsAlnum(c) || c == '-' || c == '.'; };
  const auto begin = std::find_if_not(before.rbegin(), before.rend(), is_of_name).base();
  const std::string_view name = before.substr(static_cast<std::size_t>(begin - before.begin()));
  return IsFileScheme(name) || (name.size() == 1 && IsLetter(name[0]));
}

// Whether it can be nothing else: a name with a dot, a port, a person or brackets, or this computer's server.
bool NamesServer(std::string_view authority) {
  if (authority.starts_with('[')) return authority.find(']') != std::string_view::npos;
  if (authority.find('@') != std::string_view::npos) return true;
  const std::size_t colon = std::min(authority.find(':'), authority.size());
  const std::string_view host = authority.substr(0, colon);
  const std::string_view port = authority.substr(std::min(colon + 1, authority.size()));
  if (!host.empty() && !port.empty() && port.find_first_not_of("0123456789") == std::string_view::npos) return true;
  return platform::EqualsIgnoringAsciiCase(host, "localhost") ||
         (!host.starts_with('.') && host.find('.') != std::string_view::npos);
}

AddressReach ReachWithoutScheme(std::string_view address) {
  const std::string_view rest = WithoutSlashes(address);
  const std::size_t slashes = address.size() - rest.size();
  if (BeginsWithDrive(rest)) return AddressReach::kFile;
  if (slashes < 2 || rest.empty()) return AddressReach::kNeither;
  if (rest[0] == '?' && BeginsWithDevice(WithoutSlashes(rest.substr(1)))) return AddressReach::kFile;  // "//?/C:/x"
  if (address.starts_with("\\\\") || HoldsFile(rest)) return AddressReach::kFile;
  const std::string_view authority = AuthorityOf(rest);
  if (EqualsOneIgnoringCase(std::to_array<std::string_view>({"wsl$", "wsl.localhost"}), authority))
    return AddressReach::kFile;
  if (NamesServer(authority)) return AddressReach::kNet;
  const bool has_folder = authority.size() < rest.size() && IsSlash(rest[authority.size()]);
  return slashes > 2 && has_folder ? AddressReach::kFile : AddressReach::kNeither;  // "///home/ada/x"
}

bool IsWebScheme(std::string_view scheme) {
  return EqualsOneIgnoringCase(std::to_array<std::string_view>({"http", "https", "ws", "wss", "ftp"}), scheme);
}

bool IsContactScheme(std::string_view scheme) {
  return EqualsOneIgnoringCase(std::to_array<std::string_view>({"mailto", "tel", "sms"}), scheme);
}

// What mail programs call a part of a letter they keep: "mailbox:///home/ada/Drafts?part=1.2",
// "imap://ada@x.example/fetch%3EUID>/INBOX>7".
bool IsOfMailProgram(std::string_view scheme, std::string_view rest) {
  if (EqualsOneIgnoringCase(std::to_array<std::string_view>({"mailbox", "mailbox-message", "imap-message"}), scheme))
    return true;
  const std::string_view path = rest.substr(AuthorityOf(rest).size());
  const std::string_view command = path.substr(std::min<std::size_t>(1, path.size()));
  return platform::EqualsIgnoringAsciiCase(scheme, "imap") &&
         (platform::StartsWithIgnoringAsciiCase(command, "fetch>") ||
          platform::StartsWithIgnoringAsciiCase(command, "fetch%3E"));
}

// Of "editor://file/home/ada/x", so programs ask for a file of this computer. What others call a file there is not:
// "design://file/7/Plan", "chat://file?id=7".
bool BeginsWithFolder(std::string_view path) {
  const std::string_view rest = WithoutSlashes(path);
  if (path.size() - rest.size() > 1 || BeginsWithDrive(rest)) return true;
  constexpr auto kFolders =
      std::to_array<std::string_view>({"Applications", "etc", "home", "Library", "media", "mnt", "opt", "private",
                                       "root", "run", "srv", "tmp", "Users", "usr", "var", "Volumes"});
  return rest.size() < path.size() && EqualsOneIgnoringCase(kFolders, AuthorityOf(rest));
}

// "/home/ada/x", "/file///Users/ada/x", as the systems spell them: "/users/42/x" is a page of an app.
bool HoldsHome(std::string_view path) {
  for (std::size_t at = path.find('/'), end = 0; at != std::string_view::npos; at = path.find('/', end)) {
    end = std::min(path.find_first_not_of(kSlashes, at), path.size());
    if (at > 0 && end - at == 1) continue;
    const std::string_view folder = path.substr(end);
    const std::string_view name = AuthorityOf(folder);
    if ((name != "home" && name != "Users") || name.size() == folder.size()) continue;
    const std::string_view person = WithoutSlashes(folder.substr(name.size()));
    const std::size_t slash = person.find('/');
    if (slash != std::string_view::npos && slash > 0) return true;
  }
  return false;
}

constexpr std::string_view kHere = "localhost";

// This computer, by any port: "localhost:80", "app.localhost".
bool IsHere(std::string_view host) {
  host = host.substr(0, host.find(':'));
  const std::string_view end = host.substr(host.size() - std::min(host.size(), kHere.size()));
  const std::string_view before = host.substr(0, host.size() - end.size());
  return platform::EqualsIgnoringAsciiCase(end, kHere) && (before.empty() || before.ends_with('.'));
}

// "a.png", and what is too long to be seen to its end; "today" and "v1.2" may be a page of an app.
bool EndsInFile(std::string_view path) {
  constexpr std::size_t kLongestExtension = 5;
  const std::string_view name = path.substr(path.rfind('/') + 1);
  const std::size_t dot = name.rfind('.');
  if (path.size() >= kLongestReadPath) return true;
  if (dot == std::string_view::npos) return false;
  const std::string_view extension = name.substr(dot + 1);
  return extension.size() <= kLongestExtension && std::any_of(extension.begin(), extension.end(), IsLetter) &&
         std::all_of(extension.begin(), extension.end(), platform::AsciiIsAlnum);
}

// Whose paths are of the server that they name, with a dot or without: "git+ssh://nas/home/ada/x".
bool IsServerScheme(std::string_view scheme) {
  constexpr auto kSchemes = std::to_array<std::string_view>(
      {"dav", "davs", "git", "rsync", "rtsp", "scp", "sftp", "ssh", "svn", "webcal", "webcals"});
  return EqualsOneIgnoringCase(kSchemes, scheme.substr(scheme.rfind('+') + 1));
}

// "app://3b3f0e/home/ada/x" and "view://abc/file///Users/ada/x": so programs ask themselves for a person's files, by an
// id that they made up. "myapp://open/home/feed/42" and "myapp://x.example/home/a/b" lead into an app.
bool AsksForOwnFile(std::string_view scheme, std::string_view host, std::string_view path) {
  if (IsServerScheme(scheme)) return false;
  if ((IsHere(host) || !NamesServer(host)) && BeginsWithDrive(WithoutSlashes(path))) return true;
  if (!HoldsHome(path)) {
    const std::string whole = '/' + std::string(host) + std::string(path);  // "media://home/ada/x.png"
    return HoldsHome(whole) && EndsInFile(path);
  }
  if (path.find("/file//") != std::string_view::npos || host.empty() || IsHere(host)) return true;
  if (NamesServer(host)) return false;
  const bool is_made_up = host.find_first_of("0123456789") != std::string_view::npos;
  return is_made_up || path.starts_with("//") || EndsInFile(path);
}

// "https://file%2B.editor.example/home/ada/x" and "http://asset.localhost/C%3A%5Cx" lead back to this computer.
bool IsServedHere(std::string_view host, std::string_view path) {
  constexpr auto kFiles = std::to_array<std::string_view>({"file%2B.", "file+."});
  const bool is_file = std::any_of(kFiles.begin(), kFiles.end(), [&](std::string_view one) {
    return platform::StartsWithIgnoringAsciiCase(host, one);
  });
  const bool is_here = host.size() > kHere.size() && host.find(':') == std::string_view::npos && IsHere(host);
  return is_file || (is_here && (BeginsWithDrive(WithoutSlashes(path)) || HoldsHome(path)));
}

AddressReach FileOrNet(bool is_file) { return is_file ? AddressReach::kFile : AddressReach::kNet; }

}  // namespace

bool IsFileScheme(std::string_view scheme) {
  return EqualsOneIgnoringCase(std::to_array<std::string_view>({"file", "smb", "cifs", "nfs", "afp"}), scheme);
}

bool IsNetScheme(std::string_view scheme) { return IsWebScheme(scheme) || IsContactScheme(scheme); }

std::string_view SchemeOfAddress(std::string_view address) {
  if (address.empty() || !IsLetter(address[0])) return {};
  const auto is_of_scheme = [](char c) { return platform::AsciiIsAlnum(c) || c == '+' || c == '-' || c == '.'; };
  const auto end =
      static_cast<std::size_t>(std::find_if_not(address.begin(), address.end(), is_of_scheme) - address.begin());
  return end < address.size() && address[end] == ':' ? address.substr(0, end) : std::string_view();
}

AddressReach ReachOf(std::string_view address) {
  const std::string_view scheme = SchemeOfAddress(address);
  if (scheme.empty()) return ReachWithoutScheme(address);
  if (scheme.size() == 1 || IsFileScheme(scheme)) return AddressReach::kFile;
  const std::string_view rest = address.substr(scheme.size() + 1);
  if (IsWebScheme(scheme)) {
    const std::string_view place = WithoutSlashes(rest);
    const std::string_view host = AuthorityOf(place);
    return FileOrNet(HoldsFile(place) || IsServedHere(host, PathOf(place.substr(host.size()))));
  }
  if (IsContactScheme(scheme)) return FileOrNet(BeginsWithDrive(rest) || IsFileScheme(SchemeOfAddress(rest)));
  if (!rest.starts_with("//"))
    return rest.starts_with('/') && AsksForOwnFile(scheme, {}, PathOf(rest)) ? AddressReach::kFile
                                                                             : AddressReach::kNeither;
  const std::string_view place = rest.substr(2);
  const std::string_view host = AuthorityOf(place);
  if (IsOfMailProgram(scheme, place) || AsksForOwnFile(scheme, host, PathOf(place.substr(host.size()))) ||
      HoldsFile(place) || BeginsWithDrive(WithoutSlashes(place)) ||
      (IsFileScheme(host) && BeginsWithFolder(place.substr(host.size())))) {
    return AddressReach::kFile;
  }
  return NamesServer(host) ? AddressReach::kNet : AddressReach::kNeither;
}

}  // namespace quillcast::html
