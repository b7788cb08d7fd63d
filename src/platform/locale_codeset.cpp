#include "platform/locale_codeset.h"

#include <langinfo.h>

#include <clocale>

namespace quillcast::platform {

std::string LocaleCodeset() {
  const locale_t locale = ::newlocale(LC_CTYPE_MASK, "", nullptr);
  if (locale == nullptr) return "UTF-8";
  std::string codeset = ::nl_langinfo_l(CODESET, locale);
  ::freelocale(locale);
  return codeset;
}

}  // namespace quillcast::platform
