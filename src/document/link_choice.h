// The link that a person asks for: where it leads, checked for form, and back from an address.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/complaint.h"

namespace quillcast::document {

enum class LinkKind { kWeb, kMail, kPlace };

// What was typed and chosen.
struct LinkChoice {
  LinkKind kind = LinkKind::kWeb;
  std::string address = {};  // a web address, a mail address, or the name of a place in the message without its "#"
  std::string subject = {};  // of a mail
};

// What is checked.
enum class LinkBox { kAddress, kSubject };

// The first thing that is wrong with its form. Nothing is looked up, and a merge tag may stand anywhere in it.
std::optional<Complaint<LinkBox>> CheckLink(const LinkChoice& choice);

// The address of a choice that passed the check. A web address without a scheme gets the one that was meant, see
// LinkAddress; the subject is encoded, merge tags in it stay.
std::string LinkTarget(const LinkChoice& choice);

// What a link's address says, to be changed. A mail that asks for more than one address and its subject is a kWeb, so
// that nothing of it is lost.
LinkChoice ReadLink(std::string_view target);

}  // namespace quillcast::document
