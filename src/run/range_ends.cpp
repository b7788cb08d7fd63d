#include "run/range_ends.h"

#include "platform/text.h"

namespace quillcast::run {
namespace {

std::string NameOf(const recipients::Recipient& row) {
  const std::string& first = row.values[recipients::kFirstName];
  const std::string& last = row.values[recipients::kLastName];
  const std::string name = first + (first.empty() || last.empty() ? "" : " ") + last;
  return platform::Printable(name.empty() ? row.email() : name + " <" + row.email() + ">", 80);
}

}  // namespace

std::string EndsOf(recipients::RowSource& names, const recipients::PartialRange& range,
                   const platform::CancelToken& cancel) {
  std::string first;
  std::string last;
  // It is only shown beside the numbers; the run itself tells what is wrong with the list.
  IgnoreErrors(Walk(names, range, &cancel, [&](const recipients::Recipient& row, std::int64_t position) {
    if (position == range.first) first = NameOf(row);
    if (position == range.last) last = NameOf(row);
    return true;
  }));
  return first == last ? first : first + " \xE2\x80\xA6 " + last;
}

}  // namespace quillcast::run
