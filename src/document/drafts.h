// Messages that were not finished, kept in the data folder until they are taken up again.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "document/message_document.h"

namespace quillcast::document {

// A message with everything that the window knows of it.
struct Draft {
  MessageDocument document = {};    // its base folder is where relative references start from
  bool is_changed = true;           // the body, since it was opened, saved or begun
  std::filesystem::path file = {};  // the body's own; empty for one that has none
  std::string group = {};
  std::string method = {};

  // A subject, a file or a change to the body is work; a group or an option that was chosen is a moment's doing.
  bool IsWorthKeeping() const;
  bool operator==(const Draft&) const = default;
};

// The one that is being written is "Autosave.htm", with its other fields in "Autosave.fields". What an earlier session
// or message left is offered, the oldest first: "Recovered.htm", "Recovered2.htm", ..., each with its fields. What is
// to come back next stands before them: "Recovered-1.htm", and before that "Recovered-2.htm", ...
class Drafts {
 public:
  enum class Turn : std::uint8_t { kLast, kNext };

  explicit Drafts(std::filesystem::path folder) : folder_(std::move(folder)) {}

  // Keeps the one that is being written, in place of what was kept of it, and nothing where nothing is worth it.
  Result<void> Keep(const Draft& draft) const;
  // Keeps it whatever it is worth.
  Result<void> KeepWhole(const Draft& draft) const;
  void Drop() const;
  // From now on it is one of those that are offered, behind all others or before them.
  Result<void> SetAside(Turn turn = Turn::kLast) const;

  // Looks into the folder each time.
  bool AreOffered() const { return Offered().first != 0; }
  // The subject of the next, empty where it has none.
  std::string OfferedSubject() const;
  // The next; of a message that is kept by its body alone, the other fields are as in a new one.
  Result<Draft> ReadOffered() const;
  void DropOffered() const;

  // Whether one of all these, the one that is being written among them, has the words in its body or its fields: what
  // is called so is still needed. One that cannot be read may have them.
  bool Mention(std::string_view words) const;

 private:
  struct Numbers {  // 0 for none
    std::int64_t first = 0;
    std::int64_t last = 0;
  };
  std::filesystem::path Body(std::int64_t number) const;
  Numbers Offered() const;
  std::vector<std::int64_t> AllOffered() const;

  std::filesystem::path folder_;
};

}  // namespace quillcast::document
