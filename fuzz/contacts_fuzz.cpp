// Address books of any bytes: the cards of a vCard file and the entries of an LDIF file must hold their promises.
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "platform/file.h"
#include "platform/utf8.h"
#include "recipients/import/contact_card.h"
#include "recipients/import/open_lines.h"

using namespace quillcast;

namespace {

void Require(bool promise) {
  if (!promise) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static const auto file = std::filesystem::temp_directory_path() / ("contacts_fuzz." + std::to_string(::rand()));
  Require(static_cast<bool>(platform::ReplaceFile(file, {reinterpret_cast<const char*>(bytes), size})));
  for (const auto format : {recipients::FileFormat::kVCard, recipients::FileFormat::kLdif}) {
    const auto lines = recipients::OpenLines(file, {.format = format}, "ISO-8859-1");
    Require(static_cast<bool>(lines));
    std::int64_t number = 0;
    const auto read = (*lines)->Read([&](const recipients::FieldLine& line) {
      Require(line.number > number && line.fields.size() == recipients::kFieldCount);
      number = line.number;
      for (const auto field : line.fields) {
        Require(platform::IsUtf8(field) && field.size() <= 4 * recipients::kLongestContactValue);
      }
      return true;
    });
    Require(static_cast<bool>(read));
  }
  std::filesystem::remove(file);
  return 0;
}
