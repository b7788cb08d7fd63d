#include "run/left_run.h"

#include <charconv>
#include <string>

namespace quillcast::run {
namespace {

constexpr const char* kSection = "Runs";
constexpr const char* kKey = "Left";

}  // namespace

Result<void> KeepLeftRun(profile::SettingsStore& settings, RunId run) {
  return settings.Write(kSection, kKey, std::to_string(run));
}

std::optional<RunId> LeftRun(const profile::SettingsStore& settings) {
  const std::string text = IgnoreErrors(settings.Read(kSection, kKey, ""), std::string());
  RunId run = 0;
  const auto read = std::from_chars(text.data(), text.data() + text.size(), run);
  return read.ec == std::errc() ? std::optional(run) : std::nullopt;
}

}  // namespace quillcast::run
