#include "document/message_properties.h"

#include <array>
#include <vector>

#include "document/phrase_search.h"
#include "document/property_tables.h"
#include "document/single_blanks.h"
#include "html/html_tokenizer.h"

namespace quillcast::document {
namespace {

constexpr const char* kNothingFound = "None";

constexpr auto kDirections = std::to_array<PropertyRow>({
    {"dir=\"ltr\"", "Left to Right"},
    {"dir=\"rtl\"", "Right to Left"},
});

std::vector<std::string> AllPhrases() {
  std::vector<std::string> phrases;
  phrases.reserve(kDirections.size() + kLanguages.size() + kDocumentCharsets.size());
  for (const auto& row : kDirections) phrases.emplace_back(row.searched);
  for (const auto& row : kLanguages) phrases.push_back('"' + std::string(row.searched) + '"');
  for (const auto& row : kDocumentCharsets) phrases.emplace_back(row.searched);
  return phrases;
}

// The text of the first row that occurs; `from` is where the table's rows begin among the phrases.
template <std::size_t N>
std::string FirstOf(const std::array<PropertyRow, N>& table, const std::vector<bool>& occurring, std::size_t from) {
  for (std::size_t i = 0; i < N; ++i) {
    if (occurring[from + i]) return std::string(table[i].shown);
  }
  return kNothingFound;
}

// One that is right to left anywhere is called so, whatever else it holds.
std::string DirectionOf(const std::vector<bool>& occurring) {
  std::string direction = kNothingFound;
  for (std::size_t i = 0; i < kDirections.size(); ++i) {
    if (occurring[i]) direction = kDirections[i].shown;
  }
  return direction;
}

}  // namespace

MessageProperties PropertiesLoad(std::string_view file_name, std::string_view title, std::string_view html) {
  const auto occurring = PhraseSearch(AllPhrases()).Occurring(html);
  return {.location = file_name.empty() ? "Unsaved" : std::string(file_name),
          .title = title.empty() ? "Not Available" : std::string(title),
          .direction = DirectionOf(occurring),
          .language = FirstOf(kLanguages, occurring, kDirections.size()),
          .charset = FirstOf(kDocumentCharsets, occurring, kDirections.size() + kLanguages.size())};
}

std::string TitleOf(std::string_view html) {
  html::HtmlTokenizer tokenizer(html);
  html::HtmlToken token;
  bool in_picture = false;
  while (tokenizer.Next(token)) {
    const bool opens = token.kind == html::HtmlTokenKind::kStartTag && !tokenizer.Source(token).ends_with("/>");
    if (token.name == "svg") in_picture = opens;
    if (token.name != "title" || token.kind != html::HtmlTokenKind::kStartTag || in_picture) continue;
    const bool has_text = tokenizer.Next(token) && token.kind == html::HtmlTokenKind::kText;
    return has_text ? WithSingleBlanks(html::DecodeCharacterReferences(tokenizer.Source(token))) : std::string();
  }
  return {};
}

}  // namespace quillcast::document
