// Switching the machine off.
#pragma once

#include "platform/result.h"

namespace quillcast::platform {

// The port, behind which no test switches anything off.
class Power {
 public:
  virtual ~Power() = default;
  // Programs are closed without being asked to save. Fails where the system does not allow it.
  virtual Result<void> PowerOff() = 0;
};

// Asks the system's service manager, which asks the login manager whether this user may.
class SystemPower final : public Power {
 public:
  Result<void> PowerOff() override;
};

}  // namespace quillcast::platform
