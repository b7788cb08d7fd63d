// Who takes a run's letters to their recipients.
#pragma once

#include <cstdint>
#include <optional>

#include "platform/cancel.h"
#include "platform/clock.h"
#include "platform/result.h"
#include "smtp/client/client_options.h"
#include "smtp/client/job_source.h"

namespace quillcast::run {

// What becomes of the letters: a server takes them, or they are kept in files, and nothing is sent.
enum class Delivery : std::uint8_t { kSent, kWritten };

class Carrier {
 public:
  virtual ~Carrier() = default;
  // Takes jobs until there are none left, or nothing is gained by going on, and tells each one's outcome in the order
  // taken, as smtp::Client::Run does.
  virtual void Carry(smtp::JobSource& letters) = 0;
  // Decides the words of report and summary. An outcome says kSent of what was written too: it was delivered.
  virtual Delivery delivery() const { return Delivery::kSent; }
  // Why it took no more of them, where its outcomes do not say it.
  virtual std::optional<Error> trouble() const { return {}; }
};

// Over SMTP, as these options say.
class SmtpCarrier final : public Carrier {
 public:
  SmtpCarrier(smtp::ClientOptions options, const platform::Clock& clock, const platform::CancelToken& cancel)
      : options_(std::move(options)), clock_(clock), cancel_(cancel) {}
  void Carry(smtp::JobSource& letters) override;

 private:
  const smtp::ClientOptions options_;
  const platform::Clock& clock_;
  const platform::CancelToken& cancel_;
};

}  // namespace quillcast::run
