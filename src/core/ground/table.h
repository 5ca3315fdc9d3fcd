// Constant tables of rows that are found by a key.
#pragma once

#include <cstddef>

namespace kesext {

/// Whether no two rows have the same key, so that the order of the rows does not decide.
template <typename Row, size_t N, typename Key>
constexpr bool keysAreUnique(const Row (&table)[N], Key Row::*key) {
  for (size_t i = 0; i < N; ++i)
    for (size_t j = i + 1; j < N; ++j)
      if (table[i].*key == table[j].*key) return false;
  return true;
}

/// Whether a row has this key. For assertions: a sanitized build does not compare addresses while it
/// compiles.
template <typename Row, size_t N, typename Key>
constexpr bool hasRow(const Row (&table)[N], Key Row::*key, Key value) {
  for (const Row& row : table)
    if (row.*key == value) return true;
  return false;
}

/// The first row with this key, or null.
template <typename Row, size_t N, typename Key>
constexpr const Row* findRow(const Row (&table)[N], Key Row::*key, Key value) {
  for (const Row& row : table)
    if (row.*key == value) return &row;
  return nullptr;
}

}  // namespace kesext
