// Switching the machine off, and keeping it awake.
#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "platform/cancel.h"
#include "platform/environment.h"
#include "platform/result.h"

namespace quillcast::platform {

// The machine does not fall asleep while one of these is held.
class Awake {
 public:
  virtual ~Awake() = default;
};

// The port, behind which no test switches anything off.
class Power {
 public:
  virtual ~Power() = default;
  // Programs are closed without being asked to save. Fails where the system does not allow it, and where it is
  // cancelled: nobody is asked any more then, but what was asked before cannot be taken back. May take a while.
  virtual Result<void> PowerOff(const CancelToken& cancel) = 0;
  // Nothing where the system does not do that, or says nothing within a second: work goes on all the same. `why` is
  // for whoever looks what keeps it awake.
  virtual std::unique_ptr<Awake> StayAwake(const char* why) = 0;
};

// Whom the real side asks.
struct PowerPlaces {
  std::string bus;                            // address of the system's D-Bus: "unix:path=..."
  std::string service_manager;                // the program that is run where the login manager cannot be asked
  std::chrono::milliseconds patience{10000};  // for each step of asking
};

// Those of this system: DBUS_SYSTEM_BUS_ADDRESS, else where every system has its bus; and systemctl(1).
PowerPlaces PowerPlacesOf(const Environment& environment);

// Asks the login manager (org.freedesktop.login1.Manager.PowerOff), which knows what this user may; nobody is asked for
// a password, for nobody may be there. Only where it cannot be asked, for want of a bus or of itself, the service
// manager is. Whoever has answered "no", or has heard the question and says nothing, is not got round.
class clsExitWindows final : public Power {  // NOLINT(readability-identifier-naming): its given name
 public:
  explicit clsExitWindows(PowerPlaces places) : places_(std::move(places)) {}

  // kNotPermitted with what the system said; kTryAgain where it was cancelled, with whether somebody had been asked.
  // That it was taken does not mean that this program sees its end.
  Result<void> ExitWindows(const CancelToken& cancel);
  Result<void> PowerOff(const CancelToken& cancel) override { return ExitWindows(cancel); }
  // By the login manager's Inhibit, of sleep and of what it does when nobody is there.
  std::unique_ptr<Awake> StayAwake(const char* why) override;

 private:
  PowerPlaces places_;
};

}  // namespace quillcast::platform
