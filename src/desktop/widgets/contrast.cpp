#include "desktop/widgets/contrast.h"

#include <algorithm>
#include <cmath>

namespace quillcast::desktop {
namespace {

constexpr int kShades = 20;  // from the wished colour to black or white

double Linear(double channel) {
  return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double Luminance(const QColor& colour) {
  return 0.2126 * Linear(colour.redF()) + 0.7152 * Linear(colour.greenF()) + 0.0722 * Linear(colour.blueF());
}

int Between(int from, int to, int step) { return from + (to - from) * step / kShades; }

}  // namespace

double Contrast(const QColor& one, const QColor& other) {
  const auto [low, high] = std::minmax({Luminance(one), Luminance(other)});
  return (high + 0.05) / (low + 0.05);
}

QColor Readable(const QColor& wished, const QColor& ground, double least) {
  const QColor end = Contrast(Qt::white, ground) > Contrast(Qt::black, ground) ? Qt::white : Qt::black;
  for (int step = 0; step < kShades; ++step) {
    const QColor colour(Between(wished.red(), end.red(), step), Between(wished.green(), end.green(), step),
                        Between(wished.blue(), end.blue(), step));
    if (Contrast(colour, ground) >= least) return colour;
  }
  return end;
}

}  // namespace quillcast::desktop
