// Text of the kind an operation reads: real characters for random text, and a real page.

#ifndef SGBK_TESTS_SAMPLE_TEXT_H
#define SGBK_TESTS_SAMPLE_TEXT_H

#include <random>
#include <string>

#include "support/operations.h"

namespace sgbk_test {

// One character of the operation's input encoding, mostly a mapped one; or the name of an entity.
std::string randomCharacter(const Operation& operation, std::mt19937& random);

// A page of traditional Chinese with markup, in the operation's input encoding.
std::string samplePage(const Operation& operation);

}  // namespace sgbk_test

#endif
