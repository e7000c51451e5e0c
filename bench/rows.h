// One row of the benchmark: something that converts a text, timed for Google Benchmark.

#ifndef SGBK_BENCH_ROWS_H
#define SGBK_BENCH_ROWS_H

#include <benchmark/benchmark.h>
#include <valgrind/callgrind.h>

#include <cstddef>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "texts.h"

namespace sgbk_bench {

// name        "operation/text/who"
// characters  of the text, to relate the time to
// room        bytes of the output
// convert     called with the output, returns the bytes written
template <class Convert>
benchmark::internal::Benchmark* addRow(const std::string& name, std::size_t characters,
                                       std::size_t room, Convert convert) {
  return benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) mutable {
    std::vector<char> out(room);
    const std::size_t expected = convert(std::span(out));
    if (expected == 0) throw std::runtime_error(name + " writes nothing");
    if (RUNNING_ON_VALGRIND != 0) {
      CALLGRIND_ZERO_STATS;
      convert(std::span(out));
      CALLGRIND_DUMP_STATS_AT((name + ' ' + std::to_string(characters)).c_str());
    }
    for (auto _ : state) {
      if (convert(std::span(out)) != expected) throw std::runtime_error(name + " wavers");
      benchmark::ClobberMemory();
    }
    state.counters["characters"] = static_cast<double>(characters);
  });
}

// The library against general tools and against the limits of the machine, on one kind of text.
void addConversions(Kind kind, std::size_t limit);

// The same text in pieces of a few bytes a call, and in two threads at once.
void addCallCosts(std::size_t limit);
void addThreads(std::size_t limit);

}  // namespace sgbk_bench

#endif
