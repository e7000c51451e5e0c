// The tables, and the twins of the conversions into double-byte text.

#include "support/twin_writer.h"

extern "C" {
extern const unsigned char _binary_data_big52sgbk_ctb_start[131072];
extern const unsigned char _binary_data_gbkt2s_ctb_start[131072];
extern const unsigned char _binary_data_uc2sgbk_ctb_start[131072];
extern const unsigned char _binary_data_gbk2big5_ctb_start[131072];
}

namespace sgbk_test {
namespace {

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

}  // namespace

#define TABLE(function, image, overlay)              \
  const Table& function() {                          \
    static const Table table = load(image, overlay); \
    return table;                                    \
  }
TABLE(big5Table, _binary_data_big52sgbk_ctb_start, true)
TABLE(simplifiedTable, _binary_data_gbkt2s_ctb_start, true)
TABLE(unicodeTable, _binary_data_uc2sgbk_ctb_start, true)
TABLE(toBig5Table, _binary_data_gbk2big5_ctb_start, false)

Outcome twinPairs(const std::string& src, Destination to, Stream kind) {
  const Table& table = kind == Stream::big5 ? big5Table() : simplifiedTable();
  Writer out{to};
  for (size_t i = 0; i < src.size() && out.has(2);) {
    const int b = at(src, i);
    if (b <= 0x7F) {
      out.unit(at(table, b));
      i += 1;
    } else if (b == 0x80 || b == 0xFF) {
      i += 1;
    } else if (i + 1 == src.size()) {
      break;
    } else {
      const gchar_t code = pairOf(b, at(src, i + 1));
      const bool blank = kind == Stream::gbk && isGBKUndefinedChar(code);
      out.unit(blank ? CHINESE_SPACE_CHAR : at(table, code));
      i += 2;
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
    } else if (u != 0xFEFF && unicodeTable()[u] != 0x3F3F) {
      if (!out.has(2)) break;
      out.unit(unicodeTable()[u]);
    }
  }
  return out.done(out.n);
}

Outcome twinUtf8(const std::string& src, Destination to) {
  Writer out{to};
  const size_t size = src.size();
  bool ifCurrentASCII = false;
  const auto continuation = [&](size_t i) { return i < size && (at(src, i) & 0xC0) == 0x80; };
  const auto group = [&](size_t i) {
    const auto code = static_cast<gchar_t>((at(src, i) & 15) * 4096 + (at(src, i + 1) & 63) * 64 +
                                           (at(src, i + 2) & 63));
    if (code != 0xFEFF && unicodeTable()[code] != 0x3F3F) out.unit(unicodeTable()[code]);
  };
  for (size_t i = 0; i < size && out.has(2);) {
    const int b0 = at(src, i);
    if (b0 >= 0xC0 && b0 <= 0xDF) {
      if (i + 1 == size) break;
      const gchar_t entry = at(unicodeTable(), (b0 & 31) * 64 + (at(src, i + 1) & 63));
      if (entry != 0x3F3F) out.unit(entry);
      i += 2;
    } else if (b0 >= 0xE0 && b0 <= 0xEF) {
      if (size - i < 3) break;
      if (!continuation(i + 1)) {
        i += 3;
      } else if ((at(src, i + 2) & 0xF0) == 0xE0 && size - i >= 5 && continuation(i + 3) &&
                 continuation(i + 4)) {
        group(i + 2);
        i += 5;
      } else {
        group(i);
        i += 3;
      }
    } else {
      if (b0 <= 0x7F) ifCurrentASCII = true;
      const bool tried = (b0 >= 0x80 && !ifCurrentASCII) || continuation(i + 1);
      if (tried && size - i >= 3 && continuation(i + 1) && continuation(i + 2)) {
        group(i);
        i += 3;
      } else {
        if (ifCurrentASCII) out.unit(at(unicodeTable(), b0));
        i += 1;
      }
    }
  }
  return out.done(out.n);
}

Outcome twinHz(const std::string& src, Destination to) {
  Writer out{to};
  bool ascii = true;
  for (size_t i = 0; i < src.size() && out.has(2);) {
    const int b = at(src, i);
    const bool last = i + 1 == src.size();
    const int c = last ? -1 : at(src, i + 1);
    if (last && (b == '~' || !ascii)) break;
    if (b == '~') {
      if (ascii && c == '{') {
        ascii = false;
      } else if (ascii && c == '~') {
        out.unit(0xABA1);
      } else if (ascii && c == '\n') {
        out.unit(0xA3FD);
      } else if (!ascii && c == '}') {
        ascii = true;
      }
      i += 2;
    } else if (!ascii) {
      const gchar_t code = pairOf(b | 0x80, c | 0x80);
      out.unit(isGBKUndefinedChar(code) ? CHINESE_SPACE_CHAR : simplifiedTable()[code]);
      i += 2;
    } else if (b <= 0x80 || last) {
      out.unit(at(simplifiedTable(), b));
      i += 1;
    } else {
      out.unit(pairOf(b, c));
      i += 2;
    }
  }
  return out.done(out.n);
}

Outcome twinHzToGbk(const std::string& src, Destination to) {
  Writer out{to};
  bool ascii = true;
  for (size_t i = 0; i < src.size() && out.has(1);) {
    const int b = at(src, i);
    if (ascii && b != '~') {
      out.byte(b);
      i += 1;
      continue;
    }
    if (i + 1 == src.size()) break;
    const int c = at(src, i + 1);
    if (b == '~' && c == (ascii ? '{' : '}')) {
      ascii = !ascii;
      i += 2;
    } else if (b == '~' && ascii && (c == '~' || c == '\n')) {
      out.byte(c);
      i += 2;
    } else if (b == '~') {
      out.byte('~');
      i += 1;
    } else {
      out.byte(b | 0x80);
      if (!out.has(1)) break;
      out.byte(c | 0x80);
      i += 2;
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
    const int b = at(src, i);
    const int c = i + 1 < end ? at(src, i + 1) : 0;
    gchar_t unit = pairOf(b, c);
    if (b == 0x80 || b == 0xFF) {
      i += 1;
      continue;
    }
    if (kind == Array::cache && b == 0xFD && (c == 0xA1 || c == 0xA2)) {
      i += 2;
      continue;
    }
    if (b <= 0x7F) {
      unit = at(simplifiedTable(), b);
    } else if (isGBKUndefinedChar(unit)) {
      unit = CHINESE_SPACE_CHAR;
    } else if (kind != Array::dbc) {
      unit = simplifiedTable()[unit];
    }
    out.unit(ifcase ? toLowerCase(unit) : unit);
    i += b <= 0x7F ? 1 : 2;
  }
  if (!out.has(2)) return out.done(-1);
  out.unit(0);
  return out.done(out.n / 2 - 1);
}

}  // namespace sgbk_test
