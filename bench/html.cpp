// Reads a page of one shape: bench_html SHAPE BYTES READER prints the seconds of processor time and the peak of memory
// it took.
#include <fmt/format.h>
#include <sys/resource.h>

#include <cstdlib>
#include <ctime>
#include <functional>
#include <string>

#include "html/html_to_text.h"
#include "html/html_tokenizer.h"
#include "html/local_pictures.h"

namespace {

using namespace quillcast::html;  // NOLINT(google-build-using-namespace)

struct Shape {
  std::string_view name;
  std::string_view start;
  std::string_view unit;  // repeated
};
constexpr Shape kShapes[] = {
    {"newsletter", "",
     "<table width=600 cellpadding=0 style=\"background:#fff url('bg.png')\"><tr><td align=center style=\"font-family:"
     "Arial,sans-serif;font-size:14px;color:#333333;padding:10px 20px\"><a href=\"https://shop.example/?u=$*MergeID*$"
     "&amp;c=12\"><img src=\"pictures/tea.png\" width=560 alt=\"Tea &amp; cake\"></a><h2>Spring has come</h2>"
     "<p>Dear $*MergeFirstName*$, our first harvest has arrived &ndash; and with it the kettle that you asked for. "
     "Try it on Saturday in the shop, or order it <a href=\"https://shop.example/kettle\">here</a>.</p>&nbsp;</td></tr>"
     "</table>\n"},
    {"prose", "", "It was a bright cold day in April, and the clocks were striking thirteen.\n"},
    {"deep div", "", "<div>"},
    {"deep list", "", "<ul><li>"},
    {"deep table", "", "<table><tr><td>"},
    {"deep blockquote", "", "<blockquote>"},
    {"deep b and i", "", "<b><i>"},
    {"deep list with text", "", "<ol><li>x"},
    {"quoted lines", "<blockquote><blockquote><blockquote><blockquote><blockquote><blockquote><blockquote>", "<br>x"},
    {"quoted blank lines", "<blockquote><blockquote><blockquote><blockquote><blockquote><blockquote><pre>", "\n"},
    {"one attribute", "<a href=\"", "x"},
    {"one style", "<p style=\"", "display:x;"},
    {"less-than", "", "<"},
    {"ampersand", "", "&"},
    {"numeric reference", "", "&#9"},
    {"comment openings", "", "<!--"},
    {"nested comments", "", "<!--<!---->"},
    {"conditional comments", "", "<!--[if mso]><img src=a><![endif]-->"},
    {"conditional openings", "", "<!--[if mso]>"},
    {"link openings", "", "<a href="},
    {"empty links", "", "<a href=x></a>"},
    {"links without end", "", "<a href=x>y"},
    {"open quotes", "", "<a b='"},
    {"quotes", "<p ", "\"'"},
    {"hidden", "", "<div hidden>"},
    {"style element", "<style>", "a{b:url(c.png)}"},
    {"style strings", "<style>", "\"'"},
    {"style openings", "<style>", "url(\""},
    {"style elements", "", "<style>"},
    {"style attributes", "", "<p style='background:url(a.png'>"},
    {"escapes", "<style>", "url(\\"},
    {"css comments", "<style>", "/*/"},
    {"srcset", "<img srcset='", "a.png 2x, "},
    {"srcset without comma", "", "<img srcset='a 2x'>"},
    {"srcset commas", "<img srcset='", ",,a"},
    {"pictures", "", "<img src=a.png>"},
    {"attributes", "<img ", "a=b "},
    {"end tags", "", "</div></ul></table>"},
    {"rows", "<table>", "<tr><td>x<td>y"},
};

struct ReaderRow {
  std::string_view name;
  std::function<std::size_t(const std::string&)> read;  // gives a size, so that nothing is left out
};

std::size_t CountTokens(const std::string& html) {
  HtmlTokenizer tokenizer(html);
  HtmlToken token;
  std::size_t count = 0;
  while (tokenizer.Next(token)) ++count;
  return count;
}

std::size_t Rewrite(const std::string& html) {
  const auto found = FindLocalPictures(html);
  return RewriteReferences(html, found, std::vector<std::string>(found.size(), "cid:1")).size();
}

const ReaderRow kReaders[] = {
    {"tokens", CountTokens},
    {"text", [](const std::string& html) { return HtmlToText(html).size(); }},
    {"pictures", Rewrite},
};

long PeakKib() {
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

std::string Page(const Shape& shape, std::size_t bytes) {
  std::string page(shape.start);
  page.reserve(bytes + shape.unit.size());
  while (page.size() < bytes) page += shape.unit;
  return page;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 4) {
    for (const Shape& shape : kShapes) fmt::print("{}\n", shape.name);
    return 0;
  }
  for (const Shape& shape : kShapes) {
    if (shape.name != argv[1]) continue;
    const std::string page = Page(shape, std::strtoull(argv[2], nullptr, 10));
    for (const ReaderRow& reader : kReaders) {
      if (reader.name != argv[3]) continue;
      const long before = PeakKib();
      const std::clock_t start = std::clock();
      const std::size_t result = reader.read(page);
      const double seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
      fmt::print("{{\"seconds\":{:.6f},\"kib\":{},\"result\":{}}}\n", seconds, PeakKib() - before, result);
    }
  }
  return 0;
}
