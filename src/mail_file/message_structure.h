// Finds the parts of a message file (RFC 2046 5.1, RFC 5322 2) in one pass, without recursion: what is open is a list
// of levels, and memory grows with the number of parts alone.
#pragma once

#include <string>
#include <vector>

#include "mail_file/boundary.h"
#include "mail_file/fact_collector.h"
#include "mail_file/fault_list.h"
#include "mail_file/header_lines.h"
#include "mail_file/load_mode.h"
#include "mail_file/mailbox_border.h"
#include "mail_file/message_lines.h"
#include "mail_file/part_fields.h"
#include "platform/cancel.h"

namespace quillcast::mail_file {

class MessageStructure {
 public:
  // All outlive it.
  MessageStructure(const MessageFile& file, LoadMode mode, const platform::CancelToken* cancel, FaultList& faults);

  // Goes through the file once. Fails when it cannot be read (kIo) or was cancelled (kTryAgain); what was found until
  // then is there.
  Result<void> Find();

  std::vector<Part>& parts() { return parts_; }
  // A text or page with a name that the message begins with, to be shown where it is: its body, unless it has another.
  // kNoPart for none.
  std::size_t named_text() const { return named_text_; }
  FactCollector& facts() { return facts_; }
  // How many fields of the message's own header MailMessage::EachField does not give.
  std::size_t fields_left_out() const { return listed_fields_.left_out(); }

 private:
  // A multipart or a message whose content is being read.
  struct Level {
    std::size_t part;
    std::string boundary;  // none for a message
    std::string start;     // the Content-ID of what it begins with, where it says so
    bool has_children = false;
  };
  // A delimiter line of a level, or the end of the file.
  struct Delimiter {
    std::size_t level = 0;
    DelimiterKind kind = DelimiterKind::kNone;  // kNone: the end
    std::uint64_t content_end = 0;              // the line end before a delimiter belongs to it
    std::uint64_t next = 0;
  };
  enum class HeaderEnd { kBody, kDelimiter, kTooManyFields };
  struct Header {
    HeaderEnd end = HeaderEnd::kBody;
    bool is_empty = true;
    Delimiter delimiter;
  };

  std::size_t AddPart(std::uint64_t begin);
  bool PassBy(MessageLine& line);
  Result<Header> ReadHeader(std::size_t part, PartFields& fields);
  bool IsBodyByItsPlace(std::size_t part) const;
  Result<void> Open(std::size_t part, const PartFields& fields, const Header& header);
  Result<void> FindBoundary(std::size_t part, std::string& boundary);
  Result<Delimiter> NextDelimiter();
  Result<bool> IsWithinMessage(const MessageLine& line);
  Result<void> CountMessages();
  bool IsDelimiter(const MessageLine& line, Delimiter& out) const;
  void CloseInnermost(bool is_closed, std::uint64_t end);
  Result<std::size_t> NextPart(Delimiter delimiter);
  void TakeRest(std::uint64_t begin, const Sentence& why);
  Result<void> CheckCancel();

  const MessageFile& file_;
  LoadMode mode_;
  const platform::CancelToken* cancel_;
  FaultList& faults_;
  MessageLines lines_;
  HeaderLines header_lines_;
  std::vector<Part> parts_;
  FactCollector facts_;
  ListedFields listed_fields_;
  std::vector<Level> levels_;
  std::size_t guess_budget_;
  std::size_t named_text_ = kNoPart;
  std::uint64_t content_end_ = 0;  // of the line that came last, without its end
  bool has_rest_ = false;
  bool is_mailbox_ = false;     // begins as one
  std::string content_length_;  // as the first message gives it
  MailboxBorder border_;
};

}  // namespace quillcast::mail_file
