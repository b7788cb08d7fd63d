// The connections of a run, each in its lane: opened as they are needed, handed the jobs, written to, waited for and
// left.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "smtp/client/connection.h"
#include "smtp/client/connection_limit.h"
#include "smtp/client/lost_way.h"
#include "smtp/client/way_in.h"

namespace quillcast::smtp {

// One thread drives them all. No step but Wait waits, and that waits for all of them, so that none is held up by
// another: one that opens, is slow, or is lost. A round is
//   GoOn     those on their way come a step nearer; those that are over leave their lane
//   HandOut  jobs are given to those that want one, and another one is opened where none does
//   Wait     what was given goes out, and replies come in
// Between HandOut and Wait nothing of a new job is out, and what was told can be put on disk.
class Lanes {
 public:
  Lanes(Surroundings& around, std::size_t connections);

  void GoOn();
  // True where there was room for a message, and the source had none.
  bool HandOut();
  // Until something came about, or `back`.
  void Wait(const net::Deadline& back);

  // Nothing that has not begun goes out any more.
  void Withdraw();
  // Says QUIT over those that have not been needed for long, or are not before `due`.
  void LeaveIdle(const std::optional<platform::Instant>& due);
  // Says QUIT over all of them, and waits for that. Every message has its outcome: how QUIT goes is no matter.
  void LeaveAll();

 private:
  struct Lane {
    std::unique_ptr<WayIn> way;
    std::unique_ptr<Connection> connection;
    std::optional<platform::Instant> idle_since;

    bool free() const { return !way && !connection; }
    bool ready() const { return connection && !connection->quits(); }
  };

  ConnectionLimit::Now Count() const;
  std::size_t CountReady() const;
  void EndWay(Lane& lane);
  void TellInDoubt(Lane& lane, platform::Duration took);
  bool Falters(Lane& lane);
  void EndConnection(Lane& lane);
  void Leave(Lane& lane);
  Lane* LeastBusy();
  bool MayOpen();
  void Open();
  bool IsBeingTried() const;
  void ComeToKnow();
  void MakeRoom();
  void FindOut();
  bool IsGone(Lane& lane);
  Lane* Alone();
  void Poll(const net::Deadline& back);
  net::Deadline Until(const net::Deadline& back, platform::Instant now);
  std::size_t NumberOf(const Lane& lane) const { return static_cast<std::size_t>(&lane - lanes_.data()); }

  Surroundings& around_;
  ConnectionLimit limit_;
  LostWay lost_way_;
  bool is_withdrawn_ = false;  // Withdraw was called
  bool was_slow_ = false;      // the last connection that told of those in doubt came about late
  std::vector<Lane> lanes_;
  std::optional<std::uint64_t> opened_for_;  // the job that the last one was opened for
  std::vector<pollfd> descriptors_;
};

}  // namespace quillcast::smtp
