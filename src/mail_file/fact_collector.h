// Makes the facts of a message out of its header fields, as these come.
#pragma once

#include <array>
#include <string_view>
#include <vector>

#include "mail_file/message_facts.h"

namespace quillcast::mail_file {

class FactCollector {
 public:
  // `value` is unfolded, not decoded.
  void Take(std::string_view name, std::string_view value);
  MessageFacts Finish();
  // Recipients or stamps beyond kMostFactBytes were left out.
  bool is_full() const { return is_full_; }

 private:
  bool HasRoomFor(std::size_t bytes);
  void TakeRecipients(std::string_view value, RecipientType type);

  MessageFacts facts_;
  std::array<std::vector<Recipient>, 3> recipients_;  // by RecipientType
  std::size_t bytes_ = 0;
  bool has_from_ = false;
  bool has_subject_ = false;
  bool is_full_ = false;
};

}  // namespace quillcast::mail_file
