// The entries of an LDIF file (RFC 2849), as address books and directories write them, a line each.
#pragma once

#include "recipients/import/field_lines.h"
#include "recipients/import/text_source.h"

namespace quillcast::recipients {

// The fields stand in the order of kFields. Values that lie in other files ("jpegPhoto:< file:...") are not read, and
// records that change or delete an entry are passed over.
class LdifLines final : public FieldLines {
 public:
  explicit LdifLines(TextSource source) : source_(std::move(source)) {}
  Result<void> Read(const Take& take) override;
  FileFacts Facts() const override;
  std::uint64_t BytesRead() const override { return source_.bytes_read(); }

 private:
  TextSource source_;
};

}  // namespace quillcast::recipients
