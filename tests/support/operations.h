// Every operation on text of the library in one shape, beside its obvious twin: that takes one byte
// at a time, tests every bound, and shares nothing with the library but the functions on single
// characters, the table images and the entity tables.

#ifndef SGBK_TESTS_OPERATIONS_H
#define SGBK_TESTS_OPERATIONS_H

#include <sgbk/EncodingConvertor.h>

#include <functional>
#include <random>
#include <string>
#include <vector>

namespace sgbk_test {

// A conversion's result and everything it leaves in the destination, up to the result where it
// leaves scratch.
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

// `size` bytes, or elements of two bytes for arrays and trimming, filled with `fill`. They and the
// source touch a protected page behind their last byte, or before their first one.
struct Destination {
  int size;
  char fill;
  bool isAtFirst = false;
};

// Results of two parts come as the number that `together` makes of them.
constexpr long together(long value, long taken) { return value + 65536 * taken; }

// By the operation's name. Terminated bytes come without their terminator.
Outcome twin(const std::string& operation, const std::string& src, Destination to);

// What the operation reads: bytes that are counted, NUL-terminated, or terminated and converted to
// units; counted bytes of two encodings; counted units, units ended by a 0, the name of an entity.
enum class Text { bytes, terminated, array, utf8, hz, ucs2, units, names };

struct Operation {
  std::string name;
  Text text;
  std::function<long(const char* src, int size, char* dest, int capacity)> call;

  bool readsUnits() const { return text == Text::ucs2 || text == Text::units; }
  bool isTerminated() const {
    return text == Text::terminated || text == Text::array || text == Text::names;
  }
  // Whether the size of the destination is told; otherwise there must be room for what comes.
  bool takesCapacity() const { return text != Text::units && text != Text::names; }
  // Whether the units of the destination behind the result may hold anything.
  bool leavesScratch() const { return name.starts_with("trimgPunc"); }
  // Bytes of an element of the destination's size.
  int elementSize() const { return text == Text::array || text == Text::units ? 2 : 1; }
  // A few bytes between which the operation makes all its distinctions.
  std::string alphabet() const;
  // One character, mostly a mapped one; or the name of an entity.
  std::string randomCharacter(std::mt19937& random) const;
  // A capacity, in elements, that is always enough.
  int enough(std::size_t srcBytes) const { return 5 * static_cast<int>(srcBytes) / 2 + 4; }
};

// To be called while the converter exists.
const std::vector<Operation>& operations();
const Operation& operationNamed(const std::string& name);

// Runs the library's operation, its destination filled beforehand.
Outcome run(const Operation& operation, const std::string& src, Destination to);

// Runs operation and twin on `bytes`, brought into the form that the operation takes, at each of
// the protected pages. Empty when they agree in the outcome; otherwise says where they differ.
std::string disagreement(const Operation& operation, const std::string& bytes, int capacity);

}  // namespace sgbk_test

#endif
