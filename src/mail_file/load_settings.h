// How the windows and commands for message files load them: as the account's "Extended" says, with what is told then.
#pragma once

#include <filesystem>
#include <string_view>
#include <vector>

#include "mail_file/mail_message.h"
#include "profile/settings_store.h"

namespace quillcast::mail_file {

inline constexpr std::string_view kMessageFileFilter = "Email Files (*.eml)|*.eml|All Files (*.*)|*.*";
// What each of the dialogs warns of first.
inline constexpr std::string_view kNoMessageFile = "Please specify a file.";

// kExtended for "1" alone. Fails only when the settings cannot be read.
Result<LoadMode> LoadModeOf(const profile::SettingsStore& settings);

// What a box says of a load, to the letter: "Error 259: Could not find boundry mark."; empty when there is nothing to
// say. What loaded is used all the same.
std::string_view LoadWarning(const Loading& loading);

// What was found wrong, with what it is about, for a window: the first three faults, how many more there are, and
// whether it may be no message.
std::vector<Sentence> WhatWasWrong(const Loading& loading);

// Said of a file without a single header field, which loads all the same; empty of any other.
Sentence WhyNoMessage(const MailMessage& message);

// Before something is written that is made of a message file: kNotPermitted where it would take the place of that
// file, by whichever spelling or link.
Result<void> CheckIsNotMessage(const std::filesystem::path& target, const std::filesystem::path& message);

}  // namespace quillcast::mail_file
