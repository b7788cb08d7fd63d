// What the benches of windows share: the time, and an event loop that runs until something has come about.
#pragma once

#include <QCoreApplication>
#include <QTimer>
#include <chrono>

namespace quillcast {

// Seconds of the monotonic clock.
inline double Now() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration<double>(now).count();
}

// Looks again after each event, and every 5 ms.
template <typename Condition>
void WaitFor(const Condition& condition) {
  QTimer look;
  look.start(5);
  while (!condition()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

}  // namespace quillcast
