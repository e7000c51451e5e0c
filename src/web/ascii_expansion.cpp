// Entities to plain ASCII text.

#include <cstring>

#include "sgbk/support.h"

namespace {

template <class Matches>
const tCharaEntityMap* findExpansion(Matches matches) {
  for (const auto& entity : charaentitymaps) {
    if (matches(entity)) return &entity;
  }
  return nullptr;
}

int writeExpansion(const tCharaEntityMap& entity, char* pdesc) {
  std::memcpy(pdesc, entity.pdesc, static_cast<size_t>(entity.desclen) + 1);
  return entity.desclen;
}

}  // namespace

int deEscHtml(const char* pescstr, char* pdesc) {
  const auto* const entity = findExpansion([pescstr](const tCharaEntityMap& candidate) {
    return std::strcmp(pescstr, candidate.pesc) == 0;
  });
  if (entity != nullptr) return writeExpansion(*entity, pdesc);
  // For an unknown name, its first character is returned.
  pdesc[0] = pescstr[0];
  pdesc[1] = '\0';
  return 1;
}

int deEscHtml(const char* pescstr, char* pdesc, const char*& pscan) {
  const auto* const entity = findExpansion(
      [pescstr](const tCharaEntityMap& candidate) { return startsWith(pescstr, candidate.pesc); });
  if (entity == nullptr) return 0;
  pscan += entity->esclen;
  return writeExpansion(*entity, pdesc);
}
