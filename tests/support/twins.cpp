#include "support/operations.h"

#include <algorithm>
#include <cctype>
#include <span>

extern "C" {
extern const unsigned char _binary_data_big52sgbk_ctb_start[131072];
extern const unsigned char _binary_data_gbkt2s_ctb_start[131072];
extern const unsigned char _binary_data_uc2sgbk_ctb_start[131072];
extern const unsigned char _binary_data_gbk2big5_ctb_start[131072];
}

namespace sgbk_test {
namespace {

gchar_t pairOf(int lead, int trail) { return static_cast<gchar_t>(lead + 256 * trail); }

int at(const std::string& s, size_t i) { return static_cast<unsigned char>(s[i]); }
gchar_t at(const Table& table, int code) { return table[static_cast<size_t>(code)]; }

// A destination of which no byte is written outside, nor anything behind what does not fit.
struct Writer {
  Destination to;
  std::string dest = std::string(static_cast<size_t>(std::max(to.size, 0)), to.fill);
  int n = 0;
  bool full = false;
  bool has(size_t bytes) const { return to.size - n >= static_cast<int>(bytes); }
  void put(const std::string& piece) {
    full = full || !has(piece.size());
    if (full) return;
    dest.replace(static_cast<size_t>(n), piece.size(), piece);
    n += static_cast<int>(piece.size());
  }
  void byte(int b) { put({static_cast<char>(b)}); }
  void unit(gchar_t u) { put({static_cast<char>(u & 0xFF), static_cast<char>(u >> 8)}); }
  Outcome done(long result) { return {result, dest}; }
  Outcome written() { return done(n); }
  Outcome terminated() {
    byte(0);
    return done(n - 1);
  }
};

Table load(const unsigned char* image, bool overlay) {
  Table table(65536);
  for (size_t i = 0; i < table.size(); ++i) table[i] = pairOf(image[2 * i], image[2 * i + 1]);
  if (!overlay) return table;
  for (int c = 0; c < 0x80; ++c) {
    table[static_cast<size_t>(c)] = c > 0x20 && c < 0x7E ? pairOf(0xA3, c + 0x80) : 0xA1A1;
  }
  table[0] = 0;
  table[1] = 0x2001;
  table['\n'] = table['\r'] = 0xA3FD;
  table['$'] = 0xE7A1;
  table['~'] = 0xABA1;
  return table;
}

// The truncation, on a text that has used up its room.
Outcome cut(Writer out, int lowestTrail) {
  std::string kept = out.dest.substr(0, static_cast<size_t>(out.n));
  while (!kept.empty() && static_cast<int>(kept.size()) > out.n - 3) {
    const size_t last = at(kept, kept.size() - 1) >= lowestTrail ? 2 : 1;
    kept.resize(kept.size() - std::min(last, kept.size()));
  }
  const auto drop = [&](int most, auto isPart) {
    while (most-- > 0 && kept.size() > 1 && isPart(at(kept, kept.size() - 1))) kept.pop_back();
  };
  drop(16, [](int b) { return isalnum(b) != 0; });
  drop(3, [](int b) { return b == '.'; });
  out.n = static_cast<int>(kept.size());
  for (int dot = 0; dot < 3 && out.has(2); ++dot) out.byte('.');
  return out.terminated();
}

gchar_t simplified(gchar_t code) {
  return isGBKUndefinedChar(code) ? CHINESE_SPACE_CHAR : tables().simplified[code];
}

std::string upToNul(const std::string& src) { return src.substr(0, src.find('\0')); }

// A byte stream, or an array ended by a 0 unit.
Outcome twinPairs(const std::string& src, Writer out, const std::string& name, bool ifcase) {
  const bool isBig5 = name == "b52sgbk", isArray = !isBig5 && name != "t2sgbk";
  const Table& table = isBig5 ? tables().big5 : tables().simplified;
  const std::string text = isArray ? upToNul(src) : src;
  for (size_t i = 0; i < text.size();) {
    const int b = at(text, i++);
    if (b == 0x80 || b == 0xFF || (b > 0x7F && !isArray && i == text.size())) continue;
    gchar_t unit = at(table, b);
    if (b > 0x7F) {
      const gchar_t code = pairOf(b, text.c_str()[i++] & 0xFF);
      if (name == "t2sgchar_cache" && (code == 0xA1FD || code == 0xA2FD)) continue;
      const bool isCopied = name == "dbc2gchar" && !isGBKUndefinedChar(code);
      unit = isCopied ? code : isBig5 ? table[code] : simplified(code);
    }
    out.unit(ifcase ? toLowerCase(unit) : unit);
  }
  if (!isArray) return out.written();
  out.unit(0);
  return out.done(out.full ? -1 : out.n / 2 - 1);
}

void putUnicode(Writer& out, int code) {
  const gchar_t entry = at(tables().unicode, code);
  if (code != 0xFEFF && entry != 0x3F3F) out.unit(entry);
}

Outcome twinUcs2(const std::string& src, Writer out, bool doubleByte) {
  for (size_t i = 0; i + 1 < src.size(); i += 2) {
    const gchar_t u = pairOf(at(src, i), at(src, i + 1));
    u <= 0x7F && !doubleByte ? out.byte(u) : putUnicode(out, u);
  }
  return out.written();
}

Outcome twinUtf8(const std::string& src, Writer out) {
  const size_t size = src.size();
  bool ifCurrentASCII = false;
  const auto low = [&](size_t i) { return at(src, i) & 0x3F; };
  const auto isContinuation = [&](size_t i) { return i < size && (at(src, i) & 0xC0) == 0x80; };
  for (size_t i = 0, taken; i < size; i += taken) {
    const int b = at(src, i);
    const bool isLead = (b & 0xF0) == 0xE0;
    if ((b & 0xE0) == 0xC0) {
      taken = 2;
      if (i + 1 < size) putUnicode(out, (b & 31) * 64 + low(i + 1));
      continue;
    }
    if (isLead && size - i < 3) break;
    if (isLead && isContinuation(i + 1) && (at(src, i + 2) & 0xF0) == 0xE0 &&
        isContinuation(i + 3) && isContinuation(i + 4)) {
      i += 2;
    }
    ifCurrentASCII = ifCurrentASCII || b <= 0x7F;
    // Of other bytes, it is one that lost its top bit.
    const bool isGroup = isContinuation(i + 1) && (isLead || isContinuation(i + 2));
    if (isGroup) putUnicode(out, (at(src, i) & 15) * 4096 + low(i + 1) * 64 + low(i + 2));
    if (!isGroup && !isLead && ifCurrentASCII) out.unit(at(tables().unicode, b));
    taken = isGroup || isLead ? 3 : 1;
  }
  return out.written();
}

Outcome twinHz(const std::string& src, Writer out, bool isWide) {
  bool ascii = true;
  const auto put = [&](int b) { isWide ? out.unit(at(tables().simplified, b)) : out.byte(b); };
  for (size_t i = 0; i < src.size();) {
    const int b = at(src, i++);
    const bool last = i == src.size();
    if (ascii && b != '~' && (!isWide || b <= 0x80 || last)) {
      put(b);
      continue;
    }
    if (last) break;
    const int c = at(src, i++);
    if (b == '~' && c == (ascii ? '{' : '}')) {
      ascii = !ascii;
    } else if (b == '~' && ascii && (c == '~' || c == '\n')) {
      put(c);
    } else if (b == '~' && !isWide) {
      out.byte('~');
      i -= 1;
    } else if (!isWide) {
      out.byte(b | 0x80);
      out.byte(c | 0x80);
    } else if (b != '~') {
      out.unit(ascii ? pairOf(b, c) : simplified(pairOf(b | 0x80, c | 0x80)));
    }
  }
  return out.written();
}

Outcome twinFold(const std::string& src, Writer out, const std::string& name, bool ifcase) {
  const bool big5 = name == "gchar2big5";
  const bool page = name == "decodelibpage";
  if (out.to.size <= 0 && !page) return out.done(0);
  const int destend = out.to.size - (big5 || page ? 2 : 1);
  const std::string text = page || name == "sbc2dbc counted" ? src : upToNul(src);
  for (size_t i = 0;;) {
    if (page && out.n >= destend) return out.done(-1);
    if (i == text.size()) return out.terminated();
    if (out.n >= destend) return cut(out, big5 ? 0x80 : 0x81);
    const int b1 = at(text, i);
    const int b2 = i + 1 < text.size() ? at(text, i + 1) : -1;
    const gchar_t pair = b2 < 0 ? gchar_t{0} : pairOf(b1, b2);
    i += b1 > 0x80 && b2 >= 0 ? 2 : 1;
    if (isgcharspace(pair)) {
      out.byte(' ');
    } else if (pair == TAB_CONVERSION_CHAR && !page) {
      out.byte('\t');
      i += 1;
    } else if (b1 < 0x80) {
      out.byte(ifcase && b1 >= 'A' && b1 <= 'Z' ? b1 + 0x20 : b1);
    } else if (b1 > 0x80 && b2 >= 0 && !(page && pair == DESCRIPTION_CONTENT_SEPARATOR)) {
      const gchar_t folded = ifcase ? toLowerCase(pair) : pair;
      const char ascii = pair == 0xA4A3 && big5 ? '$' : sbcchar2dbc(folded);
      const std::string reference = ascii == '&' ? "&amp;" : ascii == '<' ? "&lt;" : "&gt;";
      if (page && (ascii == '&' || ascii == '<' || ascii == '>')) {
        if (out.n + static_cast<int>(reference.size()) > destend) return out.done(-1);
        out.put(reference);
      } else if (ascii != 0) {
        out.byte(ascii);
      } else if (!page && !big5 && out.n == destend - 1) {
        return cut(out, 0x81);
      } else {
        out.unit(big5 ? tables().toBig5[pair] : folded);
      }
    }
  }
}

// `src` with its last unit: a 0, or any unit where `counted`.
Outcome twinTrim(const std::string& src, Writer out, bool counted) {
  std::vector<gchar_t> in, text;
  for (size_t i = 0; i + 1 < src.size(); i += 2) in.push_back(pairOf(at(src, i), at(src, i + 1)));
  in.erase(counted ? in.end() - 1 : std::ranges::find(in, 0), in.end());
  std::span<const gchar_t> rest = in;
  const auto run = [&](auto isPart) {
    return rest.first(static_cast<size_t>(std::ranges::find_if_not(rest, isPart) - rest.begin()));
  };
  const auto isPassedOver = [](gchar_t c) { return isgcharspace(c) || isShapeChar(c); };
  // An unassigned code among the shapes is a blank.
  const auto isMarkOrBlank = [](gchar_t c) {
    return isGraphChar(c) && (isgcharspace(c) || !isShapeChar(c)) && c != RETURN_CONVERSION_CHAR;
  };
  rest = rest.subspan(run([&](gchar_t c) { return c == 0 || isPassedOver(c); }).size());
  for (size_t taken = 1; !rest.empty(); rest = rest.subspan(taken)) {
    const gchar_t c = rest[0];
    const auto marks = run(isMarkOrBlank);
    taken = 1;
    if (text.empty()) {
      text.push_back(c);
    } else if (isgcharspace(c)) {
      const auto blanks = run(isPassedOver);
      const bool newline = std::ranges::find(blanks, RETURN_CONVERSION_CHAR) != blanks.end();
      text.push_back(newline ? RETURN_CONVERSION_CHAR : CHINESE_SPACE_CHAR);
      taken = blanks.size();
    } else if (marks.size() >= 9) {
      if (!isgcharspace(text.back())) text.push_back(c);
      taken = marks.size();
    } else if (!marks.empty()) {
      for (const gchar_t mark : marks) {
        const bool isBlank = isgcharspace(mark);
        if (!isBlank || !isgcharspace(text.back()))
          text.push_back(isBlank ? CHINESE_SPACE_CHAR : mark);
      }
      taken = marks.size();
    } else if (c != 0 && !isShapeChar(c)) {
      text.push_back(c);
    }
  }
  while (!text.empty() && isgcharspace(text.back())) text.pop_back();
  text.push_back(0);
  for (const gchar_t unit : text) out.unit(unit);
  return {out.n / 2, out.dest.substr(0, static_cast<size_t>(out.n))};
}

// The same, lowered in the destination.
Outcome twinLowered(const std::string& src) {
  Outcome outcome{0, src};
  for (size_t i = 0; src[i] != 0; i += 2) {
    if (isSBCLetter(pairOf(at(src, i), at(src, i + 1)))) outcome.dest[i + 1] |= 0x20;
  }
  return outcome;
}

Outcome twinEntity(const std::string& src, Writer out, const std::string& name) {
  const std::string text = upToNul(src);
  const bool whole = name == "decodeCharEntity" || name == "deEscHtml";
  const auto isMeant = [&](const std::string& entity) {
    return whole ? text == entity : text.starts_with(entity);
  };
  const auto done = [&](long value, const std::string& entity) {
    return out.done(together(value, whole ? 0 : static_cast<long>(entity.size())));
  };
  if (name.starts_with("decode")) {
    using Rows = std::span<const tCharEntityMap>;
    const Rows rows = whole ? Rows(charEntitySet) : Rows(charEntityIESet);
    const auto row = std::ranges::find_if(rows, isMeant, &tCharEntityMap::pEntity);
    return row != rows.end() ? done(row->uc, row->pEntity) : done(0xFFFE, "");
  }
  const auto row = std::ranges::find_if(charaentitymaps, isMeant, &tCharaEntityMap::pesc);
  const bool isFound = row != std::end(charaentitymaps);
  if (!isFound && !whole) return out.done(0);
  out.put(isFound ? row->pdesc : std::string(1, text.c_str()[0]));
  return done(out.terminated().result, isFound ? row->pesc : "");
}

}  // namespace

const Tables& tables() {
  static const Tables all = {
      load(_binary_data_big52sgbk_ctb_start, true), load(_binary_data_gbkt2s_ctb_start, true),
      load(_binary_data_uc2sgbk_ctb_start, true), load(_binary_data_gbk2big5_ctb_start, false)};
  return all;
}

Outcome twin(const std::string& operation, const std::string& src, Destination to) {
  const bool ifcase = operation.ends_with(" case");
  const std::string name = operation.substr(0, operation.size() - (ifcase ? 5 : 0));
  if (name == "b52sgbk" || name == "t2sgbk") return twinPairs(src, {to}, name, ifcase);
  if (name.starts_with("uc2sgbk")) return twinUcs2(src, {to}, name == "uc2sgbk_DB");
  if (name == "utf82sgbk") return twinUtf8(src, {to});
  if (name.starts_with("hz")) return twinHz(src, {to}, name == "hz2sgbk");
  if (name == "sbctoLowercase") return twinLowered(src);
  if (name.starts_with("sbc2dbc") || name == "gchar2big5" || name == "decodelibpage") {
    return twinFold(src, {to}, name, ifcase);
  }
  if (name.starts_with("de")) return twinEntity(src, {to}, name);
  const Writer units{{2 * to.size, to.fill}};
  if (name.starts_with("trimgPunc")) return twinTrim(src, units, name.ends_with("counted"));
  return twinPairs(src, units, name, ifcase);
}

}  // namespace sgbk_test
