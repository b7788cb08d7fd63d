// How far a run goes ahead of the server's replies, on each of its connections. One for all of them: what a server
// showed on one is remembered.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "smtp/client/doubted_words.h"

namespace quillcast::smtp {

class SendWindow {
 public:
  static constexpr std::size_t kFirst = 2;
  static constexpr std::size_t kMost = 128;
  static constexpr std::uint64_t kMostOctets = std::uint64_t{4} * 1024 * 1024;
  // An answer too many comes no later than this behind the one before.
  static constexpr std::chrono::milliseconds kSilence{100};

  // Whether a connection wants another message beside those that have no outcome yet. Once full, nothing is wanted
  // until half of it is answered: so that replies which trickle in do not cost a write each. `filling` is the
  // connection's own.
  bool Wants(std::size_t messages, std::uint64_t octets, bool& filling) const {
    if (messages >= limit_ || octets >= kMostOctets) {
      filling = false;
    } else if (messages <= limit_ / 2 && octets <= kMostOctets / 2) {
      filling = true;
    }
    return filling;
  }

  // A message was taken. One more for each doubles the window with every round trip, while the server is quick.
  void Taken(bool quick) {
    if (quick && !cautious_) limit_ = std::min(limit_ + 1, kMost);
  }

  // The server showed trouble: from here on one message at a time, and no message before its envelope is accepted.
  void BeCautious() {
    cautious_ = true;
    limit_ = 1;
  }
  bool cautious() const { return cautious_; }

  // No more than so many messages go over one connection: the person wants no more.
  void LimitConnection(std::size_t messages) { per_connection_ = messages; }
  std::size_t per_connection() const { return per_connection_; }

  // The server took so many messages over a connection and not the next one. It may do so each time, or have been in
  // trouble just then: where a message goes behind as many, it is no limit.
  void SuspectLimit(std::size_t messages) { suspected_limit_ = messages; }
  bool IsSuspectedLimit(std::size_t messages) const { return messages == suspected_limit_; }
  void Took(std::size_t messages) {
    if (messages > suspected_limit_) suspected_limit_ = kNoLimit;
  }

  // The server offers pipelining and does not keep it: from here on one command, one reply.
  void GiveUpPipelining() { pipelining_ = false; }
  bool pipelining() const { return pipelining_; }

  // The server answers a message, or some, in the words that it has for its recipient: those tell nothing there.
  void AnswersAlike() { answers_alike_ = true; }
  bool answers_alike() const { return answers_alike_; }

  // The server answered more often than it was asked, or seems to have: from here on one thing is asked at a time, and
  // no message goes before it was silent for a while (kSilence).
  void BeWary() { wary_ = true; }
  bool wary() const { return wary_ || words_.any(); }

  // What was taken for an answer too many or too few, and may be none.
  DoubtedWords& words() { return words_; }
  const DoubtedWords& words() const { return words_; }

  // How many connections are ready for messages.
  void SetConnections(std::size_t connections) { connections_ = connections; }
  std::size_t connections() const { return connections_; }

  std::size_t limit() const { return limit_; }

 private:
  static constexpr std::size_t kNoLimit = std::numeric_limits<std::size_t>::max();
  std::size_t limit_ = kFirst;
  std::size_t per_connection_ = kNoLimit;
  std::size_t suspected_limit_ = kNoLimit;
  std::size_t connections_ = 1;
  bool cautious_ = false;
  bool pipelining_ = true;
  bool answers_alike_ = false;
  bool wary_ = false;
  DoubtedWords words_;
};

}  // namespace quillcast::smtp
