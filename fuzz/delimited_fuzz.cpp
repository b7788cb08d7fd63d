// Delimited files of any bytes: detection, decoding, lines, mapping and the address rule must hold their promises.
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "platform/file.h"
#include "platform/utf8.h"
#include "recipients/check_email.h"
#include "recipients/import/address_harvest.h"
#include "recipients/import/headings.h"
#include "recipients/import/import_sample.h"
#include "smtp/envelope_address.h"

using namespace quillcast;

namespace {

void Require(bool promise) {
  if (!promise) std::abort();
}

void ReadLines(const std::filesystem::path& file, const recipients::ReadingOptions& options) {
  auto lines = recipients::OpenLines(file, options, "ISO-8859-1");
  if (!lines) return;
  recipients::ImportMapping mapping;
  for (std::size_t field = 0; field < recipients::kFieldCount; ++field)
    mapping.source[field] = static_cast<int>(field) + 1;
  std::int64_t number = 0;
  IgnoreErrors((*lines)->Read([&](const recipients::FieldLine& line) {
    Require(line.number > number && line.fields.size() <= options.most_fields);
    Require(line.fields.empty() == (line.fault != recipients::LineFault::kNone));
    number = line.number;
    recipients::MapByHeadings(line.fields);
    for (const auto value : recipients::MapFields(line.fields, !options.rfc4180, mapping)) {
      Require(platform::IsUtf8(value));
      Require(options.rfc4180 || value.find_first_of("\r\n") == std::string_view::npos);
      if (const auto address = smtp::EnvelopeAddress(value)) {
        Require(address->text().find_first_of(" \r\n<>") == std::string::npos);
      }
    }
    return true;
  }));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static const auto file = std::filesystem::temp_directory_path() / ("delimited_fuzz." + std::to_string(::rand()));
  const std::string_view text(reinterpret_cast<const char*>(bytes), size);
  Require(static_cast<bool>(platform::ReplaceFile(file, text)));
  for (const char* overrule : {"", "UTF-16LE", "Shift_JIS"}) {
    for (const bool quoted : {false, true}) ReadLines(file, {.rfc4180 = quoted, .encoding = overrule});
  }
  recipients::ReadingOptions reading;
  const auto delimiter = recipients::FindDelimiterOf(file, reading, "ISO-8859-1");
  Require(delimiter && !recipients::NameOf(delimiter->delimiter.character).empty());
  std::filesystem::remove(file);

  recipients::AddressHarvest harvest([](std::string_view address, bool) {
    Require(recipients::FindAddress(address, 0)->length == address.size());
    return true;
  });
  harvest.Feed(text.substr(0, size / 2));
  harvest.Feed(text.substr(size / 2));
  harvest.Finish();
  return 0;
}
