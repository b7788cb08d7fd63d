// Random programs under random rules, each message held against every rule by counting.
#include "run/pace/turns.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <sstream>

#include "run/pace/sliding_limit.h"
#include "run/pace/zoned_clock.h"
#include "support/temporary_folder.h"

namespace quillcast::run {
namespace {

using namespace std::chrono_literals;
using std::chrono::nanoseconds;

struct Went {
  nanoseconds when{};  // by the true time, which nobody sets
  Domain domain{};
};

struct Rule {
  std::int64_t messages = 0;
  nanoseconds within{};
  bool of_domain = false;
};

std::vector<Rule> LimitsOf(const PaceRules& rules) {
  std::vector<Rule> limits;
  for (const auto& limit : {rules.rate, rules.per_hour, rules.per_day}) {
    if (limit) limits.push_back({limit->messages, limit->within + SlidingLimit::kFirstOctet, false});
  }
  if (rules.per_domain)
    limits.push_back({rules.per_domain->messages, rules.per_domain->within + SlidingLimit::kFirstOctet, true});
  return limits;
}

// Whether one more to this domain breaks no rule at that time.
bool IsAllowed(const PaceRules& rules, const std::vector<Went>& went, Domain domain, nanoseconds when) {
  for (const Rule& rule : LimitsOf(rules)) {
    const auto within = std::ranges::count_if(went, [&](const Went& each) {
      return each.when > when - rule.within && (!rule.of_domain || each.domain == domain);
    });
    if (within >= rule.messages) return false;
  }
  if (!rules.pause) return true;
  std::int64_t row = 0;
  nanoseconds before = when;
  for (auto each = went.rbegin(); each != went.rend() && before - each->when < rules.pause->pause; ++each, ++row) {
    before = each->when;
  }
  return row < rules.pause->messages;
}

// The first of them that went out against the rules, where those who went before it are `went`.
std::optional<std::size_t> FirstAgainst(const PaceRules& rules, const std::vector<Went>& went) {
  std::vector<Went> before;
  for (std::size_t n = 0; n < went.size(); ++n) {
    if (!IsAllowed(rules, before, went[n].domain, went[n].when)) return n;
    before.push_back(went[n]);
  }
  return {};
}

class World {
 public:
  enum class Kind { kAlone, kSeveral, kOthersWithout, kClockSet, kRestarted };

  World(unsigned seed, Kind kind) : random_(seed), kind_(kind), rules_(RandomRules()) {
    for (int n = kind == Kind::kAlone ? 1 : 3; n > 0; --n) programs_.emplace_back();
    programs_.front().has_pace = true;
    for (auto& program : programs_) program.has_pace = program.has_pace || kind != Kind::kOthersWithout;
  }

  void Play(int steps) {
    for (; steps > 0 && !testing::Test::HasFailure(); --steps) {
      TimePasses();
      Program& program = programs_[random_() % programs_.size()];
      if (!program.turns) program.turns = Start(program.has_pace);
      if (program.turn) {
        EndTurn(program);
      } else {
        BeginTurn(program);
      }
    }
    if (kind_ != Kind::kOthersWithout) {
      const auto against = FirstAgainst(rules_, went_);
      EXPECT_FALSE(against) << "message " << *against << " of " << Describe();
    }
    EXPECT_TRUE(told_.empty()) << told_;
  }
  std::size_t went_out() const { return went_.size(); }

 private:
  struct Program {
    bool has_pace = false;
    std::unique_ptr<Turns> turns;
    std::optional<Turn> turn;
  };

  PaceRules RandomRules() {
    const auto limit = [this](std::chrono::seconds within) {
      return random_() % 2 == 0 ? std::optional(MessageLimit{1 + static_cast<std::int64_t>(random_() % 6), within})
                                : std::nullopt;
    };
    PaceRules rules;
    rules.rate = limit(random_() % 2 == 0 ? 1s : 60s);
    rules.per_hour = limit(3600s);
    rules.per_day = limit(86400s);
    if (rules.per_day) rules.per_day->messages *= 4;
    rules.per_domain = limit(random_() % 2 == 0 ? 60s : 3600s);
    if (random_() % 2 == 0) rules.pause = {1 + static_cast<std::int64_t>(random_() % 4), 100s};
    if (rules.empty()) rules.rate = {2, 1s};
    return rules;
  }

  // Stretches of every length from a nanosecond to some hours.
  nanoseconds RandomTime() { return nanoseconds(static_cast<std::int64_t>(random_()) << (random_() % 13)) / 7; }

  void TimePasses() {
    nanoseconds passed(1);
    if (random_() % 3 == 0) passed = RandomTime();
    if (random_() % 200 == 0) passed = 1h;  // a suspend
    if (due_ && random_() % 2 == 0) passed = std::max<nanoseconds>(*due_ - clock_.Now(), nanoseconds(0));
    if (due_ && random_() % 8 == 0)
      passed = std::max<nanoseconds>(*due_ - clock_.Now(), nanoseconds(1)) - nanoseconds(1);
    due_.reset();
    true_time_ += passed;
    clock_.now += passed;
    if (random_() % 30 != 0) return;
    if (kind_ == Kind::kClockSet)
      clock_.set = random_() % 3 == 0 ? nanoseconds(0) : RandomTime() * (static_cast<int>(random_() % 9) - 4);
    if (kind_ == Kind::kRestarted) Restart();
  }

  // All programs end with the computer; for a while nothing goes out.
  void Restart() {
    for (Program& program : programs_) program.turns.reset(), program.turn.reset();
    clock_.now += 1s;
    true_time_ += 1s;
    clock_.booted = clock_.now;
    ++clock_.boot;
  }

  std::unique_ptr<Turns> Start(bool has_pace) {
    return std::make_unique<Turns>(has_pace ? rules_ : PaceRules{}, folder_ / "runs.pace", clock_,
                                   [this](const Error& error) { told_ += InOneLine(error); });
  }

  void BeginTurn(Program& program) {
    const Turn next{DomainOf(std::string(1, static_cast<char>('a' + random_() % 3)))};
    program.turn = next;
    if (!program.has_pace) return;
    const Wait wait = program.turns->Take(*program.turn);
    const bool nobody_else =
        std::ranges::count_if(programs_, [](const Program& each) { return each.turn && each.has_pace; }) == 1;
    if (!wait.why) {
      EXPECT_TRUE(IsAllowed(rules_, went_, next.domain, true_time_)) << Describe();
      return;
    }
    program.turn.reset();
    due_ = wait.until;
    EXPECT_GT(wait.until, clock_.Now());
    EXPECT_LE(wait.until - clock_.Now(), Longest()) << Describe();
    if (!nobody_else) return;
    // Not a nanosecond too late.
    const nanoseconds until = true_time_ + (wait.until - clock_.Now());
    EXPECT_FALSE(IsAllowed(rules_, went_, next.domain, until - nanoseconds(1))) << Describe();
    EXPECT_TRUE(IsAllowed(rules_, went_, next.domain, until)) << Describe();
  }

  void EndTurn(Program& program) {
    switch (random_() % 12) {
      case 0:
        program.turns->GiveBack(*program.turn);
        break;
      case 1:  // killed before it went out
        program.turns.reset();
        break;
      case 2:  // killed right before its first octet
        program.turns->GoesOut(*program.turn);
        program.turns.reset();
        break;
      case 3:  // killed as it went out
        GoOut(program);
        program.turns.reset();
        break;
      default:
        GoOut(program);
    }
    program.turn.reset();
  }

  void GoOut(Program& program) {
    program.turns->GoesOut(*program.turn);
    program.turns->Record();
    went_.push_back({true_time_, program.turn->domain});
  }

  nanoseconds Longest() const {
    nanoseconds longest{};
    for (const Rule& rule : LimitsOf(rules_)) longest = std::max(longest, rule.within);
    return rules_.pause ? std::max<nanoseconds>(longest, rules_.pause->pause) : longest;
  }

  std::string Describe() const {
    std::ostringstream text;
    for (const Rule& rule : LimitsOf(rules_)) {
      text << rule.messages << " in " << rule.within.count() << (rule.of_domain ? " a domain; " : "; ");
    }
    if (rules_.pause) text << rules_.pause->pause.count() << " s after " << rules_.pause->messages << "; ";
    for (const Went& each : went_)
      text << each.when.count() << " to " << static_cast<std::uint32_t>(each.domain) << ", ";
    text << "now " << true_time_.count();
    return text.str();
  }

  std::mt19937 random_;
  Kind kind_;
  PaceRules rules_;
  test::TemporaryFolder folder_;
  test::ZonedClock clock_;
  nanoseconds true_time_{};
  std::vector<Program> programs_;
  std::vector<Went> went_;
  std::optional<Moment> due_;
  std::string told_;
};

TEST(Turns, NoRuleIsBrokenInAnyStretchOfTime) {
  const struct {
    const char* name;
    World::Kind kind;
  } kCases[] = {
      {"one program, killed and begun again", World::Kind::kAlone},
      {"several at once", World::Kind::kSeveral},
      {"beside others without a pace", World::Kind::kOthersWithout},
      {"several, and the clock set back and forward", World::Kind::kClockSet},
      {"several, and the computer started again", World::Kind::kRestarted},
  };
  for (const auto& each : kCases) {
    std::size_t went_out = 0;
    for (unsigned seed = 1; seed <= 60 && !HasFailure(); ++seed) {
      SCOPED_TRACE(std::string(each.name) + ", seed " + std::to_string(seed));
      World world(seed, each.kind);
      world.Play(400);
      went_out += world.went_out();
    }
    EXPECT_GT(went_out, 2000U) << each.name;  // they were not merely kept from going
  }
}

}  // namespace
}  // namespace quillcast::run
