// Makes the template of the recipient store that is installed with the program: make_group_template SCHEMA OUTPUT.
#include <cstdio>
#include <filesystem>

#include "platform/file.h"
#include "recipients/store_connection.h"

int main(int count, char** words) {
  using namespace quillcast;
  if (count != 3) return 64;
  constexpr std::uint64_t kLongestSchema = 1 << 20;
  const auto schema = platform::ReadFile(words[1], kLongestSchema);
  std::error_code ignored;
  std::filesystem::remove(words[2], ignored);
  const auto made = schema ? recipients::CreateStoreFile(words[2], *schema) : Result<void>(schema.error());
  if (made) return 0;
  std::fprintf(stderr, "%s\n", Describe(made.error()).c_str());
  return ExitCode(made.error().failure);
}
