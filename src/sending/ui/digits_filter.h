// Boxes that take digits alone, by key, paste and input method.
#pragma once

#include <QValidator>

#include "platform/ui/qt_text.h"
#include "sending/account_form.h"

namespace quillcast::sending {

// What is no digit is dropped; the others stay.
class DigitsFilter final : public QValidator {
 public:
  using QValidator::QValidator;
  State validate(QString& input, int& position) const override {
    const QString digits = platform::ToQt(DigitsOf(platform::FromQt(input)));
    if (digits != input) {
      position = static_cast<int>(DigitsOf(platform::FromQt(input.left(position))).size());
      input = digits;
    }
    return Acceptable;
  }
};

}  // namespace quillcast::sending
