// The facts about a document that the properties dialog reports, found by looking into its HTML.
#pragma once

#include <string>
#include <string_view>

namespace quillcast::document {

// The texts of the five labels.
struct MessageProperties {
  std::string location;
  std::string title;
  std::string direction;
  std::string language;
  std::string charset;

  bool operator==(const MessageProperties&) const = default;
};

// `file_name` is empty for a document that was never saved, `title` for one without. The texts searched for count
// wherever they stand, in the body too. One pass over the HTML.
MessageProperties PropertiesLoad(std::string_view file_name, std::string_view title, std::string_view html);

// The document's title as browsers give it: the first title element that is not a picture's (SVG), character references
// decoded, blanks at its ends taken off and those between joined to one. Empty when there is none.
std::string TitleOf(std::string_view html);

}  // namespace quillcast::document
