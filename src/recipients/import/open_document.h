// The sheets of a spreadsheet in OpenDocument (OASIS, ISO 26300), made into rows.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/cancel.h"
#include "recipients/import/sheet_row.h"

namespace quillcast::recipients {

// What is told of the sheets beside their rows, as far as they were read.
struct OpenSheets {
  std::string taken;  // the name of the one whose rows were told
  int left_unread = 0;
  bool has_wanted = false;
};

// Takes the rows of the sheet that is called `wanted`; where that is empty, of the first that has any, and counts the
// others that have some, while rows are wanted. Gives why it is no such part, empty where it is, or where `cancel`
// ended it.
std::string ReadOpenSheets(std::string_view xml, std::string_view wanted, SheetRow& row, OpenSheets& sheets,
                           const platform::CancelToken* cancel = nullptr);
// The names of the sheets, in the order of their tabs.
std::string ListOpenSheets(std::string_view xml, std::vector<std::string>& names,
                           const platform::CancelToken* cancel = nullptr);

}  // namespace quillcast::recipients
