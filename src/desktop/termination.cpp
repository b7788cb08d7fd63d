#include "desktop/termination.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <QSocketNotifier>
#include <array>
#include <atomic>
#include <csignal>
#include <cstdint>

#include "platform/result.h"

namespace quillcast::desktop {
namespace {

constexpr std::array<int, 3> kSignals = {SIGTERM, SIGINT, SIGHUP};

std::atomic<int> wake_up = -1;  // all that a signal handler knows

void Note(int) {
  const std::uint64_t one = 1;
  IgnoreErrors(::write(wake_up, &one, sizeof one));  // an earlier one is still to be read
}

void Handle(void (*handler)(int)) {
  struct sigaction action = {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;
  for (const int number : kSignals) ::sigaction(number, &action, nullptr);
}

}  // namespace

Termination::Termination() {
  wake_up = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (wake_up < 0) return;  // then the signals end the program as they always do
  auto* notifier = new QSocketNotifier(wake_up, QSocketNotifier::Read, this);
  connect(notifier, &QSocketNotifier::activated, this, [this] {
    std::uint64_t count = 0;
    if (::read(wake_up, &count, sizeof count) > 0) emit Asked();
  });
  Handle(&Note);
}

Termination::~Termination() {
  if (wake_up < 0) return;
  Handle(SIG_DFL);
  ::close(wake_up.exchange(-1));
}

}  // namespace quillcast::desktop
