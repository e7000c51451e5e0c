// Every conversion of the library beside its twin, in one shape.

#ifndef SGBK_TESTS_OPERATIONS_H
#define SGBK_TESTS_OPERATIONS_H

#include <functional>
#include <span>

#include "support/twins.h"

namespace sgbk_test {

enum class Source { bytes, units, terminated, terminatedUnits };

struct Operation {
  const char* name;
  Source source;
  long elementSize;  // bytes of an element of the destination's size
  bool anyCapacity;  // false where the caller must give a large enough destination
  // A few bytes between which the conversion makes all its distinctions.
  const char* alphabet;
  std::function<long(const char* src, long size, char* dest, long capacity)> call;
  std::function<Outcome(const std::string& src, Destination to)> twin;

  // A capacity, in elements, that is always enough; even, for destinations of units.
  long enough(std::size_t srcBytes) const {
    return 5 * static_cast<long>((srcBytes + 1) / 2) / 2 * 2 + 4;
  }
};

// Needs the converter to exist.
std::span<const Operation> operations();

// Runs the library's conversion between protected pages, its destination filled beforehand.
Outcome run(const Operation& operation, const std::string& src, Destination to);

}  // namespace sgbk_test

#endif
