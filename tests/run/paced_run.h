// A run that waits, by a clock that the test moves: for its pace, and to try somebody again.
#pragma once

#include <gtest/gtest.h>

#include "run/fake_sending.h"
#include "support/fake_clock.h"
#include "support/temporary_folder.h"

namespace quillcast::run {

using namespace std::chrono_literals;

class PacedRun : public testing::Test {
 protected:
  PacedRun() : template_(ALetter(), FromAda(), folder_.path(), clock_, entropy_) {}

  struct Setting {
    std::string domains = {};  // of each recipient, a letter each; "x" for one without an address
    PaceRules rules = {};
    std::size_t window = 1;
    RetryRules retries = {};
    bool slow_down = false;
    Fates fates = {};                         // all sent where it is empty
    std::map<std::int64_t, Fates> then = {};  // of the tries behind the first, by position
    std::set<std::int64_t> unreadable = {};   // whose row is damaged when it is read again
    std::map<std::int64_t, int> before = {};  // tries of a run that this one goes on with, by position; 0: unknown
    std::function<void(FakeCarrier&)> change = {};
    std::function<void(Turns&)> after = {};
  };

  void Run(const Setting& setting) {
    const Fates fates = setting.fates.empty() ? Fates(setting.domains.size(), 's') : setting.fates;
    platform::CancelToken& cancel = cancel_.emplace();
    FakeCarrier carrier(fates, setting.window, cancel);
    carrier.logs = true;
    carrier.then = setting.then;
    carrier.is_out = [this](std::int64_t) {
      EXPECT_TRUE(kept_.shown);
      went_.push_back(clock_.now - begin_);
    };
    carrier.waits_until = [this](platform::Instant due) {
      EXPECT_TRUE(kept_.shown);
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
    kept_.unreadable = setting.unreadable;
    kept_.tries = setting.before;
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
    const RunParts parts{
        template_,        std::ssize(setting.domains), {}, begin, {}, carrier, cancel, clock_, &turns, setting.retries,
        setting.slow_down};
    summary_ = SendLetters(parts, std::move(*entry), told_);
    carried_ = carrier.carried;
    if (setting.after) setting.after(turns);
    report_ = test::ReadAll(report);
    std::filesystem::remove_all(folder_.path());
    std::filesystem::create_directory(folder_.path());
    if (setting.retries.times == 0 && setting.unreadable.empty()) ExpectAllToldInOrder(setting);
  }

  void AnotherRunSendsTo(char domain) {
    Turns turns({}, folder_ / "runs.pace", clock_, [](const Error& error) { ADD_FAILURE() << Describe(error); });
    Turn turn{DomainOf(std::string(1, domain) + ".example")};
    turns.GoesOut(turn);
    turns.Record();
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

}  // namespace quillcast::run
