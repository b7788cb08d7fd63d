// A support request as a message: made, sent or written into a file.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

#include "account/shown_route.h"
#include "platform/desktop.h"
#include "platform/prompts.h"
#include "platform/result.h"
#include "platform/secret.h"
#include "run/run_place.h"
#include "smtp/outcome.h"
#include "support/request_contents.h"

namespace quillcast::support {

// Of all files together; more than that hardly a mailbox takes, and it would be read and encoded first.
inline constexpr std::uint64_t kLargestRequest = std::uint64_t{25} * 1024 * 1024;

// What is hidden in a report beside what the settings themselves call a secret.
struct HiddenPassword {
  platform::Secret password;          // empty where none is needed, or known
  std::optional<Sentence> not_known;  // and what that means, with why
};
// For what is only shown or written, so that the same is hidden there as in what is sent, which has it at hand. Asks
// the keyring or runs the command, where the account takes it from there. Fails after a cancel, and where the settings
// cannot be read.
Result<HiddenPassword> PasswordToHide(const run::RunPlace& place);

// Sends it once, over the account as it is stored and as every other message goes, in "Windows-1252" or, where that
// lacks a character, UTF-8. An attachment that cannot be taken is an outcome, and so is a cancel, whenever it comes; an
// account that cannot be used, and a disk that is full, are errors: nothing was sent then. Where `route` is given,
// it is held to that as by account::CheckRoute.
Result<smtp::Outcome> SendRequest(const SupportRequest& request, const SystemFacts& facts, const smtp::Address& to,
                                  const run::RunPlace& place, const std::optional<account::Route>& route = {});

// Makes the message as sending does, and sends nothing: what came of it is kSent where it could go, else the outcome
// that sending has of a file.
Result<smtp::Outcome> TryRequest(const SupportRequest& request, const RequestContents& contents,
                                 const run::RunPlace& place);

// The whole message, as it would go. Gives its octets. After a failure what stood there before still does.
Result<std::uint64_t> WriteRequest(const SupportRequest& request, const RequestContents& contents,
                                   const std::filesystem::path& file, const run::RunPlace& place);

// What a person is told in the end; after a failure the online page is offered, and opened where it is wanted. Nothing
// where it was cancelled, for that is no failure.
Result<void> TellEnd(const Result<smtp::Outcome>& end, platform::Prompts& prompts, platform::Desktop& desktop);

// The same in a sentence, with the reason and the server's own words.
Sentence WhatBecameOf(const Result<smtp::Outcome>& end);

// The question behind a failure.
inline constexpr const char* kOnlineQuestion =
    "Sending your support request to Tarnwick failed.\r\nWould you like to visit the online support form instead?";
// The first line of what is told after a success.
inline constexpr const char* kSentSentence = "Your message has been successfully sent to Tarnwick.";
// The code of the result table.
smtp::ResultCode CodeOf(const Result<smtp::Outcome>& end);

}  // namespace quillcast::support
