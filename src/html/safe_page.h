// A stranger's page as one that can be opened: nothing in it runs, asks for anything or loads anything.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace quillcast::html {

struct SafePageOptions {
  // Where the picture of an address ("cid:logo@example.org") is now; nothing for one that is not to be shown. It is
  // asked of each place that shows a picture, and not asked anything where it is empty.
  std::function<std::optional<std::string>(std::string_view address)> picture = {};
  // Tells browsers in the page itself to load nothing from elsewhere, whatever stands in it.
  bool forbids_loading = true;
};

// The same page made of the elements and attributes that show text and pictures: scripts, forms, frames, comments,
// sheets and references to elsewhere are out, and what stood within forms is there as text. Links stay where they lead
// to a page or a mailbox, since a person follows them. It is marked as UTF-8, which the page has to be, and names no
// other set. Linear in time, and does not recurse.
std::string SafePage(std::string_view page, const SafePageOptions& options);

// Where a link may lead, since a person decides to follow it: a page, a mailbox, a telephone, or a place in the same
// page.
bool MayBeFollowed(std::string_view address);

// A page that shows a text as it is, its lines wrapped where the window ends.
std::string PageOfText(std::string_view text);

// With "&", "<", ">" and quotes, or those of them that are asked for, as HTML writes them.
std::string EscapedForHtml(std::string_view text, std::string_view characters = "&<>\"");

}  // namespace quillcast::html
