// A converter of the character library, closed when it goes.
#pragma once

#include <memory>
#include <string_view>

struct UConverter;

namespace quillcast::charset {

struct CloseConverter {
  void operator()(UConverter* converter) const;
};
using Converter = std::unique_ptr<UConverter, CloseConverter>;

// By a name that the library knows; null where it knows none such.
Converter OpenConverter(std::string_view name);

}  // namespace quillcast::charset
