#include "recipients/import/kept_mappings.h"

#include <algorithm>
#include <limits>
#include <nlohmann/json.hpp>

#include "platform/text.h"
#include "recipients/delimiters.h"
#include "recipients/import/taken_fields.h"

namespace quillcast::recipients {
namespace {

using nlohmann::json;

constexpr std::string_view kSection = "Import";
constexpr std::string_view kKey = "Mappings";

bool HasName(const KeptMapping& kept, std::string_view name) {
  return platform::EqualsIgnoringAsciiCase(kept.name, name);
}

constexpr std::ptrdiff_t kLongestName = 100;  // characters

Error NoSuchMapping(std::string_view name) {
  return {Failure::kUsage, Say("There is no mapping \"{}\".", platform::Printable(name, 100)), kNoSuchMappingRemedy};
}

// A value that is missing or of another kind is as if it were not set.
KeptMapping FromJson(const std::string& name, const json& row) {
  KeptMapping kept;
  kept.name = name;
  const auto text = [&row](const char* key) {
    return row.value(key, json()).is_string() ? row[key].get<std::string>() : "";
  };
  const auto flag = [&row](const char* key) { return row.value(key, json()) == json(true); };
  // Headings could once choose fields behind the eighteenth; who applies the mapping is told of them.
  if (const auto mapping = ParseMapping(text("map"), std::numeric_limits<int>::max())) kept.mapping = *mapping;
  kept.delimiter = DelimiterOf(text("delimiter")).value_or(',');
  kept.quotes = flag("quotes");
  kept.rfc4180 = flag("rfc4180");
  if (const auto skip = row.value("skip", json()); skip.is_number_integer()) kept.skip = skip.get<std::int64_t>();
  kept.sheet = text("sheet");
  kept.encoding = text("encoding");
  if (const auto columns = ParseColumns(text("columns"))) kept.columns = *columns;
  return kept;
}

Result<void> Store(profile::SettingsStore& settings, const std::vector<KeptMapping>& all) {
  json rows = json::object();
  for (const KeptMapping& kept : all) {
    rows[kept.name] = {{"map", MappingText(kept.mapping)},
                       {"delimiter", NameOf(kept.delimiter)},
                       {"quotes", kept.quotes},
                       {"rfc4180", kept.rfc4180},
                       {"skip", kept.skip},
                       {"sheet", kept.sheet},
                       {"encoding", kept.encoding},
                       {"columns", ColumnsText(kept.columns)}};
  }
  return settings.Write(kSection, kKey, rows.dump(-1, ' ', false, json::error_handler_t::replace));
}

}  // namespace

Result<std::vector<KeptMapping>> ListMappings(const profile::SettingsStore& settings) {
  const auto stored = settings.Read(kSection, kKey, "");
  if (!stored) return stored.error();
  std::vector<KeptMapping> all;
  const json rows = json::parse(*stored, nullptr, false);
  if (!rows.is_object()) return all;
  for (const auto& [name, row] : rows.items()) {
    if (row.is_object()) all.push_back(FromJson(name, row));
  }
  return all;
}

Result<KeptMapping> FindMapping(const profile::SettingsStore& settings, std::string_view name) {
  const auto all = ListMappings(settings);
  if (!all) return all.error();
  const auto found = std::find_if(all->begin(), all->end(), [name](const auto& kept) { return HasName(kept, name); });
  if (found == all->end()) return NoSuchMapping(name);
  return *found;
}

Result<void> CheckMappingName(std::string_view name) {
  name = platform::Trim(name);
  if (name.empty()) {
    return Error{Failure::kUsage, "A mapping is kept under a name.", "Name it for where the lists come from."};
  }
  if (platform::Printable(name, name.size()) != name) {
    return Error{Failure::kUsage,
                 "A line end, or another sign that is not seen, cannot stand in the name of a mapping.",
                 "Name it in letters, digits and signs."};
  }
  const auto begins = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; };
  if (std::count_if(name.begin(), name.end(), begins) > kLongestName) {
    return Error{Failure::kUsage, "The name of a mapping has 100 characters at most.", "Give it a shorter one."};
  }
  return {};
}

Result<void> KeepMapping(profile::SettingsStore& settings, const KeptMapping& mapping) {
  if (auto checked = CheckMappingName(mapping.name); !checked) return checked;
  KeptMapping named = mapping;
  named.name = platform::Trim(mapping.name);
  auto all = ListMappings(settings);
  if (!all) return all.error();
  std::erase_if(*all, [&named](const auto& kept) { return HasName(kept, named.name); });
  all->push_back(std::move(named));
  return Store(settings, *all);
}

Result<void> DeleteMapping(profile::SettingsStore& settings, std::string_view name) {
  auto all = ListMappings(settings);
  if (!all) return all.error();
  if (std::erase_if(*all, [name](const auto& kept) { return HasName(kept, name); }) == 0) return NoSuchMapping(name);
  return Store(settings, *all);
}

}  // namespace quillcast::recipients
