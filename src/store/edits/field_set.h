#pragma once

#include <cstdint>
#include <initializer_list>

namespace orlocal::store {

/// Some of the fields that `Field`, an enumeration of at most 32 of them from 0 on, names.
template <class Field>
class FieldSet {
 public:
  constexpr FieldSet() = default;
  constexpr FieldSet(std::initializer_list<Field> fields) {
    for (const Field field : fields) { add(field); }
  }
  static constexpr FieldSet all() {
    FieldSet everything;
    everything.m_bits = ~std::uint32_t{0};
    return everything;
  }

  constexpr bool has(Field field) const { return (m_bits & bit(field)) != 0; }
  constexpr void add(Field field) { m_bits |= bit(field); }
  constexpr bool empty() const { return m_bits == 0; }

  friend constexpr bool operator==(FieldSet, FieldSet) = default;

 private:
  static constexpr std::uint32_t bit(Field field) { return std::uint32_t{1} << static_cast<unsigned>(field); }

  std::uint32_t m_bits = 0;
};

}  // namespace orlocal::store
