// What is to happen in a turn of the event loop of its own.
#pragma once

#include <QTimer>
#include <utility>

namespace quillcast::desktop {

// Calls `act` in a moment, unless `context` is gone by then. By a timer that has to run out: one of no time, and a
// queued call, are events that were posted, and while such an event is handled the web engine gets none of its own, so
// that whoever waits for a page there waits in vain.
template <typename Act>
void Soon(QObject* context, Act act) {
  QTimer::singleShot(1, context, std::move(act));
}

}  // namespace quillcast::desktop
