// Finds every address in a text that comes in pieces, with the same result as FindAddress over the whole.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace quillcast::recipients {

class AddressHarvest {
 public:
  // A local part, "@" and the characters behind it that are longer together are no address.
  static constexpr std::size_t kLongestCandidate = std::size_t{64} * 1024;
  // Gets each address in order, and whether it is cut out of its word, see IsCut. False ends the harvest.
  using Sink = std::function<bool(std::string_view address, bool is_cut)>;

  explicit AddressHarvest(Sink sink) : sink_(std::move(sink)) {}

  // The next piece; pieces may end anywhere. False when the sink ended the harvest.
  bool Feed(std::string_view piece);
  // Nothing comes behind the last piece.
  bool Finish();

 private:
  void Append(std::string_view characters);
  bool EndRun(char next);

  Sink sink_;
  bool has_local_ = false;  // an "@" stands between local_ and run_
  std::string local_;
  bool local_inside_ = false;  // a word goes on into local_, as IsCut takes it
  std::string run_;            // address characters since the last other one; grows little beyond kLongestCandidate
  bool run_inside_ = false;    // a word goes on into run_
};

}  // namespace quillcast::recipients
