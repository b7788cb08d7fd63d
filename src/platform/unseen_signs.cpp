#include "platform/unseen_signs.h"

#include <algorithm>
#include <array>

namespace quillcast::platform {
namespace {

struct Range {
  char32_t first;
  char32_t last;
};
constexpr auto kUnseen = std::to_array<Range>({{0xAD, 0xAD},

                                               {0x61C, 0x61C},
                                               {0x115F, 0x1160},
                                               {0x180E, 0x180E},
                                               {0x200B, 0x200B},
                                               {0x200E, 0x200F},
                                               {0x2060, 0x2065},
                                               {0x206A, 0x206F},
                                               {0x3164, 0x3164},
                                               {0xFEFF, 0xFEFF},
                                               {0xFFA0, 0xFFA0},
                                               {0xFFF9, 0xFFFB},
                                               {0xE0000, 0xE0FFF}});
constexpr auto kBlanks = std::to_array<Range>({{0x09, 0x0D},
                                               {0x20, 0x20},
                                               {0xA0, 0xA0},
                                               {0x34F, 0x34F},
                                               {0x1680, 0x1680},
                                               {0x2000, 0x200A},
                                               {0x200C, 0x200D},
                                               {0x202F, 0x202F},
                                               {0x205F, 0x205F},
                                               {0x2800, 0x2800},
                                               {0x3000, 0x3000}});

template <typename Ranges>
bool IsIn(const Ranges& ranges, char32_t code) {
  return std::ranges::any_of(ranges, [code](Range range) { return code >= range.first && code <= range.last; });
}

}  // namespace

bool IsUnseen(char32_t code) { return IsIn(kUnseen, code); }

bool IsBlank(char32_t code) { return IsIn(kBlanks, code); }

}  // namespace quillcast::platform
