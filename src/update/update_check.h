// Which version of the program is the latest: one small JSON document, asked for over HTTPS when the person says so.
// Nothing else is fetched, nothing is run, and nothing of the person or the program goes along.
//
//   {"version": "1.1", "notes": "What is new, in one line."}
#pragma once

#include <chrono>
#include <compare>
#include <optional>
#include <string>
#include <string_view>

#include "net/wait.h"
#include "platform/environment.h"
#include "platform/result.h"
#include "update/update_settings.h"

namespace quillcast::update {

// The variable QUILLCAST_UPDATE_ADDRESS names another one.
inline constexpr const char* kUpdateAddress = "https://updates.quillcast.example/classic.json";
inline constexpr const char* kHomePage = "https://www.quillcast.example/";

struct Version {
  int major = 0;
  int minor = 0;
  auto operator<=>(const Version&) const = default;  // NOLINT(modernize-use-nullptr): it takes the 0 within for ours
};

// "1.0"; nothing for any other shape.
std::optional<Version> ParseVersion(std::string_view text);
// Of this program.
Version OwnVersion();
std::string TextOf(Version version);

// The latest one as against that of this program.
enum class Standing { kNewer, kSame, kOlder };

struct Answer {
  Version latest;
  Standing standing = Standing::kSame;
  std::string notes = {};  // one line that is safe to show; empty where there are none
};

// Of the document; nothing where that is no JSON, or names no version. `own` is what the latest is held against.
std::optional<Answer> ReadAnswer(std::string_view document, Version own);

struct Question {
  std::string address;
  std::string proxy = {};  // "host:port", or empty
  std::string authorities = {};
  std::string authority_folder = {};
  std::chrono::minutes patience = std::chrono::minutes(1);
};

// The settings are such as CheckSettings lets through. SSL_CERT_FILE and SSL_CERT_DIR say whom to trust.
Question QuestionOf(const UpdateSettings& settings, const platform::Environment& environment);

// Asks; at most 16 KiB of answer are read. Fails with kUnavailable where the
// server or the proxy does not serve, kTimedOut, kTryAgain at a cancel, kNotPermitted where the certificate is not
// trusted, kBadData for an answer that is none, and kUsage for an address that is not one of HTTPS.
Result<Answer> AskForLatest(const Question& question, Version own, const net::Patience& patience);

// What the answer means, for a person.
Sentence Describe(const Answer& answer, Version own);
// "newer", "same", "older".
std::string_view Name(Standing standing);

}  // namespace quillcast::update
