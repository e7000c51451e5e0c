#include "support/engine.h"

#include <algorithm>
#include <cstdio>

#include "support/guarded_buffer.h"
#include "support/hex.h"
#include "support/operations.h"

namespace sgbk_test {
namespace {

// Whole characters beside bytes that break them, in hexadecimal; neighbors belong together.
const std::string kBytes =
    "A140 A1A1 B0A1 F377 C5E9 A3C1 A1B9 FEFE AAA1 8130 84319530 84319533 9439FC36 A3BC A1EE A1A3 "
    "8862 8140 81 80 FF FE A2E3 61 5A 39 3C 26 20 09 0A 0D0A 0D 2E 2D2D2D2D2D2D2D2D2D 26616D70 "
    "6C743B 26233635 26636F70793B 266575726F3B 262378346532643B 00 7F "
    "3C6D65746120636861727365743D626967353E E9AB94 E4B8AD C3A9 C2B7 C2A9 E284A2 EFBC9C E38082 "
    "E29885 EFBBBF EFBCA1 F09F9880 EDA080 EDA080EDB080 E4 B8 C3 C08A E08181 F09F F4908080 "
    "41 2C 6D3B 0A 7E7B3C567E7D";
const std::string kHz = kBytes + " 7E7B2A217E7D 7E7B 7E7D 7E7E 7E0A 7E 3C56 2121 7E78";
const std::string kUnits =
    "6100 5A00 3C00 2000 0A00 0D000A00 2600 26006C0074003B00 260023003600 2D00 2D4E D49A FFFE "
    "FEFF 3DD8 00DE 3DD800DE A900 E900 21FF 1CFF 0030 050A 0A01 0000";

// The end of the line that begins at `at`; the text's when it has none.
std::size_t endOfLine(const std::string& source, std::string_view text, std::size_t at) {
  const std::size_t unit = source.starts_with("ucs-2") ? 2 : 1;
  const std::string_view lineFeed =
      unit == 1 ? "\n" : std::string_view(source == "ucs-2be" ? "\0\n" : "\n\0", 2);
  for (; at < text.size(); at += unit) {
    if (text.substr(at, unit) == lineFeed) return at + unit;
  }
  return text.size();
}

}  // namespace

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
  for (std::size_t i = 0; i < count; ++i) result.push_back(rows[i].name);
  return result;
}

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
  const auto& [bytes, lines, characters, reasons, first] = all.counts;
  std::string words = std::to_string(all.result) + ' ' + all.source + ' ' + all.error + '\n' +
                      toHex(all.text) + '\n' + described(all.losses) +
                      "\nfirst: " + described({first}) + "\nbytes, lines, characters, reasons:";
  for (const auto n : {bytes, lines, characters}) words += ' ' + std::to_string(n);
  for (const auto n : reasons) words += ' ' + std::to_string(n);
  return words + '\n';
}

std::string widened(const std::string& gbk) { return textOf("gbk gbk-wide no-simplify", gbk); }

std::string byLibrary(const std::string& operation, const std::string& text, int capacity) {
  EncodingConvertor::initializeInstance(nullptr);
  const Operation& wanted = operationNamed(operation);
  if (capacity == 0) capacity = wanted.enough(text.size());
  const Outcome outcome = run(wanted, text, {capacity, '\0'});
  return outcome.dest.substr(0, static_cast<std::size_t>(outcome.result * wanted.elementSize()));
}

sgbk_result feed(sgbk_converter* c, std::string_view text, bool isLast) {
  const char* out;
  std::size_t size;
  return sgbk_convert(c, text.data(), text.size(), isLast, &out, &size);
}

Converted convert(sgbk_converter* c, std::string_view text, const Pieces& pieces) {
  static thread_local const GuardedBuffer buffer(1 << 24);
  Converted all;
  for (std::size_t at = 0, i = 0; all.result == SGBK_OK; ++i) {
    const std::string_view piece =
        text.substr(at, pieces.empty() ? text.npos : pieces[i % pieces.size()]);
    at += piece.size();
    // Sometimes the end is told by a piece of no bytes.
    const bool isLast = at == text.size() && (pieces.empty() || i % 2 == 0 || piece.empty());
    char* const in = buffer.room(piece.size());
    piece.copy(in, piece.size());
    const char* out;
    std::size_t size;
    all.result = sgbk_convert(c, in, piece.size(), isLast, &out, &size);
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

std::string textOf(const std::string& setup, std::string_view text) {
  return convert(setup, text).text;
}

std::string setupOf(const std::string& from, const std::string& to, std::size_t bits) {
  std::string setup = from + " " + to;
  const char* const kOptions[] = {"entities",   "fold-case",   "trim-punct", "strict", "truncate=9",
                                  "truncate=2", "replace=<?>", "half-width", "html",   "declare"};
  for (unsigned i = 0; i < std::size(kOptions); ++i) {
    if ((bits >> i & 1) != 0 && !(i >= 7 && to == "gbk-wide"))
      setup += std::string(" ") + kOptions[i];
  }
  if ((bits >> 10 & 1) != 0 && (from == "gbk" || from == "hz")) setup += " no-simplify";
  if ((bits >> 11 & 1) != 0 && to == "big5") setup += " traditional";
  return setup;
}

Words wordsOf(const std::string& source) {
  Words words = split(source.starts_with("ucs-2") ? kUnits : source == "hz" ? kHz : kBytes, ' ');
  for (std::string& word : words) {
    word = fromHex(word, 2);
    for (std::size_t i = 1; source == "ucs-2be" && i < word.size(); i += 2) {
      std::swap(word[i - 1], word[i]);
    }
  }
  return words;
}

std::string randomText(const Words& words, std::size_t most, std::mt19937& random) {
  const std::size_t first = random() % words.size(), count = 1 + random() % (words.size() - first);
  std::string text;
  for (std::size_t i = random() % (most + 1); i-- > 0;) {
    const std::string& word = words[first + random() % count];
    for (std::size_t n = random() % 8 == 0 ? random() % 12 : 1; n-- > 0;) text += word;
  }
  return text;
}

std::string disagreement(const std::string& setup, const std::string& text, const Pieces& pieces) {
  const Converted whole = convert(setup, text);
  const auto told = [&](const std::string& what) {
    return what + "\nsetup " + setup + "\ninput " + toHex(text) + "\n" + described(whole);
  };
  // By a converter that was reset in the middle or at the end of something else.
  const Handle c = open(setup + " losses");
  feed(c.get(), std::string_view(text).substr(text.size() / 2), text.size() % 2 != 0);
  sgbk_reset(c.get());
  const std::string cut = described(convert(c.get(), text, pieces));
  if (cut != described(whole)) return told("cut up, it gives something else") + cut;

  std::size_t after = 0, lineEnd = 0, line = 0;
  for (const sgbk_loss& loss : whole.losses) {
    for (; lineEnd <= loss.offset && lineEnd < text.size(); ++line) {
      lineEnd = endOfLine(whole.source, text, lineEnd);
    }
    const std::string bytes(reinterpret_cast<const char*>(loss.bytes), loss.size);
    if (text.substr(loss.offset, loss.size) != bytes || loss.offset < after || loss.line != line) {
      return told("a loss is told of another place");
    }
    after = loss.offset + loss.size;
  }

  const std::string from = split(setup, ' ')[0], to = split(setup, ' ')[1];
  const Handle open = sgbk_test::open("auto utf-8");
  for (std::size_t at = 0, i = 0; from == "auto" && at < text.size(); ++i) {
    const std::string part = text.substr(at, pieces[i % pieces.size()]);
    at += part.size();
    const char* const found = sgbk_detect(text.data(), at, 0);
    if (feed(open.get(), part) != SGBK_OK) break;
    if (sgbk_source(open.get()) != std::string(found != nullptr ? found : "auto")) {
      return told("auto takes it for something else than detect: " + toHex(text.substr(0, at)));
    }
  }

  const auto has = [&](const char* option) { return setup.find(option) != setup.npos; };
  // These say something of the input as a whole, and what was ASCII before HZ was found stays so.
  const bool isWhole =
      has(" html") || has(" declare") || has(" strict") || (from == "auto" && whole.source == "hz");
  if (whole.result == SGBK_OK && !isWhole) {
    const std::uint64_t lossy = whole.counts.first.line;  // 0 for none
    std::string joined, before;
    std::uint64_t number = 0;
    for (std::size_t at = 0, end; at < text.size(); at = end) {
      end = endOfLine(whole.source, text, at);
      if (++number == lossy) before = joined;
      joined += textOf(whole.source + setup.substr(from.size()), text.substr(at, end - at));
    }
    if (joined != whole.text) return told("line by line, it gives " + toHex(joined));
    const Converted strict = convert(setup + " strict", text);
    if (strict.text != (lossy == 0 ? joined : before) ||
        strict.result != (lossy == 0 ? SGBK_OK : SGBK_LOST) ||
        described({strict.counts.first}) != described({whole.counts.first})) {
      return told("strict does not stop before the line of the first loss:\n" + described(strict));
    }
  }
  if (to == "gbk-wide") {
    const std::string narrow =
        textOf(from + " gbk" + setup.substr(from.size() + to.size() + 1), text);
    return widened(narrow) == whole.text ? ""
                                         : told("gbk, widened, would be " + toHex(widened(narrow)));
  }
  // In which all that the target can hold is read again.
  const std::string source = to == "gb18030" ? "gbk" : to == "utf-16le" ? "ucs-2le" : to;
  const Converted readable = convert(source + " utf-8", whole.text);
  const auto lines = static_cast<std::uint64_t>(std::ranges::count(readable.text, '\n'));
  if (whole.result == SGBK_OK && lines != whole.counts.lines) return told("not as many line feeds");
  for (const sgbk_loss& loss : readable.losses) {
    // Characters for private use are codes without a character where they are read.
    const bool isPrivate = to == "gb18030" && loss.reason == SGBK_UNDEFINED && loss.size == 2;
    if (!isPrivate) return told("the output is no text of the target: " + described({loss}));
  }
  return "";
}

}  // namespace sgbk_test
