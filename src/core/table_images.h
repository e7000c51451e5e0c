// The four raw table images, imported from libsgbk-tables when the library is loaded.

#ifndef SGBK_CORE_TABLE_IMAGES_H
#define SGBK_CORE_TABLE_IMAGES_H

#include <cstddef>

namespace sgbk {

inline constexpr std::size_t kTableEntries = 65536;
inline constexpr std::size_t kTableBytes = 2 * kTableEntries;

}  // namespace sgbk

extern "C" {
#define SGBK_TABLE_IMAGE(name) \
  extern __attribute__((visibility("default"))) const char name[sgbk::kTableBytes]
SGBK_TABLE_IMAGE(_binary_data_big52sgbk_ctb_start);
SGBK_TABLE_IMAGE(_binary_data_gbkt2s_ctb_start);
SGBK_TABLE_IMAGE(_binary_data_uc2sgbk_ctb_start);
SGBK_TABLE_IMAGE(_binary_data_gbk2big5_ctb_start);
#undef SGBK_TABLE_IMAGE
}

#endif
