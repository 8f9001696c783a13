#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "store/file/sqlite.h"

namespace orlocal::store {

/// The values of a row before a statement takes them. Texts and blobs are copied; what is kept for them is used again
/// by the next row. Parameters count from 1; one that is not given is NULL.
class RowValues {
 public:
  void clear();

  RowValues& bind(int parameter, std::int64_t value);
  RowValues& bind(int parameter, std::string_view text);
  RowValues& bindBlob(int parameter, std::span<const std::byte> bytes);

  /// Binds the first of these to the parameter that follows `before`, and so on. Texts and blobs are borrowed until the
  /// statement is reset.
  void bindTo(Statement& statement, int before) const;

 private:
  struct Value {
    Statement::Type type = Statement::Type::kNull;
    std::int64_t number = 0;  ///< or where the bytes begin
    std::size_t size = 0;
  };
  Value& at(int parameter);
  std::int64_t keep(std::string_view bytes);

  std::vector<Value> m_values;
  std::string m_bytes;
};

}  // namespace orlocal::store
