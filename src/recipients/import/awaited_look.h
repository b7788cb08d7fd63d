// What the person pressed while the first lines of a file were looked at, and that waits for what the look shows.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "recipients/import/import_checks.h"
#include "recipients/import/kept_mappings.h"
#include "recipients/import/open_lines.h"

namespace quillcast::recipients {

// What the lists of fields are to be filled with.
struct AwaitedFields {
  enum class Source : std::uint8_t { kNothing, kFirstLine, kHeadings, kMapping };
  Source source = Source::kNothing;
  KeptMapping mapping = {};  // of kMapping

  bool operator==(const AwaitedFields&) const = default;
};

// How a file is read, and which of it.
struct LookChoices {
  std::string file;
  ReadingOptions reading;
  bool quotes = false;
  bool skips = false;

  bool operator==(const LookChoices&) const = default;
};

// What is to be done with the fields.
enum class AwaitedDeed : std::uint8_t { kNone, kImport, kKeep };

// One choice of the fields waits at most, and one deed behind it. Each is carried out for what it was pressed for or
// not at all: the fields for the file and its reading; the deed for the file, the group and the mode, and only where
// nothing was pressed, chosen, dropped or typed since. The lists are empty while fields wait, so that those that are
// given up leave nothing to import.
class AwaitedLook {
 public:
  // In the place of the fields that wait.
  void Choose(AwaitedFields fields) { fields_ = std::move(fields); }
  // What they were chosen for, which may itself hang on the mapping that waits.
  void ChosenFor(LookChoices choices) { choices_ = std::move(choices); }
  void Do(AwaitedDeed deed, const ImportForm& form) {
    deed_ = deed;
    form_ = form;
  }
  AwaitedDeed deed() const { return deed_; }
  void DropDeed() { deed_ = AwaitedDeed::kNone; }
  void Drop() { *this = {}; }

  // The mapping that waits for a look that is for these choices; null where none does.
  const KeptMapping* MappingFor(const LookChoices& choices) const {
    const bool waits = fields_.source == AwaitedFields::Source::kMapping && choices == choices_;
    return waits ? &fields_.mapping : nullptr;
  }

  // What is taken waits no more. Nothing is given where the look was for other choices.
  AwaitedFields TakeFields(const LookChoices& looked_for);
  // None where what was pressed for is another by now.
  AwaitedDeed TakeDeed(const ImportForm& now);

 private:
  AwaitedFields fields_;
  LookChoices choices_;
  AwaitedDeed deed_ = AwaitedDeed::kNone;
  ImportForm form_;
};

}  // namespace quillcast::recipients
