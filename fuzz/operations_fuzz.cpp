// One fuzz target over every operation. The first byte of an input chooses the operation, the next
// two the capacity; the rest is the text. Each input is run beside the operation's twin, between
// protected pages and over two fillings of the destination; what must hold between operations is
// tested on the text as well.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "support/hex.h"
#include "support/operations.h"

using sgbk_test::Outcome;

namespace {

// Chosen on the command line in place of the first byte.
const sgbk_test::Operation* chosen = nullptr;

void require(bool holds, const char* relation, const std::string& text, long capacity) {
  if (holds) return;
  std::fprintf(stderr, "%s\n%s into %ld\n", relation, sgbk_test::toHex(text).c_str(), capacity);
  std::abort();
}

Outcome outcomeOf(const char* name, const std::string& text, long capacity) {
  return run(sgbk_test::operationNamed(name), text, {capacity, '\x33'});
}

void testRelations(std::string text, long capacity) {
  const std::string start = text.substr(0, text.size() / 2);
  require(
      startsWith(text.c_str(), start.c_str()) == text.starts_with(start.c_str()) &&
          startsWith(start.c_str(), text.c_str()) == (start.c_str() == std::string(text.c_str())),
      "startsWith takes every beginning and nothing longer", text, 0);

  for (const char* const name : {"b52sgbk", "t2sgbk", "utf82sgbk", "hz2sgbk", "hzgb2gbk"}) {
    const Outcome some = outcomeOf(name, text, capacity);
    const Outcome all = outcomeOf(name, text, 2 * static_cast<long>(text.size()));
    require(some.result <= all.result &&
                all.dest.starts_with(some.dest.substr(0, static_cast<std::size_t>(some.result))),
            "what fits is the beginning of the whole", text, capacity);
  }

  std::erase(text, '\0');
  require(outcomeOf("sbc2dbc", text, capacity) == outcomeOf("sbc2dbc counted", text, capacity) &&
              outcomeOf("sbc2dbc case", text, capacity) ==
                  outcomeOf("sbc2dbc counted case", text, capacity),
          "counted and terminated text fold alike", text, capacity);

  text += "x";  // the trail byte of a lead byte left over
  const long bytes = 2 * static_cast<long>(text.size());
  const Outcome stream = outcomeOf("t2sgbk", text, bytes);
  const Outcome array = outcomeOf("t2sgchar", text, bytes / 2 + 1);
  const std::string units = stream.dest.substr(0, static_cast<std::size_t>(stream.result));
  require(2 * array.result == stream.result && array.dest.starts_with(units),
          "the stream holds the characters of the array", text, bytes);

  const std::string terminated = units + std::string(2, '\0');
  const long length = static_cast<long>(terminated.size() / 2);
  require(outcomeOf("trimgPunc", terminated, length) ==
              outcomeOf("trimgPunc counted", terminated, length),
          "counted and terminated text are trimmed alike", terminated, length);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
  EncodingConvertor::initializeInstance(nullptr);
  constexpr char kOption[] = "--operation=";
  for (int i = 1; i < *argc; ++i) {
    const std::string argument = (*argv)[i];
    if (argument.starts_with(kOption)) {
      chosen = &sgbk_test::operationNamed(argument.substr(std::strlen(kOption)));
    }
  }
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::size_t kHead = 3;
  if (size < kHead) return 0;
  const auto list = sgbk_test::operations();
  const auto& operation = chosen != nullptr ? *chosen : list[data[0] % list.size()];
  const std::string text(reinterpret_cast<const char*>(data) + kHead, size - kHead);
  const long capacity = (data[1] + 256 * data[2]) % (operation.enough(text.size()) + 2) - 1;
  const std::string difference = disagreement(operation, text, capacity);
  require(difference.empty(), difference.c_str(), text, capacity);
  if (chosen == nullptr) testRelations(text, capacity);
  return 0;
}
