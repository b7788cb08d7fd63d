#include "run/dry_run.h"

#include "smtp/envelope_address.h"

namespace quillcast::run {
namespace {

class Composing {
 public:
  explicit Composing(const message::MessageTemplate& message) : message_(message) {}

  Result<bool> Compose(const recipients::Recipient& row, std::int64_t position) {
    const auto address = smtp::EnvelopeAddress(row.email());
    if (!address) {
      ++composed.unaddressed;
      return true;
    }
    const auto made = message_.Render(row, *address, position, rendered_);
    if (!made) return Error{made.error().failure, Say("{} (#{})", made.error().what, position), made.error().remedy};
    for (auto bytes = rendered_.Next(); !bytes || !bytes->empty(); bytes = rendered_.Next()) {
      if (!bytes) return bytes.error();
      composed.octets += bytes->size();
    }
    ++composed.messages;
    return true;
  }

  Composed composed;

 private:
  const message::MessageTemplate& message_;
  message::RenderedMessage rendered_;
};

}  // namespace

Result<Composed> ComposeAll(recipients::RowSource& rows, const message::MessageTemplate& message,
                            const std::optional<recipients::PartialRange>& range, const platform::CancelToken& cancel) {
  Composing composing(message);
  const auto walked = Walk(rows, range, &cancel, [&composing](const recipients::Recipient& row, std::int64_t position) {
    return composing.Compose(row, position);
  });
  if (!walked) return walked.error();
  if (*walked == recipients::Walked::kCancelled) {
    return Error{Failure::kTryAgain, "The dry run was interrupted.", ""};
  }
  return composing.composed;
}

}  // namespace quillcast::run
