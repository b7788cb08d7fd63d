// What the lists of the entry dialogs offer. The boxes take any other text as well, and what stands in them is stored
// as it is.
#pragma once

#include <span>
#include <string_view>

namespace quillcast::recipients {

std::span<const std::string_view> Titles();     // 3
std::span<const std::string_view> Countries();  // 240, in the order of the alphabet
std::span<const std::string_view> States();     // 51: those of the United States and their federal district

}  // namespace quillcast::recipients
