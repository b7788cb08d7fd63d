// The box for a group's name: it takes only what can stand in one, by key, paste and input method.
#pragma once

#include <QLineEdit>
#include <QValidator>

#include "desktop/widgets/qt_text.h"
#include "recipients/group_checks.h"

namespace quillcast::desktop {

// What cannot stand in a name is dropped; the rest stays.
class GroupNameFilter final : public QValidator {
 public:
  using QValidator::QValidator;
  State validate(QString& input, int& position) const override {
    const QString kept = ToQt(recipients::OnlyGroupNameKeys(FromQt(input)));
    if (kept != input) {
      position = static_cast<int>(recipients::OnlyGroupNameKeys(FromQt(input.left(position))).size());
      input = kept;
    }
    return Acceptable;
  }
};

inline constexpr int kNarrowestName = 280;  // pixels, with room for a name of several words

inline QLineEdit* MakeGroupNameBox(QWidget* parent) {
  auto* box = new QLineEdit(parent);
  box->setMaxLength(static_cast<int>(recipients::kLongestGroupName));
  box->setValidator(new GroupNameFilter(box));
  box->setMinimumWidth(kNarrowestName);
  return box;
}

}  // namespace quillcast::desktop
