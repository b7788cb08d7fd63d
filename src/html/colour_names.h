// The names of colours in style sheets (CSS Color 4, 6.1).
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace quillcast::html {

// 0xRRGGBB of a name in small letters; nothing where it is none.
std::optional<std::uint32_t> NamedColour(std::string_view name);

}  // namespace quillcast::html
