// A document says which character set it is in: where the declaration goes, and what counts as one.
#include "document/declared_charset.h"

#include <gtest/gtest.h>

namespace quillcast::document {
namespace {

// "|" is where the declaration has to be put; a page without one declares a set already.
TEST(DeclaredCharset, IsPutIntoTheHeadWhereThereIsNone) {
  struct Case {
    const char* name;
    std::string marked;
  };
  for (const Case& c : std::initializer_list<Case>{
           {"nothing", "|"},
           {"no head", "|<p>Hello</p>"},
           {"text alone", "|\n Hello"},
           {"a head", "<html><head>|<title>x</title></head><body>"},
           {"a head with attributes", "<HTML><HEAD profile='a>b'>|\n<style>p{}</style>"},
           {"a page without a head", "<html lang=de>|<body>x"},
           {"a header is no head", "<html>|<header>x</header>"},
           {"a document type", "<!DOCTYPE html>|<p>x"},
           {"a document type behind a comment", "<!-- <head> --><!doctype html>|<p>x"},
           {"a comment", "|<!-- <meta charset=utf-8> --><p>x"},
           {"a comment before the head", "<!doctype html>\n<!-- saved -->\n<html><!-- c --><head>|<title></title>"},
           {"an XML declaration", "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<!DOCTYPE html>\n<html><head>|</head>"},
           {"an XML declaration alone", "<?xml version=\"1.0\"?>|<p>x"},
           {"a byte-order mark", "\uFEFF|<p>x"},
           {"a tag in the text", "|<p><head>x"},
           {"a tag that is cut off", "|<head"},
           {"other meta elements", "<head>|<meta name=charset content=x><meta charset=''><meta charset>"},
           {"a content type without a set", "<head>|<meta http-equiv=Content-Type content='text/html'>"},
           {"a set without a name", "<head>|<meta http-equiv=content-type content='text/html; charset= '>"},
           {"a set of something else", "<head>|<meta http-equiv=refresh content='0; charset=utf-8'>"},
           {"in a script", "<head>|<script>'<meta charset=utf-8>'</script>"},
           {"a set", "<head><title>x</title><META Charset=\"UTF-8\">"},
           {"a content type", "<meta content='text/html; CHARSET = utf-8' http-equiv=' Content-Type '>"},
           {"a set far behind", "<p>" + std::string(5000, 'x') + "<meta charset=utf-8>"},
       }) {
    const std::size_t place = c.marked.find('|');
    std::string html = c.marked;
    if (place != std::string::npos) html.erase(place, 1);
    for (const auto& [encoding, meta] : {std::pair(BodyEncoding::kUtf8, "<meta charset=\"utf-8\">"),
                                         {BodyEncoding::kUtf16Little, "<meta charset=\"utf-8\">"},
                                         {BodyEncoding::kWindows1252, "<meta charset=\"windows-1252\">"}}) {
      std::string expected = html;
      if (place != std::string::npos) expected.insert(place, meta);
      EXPECT_EQ(WithCharset(html, encoding), expected) << c.name;
      EXPECT_EQ(WithCharset(expected, encoding), expected) << c.name << ": put in a second time";
    }
  }
}

// What is saved in another set than it came in would be read as rubbish.
TEST(DeclaredCharset, GivesWayToTheSetThatADocumentIsSavedIn) {
  struct Case {
    const char *html, *declared, *saved;
  };
  for (const Case& c : std::initializer_list<Case>{
           {"<META Charset=\" koi8-r \">x", "koi8-r", "<META Charset=\" utf-8 \">x"},
           {"<meta http-equiv=content-type content='text/html;charset=windows-1251;x=y'>", "windows-1251",
            "<meta http-equiv=content-type content='text/html;charset=utf-8;x=y'>"},
           {"<meta charset=big5><meta charset=gbk>", "big5", "<meta charset=utf-8><meta charset=gbk>"},
           {"<meta charset=UTF8>", "UTF8", "<meta charset=UTF8>"},
           {"<?xml version='1.0' encoding='koi8-r'?><meta charset=koi8-u>", "koi8-u",
            "<?xml version='1.0' encoding='koi8-r'?><meta charset=utf-8>"},
       }) {
    EXPECT_EQ(DeclaredCharset(c.html), c.declared);
    EXPECT_EQ(WithCharset(c.html, BodyEncoding::kUtf8), c.saved);
    for (const auto kept : {BodyEncoding::kDeclared, BodyEncoding::kUtf16Little, BodyEncoding::kWindows1252})
      EXPECT_EQ(WithCharset(c.html, kept), c.html);
  }
  // A set that no page can be in is not where it goes back to.
  EXPECT_EQ(WithCharset("<meta charset=utf-7>", BodyEncoding::kDeclared), "<meta charset=utf-8>");
  const std::string xml = "<?xml version=\"1.0\" encoding = \"koi8-r\" standalone=\"yes\"?>\n";
  EXPECT_EQ(WithCharset(xml + "x", BodyEncoding::kDeclared),
            xml.substr(0, xml.size() - 1) + "<meta charset=\"koi8-r\">\nx");
  for (const char* none : {"<?xml version='1.0'?>", "<?xml encoding", "<?xml encoding=", "<?xml encoding='x",
                           "encoding='x'", "<?xml version='1.0'><p>encoding='koi8-r'?>", "\n<?xml encoding='koi8-r'?>"})
    EXPECT_EQ(DeclaredCharset(none), "") << none;
}

}  // namespace
}  // namespace quillcast::document
