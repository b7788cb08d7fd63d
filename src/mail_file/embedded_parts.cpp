#include "mail_file/embedded_parts.h"

#include <fmt/format.h>

#include <algorithm>

#include "document/picture_kind.h"
#include "platform/text.h"

namespace quillcast::mail_file {
namespace {

// Where the scheme ends, behind its colon; 0 in an address that is none by itself.
std::size_t SchemeEnd(std::string_view address) {
  const std::size_t end = address.find_first_of(":/?#");
  return end == std::string_view::npos || end == 0 || address[end] != ':' ? 0 : end + 1;
}

// As RFC 3986 5.2 has it, for what programs write into messages: no ".." is taken out.
std::string Resolved(std::string_view base, std::string_view address) {
  if (base.empty() || SchemeEnd(address) > 0) return std::string(address);
  std::size_t root = SchemeEnd(base);
  if (address.starts_with("//")) return std::string(base.substr(0, root)).append(address);
  if (base.substr(root).starts_with("//")) root = std::min(base.find('/', root + 2), base.size());
  if (address.starts_with('/')) return std::string(base.substr(0, root)).append(address);
  const std::size_t folder = base.substr(0, base.find_first_of("?#")).rfind('/');
  const bool has_folder = folder != std::string_view::npos && folder >= root;
  return std::string(base.substr(0, has_folder ? folder : root)).append("/").append(address);
}

// That of the page counts, and that of the whole message where the page's begins somewhere itself.
std::string BaseOf(const MailMessage& message) {
  const auto page = std::ranges::find_if(message.parts(), [](const Part& part) {
    return part.marker == Marker::kBody && part.type == "text/html" && !part.location.empty();
  });
  const std::string& whole = message.parts().front().location;
  return page == message.parts().end() ? whole : Resolved(whole, page->location);
}

}  // namespace

EmbeddedParts::EmbeddedParts(const MailMessage& message) : message_(message), base_(BaseOf(message)) {
  for (const Part& part : message.parts()) {
    if (part.message != kNoPart) continue;
    if (!part.content_id.empty() || part.is_picture) ids_.try_emplace(IdOf(part), PlaceOf(part));
    if (!part.location.empty()) locations_.try_emplace(Resolved(base_, part.location), PlaceOf(part));
  }
}

std::string EmbeddedParts::IdOf(const Part& part) const {
  return part.content_id.empty() ? fmt::format("part{}", PlaceOf(part)) : part.content_id;
}

const Part* EmbeddedParts::Find(std::string_view address) const {
  address = platform::Trim(address);
  const bool is_id = platform::StartsWithIgnoringAsciiCase(address, "cid:");
  const auto& places = is_id ? ids_ : locations_;
  if (places.empty() || address.size() > 3 * kLongestPartText) return nullptr;
  const auto name = is_id ? platform::PercentDecoded(address.substr(4)) : Resolved(base_, address);
  const auto place = name ? places.find(*name) : places.end();
  return place == places.end() ? nullptr : &message_.parts()[place->second];
}

std::string EmbeddedParts::AddressOf(const Part& part) const { return "cid:" + platform::PercentEncoded(IdOf(part)); }

std::string EmbeddedParts::PictureTypeOf(const Part& part) const {
  auto reader = message_.Open(part);
  if (!reader) return {};
  const auto first = reader->Next();
  const std::string_view type = first ? document::PictureType(*first) : std::string_view();
  return type == "image/svg+xml" ? std::string() : std::string(type);
}

}  // namespace quillcast::mail_file
