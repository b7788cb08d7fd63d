// How large a picture may be in a message, and what is done about one that is larger.
#pragma once

#include <cstdint>

#include "profile/min_win_size.h"

namespace quillcast::document {

inline constexpr int kLetterWidth = 600;                       // pixels; a picture begins no wider than a letter is
inline constexpr int kLongestSide = 9999;                      // what can be entered and is written
inline constexpr int kWidestPhotograph = 1200;                 // twice the letter, for screens that show two for one
inline constexpr std::uint64_t kHeaviestPhotograph = 300'000;  // bytes
// What is looked at at all: four bytes a pixel have to fit into memory, and the file is read whole.
inline constexpr std::int64_t kMostPixels = 64LL * 1024 * 1024;
inline constexpr std::uint64_t kLongestPictureFile = 64ULL * 1024 * 1024;

// As it is looked at, where the camera noted that it was held on its side.
profile::PixelSize Upright(profile::PixelSize stored, bool lies_on_its_side);

// The other side that keeps the ratio, at least 1; the width, where `natural` is nothing.
int HeightFor(int width, profile::PixelSize natural);
int WidthFor(int height, profile::PixelSize natural);
// Whether one side follows from the other, rounded.
bool KeepsRatio(profile::PixelSize size, profile::PixelSize natural);

// The same ratio, no wider than that.
profile::PixelSize NoWiderThan(profile::PixelSize natural, int width);
// The same ratio, as far as sides of at least 1 have it, neither side longer than kLongestSide. A side that is nothing
// stays so.
profile::PixelSize NoLongerThanAllowed(profile::PixelSize size);
// In a message at first: as it is, but no wider than the letter, or than the `room` where it goes, if that is known,
// and no side longer than is allowed.
profile::PixelSize FirstSize(profile::PixelSize natural, int room);

// Whether to offer a smaller one.
bool IsLargePhotograph(profile::PixelSize natural, std::uint64_t bytes);

}  // namespace quillcast::document
