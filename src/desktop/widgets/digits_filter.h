// Boxes that take digits alone, by key, paste and input method.
#pragma once

#include <QValidator>

#include "desktop/widgets/qt_text.h"
#include "platform/text.h"

namespace quillcast::desktop {

// What is no digit is dropped; the others stay.
class DigitsFilter final : public QValidator {
 public:
  using QValidator::QValidator;
  State validate(QString& input, int& position) const override {
    const QString digits = ToQt(platform::DigitsOf(FromQt(input)));
    if (digits != input) {
      position = static_cast<int>(platform::DigitsOf(FromQt(input.left(position))).size());
      input = digits;
    }
    return Acceptable;
  }
};

}  // namespace quillcast::desktop
