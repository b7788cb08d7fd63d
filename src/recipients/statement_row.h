// What a row of the statement catalogue is; its rows stand in statement_table.h and own_statement_table.h.
#pragma once

#include <string_view>

#include "recipients/statements.h"

namespace quillcast::recipients {

struct StatementRow {
  StatementId id;
  std::string_view text;
  bool in_natural_order;  // run with ORDER BY [ID], so that an index cannot change the order of the rows
};

}  // namespace quillcast::recipients
