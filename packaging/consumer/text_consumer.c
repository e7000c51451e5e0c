/* Converts a Big5 character and an ASCII letter to UTF-8; fails when the answer is not the right one. */
#include <sgbk/text.h>
#include <string.h>

int main(void) {
  const char *text;
  size_t size;
  sgbk_converter *c = sgbk_open("big5", "utf-8");
  if (c == NULL || sgbk_convert(c, "\xB0\xEA\x41", 3, 1, &text, &size) != SGBK_OK) return 2;
  if (size != 4 || memcmp(text, "\xE5\x9B\xBD\x41", size) != 0) return 1;
  sgbk_close(c);
  return 0;
}
