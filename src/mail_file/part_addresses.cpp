#include "mail_file/part_addresses.h"

#include <algorithm>

#include "mail_file/uri_reference.h"
#include "platform/text.h"

namespace quillcast::mail_file {
namespace {

constexpr std::string_view kNoBase = "thismessage:/";   // what is relative to nothing (RFC 2557 5)
constexpr std::string_view kAsWritten = "as-written:";  // what is looked for without its base
constexpr std::string_view kId = "cid:";
constexpr std::size_t kLongestBase = kLongestPartText;  // it would stand before each address

// One that two spellings of an address have in common (RFC 3986 6.2.2). A place in it is no part of it, and blanks are
// where a field was folded.
std::string NameOf(std::string uri) {
  uri.resize(std::min(uri.find('#'), uri.size()));
  const std::size_t host = uri.find("://");
  const std::size_t path = host == std::string::npos ? 0 : std::min(uri.find_first_of("/?", host + 3), uri.size());
  std::string name = platform::AsciiLower(std::string_view(uri).substr(0, path)) + uri.substr(path);
  if (auto decoded = platform::PercentDecoded(name)) name = *std::move(decoded);
  std::erase(name, ' ');
  return name;
}

}  // namespace

PartAddresses::PartAddresses(const std::vector<Part>& parts) : parts_(parts), bases_{std::string(kNoBase)} {
  PutInOrder();
  for (std::size_t part = 0; part < parts.size(); ++part) {
    AddBase(part);
    if (parts[part].message == kNoPart) AddNames(part);
  }
  for (auto& [name, found] : named_) std::ranges::sort(found);
}

// Files that were found in others stand behind all parts, and belong into those.
void PartAddresses::PutInOrder() {
  size_.assign(parts_.size(), 1);
  for (std::size_t part = parts_.size(); part-- > 1;) size_[parts_[part].parent] += size_[part];
  order_.assign(parts_.size(), 0);
  by_order_ = order_;
  std::vector<std::size_t> next = order_;
  for (std::size_t part = 0; part < parts_.size(); ++part) {
    if (part > 0) {
      order_[part] = next[parts_[part].parent];
      next[parts_[part].parent] += size_[part];
    }
    next[part] = order_[part] + 1;
    by_order_[order_[part]] = part;
  }
}

void PartAddresses::AddBase(std::size_t part) {
  const Part& it = parts_[part];
  base_of_.push_back(it.parent == kNoPart ? 0 : base_of_[it.parent]);
  if (it.base.empty() && it.location.empty()) return;
  std::string base = ResolvedUri(bases_[base_of_[part]], it.base.empty() ? it.location : it.base);
  if (base.size() > kLongestBase) return;
  base_of_[part] = bases_.size();
  bases_.push_back(std::move(base));
}

void PartAddresses::AddNames(std::size_t part) {
  const Part& it = parts_[part];
  const auto add = [&](std::string name) { named_[std::move(name)].push_back(order_[part]); };
  if (!it.content_id.empty()) add(std::string(kId) + it.content_id);
  if (it.location.empty()) return;
  const std::string& round = it.parent == kNoPart ? bases_.front() : BaseOf(it.parent);
  add(NameOf(ResolvedUri(it.base.empty() ? round : BaseOf(part), it.location)));
  if (!IsAbsoluteUri(it.location)) add(NameOf(std::string(kAsWritten) + it.location));
}

std::string PartAddresses::BaseOf(std::size_t page, std::string_view named) const {
  named = platform::Trim(named);
  std::string base = named.size() > kLongestBase ? std::string() : ResolvedUri(BaseOf(page), named);
  return base.empty() || base.size() > kLongestBase ? BaseOf(page) : base;
}

std::size_t PartAddresses::Find(std::size_t page, const std::string& base, std::string_view address) const {
  address = platform::Trim(address);
  if (named_.empty() || address.empty() || address.size() > 3 * kLongestPartText) return kNoPart;
  if (platform::StartsWithIgnoringAsciiCase(address, kId)) {
    const auto id = platform::PercentDecoded(address.substr(kId.size()));
    return id ? Nearest(page, std::string(kId) + *id) : kNoPart;
  }
  const std::size_t found = Nearest(page, NameOf(ResolvedUri(base, address)));
  if (found != kNoPart || IsAbsoluteUri(address)) return found;
  return Nearest(page, NameOf(std::string(kAsWritten).append(address)));
}

std::size_t PartAddresses::Nearest(std::size_t page, const std::string& name) const {
  const auto found = named_.find(name);
  if (found == named_.end()) return kNoPart;
  const std::vector<std::size_t>& places = found->second;
  for (std::size_t holder = page; holder != kNoPart; holder = parts_[holder].parent) {
    const auto first = std::ranges::lower_bound(places, order_[holder]);
    if (first != places.end() && *first < order_[holder] + size_[holder]) return by_order_[*first];
  }
  return kNoPart;
}

}  // namespace quillcast::mail_file
