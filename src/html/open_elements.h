// Which elements of a page are open, as readers of HTML have it: many end without an end tag of their own, and an end
// tag in a wrong place ends nothing (WHATWG HTML 13.2.6.4.7).
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "html/html_tokenizer.h"

namespace quillcast::html {

// Not followed: what moves out of a table, and formatting that is opened anew. The time for each tag is bounded.
class OpenElements {
 public:
  enum class Kind : std::uint8_t {
    kInline,
    kBreaking,    // that ends a drawing, as blocks do
    kFormatting,  // that does, and may end within a block that began in it
    kLink,
    kParagraph,
    kPlain,  // a block that an item is looked for through
    kBlock,
    kHeading,
    kList,
    kItem,
    kTerms,
    kTerm,
    kTable,
    kRowGroup,
    kRow,
    kCell,
    kCaption,
    kColumns,
    kSelect,
    kOptions,
    kOption,
    kRuby,
    kRubyPart,
    kButton,
    kWall,  // what is in it is nobody's affair outside
    kDrawing,
  };

  // How many are kept: the place of the next.
  std::size_t size() const { return open_.size(); }
  // Ends what a start tag ends; before its own element is opened.
  void EndBefore(const HtmlToken& start);
  // Whether there may be something in the element of that tag.
  bool MayHold(const HtmlTokenizer& page, const HtmlToken& start) const;
  // Opens it. Beyond a thousand it is counted at most.
  void Open(const std::string& name);
  // Makes room among those, which moves the places of all.
  void ForgetOuter();

  struct Ended {
    std::optional<std::size_t> place = {};  // none where there is no such element to end
    bool with_inner = false;                // ended as well
    bool is_of_wall = false;                // it stands behind one, and may have been meant for what is outside
  };
  Ended End(std::string_view name);

 private:
  void Cut(std::size_t size);
  bool IsInDrawing() const;
  bool IsIgnored(std::string_view name, Kind kind) const;

  struct Element {
    std::string name;
    Kind kind;
  };
  std::vector<Element> open_;
  std::size_t too_deep_ = 0;  // blocks that are open in those and not kept
};

}  // namespace quillcast::html
