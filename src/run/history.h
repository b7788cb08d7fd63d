// What every run leaves behind: its report and its first message, two files in the history folder.
#pragma once

#include <ctime>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/clock.h"
#include "platform/desktop.h"
#include "platform/file.h"
#include "platform/prompts.h"
#include "platform/result.h"
#include "platform/sentence.h"
#include "run/carrier.h"

namespace quillcast::run {

// The subject as a part of a file name: ASCII letters, digits, blanks and hyphens, at most 64 of them; "No Subject"
// when none is left.
std::string CleanSubject(std::string_view subject);

// "mm-dd-yyyy_hh-mm-ss_cleaned subject".
std::string HistoryBaseName(const std::tm& local, std::string_view subject);

// The report of the run with this base name.
std::filesystem::path ReportIn(const std::filesystem::path& history, std::string_view base);

// A run's place in the history folder. Its report exists from the first moment, so that no other run takes the name.
struct HistoryEntry {
  std::string base;               // the base name, without folder and ending
  std::filesystem::path message;  // the .eml file
  platform::FileWriter report;    // the .txt file
};

// Takes the base name of this moment, or of the next second that is free.
Result<HistoryEntry> BeginHistoryEntry(const std::filesystem::path& history, const platform::Clock& clock,
                                       std::string_view subject);

struct HistoryRow {
  std::string file;  // the name of the .txt file
  // That of the run, as HistoryEntry has it.
  std::string base() const { return std::filesystem::path(file).stem().string(); }
  std::string text;  // "Date = 07-03-2026  -  Time = 09-05-07 - Subject = Hello", and behind it that nothing was sent
  Delivery delivery = Delivery::kSent;
};

// The entries in the order in which the file system gives them; files that are read-only become writable. Folders are
// no entries, and what a link points to stays as it is. Names that are not in three parts give shorter rows.
Result<std::vector<HistoryRow>> ListHistory(const std::filesystem::path& history);

// The places of the rows in an order that a list offers. Names that are not in three parts count as older than all, and
// are their own subjects.
enum class HistoryOrder { kAsListed, kNewestFirst, kOldestFirst, kBySubject };
std::vector<std::size_t> Arranged(const std::vector<HistoryRow>& rows, HistoryOrder order);

// The report of the run that began last, whatever its files' dates say; nothing where there was none. One name is held,
// however many there are; no file is opened or unlocked, and links count for none.
Result<std::optional<std::filesystem::path>> NewestReport(const std::filesystem::path& history);
// The first message of the run with this report.
std::filesystem::path MessageOf(std::filesystem::path report);

// Opens a row's report or message with the desktop's program for it. Warns when it is not there.
Result<void> OpenLog(const std::filesystem::path& history, const HistoryRow& row, platform::Desktop& desktop,
                     platform::Prompts& prompts);
Result<void> OpenMessage(const std::filesystem::path& history, const HistoryRow& row, platform::Desktop& desktop,
                         platform::Prompts& prompts);

enum class Clearing { kKept, kCleared };

// Deletes every file of the history folder, whatever it is, after a question; but not those of a run that is going on.
// Of a link it deletes the link, never what it points to; so where the folder itself is one, nothing is deleted.
// Folders, and files that cannot be deleted, are passed over and counted.
struct ClearedHistory {
  Clearing clearing = Clearing::kKept;
  std::size_t deleted = 0;
  std::size_t left = 0;
  std::size_t going_on = 0;  // files of runs
  std::size_t folders = 0;
  bool is_link = false;  // the folder
};
ClearedHistory ClearHistory(const std::filesystem::path& history, platform::Prompts& prompts);

// What stayed on purpose and why.
std::vector<Sentence> WhatStayed(const ClearedHistory& cleared);
// What could not be deleted, where something could not.
Result<void> WhatFailed(const ClearedHistory& cleared, const std::filesystem::path& history);

}  // namespace quillcast::run
