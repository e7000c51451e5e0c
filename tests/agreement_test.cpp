// Every conversion agrees with its obvious twin, in its result and in every byte of the
// destination, and stays inside its buffers, on exhaustive, random and real input.

#include <gtest/gtest.h>

#include <random>

#include "support/hex.h"
#include "support/operations.h"
#include "support/sample_text.h"

namespace sgbk_test {
namespace {

// The input in the form the operation takes it in: whole units, ended by a 0 unit where needed.
std::string shaped(const Operation& operation, std::string bytes) {
  if (operation.source == Source::bytes || operation.source == Source::terminated) return bytes;
  bytes.resize(bytes.size() / 2 * 2);
  if (operation.source == Source::terminatedUnits) bytes += std::string(2, '\0');
  return bytes;
}

class Agreement : public testing::TestWithParam<const Operation*> {
 protected:
  void agree(const std::string& bytes, long capacity) const {
    const Operation& operation = *GetParam();
    const std::string src = shaped(operation, bytes);
    const Destination to{operation.anyCapacity ? capacity : static_cast<long>(src.size()), '\x5A'};
    const Outcome expected = operation.twin(src, to);
    const Outcome actual = run(operation, src, to);
    ASSERT_TRUE(actual == expected)
        << toHex(src) << " into " << to.size << "\n  gave " << actual.result << ": "
        << toHex(actual.dest) << "\nand not " << expected.result << ": " << toHex(expected.dest);
  }
  void agreeAtAnyCapacity(const std::string& bytes) const {
    for (long capacity = -1; capacity <= GetParam()->enough(bytes.size()); ++capacity) {
      ASSERT_NO_FATAL_FAILURE(agree(bytes, capacity));
    }
  }
  void agreeWithRoom(const std::string& bytes) const {
    ASSERT_NO_FATAL_FAILURE(agree(bytes, GetParam()->enough(bytes.size())));
  }
};

TEST_P(Agreement, OnEveryPairOfBytes) {
  for (int code = 0; code < 65536; ++code) {
    const std::string pair = {static_cast<char>(code & 0xFF), static_cast<char>(code >> 8)};
    ASSERT_NO_FATAL_FAILURE(agreeWithRoom(pair));
    ASSERT_NO_FATAL_FAILURE(agreeWithRoom("x" + pair + "yz"));
  }
}

TEST_P(Agreement, OnEveryShortStringOfTellingBytes) {
  const std::string alphabet = fromHex(GetParam()->alphabet);
  std::vector<std::string> strings = {""};
  for (int length = 1; length <= 3; ++length) {
    std::vector<std::string> longer;
    for (const std::string& start : strings) {
      for (const char c : alphabet) longer.push_back(start + c);
    }
    strings = std::move(longer);
    for (const std::string& s : strings) ASSERT_NO_FATAL_FAILURE(agreeAtAnyCapacity(s));
  }
}

TEST_P(Agreement, OnRandomText) {
  std::mt19937 random(20);
  const auto below = [&](std::size_t n) { return random() % n; };
  const std::string alphabet = fromHex(GetParam()->alphabet);
  for (int round = 0; round < 3000; ++round) {
    // Long runs of one kind and quick changes between kinds.
    std::string text;
    const std::size_t length = below(120);
    const std::size_t runs = 1 + below(20);
    while (text.size() < length) {
      const auto kind = below(4);
      for (std::size_t i = 1 + below(runs); i-- > 0;) {
        if (kind == 0) text += static_cast<char>(below(256));
        if (kind == 1) text += alphabet[below(alphabet.size())];
        if (kind == 2) text += static_cast<char>(0x20 + below(0x5F));
        if (kind == 3) text += randomCharacter(*GetParam(), random);
      }
    }
    if (round % 20 == 0) {
      ASSERT_NO_FATAL_FAILURE(agreeAtAnyCapacity(text));
    } else {
      ASSERT_NO_FATAL_FAILURE(agreeWithRoom(text));
      ASSERT_NO_FATAL_FAILURE(agree(text, static_cast<long>(below(2 * length + 8))));
    }
  }
}

TEST_P(Agreement, OnARealPageFromAnyPlaceInIt) {
  const std::string page = samplePage(*GetParam());
  for (std::size_t start = 0; start < 40; ++start) {
    const std::string text = page.substr(start);
    ASSERT_NO_FATAL_FAILURE(agreeWithRoom(text));
    ASSERT_NO_FATAL_FAILURE(agree(text, static_cast<long>(text.size() / 2 + start)));
  }
}

// What a count of elements says must not depend on what stood there before.
TEST_P(Agreement, WritesEverythingItClaims) {
  const std::string src = shaped(*GetParam(), samplePage(*GetParam()).substr(0, 301));
  const long size = GetParam()->enough(src.size());
  const Outcome one = run(*GetParam(), src, {size, '\x00'});
  const Outcome other = run(*GetParam(), src, {size, '\x77'});
  ASSERT_EQ(one.result, other.result);
  const auto claimed = static_cast<std::size_t>(one.result * GetParam()->elementSize);
  EXPECT_EQ(one.dest.substr(0, claimed), other.dest.substr(0, claimed));
}

std::vector<const Operation*> everyOperation() {
  EncodingConvertor::initializeInstance(nullptr);
  std::vector<const Operation*> list;
  for (const Operation& operation : operations()) list.push_back(&operation);
  return list;
}

INSTANTIATE_TEST_SUITE_P(All, Agreement, testing::ValuesIn(everyOperation()),
                         [](const auto& parameter) {
                           std::string name = parameter.param->name;
                           for (char& c : name) c = c == ' ' ? '_' : c;
                           return name;
                         });

}  // namespace
}  // namespace sgbk_test
