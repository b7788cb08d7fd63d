// What is known of a text that is being typed, whichever view holds it.
#pragma once

#include <QString>
#include <algorithm>
#include <utility>

namespace quillcast::desktop {

// Who holds the text tells of each change, and is looked at after Pause; what was seen then is what drafts keep and
// what a view that died is given back. So nothing older than that pause is ever lost.
class TypedText {
 public:
  // Another text.
  void Begin(const QString& text, bool is_changed) {
    seen_ = text;
    is_unseen_ = false;
    is_changed_ = is_changed;
  }
  // True for the first change since it was seen: it is to be looked at after the pause.
  bool Change() {
    is_changed_ = true;
    return !std::exchange(is_unseen_, true);
  }
  // An answer that was given before the latest change is kept, too, and the pause begins anew.
  void See(const QString& text, bool is_latest) {
    seen_ = text;
    is_unseen_ = is_unseen_ && !is_latest;
  }
  // As it was seen: what came since is not in the file.
  void Save() { is_changed_ = is_unseen_; }
  // What was not seen is gone with the view that held it. False where there was nothing.
  bool Lose() { return std::exchange(is_unseen_, false); }

  const QString& seen() const { return seen_; }
  bool is_unseen() const { return is_unseen_; }
  bool is_changed() const { return is_changed_; }

  // Milliseconds: a second, or so long that looking, which took `took` the last time, is a small part of them.
  static int Pause(qint64 took) { return static_cast<int>(std::clamp<qint64>(took * 20, 1000, 5000)); }

 private:
  QString seen_;
  bool is_unseen_ = false;   // it changed since it was seen
  bool is_changed_ = false;  // since it was begun or saved
};

}  // namespace quillcast::desktop
