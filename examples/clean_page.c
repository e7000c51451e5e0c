/* A page in any of the encodings, read as it comes, to clean UTF-8; what was lost goes to stderr.
 *
 *     clean_page [ENCODING] < page > page.utf8.html
 */

#include <sgbk/text.h>
#include <stdio.h>

static void tell_losses(const sgbk_converter *c) {
  size_t count;
  const sgbk_loss *loss = sgbk_losses(c, &count);
  for (; count != 0; --count, ++loss) {
    fprintf(stderr, "line %lu:", (unsigned long)loss->line);
    for (int i = 0; i < loss->size; ++i) fprintf(stderr, " %02X", loss->bytes[i]);
    fprintf(stderr, " %s\n", sgbk_reason_name(loss->reason));
  }
}

int main(int argc, char **argv) {
  static const char *const options[] = {"entities", "html", "trim-punct", "losses"};
  static char input[1 << 16];
  int last = 0;

  sgbk_converter *c = sgbk_open(argc > 1 ? argv[1] : "auto", "utf-8");
  if (c == NULL) {
    fprintf(stderr, "usage: clean_page [ENCODING] < page > page.utf8.html\n");
    return 2;
  }
  for (size_t i = 0; i < sizeof options / sizeof *options; ++i) sgbk_set(c, options[i], NULL);
  while (!last) {
    const size_t size = fread(input, 1, sizeof input, stdin);
    const char *text;
    size_t text_size;
    last = size < sizeof input;
    const sgbk_result result = sgbk_convert(c, input, size, last, &text, &text_size);
    fwrite(text, 1, text_size, stdout);
    tell_losses(c);
    if (result != SGBK_OK) {
      fprintf(stderr, "clean_page: %s\n", sgbk_error(c));
      sgbk_close(c);
      return 1;
    }
  }
  fprintf(stderr, "from %s, %lu of %lu characters lost\n", sgbk_source(c), (unsigned long)sgbk_lost(c),
          (unsigned long)sgbk_count(c)->characters);
  sgbk_close(c);
  return fflush(stdout) == 0 && !ferror(stdin) ? 0 : 1;
}
