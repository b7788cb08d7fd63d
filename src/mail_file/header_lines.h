// Puts the lines of one header after the other together to fields (RFC 5322 2.2), and counts these over the whole file.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "mail_file/fault_list.h"
#include "mail_file/limits.h"
#include "mail_file/message_lines.h"

namespace quillcast::mail_file {

// What a line is to the header that it was read for.
enum class HeaderLine {
  kWithin,
  kEnd,      // the empty line
  kBody,     // the empty line is missing: it is the body's first
  kTooMany,  // it begins one field more than kMostFields
};

class HeaderLines {
 public:
  // The value is unfolded, without blanks at its ends, and not decoded; of at most some kLongestField bytes.
  using TakeField = std::function<void(std::string_view name, std::string_view value)>;

  explicit HeaderLines(FaultList& faults) : faults_(faults) {}

  // The next header begins; that of the file may have lines "From " of a mailbox before its fields.
  void Begin(bool is_of_file);
  // A line of it. `take` gets the field before it, where it begins another one or ends the header.
  HeaderLine Take(const MessageLine& line, const TakeField& take);
  // The end of the header: its last field.
  void End(const TakeField& take);
  // No field has come.
  bool is_empty() const { return is_empty_; }

 private:
  void GoOn(const MessageLine& line);
  void TellCut();

  FaultList& faults_;
  std::size_t count_ = 0;
  bool is_of_file_ = false;
  bool is_empty_ = true;
  bool is_told_ = false;  // that the field is too long
  std::string name_;
  std::string value_;
};

// Which fields of a header are listed for who asks: from the first on as many as kMostListedFields holds.
class ListedFields {
 public:
  // Whether this one, the next as HeaderLines gives them, is.
  bool Take(std::string_view name, std::string_view value) {
    bytes_ += name.size() + value.size();
    if (bytes_ > kMostListedFields) ++left_out_;
    return left_out_ == 0;
  }
  std::size_t left_out() const { return left_out_; }

 private:
  std::size_t bytes_ = 0;
  std::size_t left_out_ = 0;
};

}  // namespace quillcast::mail_file
