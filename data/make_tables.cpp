// Composes the mapping texts into the images that the table library carries.
//
//     make_tables MAPPINGS_DIR OUTPUT_DIR
//
// data/README.md tells what each image holds and why.

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "mapping_text.h"
#include "sgbk/support.h"

namespace {

namespace fs = std::filesystem;

// Two-byte codes are kept lead byte first, as people write them; images are indexed and filled by
// unit, lead + 256 * trail. No code is 0, which therefore stands for "none".
using Image = std::array<unsigned char, 0x20000>;

constexpr Code kSpace = 0xA1A1;        // GBK: for Big5 and GBK input that is no character
constexpr Code kNoForm = 0x3F3F;       // GBK: marks a code point without a form
constexpr Code kBig5Missing = 0xA1BC;  // Big5: white square, for a character that it lacks
constexpr Code kBig5Space = 0xA140;    // Big5: for an index that is no cell
constexpr int kLongestChain = 8;

constexpr Code swapBytes(Code code) { return (code & 0xFF) << 8 | code >> 8; }

constexpr bool isGbkCell(Code code) {
  const Code lead = code >> 8;
  const Code trail = code & 0xFF;
  return lead >= 0x81 && lead <= 0xFE && trail >= 0x40 && trail <= 0xFE && trail != 0x7F &&
         !isGBKUndefinedChar(static_cast<gchar_t>(swapBytes(code)));
}

// Every reader of Big5 knows these. Between them lie later additions, with radicals that look like
// simplified characters (U+5E7F, U+65E0); below and above, the rows of Hong Kong.
constexpr bool isCommonBig5(Code code) {
  return (code >= 0xA140 && code <= 0xC67E) || (code >= 0xC940 && code <= 0xF9FE);
}

// The Encoding Standard's encoder writes no code below.
constexpr bool isWrittenInGeneral(Code code) { return code >= 0xA140; }

constexpr bool isBig5Code(Code code) {
  const Code lead = code >> 8;
  const Code trail = code & 0xFF;
  return lead >= 0x81 && lead <= 0xFE &&
         ((trail >= 0x40 && trail <= 0x7E) || (trail >= 0xA1 && trail <= 0xFE));
}

template <class Map>
typename Map::mapped_type find(const Map& map, const typename Map::key_type& key) {
  const auto found = map.find(key);
  return found == map.end() ? typename Map::mapped_type{} : found->second;
}

class Tables {
 public:
  explicit Tables(const fs::path& dir)
      : gbk_(readCodes(dir / "gbk.tsv", isGbkCell)),
        big5_(readCodes(dir / "big5.tsv", isBig5Code)),
        simplified_(readPairs(dir / "simplified.tsv")),
        unicodeForms_(readPairs(dir / "unicode_forms.tsv")),
        traditional_(readPairs(dir / "traditional.tsv")),
        big5Variants_(readPairs(dir / "big5_variants.tsv")) {
    for (const auto& [code, c] : gbk_) cellOf_.emplace(c, code);
    for (const auto prefer : {isCommonBig5, isWrittenInGeneral, isBig5Code}) {
      for (const auto& [code, c] : big5_) {
        if (prefer(code)) big5CodeOf_.emplace(c, code);
      }
    }
    readLines(dir / "choices.tsv", 4, [&](const Fields& f) { choose(f); });
    for (const auto& [c, target] : simplified_) {
      if (!cellOf_.contains(target))
        throw std::runtime_error("simplified.tsv: no cell holds the form of " + name(c));
    }
  }

  // The cell of the simplified form of a character, or of one that stands for it.
  Code simplifiedCell(Character c) const {
    for (int step = 0; step < kLongestChain; ++step) {
      if (c == 0x20) c = 0x3000;
      if (c > 0x20 && c < 0x7F) c += 0xFEE0;
      if (const Character form = find(simplified_, c)) c = form;
      if (const Code cell = find(cellOf_, c)) return cell;
      c = find(unicodeForms_, c);
      if (c == 0) return 0;
    }
    throw std::runtime_error("forms go round in a circle at " + name(c));
  }

  Code fromBig5(Code code) const {
    const Character c = find(big5_, code);
    const Character exception = find(big5Exceptions_, c);
    const Code cell = c == 0 ? 0 : simplifiedCell(exception ? exception : c);
    return cell ? cell : kSpace;
  }

  // A cell without a character stays as it is.
  Code fromTraditional(Code code) const {
    const Character c = find(gbk_, code);
    return c ? simplifiedCell(c) : isGbkCell(code) ? code : kSpace;
  }

  Code fromUnicode(Character c) const {
    const Code cell = simplifiedCell(c);
    return cell ? cell : kNoForm;
  }

  Code toBig5(Code code, bool traditionalFirst) const {
    const Character c = find(gbk_, code);
    if (c == 0) return isGbkCell(code) ? kBig5Missing : kBig5Space;
    const std::array<Character, 3> ownFirst{c, find(traditional_, c), find(big5Variants_, c)};
    auto forms = ownFirst;
    // Traditional text keeps the characters it has, whatever other form Taiwan prefers.
    if (traditionalFirst && simplifiedCell(c) == code) std::swap(forms[0], forms[1]);
    for (const Character form : forms) {
      const Code found = find(big5CodeOf_, form);
      if (isCommonBig5(found)) return found;
    }
    for (const Character form : ownFirst) {
      if (const Code found = find(big5CodeOf_, form)) return found;
    }
    return kBig5Missing;
  }

  // Every two-byte code of GB18030. What GBK leaves open has private code points, numbered through
  // area by area; some of those in the last stretch, from A2AB on, went to characters later.
  std::map<Code, Character> withPrivatePoints() const {
    std::map<Code, Character> codes = gbk_;
    Character next = 0xE000;
    const auto number = [&](Code firstLead, Code lastLead, Code first, Code last, auto takesPart) {
      for (Code lead = firstLead; lead <= lastLead; ++lead) {
        for (Code trail = first; trail <= last; ++trail) {
          const Code code = lead << 8 | trail;
          if (trail != 0x7F && takesPart(code)) codes.emplace(code, next++);
        }
      }
    };
    const auto all = [](Code) { return true; };
    number(0xAA, 0xAF, 0xA1, 0xFE, all);
    number(0xF8, 0xFE, 0xA1, 0xFE, all);
    number(0xA1, 0xA7, 0x40, 0xA0, all);
    number(0xA2, 0xFE, 0x40, 0xFE, [&](Code code) {
      const bool wasGiven = code == 0xA8BC || code == 0xA8BF || (code >= 0xA989 && code <= 0xA995) ||
                            code >= 0xFE50;
      return wasGiven || !codes.contains(code);
    });
    codes[0xA2E3] = 0x20AC;
    return codes;
  }

  const std::map<Code, Character>& big5() const { return big5_; }

 private:
  static std::string name(Character c) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "U+%04X", static_cast<unsigned>(c));
    return text.data();
  }

  void choose(const Fields& f) {
    const std::string& scope = f[0];
    const Character to = parseCharacter(f[2]);
    if (f[3].empty()) throw std::runtime_error("a choice needs its reason");
    if (scope == "big5_code") {
      const auto code = big5_.find(parseCode(f[1]));
      if (code == big5_.end()) throw std::runtime_error("not in big5.tsv");
      code->second = to;
      big5CodeOf_[to] = code->first;
      return;
    }
    static const std::map<std::string, CharacterMap Tables::*> scopes{
        {"simplified", &Tables::simplified_},
        {"big5", &Tables::big5Exceptions_},
        {"unicode", &Tables::unicodeForms_},
        {"traditional", &Tables::traditional_},
        {"to_big5", &Tables::big5Variants_}};
    const auto map = scopes.find(scope);
    if (map == scopes.end()) throw std::runtime_error("unknown scope: " + scope);
    (this->*map->second)[parseCharacter(f[1])] = to;
  }

  std::map<Code, Character> gbk_, big5_;
  CharacterMap simplified_, unicodeForms_, traditional_, big5Variants_, big5Exceptions_;
  std::map<Character, Code> cellOf_, big5CodeOf_;
};

template <class Bytes>
void writeFile(const fs::path& path, const Bytes& bytes) {
  std::ofstream out(path, std::ios::binary);
  out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  out.close();
  if (!out) throw std::runtime_error(path.string() + ": cannot be written");
}

void writeImage(const fs::path& path, const std::function<Code(Code)>& entry) {
  Image image;
  for (Code index = 0; index < 0x10000; ++index) {
    const Code code = entry(index);
    image[2 * index] = static_cast<unsigned char>(code >> 8);
    image[2 * index + 1] = static_cast<unsigned char>(code & 0xFF);
  }
  writeFile(path, image);
}

// Four bytes for each unit, the lowest first; 0 where there is no character.
void writeCodePoints(const fs::path& path, const std::map<Code, Character>& codes) {
  std::vector<unsigned char> image(4 * 0x10000);
  for (const auto& [code, c] : codes) {
    for (unsigned i = 0; i < 4; ++i) {
      image[4 * swapBytes(code) + i] = static_cast<unsigned char>(c >> 8 * i & 0xFF);
    }
  }
  writeFile(path, image);
}

// Where the two forms of the fourth table differ: the GBK code, its own Big5 code and that of the
// traditional form, each lead byte first.
void writeTraditionalFirst(const fs::path& path, const Tables& tables) {
  std::vector<unsigned char> image;
  for (Code code = 0; code < 0x10000; ++code) {
    const Code own = tables.toBig5(code, false);
    const Code traditional = tables.toBig5(code, true);
    if (own == traditional) continue;
    for (const Code c : {code, own, traditional}) {
      image.push_back(static_cast<unsigned char>(c >> 8));
      image.push_back(static_cast<unsigned char>(c & 0xFF));
    }
  }
  writeFile(path, image);
}

// A single byte stands for the ASCII character; the library lays its own ASCII row over these.
template <class Convert>
auto withAscii(const Tables& tables, Convert convert) {
  return [&tables, convert](Code unit) {
    const Code ascii = unit < 0x80 ? tables.simplifiedCell(unit) : 0;
    return ascii ? ascii : unit < 0x80 ? kSpace : convert(unit);
  };
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: make_tables MAPPINGS_DIR OUTPUT_DIR\n");
    return 2;
  }
  try {
    const Tables tables(argv[1]);
    const fs::path output(argv[2]);
    writeImage(output / "big52sgbk.ctb",
               withAscii(tables, [&](Code unit) { return tables.fromBig5(swapBytes(unit)); }));
    writeImage(output / "gbkt2s.ctb", withAscii(tables, [&](Code unit) {
                 return tables.fromTraditional(swapBytes(unit));
               }));
    writeImage(output / "uc2sgbk.ctb",
               withAscii(tables, [&](Code unit) { return tables.fromUnicode(unit); }));
    writeImage(output / "gbk2big5.ctb",
               [&](Code unit) { return tables.toBig5(swapBytes(unit), false); });
    writeImage(output / "gbk2big5_traditional_first.ctb",
               [&](Code unit) { return tables.toBig5(swapBytes(unit), true); });
    writeCodePoints(output / "gbk_code_points.bin", tables.withPrivatePoints());
    writeCodePoints(output / "big5_code_points.bin", tables.big5());
    writeTraditionalFirst(output / "traditional_first.bin", tables);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "make_tables: %s\n", error.what());
    return 1;
  }
}
