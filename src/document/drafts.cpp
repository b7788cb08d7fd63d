#include "document/drafts.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "document/body_file.h"
#include "platform/file.h"
#include "platform/text.h"
#include "profile/main_window_contents.h"

namespace quillcast::document {
namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kLongestFields = 16ULL * 1024 * 1024;
constexpr std::int64_t kBeingWritten = 0;
constexpr std::int64_t kLastNumber = std::numeric_limits<std::int64_t>::max() - 1;
constexpr std::string_view kOffered = "Recovered";
constexpr std::string_view kBodyEnding = ".htm";

fs::path FieldsOf(fs::path body) { return body.replace_extension(".fields"); }

// A value stands on one line.
constexpr auto kEscapes = std::to_array<std::pair<char, char>>({{'\\', '\\'}, {'\n', 'n'}, {'\r', 'r'}});

void Append(std::string& out, std::string_view name, std::string_view value) {
  out.append(name).append(": ");
  for (const char c : value) {
    const auto* const escape =
        std::find_if(kEscapes.begin(), kEscapes.end(), [c](const auto& row) { return row.first == c; });
    if (escape == kEscapes.end()) {
      out += c;
    } else {
      out.append(1, '\\').append(1, escape->second);
    }
  }
  out += '\n';
}

std::string Unescaped(std::string_view value) {
  std::string out;
  for (std::size_t at = 0; at < value.size(); ++at) {
    const auto* const escape = std::find_if(kEscapes.begin(), kEscapes.end(), [&](const auto& row) {
      return value[at] == '\\' && at + 1 < value.size() && row.second == value[at + 1];
    });
    if (escape == kEscapes.end()) {
      out += value[at];
    } else {
      out += escape->first;
      ++at;
    }
  }
  return out;
}

using Values = std::vector<std::string>;

struct Field {
  const char* name;
  Values (*values)(const Draft&);
  void (*take)(Draft&, std::string value);
};

constexpr auto kFields = std::to_array<Field>({
    {"Subject", [](const Draft& draft) { return Values{draft.document.subject}; },
     [](Draft& draft, std::string value) { draft.document.subject = std::move(value); }},
    {"Group", [](const Draft& draft) { return Values{draft.group}; },
     [](Draft& draft, std::string value) { draft.group = std::move(value); }},
    {"Attachment", [](const Draft& draft) { return draft.document.attachments.paths(); },
     [](Draft& draft, std::string value) { draft.document.attachments.Add(value); }},
    {"Format",
     [](const Draft& draft) { return Values{profile::kFormats.at(static_cast<std::size_t>(draft.document.format))}; },
     [](Draft& draft, std::string value) { draft.document.format = FormatFrom(value); }},
    {"Priority",
     [](const Draft& draft) {
       return Values{profile::kPriorities.at(static_cast<std::size_t>(draft.document.priority))};
     },
     [](Draft& draft, std::string value) { draft.document.priority = PriorityFrom(value); }},
    {"Receipt", [](const Draft& draft) { return Values{draft.document.read_receipt ? "1" : "0"}; },
     [](Draft& draft, std::string value) { draft.document.read_receipt = value == "1"; }},
    {"Method", [](const Draft& draft) { return Values{draft.method}; },
     [](Draft& draft, std::string value) { draft.method = std::move(value); }},
    {"Folder", [](const Draft& draft) { return Values{draft.document.base_folder.string()}; },
     [](Draft& draft, std::string value) { draft.document.base_folder = std::move(value); }},
    {"File", [](const Draft& draft) { return Values{draft.file.string()}; },
     [](Draft& draft, std::string value) { draft.file = std::move(value); }},
    {"Changed", [](const Draft& draft) { return Values{draft.is_changed ? "1" : "0"}; },
     [](Draft& draft, std::string value) { draft.is_changed = value != "0"; }},
});

std::string WriteFields(const Draft& draft) {
  std::string out;
  for (const Field& field : kFields) {
    for (const auto& value : field.values(draft)) Append(out, field.name, value);
  }
  return out;
}

// The text counts more than what cannot be read here.
void ReadFields(const fs::path& file, Draft& draft) {
  const auto fields = platform::ReadFile(file, kLongestFields);
  if (!fields) return IgnoreErrors(fields);
  for (const auto line : platform::Split(*fields, '\n')) {
    const auto colon = line.find(": ");
    const auto* const field = std::find_if(kFields.begin(), kFields.end(),
                                           [&](const Field& row) { return line.substr(0, colon) == row.name; });
    if (colon != std::string_view::npos && field != kFields.end())
      field->take(draft, Unescaped(line.substr(colon + 2)));
  }
}

// Of a body that is offered, "Recovered.htm" being number 1.
std::optional<std::int64_t> NumberOf(const fs::path& body) {
  const std::string file = body.filename().string();
  std::string_view name = file;
  if (!name.starts_with(kOffered) || !name.ends_with(kBodyEnding)) return std::nullopt;
  name.remove_prefix(kOffered.size());
  name.remove_suffix(kBodyEnding.size());
  if (name.empty()) return 1;
  const bool is_ahead = name.starts_with('-');
  if (is_ahead) name.remove_prefix(1);
  if (name.starts_with('0')) return std::nullopt;
  const auto number = platform::WholeNumberBetween(name, is_ahead ? 1 : 2, kLastNumber);
  return number && is_ahead ? -*number : number;
}

// No draft that is offered has the number 0.
std::int64_t Before(std::int64_t first) { return first == 1 ? -1 : first - 1; }
std::int64_t After(std::int64_t last) { return last == -1 ? 1 : last + 1; }

Result<void> Rename(const fs::path& from, const fs::path& to) {
  std::error_code failed;
  fs::rename(from, to, failed);
  if (failed && failed != std::errc::no_such_file_or_directory)
    return platform::SystemError("rename", from, failed.value());
  return {};
}

void Remove(const fs::path& body) {
  fs::remove(body, IgnoreErrors());
  fs::remove(FieldsOf(body), IgnoreErrors());
}

bool MayHave(const fs::path& file, std::string_view words) {
  if (std::error_code failed; !fs::exists(file, failed) && !failed) return false;
  const auto text = platform::ReadFile(file, std::numeric_limits<std::uint32_t>::max());
  return !text || text->find(words) != std::string::npos;
}

}  // namespace

bool Draft::IsWorthKeeping() const {
  return is_changed || !document.subject.empty() || !document.attachments.paths().empty();
}

fs::path Drafts::Body(std::int64_t number) const {
  if (number == kBeingWritten) return folder_ / "Autosave.htm";
  return folder_ / fmt::format("{}{}{}", kOffered, number == 1 ? "" : std::to_string(number), kBodyEnding);
}

Result<void> Drafts::Keep(const Draft& draft) const {
  if (!draft.IsWorthKeeping()) {
    Drop();
    return {};
  }
  return KeepWhole(draft);
}

Result<void> Drafts::KeepWhole(const Draft& draft) const {
  auto kept = platform::ReplaceFile(FieldsOf(Body(kBeingWritten)), WriteFields(draft));
  return kept ? platform::ReplaceFile(Body(kBeingWritten), draft.document.html) : kept;
}

void Drafts::Drop() const { Remove(Body(kBeingWritten)); }

// The body goes first: fields alone are no draft, and a body alone is one.
Result<void> Drafts::SetAside(Turn turn) const {
  std::error_code failed;
  if (!fs::exists(Body(kBeingWritten), failed)) return {};
  const Numbers offered = Offered();
  const fs::path body = Body(turn == Turn::kNext ? Before(offered.first) : After(offered.last));
  fs::remove(FieldsOf(body), failed);  // of a body that is gone
  if (failed) return platform::SystemError("replace", FieldsOf(body), failed.value());
  auto renamed = Rename(Body(kBeingWritten), body);
  return renamed ? Rename(FieldsOf(Body(kBeingWritten)), FieldsOf(body)) : renamed;
}

std::vector<std::int64_t> Drafts::AllOffered() const {
  std::vector<std::int64_t> numbers;
  std::error_code failed;
  for (auto entry = fs::directory_iterator(folder_, failed); !failed && entry != fs::directory_iterator();
       entry.increment(failed)) {
    if (const auto number = NumberOf(entry->path())) numbers.push_back(*number);
  }
  std::ranges::sort(numbers);
  return numbers;
}

Drafts::Numbers Drafts::Offered() const {
  const auto numbers = AllOffered();
  return numbers.empty() ? Numbers{} : Numbers{numbers.front(), numbers.back()};
}

bool Drafts::Mention(std::string_view words) const {
  auto numbers = AllOffered();
  numbers.push_back(kBeingWritten);
  return std::ranges::any_of(numbers, [&](std::int64_t number) {
    const fs::path body = Body(number);
    return MayHave(body, words) || MayHave(FieldsOf(body), words);
  });
}

std::string Drafts::OfferedSubject() const {
  Draft draft;
  ReadFields(FieldsOf(Body(Offered().first)), draft);
  return draft.document.subject;
}

Result<Draft> Drafts::ReadOffered() const {
  const fs::path body = Body(Offered().first);
  auto read = ReadBodyFile(body);
  if (!read) return read.error();
  Draft draft;
  draft.document.html = std::move(read->text);
  ReadFields(FieldsOf(body), draft);
  return draft;
}

void Drafts::DropOffered() const {
  if (const auto number = Offered().first) Remove(Body(number));
}

}  // namespace quillcast::document
