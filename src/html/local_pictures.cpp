#include "html/local_pictures.h"

#include <algorithm>
#include <array>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "html/html_css.h"
#include "html/html_tokenizer.h"
#include "html/local_pictures_address.h"
#include "html/picture_addresses.h"
#include "platform/text.h"

namespace quillcast::html {
namespace {

constexpr std::size_t kLongestBase = 1000;

// Those that lead elsewhere, or load what is no picture; one that names pictures is none.
constexpr std::array<std::string_view, 14> kOtherAttributes = {
    "href", "src",  "longdesc", "lowsrc",  "dynsrc",   "action",  "formaction",
    "data", "cite", "codebase", "archive", "manifest", "classid", "profile"};

// Style sheets and fonts come by url() too.
bool IsPicture(std::string_view path) {
  constexpr std::array kOthers = {".css", ".woff", ".woff2", ".ttf", ".otf", ".eot", ".htc"};
  const std::string lower = platform::AsciiLower(path);
  return std::none_of(kOthers.begin(), kOthers.end(), [&](const char* other) { return lower.ends_with(other); });
}

constexpr std::string_view kTagBegin = "$*Merge";
constexpr std::string_view kTagStandIn = "\x01";  // as no file is called

// Whoever fills the tag in, here or on the way, says where it leads: to the net.
bool BeginsWithTag(std::string_view address) {
  constexpr std::array<std::string_view, 8> kBegins = {kTagBegin, "{{", "{%", "${", "*|", "%%", "<%", "[["};
  const std::string_view given = platform::Trim(address);
  return std::any_of(kBegins.begin(), kBegins.end(), [&](std::string_view one) { return given.starts_with(one); });
}

class Finder final : public HtmlVisitor {
 public:
  Finder(std::string_view html, const std::function<void(PictureReference)>& visit) : html_(html), visit_(visit) {
    VisitTagsAndStyles(html, *this);
  }

  const std::set<std::string>& named_by_tags() const { return named_by_tags_; }
  std::vector<PictureReference> TakeTelling() { return std::move(telling_); }

 private:
  void StartTag(const HtmlTokenizer& tokenizer, const HtmlToken& token) override {
    if (token.attributes.empty()) return;
    if (token.name == "base") LookAtBase(tokenizer, token);
    EachPictureOf(tokenizer, token,
                  [this](std::string_view written, const std::string& address) { Add(written, address); });
    LookAtOthers(tokenizer, token);
  }

  void LookAtOthers(const HtmlTokenizer& tokenizer, const HtmlToken& token) {
    for (const HtmlAttribute& attribute : token.attributes) {
      const std::string name = platform::AsciiLower(tokenizer.RawName(attribute));
      const bool is_other = std::find(kOtherAttributes.begin(), kOtherAttributes.end(), name) != kOtherAttributes.end();
      if (!is_other || NamesPictures(token.name, name) || token.name == "base") continue;
      const std::string_view value = platform::Trim(tokenizer.RawValue(attribute));
      AddOther(value, DecodeCharacterReferences(value, true));
    }
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
    const bool is_of_tag = BeginsWithTag(address);
    const LocalAddress place = ReadLocalAddress(platform::ReplaceAll(address, kTagBegin, kTagStandIn));
    if (!is_of_tag && place.kind != AddressKind::kElsewhere) AddTelling(tokenizer.RawValue(*attribute), {});
    if (base_) return;
    if (is_of_tag) base_ = LocalAddress{};
    if (!is_of_tag) ReadBase(address);
  }

  // The first base counts; what is only a fragment names the page itself. One that is longer than any folder's name
  // leads nowhere: it would stand before each of the page's addresses.
  void ReadBase(const std::string& address) {
    const std::string_view given = platform::Trim(address);
    if (given.empty() || given.starts_with('#')) return;
    base_ = given.size() <= kLongestBase ? ReadLocalAddress(address) : LocalAddress{};
  }

  // `written` is a part of the source.
  void Add(std::string_view written, const std::string& address) {
    if (address.find(kTagBegin) != std::string::npos) return AddNamedByTag(written, address);
    LocalAddress file = ReadLocalAddress(address);
    if (file.kind == AddressKind::kRelative && base_) file = Resolve(*base_, std::move(file));
    if (file.kind == AddressKind::kElsewhere) return;
    if (!IsPicture(file.path)) return AddOther(written, address);
    visit_({static_cast<std::size_t>(written.data() - html_.data()), written.size(), std::move(file.path)});
  }

  void AddTelling(std::string_view written, std::string path) {
    telling_.push_back({static_cast<std::size_t>(written.data() - html_.data()), written.size(), std::move(path)});
  }

  bool IsOfTheNet(const LocalAddress& address) const {
    return address.kind == AddressKind::kRelative && base_ && base_->kind == AddressKind::kElsewhere;
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
  std::optional<LocalAddress> base_;
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
