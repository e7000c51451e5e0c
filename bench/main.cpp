// Measures the library on real text. Takes the flags of Google Benchmark, and before them
// --characters=N for shorter texts.

#include <sgbk/EncodingConvertor.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <string_view>

#include "rows.h"

namespace {

std::string described(sgbk_bench::Kind kind, std::size_t limit) {
  const auto text = sgbk_bench::Source(kind, sgbk_bench::Script::traditional, limit).in("UTF-8");
  const auto ascii = std::ranges::count_if(text.bytes, [](char c) { return (c & 0x80) == 0; });
  const std::string count = std::to_string(text.characters) + " characters";
  if (text.characters < sgbk_bench::kUnlearntCharacters) {
    std::fprintf(stderr, "warning: %s are few enough for the processor to learn their order\n",
                 count.c_str());
  }
  return count + ", " + std::to_string(100 * static_cast<std::size_t>(ascii) / text.characters) +
         " % ASCII";
}

}  // namespace

int main(int argc, char** argv) try {
  using namespace sgbk_bench;
  std::size_t characters = 700000;
  constexpr std::string_view kOption = "--characters=";
  if (argc > 1 && std::string_view(argv[1]).starts_with(kOption)) {
    characters = std::strtoul(argv[1] + kOption.size(), nullptr, 10);
    argv[1] = argv[0];
    ++argv;
    --argc;
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  if (EncodingConvertor::initializeInstance(nullptr) < 0) return 1;
#ifdef __clang__
  benchmark::AddCustomContext("compiler", "clang++ " __clang_version__);
#else
  benchmark::AddCustomContext("compiler", "g++ " __VERSION__);
#endif
  benchmark::AddCustomContext("prose", described(Kind::prose, characters));
  benchmark::AddCustomContext("pages", described(Kind::pages, characters));
  addConversions(Kind::prose, characters);
  addConversions(Kind::pages, characters);
  addCallCosts(characters);
  addThreads(characters);
  return benchmark::RunSpecifiedBenchmarks() == 0 ? 1 : 0;
} catch (const std::exception& error) {
  std::fprintf(stderr, "%s\n", error.what());
  return 1;
}
