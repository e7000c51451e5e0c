// What a fuzz target consists of.

#ifndef SGBK_FUZZ_SEEDS_H
#define SGBK_FUZZ_SEEDS_H

#include <string>
#include <vector>

struct Seed {
  std::string name, input;
};

// What it begins with. Called once, before the first input.
std::vector<Seed> seeds();

// Empty, or what is wrong with this input.
std::string faultOf(const std::string& input);

#endif
