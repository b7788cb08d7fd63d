// A run that keeps to a pace, by a clock that the test moves: who goes when, and that all of it is told in the order of
// the list all the same.
#include <gtest/gtest.h>

#include <random>

#include "run/fake_sending.h"
#include "support/fake_clock.h"
#include "support/temporary_folder.h"

namespace quillcast::run {
namespace {

using namespace std::chrono_literals;

class PacedRun : public testing::Test {
 protected:
  PacedRun() : template_(Document(), Options(), folder_.path(), clock_, entropy_) {}

  static document::MessageDocument Document() {
    document::MessageDocument document;
    document.subject = "Hello";
    document.html = "<p>Dear $*MergeEmail*$</p>";
    return document;
  }
  static message::MessageOptions Options() {
    message::MessageOptions options;
    options.sender_address = *smtp::Address::From("ada@example.org");
    return options;
  }

  struct Setting {
    std::string domains = {};  // of each recipient, a letter each; "x" for one without an address
    PaceRules rules = {};
    std::size_t window = 1;
    Fates fates = {};  // all sent where it is empty
    std::function<void(FakeCarrier&)> change = {};
  };

  void Run(const Setting& setting) {
    const Fates fates = setting.fates.empty() ? Fates(setting.domains.size(), 's') : setting.fates;
    platform::CancelToken& cancel = cancel_.emplace();
    FakeCarrier carrier(fates, setting.window, cancel);
    carrier.logs = true;
    carrier.is_out = [this](std::int64_t) { went_.push_back(clock_.now - begin_); };
    carrier.waits_until = [this](platform::Instant due) {
      const auto waited = std::clamp<platform::Duration>(due - clock_.monotonic, 1ns, 500ms);
      clock_.monotonic += waited;
      clock_.now += waited;
    };
    if (setting.change) setting.change(carrier);
    std::vector<std::string> addresses;
    for (const char domain : setting.domains) {
      const std::string position = std::to_string(addresses.size() + 1);
      addresses.push_back(domain == 'x' ? "nobody" : "r" + position + "@" + domain + ".example");
    }
    auto rows = std::make_unique<FakeRows>(std::move(addresses));
    rows->is_copy = true;
    rows_ = rows.get();
    told_ = {};
    kept_ = {};
    went_.clear();
    begin_ = clock_.now;
    const BeginRun begin = [&](const std::string&) -> Result<std::unique_ptr<JournalledRun>> {
      return std::unique_ptr<JournalledRun>(std::make_unique<FakeRun>(std::move(rows), std::nullopt, kept_));
    };
    Turns turns(setting.rules, folder_ / "runs.pace", clock_,
                [](const Error& error) { ADD_FAILURE() << Describe(error); });
    auto entry = BeginHistoryEntry(folder_.path(), clock_, "Hello");
    ASSERT_TRUE(entry);
    const std::filesystem::path report = entry->report.path();
    entry->message = folder_ / "nowhere" / "copy.eml";  // waits for no disk
    const RunParts parts{template_, std::ssize(setting.domains), {}, begin, {}, carrier, cancel, &turns};
    summary_ = SendLetters(parts, std::move(*entry), told_);
    carried_ = carrier.carried;
    report_ = test::ReadAll(report);
    std::filesystem::remove_all(folder_.path());
    std::filesystem::create_directory(folder_.path());
    ExpectAllToldInOrder(setting);
  }

  void ExpectAllToldInOrder(const Setting& setting) {
    EXPECT_FALSE(summary_.stopped);
    auto told = told_.order;
    std::ranges::sort(told);
    EXPECT_EQ(told, Places(1, std::ssize(setting.domains))) << "none lost, none twice";
    EXPECT_TRUE(std::ranges::is_sorted(told_.order.begin(), told_.order.end() - told_.not_tried));
    EXPECT_TRUE(std::ranges::is_sorted(told_.order.end() - told_.not_tried, told_.order.end()));
    EXPECT_EQ(summary_.not_tried, told_.not_tried);
    auto lines = carried_;
    std::ranges::sort(lines);
    std::size_t at = 0;
    for (const std::int64_t position : lines) {
      at = report_.find("S: " + std::to_string(position) + "\r\n", at);
      ASSERT_NE(at, std::string::npos) << "the report has the order of the list";
      ASSERT_TRUE(setting.fates.size() || report_.substr(at).find("\r\nMessage sent") < 12) << "each behind its lines";
    }
    for (std::int64_t position = 1; position <= std::ssize(setting.domains); ++position) {
      const bool was_carried = std::ranges::find(carried_, position) != carried_.end();
      EXPECT_EQ(kept_.states.contains(position) && kept_.states[position] != ResultState::kNotTried,
                was_carried || told_.states.contains(position));
    }
  }

  std::string Times() const {
    std::string text;
    for (std::size_t n = 0; n < went_.size(); ++n) {
      const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(went_[n]).count();
      text += std::to_string(carried_[n]) + "@" + std::to_string(seconds) + " ";
    }
    return text;
  }

  test::TemporaryFolder folder_;
  test::FakeClock clock_;
  test::CountingEntropy entropy_;
  message::MessageTemplate template_;
  std::optional<platform::CancelToken> cancel_;
  Told told_;
  RunSummary summary_;
  Kept kept_;
  FakeRows* rows_ = nullptr;
  std::vector<std::int64_t> carried_;
  std::chrono::system_clock::time_point begin_;
  std::vector<platform::Duration> went_;
  std::string report_;
};

TEST_F(PacedRun, GoesByItsRulesAndSaysWhatItWaitsFor) {
  const Moment now = clock_.now;  // 09:05:07
  const struct {
    std::string domains;
    PaceRules rules = {};
    std::string times;  // who went after how many seconds
    std::vector<std::string> waits;
  } kCases[] = {
      {"aaaa", {}, "1@0 2@0 3@0 4@0 ", {}},
      {"aaaa",
       {.rate = MessageLimit{2, 60s}},
       "1@0 2@0 3@60 4@60 ",
       {"2 messages have gone out within a minute, which is the limit."}},
      {"aaa", {.rate = MessageLimit{3, 60s}}, "1@0 2@0 3@0 ", {}},
      {"aaxa", {.pause = PauseAfter{2, 90s}}, "1@0 2@0 4@90 ", {"A pause after 2 messages."}},
      {"aaabbc",
       {.per_domain = MessageLimit{1, 3600s}},
       "1@0 4@0 6@0 2@3600 5@3600 3@7200 ",
       {"The domains of those who are next have had their 1 within an hour."}},
      {"aabab",
       {.rate = MessageLimit{2, 1s}, .per_domain = MessageLimit{1, 60s}},
       "1@0 3@0 2@60 5@60 4@120 ",
       {"2 messages have gone out within a second, which is the limit.",
        "The domains of those who are next have had their 1 within a minute.",
        "2 messages have gone out within a second, which is the limit.",
        "The domains of those who are next have had their 1 within a minute."}},
      {"aa", {.pause = PauseAfter{2, 90s}}, "1@0 2@0 ", {}},
      {"aa", {.begin = now + 30s}, "1@30 2@30 ", {"It is to begin then."}},
      {"aa",
       {.rate = MessageLimit{1, 60s}, .hours = HoursOfDay{8h, 9h + 6min}},
       "1@0 2@82493 ",
       {"Messages go out from 8:00 to 9:06."}},
  };
  for (const auto& each : kCases) {
    for (const std::size_t window : {1, 3}) {
      SCOPED_TRACE(each.domains + " window " + std::to_string(window));
      clock_.now = now;
      Run({.domains = each.domains, .rules = each.rules, .window = window});
      EXPECT_EQ(Times(), each.times);
      EXPECT_EQ(told_.waits, each.waits);
    }
  }
}

// Rules, lists and windows at random, each ended at a random step by a cancel, or not.
TEST_F(PacedRun, BreaksNoRuleAndLosesNobody) {
  std::mt19937 random(7);
  const auto limit = [&random](std::chrono::seconds within) {
    return random() % 2 == 0 ? std::optional(MessageLimit{1 + static_cast<std::int64_t>(random() % 4), within})
                             : std::nullopt;
  };
  for (int round = 0; round < 300 && !HasFailure(); ++round) {
    SCOPED_TRACE(round);
    Setting setting{.window = 1 + random() % 4};
    for (std::size_t n = 5 + random() % 25; n > 0; --n) {
      setting.domains += "aaaabbcx"[random() % 8];
      setting.fates += "sssru"[random() % 5];
    }
    setting.rules.rate = limit(1s);
    setting.rules.per_domain = limit(60s);
    if (random() % 3 == 0) setting.rules.pause = PauseAfter{2, 5s};
    const int cancelled_at = random() % 2 == 0 ? static_cast<int>(random() % 60) : 0;
    setting.change = [&](FakeCarrier& carrier) {
      carrier.withdraws = random() % 2 == 0;
      carrier.at_step = [this, cancelled_at](int step) {
        if (step == cancelled_at) cancel_->Request();
      };
    };
    Run(setting);
    const auto broken = [this](const std::optional<MessageLimit>& rule, const std::vector<platform::Duration>& times) {
      if (!rule) return false;
      for (std::size_t n = 0; n + static_cast<std::size_t>(rule->messages) < times.size(); ++n) {
        if (times[n + static_cast<std::size_t>(rule->messages)] - times[n] < rule->within) return true;
      }
      return false;
    };
    EXPECT_FALSE(broken(setting.rules.rate, went_)) << Times();
    for (const char domain : {'a', 'b', 'c'}) {
      std::vector<platform::Duration> there;
      for (std::size_t n = 0; n < went_.size(); ++n) {
        if (setting.domains[static_cast<std::size_t>(carried_[n] - 1)] == domain) there.push_back(went_[n]);
      }
      EXPECT_FALSE(broken(setting.rules.per_domain, there)) << Times();
    }
  }
}

// Those who are kept back, and the results that wait for one of them, are few, however long the list.
TEST_F(PacedRun, HoldsLittleWhileItWaits) {
  std::string many(1001, 'a');
  for (char domain = 'b'; domain <= 'm'; ++domain) many.append(1000, domain);
  const struct {
    std::string domains;
    MessageLimit per_domain;
    int read;  // when nothing more may go out
  } kCases[] = {
      {std::string(1500, 'a') + "b", {1, 1s}, 1 + 1000},
      {many, {1000, 1h}, 1000 + 10'000},
  };
  for (const auto& each : kCases) {
    int read = 0;
    Run({.domains = each.domains, .rules = {.per_domain = each.per_domain}, .change = [&](FakeCarrier& carrier) {
           carrier.waits_until = [this, &read, waits = carrier.waits_until](platform::Instant due) {
             if (read == 0) read = rows_->asked;
             waits(due);
           };
         }});
    EXPECT_EQ(read, each.read);
    EXPECT_EQ(summary_.sent, std::ssize(each.domains));
  }
}

}  // namespace
}  // namespace quillcast::run
