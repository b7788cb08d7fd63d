#include "help/help_pages.h"

#include <algorithm>
#include <functional>

#include "html/html_to_text.h"
#include "html/html_tokenizer.h"
#include "platform/file.h"
#include "platform/text.h"

namespace quillcast::help {
namespace fs = std::filesystem;
namespace {

constexpr std::uint64_t kLargest = 1 << 20;  // of a page, bytes
constexpr std::string_view kEnding = ".htm";
constexpr std::size_t kExcerpt = 150;  // bytes, about

std::string TitleIn(std::string_view html) {
  html::HtmlTokenizer tokenizer(html);
  html::HtmlToken token;
  while (tokenizer.Next(token)) {
    if (token.kind != html::HtmlTokenKind::kStartTag || token.name != "title") continue;
    if (!tokenizer.Next(token)) break;
    return html::DecodeCharacterReferences(platform::Trim(tokenizer.Source(token)));
  }
  return {};
}

// In their order, one for each link.
std::vector<std::string> LinkedTopics(std::string_view html) {
  std::vector<std::string> topics;
  html::HtmlTokenizer tokenizer(html);
  html::HtmlToken token;
  while (tokenizer.Next(token)) {
    if (token.kind != html::HtmlTokenKind::kStartTag || token.name != "a") continue;
    const std::string topic = TopicOfLink(tokenizer.Value(token, "href"));
    if (!topic.empty()) topics.push_back(topic);
  }
  return topics;
}

// By the last link to each: what the text links to on the way stands in the list of all pages below it too.
void PutInOrder(std::vector<Page>& pages, const std::vector<std::string>& links) {
  const auto place = [&links](const Page& page) {
    const auto behind = std::find(links.rbegin(), links.rend(), page.topic).base();
    if (page.topic == kWelcomeTopic) return std::ptrdiff_t(-1);
    return behind == links.begin() ? std::ptrdiff_t(links.size()) : behind - links.begin() - 1;
  };
  std::sort(pages.begin(), pages.end(), [&place](const Page& a, const Page& b) {
    return std::pair(place(a), a.topic) < std::pair(place(b), b.topic);
  });
}

Result<std::vector<std::string>> TopicsIn(const fs::path& folder) {
  std::vector<std::string> topics;
  std::error_code failed;
  for (fs::directory_iterator entry(folder, failed); !failed && entry != fs::directory_iterator();
       entry.increment(failed)) {
    const std::string name = entry->path().filename().string();
    if (name.ends_with(kEnding)) topics.push_back(name);
  }
  if (std::find(topics.begin(), topics.end(), kWelcomeTopic) != topics.end()) return topics;
  return Error{Failure::kNoInput, Say("The pages of the help are not in {}.", folder.string()),
               "Install the program anew."};
}

std::vector<std::string> Words(std::string_view text) {
  std::vector<std::string> words;
  const std::string lower = platform::AsciiLower(text);
  for (const std::string_view word : platform::Split(lower, ' ')) {
    if (!word.empty()) words.emplace_back(word);
  }
  return words;
}

bool HoldsAll(const std::string& lower, const std::vector<std::string>& words) {
  return std::all_of(words.begin(), words.end(),
                     [&lower](const std::string& word) { return lower.find(word) != std::string::npos; });
}

// With `shown` in the place of each link to a page, which HtmlToText writes as "<Group%20Manager%201.htm>".
std::string WithLinks(std::string_view text, const std::function<std::string(const std::string& topic)>& shown) {
  std::string out;
  while (!text.empty()) {
    const std::size_t begin = std::min(text.find('<'), text.size());
    const std::size_t end = text.find('>', begin);
    out += text.substr(0, begin);
    text.remove_prefix(begin);
    if (end == std::string_view::npos) return out.append(text);
    const std::string topic = TopicOfLink(text.substr(1, end - begin - 1));
    out += topic.empty() ? text.substr(0, 1) : shown(topic);
    text.remove_prefix(topic.empty() ? 1 : end - begin + 1);
  }
  return out;
}

// The text in one line, without what links lead to: what was wrapped belongs together.
std::string InOneLine(std::string_view text) {
  std::string line;
  for (const char c : WithLinks(text, [](const std::string&) { return std::string(); })) {
    const bool is_blank = c == ' ' || c == '\n';
    // A link's address stood in between.
    if (!line.empty() && line.back() == ' ' && (c == '.' || c == ',' || c == ';' || c == ')')) line.pop_back();
    if (!is_blank) line += c;
    if (is_blank && !line.empty() && line.back() != ' ') line += ' ';
  }
  return std::string(platform::Trim(line));
}

// The word begins a third into it at most; the words at both ends are whole.
std::string Excerpt(const std::string& text, std::string_view word) {
  const std::size_t found = platform::AsciiLower(text).find(word);
  const std::size_t at = found == std::string::npos ? 0 : found;  // it stands in the title alone
  const std::size_t blank = at < kExcerpt / 3 ? std::string::npos : text.find(' ', at - kExcerpt / 3);
  const std::size_t begin = blank == std::string::npos ? 0 : std::min(blank + 1, at);
  const std::size_t end = std::min(text.find(' ', std::min(begin + kExcerpt, text.size())), text.size());
  return (begin > 0 ? "… " : "") + text.substr(begin, end - begin) + (end < text.size() ? " …" : "");
}

}  // namespace

std::string TopicOfLink(std::string_view href) {
  const std::string_view name = href.substr(0, href.find('#'));
  if (!name.ends_with(kEnding) || name.find_first_of(":/") != std::string_view::npos) return {};
  return platform::PercentDecoded(name).value_or("");
}

Result<std::vector<Page>> LoadPages(const fs::path& folder) {
  const auto topics = TopicsIn(folder);
  if (!topics) return topics.error();
  std::vector<Page> pages;
  std::vector<std::string> links;
  for (const std::string& topic : *topics) {
    auto html = platform::ReadFile(folder / topic, kLargest);
    if (!html && topic == kWelcomeTopic) return html.error();
    if (!html) {
      IgnoreErrors(html);  // the others can be read all the same
      continue;
    }
    if (topic == kWelcomeTopic) links = LinkedTopics(*html);
    std::string title = TitleIn(*html);
    if (title.empty()) title = topic;
    pages.push_back({topic, std::move(title), *std::move(html)});
  }
  PutInOrder(pages, links);
  return pages;
}

std::vector<const Page*> PagesNamed(const std::vector<Page>& pages, std::string_view words) {
  const std::string wanted = platform::AsciiLower(platform::Trim(words));
  std::vector<const Page*> holding;
  for (const Page& page : pages) {
    const std::string topic = platform::AsciiLower(page.topic);
    const std::string title = platform::AsciiLower(page.title);
    if (wanted == topic || wanted + std::string(kEnding) == topic || wanted == title) return {&page};
    const bool holds = topic.find(wanted) != std::string::npos || title.find(wanted) != std::string::npos;
    if (holds && !wanted.empty()) holding.push_back(&page);
  }
  return holding;
}

std::string TextOf(const Page& page) {
  return WithLinks(html::HtmlToText(page.html),
                   [](const std::string& topic) { return '<' + topic.substr(0, topic.rfind('.')) + '>'; });
}

std::vector<Hit> Search(const std::vector<Page>& pages, std::string_view words) {
  const auto wanted = Words(words);
  std::vector<Hit> in_title;
  std::vector<Hit> in_text;
  if (wanted.empty()) return {};
  for (const Page& page : pages) {
    std::string text = InOneLine(html::HtmlToText(page.html));
    if (text.starts_with(page.title)) text.erase(0, page.title.size() + 1);
    const bool title_has = HoldsAll(platform::AsciiLower(page.title), wanted);
    if (!title_has && !HoldsAll(platform::AsciiLower(page.title + ' ' + text), wanted)) continue;
    (title_has ? in_title : in_text).push_back({&page, Excerpt(text, wanted.front())});
  }
  in_title.insert(in_title.end(), in_text.begin(), in_text.end());
  return in_title;
}

}  // namespace quillcast::help
