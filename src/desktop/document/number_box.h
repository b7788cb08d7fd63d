// A text box for a number that goes into a piece of HTML as it was typed.
#pragma once

#include <QLineEdit>
#include <string>

#include "desktop/widgets/digits_filter.h"
#include "desktop/widgets/qt_text.h"

namespace quillcast::desktop {

// What is out of range is told by the form's check, and not cut to what is within it.
inline constexpr int kLongestNumber = 6;  // characters

// `Filter` is DigitsFilter for whole numbers, or NumberFilter.
template <typename Filter>
QLineEdit* NumberBox(const std::string& text, QWidget* parent) {
  auto* box = new QLineEdit(ToQt(text), parent);
  box->setValidator(new Filter(box));
  box->setMaxLength(kLongestNumber);
  return box;
}

}  // namespace quillcast::desktop
