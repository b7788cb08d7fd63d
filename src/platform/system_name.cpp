#include "platform/system_name.h"

#include "platform/file.h"
#include "platform/text.h"

namespace quillcast::platform {
namespace {

constexpr std::uint64_t kLongestFile = 64ULL * 1024;

// A value as a shell reads it: in quotes of either kind or none, with backslashes before what would end it.
std::string Unquoted(std::string_view value) {
  value = Trim(value);
  const bool is_quoted =
      value.size() >= 2 && (value.front() == '"' || value.front() == '\'') && value.back() == value.front();
  if (is_quoted) value = value.substr(1, value.size() - 2);
  std::string out;
  for (std::size_t at = 0; at < value.size(); ++at) {
    if (value[at] == '\\' && at + 1 < value.size()) ++at;
    out += value[at];
  }
  return out;
}

}  // namespace

std::string SystemNameIn(std::string_view os_release) {
  std::string name;
  std::string pretty;
  for (const auto line : Split(os_release, '\n')) {
    if (line.starts_with("NAME=")) name = Unquoted(line.substr(5));
    if (line.starts_with("PRETTY_NAME=")) pretty = Unquoted(line.substr(12));
  }
  return Printable(pretty.empty() ? name : pretty, 100);
}

std::string SystemName() {
  for (const char* file : {"/etc/os-release", "/usr/lib/os-release"}) {
    const auto content = ReadFile(file, kLongestFile);
    if (!content) continue;
    if (auto name = SystemNameIn(*content); !name.empty()) return name;
  }
  return "Linux";
}

}  // namespace quillcast::platform
