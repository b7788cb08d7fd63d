#include "account/thread_modes.h"

namespace quillcast::account {
namespace {

constexpr const char* kModeKey = "Mode";

}  // namespace

ThreadMode ThreadModeFrom(std::string_view stored) {
  if (stored == Name(ThreadMode::kNo)) return ThreadMode::kNo;
  return stored == Name(ThreadMode::kSingle) ? ThreadMode::kSingle : ThreadMode::kSecond;
}

Result<ThreadModes> ThreadModes::Load(const profile::SettingsStore& store) {
  ThreadModes modes;
  for (std::size_t i = 0; i < kThreadSections.size(); ++i) {
    const auto stored = store.Read(kThreadSections[i], kModeKey, Name(ThreadMode::kSecond));
    if (!stored) return stored.error();
    modes.modes_[i] = ThreadModeFrom(*stored);
  }
  return modes;
}

Result<void> ThreadModes::Save(profile::SettingsStore& store) const {
  for (std::size_t i = 0; i < kThreadSections.size(); ++i) {
    auto written = store.Write(kThreadSections[i], kModeKey, Name(modes_[i]));
    if (!written) return written;
  }
  return {};
}

int ComponentValue(ThreadMode mode) {
  constexpr std::array<int, 3> kValues = {2, 0, 1};
  return kValues[static_cast<std::size_t>(mode)];
}

}  // namespace quillcast::account
