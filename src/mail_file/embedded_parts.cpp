#include "mail_file/embedded_parts.h"

#include <fmt/format.h>

#include "document/picture_kind.h"
#include "html/picture_addresses.h"
#include "html/shown_tokens.h"
#include "mail_file/data_picture.h"
#include "platform/text.h"

namespace quillcast::mail_file {
namespace {

constexpr std::uint64_t kLargestSheet = std::uint64_t{1} << 20;  // bytes, encoded; what is larger is not looked into

// Copies a page, and puts something else in the place of addresses.
class Rewriter final : public html::HtmlVisitor {
 public:
  using Find = std::function<std::string(const std::string& address)>;  // empty for one that stays
  using TakeBase = std::function<void(std::string_view base)>;

  Rewriter(std::string_view page, Find find, TakeBase take_base)
      : page_(page), find_(std::move(find)), take_base_(std::move(take_base)) {
    out_.reserve(page.size());
    html::VisitTagsAndStyles(page, *this);
    out_ += page.substr(at_);
  }
  std::string TakePage() { return std::move(out_); }

 private:
  // The first <base> that has an address counts (WHATWG HTML 4.2.3).
  void StartTag(const html::HtmlTokenizer& page, const html::HtmlToken& tag) override {
    if (tag.name == "base" && !has_base_ && page.Find(tag, "href") != nullptr) {
      has_base_ = true;
      take_base_(page.Value(tag, "href"));
    }
    html::EachPictureOf(page, tag,
                        [this](std::string_view written, const std::string& address) { Replace(written, address); });
    if (!html::NamesPictures(tag.name, "src")) find_(page.Value(tag, "src"));  // uses it, and is not shown
  }

  void StyleSheet(std::string_view css) override {
    html::EachPictureInStyles(
        css, html::CssPlace::kElement,
        [this](std::string_view written, const std::string& address) { Replace(written, address); });
  }

  void Replace(std::string_view written, const std::string& address) {
    const std::string other = find_(address);
    if (other.empty()) return;
    const auto begin = static_cast<std::size_t>(written.data() - page_.data());
    out_.append(page_.substr(at_, begin - at_)).append(other);
    at_ = begin + written.size();
  }

  std::string_view page_;
  Find find_;
  TakeBase take_base_;
  std::string out_;
  std::size_t at_ = 0;  // up to where the page is copied
  bool has_base_ = false;
};

std::string TypeByContent(const MailMessage& message, const Part& part) {
  auto reader = message.Open(part);
  if (!reader) return {};
  const auto first = reader->Next();
  const std::string_view type = first ? document::PictureType(*first) : std::string_view();
  return type == "image/svg+xml" ? std::string() : std::string(type);
}

}  // namespace

EmbeddedParts::EmbeddedParts(const MailMessage& message)
    : message_(message), addresses_(message.parts()), ids_(message.parts().size()) {
  const auto& parts = message.parts();
  for (std::size_t place = 0; place < parts.size(); ++place) {
    const Part& part = parts[place];
    if (part.message == kNoPart && !part.content_id.empty() && part_.try_emplace(part.content_id, place).second)
      ids_[place] = part.content_id;
  }
  for (std::size_t place = 0; place < parts.size(); ++place) {
    const Part& part = parts[place];
    const bool is_shown = part.is_picture || !part.content_id.empty() || !part.location.empty();
    if (part.message != kNoPart || !ids_[place].empty() || !is_shown) continue;
    ids_[place] = fmt::format("part{}", place);
    while (!part_.try_emplace(ids_[place], place).second) ids_[place] += '-';
  }
}

std::string EmbeddedParts::WithAddresses(const Part& page, std::string_view html, Used& used) const {
  const std::size_t place = PlaceOf(page);
  std::string base = addresses_.BaseOf(place);
  const auto find = [&](const std::string& address) {
    const std::size_t found = addresses_.Find(place, base, address);
    if (found == kNoPart) return std::string();
    used.insert(&message_.parts()[found]);
    return AddressOf(message_.parts()[found]);
  };
  return Rewriter(html, find, [&](std::string_view named) { base = addresses_.BaseOf(place, named); }).TakePage();
}

bool EmbeddedParts::ShowsPicture(const Part& page, std::string_view html) const {
  const std::size_t place = PlaceOf(page);
  std::string base = addresses_.BaseOf(place);
  bool has_base = false;
  html::HtmlTokenizer tokenizer(html);
  html::ShownTokens shown(tokenizer);
  html::HtmlToken token;
  while (shown.Next(token)) {
    if (token.kind != html::HtmlTokenKind::kStartTag) continue;
    if (token.name == "base" && !has_base && tokenizer.Find(token, "href") != nullptr) {
      has_base = true;
      base = addresses_.BaseOf(place, tokenizer.Value(token, "href"));
    }
    if (token.name != "img") continue;
    const std::string address = tokenizer.Value(token, "src");
    if (PictureInAddress(address)) return true;
    const std::size_t found = addresses_.Find(place, base, address);
    if (found != kNoPart && !PictureTypeOf(message_.parts()[found]).empty()) return true;
  }
  return false;
}

void EmbeddedParts::NoteUsedBySheets(Used& used) const {
  for (const Part& part : message_.parts()) {
    const bool is_sheet = part.type == "text/css" && part.message == kNoPart;
    if (!is_sheet || part.source.bytes.size() > kLargestSheet) continue;
    const auto css = message_.TextOf(part);
    if (!css) continue;
    const std::size_t place = PlaceOf(part);
    html::EachPictureInStyles(*css, html::CssPlace::kElement, [&](std::string_view, const std::string& address) {
      const std::size_t found = addresses_.Find(place, addresses_.BaseOf(place), address);
      if (found != kNoPart) used.insert(&message_.parts()[found]);
    });
  }
}

std::string EmbeddedParts::AddressOf(const Part& part) const {
  return "cid:" + platform::PercentEncoded(ids_[PlaceOf(part)]);
}

const Part* EmbeddedParts::Find(std::string_view address) const {
  address = platform::Trim(address);
  if (!platform::StartsWithIgnoringAsciiCase(address, "cid:") || address.size() > 3 * kLongestPartText) return nullptr;
  const auto id = platform::PercentDecoded(address.substr(4));
  const auto place = id ? part_.find(*id) : part_.end();
  return place == part_.end() ? nullptr : &message_.parts()[place->second];
}

// A page may name one part thousands of times.
std::string EmbeddedParts::PictureTypeOf(const Part& part) const {
  const auto [known, is_new] = types_.try_emplace(&part);
  if (is_new) known->second = TypeByContent(message_, part);
  return known->second;
}

}  // namespace quillcast::mail_file
