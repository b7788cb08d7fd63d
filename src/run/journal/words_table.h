// The words of a mailing's results, numbered in the order in which they were said. So many as fill a quarter of a page
// stand in one row of the table, each as what differs from the one before.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/sqlite.h"
#include "run/journal/journal_file.h"
#include "run/journal/result_words.h"

namespace quillcast::run {

class WordsWriter {
 public:
  // Goes on behind the last of the mailing.
  static Result<WordsWriter> After(platform::Database& database, const std::filesystem::path& file, MailingId mailing);

  // The number of these words; 0 for none. Those of the last time have their number again.
  std::uint32_t Add(const ResultWords& words);
  // The number of the next that are none of the last time.
  std::int64_t next() const { return next_; }

  // As with StateBlocks.
  Result<void> Write();
  void Written();

 private:
  struct Row {
    std::int64_t first = 0;  // number of its first words
    std::string octets;
    bool changed = false;
  };
  WordsWriter(platform::Statement write, MailingId mailing, std::int64_t next)
      : write_(std::move(write)), mailing_(mailing), next_(next) {}

  platform::Statement write_;
  MailingId mailing_;
  std::int64_t next_;
  ResultWords last_;
  std::vector<Row> rows_;  // the one that grows is the last
};

// Reads words by their numbers; best where these come in their order.
class WordsReader {
 public:
  static Result<WordsReader> Of(platform::Database& database, const std::filesystem::path& file, MailingId mailing);

  // Valid until the next call.
  Result<const ResultWords*> Read(std::uint32_t number);

 private:
  WordsReader(platform::Statement read, std::filesystem::path file, MailingId mailing)
      : read_(std::move(read)), file_(std::move(file)), mailing_(mailing) {}
  Result<void> FindRow(std::uint32_t number);

  platform::Statement read_;
  std::filesystem::path file_;
  MailingId mailing_;
  std::string row_;
  std::string_view rest_;  // of it
  std::int64_t next_ = 0;  // number of what stands there
  std::int64_t first_ = 0;
  ResultWords words_;
};

}  // namespace quillcast::run
