#include "store/file/row_values.h"

#include <algorithm>

namespace orlocal::store {

void RowValues::clear() {
  std::ranges::fill(m_values, Value());
  m_bytes.clear();
}

RowValues::Value& RowValues::at(int parameter) {
  const auto index = static_cast<std::size_t>(parameter - 1);
  if (index >= m_values.size()) { m_values.resize(index + 1); }
  return m_values[index];
}

std::int64_t RowValues::keep(std::string_view bytes) {
  const auto begin = static_cast<std::int64_t>(m_bytes.size());
  m_bytes += bytes;
  return begin;
}

RowValues& RowValues::bind(int parameter, std::int64_t value) {
  at(parameter) = {Statement::Type::kInteger, value, 0};
  return *this;
}

RowValues& RowValues::bind(int parameter, std::string_view text) {
  at(parameter) = {Statement::Type::kText, keep(text), text.size()};
  return *this;
}

RowValues& RowValues::bindBlob(int parameter, std::span<const std::byte> bytes) {
  const std::string_view kept(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  at(parameter) = {Statement::Type::kBlob, keep(kept), bytes.size()};
  return *this;
}

void RowValues::bindTo(Statement& statement, int before) const {
  for (const Value& value : m_values) {
    ++before;
    const auto bytes = [&] {
      return std::string_view(m_bytes).substr(static_cast<std::size_t>(value.number), value.size);
    };
    switch (value.type) {
      case Statement::Type::kInteger:
        statement.bind(before, value.number);
        break;
      case Statement::Type::kText:
        statement.bind(before, bytes());
        break;
      case Statement::Type::kBlob:
        statement.bindBlob(before, std::as_bytes(std::span(bytes())));
        break;
      default:
        break;  // NULL, as what is not bound
    }
  }
}

}  // namespace orlocal::store
