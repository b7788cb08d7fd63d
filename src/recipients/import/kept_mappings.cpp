#include "recipients/import/kept_mappings.h"

#include <algorithm>
#include <functional>
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

constexpr std::ptrdiff_t kLongestName = 100;  // characters

Error NoSuchMapping(std::string_view name) {
  return {Failure::kUsage, Say("There is no mapping \"{}\".", platform::Printable(name, 100)), kNoSuchMappingRemedy};
}

Error Damaged(const std::string& name, const char* key) {
  return {Failure::kBadData,
          Say("The mapping \"{}\" is damaged: its \"{}\" cannot be read.", platform::Printable(name, 100), key),
          "Remove it, or keep another under its name."};
}

bool IsNumberOfLines(const json& value) {
  if (!value.is_number_integer()) return false;
  if (!value.is_number_unsigned() && value.get<std::int64_t>() < 0) return false;
  return value.get<std::uint64_t>() <= static_cast<std::uint64_t>(kMostSkipped);
}

// What it holds is never guessed at, as the fields hang on it: each is of the kind that Store wrote, or not there.
Result<void> CheckKinds(const std::string& name, const json& row) {
  using Kind = json::value_t;
  if (!row.is_object()) return Damaged(name, "map");
  for (const auto& [key, kind] : {std::pair("map", Kind::string),
                                  {"delimiter", Kind::string},
                                  {"columns", Kind::string},
                                  {"sheet", Kind::string},
                                  {"encoding", Kind::string},
                                  {"quotes", Kind::boolean},
                                  {"rfc4180", Kind::boolean}}) {
    if (row.contains(key) && row[key].type() != kind) return Damaged(name, key);
  }
  if (row.contains("skip") && !IsNumberOfLines(row["skip"])) return Damaged(name, "skip");
  return {};
}

std::string TextOf(const json& row, const char* key) { return row.value(key, ""); }

Result<void> TakePlaces(const json& row, KeptMapping& kept) {
  // Headings could once choose fields behind the eighteenth; who applies the mapping is told of them.
  if (const std::string map = TextOf(row, "map"); !map.empty()) {
    const auto mapping = ParseMapping(map, std::numeric_limits<int>::max());
    if (!mapping) return Damaged(kept.name, "map");
    kept.mapping = *mapping;
  }
  if (row.contains("delimiter")) {
    const auto delimiter = DelimiterOf(TextOf(row, "delimiter"));
    if (!delimiter) return Damaged(kept.name, "delimiter");
    kept.delimiter = *delimiter;
  }
  auto columns = ParseColumns(TextOf(row, "columns"));
  if (!columns) return Damaged(kept.name, "columns");
  kept.columns = std::move(*columns);
  return {};
}

Result<KeptMapping> FromJson(const std::string& name, const json& row) {
  KeptMapping kept;
  kept.name = name;
  if (const auto checked = CheckKinds(name, row); !checked) return checked.error();
  if (const auto taken = TakePlaces(row, kept); !taken) return taken.error();
  kept.skip = row.value("skip", std::int64_t{0});
  kept.quotes = row.value("quotes", false);
  kept.rfc4180 = row.value("rfc4180", false);
  kept.sheet = TextOf(row, "sheet");
  kept.encoding = TextOf(row, "encoding");
  return kept;
}

json ToJson(const KeptMapping& kept) {
  return {{"map", MappingText(kept.mapping)},
          {"delimiter", NameOf(kept.delimiter)},
          {"quotes", kept.quotes},
          {"rfc4180", kept.rfc4180},
          {"skip", kept.skip},
          {"sheet", kept.sheet},
          {"encoding", kept.encoding},
          {"columns", ColumnsText(kept.columns)}};
}

// By name, as they are stored. What is not that is refused: kept over, all that it may still hold would be lost.
Result<json> RowsOf(const profile::SettingsStore& settings, const std::string& stored) {
  if (stored.empty()) return json::object();
  json all = json::parse(stored, nullptr, false);
  if (all.is_object()) return all;
  return Error{Failure::kBadData,
               Say("The kept mappings are damaged: \"{}\" of the section \"{}\" in {} cannot be read.", kKey, kSection,
                   settings.file().string()),
               kDamagedMappingsRemedy};
}

Result<json> Rows(const profile::SettingsStore& settings) {
  const auto stored = settings.Read(kSection, kKey, "");
  return stored ? RowsOf(settings, *stored) : stored.error();
}

json::iterator Find(json& rows, std::string_view name) {
  auto at = rows.begin();
  while (at != rows.end() && !platform::EqualsIgnoringAsciiCase(at.key(), name)) ++at;
  return at;
}

// Of two programs that change them at once neither loses what the other keeps.
Result<void> ChangeRows(profile::SettingsStore& settings, const std::function<Result<void>(json&)>& change) {
  return settings.Change(kSection, kKey, [&](const std::string& stored) -> Result<std::string> {
    auto rows = RowsOf(settings, stored);
    if (!rows) return rows.error();
    if (const auto changed = change(*rows); !changed) return changed.error();
    return rows->dump(-1, ' ', false, json::error_handler_t::replace);
  });
}

}  // namespace

Result<std::vector<std::string>> ListMappingNames(const profile::SettingsStore& settings) {
  const auto rows = Rows(settings);
  if (!rows) return rows.error();
  std::vector<std::string> names;
  for (const auto& [name, row] : rows->items()) names.push_back(name);
  return names;
}

Result<KeptMapping> FindMapping(const profile::SettingsStore& settings, std::string_view name) {
  auto rows = Rows(settings);
  if (!rows) return rows.error();
  const auto found = Find(*rows, name);
  if (found == rows->end()) return NoSuchMapping(name);
  return FromJson(found.key(), found.value());
}

bool HasMapping(const profile::SettingsStore& settings, std::string_view name) {
  auto rows = Rows(settings);
  return rows && Find(*rows, name) != rows->end();
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
  return ChangeRows(settings, [&mapping](json& rows) -> Result<void> {
    const std::string name(platform::Trim(mapping.name));
    if (const auto before = Find(rows, name); before != rows.end()) rows.erase(before);
    rows[name] = ToJson(mapping);
    return {};
  });
}

Result<void> DeleteMapping(profile::SettingsStore& settings, std::string_view name) {
  return ChangeRows(settings, [name](json& rows) -> Result<void> {
    const auto found = Find(rows, name);
    if (found == rows.end()) return NoSuchMapping(name);
    rows.erase(found);
    return {};
  });
}

Result<void> ForgetMappings(profile::SettingsStore& settings) { return settings.Write(kSection, kKey, ""); }

Result<bool> ForgetDamagedMappings(profile::SettingsStore& settings) {
  bool are_damaged = false;
  const auto changed = settings.Change(kSection, kKey, [&](const std::string& stored) -> Result<std::string> {
    are_damaged = !RowsOf(settings, stored);
    return are_damaged ? std::string() : stored;
  });
  if (!changed) return changed.error();
  return are_damaged;
}

}  // namespace quillcast::recipients
