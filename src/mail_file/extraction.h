// Takes a message file apart: its parts, its body, its recipients and the way
// it came, each where a person wants it.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "mail_file/body_formats.h"
#include "mail_file/chosen_folder.h"
#include "mail_file/mail_message.h"
#include "platform/complaint.h"
#include "platform/file_attributes.h"

namespace quillcast::mail_file {

inline constexpr std::string_view kExtracted = "Extract process has been completed.";
inline constexpr std::string_view kNoDestination = "Please select the destination folder.";

// Paths as they were typed; each output whose path is empty is left out.
struct ExtractionRequest {
  std::string file = {};
  std::string parts_folder = {};
  bool with_body_parts = false;  // the texts of the body go into that folder too
  std::string body_file = {};
  BodyFormat format = BodyFormat::kText;
  std::string second_folder = {};  // the body as a page with its pictures
  std::string recipients_file = {};
  std::string stamps_file = {};
  std::string code_page = {};  // of the three text files; empty for UTF-8
};

enum class ExtractionControl : std::uint8_t { kFile };

// What is wrong first with what was asked for: no file, no output, or one file
// for two outputs, by the letters of their paths.
std::optional<Complaint<ExtractionControl>> CheckExtraction(const ExtractionRequest& request);

// What became of it. Each output is tried, whatever became of the others; a
// part that failed has no file.
struct ExtractionOutcome {
  std::size_t wanted = 0;           // how many parts were to come into the first folder
  std::vector<std::string> parts;   // the files that are there
  std::size_t renamed = 0;          // those of them that the message calls otherwise
  std::optional<std::string> page;  // the page in the second
  std::vector<std::string> pictures;
  std::vector<std::string> files;  // of the three files those that were written
  std::vector<Error> failures;     // at most kMostFailures; what a full disk kept from all is one
  std::size_t failed = 0;          // how many there were
  std::size_t lost = 0;            // characters that the code page does not have
  bool has_no_stamps = false;      // they were asked for, and there are none
  bool has_old_stamps = false;     // then: something stands at their path
  bool is_cancelled = false;
};
inline constexpr std::size_t kMostFailures = 20;

using SeeExtraction = std::function<void(std::uint64_t done, std::uint64_t total)>;  // bytes of parts

// For a request that CheckExtraction finds nothing wrong with. Parts are
// written under names of their own and replace nothing, in folders that are
// made where they are missing; the three files are
// replaced, but not while they are locked. New files have mode 0600. No file
// for the way a message came where it tells none. Whoever takes many messages
// apart uses the same `folders` for all.
ExtractionOutcome Extract(const MailMessage& message, const ExtractionRequest& request, ChosenFolders& folders,
                          const platform::CancelToken& cancel, const SeeExtraction& see = {});

// For a status line or a terminal: what the names of the files do not show.
std::vector<Sentence> ExtractionNotes(const ExtractionRequest& request, const ExtractionOutcome& outcome);

// For a status line: what was written, and those notes.
std::vector<Sentence> ExtractionNews(const ExtractionRequest& request, const ExtractionOutcome& outcome);

// For a status line or a terminal: what was not written and why, and what was
// lost.
std::vector<Sentence> ExtractionTroubles(const ExtractionOutcome& outcome, std::string_view code_page);

// Four lines a recipient, nine a stamp, each ended by CRLF; what a stranger
// wrote never makes a line of its own.
std::string RecipientLines(const MessageFacts& facts);
std::string StampLines(const MessageFacts& facts);

}  // namespace quillcast::mail_file
