// Keeps a run's letters in files in place of sending them: for whoever sends by other means, or wants to look first.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>

#include "platform/cancel.h"
#include "platform/clock.h"
#include "platform/file_attributes.h"
#include "platform/result.h"
#include "run/carrier.h"

namespace quillcast::run {

// Puts one letter where it is kept, whole or not at all.
using KeepLetter = std::function<Result<void>(const smtp::Job& letter)>;

// Each in a file of its own in the folder, which is made where it is missing: "000123 ada@example.org.eml", by the
// place in the group's list. Nothing that exists, a link included, is written over, and nothing is written elsewhere.
Result<KeepLetter> IntoFolder(const std::filesystem::path& folder, const platform::OwnFiles& own);

// All in one file, which must not exist: a mailbox of RFC 4155, its lines that begin with "From " quoted as "mboxrd"
// does (">From ", ">>From "). A letter that cannot be written whole is taken out again.
Result<KeepLetter> IntoMbox(const std::filesystem::path& file, const platform::OwnFiles& own,
                            const platform::Clock& clock);

// What keeps one letter from being written (a full disk, a file that is there) keeps the others from it as well, so it
// is the last that is tried.
class FileCarrier final : public Carrier {
 public:
  FileCarrier(KeepLetter keep, const platform::CancelToken& cancel) : keep_(std::move(keep)), cancel_(cancel) {}
  void Carry(smtp::JobSource& letters) override;
  Delivery delivery() const override { return Delivery::kWritten; }
  std::optional<Error> trouble() const override { return trouble_; }

 private:
  const KeepLetter keep_;
  const platform::CancelToken& cancel_;
  std::optional<Error> trouble_;
};

}  // namespace quillcast::run
