// What every fuzz target has around its faultOf: what libFuzzer calls, and in its place a main that
// takes the files named.

#ifndef SGBK_FUZZ_TARGET_H
#define SGBK_FUZZ_TARGET_H

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

// Empty, or what is wrong with this input.
std::string faultOf(const std::string& input);

extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size) {
  const std::string fault = faultOf({data, size});
  if (fault.empty()) return 0;
  std::fprintf(stderr, "%s\n", fault.c_str());
  std::abort();
}

#ifdef SGBK_PLAIN_MAIN
int main(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    std::ifstream file(argv[i], std::ios::binary);
    const std::string input(std::istreambuf_iterator<char>(file), {});
    if (input.empty()) return 1;
    LLVMFuzzerTestOneInput(input.data(), input.size());
  }
}
#endif

#endif
