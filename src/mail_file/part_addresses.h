// Which part of a message an address means that stands in another one: by Content-ID (RFC 2392) or Content-Location
// (RFC 2557). What lies in attached messages belongs to those.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "mail_file/part.h"

namespace quillcast::mail_file {

class PartAddresses {
 public:
  // Parts as MailMessage has them; they outlive this.
  explicit PartAddresses(const std::vector<Part>& parts);

  // What the addresses in a part, by its place, are relative to: its Content-Base (RFC 2110), else its
  // Content-Location, else what those of the part round it are.
  const std::string& BaseOf(std::size_t part) const { return bases_[base_of_[part]]; }
  // That of a page which names one itself (<base href>).
  std::string BaseOf(std::size_t page, std::string_view named) const;

  // The part that an address in a page means, by their places; kNoPart for none. Of several of one name it is that
  // which shares the innermost part with the page, as those of a multipart/related belong together (RFC 2387), and of
  // those the first. Where the rules lead nowhere, an address means what has it written in its Content-Location.
  std::size_t Find(std::size_t page, const std::string& base, std::string_view address) const;

 private:
  void PutInOrder();
  void AddBase(std::size_t part);
  void AddNames(std::size_t part);
  std::size_t Nearest(std::size_t page, const std::string& name) const;

  const std::vector<Part>& parts_;
  // Each part behind what holds it and before all that is behind that: `size_` parts from its place in this order.
  std::vector<std::size_t> order_;
  std::vector<std::size_t> size_;
  std::vector<std::size_t> by_order_;
  std::vector<std::string> bases_;
  std::vector<std::size_t> base_of_;                                 // by part
  std::unordered_map<std::string, std::vector<std::size_t>> named_;  // in that order
};

}  // namespace quillcast::mail_file
