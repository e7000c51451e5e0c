// The table images against what must hold of them, and against converters that they were not made
// from: the C library's iconv for the encodings, ICU for simplified, traditional, compatible forms.

#include <gtest/gtest.h>
#include <iconv.h>
#include <sgbk/support.h>
#include <unicode/normalizer2.h>
#include <unicode/translit.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <sstream>
#include <string>

extern "C" {
extern const unsigned char _binary_data_big52sgbk_ctb_start[];
extern const unsigned char _binary_data_gbkt2s_ctb_start[];
extern const unsigned char _binary_data_uc2sgbk_ctb_start[];
extern const unsigned char _binary_data_gbk2big5_ctb_start[];
}

namespace {

// Codes are written lead byte first here, as in 0xB0A1; 0 is none. A character is its UTF-8.
using Code = unsigned;
using Character = std::string;

constexpr Code kSpace = 0xA1A1;
constexpr Code kNoForm = 0x3F3F;
constexpr Code kBig5Missing = 0xA1BC;
constexpr Code kBig5Space = 0xA140;

constexpr Code swapBytes(Code code) { return (code & 0xFF) << 8 | code >> 8; }

struct Image {
  const unsigned char* bytes;
  Code at(Code unit) const { return bytes[2 * unit] * 256u + bytes[2 * unit + 1]; }
  Code of(Code code) const { return at(swapBytes(code)); }
};

const Image big52sgbk{_binary_data_big52sgbk_ctb_start};
const Image gbkt2s{_binary_data_gbkt2s_ctb_start};
const Image uc2sgbk{_binary_data_uc2sgbk_ctb_start};

// Of the fourth table both forms are built, whichever one is linked.
std::string gbk2big5(const std::string& form) {
  std::ifstream in(SGBK_IMAGES "/gbk2big5" + form + ".ctb", std::ios::binary);
  std::string bytes(std::istreambuf_iterator<char>(in), {});
  EXPECT_EQ(bytes.size(), 0x20000u);
  bytes.resize(0x20000);
  return bytes;
}

Image imageIn(const std::string& bytes) {
  return {reinterpret_cast<const unsigned char*>(bytes.data())};
}

bool isCell(Code code) {
  const Code trail = code & 0xFF;
  return code >= 0x8140 && code < 0xFF00 && trail >= 0x40 && trail != 0x7F && trail != 0xFF &&
         !isGBKUndefinedChar(static_cast<gchar_t>(swapBytes(code)));
}

bool isInCommonRows(Code big5) {
  return (big5 >= 0xA140 && big5 <= 0xC67E) || (big5 >= 0xC940 && big5 <= 0xF9FE);
}

// --- the peers ----------------------------------------------------------------------------------

// Empty for anything that does not convert whole and without loss.
std::string convert(const char* from, const char* to, std::string text) {
  static auto& converters = *new std::map<std::string, iconv_t>;  // for the whole run
  const auto known = converters.try_emplace(std::string(from) + to, nullptr).first;
  if (known->second == nullptr) known->second = iconv_open(to, from);
  std::array<char, 16> result{};
  char *in = text.data(), *out = result.data();
  std::size_t left = text.size(), room = result.size();
  iconv(known->second, nullptr, nullptr, nullptr, nullptr);
  const bool whole = iconv(known->second, &in, &left, &out, &room) == 0 && left == 0 &&
                     iconv(known->second, nullptr, nullptr, &out, &room) == 0;
  return whole ? std::string(result.data(), out) : "";
}

Character decode(const char* encoding, Code code) {
  const std::string bytes{static_cast<char>(code >> 8), static_cast<char>(code & 0xFF)};
  return code < 0x8100 ? "" : convert(encoding, "UTF-8", bytes);
}

Code encode(const char* encoding, const Character& c) {
  const std::string bytes = convert("UTF-8", encoding, c);
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
  return bytes.size() == 2 ? byte(0) * 256u + byte(1) : 0;
}

constexpr auto kGbk = "GB18030";
constexpr auto kBig5 = "BIG5-HKSCS";

Code cellOf(const Character& c) {
  const Code code = encode(kGbk, c);
  return isCell(code) ? code : 0;
}

char32_t codePoint(const Character& c) {
  return static_cast<char32_t>(icu::UnicodeString::fromUTF8(c).char32At(0));
}

Character character(char32_t codePoint) {
  std::string c;
  return icu::UnicodeString(static_cast<UChar32>(codePoint)).toUTF8String(c);
}

// By an ICU transliterator; what becomes several characters stays.
Character transliterated(const char* id, const Character& c) {
  static auto& known = *new std::map<std::string, icu::Transliterator*>;  // for the whole run
  auto& transliterator = known[id];
  UErrorCode status = U_ZERO_ERROR;
  if (!transliterator)
    transliterator = icu::Transliterator::createInstance(id, UTRANS_FORWARD, status);
  icu::UnicodeString text = icu::UnicodeString::fromUTF8(c);
  transliterator->transliterate(text);
  std::string result;
  return text.countChar32() == 1 ? text.toUTF8String(result) : c;
}

Character simplified(const Character& c) { return transliterated("Traditional-Simplified", c); }
Character traditional(const Character& c) { return transliterated("Simplified-Traditional", c); }
Character compatible(const Character& c) {
  const Character form = transliterated("Any-NFKC", c);
  return form.size() == 1 ? transliterated("Halfwidth-Fullwidth", form) : form;
}

// --- known differences --------------------------------------------------------------------------

std::string hex(Code code, const char* before = "") {
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), "%s%04X", before, code);
  return text.data();
}

// A code as the ideograph that it stands for, or as a number.
std::string shown(Code code, const char* encoding) {
  const Character c = decode(encoding, code);
  const char32_t value = codePoint(c);
  return value >= 0x3400 && value < 0xE000 ? c : hex(code);
}

std::set<std::string> knownDifferences(const std::string& image) {
  std::set<std::string> known;
  std::ifstream in(SGBK_KNOWN_DIFFERENCES);
  for (std::string line; std::getline(in, line);) {
    std::string name, reason, item;
    std::istringstream fields(line);
    if (!std::getline(fields, name, '\t') || name != image) continue;
    std::getline(fields, reason, '\t');
    EXPECT_GT(reason.size(), 10u) << "a difference needs its reason: " << line;
    while (fields >> item) EXPECT_TRUE(known.insert(item).second) << "twice: " << item;
  }
  return known;
}

void expectKnown(const std::string& image, const std::set<std::string>& found) {
  const auto list = [](const std::set<std::string>& a, const std::set<std::string>& b) {
    std::ostringstream text;
    std::set_difference(a.begin(), a.end(), b.begin(), b.end(),
                        std::ostream_iterator<std::string>(text, " "));
    return text.str();
  };
  const auto known = knownDifferences(image);
  EXPECT_EQ(list(found, known), "") << image << ": differs here, and it is not in the list";
  EXPECT_EQ(list(known, found), "") << image << ": in the list, and does not differ";
}

// --- what must hold -----------------------------------------------------------------------------

TEST(TableImages, HoldOnlyCellsOfSimplifiedForms) {
  for (Code unit = 0; unit < 0x10000; ++unit) {
    for (const Image* image : {&big52sgbk, &gbkt2s, &uc2sgbk}) {
      const Code entry = image->at(unit);
      if (image == &uc2sgbk && entry == kNoForm) continue;
      EXPECT_TRUE(isCell(entry)) << hex(unit) << " " << hex(entry);
      EXPECT_EQ(hex(gbkt2s.of(entry)), hex(entry)) << hex(unit);
    }
  }
}

// The codes on which all decoders of GBK agree, which are those that the C library's GBK has.
TEST(TableImages, KnowTheUndisputedCells) {
  int cells = 0;
  for (Code code = 0x8140; code < 0xFFFF; ++code) {
    const Character c = decode("GBK", code);
    if (!isCell(code) || c.empty()) continue;
    ++cells;
    EXPECT_EQ(hex(uc2sgbk.at(codePoint(c))), hex(gbkt2s.of(code)));
  }
  EXPECT_EQ(cells, 21791);
}

TEST(TableImages, KnowTheIdeographsOfBig5) {
  const std::string bytes = gbk2big5("");
  int ideographs = 0;
  for (Code code = 0xA440; code <= 0xF9DC; ++code) {
    const Character c = decode(kBig5, code);
    if (c.empty() || !isInCommonRows(code)) continue;
    ++ideographs;
    ASSERT_NE(cellOf(c), 0u) << hex(code);
    EXPECT_NE(hex(big52sgbk.of(code)), hex(kSpace)) << hex(code);
    EXPECT_EQ(hex(imageIn(bytes).of(cellOf(c))), hex(code));
  }
  EXPECT_EQ(ideographs, 13060);
}

// --- each image against its peer ----------------------------------------------------------------

TEST(TablePeers, Gbkt2s) {
  std::set<std::string> differences;
  for (Code unit = 0x80; unit < 0x10000; ++unit) {
    const Code code = swapBytes(unit);
    const Code form = isCell(code) ? cellOf(simplified(decode(kGbk, code))) : kSpace;
    const Code entry = gbkt2s.at(unit);
    if (entry != (form ? form : code))
      differences.insert(shown(code, kGbk) + "=" + shown(entry, kGbk));
  }
  expectKnown("gbkt2s", differences);
}

// The character by the C library and ICU; its simplified form by gbkt2s, which is compared above.
Code expectedForm(char32_t codePoint) {
  if (codePoint >= 0xD800 && codePoint <= 0xF8FF) return 0;
  const Character c = character(codePoint);
  for (const Character& form : {c, compatible(c)}) {
    if (const Code cell = cellOf(form)) return gbkt2s.of(cell);
  }
  return cellOf(simplified(c));
}

TEST(TablePeers, Uc2sgbk) {
  std::set<std::string> differences;
  for (char32_t c = 0x80; c < 0x10000; ++c) {
    const Code form = expectedForm(c);
    const Code entry = uc2sgbk.at(c);
    if (entry != (form ? form : kNoForm))
      differences.insert(hex(c, "U+") + "=" + shown(entry, kGbk));
  }
  expectKnown("uc2sgbk", differences);
}

// What is in the other tables must be the same here, character by character.
TEST(TablePeers, Big52sgbk) {
  std::set<std::string> differences;
  for (Code unit = 0x80; unit < 0x10000; ++unit) {
    const Code code = swapBytes(unit);
    const Character c = decode(kBig5, code);
    const char32_t value = codePoint(c);
    const Code form = c.empty() ? 0 : value < 0x10000 ? uc2sgbk.at(value) : expectedForm(value);
    const Code entry = big52sgbk.at(unit);
    if (entry != (form && form != kNoForm ? form : kSpace))
      differences.insert(hex(code) + "=" + shown(entry, kGbk));
  }
  expectKnown("big52sgbk", differences);
}

Code expectedBig5(Code code, bool traditionalFirst) {
  if (!isCell(code)) return kBig5Space;
  const Character c = decode(kGbk, code);
  const Code own = encode(kBig5, c);
  const Code other = encode(kBig5, traditional(c));
  const bool otherFirst = traditionalFirst && gbkt2s.of(code) == code;
  for (const Code candidate : {otherFirst ? other : own, otherFirst ? own : other}) {
    if (isInCommonRows(candidate)) return candidate;
  }
  return own ? own : other ? other : kBig5Missing;
}

TEST(TablePeers, Gbk2big5) {
  const std::string ownFirst = gbk2big5(""), traditionalFirst = gbk2big5("_traditional_first");
  std::set<std::string> differences, further;
  for (Code unit = 0; unit < 0x10000; ++unit) {
    const Code code = swapBytes(unit);
    const Code own = imageIn(ownFirst).at(unit), first = imageIn(traditionalFirst).at(unit);
    const bool differs = own != expectedBig5(code, false);
    if (differs) differences.insert(shown(code, kGbk) + "=" + shown(own, kBig5));
    if (first != expectedBig5(code, true) && !(differs && first == own))
      further.insert(shown(code, kGbk) + "=" + shown(first, kBig5));
  }
  expectKnown("gbk2big5", differences);
  expectKnown("gbk2big5_traditional_first", further);

  const Image linked{_binary_data_gbk2big5_ctb_start};
  const std::string& chosen = SGBK_TRADITIONAL_FIRST ? traditionalFirst : ownFirst;
  EXPECT_TRUE(
      std::equal(chosen.begin(), chosen.end(), reinterpret_cast<const char*>(linked.bytes)));
}

}  // namespace
