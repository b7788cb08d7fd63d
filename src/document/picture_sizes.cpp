#include "document/picture_sizes.h"

#include <algorithm>
#include <utility>

namespace quillcast::document {
namespace {

// `part` of `whole`, as `of` is to the result.
int InProportion(int part, int whole, int of) {
  if (whole <= 0 || of <= 0) return part;
  const std::int64_t rounded = (std::int64_t{part} * of + whole / 2) / whole;
  return static_cast<int>(std::clamp<std::int64_t>(rounded, 1, INT32_MAX));
}

}  // namespace

profile::PixelSize Upright(profile::PixelSize stored, bool lies_on_its_side) {
  if (lies_on_its_side) std::swap(stored.width, stored.height);
  return stored;
}

int HeightFor(int width, profile::PixelSize natural) { return InProportion(width, natural.width, natural.height); }

int WidthFor(int height, profile::PixelSize natural) { return InProportion(height, natural.height, natural.width); }

bool KeepsRatio(profile::PixelSize size, profile::PixelSize natural) {
  return HeightFor(size.width, natural) == size.height || WidthFor(size.height, natural) == size.width;
}

profile::PixelSize NoWiderThan(profile::PixelSize natural, int width) {
  return natural.width <= width ? natural : profile::PixelSize{width, HeightFor(width, natural)};
}

profile::PixelSize NoLongerThanAllowed(profile::PixelSize size) {
  if (size.width > kLongestSide) size = {kLongestSide, size.height > 0 ? HeightFor(kLongestSide, size) : 0};
  if (size.height > kLongestSide) size = {size.width > 0 ? WidthFor(kLongestSide, size) : 0, kLongestSide};
  return size;
}

profile::PixelSize FirstSize(profile::PixelSize natural, int room) {
  return NoLongerThanAllowed(NoWiderThan(natural, room > 0 ? std::min(room, kLetterWidth) : kLetterWidth));
}

bool IsLargePhotograph(profile::PixelSize natural, std::uint64_t bytes) {
  return natural.width > kWidestPhotograph || bytes > kHeaviestPhotograph;
}

}  // namespace quillcast::document
