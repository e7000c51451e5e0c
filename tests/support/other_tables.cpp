// A table library with other contents: every entry differs from every other one of its table, and
// undefined codes are not blank.

extern "C" {
#define TABLE(name) __attribute__((visibility("default"))) unsigned short name[65536]
TABLE(_binary_data_big52sgbk_ctb_start);
TABLE(_binary_data_gbkt2s_ctb_start);
TABLE(_binary_data_uc2sgbk_ctb_start);
TABLE(_binary_data_gbk2big5_ctb_start);
}

namespace {

void fill(unsigned short* table, unsigned seed) {
  for (unsigned code = 0; code < 65536; ++code) {
    table[code] = static_cast<unsigned short>(code * 40503 + seed);
  }
}

__attribute__((constructor)) void fillTables() {
  fill(_binary_data_big52sgbk_ctb_start, 1);
  fill(_binary_data_gbkt2s_ctb_start, 20011);
  fill(_binary_data_uc2sgbk_ctb_start, 40009);
  fill(_binary_data_gbk2big5_ctb_start, 60013);
}

}  // namespace
