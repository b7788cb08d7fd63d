#include "platform/locale_codeset.h"

#include <langinfo.h>

#include <clocale>

#include "platform/text.h"

namespace quillcast::platform {

std::string LocaleCodeset() {
  const locale_t locale = ::newlocale(LC_CTYPE_MASK, "", nullptr);
  if (locale == nullptr) return "UTF-8";
  std::string codeset = ::nl_langinfo_l(CODESET, locale);
  ::freelocale(locale);
  return codeset;
}

bool IsUtf8Codeset(std::string_view codeset) {
  for (const char* name : {"", "UTF-8", "UTF8", "ANSI_X3.4-1968", "US-ASCII", "ASCII", "646"}) {
    if (EqualsIgnoringAsciiCase(codeset, name)) return true;
  }
  return false;
}

}  // namespace quillcast::platform
