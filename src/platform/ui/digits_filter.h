// Boxes that take digits alone, by key, paste and input method.
#pragma once

#include <QValidator>

#include "platform/text.h"
#include "platform/ui/qt_text.h"

namespace quillcast::platform {

// What is no digit is dropped; the others stay.
class DigitsFilter final : public QValidator {
 public:
  using QValidator::QValidator;
  State validate(QString& input, int& position) const override {
    const QString digits = ToQt(DigitsOf(FromQt(input)));
    if (digits != input) {
      position = static_cast<int>(DigitsOf(FromQt(input.left(position))).size());
      input = digits;
    }
    return Acceptable;
  }
};

}  // namespace quillcast::platform
