// How the store compares text: case does not matter, nor do blanks at the end. The folding table is frozen here, for
// the store's indexes depend on the order.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quillcast::recipients {

// The name under which the store's tables ask for CompareText.
inline constexpr const char* kCollation = "QUILLCAST";

// A total order as strcmp gives it, by folded code points (Unicode simple case folding). A byte that is not UTF-8
// stands for itself, behind every code point. Blanks (U+0020) at the end do not count.
int CompareText(std::string_view a, std::string_view b);

// Appends octets that tell the place of a text among others when they are compared one by one: as CompareText orders
// them, and none before all. What is appended for one text is never the beginning of what is for another.
void AppendSortOctets(std::string& out, const std::optional<std::string_view>& text);

// Texts that CompareText finds equal have the same hash.
std::uint64_t HashText(std::string_view text);

// Whether a text begins so, in any case.
bool BeginsWith(std::string_view text, std::string_view beginning);

// Whether the whole text fits the pattern: "%" is any run of characters, "_" any one, the rest itself in any case.
// Time grows with the text, and with the pattern only by its sixty-fourth part; no recursion.
bool LikeText(std::string_view pattern, std::string_view text);

}  // namespace quillcast::recipients
