#include "mail_file/extraction.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <utility>

#include "charset/code_page.h"
#include "mail_file/body_folder.h"
#include "mail_file/load_settings.h"
#include "mail_file/safe_part_name.h"
#include "platform/text.h"

namespace quillcast::mail_file {
namespace {

struct SameFileRule {
  std::string ExtractionRequest::*one;
  std::string ExtractionRequest::*other;
  const char* message;
};
constexpr std::array kSameFileRules = {
    SameFileRule{&ExtractionRequest::body_file, &ExtractionRequest::recipients_file,
                 "You cannot assign a single file for both Message Body and Recipients."},
    SameFileRule{&ExtractionRequest::body_file, &ExtractionRequest::stamps_file,
                 "You cannot assign a single file for both Message Body and Timestamps."},
    SameFileRule{&ExtractionRequest::recipients_file, &ExtractionRequest::stamps_file,
                 "You cannot assign a single file for both Recipients and Timestamps."},
};

class Extraction {
 public:
  Extraction(const MailMessage& message, const ExtractionRequest& request, ChosenFolders& folders,
             const platform::CancelToken& cancel, const SeeExtraction& see)
      : message_(message), request_(request), folders_(folders), cancel_(cancel), see_(see) {}

  ExtractionOutcome Run() {
    if (!request_.parts_folder.empty()) WriteParts();
    if (!request_.body_file.empty()) WriteBodyFile();
    if (!request_.second_folder.empty()) WriteSecondFolder();
    if (!request_.recipients_file.empty()) ReplaceText(request_.recipients_file, RecipientLines(message_.facts()));
    if (!request_.stamps_file.empty()) WriteStamps();
    return std::move(outcome_);
  }

 private:
  bool IsWanted(const Part& part) const {
    return part.marker == Marker::kAttachment || (request_.with_body_parts && part.marker == Marker::kBody);
  }

  void Fail(const Error& error) {
    ++outcome_.failed;
    const bool is_told = std::ranges::any_of(outcome_.failures, [&](const Error& told) {  // as of a full disk
      return error.failure == Failure::kIo && told.failure == error.failure && told.remedy == error.remedy;
    });
    if (!is_told && outcome_.failures.size() < kMostFailures) outcome_.failures.push_back(error);
  }

  bool IsCancelled() {
    if (cancel_.Requested() != platform::Stop::kNone) outcome_.is_cancelled = true;
    return outcome_.is_cancelled;
  }

  void WriteParts() {
    const auto folder = folders_.OpenOrMake(request_.parts_folder);
    if (!folder) return Fail(folder.error());
    std::uint64_t total = 0;
    for (const Part& part : message_.parts()) {
      if (!IsWanted(part)) continue;
      ++outcome_.wanted;
      total += part.source.bytes.size();
    }
    std::uint64_t done = 0;
    for (std::size_t place = 0; place < message_.parts().size() && !IsCancelled(); ++place) {
      const Part& part = message_.parts()[place];
      if (!IsWanted(part)) continue;
      if (see_) see_(done, total);
      WriteOne(**folder, part, place);
      done += part.source.bytes.size();
    }
    if (see_) see_(done, total);
  }

  void WriteOne(ChosenFolder& folder, const Part& part, std::size_t place) {
    auto name = folder.WriteNew(FileNameOf(part, place), [&](int fd, const std::filesystem::path& file) {
      return WritePart(message_, part, fd, file, &cancel_);
    });
    if (!name) return IsCancelled() ? void() : Fail(name.error());
    if (!part.name.empty() && part.name != *name) ++outcome_.renamed;
    outcome_.parts.push_back(*std::move(name));
  }

  void WriteStamps() {
    outcome_.has_no_stamps = message_.facts().stamps.empty();
    if (!outcome_.has_no_stamps) return ReplaceText(request_.stamps_file, StampLines(message_.facts()));
    outcome_.has_old_stamps = std::filesystem::exists(request_.stamps_file, IgnoreErrors());
  }

  void WriteBodyFile() {
    if (const auto none = WhyNothing(message_, request_.format)) return Fail(*none);
    Replace(request_.body_file, [this](int fd) -> Result<void> {
      const auto write = [&](std::string_view piece) { return platform::WriteAll(fd, request_.body_file, piece); };
      const auto lost = WriteBody(message_, request_.format, request_.code_page, write);
      if (!lost) return lost.error();
      outcome_.lost += *lost;
      return write("\r\n");
    });
  }

  void WriteSecondFolder() {
    if (IsCancelled()) return;
    if (const auto none = WhyNoBody(message_)) return Fail(*none);
    const auto folder = folders_.OpenOrMake(request_.second_folder);
    if (!folder) return Fail(folder.error());
    auto written = WriteBodyFolder(message_, **folder, {.cancel = &cancel_});
    if (IsCancelled()) return;
    if (!written) return Fail(written.error());
    outcome_.page = std::move(written->page);
    outcome_.pictures = std::move(written->pictures);
    for (const Error& failure : written->failures) Fail(failure);
  }

  void ReplaceText(const std::string& file, std::string_view text) {
    std::string encoded;
    outcome_.lost += charset::AppendInCodePage(encoded, text, request_.code_page);
    Replace(file, [&](int fd) { return platform::WriteAll(fd, file, encoded); });
  }

  // A rename would replace a locked file all the same; it is left, as the person's answer was.
  void Replace(const std::string& file, const std::function<Result<void>(int fd)>& write) {
    if (IsCancelled()) return;
    if (const auto other = CheckIsNotMessage(file, request_.file); !other) return Fail(other.error());
    if (platform::IsLocked(file)) {
      return Fail({Failure::kNotPermitted, platform::LeftLocked(file), "Unlock it, or name another file."});
    }
    const auto replaced = platform::ReplaceChosenFile(file, folders_.own(), write);
    if (!replaced) return Fail(replaced.error());
    outcome_.files.push_back(file);
  }

  const MailMessage& message_;
  const ExtractionRequest& request_;
  ChosenFolders& folders_;
  const platform::CancelToken& cancel_;
  const SeeExtraction& see_;
  ExtractionOutcome outcome_;
};

}  // namespace

std::optional<Complaint<ExtractionControl>> CheckExtraction(const ExtractionRequest& request) {
  if (request.file.empty()) return {{std::string(kNoMessageFile), ExtractionControl::kFile}};
  if (request.parts_folder.empty() && request.body_file.empty() && request.second_folder.empty() &&
      request.recipients_file.empty() && request.stamps_file.empty()) {
    return {{"There is nothing to export."}};
  }
  for (const auto& [one, other, message] : kSameFileRules) {
    if (!(request.*one).empty() && request.*one == request.*other) return {{message}};
  }
  return {};
}

ExtractionOutcome Extract(const MailMessage& message, const ExtractionRequest& request, ChosenFolders& folders,
                          const platform::CancelToken& cancel, const SeeExtraction& see) {
  return Extraction(message, request, folders, cancel, see).Run();
}

std::vector<Sentence> ExtractionNotes(const ExtractionRequest& request, const ExtractionOutcome& outcome) {
  std::vector<Sentence> notes;
  if (outcome.renamed > 0) {
    notes.push_back(SayOf(static_cast<std::int64_t>(outcome.renamed), "{} file has another name than in the message.",
                          "{} files have other names than in the message."));
  }
  if (outcome.has_old_stamps) {  // which is not to pass for this message's
    notes.push_back(
        Say("The message has no stamps: {} is of an earlier time, and was left as it is.", request.stamps_file));
  } else if (outcome.has_no_stamps) {
    notes.emplace_back("The message has no stamps, so there is no file of them.");
  }
  return notes;
}

std::vector<Sentence> ExtractionNews(const ExtractionRequest& request, const ExtractionOutcome& outcome) {
  std::vector<Sentence> news;
  if (outcome.wanted > 0) {
    news.push_back(
        SayOf(static_cast<std::int64_t>(outcome.parts.size()), "{} part was written.", "{} parts were written."));
  } else if (!request.parts_folder.empty() && outcome.failed == 0) {
    news.emplace_back("The message has no parts for the folder.");
  }
  std::vector<std::string> others = outcome.files;
  if (outcome.page) others.push_back(request.second_folder + "/" + *outcome.page);
  if (!others.empty()) news.push_back(Say("Written: {}.", fmt::to_string(fmt::join(others, ", "))));
  for (Sentence& note : ExtractionNotes(request, outcome)) news.push_back(std::move(note));
  return news;
}

std::vector<Sentence> ExtractionTroubles(const ExtractionOutcome& outcome, std::string_view code_page) {
  std::vector<Sentence> troubles;
  if (outcome.is_cancelled) troubles.emplace_back("Cancelled; what was written before is there.");
  for (const Error& failure : outcome.failures) {  // what keeps a part away keeps the page away too
    if (auto told = AsSentence(failure); std::ranges::find(troubles, told) == troubles.end())
      troubles.push_back(std::move(told));
  }
  if (const auto more = static_cast<std::int64_t>(outcome.failed - outcome.failures.size()); more > 0)
    troubles.push_back(SayOf(more, "{} more file was not written.", "{} more files were not written."));
  if (outcome.lost > 0) {
    troubles.push_back(SayOf(static_cast<std::int64_t>(outcome.lost),
                             "{} character is not in {} and was written as \"?\".",
                             "{} characters are not in {} and were written as \"?\".", code_page));
  }
  return troubles;
}

}  // namespace quillcast::mail_file
