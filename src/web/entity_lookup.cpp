// From an entity name to its code point.

#include <cstring>

#include "sgbk/support.h"

namespace {

constexpr UINT16 kUnknownEntity = 0xFFFE;

// The row for which `compare` gives 0, or null. `compare` tells the order of the name looked for
// against a row's: negative before it, positive behind it.
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
  // No name begins with another one, so the order of prefixes is that of the names.
  const auto* const row = findRow(charEntityIESet, [reference](const tCharEntityMap& entity) {
    return std::strncmp(reference, entity.pEntity, entity.esclen);
  });
  len = row != nullptr ? row->esclen : 0;
  return row != nullptr ? row->uc : kUnknownEntity;
}
