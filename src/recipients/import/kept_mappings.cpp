#include "recipients/import/kept_mappings.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "platform/text.h"
#include "recipients/delimiters.h"

namespace quillcast::recipients {
namespace {

using nlohmann::json;

constexpr std::string_view kSection = "Import";
constexpr std::string_view kKey = "Mappings";

bool HasName(const KeptMapping& kept, std::string_view name) {
  return platform::EqualsIgnoringAsciiCase(kept.name, name);
}

Error NoSuchMapping(std::string_view name) {
  return {Failure::kUsage, Say("There is no mapping \"{}\".", platform::Printable(name, 100)),
          "`quillcast import --list-mappings` names those that are kept; `--save-mapping` keeps one."};
}

// A value that is missing or of another kind is as if it were not set.
KeptMapping FromJson(const std::string& name, const json& row) {
  KeptMapping kept;
  kept.name = name;
  const auto text = [&row](const char* key) {
    return row.value(key, json()).is_string() ? row[key].get<std::string>() : "";
  };
  const auto flag = [&row](const char* key) { return row.value(key, json()) == json(true); };
  if (const auto mapping = ParseMapping(text("map"))) kept.mapping = *mapping;
  kept.delimiter = DelimiterOf(text("delimiter")).value_or(',');
  kept.quotes = flag("quotes");
  kept.rfc4180 = flag("rfc4180");
  if (const auto skip = row.value("skip", json()); skip.is_number_integer()) kept.skip = skip.get<std::int64_t>();
  return kept;
}

Result<void> Store(profile::SettingsStore& settings, const std::vector<KeptMapping>& all) {
  json rows = json::object();
  for (const KeptMapping& kept : all) {
    rows[kept.name] = {{"map", MappingText(kept.mapping)},
                       {"delimiter", NameOf(kept.delimiter)},
                       {"quotes", kept.quotes},
                       {"rfc4180", kept.rfc4180},
                       {"skip", kept.skip}};
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

Result<void> KeepMapping(profile::SettingsStore& settings, const KeptMapping& mapping) {
  if (platform::Trim(mapping.name).empty()) {
    return Error{Failure::kUsage, "A mapping is kept under a name.", "Name it: --save-mapping \"Web shop\"."};
  }
  auto all = ListMappings(settings);
  if (!all) return all.error();
  std::erase_if(*all, [&mapping](const auto& kept) { return HasName(kept, mapping.name); });
  all->push_back(mapping);
  return Store(settings, *all);
}

Result<void> DeleteMapping(profile::SettingsStore& settings, std::string_view name) {
  auto all = ListMappings(settings);
  if (!all) return all.error();
  if (std::erase_if(*all, [name](const auto& kept) { return HasName(kept, name); }) == 0) return NoSuchMapping(name);
  return Store(settings, *all);
}

}  // namespace quillcast::recipients
