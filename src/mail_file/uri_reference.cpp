#include "mail_file/uri_reference.h"

#include <algorithm>

#include "platform/text.h"

namespace quillcast::mail_file {
namespace {

// Pieces of an address, each with what marks it; empty where it has none (RFC 3986 3).
struct Uri {
  std::string_view scheme;     // "http:"
  std::string_view authority;  // "//example.org"
  std::string_view path;
  std::string_view query;     // "?a=b"
  std::string_view fragment;  // "#c"
};

std::string_view TakeOff(std::string_view& text, std::size_t end) {
  const std::string_view piece = text.substr(0, end);
  text.remove_prefix(piece.size());
  return piece;
}

std::size_t SchemeLength(std::string_view address) {
  const auto is_of_scheme = [](char c) { return platform::AsciiIsAlnum(c) || c == '+' || c == '-' || c == '.'; };
  const auto end = static_cast<std::size_t>(std::ranges::find_if_not(address, is_of_scheme) - address.begin());
  const bool is_scheme =
      end > 0 && end < address.size() && address[end] == ':' && (address[0] < '0' || address[0] > '9');
  return is_scheme ? end + 1 : 0;
}

Uri Read(std::string_view address) {
  Uri uri;
  uri.scheme = TakeOff(address, SchemeLength(address));
  if (address.starts_with("//")) uri.authority = TakeOff(address, address.find_first_of("/?#", 2));
  uri.path = TakeOff(address, address.find_first_of("?#"));
  uri.query = TakeOff(address, address.find('#'));
  uri.fragment = address;
  return uri;
}

// 5.2.4
std::string WithoutDots(std::string_view path) {
  std::string out;
  while (!path.empty()) {
    const bool leads = path.starts_with('/');
    const std::size_t begin = leads ? 1 : 0;
    const std::size_t end = std::min(path.find('/', begin), path.size());
    const std::string_view segment = path.substr(begin, end - begin);
    const bool is_dots = segment == "." || segment == "..";
    if (segment == "..") out.resize(out.rfind('/') == std::string::npos ? 0 : out.rfind('/'));
    if (!is_dots) out += path.substr(0, end);
    if (is_dots && leads && end == path.size()) out += '/';
    path.remove_prefix(std::min(path.size(), is_dots && !leads ? end + 1 : end));
  }
  return out;
}

// 5.2.3
std::string Merged(const Uri& base, std::string_view path) {
  if (!base.authority.empty() && base.path.empty()) return "/" + std::string(path);
  const std::size_t folder = base.path.rfind('/');
  return std::string(base.path.substr(0, folder == std::string_view::npos ? 0 : folder + 1)).append(path);
}

}  // namespace

std::string ResolvedUri(std::string_view base, std::string_view reference) {
  const Uri from = Read(base);
  Uri uri = Read(reference);
  const bool has_scheme = !uri.scheme.empty();
  const bool has_authority = has_scheme || !uri.authority.empty();
  std::string path(uri.path);
  if (!has_authority && path.empty()) {
    path = from.path;
    if (uri.query.empty()) uri.query = from.query;
  } else if (!has_authority && !path.starts_with('/')) {
    path = Merged(from, path);
  }
  std::string out(has_scheme ? uri.scheme : from.scheme);
  out += has_authority ? uri.authority : from.authority;
  return out.append(WithoutDots(path)).append(uri.query).append(uri.fragment);
}

bool IsAbsoluteUri(std::string_view address) { return SchemeLength(address) > 0; }

}  // namespace quillcast::mail_file
