// The box for a group's name: it takes only what can stand in one, by key, paste and input method.
#pragma once

#include <QLineEdit>
#include <QSet>
#include <QValidator>
#include <algorithm>
#include <utility>

#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/status_line.h"
#include "profile/program.h"
#include "recipients/group_checks.h"

namespace quillcast::desktop {

// What cannot stand in a name is dropped from what is typed. What stood in the box before stays, and comes back by undo
// as it was: another program may have given a group such a name.
class GroupNameFilter final : public QValidator {
 public:
  GroupNameFilter(QString before, QObject* parent) : QValidator(parent), before_(std::move(before)), stood_{before_} {}

  State validate(QString& input, int& position) const override {
    if (!stood_.contains(input)) DropFrom(input, position);
    before_ = input;
    if (Kept(input) != input) stood_.insert(input);
    return Acceptable;
  }

 private:
  static QString Kept(const QString& text) { return ToQt(recipients::OnlyGroupNameKeys(FromQt(text))); }

  // What was typed is what differs from the text before.
  void DropFrom(QString& input, int& position) const {
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
  }

  mutable QString before_;
  mutable QSet<QString> stood_;  // in the box, and could not be typed
};

inline constexpr int kNarrowestName = 280;  // pixels, with room for a name of several words

inline QLineEdit* MakeGroupNameBox(QWidget* parent, const QString& name = {}) {
  auto* box = new QLineEdit(name, parent);
  box->setMaxLength(std::max(static_cast<int>(recipients::kLongestGroupName), static_cast<int>(name.size())));
  box->setValidator(new GroupNameFilter(name, box));
  box->setMinimumWidth(kNarrowestName);
  return box;
}

// Why a name is refused: the given words stand in a box, our own in the status line.
inline void ShowRefusal(const recipients::GroupComplaint& refused, const profile::Program& program, StatusLine& status,
                        QLineEdit& box) {
  if (!refused.message.empty()) program.prompts.Warn(refused.message);
  status.Say(InWords(refused.reason), NoteKind::kFailure);
  box.setFocus();
}

}  // namespace quillcast::desktop
