// What the account lays down for the messages of a run.
#pragma once

#include <string>
#include <string_view>

#include "account/account_settings.h"
#include "message/message_options.h"
#include "platform/result.h"

namespace quillcast::account {

// `body_format` is the setting Encoding of the section Advanced: "Plain" sends text without MIME, anything else MIME.
// Fails with kNotConfigured for a value that cannot be used, naming it.
Result<message::MessageOptions> MessageOptionsOf(const AccountSettings& account, std::string_view body_format);

// As it is stored.
Result<std::string> LoadBodyFormat(const profile::SettingsStore& settings);
// The same with the body format as it is stored.
Result<message::MessageOptions> LoadMessageOptions(const profile::SettingsStore& settings,
                                                   const AccountSettings& account);

}  // namespace quillcast::account
