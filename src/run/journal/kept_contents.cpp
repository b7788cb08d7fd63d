#include "run/journal/kept_contents.h"

#include <fmt/format.h>
#include <openssl/evp.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>

#include "run/journal/journal_file.h"

namespace quillcast::run {
namespace {

// So much of a content is one row, and all that is ever held of it.
constexpr std::size_t kPiece = 65536;
constexpr int kPieceBits = 24;

class Sha256 {
 public:
  Sha256() : context_(EVP_MD_CTX_new()) { works_ = EVP_DigestInit_ex(context_.get(), EVP_sha256(), nullptr) == 1; }
  void Add(std::string_view octets) {
    works_ = works_ && EVP_DigestUpdate(context_.get(), octets.data(), octets.size()) == 1;
  }
  Result<std::string> InDigits() {
    std::array<unsigned char, EVP_MAX_MD_SIZE> octets{};
    unsigned size = 0;
    works_ = works_ && EVP_DigestFinal_ex(context_.get(), octets.data(), &size) == 1;
    if (!works_) return Error{Failure::kInternal, "The library of the digests does not work."};
    std::string digits;
    for (unsigned i = 0; i < size; ++i) digits += fmt::format("{:02x}", octets.at(i));
    return digits;
  }

 private:
  struct Free {
    void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
  };
  std::unique_ptr<EVP_MD_CTX, Free> context_;
  bool works_ = false;
};

// Gives a file piece by piece from its beginning, wherever it stands.
Result<void> ReadPieces(int fd, const std::filesystem::path& name,
                        const std::function<Result<void>(std::string_view piece)>& take) {
  std::string piece(kPiece, '\0');
  for (off_t at = 0;;) {
    std::size_t filled = 0;
    while (filled < kPiece) {
      const ssize_t got = ::pread(fd, piece.data() + filled, kPiece - filled, at + static_cast<off_t>(filled));
      if (got < 0 && errno == EINTR) continue;
      if (got < 0) return platform::SystemError("read", name, errno);
      if (got == 0) break;
      filled += static_cast<std::size_t>(got);
    }
    if (filled == 0) return {};
    if (auto taken = take(std::string_view(piece).substr(0, filled)); !taken) return taken;
    at += static_cast<off_t>(filled);
  }
}

struct Content {
  std::int64_t id = 0;
  std::int64_t size = 0;
};

Result<std::optional<Content>> FindContent(platform::Database& database, const std::string& hash) {
  auto statement = database.Prepare("SELECT id, size FROM contents WHERE hash = ?");
  if (!statement) return statement.error();
  if (auto bound = statement->BindView(1, hash); !bound) return bound.error();
  const auto row = statement->Step();
  if (!row) return row.error();
  if (!*row) return std::optional<Content>();
  return std::optional(Content{statement->Int(0), statement->Int(1)});
}

Result<std::int64_t> AddContent(platform::Database& database, const std::string& hash, std::chrono::sys_seconds now) {
  auto statement = database.Prepare("INSERT INTO contents(hash, size, kept) VALUES(?, 0, ?)");
  if (!statement) return statement.error();
  if (auto bound = statement->BindView(1, hash); !bound) return bound.error();
  if (auto bound = statement->Bind(2, std::int64_t{now.time_since_epoch().count()}); !bound) return bound.error();
  if (auto done = statement->Run(); !done) return done.error();
  return database.LastInsertId();
}

Result<void> RunWith(platform::Database& database, std::string_view sql, std::initializer_list<std::int64_t> numbers) {
  auto statement = database.Prepare(sql);
  if (!statement) return statement.error();
  int parameter = 0;
  for (const std::int64_t number : numbers) {
    if (auto bound = statement->Bind(++parameter, number); !bound) return bound;
  }
  return statement->Run();
}

// Its pieces, and the digits of what was read, which may have become another file since.
Result<std::string> AddPieces(platform::Database& database, std::int64_t content, int fd, const std::string& name) {
  auto insert = database.Prepare("INSERT INTO pieces(id, octets) VALUES(?, ?)");
  if (!insert) return insert.error();
  Sha256 hash;
  std::int64_t key = content << kPieceBits;
  std::int64_t size = 0;
  const auto add = [&](std::string_view piece) -> Result<void> {
    hash.Add(piece);
    size += std::ssize(piece);
    if (auto bound = insert->Bind(1, key++); !bound) return bound;
    if (auto bound = insert->BindBytes(2, piece); !bound) return bound;
    if (auto done = insert->Run(); !done) return done;
    insert->Reset();
    return {};
  };
  if (auto read = ReadPieces(fd, name, add); !read) return read.error();
  if (auto set = RunWith(database, "UPDATE contents SET size = ? WHERE id = ?", {size, content}); !set) {
    return set.error();
  }
  return hash.InDigits();
}

Error NotKept() {
  return {Failure::kNoInput, "A file of this mailing is no longer in the journal.", "Begin the mailing again."};
}

}  // namespace

Result<std::string> HashOf(int fd, const std::filesystem::path& name) {
  Sha256 hash;
  const auto read = ReadPieces(fd, name, [&](std::string_view piece) {
    hash.Add(piece);
    return Result<void>();
  });
  if (!read) return read.error();
  return hash.InDigits();
}

Result<std::string> KeepContent(platform::Database& database, int fd, const std::string& name,
                                std::chrono::sys_seconds now) {
  auto hash = HashOf(fd, name);
  if (!hash) return hash;
  auto transaction = platform::Transaction::Begin(database);
  if (!transaction) return transaction.error();
  const auto known = FindContent(database, *hash);
  if (!known) return known.error();
  if (*known) {
    const auto used =
        RunWith(database, "UPDATE contents SET kept = ? WHERE id = ?", {now.time_since_epoch().count(), (*known)->id});
    if (!used) return used.error();
  } else {
    const auto id = AddContent(database, *hash, now);
    if (!id) return id.error();
    const auto added = AddPieces(database, *id, fd, name);
    if (!added) return added.error();
    if (*added != *hash) {
      return Error{Failure::kTryAgain, Say("{} was written to while it was read.", name), "Try again."};
    }
  }
  if (auto committed = transaction->Commit(); !committed) return committed.error();
  return hash;
}

Result<void> WriteContent(platform::Database& database, const std::string& content, int fd) {
  const auto known = FindContent(database, content);
  if (!known) return known.error();
  if (!*known) return NotKept();
  auto read = database.Prepare("SELECT octets FROM pieces WHERE id >= ? AND id < ? ORDER BY id");
  if (!read) return read.error();
  if (auto bound = read->Bind(1, (*known)->id << kPieceBits); !bound) return bound;
  if (auto bound = read->Bind(2, ((*known)->id + 1) << kPieceBits); !bound) return bound;
  Sha256 hash;
  for (;;) {
    const auto row = read->Step();
    if (!row) return row.error();
    if (!*row) break;
    hash.Add(read->Bytes(0));
    if (auto written = platform::WriteAll(fd, database.path().parent_path(), read->Bytes(0)); !written) return written;
  }
  const auto digits = hash.InDigits();
  if (!digits) return digits.error();
  return *digits == content ? Result<void>() : DamagedMailingIn(database.path());
}

Result<void> AddFiles(platform::Database& database, MailingId mailing, const std::vector<KeptFile>& files) {
  auto insert = database.Prepare("INSERT INTO mailing_files(mailing, name, content) VALUES(?, ?, ?)");
  if (!insert) return insert.error();
  for (const KeptFile& file : files) {
    const auto content = FindContent(database, file.content);
    if (!content) return content.error();
    if (!*content) return NotKept();
    insert->Reset();
    if (auto bound = insert->Bind(1, mailing); !bound) return bound;
    if (auto bound = insert->BindView(2, file.name); !bound) return bound;
    if (auto bound = insert->Bind(3, (*content)->id); !bound) return bound;
    if (auto done = insert->Run(); !done) return done;
  }
  return {};
}

Result<std::vector<KeptFile>> FilesOf(platform::Database& database, MailingId mailing) {
  auto statement = database.Prepare(
      "SELECT f.name, c.hash FROM mailing_files AS f JOIN contents AS c ON c.id = f.content WHERE f.mailing = ? "
      "ORDER BY f.id");
  if (!statement) return statement.error();
  if (auto bound = statement->Bind(1, mailing); !bound) return bound.error();
  std::vector<KeptFile> files;
  for (;;) {
    const auto row = statement->Step();
    if (!row) return row.error();
    if (!*row) return files;
    files.push_back({std::string(statement->Text(0)), std::string(statement->Text(1))});
  }
}

namespace {

// Takes away the contents that the query names, which nobody has any more.
Result<void> ForgetContents(platform::Database& database, std::string_view query, std::int64_t parameter) {
  auto statement = database.Prepare(query);
  if (!statement) return statement.error();
  if (auto bound = statement->Bind(1, parameter); !bound) return bound;
  std::vector<std::int64_t> contents;
  for (;;) {
    const auto row = statement->Step();
    if (!row) return row.error();
    if (!*row) break;
    contents.push_back(statement->Int(0));
  }
  statement->Reset();
  for (const std::int64_t content : contents) {
    if (auto done = RunWith(database, "DELETE FROM pieces WHERE id >= ? AND id < ?",
                            {content << kPieceBits, (content + 1) << kPieceBits});
        !done) {
      return done;
    }
    if (auto done = RunWith(database, "DELETE FROM contents WHERE id = ?", {content}); !done) return done;
  }
  return {};
}

}  // namespace

Result<void> ForgetFiles(platform::Database& database, MailingId mailing) {
  auto forgotten =
      ForgetContents(database,
                     "SELECT DISTINCT content FROM mailing_files AS f WHERE mailing = ?1 AND NOT EXISTS "
                     "(SELECT 1 FROM mailing_files AS other WHERE other.content = f.content AND other.mailing <> ?1)",
                     mailing);
  if (!forgotten) return forgotten;
  return RunWith(database, "DELETE FROM mailing_files WHERE mailing = ?", {mailing});
}

Result<void> ForgetUnused(platform::Database& database, std::chrono::sys_seconds now) {
  // Whoever keeps a file begins the mailing soon after, or never.
  const auto long_ago = now - std::chrono::hours(24);
  return ForgetContents(
      database,
      "SELECT id FROM contents WHERE kept < ? AND NOT EXISTS (SELECT 1 FROM mailing_files WHERE content = contents.id)",
      long_ago.time_since_epoch().count());
}

}  // namespace quillcast::run
