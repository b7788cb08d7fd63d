#include "cli/pace_options.h"

#include "run/pace/pace_words.h"

namespace quillcast::cli {

Result<run::RunPace> TakePace(Context& context, const PaceOptions& options, run::PreparedRun& prepared) {
  prepared.Ask(options.texts);
  auto pace = prepared.Pace();
  if (!pace) return pace;
  if (const auto at_once = run::BeginsAtOnce(pace->rules, context.clock)) context.output.Note(at_once->InEnglish());
  if (pace->retries.times > 0) return pace;
  const auto after = run::ReadDuration(options.texts.retry_after);
  if (!after || !*after) return pace;
  return Error{Failure::kUsage, "--retry-after says when, and nothing says how often.", "Add --retries N."};
}

void AddPaceOptions(CLI::App& command, PaceOptions& options) {
  run::PaceTexts& texts = options.texts;
  const auto add = [&command](const char* name, std::string& text, const char* type, const char* what) {
    command.add_option(name, text, what)->type_name(type)->group("Pace (\"none\" for none where the account has one)");
  };
  add("--rate", texts.rate, "N/UNIT",
      "At most so many messages in any second, minute, hour or day: 5/s, 30/min, 200/h");
  add("--quota-hour", texts.quota_hour, "N", "At most so many messages in any hour");
  add("--quota-day", texts.quota_day, "N", "At most so many messages in any day");
  add("--domain-rate", texts.domain_rate, "N/UNIT", "At most so many to each domain of recipients, as --rate has it");
  add("--hours", texts.hours, "FROM-UNTIL", "Only at these hours of the day, local time: 9-17, 8:30-17:30, 22-6");
  add("--pause-after", texts.pause_after, "N:SECONDS", "Pause for so many seconds after each N messages");
  add("--per-connection", texts.per_connection, "N", "At most so many messages over one connection");
  add("--connections", texts.connections, "N", "Over so many connections at a time, 1 to 50; without it over one");
  add("--retries", texts.retries, "N",
      "Try who was deferred, or could not be reached, so many times again, behind the list; without it never");
  add("--retry-after", texts.retry_after, "TIME",
      "For the first time after so long (5min without it), then after twice as long each time, up to 1h; always after "
      "so "
      "long where that is 1h to 24h");
  command
      .add_flag("--slow-down", texts.slow_down,
                "Where the server asks for fewer messages (421, 450, 451 or 452 with such words), go half as "
                "fast as in "
                "the last minute (counted over a second at least), at most once in 10 s, and never slower than 1 a "
                "minute; then 10 % faster each minute without a complaint. "
                "=no where the account says yes")
      ->group("Pace (\"none\" for none where the account has one)");
  add("--network-wait", texts.network_wait, "TIME",
      "Where the way to the server is lost under way, wait so long for it, and go on by itself");
  add("--at", texts.at, "TIME", "Begin to send then: HH:MM or 'YYYY-MM-DD HH:MM', local time");
}

}  // namespace quillcast::cli
