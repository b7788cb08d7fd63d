#include "charset/converter.h"

#include <unicode/ucnv.h>

#include <string>
#include <utility>

namespace quillcast::charset {

void CloseConverter::operator()(UConverter* converter) const { ucnv_close(converter); }

Converter OpenConverter(std::string_view name) {
  UErrorCode status = U_ZERO_ERROR;
  Converter converter(ucnv_open(std::string(name).c_str(), &status));
  return U_SUCCESS(status) != 0 ? std::move(converter) : nullptr;
}

}  // namespace quillcast::charset
