#include "html/local_pictures.h"

#include <algorithm>
#include <array>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "html/address_reach.h"
#include "html/html_css.h"
#include "html/html_tokenizer.h"
#include "html/local_pictures_address.h"
#include "html/other_addresses.h"
#include "html/picture_addresses.h"
#include "platform/text.h"

namespace quillcast::html {
namespace {

constexpr std::size_t kLongestBase = 1000;

// Style sheets and fonts come by url() too.
bool IsPicture(std::string_view path) {
  constexpr std::array kOthers = {".css", ".woff", ".woff2", ".ttf", ".otf", ".eot", ".htc"};
  const std::string lower = platform::AsciiLower(path);
  return std::none_of(kOthers.begin(), kOthers.end(), [&](const char* other) { return lower.ends_with(other); });
}

constexpr std::string_view kTagBegin = "$*Merge";
constexpr std::string_view kTagStandIn = "\x01";  // as no file is called

// What is only a fragment names the page itself. One that is longer than any folder's name leads nowhere: it would
// stand before each of the page's addresses.
std::optional<LocalAddress> BaseOf(const HtmlTokenizer& tokenizer, const HtmlToken& token) {
  if (token.name != "base") return std::nullopt;
  const std::string address = tokenizer.Value(token, "href");
  const std::string_view given = platform::Trim(address);
  if (given.empty() || given.starts_with('#')) return std::nullopt;
  const bool is_elsewhere = given.size() > kLongestBase || BeginsWithTag(given);
  return is_elsewhere ? LocalAddress{} : ReadLocalAddress(address);
}

// The first base counts.
class BaseFinder final : public HtmlVisitor {
 public:
  explicit BaseFinder(std::string_view html) { VisitTagsAndStyles(html, *this); }
  const std::optional<LocalAddress>& base() const { return base_; }

 private:
  void StartTag(const HtmlTokenizer& tokenizer, const HtmlToken& token) override {
    if (!base_) base_ = BaseOf(tokenizer, token);
  }
  void StyleSheet(std::string_view /*css*/) override {}

  std::optional<LocalAddress> base_;
};

// A file by another scheme, such as "mailbox:" of a mail program or "smb:": missing for everybody.
LocalAddress ReadOtherFile(std::string_view address) {
  const std::string_view given = platform::Trim(address);
  if (SchemeOfAddress(given).size() < 2 || ReachOf(given) != AddressReach::kFile) return {};
  const std::string_view path = given.substr(0, given.find_first_of("?#"));
  // Some encode it in one piece: "asset://localhost/%2Fhome%2Fada%2Fa.png".
  const std::string read = platform::PercentDecoded(path).value_or(std::string(path));
  return {AddressKind::kFile, platform::ReplaceAll(read, "\\", "/")};
}

// Of a path that starts from nowhere here: "C:/x", "c|/x".
bool IsPathOfDrive(std::string_view path) {
  return path.size() > 2 && platform::AsciiIsAlnum(path[0]) && (path[1] == ':' || path[1] == '|') && path[2] == '/';
}

class Finder final : public HtmlVisitor {
 public:
  Finder(std::string_view html, const std::function<void(PictureReference)>& visit)
      : html_(html), visit_(visit), page_base_(BaseFinder(html).base()) {
    VisitTagsAndStyles(html, *this);
  }

  const std::set<std::string>& named_by_tags() const { return named_by_tags_; }
  std::vector<PictureReference> TakeTelling() { return std::move(telling_); }

 private:
  void StartTag(const HtmlTokenizer& tokenizer, const HtmlToken& token) override {
    if (token.attributes.empty()) return;
    if (!base_) base_ = BaseOf(tokenizer, token);
    if (token.name == "base") LookAtBase(tokenizer, token);
    EachPictureOf(tokenizer, token,
                  [this](std::string_view written, const std::string& address) { Add(written, address); });
    if (token.name == "base") return;
    EachOtherAddressOf(tokenizer, token,
                       [this](std::string_view written, const std::string& address) { AddOther(written, address); });
  }

  void StyleSheet(std::string_view css) override {
    EachPictureInStyles(css, CssPlace::kElement,
                        [this](std::string_view written, const std::string& address) { Add(written, address); });
    for (const CssRange& range : FindCssImports(css, CssPlace::kElement)) {
      const std::string_view written = css.substr(range.begin, range.end - range.begin);
      AddOther(written, DecodeCssAddress(written, CssPlace::kElement));
    }
  }

  void LookAtBase(const HtmlTokenizer& tokenizer, const HtmlToken& token) {
    const HtmlAttribute* const attribute = tokenizer.Find(token, "href");
    if (attribute == nullptr) return;
    const std::string address = tokenizer.Value(token, "href");
    if (BeginsWithTag(address)) return;
    const LocalAddress place = ReadLocalAddress(platform::ReplaceAll(address, kTagBegin, kTagStandIn));
    if (place.kind != AddressKind::kElsewhere) AddTelling(tokenizer.RawValue(*attribute), {});
  }

  // `written` is a part of the source.
  void Add(std::string_view written, const std::string& address) {
    if (address.find(kTagBegin) != std::string::npos) return AddNamedByTag(written, address);
    LocalAddress file = ReadLocalAddress(address);
    LeadsTo leads_to = IsFilledIn(address)                                  ? LeadsTo::kFilledIn
                       : BeginsWithTag(address) || IsPathOfDrive(file.path) ? LeadsTo::kElsewhere
                                                                            : LeadsTo::kFile;
    if (file.kind == AddressKind::kRelative && base_) file = Resolve(*base_, std::move(file));
    if (file.kind == AddressKind::kElsewhere) {
      file = ReadOtherFile(address);
      leads_to = LeadsTo::kElsewhere;
    }
    if (file.kind == AddressKind::kElsewhere) return;
    if (!IsPicture(file.path)) return AddOther(written, address);
    visit_({static_cast<std::size_t>(written.data() - html_.data()), written.size(), std::move(file.path), leads_to});
  }

  void AddTelling(std::string_view written, std::string path) {
    telling_.push_back({static_cast<std::size_t>(written.data() - html_.data()), written.size(), std::move(path)});
  }

  bool IsOfTheNet(const LocalAddress& address) const {
    return address.kind == AddressKind::kRelative && page_base_ && page_base_->kind == AddressKind::kElsewhere;
  }

  void AddOther(std::string_view written, const std::string& address) {
    const LocalAddress file = ReadLocalAddress(platform::ReplaceAll(address, kTagBegin, kTagStandIn));
    if (!TellsFolder(file) || IsOfTheNet(file)) return;
    const std::string name = file.path.substr(file.path.find_last_of("/:\\") + 1);
    AddTelling(written, platform::ReplaceAll(name, kTagStandIn, kTagBegin));
  }

  void AddNamedByTag(std::string_view written, const std::string& address) {
    AddOther(written, address);
    const LocalAddress file = ReadLocalAddress(platform::ReplaceAll(address, kTagBegin, kTagStandIn));
    const bool of_the_net = IsOfTheNet(file);
    if (file.kind != AddressKind::kElsewhere && !of_the_net && IsPicture(file.path)) named_by_tags_.insert(address);
  }

  std::string_view html_;
  const std::function<void(PictureReference)>& visit_;
  const std::optional<LocalAddress> page_base_;  // of links, which are followed once the page is read
  std::optional<LocalAddress> base_;             // of pictures, which are loaded as they come: the one so far
  std::set<std::string> named_by_tags_;
  std::vector<PictureReference> telling_;
};

}  // namespace

std::vector<PictureReference> FindLocalPictures(std::string_view html) {
  std::vector<PictureReference> found;
  VisitLocalPictures(html, [&found](PictureReference reference) { found.push_back(std::move(reference)); });
  return found;
}

void VisitLocalPictures(std::string_view html, const std::function<void(PictureReference)>& visit) {
  Finder(html, visit);
}

std::vector<std::string> FindPicturesNamedByTags(std::string_view html) {
  if (html.find(kTagBegin) == std::string_view::npos) return {};
  const Finder finder(html, [](const PictureReference&) {});
  return {finder.named_by_tags().begin(), finder.named_by_tags().end()};
}

std::vector<PictureReference> FindTellingAddresses(std::string_view html) {
  Finder finder(html, [](const PictureReference&) {});
  auto found = finder.TakeTelling();
  std::sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return a.offset < b.offset; });
  return found;
}

std::string RewriteReferences(std::string_view html, const std::vector<PictureReference>& references,
                              const std::vector<std::string>& replacements) {
  std::string out;
  std::size_t at = 0;
  for (std::size_t i = 0; i < references.size() && i < replacements.size(); ++i) {
    if (replacements[i].empty()) continue;
    out += html.substr(at, references[i].offset - at);
    out += replacements[i];
    at = references[i].offset + references[i].length;
  }
  out += html.substr(at);
  return out;
}

}  // namespace quillcast::html
