#include "support/support_request.h"

#include <fmt/format.h>

#include <algorithm>

#include "account/account_settings.h"
#include "platform/session_log.h"
#include "platform/text.h"
#include "profile/startup.h"
#include "profile/version.h"
#include "run/history.h"
#include "smtp/envelope_address.h"

namespace quillcast::support {
namespace {

namespace fs = std::filesystem;

// A link leads to what nobody asked to be sent.
std::optional<fs::path> IfThere(fs::path file) {
  if (!fs::is_regular_file(fs::symlink_status(file, IgnoreErrors()))) return {};
  return file;
}

}  // namespace

std::string ProductName() {
  return fmt::format("{} {}.{}", profile::kWindowTitle, profile::kVersionMajor, profile::kVersionMinor);
}

Result<SupportRequest> NewRequest(const profile::SettingsStore& settings) {
  const auto stored = account::AccountSettings::Load(settings);
  if (!stored) return stored.error();
  SupportRequest request;
  request.name = (*stored)[account::AccountKey::kName];
  request.email = (*stored)[account::AccountKey::kEmail];
  return request;
}

std::optional<Complaint<SupportControl>> CheckRequest(const SupportRequest& request) {
  auto complaint = CheckDescription(request);
  return complaint ? complaint : CheckEmail(request);
}

std::optional<Complaint<SupportControl>> CheckDescription(const SupportRequest& request) {
  if (request.description.empty()) {
    return Complaint<SupportControl>{"Please enter your description.", SupportControl::kDescription};
  }
  if (request.description.size() > kLongestDescription) {
    return Complaint<SupportControl>{
        "", SupportControl::kDescription,
        Say("The description has {} bytes; at most {} are sent. Attach the rest as a file.",
            platform::WithThousands(static_cast<std::int64_t>(request.description.size())),
            platform::WithThousands(static_cast<std::int64_t>(kLongestDescription)))};
  }
  return {};
}

std::optional<Complaint<SupportControl>> CheckEmail(const SupportRequest& request) {
  const auto ats = std::count(request.email.begin(), request.email.end(), '@');
  const std::string_view typed = platform::Trim(request.email);
  // Words beside an address that is not in brackets are a part of it to whoever typed them.
  const bool has_words = !typed.ends_with('>') && typed.find_first_of(" \t") != std::string_view::npos;
  if (ats != 1 || has_words || !smtp::EnvelopeAddress(request.email)) {
    return Complaint<SupportControl>{
        "", SupportControl::kEmail,
        Say("\"{}\" is no address that an answer could go to.", platform::Printable(request.email, 80))};
  }
  return {};
}

Result<FurtherFiles> FindFurtherFiles(const profile::Folders& folders) {
  FurtherFiles files;
  auto report = run::NewestReport(folders.History());
  if (!report) return report.error();
  if (*report) files[1] = IfThere(run::MessageOf(**report));
  files[0] = std::move(*report);
  files[2] = IfThere(platform::SessionLog::FileIn(folders.data));
  return files;
}

}  // namespace quillcast::support
