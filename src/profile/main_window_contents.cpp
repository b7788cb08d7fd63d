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

Result<MainWindowContents> LoadMainWindow(const SettingsStore& settings, std::vector<std::string> group_names) {
  MainWindowContents contents;
  auto from = SenderText(settings);
  if (!from) return from.error();
  contents.from = std::move(*from);
  contents.groups = std::move(group_names);

  const auto signature = settings.Read("Signature", "Status", "0");
  if (!signature) return signature.error();
  if (platform::ParseWholeNumber(*signature) == 1) {
    auto html = settings.Read("Signature", "Message", "");
    if (!html) return html.error();
    contents.signature_html = std::move(*html);
  }

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
