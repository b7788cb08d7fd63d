// Who got the message, who did not and why: the results of a run as a list, kept small for a million recipients.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/result.h"
#include "run/journal/recipient_states.h"
#include "run/sending_run.h"

namespace quillcast::run {

struct ResultRow {
  std::int64_t position = 0;
  std::string_view address;
  ResultState state = ResultState::kSent;
  std::string_view detail;  // why, for all but kSent: the server's reply, the text of its code, our reason
};

class RunResults {
 public:
  // In the order of the list; one that was added before, for somebody who was tried again, takes the place of that.
  void Add(const RecipientResult& result);
  // `stays`: as a run before left it.
  void AddNotTried(std::int64_t position, std::string_view address, ResultState stays);

  std::size_t size() const { return rows_.size(); }
  // How many took another's place.
  std::int64_t changes() const { return changes_; }
  ResultRow At(std::size_t row) const;

  // The rows from `from` on with this state, or any but kSent when `unsent_only`, whose address or detail holds the
  // text (ASCII case does not matter).
  struct Filter {
    std::optional<ResultState> state;
    bool unsent_only = false;
    std::string text;
  };
  std::vector<std::uint32_t> Matching(const Filter& filter, std::size_t from) const;

  // These rows as lines of position, address, state and detail, parted by tabs; control characters in them become "?".
  std::string AsText(const std::vector<std::uint32_t>& rows) const;

 private:
  struct Row {
    std::uint64_t address_begin;
    std::int64_t position;
    std::uint32_t address_size;
    std::uint32_t detail;  // in details_
    ResultState state;
  };
  std::uint32_t DetailOf(std::string detail);
  void Add(std::int64_t position, std::string_view address, ResultState state, std::string detail);

  std::vector<Row> rows_;
  std::int64_t changes_ = 0;
  std::string addresses_;
  std::vector<std::string> details_ = {""};
  std::unordered_map<std::string, std::uint32_t> known_details_ = {{"", 0}};
};

}  // namespace quillcast::run
