// Addresses against others, as RFC 3986 5.4 lists them.
#include "mail_file/uri_reference.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace quillcast::mail_file {
namespace {

TEST(UriReference, IsResolved) {
  for (const auto& [reference, expected] : std::initializer_list<std::pair<const char*, const char*>>{
           {"g:h", "g:h"},
           {"g", "http://a/b/c/g"},
           {"./g", "http://a/b/c/g"},
           {"g/", "http://a/b/c/g/"},
           {"/g", "http://a/g"},
           {"//g", "http://g"},
           {"?y", "http://a/b/c/d;p?y"},
           {"g?y", "http://a/b/c/g?y"},
           {"#s", "http://a/b/c/d;p?q#s"},
           {"g#s", "http://a/b/c/g#s"},
           {"g?y#s", "http://a/b/c/g?y#s"},
           {";x", "http://a/b/c/;x"},
           {"g;x?y#s", "http://a/b/c/g;x?y#s"},
           {"", "http://a/b/c/d;p?q"},
           {".", "http://a/b/c/"},
           {"./", "http://a/b/c/"},
           {"..", "http://a/b/"},
           {"../", "http://a/b/"},
           {"../g", "http://a/b/g"},
           {"../..", "http://a/"},
           {"../../", "http://a/"},
           {"../../g", "http://a/g"},
           {"../../../g", "http://a/g"},
           {"../../../../g", "http://a/g"},
           {"/./g", "http://a/g"},
           {"/../g", "http://a/g"},
           {"g.", "http://a/b/c/g."},
           {".g", "http://a/b/c/.g"},
           {"g..", "http://a/b/c/g.."},
           {"..g", "http://a/b/c/..g"},
           {"./../g", "http://a/b/g"},
           {"./g/.", "http://a/b/c/g/"},
           {"g/./h", "http://a/b/c/g/h"},
           {"g/../h", "http://a/b/c/h"},
           {"g;x=1/./y", "http://a/b/c/g;x=1/y"},
           {"g;x=1/../y", "http://a/b/c/y"},
           {"g?y/./x", "http://a/b/c/g?y/./x"},
           {"g?y/../x", "http://a/b/c/g?y/../x"},
           {"g#s/./x", "http://a/b/c/g#s/./x"},
           {"g#s/../x", "http://a/b/c/g#s/../x"},
           {"http:g", "http:g"},
       }) {
    EXPECT_EQ(ResolvedUri("http://a/b/c/d;p?q", reference), expected) << reference;
  }
  struct Case {
    const char* base;
    const char* reference;
    const char* expected;
  };
  for (const Case& c : std::initializer_list<Case>{{"http://a", "g", "http://a/g"},
                                                   {"http://a?x/y", "g", "http://a/g"},
                                                   {"thismessage:/", "../g/./h", "thismessage:/g/h"},
                                                   {"m:a/b", "c", "m:a/c"},
                                                   {"m:a", "./c", "m:c"},
                                                   {"m:a/b", "../c", "m:/c"},
                                                   {"http://a/b", "http://c/d/../e", "http://c/e"}}) {
    EXPECT_EQ(ResolvedUri(c.base, c.reference), c.expected) << c.base << ' ' << c.reference;
  }
}

}  // namespace
}  // namespace quillcast::mail_file
