// What becomes of characters that a set lacks, wherever a page's styles stand.
#include "message/escape_in_styles.h"

#include <gtest/gtest.h>

namespace quillcast::message {
namespace {

TEST(StyleEscapes, StandWhereStylesDo) {
  const std::pair<const char*, const char*> cases[] = {
      {"<p style='x:\u20AC'>\u20AC</p>", "<p style='x:\\20AC '>\u20AC</p>"},
      {"<style>q:before{content:\"\u00AB\u20ACa\"}</style>", "<style>q:before{content:\"\u00AB\\20AC a\"}</style>"},
      {"<p style=font-family:\u20ACa title=\u20AC>", "<p style=font-family:\\0020ACa title=\u20AC>"},
      {"<p STYLE = \"a:'\\\u20AC\\\\\U0001F600'\" style='\u20AC'>",
       "<p STYLE = \"a:'\\20AC \\\\\\1F600 '\" style='\u20AC'>"},
      {"<!--[if mso]><style>\u20AC</style><i style='\u20AC'>\u20AC<![endif]--><!-- <style>\u20AC</style> -->\u20AC",
       "<!--[if mso]><style>\\20AC </style><i style='\\20AC '>\u20AC<![endif]--><!-- <style>\u20AC</style> -->\u20AC"},
      {"<title>\u20AC</title><style></style>\u20AC<style>\u20AC",
       "<title>\u20AC</title><style></style>\u20AC<style>\\20AC "},
  };
  for (const auto& [html, expected] : cases) {
    EXPECT_EQ(EscapeInStyles(html, *charset::FindCharset("iso-8859-1")), expected);
    EXPECT_EQ(EscapeInStyles(html, charset::Charset::Utf8()), html);
  }
}

}  // namespace
}  // namespace quillcast::message
