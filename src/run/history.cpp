#include "run/history.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <array>
#include <numeric>

#include "platform/file_attributes.h"
#include "platform/text.h"
#include "run/run_report.h"

namespace quillcast::run {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLongestSubject = 64;
constexpr int kSecondsToTry = 3600;
constexpr std::string_view kReportEnding = ".txt";
constexpr std::string_view kMessageEnding = ".eml";
constexpr std::string_view kNotSent = " (written into files, not sent)";
constexpr std::size_t kLongestFirstLine = 100;  // of a report
constexpr std::size_t kTimePlace = 10;          // its "_" in "07-03-2026_09-05-07_Hello"
constexpr std::size_t kSubjectPlace = 19;       // that of the subject

bool Exists(const fs::path& file) { return fs::exists(file, IgnoreErrors()); }

std::string_view WithoutEnding(std::string_view file) {
  return file.size() < kReportEnding.size() ? file : file.substr(0, file.size() - kReportEnding.size());
}

std::string RowText(std::string_view base) {
  constexpr std::array<std::string_view, 3> kLabels = {"Date = ", "  -  Time = ", " - Subject = "};
  const auto parts = platform::Split(base, '_');
  std::string text;
  for (std::size_t i = 0; i < kLabels.size() && i < parts.size(); ++i) {
    text += kLabels[i];
    text += parts[i];
  }
  return text;
}

bool HasThreeParts(std::string_view file) {
  return file.size() > kSubjectPlace && file[kTimePlace] == '_' && file[kSubjectPlace] == '_';
}

// "2026-07-03_09-05-07", which sorts.
std::string MomentOf(std::string_view file) {
  if (!HasThreeParts(file)) return {};
  const std::string_view date = file.substr(0, kTimePlace);
  return std::string(date.substr(6)) + "-" + std::string(date.substr(0, 5)) +
         std::string(file.substr(kTimePlace, kSubjectPlace - kTimePlace));
}

std::string SubjectOf(std::string_view file) {
  return std::string(HasThreeParts(file) ? file.substr(kSubjectPlace + 1) : file);
}

// A file, or a link to one.
bool IsEntry(const fs::directory_entry& entry) {
  return entry.path().extension() == kReportEnding && entry.is_regular_file(IgnoreErrors());
}

Result<void> OpenOrWarn(const fs::path& file, const char* warning, platform::Desktop& desktop,
                        platform::Prompts& prompts) {
  if (Exists(file)) return desktop.OpenFile(file);
  prompts.Warn(warning);
  return {};
}

// A separator at the end would name what the link leads to.
bool IsLink(const fs::path& folder) {
  return fs::is_symlink(folder.has_filename() ? folder : folder.parent_path(), IgnoreErrors());
}

}  // namespace

std::string CleanSubject(std::string_view subject) {
  std::string clean;
  for (const char c : subject) {
    if (platform::AsciiIsAlnum(c) || c == ' ' || c == '-') clean += c;
  }
  if (clean.empty()) return "No Subject";
  clean.resize(std::min(clean.size(), kLongestSubject));
  return clean;
}

std::string HistoryBaseName(const std::tm& local, std::string_view subject) {
  return fmt::format("{:02}-{:02}-{:04}_{:02}-{:02}-{:02}_{}", local.tm_mon + 1, local.tm_mday, local.tm_year + 1900,
                     local.tm_hour, local.tm_min, local.tm_sec, CleanSubject(subject));
}

fs::path ReportIn(const fs::path& history, std::string_view base) {
  return history / (std::string(base) + std::string(kReportEnding));
}

Result<HistoryEntry> BeginHistoryEntry(const fs::path& history, const platform::Clock& clock,
                                       std::string_view subject) {
  auto moment = clock.Now();
  for (int tries = 0; tries < kSecondsToTry; ++tries, moment += std::chrono::seconds(1)) {
    const std::string base = HistoryBaseName(clock.Local(moment), subject);
    const fs::path report = ReportIn(history, base);
    const fs::path message = history / (base + std::string(kMessageEnding));
    if (Exists(report) || Exists(message)) continue;
    auto writer = platform::FileWriter::CreateNew(report);
    if (writer) {
      writer->SayItIsBeingWritten();
      return HistoryEntry{base, message, std::move(*writer)};
    }
    if (!Exists(report)) return writer.error();  // else another run was quicker
  }
  return Error{Failure::kCannotCreate, Say("No free name was found for this run in {}.", history.string()),
               "Clear the history or move its files away."};
}

namespace {

// Of what cannot be read, and of what a link leads to, nothing is known.
Delivery DeliveryOf(const fs::directory_entry& report) {
  if (report.is_symlink(IgnoreErrors())) return Delivery::kSent;
  const platform::UniqueFd fd(::open(report.path().c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
  std::array<char, kLongestFirstLine> line{};
  const ssize_t count = fd ? ::read(fd.get(), line.data(), line.size()) : 0;
  return DeliveryTold(std::string_view(line.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))));
}

HistoryRow RowOf(const fs::directory_entry& report) {
  HistoryRow row{report.path().filename().string(), {}, DeliveryOf(report)};
  row.text = RowText(WithoutEnding(row.file));
  if (row.delivery == Delivery::kWritten) row.text += kNotSent;
  return row;
}

}  // namespace

Result<std::vector<HistoryRow>> ListHistory(const fs::path& history) {
  std::vector<HistoryRow> rows;
  const bool is_link = IsLink(history);
  std::error_code failed;
  for (auto entry = fs::directory_iterator(history, failed); !failed && entry != fs::directory_iterator();
       entry.increment(failed)) {
    if (!IsEntry(*entry)) continue;
    if (!is_link && !entry->is_symlink(IgnoreErrors())) IgnoreErrors(platform::Unlock(entry->path()));
    rows.push_back(RowOf(*entry));
  }
  if (failed) return platform::SystemError("read", history, failed.value());
  return rows;
}

std::vector<std::size_t> Arranged(const std::vector<HistoryRow>& rows, HistoryOrder order) {
  std::vector<std::size_t> places(rows.size());
  std::iota(places.begin(), places.end(), 0);
  if (order == HistoryOrder::kAsListed) return places;
  std::vector<std::string> keys;
  keys.reserve(rows.size());
  for (const auto& row : rows) {
    keys.push_back(order == HistoryOrder::kBySubject ? SubjectOf(row.file) : MomentOf(row.file));
  }
  std::stable_sort(places.begin(), places.end(), [&](std::size_t a, std::size_t b) {
    return order == HistoryOrder::kNewestFirst ? keys[b] < keys[a] : keys[a] < keys[b];
  });
  return places;
}

Result<std::optional<fs::path>> NewestReport(const fs::path& history) {
  std::optional<fs::path> newest;
  std::string newest_moment;
  std::error_code failed;
  for (auto entry = fs::directory_iterator(history, failed); !failed && entry != fs::directory_iterator();
       entry.increment(failed)) {
    std::string moment = MomentOf(entry->path().filename().string());
    if (moment <= newest_moment || !IsEntry(*entry) || entry->is_symlink(IgnoreErrors())) continue;
    newest = entry->path();
    newest_moment = std::move(moment);
  }
  if (failed && failed != std::errc::no_such_file_or_directory) {
    return platform::SystemError("read", history, failed.value());
  }
  return newest;
}

fs::path MessageOf(fs::path report) { return report.replace_extension(kMessageEnding); }

Result<void> OpenLog(const fs::path& history, const HistoryRow& row, platform::Desktop& desktop,
                     platform::Prompts& prompts) {
  return OpenOrWarn(history / row.file, "Server Log is not available.", desktop, prompts);
}

Result<void> OpenMessage(const fs::path& history, const HistoryRow& row, platform::Desktop& desktop,
                         platform::Prompts& prompts) {
  return OpenOrWarn(MessageOf(history / row.file), "Original Message is not available.", desktop, prompts);
}

ClearedHistory ClearHistory(const fs::path& history, platform::Prompts& prompts) {
  ClearedHistory result;
  if (prompts.Ask("Are you sure you want to delete your history?") != platform::Answer::kYes) return result;
  result.clearing = Clearing::kCleared;
  result.is_link = IsLink(history);
  if (result.is_link) return result;
  std::error_code failed;  // ends the walk; what was not come to stays
  std::vector<fs::path> files;
  for (auto entry = fs::directory_iterator(history, failed); !failed && entry != fs::directory_iterator();
       entry.increment(failed)) {
    const fs::path& file = entry->path();
    if (fs::is_directory(entry->symlink_status(IgnoreErrors()))) {
      ++result.folders;
    } else if (platform::IsBeingWritten(fs::path(file).replace_extension(kReportEnding))) {
      ++result.going_on;
    } else {
      files.push_back(file);
    }
  }
  // Removing a name asks nothing of the file's own permissions, so that nothing needs to be unlocked first.
  for (const fs::path& file : files) (fs::remove(file, IgnoreErrors()) ? result.deleted : result.left) += 1;
  return result;
}

std::vector<Sentence> WhatStayed(const ClearedHistory& cleared) {
  std::vector<Sentence> sentences;
  if (cleared.is_link) sentences.emplace_back("The history folder is a link; what it leads to was left as it is.");
  if (cleared.folders > 0) {
    sentences.push_back(SayOf(static_cast<std::int64_t>(cleared.folders), "{} folder in it was left as it is.",
                              "{} folders in it were left as they are."));
  }
  if (cleared.going_on > 0) sentences.emplace_back("The files of a run that is going on were kept.");
  return sentences;
}

Result<void> WhatFailed(const ClearedHistory& cleared, const fs::path& history) {
  if (cleared.left == 0) return {};
  return Error{
      Failure::kNotPermitted,
      SayOf(static_cast<std::int64_t>(cleared.left), "{} file could not be deleted.", "{} files could not be deleted."),
      Say("Look at the permissions of {}.", platform::Printable(history.string()))};
}

}  // namespace quillcast::run
