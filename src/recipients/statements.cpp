#include "recipients/statements.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <span>

#include "platform/text.h"
#include "recipients/own_statement_table.h"
#include "recipients/sort_order.h"
#include "recipients/statement_table.h"

namespace quillcast::recipients {
namespace {

constexpr std::string_view kOrderBy = " ORDER BY ";

const StatementRow& RowOf(StatementId id) {
  const auto has_id = [id](const StatementRow& row) { return row.id == id; };
  const auto* const given = std::find_if(std::begin(kStatements), std::end(kStatements), has_id);
  if (given != std::end(kStatements)) return *given;
  return *std::find_if(std::begin(kOwnStatements), std::end(kOwnStatements), has_id);
}

enum class Slot : std::uint8_t { kNone, kKey, kKeys, kValue, kName, kColumn, kSort };

constexpr std::array<std::pair<std::string_view, Slot>, 6> kSlots = {{{"key", Slot::kKey},
                                                                      {"keys", Slot::kKeys},
                                                                      {"value", Slot::kValue},
                                                                      {"name", Slot::kName},
                                                                      {"column", Slot::kColumn},
                                                                      {"sort", Slot::kSort}}};

Slot SlotOf(std::string_view name) {
  for (const auto& [known, slot] : kSlots) {
    if (known == name) return slot;
  }
  return Slot::kNone;
}

// A stretch of literal text and the slot behind it. A quoted slot has its quotes taken off the literals around it.
struct Piece {
  std::string_view literal;
  Slot slot = Slot::kNone;
  bool quoted = false;
  std::string_view before;  // between the opening quote and the value
  std::string_view after;   // between the value and the closing quote
};

// Takes the first piece off a row's text.
Piece TakePiece(std::string_view& text) {
  Piece piece;
  const auto open = text.find('<');
  if (open == std::string_view::npos) {
    piece.literal = std::exchange(text, {});
    return piece;
  }
  const auto close = text.find('>', open);
  piece.slot = SlotOf(text.substr(open + 1, close - open - 1));
  piece.literal = text.substr(0, open);
  text.remove_prefix(close + 1);
  const auto quote = piece.literal.rfind('\'');
  piece.quoted =
      quote != std::string_view::npos && piece.literal.find_first_not_of('%', quote + 1) == std::string::npos;
  if (piece.quoted) {
    piece.before = piece.literal.substr(quote + 1);
    piece.literal = piece.literal.substr(0, quote);
    const auto end = text.find('\'');
    piece.after = text.substr(0, end);
    text.remove_prefix(end + 1);
  }
  return piece;
}

}  // namespace

std::string IssuedText(StatementId id, Values values, std::string_view extra) {
  std::string out;
  std::string_view text = RowOf(id).text;
  std::size_t next = 0;
  while (!text.empty()) {
    const Piece piece = TakePiece(text);
    out += piece.literal;
    if (piece.slot == Slot::kNone) continue;
    if (piece.slot == Slot::kColumn) {
      out += extra;
    } else if (piece.slot == Slot::kSort) {
      if (!extra.empty()) out.append(kOrderBy).append(extra);
    } else if (piece.slot == Slot::kKeys) {
      out += fmt::format("{}", fmt::join(values.subspan(next), ", "));
      next = values.size();
    } else {
      const std::string_view value = values[next++];
      const std::string spliced =
          piece.slot == Slot::kValue ? platform::ReplaceAll(value, "'", "''") : std::string(value);
      const std::string_view quote = piece.quoted ? "'" : "";
      out += fmt::format("{}{}{}{}{}", quote, piece.before, spliced, piece.after, quote);
    }
  }
  return out;
}

Result<CatalogueStatement> CatalogueStatement::Prepare(platform::Database& database, StatementId id,
                                                       std::string_view extra) {
  return PrepareWithin("", "", database, id, extra);
}

Result<CatalogueStatement> CatalogueStatement::PrepareWithin(std::string_view before, std::string_view after,
                                                             platform::Database& database, StatementId id,
                                                             std::string_view extra) {
  const StatementRow& row = RowOf(id);
  std::string sql(before);
  std::vector<Parameter> parameters;
  std::string_view text = row.text;
  bool sorted = false;
  while (!text.empty()) {
    const Piece piece = TakePiece(text);
    sql += piece.literal;
    if (piece.slot == Slot::kNone) continue;
    if (piece.slot == Slot::kColumn) {
      sql += extra;
    } else if (piece.slot == Slot::kSort) {
      if (extra.empty()) continue;
      const auto order = OrderByOf(extra);
      if (!order) return order.error();
      sql += *order;
      sorted = true;
    } else if (piece.slot == Slot::kKeys) {
      for (std::size_t at = 0; at < kKeysAtOnce; ++at) {
        sql += at == 0 ? "?" : ",?";
        parameters.push_back({.before = {}, .after = {}, .is_number = true, .is_name = false});
      }
    } else {
      sql += '?';
      parameters.push_back(
          {std::string(piece.before), std::string(piece.after), !piece.quoted, piece.slot == Slot::kName});
    }
  }
  sql += after;
  if (row.in_natural_order && !sorted) sql.append(kOrderBy).append("[ID]");
  auto statement = database.Prepare(sql);
  if (!statement) return statement.error();
  return CatalogueStatement(std::move(*statement), std::move(parameters));
}

Result<CatalogueStatement> CatalogueStatement::PrepareRows(platform::Database& database, StatementId id,
                                                           std::size_t rows) {
  const std::string_view text = RowOf(id).text;
  const auto values = static_cast<std::size_t>(std::count(text.begin(), text.end(), '<'));
  std::string row = ",(?";
  for (std::size_t value = 1; value < values; ++value) row += ",?";
  row += ')';
  std::string more;
  for (std::size_t at = 1; at < rows; ++at) more += row;
  auto statement = PrepareWithin("", more, database, id, "");
  if (!statement) return statement;
  const std::vector<Parameter> one = statement->parameters_;
  for (std::size_t at = 1; at < rows; ++at) {
    statement->parameters_.insert(statement->parameters_.end(), one.begin(), one.end());
  }
  statement->is_empty_.resize(statement->parameters_.size());
  return statement;
}

Result<void> CatalogueStatement::Bind(Values values, Lifetime lifetime) {
  statement_.Reset();
  for (std::size_t at = 0; at < parameters_.size(); ++at) {
    const Parameter& parameter = parameters_[at];
    const int position = static_cast<int>(at) + 1;
    if (at >= values.size()) {  // one of several keys, of which there are fewer: no row has the key 0
      if (auto bound = statement_.Bind(position, std::int64_t{0}); !bound) return bound;
      continue;
    }
    if (parameter.is_name && values[at].find('\'') != std::string_view::npos) {
      return Error{Failure::kUsage, Say("The group name \"{}\" holds an apostrophe.", values[at]),
                   "Give the group another name first: letters, digits, blanks and \"-\"."};
    }
    const auto bind = [&]() -> Result<void> {
      if (parameter.is_number) {
        return statement_.Bind(position, platform::ParseWholeNumber(values[at]).value_or(0));
      }
      if (parameter.before.empty() && parameter.after.empty()) {
        const bool stays = values[at].empty() && is_empty_[at];
        is_empty_[at] = values[at].empty();
        if (stays) return {};
        return lifetime == Lifetime::kOutlivesStep ? statement_.BindView(position, values[at])
                                                   : statement_.Bind(position, values[at]);
      }
      scratch_.assign(parameter.before).append(values[at]).append(parameter.after);
      return statement_.Bind(position, scratch_);
    };
    if (auto bound = bind(); !bound) return bound;
  }
  return {};
}

}  // namespace quillcast::recipients
