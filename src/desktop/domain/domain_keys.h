// Boxes that take what a domain's name may hold, by key, paste and input method.
#pragma once

#include "desktop/widgets/digits_filter.h"
#include "domain/domain_name_rules.h"

namespace quillcast::desktop {

inline QString LabelKeys(const QString& text) {
  return ToQt(domain::FilterDomainKeys(FromQt(text), domain::DotKey::kDropped));
}
inline QString NameKeys(const QString& text) {
  return ToQt(domain::FilterDomainKeys(FromQt(text), domain::DotKey::kTaken));
}

using DomainLabelFilter = KeyFilter<LabelKeys>;  // without the dot
using DomainNameFilter = KeyFilter<NameKeys>;    // with it

}  // namespace quillcast::desktop
