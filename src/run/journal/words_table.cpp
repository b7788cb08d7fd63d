#include "run/journal/words_table.h"

#include <utility>

namespace quillcast::run {
namespace {

// Four such rows fill a page.
constexpr std::size_t kFullRow = 960;

constexpr const char* kLastUpTo = "SELECT id, words FROM words WHERE id >= ?1 AND id <= ?2 ORDER BY id DESC LIMIT 1";

}  // namespace

Result<WordsWriter> WordsWriter::After(platform::Database& database, const std::filesystem::path& file,
                                       MailingId mailing) {
  auto write = database.Prepare("INSERT OR REPLACE INTO words(id, words) VALUES(?1, ?2)");
  if (!write) return write.error();
  auto last = database.Prepare(kLastUpTo);
  if (!last) return last.error();
  if (auto bound = last->Bind(1, WordsKey(mailing, 0)); !bound) return bound.error();
  if (auto bound = last->Bind(2, WordsKey(mailing + 1, 0) - 1); !bound) return bound.error();
  const auto row = last->Step();
  if (!row) return row.error();
  std::int64_t next = 1;
  if (*row) {
    next = last->Int(0) - WordsKey(mailing, 0);
    std::string_view octets = last->Bytes(1);
    for (ResultWords words; TakeWords(octets, words);) ++next;
    if (!octets.empty()) return DamagedMailingIn(file);
  }
  return WordsWriter(*std::move(write), mailing, next);
}

std::uint32_t WordsWriter::Add(const ResultWords& words) {
  constexpr std::int64_t kMost = 0xFFFFFFFF;
  if (words.IsEmpty() || next_ > kMost) return 0;
  if (!rows_.empty() && words == last_) return static_cast<std::uint32_t>(next_ - 1);
  if (rows_.empty() || rows_.back().octets.size() >= kFullRow) {
    rows_.push_back({next_, {}, false});
    last_ = {};
  }
  AppendWords(last_, words, rows_.back().octets);
  rows_.back().changed = true;
  last_ = words;
  return static_cast<std::uint32_t>(next_++);
}

Result<void> WordsWriter::Write() {
  for (const Row& row : rows_) {
    if (!row.changed) continue;
    write_.Reset();
    if (auto bound = write_.Bind(1, WordsKey(mailing_, row.first)); !bound) return bound;
    if (auto bound = write_.BindBytes(2, row.octets); !bound) return bound;
    if (auto done = write_.Run(); !done) return done;
  }
  write_.Reset();
  return {};
}

void WordsWriter::Written() {
  if (rows_.empty()) return;
  rows_.erase(rows_.begin(), rows_.end() - 1);
  rows_.back().changed = false;
}

Result<WordsReader> WordsReader::Of(platform::Database& database, const std::filesystem::path& file,
                                    MailingId mailing) {
  auto read = database.Prepare(kLastUpTo);
  if (!read) return read.error();
  return WordsReader(*std::move(read), file, mailing);
}

Result<void> WordsReader::FindRow(std::uint32_t number) {
  read_.Reset();
  if (auto bound = read_.Bind(1, WordsKey(mailing_, 0)); !bound) return bound;
  if (auto bound = read_.Bind(2, WordsKey(mailing_, number)); !bound) return bound;
  const auto row = read_.Step();
  if (!row) return row.error();
  if (!*row) return DamagedMailingIn(file_);
  first_ = next_ = read_.Int(0) - WordsKey(mailing_, 0);
  row_ = read_.Bytes(1);
  rest_ = row_;
  words_ = {};
  read_.Reset();
  return {};
}

Result<const ResultWords*> WordsReader::Read(std::uint32_t number) {
  // The words in hand are those before next_.
  if (first_ != 0 && number + 1 == next_) return &words_;
  if (first_ == 0 || number < next_ || rest_.empty()) {
    if (auto found = FindRow(number); !found) return found.error();
  }
  for (bool sought = false;;) {
    while (next_ <= number && TakeWords(rest_, words_)) ++next_;
    if (next_ > number) return &words_;
    // It ended before: what is looked for stands in a later row.
    if (std::exchange(sought, true)) return DamagedMailingIn(file_);
    if (auto found = FindRow(number); !found) return found.error();
    if (next_ > number) return DamagedMailingIn(file_);
  }
}

}  // namespace quillcast::run
