// From an entity name to its code point.

#include <cstring>

#include "sgbk/support.h"

namespace {

constexpr UINT16 kUnknownEntity = 0xFFFE;

// The row for which `compare` returns 0, or null. `compare` compares the wanted name with that of a
// row, like strcmp.
template <int size, class Compare>
const tCharEntityMap* findRow(const tCharEntityMap (&table)[size], Compare compare) {
  int left = 0;
  int right = size - 1;
  while (left <= right) {
    const int pilot = (left + right) / 2;
    const int direction = compare(table[pilot]);
    if (direction == 0) return &table[pilot];
    if (direction > 0) {
      left = pilot + 1;
    } else {
      right = pilot - 1;
    }
  }
  return nullptr;
}

}  // namespace

UINT16 decodeCharEntity(const char* reference) {
  const auto* const row = findRow(charEntitySet, [reference](const tCharEntityMap& entity) {
    return std::strcmp(reference, entity.pEntity);
  });
  return row != nullptr ? row->uc : kUnknownEntity;
}

UINT16 decodeIrregularCharEntity(const char* reference, size_t& len) {
  // No name is a prefix of another one, so comparing prefixes gives the same order.
  const auto* const row = findRow(charEntityIESet, [reference](const tCharEntityMap& entity) {
    return std::strncmp(reference, entity.pEntity, entity.esclen);
  });
  len = row != nullptr ? row->esclen : 0;
  return row != nullptr ? row->uc : kUnknownEntity;
}
