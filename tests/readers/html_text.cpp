// Prints the plain text that is made from the HTML on standard input.
#include <cstdio>
#include <iostream>
#include <iterator>
#include <string>

#include "html/html_to_text.h"

int main() {
  const std::string html((std::istreambuf_iterator<char>(std::cin)), {});
  const std::string text = quillcast::html::HtmlToText(html);
  return std::fwrite(text.data(), 1, text.size(), stdout) == text.size() ? 0 : 1;
}
