#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "base/try.h"
#include "store/file/sqlite.h"

namespace orlocal::store {

/// Inserts rows of one table, `rowsAtOnce` with one statement as long as there are so many: that costs less than one
/// each.
class RowInsert {
 public:
  /// `into` is what stands before VALUES, `onConflict` what stands after the rows.
  RowInsert(std::string_view into, int columns, int rowsAtOnce, std::string_view onConflict = {})
      : m_columns(columns),
        m_rowsAtOnce(rowsAtOnce),
        m_oneSql(sql(into, columns, 1, onConflict)),
        m_manySql(sql(into, columns, rowsAtOnce, onConflict)) {}

  /// In their order. `bind(statement, before, row)` binds a row to the parameters that follow `before`.
  template <class Row, class Bind>
  Status write(Database& database, std::span<const Row> rows, const Bind& bind) {
    const auto atOnce = static_cast<std::size_t>(m_rowsAtOnce);
    for (; rows.size() >= atOnce; rows = rows.subspan(atOnce)) {
      Statement& insert = m_many.in(database);
      for (int i = 0; i < m_rowsAtOnce; ++i) { bind(insert, i * m_columns, rows[static_cast<std::size_t>(i)]); }
      ORLOCAL_CHECK(insert.run());
    }
    for (const Row& row : rows) {
      Statement& insert = m_one.in(database);
      bind(insert, 0, row);
      ORLOCAL_CHECK(insert.run());
    }
    return {};
  }

 private:
  static std::string sql(std::string_view into, int columns, int rows, std::string_view onConflict) {
    std::string text(into);
    text += " VALUES";
    for (int row = 0; row < rows; ++row) {
      text += row == 0 ? "(?" : ",(?";
      for (int column = 1; column < columns; ++column) { text += ",?"; }
      text += ')';
    }
    text += onConflict;
    return text;
  }

  int m_columns, m_rowsAtOnce;
  std::string m_oneSql, m_manySql;
  LazyStatement m_one{m_oneSql.c_str()}, m_many{m_manySql.c_str()};
};

}  // namespace orlocal::store
