#include "mail_file/message_facts.h"

#include <algorithm>

#include "platform/text.h"

namespace quillcast::mail_file {
namespace {

constexpr std::size_t kLongestShown = 300;  // bytes of a name, and of an address

}  // namespace

std::string ShownMailbox(const Mailbox& mailbox) {
  const std::string address = platform::Printable(mailbox.address, kLongestShown);
  if (mailbox.name.empty()) return address;
  std::string name = platform::Printable(mailbox.name, kLongestShown);
  if (mailbox.name.find_first_of("<>@,;:\"") != std::string::npos) {
    std::ranges::replace(name, '"', '\'');
    name = '"' + name + '"';
  }
  return address.empty() ? name : name + " <" + address + ">";
}

}  // namespace quillcast::mail_file
