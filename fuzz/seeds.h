// What a fuzz target begins with.

#ifndef SGBK_FUZZ_SEEDS_H
#define SGBK_FUZZ_SEEDS_H

#include <string>
#include <vector>

struct Seed {
  std::string name, input;
};

// Called once, before the first input.
std::vector<Seed> seeds();

#endif
