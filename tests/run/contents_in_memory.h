// A journal that keeps contents and gives them back, and knows no runs.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <map>
#include <optional>
#include <string>

#include "platform/file.h"
#include "run/journal/run_journal.h"

namespace quillcast::test {

class ContentsInMemory final : public run::RunJournal {
 public:
  std::map<std::string, std::string> contents;  // by what stands for their digests
  std::optional<Error> fails;                   // at the next file that is kept

  Result<run::KeptFile> Keep(std::string name, int fd) override {
    if (fails) return *fails;
    std::string bytes;
    std::string block(65536, '\0');
    for (;;) {
      const auto got = platform::ReadSome(fd, name, block.data(), block.size());
      if (!got) return got.error();
      if (*got == 0) break;
      bytes.append(block, 0, *got);
    }
    std::string digest = std::to_string(std::hash<std::string>()(bytes));
    contents[digest] = std::move(bytes);
    return run::KeptFile{std::move(name), std::move(digest)};
  }
  Result<platform::UniqueFd> Open(const run::KeptFile& file) override {
    const auto found = contents.find(file.content);
    if (found == contents.end()) return Error{Failure::kNoInput, "The content is not there.", ""};
    platform::UniqueFd fd(::memfd_create("content", MFD_CLOEXEC));
    const auto written = platform::WriteAll(fd.get(), file.name, found->second);
    if (!written) return written.error();
    if (::lseek(fd.get(), 0, SEEK_SET) != 0) return NoRuns();
    return fd;
  }

  Result<std::unique_ptr<run::JournalledRun>> Begin(const run::NewMailing&, recipients::RowSource&,
                                                    const std::optional<recipients::PartialRange>&,
                                                    run::NewRun) override {
    return NoRuns();
  }
  Result<std::unique_ptr<run::JournalledRun>> GoOn(run::MailingId, run::RunKind, const run::RecipientChoice&,
                                                   run::NewRun) override {
    return NoRuns();
  }
  Result<run::JournalList> List() override { return NoRuns(); }
  Result<run::MailingId> MailingOf(run::RunId) override { return NoRuns(); }
  Result<run::MailingEntry> Find(run::RunId) override { return NoRuns(); }
  Result<run::NewMailing> Inputs(run::MailingId) override { return NoRuns(); }
  Result<std::int64_t> Count(run::MailingId, const run::RecipientChoice&) override { return NoRuns(); }
  Result<void> Visit(run::MailingId, const run::RecipientChoice&, std::int64_t,
                     const std::function<Result<bool>(const run::JournalRow&)>&) override {
    return NoRuns();
  }
  Result<void> Forget(run::MailingId) override { return NoRuns(); }

 private:
  static Error NoRuns() { return {Failure::kInternal, "This journal knows no runs.", ""}; }
};

}  // namespace quillcast::test
