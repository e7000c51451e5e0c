// The obvious twin of every operation: one byte at a time, every bound tested, nothing shared with
// the library but the predicates, the table images and the entity tables.

#ifndef SGBK_TESTS_TWINS_H
#define SGBK_TESTS_TWINS_H

#include <sgbk/EncodingConvertor.h>

#include <string>
#include <vector>

namespace sgbk_test {

// A conversion's result and everything it leaves in the destination.
struct Outcome {
  long result;
  std::string dest;
  bool operator==(const Outcome&) const = default;
};

using Table = std::vector<gchar_t>;

// The table images with the widened ASCII laid over the first three.
struct Tables {
  Table big5, simplified, unicode, toBig5;
};
const Tables& tables();

// Each takes the input's bytes and a destination of `size` bytes (elements for twinArray and
// twinTrim) filled with `fill`; terminated bytes come without their terminator.
struct Destination {
  int size;
  char fill;
};

enum class Stream { big5, gbk };
Outcome twinPairs(const std::string& src, Destination to, Stream kind);
Outcome twinUcs2(const std::string& src, Destination to, bool doubleByte);
Outcome twinUtf8(const std::string& src, Destination to);
Outcome twinHz(const std::string& src, Destination to);
Outcome twinHzToGbk(const std::string& src, Destination to);

enum class Array { dbc, t2s, cache };
Outcome twinArray(const std::string& src, Destination to, Array kind, bool ifcase);

enum class Fold { counted, terminated, big5, page };
Outcome twinFold(const std::string& src, Destination to, Fold kind, bool ifcase);

// `src` with its last unit: a 0, or any unit where `counted`.
Outcome twinTrim(const std::string& src, Destination to, bool counted);
// The same, lowered in the destination.
Outcome twinLowered(const std::string& src, Destination to);

// Results of two parts come as the number that `together` makes of them.
constexpr long together(long value, long taken) { return value + 65536 * taken; }
enum class Entity { code, codeOfPrefix, text, textOfPrefix };
Outcome twinEntity(const std::string& src, Destination to, Entity kind);

}  // namespace sgbk_test

#endif
