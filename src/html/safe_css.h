// What may be kept of the styles of a stranger's page.
#pragma once

#include <string>
#include <string_view>

namespace quillcast::html {

// The declarations of a style attribute, or the rules of a style element, without those that load something or could:
// an address, an import, a font; what hides such a thing behind escapes goes too. Of a background the colour stays,
// which the words on it need. Comments become blanks. The result holds no "<", so that it can end no element. Linear in
// time.
std::string SafeCss(std::string_view css);

}  // namespace quillcast::html
