#include "document/picture_choice.h"

#include <fmt/format.h>

#include <algorithm>

#include "document/picture_sizes.h"
#include "html/safe_page.h"
#include "platform/text.h"

namespace quillcast::document {
namespace {

struct PictureRule {
  const std::string PictureChoice::*field;
  std::int64_t lowest;
  std::int64_t highest;
  const char* name;
  PictureBox box;
};

constexpr auto kPictureRules = std::to_array<PictureRule>({
    {&PictureChoice::width, 1, kLongestSide, "width", PictureBox::kWidth},
    {&PictureChoice::height, 1, kLongestSide, "height", PictureBox::kHeight},
    {&PictureChoice::border, 0, 99, "border", PictureBox::kBorder},
});

int Number(const std::string& text) {
  return static_cast<int>(platform::WholeNumberBetween(text, 0, kLongestSide).value_or(0));
}

}  // namespace

std::string AlternativeFrom(const std::filesystem::path& file) {
  std::string words = file.stem().string();
  std::replace_if(
      words.begin(), words.end(), [](char c) { return c == '_' || c == '-'; }, ' ');
  const bool holds_other = std::any_of(words.begin(), words.end(), [](char c) {
    const bool is_letter = (platform::AsciiIsAlnum(c) && (c < '0' || c > '9')) || static_cast<unsigned char>(c) >= 0x80;
    return !is_letter && c != ' ';
  });
  words = platform::Trim(words);
  return holds_other || words.find(' ') == std::string::npos ? std::string() : words;
}

std::optional<Complaint<PictureBox>> CheckPicture(const PictureChoice& choice) {
  for (const PictureRule& rule : kPictureRules) {
    const std::string& text = choice.*rule.field;
    if (text.empty()) return Complaint<PictureBox>{fmt::format("Please enter your {}.", rule.name), rule.box};
    if (!platform::WholeNumberBetween(text, rule.lowest, rule.highest)) {
      return Complaint<PictureBox>{fmt::format("Please enter a valid {}.", rule.name), rule.box};
    }
  }
  return {};
}

std::string PictureHtml(std::string_view address, const PictureChoice& choice, profile::PixelSize natural) {
  const bool keeps = KeepsRatio({Number(choice.width), Number(choice.height)}, natural);
  std::string html =
      fmt::format(R"(<img src="{}" alt="{}" width="{}" height="{}" border="{}")", html::EscapedForHtml(address),
                  html::EscapedForHtml(choice.alternative), choice.width, choice.height, choice.border);
  if (!choice.align.empty()) html += fmt::format(" align=\"{}\"", platform::AsciiLower(choice.align));
  return html + (keeps ? " style=\"max-width: 100%; height: auto;\">" : " style=\"max-width: 100%;\">");
}

}  // namespace quillcast::document
