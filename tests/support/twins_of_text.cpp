// The twins of the operations on GBK text and on entities.

#include <cctype>

#include "support/twin_writer.h"

namespace sgbk_test {
namespace {

// The truncation, on a text that has used up its room.
Outcome cut(Writer out, int lowestTrail) {
  long scan = out.n - 1;
  const long guard = out.n - 4;
  while (scan > guard && scan >= 0) {
    scan -= at(out.dest, static_cast<size_t>(scan)) >= lowestTrail ? 2 : 1;
  }
  if (scan < -1) scan = -1;
  const auto kept = [&] { return at(out.dest, static_cast<size_t>(scan)); };
  if (scan >= 0 && isalnum(kept())) {
    for (const long limit = std::max(0L, scan - 16); scan > limit && isalnum(kept());) --scan;
  }
  for (const long limit = std::max(0L, scan - 3); scan > limit && kept() == '.';) --scan;
  out.n = scan + 1;
  for (int dot = 0; dot < 3 && out.has(2); ++dot) out.byte('.');
  const long result = out.n;
  out.byte(0);
  return out.done(result);
}

// A half-width byte or 0.
int asciiForm(int lead, int trail, bool yenToo) {
  if (lead == 0xA3 && trail >= 0xA1 && trail <= 0xFD && (trail != 0xA4 || yenToo)) {
    return trail - 0x80;
  }
  if (lead == 0xA1 && trail == 0xAB) return 0x7E;
  return lead == 0xA1 && trail == 0xE7 ? 0x24 : 0;
}

}  // namespace

Outcome twinFold(const std::string& src, Destination to, Fold kind, bool ifcase) {
  Writer out{to};
  const bool big5 = kind == Fold::big5;
  const bool page = kind == Fold::page;
  if (to.size <= 0 && !page) return out.done(0);
  const long destend = to.size - (big5 || page ? 2 : 1);
  const bool counted = kind == Fold::counted || page;
  const size_t end = counted ? src.size() : std::min(src.find('\0'), src.size());
  for (size_t i = 0;;) {
    if (page && out.n >= destend) return out.done(-1);
    if (i == end) {
      const long result = out.n;
      out.byte(0);
      return out.done(result);
    }
    if (out.n >= destend) return cut(out, big5 ? 0x80 : 0x81);
    const int b1 = at(src, i);
    const int b2 = i + 1 < end ? at(src, i + 1) : -1;
    const gchar_t pair = b2 < 0 ? gchar_t{0} : pairOf(b1, b2);
    const std::string reference = !page            ? ""
                                  : pair == 0xA6A3 ? "&amp;"
                                  : pair == 0xBCA3 ? "&lt;"
                                  : pair == 0xBEA3 ? "&gt;"
                                                   : "";
    i += b1 > 0x80 && b2 >= 0 ? 2 : 1;
    if (isgcharspace(pair)) {
      out.byte(' ');
    } else if (pair == TAB_CONVERSION_CHAR && !page) {
      out.byte('\t');
      i += 1;
    } else if (!reference.empty()) {
      if (out.n + static_cast<long>(reference.size()) > destend) return out.done(-1);
      for (const char c : reference) out.byte(c);
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
        out.unit(big5 ? toBig5Table()[pair] : pairOf(b1, nextch));
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
  // What was written and stepped back over is still there behind the terminator.
  to.size *= 2;
  Writer out{to};
  for (const gchar_t unit : text) out.unit(unit);
  while (!text.empty() && isgcharspace(text.back())) text.pop_back();
  out.n = static_cast<long>(2 * text.size());
  out.unit(0);
  return out.done(static_cast<long>(text.size()) + 1);
}

Outcome twinLowered(const std::string& src, Destination) {
  Outcome outcome{0, src};
  for (size_t i = 0; outcome.dest[i] != 0; i += 2) {
    const int trail = at(src, i + 1);
    if (at(src, i) == 0xA3 && trail >= 0xC1 && trail <= 0xDA) {
      outcome.dest[i + 1] = static_cast<char>(trail + 0x20);
    }
  }
  return outcome;
}

Outcome twinEntity(const std::string& src, Destination to, Entity kind) {
  Writer out{to};
  const std::string text = src.substr(0, src.find('\0'));
  const auto finish = [&](const std::string& written, long taken) {
    for (const char c : written) out.byte(c);
    out.byte(0);
    return out.done(together(static_cast<long>(written.size()), taken));
  };
  if (kind == Entity::code || kind == Entity::codeOfPrefix) {
    for (const auto& row : charEntitySet) {
      if (kind == Entity::code && text == row.pEntity) return out.done(row.uc);
    }
    for (const auto& row : charEntityIESet) {
      const std::string name = row.pEntity;
      if (kind == Entity::codeOfPrefix && text.starts_with(name)) {
        return out.done(together(row.uc, static_cast<long>(name.size())));
      }
    }
    return out.done(0xFFFE);
  }
  for (const auto& row : charaentitymaps) {
    const std::string name = row.pesc;
    if (kind == Entity::text && text == name) return finish(row.pdesc, 0);
    if (kind == Entity::textOfPrefix && text.starts_with(name)) {
      return finish(row.pdesc, static_cast<long>(name.size()));
    }
  }
  if (kind == Entity::textOfPrefix) return out.done(0);
  return finish(std::string(1, text.c_str()[0]), 0);
}

}  // namespace sgbk_test
