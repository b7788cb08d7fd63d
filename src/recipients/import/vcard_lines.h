// The cards of a vCard file, versions 2.1 (as address books wrote it), 3.0 (RFC 2426) and 4.0 (RFC 6350), a line each.
#pragma once

#include "recipients/import/field_lines.h"
#include "recipients/import/text_source.h"

namespace quillcast::recipients {

// The fields stand in the order of kFields. Pictures and sounds are passed over as they come, whatever their size.
class VCardLines final : public FieldLines {
 public:
  explicit VCardLines(TextSource source) : source_(std::move(source)) {}
  Result<void> Read(const Take& take) override;
  FileFacts Facts() const override;
  std::uint64_t BytesRead() const override { return source_.bytes_read(); }

 private:
  TextSource source_;
};

}  // namespace quillcast::recipients
