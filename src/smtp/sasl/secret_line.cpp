#include "smtp/sasl/secret_line.h"

#include "platform/base64.h"

namespace quillcast::smtp {

// Room is made first in both, for growing would leave a copy behind.
SecretLine SecretLine::Coded(const platform::Secret& message) {
  std::string coded;
  coded.reserve((message.view().size() + 2) / 3 * 4);
  platform::AppendBase64(coded, message.view());
  return {std::move(coded), "****"};
}

SecretLine SecretLine::Behind(const SmtpLine& command) const {
  const std::string_view argument = text_.empty() ? "=" : text_.view();
  std::string line;
  line.reserve(command.text().size() + 1 + argument.size());
  line.append(command.text()).append(" ").append(argument);
  return {std::move(line), std::string(command.text()) + " " + shown_};
}

}  // namespace quillcast::smtp
