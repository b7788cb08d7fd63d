// How well colours are told apart (WCAG 2.1, 1.4.3 and 1.4.11).
#pragma once

#include <QColor>

namespace quillcast::desktop {

inline constexpr double kTextContrast = 4.5;  // the least between a text and its ground
inline constexpr double kLineContrast = 3.0;  // the least between the outline of a control and its ground

// From 1, no difference, to 21, black on white. Colours count as opaque.
double Contrast(const QColor& one, const QColor& other);

// `wished`, made darker or lighter as far as it takes to be told from `ground`.
QColor Readable(const QColor& wished, const QColor& ground, double least = kTextContrast);

}  // namespace quillcast::desktop
