// The commands of the Zoom menu.
#include <algorithm>
#include <array>

#include "desktop/document/html_editor.h"
#include "desktop/shell/commands.h"
#include "desktop/shell/shell.h"
#include "platform/text.h"

namespace quillcast::desktop {
namespace {

constexpr const char* kSection = "Window";
constexpr const char* kKey = "Zoom";
constexpr std::array<int, 11> kZoomSteps = {50, 67, 75, 80, 90, 100, 110, 125, 150, 175, 200};  // per cent
constexpr int kActualSize = 100;

// What is stored by hand may be anything.
int Zoom(const Shell& shell) {
  const auto stored = shell.program.settings.Read(kSection, kKey, "");
  const auto percent = platform::WholeNumberBetween(stored ? *stored : "", kZoomSteps.front(), kZoomSteps.back());
  return static_cast<int>(percent.value_or(kActualSize));
}

void SetZoom(Shell& shell, int percent) {
  shell.editor.SetZoom(percent / 100.0);
  shell.Say(Shell::tr("Zoom: %1 %").arg(percent));
  const auto kept = shell.program.settings.Write(kSection, kKey, std::to_string(percent));
  if (!kept) shell.Tell(kept);
}

}  // namespace

void ZoomIn(Shell& shell) {
  const auto* const next = std::upper_bound(kZoomSteps.begin(), kZoomSteps.end(), Zoom(shell));
  SetZoom(shell, next == kZoomSteps.end() ? kZoomSteps.back() : *next);
}

void ZoomOut(Shell& shell) {
  const auto* const here = std::lower_bound(kZoomSteps.begin(), kZoomSteps.end(), Zoom(shell));
  SetZoom(shell, here == kZoomSteps.begin() ? kZoomSteps.front() : *(here - 1));
}

void ZoomReset(Shell& shell) { SetZoom(shell, kActualSize); }

void RestoreZoom(Shell& shell) { shell.editor.SetZoom(Zoom(shell) / 100.0); }

}  // namespace quillcast::desktop
