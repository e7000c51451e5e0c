// Converts one Big5 character and an ASCII letter; fails when the answer is not the right one.
#include <sgbk/EncodingConvertor.h>

#include <cstring>

int main() {
  if (EncodingConvertor::initializeInstance(nullptr) != 0) return 2;
  char gbk[4];
  const int length = EncodingConvertor::getInstance()->b52sgbk(
      "\xB0\xEA"
      "A",
      3, gbk, sizeof gbk);
  EncodingConvertor::clear();
  return length == 4 && std::memcmp(gbk, "\xB9\xFA\xA3\xC1", 4) == 0 ? 0 : 1;
}
