#include "run/left_run.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <charconv>
#include <string>

#include "platform/text.h"

namespace quillcast::run {
namespace {

constexpr const char* kSection = "Runs";
constexpr const char* kKey = "Left";
constexpr std::size_t kMost = 20;

}  // namespace

Result<void> KeepLeftRun(profile::SettingsStore& settings, RunId run) {
  std::vector<RunId> runs = LeftRuns(settings);
  std::erase(runs, run);
  runs.push_back(run);
  if (runs.size() > kMost) runs.erase(runs.begin(), runs.end() - kMost);
  return settings.Write(kSection, kKey, fmt::format("{}", fmt::join(runs, ",")));
}

std::vector<RunId> LeftRuns(const profile::SettingsStore& settings) {
  const std::string text = IgnoreErrors(settings.Read(kSection, kKey, ""), std::string());
  std::vector<RunId> runs;
  for (const std::string_view part : platform::Split(text, ',')) {
    RunId run = 0;
    if (std::from_chars(part.data(), part.data() + part.size(), run).ec == std::errc()) runs.push_back(run);
  }
  return runs;
}

}  // namespace quillcast::run
