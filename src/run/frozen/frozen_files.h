// The files of a mailing's message as they were when it began, kept by their contents in the journal.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <variant>
#include <vector>

#include "document/message_document.h"
#include "message/file_source.h"
#include "message/message_options.h"
#include "platform/result.h"
#include "run/journal/run_journal.h"

namespace quillcast::run {

// What was read of a file; or why that failed, which it does for all time then.
using Content = std::variant<KeptFile, message::FileTrouble>;

struct FrozenFile {
  std::string file;  // its path, of an attachment as the document has it
  Content content;
};

struct FrozenPicture {
  std::string file;             // the path that a reference leads to
  message::FoundPicture found;  // a file and its type, somebody else's, or trouble
  Content content;              // of one that goes along
};
inline bool IsTaken(const FrozenPicture& picture) { return std::holds_alternative<message::Picture>(picture.found); }

struct FrozenFiles {
  std::vector<FrozenFile> attachments;
  std::vector<FrozenPicture> pictures;
  std::vector<FrozenFile> sources;  // that its texts were read from: no message takes them in
};

// Keeps what a message of this document takes in, and what it was made of. What cannot be read is noted as what it
// comes to in a message; fails as the journal does.
Result<FrozenFiles> KeepFiles(const document::MessageDocument& document, const message::MessageOptions& options,
                              RunJournal& journal);
// Those of them that the journal has.
std::vector<KeptFile> ContentsOf(const FrozenFiles& files);

// They, in place of the files that lie at those paths now. The journal must outlive it.
class KeptFiles final : public message::FileSource {
 public:
  // Fails where the journal cannot give a content, so that no message goes out without it.
  static Result<KeptFiles> Open(FrozenFiles files, RunJournal& journal);

  message::OpenedFile OpenAttachment(const std::filesystem::path& file) const override;
  message::FoundPicture FindPicture(const std::filesystem::path& file) const override;
  message::OpenedFile OpenPicture(const message::Picture& picture) const override;

  const FrozenFiles& files() const { return files_; }
  // From its beginning.
  message::OpenedFile Open(const Content& content) const;

 private:
  KeptFiles(FrozenFiles files, RunJournal& journal);

  FrozenFiles files_;
  RunJournal* journal_;
  std::map<std::string, std::size_t> attachments_;  // places in files_
  std::map<std::string, std::size_t> pictures_;
};

}  // namespace quillcast::run
