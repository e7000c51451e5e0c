// A table library with other contents: every entry differs from every other one of its table, and
// undefined codes are not blank.

#include <array>

static auto tableFrom(unsigned first) {
  std::array<unsigned short, 65536> table;
  for (unsigned code = 0; auto& entry : table) {
    entry = static_cast<unsigned short>(code++ * 40503 + first);
  }
  return table;
}

extern "C" {
#define TABLE(name, first) __attribute__((visibility("default"))) auto name = tableFrom(first)
TABLE(_binary_data_big52sgbk_ctb_start, 1);
TABLE(_binary_data_gbkt2s_ctb_start, 20011);
TABLE(_binary_data_uc2sgbk_ctb_start, 40009);
TABLE(_binary_data_gbk2big5_ctb_start, 60013);
}
