// The blocks of states of one mailing, those that a run changes kept in memory until they are written together.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "platform/sqlite.h"
#include "run/journal/journal_file.h"
#include "run/journal/state_record.h"

namespace quillcast::run {

// Recipients are counted here from 0, in the order of the list.
class StateBlocks {
 public:
  static Result<StateBlocks> Of(platform::Database& database, const std::filesystem::path& file, MailingId mailing,
                                std::int64_t recipients);

  // The octets of a recipient's record, to be read and, after Change, written; valid until the next call.
  Result<const char*> Look(std::int64_t index);
  Result<void> Change(std::int64_t index, const StateRecord& record);
  // A block as it stands now, what was changed included. Valid until the next call.
  Result<std::string_view> Block(std::int64_t block);
  // All blocks from one on, in order, as they stand in the file; until `visit` gives false.
  Result<void> Walk(std::int64_t from, const std::function<Result<bool>(std::int64_t block, std::string_view)>& visit);

  // Writes what was changed, in the transaction that is open. Written counts it as kept, once that is committed.
  Result<void> Write();
  void Written();
  bool IsChanged() const { return changed_ > 0; }

 private:
  struct Kept {
    std::string octets;
    bool changed = false;
  };
  StateBlocks(platform::Statement read, platform::Statement walk, platform::Statement write, std::filesystem::path file,
              MailingId mailing, std::int64_t recipients);
  Result<Kept*> Fetch(std::int64_t block);
  // Of what was read from the file.
  Result<void> Check(std::int64_t block, std::string_view octets) const;

  platform::Statement read_;
  platform::Statement walk_;
  platform::Statement write_;
  std::filesystem::path file_;
  MailingId mailing_;
  std::int64_t recipients_;
  std::map<std::int64_t, Kept> kept_;
  std::int64_t changed_ = 0;  // of them
};

}  // namespace quillcast::run
