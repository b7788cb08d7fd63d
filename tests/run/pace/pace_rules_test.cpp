#include "run/pace/pace_rules.h"

#include <gtest/gtest.h>

#include "run/pace/local_time.h"
#include "run/pace/pace_words.h"
#include "run/pace/zoned_clock.h"

namespace quillcast::run {
namespace {

using namespace std::chrono_literals;
using test::ZonedClock;

// What the rules of the texts are, written as a person would say it; or the complaint.
std::string Said(const PaceTexts& texts) {
  const ZonedClock clock;
  const auto pace = ReadPace(texts, clock);
  if (!pace) return InOneLine(pace.error());
  const PaceRules* rules = &pace->rules;
  std::string said;
  for (const auto& limit : {rules->rate, rules->per_hour, rules->per_day, rules->per_domain}) {
    if (limit) said += std::to_string(limit->messages) + " in " + std::to_string(limit->within.count()) + " s;";
  }
  if (rules->hours) {
    said += std::to_string(rules->hours->from.count()) + " to " + std::to_string(rules->hours->until.count()) + " min;";
  }
  if (rules->pause) {
    said += std::to_string(rules->pause->pause.count()) + " s after " + std::to_string(rules->pause->messages) + ";";
  }
  EXPECT_EQ(rules->empty(), said.empty());
  if (pace->per_connection > 0) said += std::to_string(pace->per_connection) + " a connection;";
  if (pace->connections != 1) said += std::to_string(pace->connections) + " connections;";
  return said;
}

TEST(PaceRules, AreReadOrComplainedAbout) {
  const std::string no_rate =
      "\" is no rate. Write a number of messages from 1 to 1,000,000, \"/\", and s, min, h or "
      "day, for example 30/min.";
  const std::string no_hours =
      "\" are no hours of the day. Write when they begin and when they end, from 0 to 24, for "
      "example 9-17, 8:30-17:30 or 22-6. The whole day is none.";
  const std::string no_pause =
      "\" is no pause. Write after how many messages, \":\", and how many seconds up to 86,400, "
      "for example 100:60.";
  const std::string no_connections = "\" is no number of connections. Write a whole number from 1 to 50.";
  const std::string no_quota = "\" is no number of messages. Write a whole number from 1 to 1,000,000.";
  const struct {
    PaceTexts texts;
    std::string said;
  } kCases[] = {
      {{}, ""},
      {{.rate = "  "}, ""},
      {{.rate = "none", .quota_day = "None", .hours = "none", .per_connection = "none"}, ""},
      {{.per_connection = "50"}, "50 a connection;"},
      {{.per_connection = "0"}, "\"0" + no_quota},
      {{.connections = "none"}, ""},
      {{.connections = "1"}, ""},
      {{.connections = " 50 "}, "50 connections;"},
      {{.connections = "0"}, "\"0" + no_connections},
      {{.connections = "51"}, "\"51" + no_connections},
      {{.rate = "30/min", .quota_hour = "500", .quota_day = " 2000 ", .domain_rate = "5/s"},
       "30 in 60 s;500 in 3600 s;2000 in 86400 s;5 in 1 s;"},
      {{.rate = " 200 / H "}, "200 in 3600 s;"},
      {{.rate = "1000000/day"}, "1000000 in 86400 s;"},
      {{.rate = "1000001/day"}, "\"1000001/day" + no_rate},
      {{.rate = "0/min"}, "\"0/min" + no_rate},
      {{.rate = "-3/min"}, "\"-3/min" + no_rate},
      {{.rate = "1.5/s"}, "\"1.5/s" + no_rate},
      {{.rate = "30"}, "\"30" + no_rate},
      {{.rate = "30/week"}, "\"30/week" + no_rate},
      {{.rate = "30/min/s"}, "\"30/min/s" + no_rate},
      {{.rate = "\x1b[2J/s"}, "\"?[2J/s" + no_rate},
      {{.domain_rate = "x"}, "\"x" + no_rate},
      {{.quota_hour = "1,000"}, "\"1,000" + no_quota},
      {{.quota_day = "0"}, "\"0" + no_quota},
      {{.hours = "9-17"}, "540 to 1020 min;"},
      {{.hours = "8:30 - 17:05"}, "510 to 1025 min;"},
      {{.hours = "22-6"}, "1320 to 360 min;"},
      {{.hours = "18-24"}, "1080 to 1440 min;"},
      {{.hours = "9-9"}, "\"9-9" + no_hours},
      {{.hours = "0-24"}, "\"0-24" + no_hours},
      {{.hours = "24-6"}, "\"24-6" + no_hours},
      {{.hours = "9-25"}, "\"9-25" + no_hours},
      {{.hours = "9:5-17"}, "\"9:5-17" + no_hours},
      {{.hours = "9:60-17"}, "\"9:60-17" + no_hours},
      {{.hours = "9"}, "\"9" + no_hours},
      {{.pause_after = "100:60"}, "60 s after 100;"},
      {{.pause_after = "100:86401"}, "\"100:86401" + no_pause},
      {{.pause_after = "0:5"}, "\"0:5" + no_pause},
      {{.pause_after = "100"}, "\"100" + no_pause},
      {{.at = "9"}, "There is no time \"9\". Write HH:MM for the next time that it is so late, or YYYY-MM-DD HH:MM."},
      {{.rate = "x", .hours = "y"}, "\"x" + no_rate},
  };
  for (const auto& each : kCases) EXPECT_EQ(Said(each.texts), each.said);
}

TEST(PaceRules, AreSaidInWords) {
  struct Case {
    PaceTexts texts;
    const char* words;
  };
  const platform::SystemClock clock;
  for (const Case& c : std::initializer_list<Case>{
           {{}, ""},
           {{.connections = "1", .retries = "0", .retry_after = "1h", .slow_down = "no"}, ""},
           {{.rate = "30/min", .connections = "4", .retries = "3"}, "30 a minute, 4 connections, 3 retries"},
           {{.rate = "5/s", .quota_hour = "500", .quota_day = "2000", .domain_rate = "20/h", .hours = "9-17:30"},
            "5 a second, 500 an hour, 2,000 a day, 20 an hour to each domain, from 9:00 to 17:30"},
           {{.pause_after = "100:60", .per_connection = "50", .retries = "1", .slow_down = "yes"},
            "a pause after 100 messages, 50 messages over each connection, 1 retry, slower where the server asks for "
            "it"},
           {{.rate = "30/min", .network_wait = "90s"}, "30 a minute, a wait of 90 seconds for a lost network"},
           {{.network_wait = "1min"}, "a wait of 1 minute for a lost network"},
           {{.network_wait = "2h"}, "a wait of 2 hours for a lost network"},
           {{.network_wait = "none"}, ""},
       }) {
    const auto pace = ReadPace(c.texts, clock);
    ASSERT_TRUE(pace) << c.words;
    std::string words;
    for (const auto& word : WordsOf(*pace)) words += (words.empty() ? "" : ", ") + word.InEnglish();
    EXPECT_EQ(words, c.words);
  }
}

TEST(PaceRules, HoursAreThoseOfTheClockOnTheWall) {
  ZonedClock clock;
  const struct {
    const char* name;
    const char* hours;
    const char* from;
    const char* next;
  } kCases[] = {
      {"within", "9-17", "2026-01-15 08:00:30", "2026-01-15 08:00:30"},
      {"too early", "9-17", "2026-01-15 07:59:59", "2026-01-15 08:00"},
      {"at their end", "9-17", "2026-01-15 16:00", "2026-01-16 08:00"},
      {"in summer", "9-17", "2026-07-15 05:00", "2026-07-15 07:00"},
      {"over midnight, before it", "22-6", "2026-01-15 22:59", "2026-01-15 22:59"},
      {"over midnight, after it", "22-6", "2026-01-16 04:59", "2026-01-16 04:59"},
      {"over midnight, at their end", "22-6", "2026-01-16 05:00", "2026-01-16 21:00"},
      {"until midnight", "18-24", "2026-01-15 23:00", "2026-01-16 17:00"},
      // 29 March: at 1:00 UTC it is 3 o'clock, and no longer 2.
      {"the night is shorter", "9-17", "2026-03-28 16:00", "2026-03-29 07:00"},
      {"they begin in the hour that is left out", "2:30-5", "2026-03-29 00:00", "2026-03-29 01:00"},
      {"the hour that is left out holds all of them", "2:10-2:50", "2026-03-29 00:00", "2026-03-30 00:10"},
      // 25 October: at 1:00 UTC it is 2 o'clock once more.
      {"the night is longer", "9-17", "2026-10-24 15:00", "2026-10-25 08:00"},
      {"the hour that comes twice", "2:10-2:50", "2026-10-25 00:50", "2026-10-25 01:10"},
  };
  for (const auto& each : kCases) {
    const auto hours = ReadHours(each.hours);
    ASSERT_TRUE(hours) << each.name;
    EXPECT_EQ(NextWithin(**hours, ZonedClock::At(each.from), clock), ZonedClock::At(each.next)) << each.name;
  }
}

TEST(PaceRules, MomentsAreThoseOfTheClockOnTheWall) {
  ZonedClock clock;
  const struct {
    const char* text;
    const char* now;
    const char* moment;  // none where there is no such time
  } kCases[] = {
      {"14:30", "2026-01-15 08:00", "2026-01-15 13:30"},
      {"14:30", "2026-01-15 13:30", "2026-01-15 13:30"},
      {"14:30", "2026-01-15 13:30:01", "2026-01-16 13:30"},
      {"0:15", "2026-01-15 22:59", "2026-01-15 23:15"},
      {"14:30", "2026-03-28 14:00", "2026-03-29 12:30"},
      {"2:30", "2026-03-28 23:00", "2026-03-30 00:30"},
      {"2:30", "2026-10-24 23:00", "2026-10-25 00:30"},
      {"2:30", "2026-10-25 00:45", "2026-10-26 01:30"},
      {"2026-12-24 18:00", "2026-01-15 08:00", "2026-12-24 17:00"},
      {"2026-12-24T18:00", "2026-01-15 08:00", "2026-12-24 17:00"},
      {"2020-02-29 08:00", "2026-01-15 08:00", "2020-02-29 07:00"},
      {"2026-03-29 02:30", "2026-01-15 08:00", nullptr},
      {"2026-02-29 08:00", "2026-01-15 08:00", nullptr},
      {"26-02-28 08:00", "2026-01-15 08:00", nullptr},
      {"2026-02-28", "2026-01-15 08:00", nullptr},
      {"24:00", "2026-01-15 08:00", nullptr},
      {"noon", "2026-01-15 08:00", nullptr},
  };
  for (const auto& each : kCases) {
    clock.now = ZonedClock::At(each.now);
    const auto moment = ReadMoment(each.text, clock);
    ASSERT_EQ(static_cast<bool>(moment), each.moment != nullptr) << each.text << " at " << each.now;
    EXPECT_TRUE(!moment || **moment == ZonedClock::At(each.moment)) << each.text << " at " << each.now;
  }
}

}  // namespace
}  // namespace quillcast::run
