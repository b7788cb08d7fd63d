// The box for a group's name: it takes only what can stand in one, by key, paste and input method.
#pragma once

#include <QLineEdit>
#include <QValidator>
#include <algorithm>
#include <utility>

#include "desktop/widgets/qt_text.h"
#include "recipients/group_checks.h"

namespace quillcast::desktop {

// What cannot stand in a name is dropped from what is typed. What stood in the box before stays: another program may
// have given a group such a name.
class GroupNameFilter final : public QValidator {
 public:
  GroupNameFilter(QString before, QObject* parent) : QValidator(parent), before_(std::move(before)) {}

  State validate(QString& input, int& position) const override {
    const auto typed_at = std::mismatch(input.cbegin(), input.cend(), before_.cbegin(), before_.cend()).first;
    const qsizetype begin = typed_at - input.cbegin();
    qsizetype behind = 0;  // the same end
    while (behind < std::min(input.size(), before_.size()) - begin &&
           input[input.size() - behind - 1] == before_[before_.size() - behind - 1])
      ++behind;
    const QString typed = input.mid(begin, input.size() - behind - begin);
    const QString kept = Kept(typed);
    if (kept != typed) {
      const qsizetype within = std::clamp<qsizetype>(position - begin, 0, typed.size());
      position += static_cast<int>(Kept(typed.left(within)).size() - within);
      input.replace(begin, typed.size(), kept);
    }
    before_ = input;
    return Acceptable;
  }

 private:
  static QString Kept(const QString& text) { return ToQt(recipients::OnlyGroupNameKeys(FromQt(text))); }

  mutable QString before_;
};

inline constexpr int kNarrowestName = 280;  // pixels, with room for a name of several words

inline QLineEdit* MakeGroupNameBox(QWidget* parent, const QString& name = {}) {
  auto* box = new QLineEdit(name, parent);
  box->setMaxLength(std::max(static_cast<int>(recipients::kLongestGroupName), static_cast<int>(name.size())));
  box->setValidator(new GroupNameFilter(name, box));
  box->setMinimumWidth(kNarrowestName);
  return box;
}

}  // namespace quillcast::desktop
