// What has gone out in the last day, of all runs of a profile, those under way in other programs included: in a small
// file beside the journal, which keeps of each message when it went and a number for whose domain.
//
// The file is changed by whoever holds it, for some microseconds at a time. Who takes a turn in it locks its octets
// until the message is out, so that the others tell one that is on its way from one whose program has died: nothing of
// the latter went out. Which clock each time in it is by is told in it, too (run/pace/kept_clocks).
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "platform/clock.h"
#include "platform/file.h"
#include "platform/result.h"
#include "run/pace/departure_record.h"
#include "run/pace/file_octets.h"
#include "run/pace/kept_clocks.h"

namespace quillcast::run {

// Errors: kTryAgain where another program holds the file too long, kUnavailable for one of a newer version of this
// program, kIo, kNotPermitted and the like of the disk.
class Departures {
 public:
  // Makes the file where there is none, and cuts it to what a rule can look back at, unless another program has it.
  static Result<std::unique_ptr<Departures>> Open(const std::filesystem::path& file, const platform::Clock& clock);
  Departures(const Departures&) = delete;
  Departures& operator=(const Departures&) = delete;

  // What of it was found to be lost since the last time that this was asked.
  std::optional<Error> TakeLoss();

  // While it lives, no other program changes the file.
  class Hold {
   public:
    explicit Hold(const Departures& departures) : departures_(&departures) {}
    Hold(Hold&& other) noexcept : departures_(std::exchange(other.departures_, nullptr)) {}
    Hold& operator=(Hold&&) = delete;
    ~Hold();

   private:
    const Departures* departures_;
  };
  // kNoInput where somebody has removed it.
  Result<Hold> HoldFile() const;

  // For all of these the file is held.

  // Tells what others told since the last time, at first all that stands in the file: kTaken of one that is on its way,
  // kNone once it is so no more; and then kOut of each that went out, in their order.
  using Visit = std::function<void(DepartureState, Domain, Uptime when)>;
  Result<void> Read(const Visit& visit);
  // These are so from now on. Gives the place of the first. One that is kTaken stays so until it is changed.
  Result<std::int64_t> Append(DepartureState state, std::span<const Domain> domains);
  Result<void> Change(std::int64_t place, DepartureState state, Domain domain);

 private:
  using Each = std::function<Result<void>(std::int64_t place, const std::optional<Departure>&)>;
  struct Out {
    Domain domain{};
    Uptime when;
  };

  Departures(std::filesystem::path file, platform::UniqueFd fd, const platform::Clock& clock)
      : file_(std::move(file)), fd_(std::move(fd)), clock_(clock), clocks_(clock) {}
  static Result<std::unique_ptr<Departures>> OpenOnce(const std::filesystem::path& file, const platform::Clock& clock);

  Result<Hold> Lock() const;
  Result<bool> IsInPlace() const;
  Result<std::int64_t> WholeSize() const;
  Result<bool> HasHeader();
  Result<bool> Cut();
  Result<void> Replace(Uptime counts_after);
  Result<std::int64_t> Mend(Uptime counts_after);
  Result<void> KeepClock();
  Result<void> ForEach(std::int64_t first, std::int64_t end, const Each& each) const;
  Result<void> Write(std::int64_t place, const Departure& departure) const;
  Result<bool> IsOnItsWay(std::int64_t place) const;
  Result<void> LookAfterThoseOnTheirWay(std::vector<Out>& out, const Visit& visit);
  Result<void> ReadNew(std::vector<Out>& out, const Visit& visit);

  static constexpr std::int64_t kBegin = 16;  // of the entries
  static constexpr std::int64_t kSize = kDepartureSize;
  static constexpr std::size_t kBlock = 4096 * kDepartureSize;

  std::filesystem::path file_;
  platform::UniqueFd fd_;
  const platform::Clock& clock_;
  KeptClocks clocks_;
  std::int64_t clocks_read_to_ = kBegin;    // octets
  std::int64_t read_to_ = 0;                // octets
  std::vector<std::int64_t> on_their_way_;  // places of those that others took
  std::int64_t lost_ = 0;                   // entries
};

}  // namespace quillcast::run
