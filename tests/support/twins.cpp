#include "support/twins.h"

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

// A destination of which no byte is written outside.
struct Writer {
  Destination to;
  std::string dest = std::string(static_cast<size_t>(std::max(to.size, 0)), to.fill);
  int n = 0;
  void byte(int b) { dest.at(static_cast<size_t>(n++)) = static_cast<char>(b); }
  void unit(gchar_t u) { byte(u & 0xFF), byte(u >> 8); }
  void text(const std::string& s) {
    for (const char c : s) byte(c);
  }
  bool has(int bytes) const { return to.size - n >= bytes; }
  Outcome done(long result) { return {result, dest}; }
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
  int scan = out.n - 1;
  const int guard = out.n - 4;
  while (scan > guard && scan >= 0) {
    scan -= at(out.dest, static_cast<size_t>(scan)) >= lowestTrail ? 2 : 1;
  }
  if (scan < -1) scan = -1;
  const auto kept = [&] { return at(out.dest, static_cast<size_t>(scan)); };
  if (scan >= 0 && isalnum(kept())) {
    for (const int limit = std::max(0, scan - 16); scan > limit && isalnum(kept());) --scan;
  }
  for (const int limit = std::max(0, scan - 3); scan > limit && kept() == '.';) --scan;
  out.n = scan + 1;
  for (int dot = 0; dot < 3 && out.has(2); ++dot) out.byte('.');
  return out.terminated();
}

// A half-width byte or 0.
int asciiForm(int lead, int trail, bool yenToo) {
  if (lead == 0xA3 && trail >= 0xA1 && trail <= 0xFD && (trail != 0xA4 || yenToo)) {
    return trail - 0x80;
  }
  if (lead == 0xA1 && trail == 0xAB) return 0x7E;
  return lead == 0xA1 && trail == 0xE7 ? 0x24 : 0;
}

std::string referenceFor(gchar_t pair) {
  return pair == 0xA6A3 ? "&amp;" : pair == 0xBCA3 ? "&lt;" : pair == 0xBEA3 ? "&gt;" : "";
}

}  // namespace

const Tables& tables() {
  static const Tables all = {
      load(_binary_data_big52sgbk_ctb_start, true), load(_binary_data_gbkt2s_ctb_start, true),
      load(_binary_data_uc2sgbk_ctb_start, true), load(_binary_data_gbk2big5_ctb_start, false)};
  return all;
}

Outcome twinPairs(const std::string& src, Destination to, Stream kind) {
  const Table& table = kind == Stream::big5 ? tables().big5 : tables().simplified;
  Writer out{to};
  for (size_t i = 0; i < src.size() && out.has(2);) {
    const int b = at(src, i++);
    if (b <= 0x7F) {
      out.unit(at(table, b));
    } else if (b != 0x80 && b != 0xFF) {
      if (i == src.size()) break;
      const gchar_t code = pairOf(b, at(src, i++));
      const bool blank = kind == Stream::gbk && isGBKUndefinedChar(code);
      out.unit(blank ? CHINESE_SPACE_CHAR : at(table, code));
    }
  }
  return out.done(out.n);
}

Outcome twinUcs2(const std::string& src, Destination to, bool doubleByte) {
  Writer out{to};
  for (size_t i = 0; i + 1 < src.size() && out.has(doubleByte ? 2 : 1); i += 2) {
    const gchar_t u = pairOf(at(src, i), at(src, i + 1));
    if (u <= 0x7F && !doubleByte) {
      out.byte(u);
    } else if (u != 0xFEFF && tables().unicode[u] != 0x3F3F) {
      if (!out.has(2)) break;
      out.unit(tables().unicode[u]);
    }
  }
  return out.done(out.n);
}

Outcome twinUtf8(const std::string& src, Destination to) {
  Writer out{to};
  const size_t size = src.size();
  bool ifCurrentASCII = false;
  const auto continuation = [&](size_t i) { return i < size && (at(src, i) & 0xC0) == 0x80; };
  const auto put = [&](int code) {
    const gchar_t entry = at(tables().unicode, code);
    if (code != 0xFEFF && entry != 0x3F3F) out.unit(entry);
  };
  const auto group = [&](size_t i) {
    put((at(src, i) & 15) * 4096 + (at(src, i + 1) & 63) * 64 + (at(src, i + 2) & 63));
  };
  for (size_t i = 0; i < size && out.has(2);) {
    const int b = at(src, i);
    if (b >= 0xC0 && b <= 0xDF) {
      if (i + 1 == size) break;
      put((b & 31) * 64 + (at(src, i + 1) & 63));
      i += 2;
    } else if (b >= 0xE0 && b <= 0xEF) {
      if (size - i < 3) break;
      const bool restarts = continuation(i + 1) && (at(src, i + 2) & 0xF0) == 0xE0 &&
                            continuation(i + 3) && continuation(i + 4);
      if (restarts) i += 2;
      if (continuation(i + 1)) group(i);
      i += 3;
    } else {
      if (b <= 0x7F) ifCurrentASCII = true;
      const bool lostItsTopBit = continuation(i + 1) && continuation(i + 2);
      if (lostItsTopBit) group(i);
      if (!lostItsTopBit && ifCurrentASCII) out.unit(at(tables().unicode, b));
      i += lostItsTopBit ? 3 : 1;
    }
  }
  return out.done(out.n);
}

Outcome twinHz(const std::string& src, Destination to) {
  Writer out{to};
  bool ascii = true;
  for (size_t i = 0; i < src.size() && out.has(2);) {
    const int b = at(src, i++);
    const bool last = i == src.size();
    if (last && (b == '~' || !ascii)) break;
    if (ascii && b != '~' && (b <= 0x80 || last)) {
      out.unit(at(tables().simplified, b));
      continue;
    }
    const int c = at(src, i++);
    if (b == '~') {
      if (ascii && c == '~') out.unit(0xABA1);
      if (ascii && c == '\n') out.unit(0xA3FD);
      if (c == (ascii ? '{' : '}')) ascii = !ascii;
    } else if (ascii) {
      out.unit(pairOf(b, c));
    } else {
      const gchar_t code = pairOf(b | 0x80, c | 0x80);
      out.unit(isGBKUndefinedChar(code) ? CHINESE_SPACE_CHAR : tables().simplified[code]);
    }
  }
  return out.done(out.n);
}

Outcome twinHzToGbk(const std::string& src, Destination to) {
  Writer out{to};
  bool ascii = true;
  for (size_t i = 0; i < src.size() && out.has(1);) {
    const int b = at(src, i++);
    if (ascii && b != '~') {
      out.byte(b);
      continue;
    }
    if (i == src.size()) break;
    const int c = at(src, i++);
    if (b == '~' && c == (ascii ? '{' : '}')) {
      ascii = !ascii;
    } else if (b == '~' && ascii && (c == '~' || c == '\n')) {
      out.byte(c);
    } else if (b == '~') {
      out.byte('~');
      i -= 1;
    } else {
      out.byte(b | 0x80);
      if (out.has(1)) out.byte(c | 0x80);
    }
  }
  return out.done(out.n);
}

Outcome twinArray(const std::string& src, Destination to, Array kind, bool ifcase) {
  to.size *= 2;
  Writer out{to};
  const size_t end = std::min(src.find('\0'), src.size());
  for (size_t i = 0; i < end;) {
    if (!out.has(2)) return out.done(-1);
    const int b = at(src, i++);
    if (b == 0x80 || b == 0xFF) continue;
    gchar_t unit = at(tables().simplified, b);
    if (b > 0x7F) {
      const gchar_t code = pairOf(b, i < end ? at(src, i) : 0);
      i += 1;
      if (kind == Array::cache && (code == 0xA1FD || code == 0xA2FD)) continue;
      unit = kind == Array::dbc ? code : tables().simplified[code];
      if (isGBKUndefinedChar(code)) unit = CHINESE_SPACE_CHAR;
    }
    out.unit(ifcase ? toLowerCase(unit) : unit);
  }
  if (!out.has(2)) return out.done(-1);
  out.unit(0);
  return out.done(out.n / 2 - 1);
}

Outcome twinFold(const std::string& src, Destination to, Fold kind, bool ifcase) {
  Writer out{to};
  const bool big5 = kind == Fold::big5;
  const bool page = kind == Fold::page;
  if (to.size <= 0 && !page) return out.done(0);
  const int destend = to.size - (big5 || page ? 2 : 1);
  const bool counted = kind == Fold::counted || page;
  const size_t end = counted ? src.size() : std::min(src.find('\0'), src.size());
  for (size_t i = 0;;) {
    if (page && out.n >= destend) return out.done(-1);
    if (i == end) return out.terminated();
    if (out.n >= destend) return cut(out, big5 ? 0x80 : 0x81);
    const int b1 = at(src, i);
    const int b2 = i + 1 < end ? at(src, i + 1) : -1;
    const gchar_t pair = b2 < 0 ? gchar_t{0} : pairOf(b1, b2);
    i += b1 > 0x80 && b2 >= 0 ? 2 : 1;
    if (isgcharspace(pair)) {
      out.byte(' ');
    } else if (pair == TAB_CONVERSION_CHAR && !page) {
      out.byte('\t');
      i += 1;
    } else if (page && !referenceFor(pair).empty()) {
      const std::string reference = referenceFor(pair);
      if (out.n + static_cast<int>(reference.size()) > destend) return out.done(-1);
      out.text(reference);
    } else if (b1 == 0x80 || (b1 > 0x80 && b2 < 0) ||
               (page && pair == DESCRIPTION_CONTENT_SEPARATOR)) {
      continue;
    } else if (b1 < 0x80) {
      out.byte(ifcase && b1 >= 'A' && b1 <= 'Z' ? b1 + 0x20 : b1);
    } else {
      const int nextch = ifcase ? toLowerCase(pair) >> 8 : b2;
      if (const int ascii = asciiForm(b1, nextch, big5)) {
        out.byte(ascii);
      } else if (!page && !big5 && out.n == destend - 1) {
        return cut(out, 0x81);
      } else {
        out.unit(big5 ? tables().toBig5[pair] : pairOf(b1, nextch));
      }
    }
  }
}

Outcome twinTrim(const std::string& src, Destination to, bool counted) {
  std::vector<gchar_t> in;
  for (size_t i = 0; i + 1 < src.size(); i += 2) in.push_back(pairOf(at(src, i), at(src, i + 1)));
  size_t end = 0;
  while (counted ? end + 1 < in.size() : in[end] != 0) ++end;
  // An unassigned code among the shapes is a blank.
  const auto markOrBlank = [](gchar_t c) {
    return isGraphChar(c) && (isgcharspace(c) || !isShapeChar(c)) && c != RETURN_CONVERSION_CHAR;
  };
  std::vector<gchar_t> text;
  size_t i = 0;
  while (i < end && (in[i] == 0 || isgcharspace(in[i]) || isShapeChar(in[i]))) ++i;
  if (i < end) text.push_back(in[i++]);
  while (i < end) {
    const gchar_t c = in[i];
    if (isgcharspace(c)) {
      bool newline = false;
      for (; i < end && (isgcharspace(in[i]) || isShapeChar(in[i])); ++i) {
        newline |= in[i] == RETURN_CONVERSION_CHAR;
      }
      text.push_back(newline ? RETURN_CONVERSION_CHAR : CHINESE_SPACE_CHAR);
    } else if (isShapeChar(c) || c == 0) {
      ++i;
    } else if (isGraphChar(c)) {
      size_t behind = i;
      while (behind < end && markOrBlank(in[behind])) ++behind;
      if (behind - i >= 9) {
        if (!isgcharspace(text.back())) text.push_back(c);
      } else {
        for (size_t k = i; k < behind; ++k) {
          if (!isgcharspace(in[k])) text.push_back(in[k]);
          if (isgcharspace(in[k]) && !isgcharspace(in[k - 1])) text.push_back(CHINESE_SPACE_CHAR);
        }
      }
      i = behind;
    } else {
      text.push_back(c);
      ++i;
    }
  }
  while (!text.empty() && isgcharspace(text.back())) text.pop_back();
  to.size *= 2;
  Writer out{to};
  for (const gchar_t unit : text) out.unit(unit);
  out.unit(0);
  return out.done(static_cast<long>(text.size()) + 1);
}

Outcome twinLowered(const std::string& src, Destination) {
  Outcome outcome{0, src};
  for (size_t i = 0; src[i] != 0; i += 2) {
    const bool capital = at(src, i) == 0xA3 && at(src, i + 1) >= 0xC1 && at(src, i + 1) <= 0xDA;
    if (capital) outcome.dest[i + 1] = static_cast<char>(src[i + 1] + 0x20);
  }
  return outcome;
}

Outcome twinEntity(const std::string& src, Destination to, Entity kind) {
  Writer out{to};
  const std::string text = src.substr(0, src.find('\0'));
  const bool whole = kind == Entity::code || kind == Entity::text;
  const auto matches = [&](const std::string& name) {
    return whole ? text == name : text.starts_with(name);
  };
  const auto done = [&](long value, const std::string& name) {
    return out.done(together(value, whole ? 0 : static_cast<long>(name.size())));
  };
  if (kind == Entity::code || kind == Entity::codeOfPrefix) {
    using Rows = std::span<const tCharEntityMap>;
    for (const auto& row : whole ? Rows(charEntitySet) : Rows(charEntityIESet)) {
      if (matches(row.pEntity)) return done(row.uc, row.pEntity);
    }
    return out.done(0xFFFE);
  }
  for (const auto& row : charaentitymaps) {
    if (!matches(row.pesc)) continue;
    out.text(row.pdesc);
    return done(out.terminated().result, row.pesc);
  }
  if (!whole) return out.done(0);
  out.byte(text.c_str()[0]);
  return out.terminated();
}

}  // namespace sgbk_test
