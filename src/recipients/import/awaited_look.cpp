#include "recipients/import/awaited_look.h"

#include <utility>

namespace quillcast::recipients {

AwaitedFields AwaitedLook::TakeFields(const LookChoices& looked_for) {
  AwaitedFields taken = std::exchange(fields_, {});
  return looked_for == choices_ ? taken : AwaitedFields{};
}

AwaitedDeed AwaitedLook::TakeDeed(const ImportForm& now) {
  const AwaitedDeed taken = std::exchange(deed_, AwaitedDeed::kNone);
  const bool is_same = now.file == form_.file && now.group == form_.group && now.mode == form_.mode;
  return is_same ? taken : AwaitedDeed::kNone;
}

}  // namespace quillcast::recipients
