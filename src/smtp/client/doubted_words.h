// Words in which a server took a message, and which could as well be the answer to another command.
#pragma once

#include <algorithm>
#include <vector>

#include "smtp/server_reply.h"

namespace quillcast::smtp {

// While some are in doubt, one thing is asked at a time, where an answer's place is sure: words that come there again
// are this server's habit, and tell nothing from then on.
class DoubtedWords {
 public:
  bool any() const { return !doubted_.empty(); }
  bool AreHabit(const ServerReply& message) const { return Find(habits_, message) != habits_.end(); }

  void Doubt(const ServerReply& message) {
    if (Find(doubted_, message) == doubted_.end()) doubted_.push_back(message);
  }
  // In words whose place is sure.
  void Taken(const ServerReply& message) {
    if (Find(doubted_, message) != doubted_.end()) Learn(message);
  }
  // They are its habit, whether they were in doubt or not.
  void Learn(const ServerReply& message) {
    const auto known = Find(doubted_, message);
    if (known != doubted_.end()) doubted_.erase(known);
    if (!AreHabit(message)) habits_.push_back(message);
  }

 private:
  using Words = std::vector<ServerReply>;
  // Where there is a code, a number may stand in the text.
  static Words::const_iterator Find(const Words& words, const ServerReply& message) {
    return std::find_if(words.begin(), words.end(), [&message](const ServerReply& one) {
      return one.enhanced == message.enhanced && (!one.enhanced.empty() || one.text == message.text);
    });
  }

  Words doubted_;
  Words habits_;
};

}  // namespace quillcast::smtp
