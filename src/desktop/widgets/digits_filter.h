// Boxes that take digits alone, or a number with a fraction, by key, paste and input method.
#pragma once

#include <QValidator>

#include "desktop/widgets/qt_text.h"
#include "platform/text.h"

namespace quillcast::desktop {

inline QString DigitsIn(const QString& text) { return ToQt(platform::DigitsOf(FromQt(text))); }

// The digits and the first point among them.
inline QString NumberIn(const QString& text) {
  const auto point = text.indexOf('.');
  return point < 0 ? DigitsIn(text) : DigitsIn(text.left(point)) + '.' + DigitsIn(text.mid(point));
}

// What `kKept` leaves out is dropped; the rest stays.
template <QString (*kKept)(const QString&)>
class KeyFilter final : public QValidator {
 public:
  using QValidator::QValidator;
  State validate(QString& input, int& position) const override {
    const QString kept = kKept(input);
    if (kept != input) {
      position = static_cast<int>(kKept(input.left(position)).size());
      input = kept;
    }
    return Acceptable;
  }
};

using DigitsFilter = KeyFilter<DigitsIn>;
using NumberFilter = KeyFilter<NumberIn>;

}  // namespace quillcast::desktop
