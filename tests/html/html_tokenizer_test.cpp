// The tokenizer: tokens written out, what browsers do at the edges, and nothing lost on hostile input.
#include "html/html_tokenizer.h"

#include <gtest/gtest.h>

#include "html/nesting.h"
#include "support/random_text.h"

namespace quillcast::html {
namespace {

// One token as "kind:content", attributes as "name=decoded value".
std::string Show(const HtmlTokenizer& tokenizer, const HtmlToken& token, std::string_view html) {
  constexpr const char* kKinds[] = {"text", "raw", "start", "end", "comment", "doctype"};
  std::string shown = std::string(kKinds[static_cast<int>(token.kind)]) + ':';
  if (token.kind != HtmlTokenKind::kStartTag && token.kind != HtmlTokenKind::kEndTag)
    return shown.append(tokenizer.Source(token)) + '\n';
  shown += token.name;
  for (const HtmlAttribute& a : token.attributes) {
    shown += ' ' + std::string(html.substr(a.name_begin, a.name_end - a.name_begin)) + '=' +
             DecodeCharacterReferences(tokenizer.RawValue(a), true);
  }
  return shown + '\n';
}

std::string Tokens(std::string_view html) {
  HtmlTokenizer tokenizer(html);
  HtmlToken token;
  std::string shown;
  std::size_t at = 0;
  while (tokenizer.Next(token)) {
    EXPECT_EQ(token.begin, at) << html;
    EXPECT_GT(token.end, token.begin) << html;
    at = token.end;
    shown += Show(tokenizer, token, html);
  }
  EXPECT_EQ(at, html.size()) << html;
  return shown;
}

TEST(HtmlTokenizer, CutsWhereBrowsersCut) {
  const std::pair<const char*, const char*> cases[] = {
      {"", ""},
      {"a<B CLASS=x y = 'a&amp;b' z>t</b >", "text:a\nstart:b CLASS=x y=a&b z=\ntext:t\nend:b\n"},
      {"<img src=a/b.png/><br/>", "start:img src=a/b.png/\nstart:br\n"},
      {"<a href=\"?x=1&copy=2&lt;\" =b \"c>", "start:a href=?x=1&copy=2< =b= \"c=\n"},
      {"1 < 2 <3 <<b>", "text:1 < 2 <3 <\nstart:b\n"},
      {"a</", "text:a</\n"},
      {"</><//x></3>", "comment:</>\ncomment:<//x>\ncomment:</3>\n"},
      {"<!DOCTYPE html><?xml v?><![CDATA[x>]]>",
       "doctype:<!DOCTYPE html>\ncomment:<?xml v?>\ncomment:<![CDATA[x>\ntext:]]>\n"},
      {"<!-->a<!--->b<!-- -- > -->c<!--x--!>d",
       "comment:<!-->\ntext:a\ncomment:<!--->\ntext:b\ncomment:<!-- -- > -->\ntext:c\ncomment:<!--x--!>\ntext:d\n"},
      {"<!--a", "comment:<!--a\n"},
      {"x<a href='y", "text:x\ncomment:<a href='y\n"},
      {"<a b", "comment:<a b\n"},
      {"<STYLE>a<b></styles></Style\n>c", "start:style\nraw:a<b></styles>\nend:style\ntext:c\n"},
      {"<title>&lt;b></title><script></script>x",
       "start:title\ntext:&lt;b>\nend:title\nstart:script\nend:script\ntext:x\n"},
      {"<script>a</script", "start:script\nraw:a</script\n"},
      {"<plaintext></plaintext>", "start:plaintext\nraw:</plaintext>\n"},
  };
  for (const auto& [html, expected] : cases) EXPECT_EQ(Tokens(html), expected) << html;
}

TEST(HtmlTokenizer, DecodesCharacterReferences) {
  struct Case {
    const char *source, *in_text, *in_attribute;
  };
  const Case cases[] = {
      {"&amp;&lt;&gt;&quot;&apos;", "&<>\"'", "&<>\"'"},
      {"&eacute;&Eacute;&euro;&thetasym;", "\u00E9\u00C9\u20AC\u03D1", "\u00E9\u00C9\u20AC\u03D1"},
      {"&commat;&period;&NewLine;&zcaron;&yacy;&check;&AMP&LT;", "@.\n\u017E\u044F\u2713&<",
       "@.\n\u017E\u044F\u2713&<"},
      {"&#233;&#xE9;&#XE9 &#8364", "\u00E9\u00E9\u00E9 \u20AC", "\u00E9\u00E9\u00E9 \u20AC"},
      {"&#128;&#x99;&#0;&#xD800;&#99999999999;", "\u20AC\u2122\uFFFD\uFFFD\uFFFD", "\u20AC\u2122\uFFFD\uFFFD\uFFFD"},
      {"&copy2&copy=1&amp", "\u00A92\u00A9=1&", "&copy2&copy=1&"},
      {"&notit;&euro &bogus; && &; &#; &#x;", "\u00ACit;&euro &bogus; && &; &#; &#x;",
       "&notit;&euro &bogus; && &; &#; &#x;"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(DecodeCharacterReferences(c.source), c.in_text);
    EXPECT_EQ(DecodeCharacterReferences(c.source, true), c.in_attribute);
  }
}

TEST(HtmlTokenizer, LosesNoByteOfRandomMarkup) {
  std::mt19937 random(4);
  const std::vector<std::string> alphabet = {"<", ">", "/",  "!", "-", "--",       "?",         "a",
                                             "=", "'", "\"", " ", "&", "<script>", "</script>", "<!--"};
  for (int round = 0; round < 20000; ++round) Tokens(test::RandomText(random, alphabet, 40));
}

TEST(HtmlNesting, CountsWhatStaysOpen) {
  const auto times = [](std::string_view unit) {
    std::string page;
    for (int n = 0; n < 50; ++n) page += unit;
    return page;
  };
  for (const auto& [page, is_deep] : std::initializer_list<std::pair<std::string, bool>>{
           {times("<div>"), true},
           {times("<DIV></div><a><b></b></a>"), false},
           {times("<p><li><td><br><img>"), false},
           {times("<div></x>"), true},
           {times("<p><font size=2>x") + times("<td><font><b>"), false},
           {times("<font>"), true},
           {times("<rt>"), true},
           {"<svg>" + times("<path d=x/>"), false},
           {times("<div/>"), true},
           {times("<x></div>"), true},
           {times("<!-- <div> --><title><div></title>"), false},
           {times("<b>") + times("</b>") + times("<b></b></b>"), true},
       }) {
    EXPECT_EQ(IsNestedDeeperThan(page, 49), is_deep) << page.substr(0, 40);
    EXPECT_FALSE(IsNestedDeeperThan(page, 50)) << page.substr(0, 40);
  }
}

}  // namespace
}  // namespace quillcast::html
