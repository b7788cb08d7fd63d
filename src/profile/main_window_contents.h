// What the main window shows when it has loaded: its lists, its fixed texts, and what the settings choose.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "platform/result.h"
#include "profile/settings_store.h"

namespace quillcast::profile {

inline constexpr std::array<const char*, 4> kStatusPanels = {"For Help Press F1", "INS", "CAPS", "NUM"};
inline constexpr std::array<const char*, 3> kSendingMethods = {"Personal Sending", "Bulk Sending", "3rd Party Sending"};
inline constexpr std::array<const char*, 3> kPriorities = {"Low", "Normal", "High"};
inline constexpr std::array<const char*, 2> kFormats = {"HTML", "Text"};

// Texts as they are stored, not checked: a box may lack the entry that one names.
struct MainWindowContents {
  std::string from;                           // "Ada <ada@example.org>"; empty while the account is incomplete
  std::vector<std::string> groups;            // the To box, in the order of the store
  std::optional<std::string> signature_html;  // starts a new document when the signature is on
  std::string method;  // the stored short text ("Personal"), which need not be an item of the list
  std::string priority = "Normal";
  std::string format;  // "HTML", "Text", or empty when the setting names neither
};

// "Name <Email>", or empty when one of the two is.
Result<std::string> SenderText(const SettingsStore& settings);

// Where the signature is kept; document/signature writes it.
inline constexpr const char* kSignatureSection = "Signature";
inline constexpr const char* kSignatureStatus = "Status";
inline constexpr const char* kSignatureMessage = "Message";

// What a new document starts with; nothing while the signature is off. Where none was saved it is the empty text: the
// built-in one, which its dialog shows, is never put into a message unasked.
Result<std::optional<std::string>> SignatureOfNewDocument(const SettingsStore& settings);

// `group_names` come in the order of the store. Fails only when the settings file is there and cannot be read.
Result<MainWindowContents> LoadMainWindow(const SettingsStore& settings, std::vector<std::string> group_names);

}  // namespace quillcast::profile
