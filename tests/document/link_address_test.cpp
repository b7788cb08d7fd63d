#include "document/link_address.h"

#include <gtest/gtest.h>

namespace quillcast::document {
namespace {

TEST(LinkAddress, GetsTheSchemeThatWasMeant) {
  struct Case {
    const char* typed;
    const char* address;
  };
  for (const Case& c : std::initializer_list<Case>{
           {"example.org", "https://example.org"},
           {" www.example.org/a?b=c:d ", "https://www.example.org/a?b=c:d"},
           {"example.org:8080/x", "https://example.org:8080/x"},
           {"//example.org/x", "https://example.org/x"},
           {"example.org/@ada", "https://example.org/@ada"},
           {"ada@example.org", "mailto:ada@example.org"},
           {"ada@example.org?subject=a/b", "mailto:ada@example.org?subject=a/b"},
           {"http://example.org", "http://example.org"},
           {"HTTPS://example.org", "HTTPS://example.org"},
           {"mailto:ada@example.org", "mailto:ada@example.org"},
           {"mailto:1234@example.org", "mailto:1234@example.org"},
           {"sip:1000@example.org", "sip:1000@example.org"},
           {"geo:48.2,16.4", "geo:48.2,16.4"},
           {"tel:0123456", "tel:0123456"},
           {"SMS:0123456?body=a", "SMS:0123456?body=a"},
           {"localhost:8080", "https://localhost:8080"},
           {"localhost:8080?a=b", "https://localhost:8080?a=b"},
           {"localhost:8080#a", "https://localhost:8080#a"},
           {"$*MergeWebSite*$", "$*MergeWebSite*$"},
           {"#prices", "#prices"},
           {"https://", ""},
           {"mailto:", ""},
           {"  ", ""},
       }) {
    EXPECT_EQ(LinkAddress(c.typed), c.address) << c.typed;
  }
}

}  // namespace
}  // namespace quillcast::document
