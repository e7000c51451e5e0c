#include "support/engine.h"

#include <sgbk/EncodingConvertor.h>

#include <algorithm>
#include <cstdio>
#include <iterator>

#include "support/guarded_buffer.h"
#include "support/hex.h"
#include "support/operations.h"

namespace sgbk_test {
namespace {

using Words = std::vector<std::string>;

// No stream: the memory sanitizer does not see into them.
Words split(const std::string& text, char separator) {
  Words words;
  for (std::size_t at = 0, end; at < text.size(); at = end + 1) {
    end = std::min(text.find(separator, at), text.size());
    words.push_back(text.substr(at, end - at));
  }
  return words;
}

Words names(const sgbk_encoding* (*table)(size_t*)) {
  size_t count;
  const sgbk_encoding* const rows = table(&count);
  Words result;
  std::transform(rows, rows + count, std::back_inserter(result), [](const auto& row) { return row.name; });
  return result;
}

// Whole characters beside bytes that break them, in hexadecimal.
const std::string kAscii =
    "61,5A,39,3C,26,20,09,0A,0D 0A,0D,2E,2D 2D 2D 2D 2D 2D 2D 2D 2D,26 61 6D 70,6C 74 3B,26 23 36 35,"
    "26 63 6F 70 79 3B,26 65 75 72 6F 3B,26 23 78 34 65 32 64 3B,3C 6D 65 74 61 20 63 68 61 72 73 65 "
    "74 3D 62 69 67 35 3E,00,";
const std::string kPairs = kAscii +
    "A1 40,A1 A1,B0 A1,F3 77,C5 E9,A3 C1,A1 B9,FE FE,AA A1,81 30,84 31 95 30,84 31 95 33,94 39 FC 36,"
    "A3 BC,A1 EE,A1 A3,88 62,81 40,81,80,FF,FE,7F,A2 E3";
const std::string kUtf8 = kAscii +
    "E9 AB 94,E4 B8 AD,C3 A9,C2 B7,C2 A9,E2 84 A2,EF BC 9C,E3 80 82,E2 98 85,EF BB BF,ED A0 80,"
    "ED A0 80 ED B0 80,E4,B8,80,C3,C0 8A,E0 81 81,EF BC A1,F0 9F 98 80,F0 9F,FF,F4 90 80 80";
const std::string kUnits =
    "61 00,5A 00,3C 00,20 00,0A 00,0D 00 0A 00,26 00,26 00 6C 00 74 00 3B 00,26 00 23 00 36 00,2D 00,"
    "2D 4E,D4 9A,FF FE,FE FF,3D D8,00 DE,3D D8 00 DE,A9 00,E9 00,21 FF,1C FF,00 30,05 0A,0A 01,00 00";
const std::string kHz = kAscii +
    "7E 7B,7E 7D,7E 7E,7E 0A,7E,7E 7B 3C 56 7E 7D,7E 7B 2A 21 7E 7D,3C 56,21 21,7E 78,B0 A1,80,FE";
const std::string kAuto = kUtf8 + ",C5 E9,B0 A1,7E 7B 3C 56 7E 7D";

Words wordsOf(const std::string& source) {
  const std::string& hex = source == "hz"                ? kHz
                           : source == "utf-8"           ? kUtf8
                           : source.starts_with("ucs-2") ? kUnits
                           : source == "auto"            ? kAuto
                                                         : kPairs;
  Words words = split(hex, ',');
  for (std::string& word : words) word = fromHex(word);
  if (source == "ucs-2be") {
    for (std::string& word : words) {
      for (std::size_t i = 1; i < word.size(); i += 2) std::swap(word[i - 1], word[i]);
    }
  }
  return words;
}

// In which all that the target can hold is read again.
std::string asSource(const std::string& target) {
  return target == "gb18030"    ? "gbk" : target == "utf-16le" ? "ucs-2le" : target;
}

}  // namespace

Words sourceNames() { return names(sgbk_sources); }
Words targetNames() { return names(sgbk_targets); }

Handle open(const std::string& setup) {
  const Words words = split(setup, ' ');
  Handle c(sgbk_open(words[0].c_str(), words[1].c_str()));
  for (std::size_t i = 2; c && i < words.size(); ++i) {
    const Words option = split(words[i], '=');
    const char* const value = option.size() == 1 ? nullptr : option[1].c_str();
    if (sgbk_set(c.get(), option[0].c_str(), value) != SGBK_OK) return nullptr;
  }
  return c;
}

std::string described(const std::vector<sgbk_loss>& losses) {
  std::string all;
  for (const sgbk_loss& loss : losses) {
    char codePoint[9];
    std::snprintf(codePoint, sizeof codePoint, "%X", loss.code_point);
    all += std::to_string(loss.line) + ':' + std::to_string(loss.offset) + ':' +
           toHex({reinterpret_cast<const char*>(loss.bytes), loss.size}) + ':' + codePoint + ':' +
           sgbk_reason_name(loss.reason) + ' ';
  }
  return all;
}

std::string described(const Converted& all) {
  std::string counts;
  for (const uint64_t count : {all.counts.bytes, all.counts.lines, all.counts.characters}) {
    counts += std::to_string(count) + ' ';
  }
  for (const uint64_t count : all.counts.reasons) counts += std::to_string(count) + ' ';
  return std::to_string(all.result) + ' ' + all.source + ' ' + all.error + '\n' + toHex(all.text) +
         '\n' + described(all.losses) + "\nbytes, lines, characters, reasons: " + counts +
         "first: " + described({all.counts.first}) + '\n';
}

std::string widened(const std::string& gbk) {
  EncodingConvertor::initializeInstance(nullptr);
  std::string wide;
  for (std::size_t i = 0; i < gbk.size(); ++i) {
    const auto byte = static_cast<unsigned char>(gbk[i]);
    if (byte >= 0x80) {
      wide += gbk.substr(i++, 2);
    } else {
      const gchar_t unit = EncodingConvertor::getInstance()->getucgvalue(byte);
      wide += {static_cast<char>(unit & 0xFF), static_cast<char>(unit >> 8)};
    }
  }
  return wide;
}

std::string byLibrary(const std::string& operation, const std::string& text, int capacity) {
  EncodingConvertor::initializeInstance(nullptr);
  const Operation& wanted = operationNamed(operation);
  if (capacity == 0) capacity = wanted.enough(text.size());
  std::string result(2 * static_cast<std::size_t>(capacity) + 2, '\0');
  std::string source = text + std::string(2, '\0');
  const long size = wanted.call(source.data(), static_cast<int>(text.size()), result.data(), capacity);
  return result.substr(0, static_cast<std::size_t>(size * wanted.elementSize()));
}

Converted convert(sgbk_converter* c, std::string_view text, const Pieces& pieces) {
  constexpr std::size_t kMost = 1 << 20;
  static thread_local const GuardedBuffer buffer(kMost);
  Converted all;
  for (std::size_t at = 0, i = 0; all.result == SGBK_OK; ++i) {
    std::string_view piece = text.substr(at, pieces.empty() ? text.npos : pieces[i % pieces.size()]);
    at += piece.size();
    // Sometimes the end is told by a piece of no bytes.
    const bool isLast = at == text.size() && (pieces.empty() || i % 2 == 0 || piece.empty());
    if (piece.size() <= kMost) {
      piece.copy(buffer.last(piece.size()), piece.size());
      piece = {buffer.last(piece.size()), piece.size()};
    }
    const char* out;
    std::size_t size;
    all.result = sgbk_convert(c, piece.data(), piece.size(), isLast, &out, &size);
    all.text.append(out, size);
    const sgbk_loss* const losses = sgbk_losses(c, &size);
    all.losses.insert(all.losses.end(), losses, losses + size);
    if (isLast) break;
  }
  all.counts = *sgbk_count(c);
  all.source = sgbk_source(c);
  all.error = sgbk_error(c);
  return all;
}

Converted convert(const std::string& setup, std::string_view text, const Pieces& pieces) {
  const Handle c = open(setup + " losses");
  if (c == nullptr) std::abort();
  return convert(c.get(), text, pieces);
}

std::string textOf(const std::string& setup, std::string_view text) { return convert(setup, text).text; }

std::string setupOf(const std::string& from, const std::string& to, std::size_t bits) {
  std::string setup = from + " " + to;
  const char* const kOptions[] = {"entities", "fold-case", "trim-punct", "strict", "truncate=9",
                                  "truncate=2", "replace=<?>", "half-width", "html", "declare"};
  for (unsigned i = 0; i < std::size(kOptions); ++i) {
    if ((bits >> i & 1) != 0 && !(i >= 7 && to == "gbk-wide")) setup += std::string(" ") + kOptions[i];
  }
  if ((bits >> 10 & 1) != 0 && (from == "gbk" || from == "hz")) setup += " no-simplify";
  if ((bits >> 11 & 1) != 0 && to == "big5") setup += " traditional";
  return setup;
}

std::string randomText(const std::string& source, std::size_t most, std::mt19937& random) {
  const Words words = wordsOf(source);
  std::string text;
  for (std::size_t i = random() % (most + 1); i-- > 0;) {
    const std::string& word = words[random() % words.size()];
    for (std::size_t n = random() % 8 == 0 ? random() % 12 : 1; n-- > 0;) text += word;
  }
  return text;
}

std::size_t endOfLine(const std::string& source, std::string_view text, std::size_t at) {
  const std::size_t unit = source.starts_with("ucs-2") ? 2 : 1;
  const std::string_view lineFeed = unit == 1 ? "\n" : std::string_view(source == "ucs-2be" ? "\0\n" : "\n\0", 2);
  for (; at < text.size(); at += unit) {
    if (text.substr(at, unit) == lineFeed) return at + unit;
  }
  return text.size();
}

std::string disagreement(const std::string& setup, const std::string& text, const Pieces& pieces) {
  const Converted whole = convert(setup, text);
  const auto told = [&](const std::string& what) {
    return what + "\nsetup " + setup + "\ninput " + toHex(text) + "\n" + described(whole);
  };
  const Converted cut = convert(setup, text, pieces);
  if (described(cut) != described(whole)) return told("cut up, it gives something else") + described(cut);

  std::size_t after = 0, lineEnd = 0;
  std::uint64_t line = 0;
  for (const sgbk_loss& loss : whole.losses) {
    for (; lineEnd <= loss.offset && lineEnd < text.size(); ++line) lineEnd = endOfLine(whole.source, text, lineEnd);
    const bool isThere = text.compare(loss.offset, loss.size, reinterpret_cast<const char*>(loss.bytes), loss.size) == 0;
    if (!isThere || loss.offset < after || loss.line != line) return told("a loss is told of another place");
    after = loss.offset + loss.size;
  }

  const std::string from = split(setup, ' ')[0], to = split(setup, ' ')[1];
  if (to == "gbk-wide") {
    const std::string narrow = textOf(from + " gbk" + setup.substr(from.size() + to.size() + 1), text);
    return widened(narrow) == whole.text ? "" : told("gbk, widened, would be " + toHex(widened(narrow)));
  }
  const Converted read = convert(asSource(to) + " utf-8", whole.text);
  for (const sgbk_loss& loss : read.losses) {
    // Characters for private use are codes without a character where they are read.
    const bool isPrivate = to == "gb18030" && loss.reason == SGBK_UNDEFINED && loss.size == 2;
    if (!isPrivate) return told("the output is no text of the target: " + described({loss}));
  }
  return "";
}

}  // namespace sgbk_test
