#include "account/import/key_file.h"

#include "platform/text.h"

namespace quillcast::account {

using platform::Trim;

void ReadKeyFile(std::string_view file, const std::function<void(const KeyLine&)>& take) {
  if (file.starts_with(kUtf8Mark)) file.remove_prefix(kUtf8Mark.size());
  std::string_view section;
  while (!file.empty()) {
    const std::size_t end = file.find('\n');
    const std::string_view line = Trim(file.substr(0, end));
    file.remove_prefix(end == std::string_view::npos ? file.size() : end + 1);
    if (line.starts_with('[') && line.ends_with(']')) {
      section = Trim(line.substr(1, line.size() - 2));
      continue;
    }
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos || line.starts_with('#') || line.starts_with(';')) continue;
    const std::string_view key = Trim(line.substr(0, equals));
    if (key.empty() || key.ends_with(']')) continue;
    take({section, key, Trim(line.substr(equals + 1))});
  }
}

std::string KeyFileText(std::string_view value) {
  std::string text;
  for (std::size_t i = 0; i < value.size(); ++i) {
    if (value[i] != '\\' || i + 1 == value.size()) {
      text += value[i];
      continue;
    }
    switch (const char escaped = value[++i]) {
      case 's':
        text += ' ';
        break;
      case 'n':
        text += '\n';
        break;
      case 't':
        text += '\t';
        break;
      case 'r':
        text += '\r';
        break;
      case '\\':
        text += '\\';
        break;
      default:
        text += '\\';
        text += escaped;
    }
  }
  return text;
}

}  // namespace quillcast::account
