// What the controls of the account dialog are called.
#pragma once

#include <array>

#include "account/account_form.h"

namespace quillcast::desktop {

// In the order in which the method's choices are given.
inline constexpr std::array<const char*, 3> kMethodButtons = {"PersonalRadioButton", "BulkRadioButton",
                                                              "ThirdRadioButton"};

// In the order of AccountControl. The method has a radio button for each of its choices: see kMethodButtons.
inline constexpr std::array<const char*, static_cast<std::size_t>(account::AccountControl::kCount)> kAccountControls = {
    "FullNameTextBox",
    "EmailTextBox",
    "ServerTextBox",
    "PortTextBox",
    "AuthCheckBox",
    "UsernameTextBox",
    "PasswordTextBox",
    "AuthModeComboBox",
    "PipelineCheckBox",
    "NoAuthCheckBox",
    "BoundaryCheckBox",
    "TimeoutTextBox",
    "PersonalRadioButton",
    "ToFieldComboBox",
    "BCCFieldTextBox",
    "ThirdFieldComboBox",
    "ThirdPathTextBox",
    "HeaderEncodingComboBox",
    "ContentEncodingComboBox",
    "AttachmentEncodingComboBox",
    "CharSetComboBox",
    "AutoWrapCheckBox",
    "WrapTextBox",
    "TextPartCheckBox",
    "ExtendedCheckBox",
    "NotifyComboBox",
    "ReturnComboBox",
    "SecurityComboBox",
    "PasswordFromComboBox",
    "PasswordCommandTextBox",
    "RateTextBox",
    "QuotaHourTextBox",
    "QuotaDayTextBox",
    "DomainRateTextBox",
    "HoursTextBox",
    "PauseAfterTextBox",
    "PerConnectionTextBox",
    "ConnectionsTextBox",
    "RetriesTextBox",
    "RetryAfterTextBox",
    "SlowDownCheckBox",
    "NetworkWaitTextBox",
    "ThirdCommandButton",
    "WrapUpDown"};

static_assert(kAccountControls.back() != nullptr, "each control has its name");

// The objectName of the control, by which the form and its tests find it.
constexpr const char* NameOf(account::AccountControl control) {
  return kAccountControls.at(static_cast<std::size_t>(control));
}
constexpr const char* NameOf(account::AccountKey key) { return NameOf(account::ControlOf(key)); }

}  // namespace quillcast::desktop
