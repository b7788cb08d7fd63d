#include "html/nesting.h"

#include <array>
#include <string>
#include <unordered_map>

#include "html/html_elements.h"
#include "html/html_tokenizer.h"

namespace quillcast::html {
namespace {

// What the next one of its kind closes, with all that is open within (WHATWG HTML 13.1.2.4).
constexpr auto kClosedByTheNext =
    std::to_array<std::string_view>({"html", "head", "body", "p", "li", "dt", "dd", "tr", "td", "th", "thead", "tbody",
                                     "tfoot", "colgroup", "caption", "option"});
// Elements that are open, by name.
class OpenCounts {
 public:
  std::size_t depth() const { return depth_; }
  bool Has(const std::string& name) const {
    const auto found = open_.find(name);
    return found != open_.end() && found->second > 0;
  }
  void Open(const std::string& name) { ++open_[name], ++depth_; }
  // What closes nothing that is open takes nothing away.
  void Close(const std::string& name) {
    if (Has(name)) --open_[name], --depth_;
  }
  void CloseAll() { open_.clear(), depth_ = 0; }

 private:
  std::unordered_map<std::string, std::size_t> open_;
  std::size_t depth_ = 0;
};

}  // namespace

bool IsNestedDeeperThan(std::string_view html, std::size_t levels) {
  OpenCounts blocks;
  OpenCounts formatting;  // of the paragraph
  HtmlTokenizer page(html);
  HtmlToken token;
  while (page.Next(token)) {
    const bool begins = token.kind == HtmlTokenKind::kStartTag;
    if ((!begins && token.kind != HtmlTokenKind::kEndTag) || HasNoContent(token.name)) continue;
    if (IsAmong(token.name, kClosedByTheNext)) {
      formatting.CloseAll();
      continue;
    }
    OpenCounts& open = IsFormatting(token.name) ? formatting : blocks;
    const bool is_whole = begins && page.Source(token).ends_with("/>") && (blocks.Has("svg") || blocks.Has("math"));
    if (begins && !is_whole) open.Open(token.name);
    if (!begins) open.Close(token.name);
    if (blocks.depth() + formatting.depth() > levels) return true;
  }
  return false;
}

}  // namespace quillcast::html
