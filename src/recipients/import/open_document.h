// The sheets of a spreadsheet in OpenDocument (OASIS, ISO 26300), made into rows.
#pragma once

#include <string>
#include <string_view>

#include "recipients/import/sheet_row.h"

namespace quillcast::recipients {

// Takes the rows of the first sheet that has any, and counts the others that have some, while rows are wanted. Gives
// why it is no such part, empty where it is.
std::string ReadOpenSheets(std::string_view xml, SheetRow& row, int& sheets_left_unread);

}  // namespace quillcast::recipients
