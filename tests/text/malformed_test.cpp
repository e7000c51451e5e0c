// What is malformed, undefined or lacking: how many bytes of it, what stands for it, what is told.

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "support/engine.h"
#include "support/hex.h"

namespace sgbk_test {
namespace {

using namespace std::string_literals;
using Bytes = std::basic_string_view<unsigned char>;

bool isIn(int b, int first, int last) { return b >= first && b <= last; }

// What stands at the beginning of a text: a character of some bytes, or that many malformed ones.
struct Step {
  std::size_t size;
  bool isMalformed;
};

Step pairAt(Bytes s, bool isGbk) {
  if (s[0] < 0x80) return {1, false};
  if (!isIn(s[0], 0x81, 0xFE) || s.size() == 1) return {1, true};
  if (isGbk && s.size() >= 4 && isIn(s[1], '0', '9') && isIn(s[2], 0x81, 0xFE) && isIn(s[3], '0', '9')) {
    return {4, false};
  }
  const bool isTrail = isIn(s[1], 0x40, 0x7E) || isIn(s[1], isGbk ? 0x80 : 0xA1, 0xFE);
  return isTrail ? Step{2, false} : Step{s[1] < 0x80 ? 1u : 2u, true};
}

Step utf8At(Bytes s) {
  const struct {
    int lead, lastLead, second, lastSecond;
    std::size_t size;
  } kShapes[] = {{0x00, 0x7F, 0, 0, 1},       {0xC2, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3},
                 {0xE1, 0xEC, 0x80, 0xBF, 3}, {0xED, 0xED, 0x80, 0x9F, 3}, {0xEE, 0xEF, 0x80, 0xBF, 3},
                 {0xF0, 0xF0, 0x90, 0xBF, 4}, {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4}};
  if (s.size() >= 6 && s[0] == 0xED && isIn(s[1], 0xA0, 0xAF) && isIn(s[2], 0x80, 0xBF) && s[3] == 0xED &&
      isIn(s[4], 0xB0, 0xBF) && isIn(s[5], 0x80, 0xBF)) {
    return {6, true};
  }
  for (const auto& shape : kShapes) {
    if (!isIn(s[0], shape.lead, shape.lastLead)) continue;
    std::size_t size = 1;
    while (size < std::min(shape.size, s.size()) &&
           (size == 1 ? isIn(s[1], shape.second, shape.lastSecond) : isIn(s[size], 0x80, 0xBF))) {
      ++size;
    }
    return {size, size != shape.size};
  }
  return {1, true};
}

// HZ in lines: `isGbMode` is what the line has come to.
Step hzAt(Bytes s, bool& isGbMode) {
  const bool isGb = isIn(s[0], 0x21, 0x7E);
  const int next = s.size() > 1 ? s[1] : -1;
  if (s[0] == '\n') isGbMode = false;
  if (s[0] == '\n' || (!isGbMode && s[0] < 0x80 && s[0] != '~')) return {1, false};
  if (s[0] == '~' && next == (isGbMode ? '}' : '{')) {
    isGbMode = !isGbMode;
    return {2, false};
  }
  if (s[0] == '~' && !isGbMode && next == '~') return {2, false};
  if (s[0] == '~' && !isGbMode && (next == '\n' || next == '\r')) return {1, false};
  if (s[0] == '~' || !isGb) return {s[0] == '~' && isIn(next, 0x21, 0x7E) ? 2u : 1u, true};
  return isIn(next, 0x21, 0x7E) ? Step{2, false} : Step{1, true};
}

class Malformed : public testing::TestWithParam<const char*> {
 protected:
  // All that is ASCII comes out, nothing else does as ASCII, and just what is malformed is told so.
  void check(const std::string& text) {
    const std::string from = GetParam();
    const Bytes bytes(reinterpret_cast<const unsigned char*>(text.data()), text.size());
    std::string ascii;
    std::vector<std::pair<std::size_t, std::size_t>> malformed, told;
    bool isGbMode = false;
    for (std::size_t at = 0; at < bytes.size();) {
      const Bytes rest = bytes.substr(at);
      const Step step = from == "utf-8" ? utf8At(rest)
                        : from == "hz"  ? hzAt(rest, isGbMode)
                                        : pairAt(rest, from == "gbk");
      if (step.isMalformed) malformed.emplace_back(at, step.size);
      const bool isEscape = from == "hz" && rest[0] == '~' && (step.size == 1 || rest[1] != '~');
      const bool isAscii = from == "hz" ? step.size == 1 || (rest[0] == '~' && rest[1] == '~') : rest[0] < 0x80;
      if (!step.isMalformed && isAscii && !isEscape) ascii += text[at];
      at += step.size;
    }
    const Converted converted = convert(from + " utf-8", text);
    std::string kept = converted.text;
    std::erase_if(kept, [](unsigned char c) { return c >= 0x80; });
    for (const sgbk_loss& loss : converted.losses) {
      if (loss.reason == SGBK_MALFORMED) told.emplace_back(loss.offset, loss.size);
    }
    const auto atEnd = std::mismatch(told.begin(), told.end(), malformed.begin(), malformed.end()).second;
    ASSERT_EQ(told, malformed) << "from " << toHex(text.substr(atEnd == malformed.end() ? 0 : atEnd->first, 12));
    const auto difference = std::mismatch(kept.begin(), kept.end(), ascii.begin(), ascii.end()).first;
    ASSERT_TRUE(kept == ascii) << "from " << toHex(std::string(difference, kept.end()).substr(0, 12));
  }
};

TEST_P(Malformed, TakesNoAsciiWithIt) {
  std::string pairs, marked;
  for (int code = 0; code < 65536; ++code) {
    const std::string pair = {static_cast<char>(code & 0xFF), static_cast<char>(code >> 8)};
    pairs += pair;
    marked += pair + "A\n";
  }
  check(pairs);
  check(marked);
  // The beginnings of sequences of up to four bytes, one after another.
  const std::string telling = "\n0@a~{\x80\x81\xA1\xBF\xC3\xE0\xED\xF0\xF4\xFE";
  std::string beginnings;
  for (std::size_t i = 0; i < telling.size() * telling.size() * telling.size() * telling.size(); ++i) {
    for (std::size_t k = i, length = 1 + i % 4; length-- > 0; k /= telling.size()) {
      beginnings += telling[(k / 4 + k) % telling.size()];
    }
    if (i % 3 == 0) beginnings += 'x';
  }
  check(beginnings);
  std::mt19937 random(3);
  std::string noise(1 << 20, '\0');
  std::generate(noise.begin(), noise.end(), [&] {
    return random() % 2 == 0 ? static_cast<char>(random()) : telling[random() % telling.size()];
  });
  check(noise);
  for (std::size_t end = 1; end < 8; ++end) check(noise.substr(0, end)), check("\xED\xA0\x80\xED\xB0\x80"s.substr(0, end));
}

INSTANTIATE_TEST_SUITE_P(All, Malformed, testing::Values("big5", "gbk", "utf-8", "hz"), [](const auto& p) {
  return p.param == "utf-8"s ? "utf8"s : p.param;
});

}  // namespace
}  // namespace sgbk_test
