// The folder that the mailbox keeps messages in: "000001.eml" and on, and "index.jsonl" with a line about each.
//
// The message's file is there, whole, before its line is; a failure leaves neither. Nothing is forced to the disk:
// after a power cut the last messages may be missing, which a place to practise in can bear.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "platform/clock.h"
#include "platform/file.h"
#include "platform/result.h"
#include "smtp/mailbox/received_envelope.h"

namespace quillcast::smtp {

// For one process, which holds a lock on the index, and one thread.
class MailboxStore {
 public:
  // Makes the folder (0700) where it is missing and goes on behind the highest number in it. Fails with kUnavailable
  // when another mailbox is using it. The clock must outlive the store.
  static Result<MailboxStore> Open(const std::filesystem::path& folder, const platform::Clock& clock);

  // A name for a file that a message grows in until it is kept, beside the others and hidden.
  std::filesystem::path NextIncomingPath();

  // Puts the finished file under the next free number and writes its line. Returns its new path. On failure the file is
  // gone.
  Result<std::filesystem::path> Keep(const std::filesystem::path& incoming, std::uint64_t size,
                                     const ReceivedEnvelope& envelope);

  // As it was given to Open.
  const std::filesystem::path& folder() const { return folder_; }

 private:
  MailboxStore(std::filesystem::path folder, platform::UniqueFd index, const platform::Clock& clock)
      : folder_(std::move(folder)), index_(std::move(index)), clock_(&clock) {}
  Result<void> FindLastNumber();
  Result<void> CutTornLine();
  Result<std::filesystem::path> MoveToNextNumber(const std::filesystem::path& incoming);
  Result<void> AppendLine(std::string_view line);

  std::filesystem::path folder_;
  platform::UniqueFd index_;
  const platform::Clock* clock_;
  std::uint64_t last_number_ = 0;
  std::uint64_t incoming_ = 0;
};

// One message on its way into the store. Small ones wait in memory and reach the disk in one write; of a larger one
// never more than 64 KiB and one piece are held. What is not kept leaves nothing behind.
class IncomingMessage {
 public:
  explicit IncomingMessage(MailboxStore& store) : store_(store) {}
  IncomingMessage(const IncomingMessage&) = delete;
  IncomingMessage& operator=(const IncomingMessage&) = delete;
  ~IncomingMessage() { Drop(); }

  // Any pieces, in order. After a failure Drop is all that is left to do.
  Result<void> Write(std::string_view content);
  // Returns the path of the kept file. The object can then take the next message.
  Result<std::filesystem::path> Keep(const ReceivedEnvelope& envelope);
  void Drop();
  std::uint64_t size() const { return size_; }

 private:
  Result<void> Flush();

  MailboxStore& store_;
  platform::UniqueFd file_;
  std::filesystem::path path_;
  std::string pending_;
  std::uint64_t size_ = 0;
};

}  // namespace quillcast::smtp
