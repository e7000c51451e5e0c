/* sgbk: text of any size, from the encodings in which Chinese is found to simplified GBK, Big5 or
 * Unicode, with an honest account of what was lost. For C from C99 on, and for C++; the library is
 * libsgbk-text.
 *
 *   sgbk_converter *c = sgbk_open("big5", "utf-8");
 *   const char *text;
 *   size_t size;
 *   if (c != NULL && sgbk_set(c, "entities", NULL) == SGBK_OK &&
 *       sgbk_convert(c, page, page_size, 1, &text, &size) == SGBK_OK)
 *     fwrite(text, 1, size, stdout);
 *   sgbk_close(c);
 *
 * Input comes in pieces of any size, cut anywhere: text, losses and counts are those of the whole.
 * As many line feeds come out as go in, and no line depends on another one. Memory does not grow
 * with the input.
 *
 * One thread at a time may use a converter; any number of converters may be in use. The first
 * sgbk_open creates the process's EncodingConvertor if there is none and asks it for all it knows;
 * after it has returned, that object is not touched again, so a program may call
 * EncodingConvertor::clear as it likes. No lock is held, across fork or otherwise. */

#ifndef SGBK_TEXT_H
#define SGBK_TEXT_H

#include <stddef.h>
#include <stdint.h>

#include "visibility.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct sgbk_converter sgbk_converter;

/* What a call results in. Every one but SGBK_OK has a sentence in sgbk_error. */
typedef enum sgbk_result {
  SGBK_OK = 0,
  SGBK_NO_MEMORY = 1,
  SGBK_USAGE = 2,          /* an option, a value or an order of calls that does not exist */
  SGBK_UNKNOWN_SOURCE = 3, /* "auto" cannot tell the encoding of the input */
  SGBK_LOST = 4            /* the first loss, under "strict" */
} sgbk_result;

/* Why a character is not in the output as itself. */
typedef enum sgbk_reason {
  SGBK_MALFORMED = 0,     /* no character of the encoding: a stray byte, a sequence cut off */
  SGBK_UNDEFINED = 1,     /* well-formed, but there is no such character */
  SGBK_NOT_IN_TARGET = 2, /* a character that the encoding of the output lacks */
  SGBK_REPLACED = 3       /* the same, but ASCII stands for it, such as (C): no loss */
} sgbk_reason;

#define SGBK_REASONS 4
#define SGBK_LOSS_BYTES 66

/* A character that was lost or replaced, and where it stood in the input. */
typedef struct sgbk_loss {
  uint64_t line;       /* from 1 */
  uint64_t offset;     /* of its first byte, in bytes from 0 */
  uint32_t code_point; /* where the source is Unicode or a character reference; otherwise 0 */
  uint8_t reason;      /* an sgbk_reason */
  uint8_t size;        /* bytes of the input */
  unsigned char bytes[SGBK_LOSS_BYTES];
} sgbk_loss;

/* Of the whole input so far. A later version may have more fields at the end. */
typedef struct sgbk_counts {
  uint64_t bytes;                 /* of input */
  uint64_t lines;                 /* line feeds of input */
  uint64_t characters;            /* of input, lost ones included */
  uint64_t reasons[SGBK_REASONS]; /* how many were lost or replaced, by sgbk_reason */
  sgbk_loss first;                /* the first loss; `size` is 0 when there is none */
} sgbk_counts;

/* Returns a converter, to be closed by sgbk_close; null when there is no memory or when one of the
 * names is unknown (sgbk_source_name and sgbk_target_name tell which).
 * from, to  by any of their names; capitals, punctuation and a suffix "//..." do not matter. From
 *           "auto" the encoding is found from the input */
SGBK_API sgbk_converter *sgbk_open(const char *from, const char *to);

/* Sets an option, before the first byte of input.
 * option    one of sgbk_options, without the "--"
 * value     null where the option takes none, or "0" to unset it; UTF-8, NUL-terminated
 * Returns   SGBK_OK, SGBK_USAGE or SGBK_NO_MEMORY */
SGBK_API sgbk_result sgbk_set(sgbk_converter *, const char *option, const char *value);

/* Converts the next piece of input.
 * in        size bytes; may be null when size is 0
 * last      not 0 when the input ends here; then only sgbk_reset makes the converter usable again
 * out       receives the text, *out_size bytes without a terminator, valid until the next call with
 *           this converter. What cannot be decided yet comes with a later piece
 * Returns   SGBK_OK; SGBK_LOST, the text then ending before the line of the loss;
 *           SGBK_UNKNOWN_SOURCE, SGBK_USAGE (options that exclude one another, or input after the
 *           last piece) or SGBK_NO_MEMORY. After all but SGBK_OK the input has ended */
SGBK_API sgbk_result sgbk_convert(sgbk_converter *, const void *in, size_t size, int last,
                                  const char **out, size_t *out_size);

/* The losses of the last call of sgbk_convert, in the order of the input; only with the option
 * "losses". Valid until the next call.
 * count     receives their number */
SGBK_API const sgbk_loss *sgbk_losses(const sgbk_converter *, size_t *count);

/* The counts since sgbk_open or sgbk_reset; kept up to date by sgbk_convert. */
SGBK_API const sgbk_counts *sgbk_count(const sgbk_converter *);

/* Those that are lost: all reasons but SGBK_REPLACED. */
SGBK_API uint64_t sgbk_lost(const sgbk_converter *);

/* The name of the source: what "auto" took the input for, "auto" as long as that is open. */
SGBK_API const char *sgbk_source(const sgbk_converter *);

/* What was wrong in the last call that failed, a sentence in English; empty when none has. */
SGBK_API const char *sgbk_error(const sgbk_converter *);

/* Makes the converter ready for another input, with the same options. */
SGBK_API void sgbk_reset(sgbk_converter *);

/* Does nothing for null. */
SGBK_API void sgbk_close(sgbk_converter *);

/* Finds the encoding of a text as "auto" does.
 * in        size bytes
 * whole     not 0 when they are all of the text
 * Returns   the name, null when it cannot be told */
SGBK_API const char *sgbk_detect(const void *in, size_t size, int whole);

/* The first name of an encoding given by any name; null when it is not known. */
SGBK_API const char *sgbk_source_name(const char *name);
SGBK_API const char *sgbk_target_name(const char *name);

typedef struct sgbk_encoding {
  const char *name;
  const char *aliases; /* separated by blanks */
  const char *note;    /* may be empty */
} sgbk_encoding;

/* All encodings, *count of them. */
SGBK_API const sgbk_encoding *sgbk_sources(size_t *count);
SGBK_API const sgbk_encoding *sgbk_targets(size_t *count);

typedef struct sgbk_option {
  const char *name;
  const char *argument; /* what its value is called, null when it takes none */
  char letter;          /* of the command, 0 for none */
  const char *help;
} sgbk_option;

/* All options of sgbk_set, *count of them. */
SGBK_API const sgbk_option *sgbk_options(size_t *count);

/* "malformed", "undefined", "not in the target" or "replaced". */
SGBK_API const char *sgbk_reason_name(int reason);

#ifdef __cplusplus
}
#endif

#endif
