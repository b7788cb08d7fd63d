#include "profile/main_window_contents.h"

#include "platform/text.h"

namespace quillcast::profile {

Result<std::string> SenderText(const SettingsStore& settings) {
  auto name = settings.Read("Account", "Name", "");
  if (!name) return name;
  auto email = settings.Read("Account", "Email", "");
  if (!email) return email;
  if (name->empty() || email->empty()) return std::string();
  return *name + " <" + *email + ">";
}

Result<std::optional<std::string>> SignatureOfNewDocument(const SettingsStore& settings) {
  const auto status = settings.Read(kSignatureSection, kSignatureStatus, "0");
  if (!status) return status.error();
  if (platform::ParseWholeNumber(*status) != 1) return std::optional<std::string>();
  auto html = settings.Read(kSignatureSection, kSignatureMessage, "");
  if (!html) return html.error();
  return std::optional<std::string>(std::move(*html));
}

Result<MainWindowContents> LoadMainWindow(const SettingsStore& settings, std::vector<std::string> group_names) {
  MainWindowContents contents;
  auto from = SenderText(settings);
  if (!from) return from.error();
  contents.from = std::move(*from);
  contents.groups = std::move(group_names);

  auto signature = SignatureOfNewDocument(settings);
  if (!signature) return signature.error();
  contents.signature_html = std::move(*signature);

  auto method = settings.Read("Account", "Method", "Personal");
  if (!method) return method.error();
  contents.method = std::move(*method);

  const auto encoding = settings.Read("Advanced", "Encoding", "MIME");
  if (!encoding) return encoding.error();
  if (*encoding == "MIME") contents.format = "HTML";
  if (*encoding == "Plain") contents.format = "Text";
  return contents;
}

}  // namespace quillcast::profile
