// The entity tables. Names and code points are those of HTML 4.01 (sections 24.2 to 24.4).

#include <string_view>

#include "sgbk/CharEntity.h"

namespace {

template <size_t size>
constexpr tCharEntityMap entity(const char (&name)[size], UINT16 codePoint) {
  return {name, codePoint, size - 1};
}

}  // namespace

// clang-format off
constexpr tCharEntityMap charEntitySet[252] = {
    entity("AElig", 0x00C6), entity("Aacute", 0x00C1), entity("Acirc", 0x00C2),
    entity("Agrave", 0x00C0), entity("Alpha", 0x0391), entity("Aring", 0x00C5),
    entity("Atilde", 0x00C3), entity("Auml", 0x00C4), entity("Beta", 0x0392),
    entity("Ccedil", 0x00C7), entity("Chi", 0x03A7), entity("Dagger", 0x2021),
    entity("Delta", 0x0394), entity("ETH", 0x00D0), entity("Eacute", 0x00C9),
    entity("Ecirc", 0x00CA), entity("Egrave", 0x00C8), entity("Epsilon", 0x0395),
    entity("Eta", 0x0397), entity("Euml", 0x00CB), entity("Gamma", 0x0393),
    entity("Iacute", 0x00CD), entity("Icirc", 0x00CE), entity("Igrave", 0x00CC),
    entity("Iota", 0x0399), entity("Iuml", 0x00CF), entity("Kappa", 0x039A),
    entity("Lambda", 0x039B), entity("Mu", 0x039C), entity("Ntilde", 0x00D1), entity("Nu", 0x039D),
    entity("OElig", 0x0152), entity("Oacute", 0x00D3), entity("Ocirc", 0x00D4),
    entity("Ograve", 0x00D2), entity("Omega", 0x03A9), entity("Omicron", 0x039F),
    entity("Oslash", 0x00D8), entity("Otilde", 0x00D5), entity("Ouml", 0x00D6),
    entity("Phi", 0x03A6), entity("Pi", 0x03A0), entity("Prime", 0x2033), entity("Psi", 0x03A8),
    entity("Rho", 0x03A1), entity("Scaron", 0x0160), entity("Sigma", 0x03A3),
    entity("THORN", 0x00DE), entity("Tau", 0x03A4), entity("Theta", 0x0398),
    entity("Uacute", 0x00DA), entity("Ucirc", 0x00DB), entity("Ugrave", 0x00D9),
    entity("Upsilon", 0x03A5), entity("Uuml", 0x00DC), entity("Xi", 0x039E),
    entity("Yacute", 0x00DD), entity("Yuml", 0x0178), entity("Zeta", 0x0396),
    entity("aacute", 0x00E1), entity("acirc", 0x00E2), entity("acute", 0x00B4),
    entity("aelig", 0x00E6), entity("agrave", 0x00E0), entity("alefsym", 0x2135),
    entity("alpha", 0x03B1), entity("amp", 0x0026), entity("and", 0x2227), entity("ang", 0x2220),
    entity("aring", 0x00E5), entity("asymp", 0x2248), entity("atilde", 0x00E3),
    entity("auml", 0x00E4), entity("bdquo", 0x201E), entity("beta", 0x03B2),
    entity("brvbar", 0x00A6), entity("bull", 0x2022), entity("cap", 0x2229),
    entity("ccedil", 0x00E7), entity("cedil", 0x00B8), entity("cent", 0x00A2),
    entity("chi", 0x03C7), entity("circ", 0x02C6), entity("clubs", 0x2663), entity("cong", 0x2245),
    entity("copy", 0x00A9), entity("crarr", 0x21B5), entity("cup", 0x222A),
    entity("curren", 0x00A4), entity("dArr", 0x21D3), entity("dagger", 0x2020),
    entity("darr", 0x2193), entity("deg", 0x00B0), entity("delta", 0x03B4), entity("diams", 0x2666),
    entity("divide", 0x00F7), entity("eacute", 0x00E9), entity("ecirc", 0x00EA),
    entity("egrave", 0x00E8), entity("empty", 0x2205), entity("emsp", 0x2003),
    entity("ensp", 0x2002), entity("epsilon", 0x03B5), entity("equiv", 0x2261),
    entity("eta", 0x03B7), entity("eth", 0x00F0), entity("euml", 0x00EB), entity("euro", 0x20AC),
    entity("exist", 0x2203), entity("fnof", 0x0192), entity("forall", 0x2200),
    entity("frac12", 0x00BD), entity("frac14", 0x00BC), entity("frac34", 0x00BE),
    entity("frasl", 0x2044), entity("gamma", 0x03B3), entity("ge", 0x2265), entity("gt", 0x003E),
    entity("hArr", 0x21D4), entity("harr", 0x2194), entity("hearts", 0x2665),
    entity("hellip", 0x2026), entity("iacute", 0x00ED), entity("icirc", 0x00EE),
    entity("iexcl", 0x00A1), entity("igrave", 0x00EC), entity("image", 0x2111),
    entity("infin", 0x221E), entity("int", 0x222B), entity("iota", 0x03B9),
    entity("iquest", 0x00BF), entity("isin", 0x2208), entity("iuml", 0x00EF),
    entity("kappa", 0x03BA), entity("lArr", 0x21D0), entity("lambda", 0x03BB),
    entity("lang", 0x2329), entity("laquo", 0x00AB), entity("larr", 0x2190),
    entity("lceil", 0x2308), entity("ldquo", 0x201C), entity("le", 0x2264),
    entity("lfloor", 0x230A), entity("lowast", 0x2217), entity("loz", 0x25CA),
    entity("lrm", 0x200E), entity("lsaquo", 0x2039), entity("lsquo", 0x2018), entity("lt", 0x003C),
    entity("macr", 0x00AF), entity("mdash", 0x2014), entity("micro", 0x00B5),
    entity("middot", 0x00B7), entity("minus", 0x2212), entity("mu", 0x03BC),
    entity("nabla", 0x2207), entity("nbsp", 0x00A0), entity("ndash", 0x2013), entity("ne", 0x2260),
    entity("ni", 0x220B), entity("not", 0x00AC), entity("notin", 0x2209), entity("nsub", 0x2284),
    entity("ntilde", 0x00F1), entity("nu", 0x03BD), entity("oacute", 0x00F3),
    entity("ocirc", 0x00F4), entity("oelig", 0x0153), entity("ograve", 0x00F2),
    entity("oline", 0x203E), entity("omega", 0x03C9), entity("omicron", 0x03BF),
    entity("oplus", 0x2295), entity("or", 0x2228), entity("ordf", 0x00AA), entity("ordm", 0x00BA),
    entity("oslash", 0x00F8), entity("otilde", 0x00F5), entity("otimes", 0x2297),
    entity("ouml", 0x00F6), entity("para", 0x00B6), entity("part", 0x2202),
    entity("permil", 0x2030), entity("perp", 0x22A5), entity("phi", 0x03C6), entity("pi", 0x03C0),
    entity("piv", 0x03D6), entity("plusmn", 0x00B1), entity("pound", 0x00A3),
    entity("prime", 0x2032), entity("prod", 0x220F), entity("prop", 0x221D), entity("psi", 0x03C8),
    entity("quot", 0x0022), entity("rArr", 0x21D2), entity("radic", 0x221A), entity("rang", 0x232A),
    entity("raquo", 0x00BB), entity("rarr", 0x2192), entity("rceil", 0x2309),
    entity("rdquo", 0x201D), entity("real", 0x211C), entity("reg", 0x00AE),
    entity("rfloor", 0x230B), entity("rho", 0x03C1), entity("rlm", 0x200F),
    entity("rsaquo", 0x203A), entity("rsquo", 0x2019), entity("sbquo", 0x201A),
    entity("scaron", 0x0161), entity("sdot", 0x22C5), entity("sect", 0x00A7), entity("shy", 0x00AD),
    entity("sigma", 0x03C3), entity("sigmaf", 0x03C2), entity("sim", 0x223C),
    entity("spades", 0x2660), entity("sub", 0x2282), entity("sube", 0x2286), entity("sum", 0x2211),
    entity("sup", 0x2283), entity("sup1", 0x00B9), entity("sup2", 0x00B2), entity("sup3", 0x00B3),
    entity("supe", 0x2287), entity("szlig", 0x00DF), entity("tau", 0x03C4),
    entity("there4", 0x2234), entity("theta", 0x03B8), entity("thetasym", 0x03D1),
    entity("thinsp", 0x2009), entity("thorn", 0x00FE), entity("tilde", 0x02DC),
    entity("times", 0x00D7), entity("trade", 0x2122), entity("uArr", 0x21D1),
    entity("uacute", 0x00FA), entity("uarr", 0x2191), entity("ucirc", 0x00FB),
    entity("ugrave", 0x00F9), entity("uml", 0x00A8), entity("upsih", 0x03D2),
    entity("upsilon", 0x03C5), entity("uuml", 0x00FC), entity("weierp", 0x2118),
    entity("xi", 0x03BE), entity("yacute", 0x00FD), entity("yen", 0x00A5), entity("yuml", 0x00FF),
    entity("zeta", 0x03B6), entity("zwj", 0x200D), entity("zwnj", 0x200C),
};
// clang-format on

namespace {

constexpr const tCharEntityMap& rowOf(std::string_view name) {
  for (const auto& row : charEntitySet) {
    if (name == row.pEntity) return row;
  }
  throw "no such entity";  // makes the initialisation below ill-formed
}

// The row of the same name, so that both tables give one code point to a name.
constexpr tCharEntityMap unclosed(const char* name) {
  const tCharEntityMap& row = rowOf(name);
  return {name, row.uc, row.esclen};
}

}  // namespace

// clang-format off
constexpr tCharEntityMap charEntityIESet[100] = {
    unclosed("AElig"), unclosed("Aacute"), unclosed("Acirc"), unclosed("Agrave"), unclosed("Aring"),
    unclosed("Atilde"), unclosed("Auml"), unclosed("Ccedil"), unclosed("ETH"), unclosed("Eacute"),
    unclosed("Ecirc"), unclosed("Egrave"), unclosed("Euml"), unclosed("Iacute"), unclosed("Icirc"),
    unclosed("Igrave"), unclosed("Iuml"), unclosed("Ntilde"), unclosed("Oacute"), unclosed("Ocirc"),
    unclosed("Ograve"), unclosed("Oslash"), unclosed("Otilde"), unclosed("Ouml"), unclosed("THORN"),
    unclosed("Uacute"), unclosed("Ucirc"), unclosed("Ugrave"), unclosed("Uuml"), unclosed("Yacute"),
    unclosed("aacute"), unclosed("acirc"), unclosed("acute"), unclosed("aelig"), unclosed("agrave"),
    unclosed("amp"), unclosed("aring"), unclosed("atilde"), unclosed("auml"), unclosed("brvbar"),
    unclosed("ccedil"), unclosed("cedil"), unclosed("copy"), unclosed("curren"), unclosed("deg"),
    unclosed("divide"), unclosed("eacute"), unclosed("eacute"), unclosed("ecirc"),
    unclosed("ecirc"), unclosed("egrave"), unclosed("egrave"), unclosed("empty"), unclosed("eth"),
    unclosed("euml"), unclosed("frac12"), unclosed("frac14"), unclosed("frac34"), unclosed("gt"),
    unclosed("iacute"), unclosed("icirc"), unclosed("igrave"), unclosed("iquest"), unclosed("iuml"),
    unclosed("laquo"), unclosed("lt"), unclosed("macr"), unclosed("micro"), unclosed("middot"),
    unclosed("not"), unclosed("ntilde"), unclosed("oacute"), unclosed("ocirc"), unclosed("ograve"),
    unclosed("ordf"), unclosed("ordm"), unclosed("oslash"), unclosed("otilde"), unclosed("ouml"),
    unclosed("para"), unclosed("plusmn"), unclosed("quot"), unclosed("raquo"), unclosed("reg"),
    unclosed("sect"), unclosed("shy"), unclosed("sup1"), unclosed("sup2"), unclosed("sup3"),
    unclosed("szlig"), unclosed("thorn"), unclosed("times"), unclosed("uacute"), unclosed("ucirc"),
    unclosed("ugrave"), unclosed("uml"), unclosed("uuml"), unclosed("yacute"), unclosed("yen"),
    unclosed("yuml"),
};
// clang-format on

namespace {

template <size_t nameSize, size_t textSize>
constexpr tCharaEntityMap expansion(const char (&name)[nameSize], const char (&text)[textSize]) {
  return {name, text, nameSize - 1, textSize - 1};
}

}  // namespace

// clang-format off
constexpr tCharaEntityMap charaentitymaps[60] = {
    expansion("NBSP", " "), expansion("nbsp", " "),
    expansion("AMP", "&"), expansion("amp", "&"),
    expansion("LT", "<"), expansion("lt", "<"),
    expansion("GT", ">"), expansion("gt", ">"),
    expansion("QUOT", "\""), expansion("quot", "\""),
    expansion("COPY", "(C)"), expansion("copy", "(C)"),
    expansion("LDQUO", "\""), expansion("ldquo", "\""),
    expansion("RDQUO", "\""), expansion("rdquo", "\""),
    expansion("POUND", "$"), expansion("pound", "$"),
    expansion("CURREN", "O"), expansion("curren", "O"),
    expansion("YEN", "$"), expansion("yen", "$"),
    expansion("BRVBAR", "|"), expansion("brvbar", "|"),
    expansion("UML", "\""), expansion("uml", "\""),
    expansion("ORDF", "a"), expansion("ordf", "a"),
    expansion("NOT", "-"), expansion("not", "-"),
    expansion("DEG", "."), expansion("deg", "."),
    expansion("PLUSMN", "+/-"), expansion("plusmn", "+/-"),
    expansion("SUP2", "2"), expansion("sup2", "2"),
    expansion("SUP3", "3"), expansion("sup3", "3"),
    expansion("ACUTE", "'"), expansion("acute", "'"),
    expansion("MICRO", "u"), expansion("micro", "u"),
    expansion("PARA", "|"), expansion("para", "|"),
    expansion("MIDDOT", "."), expansion("middot", "."),
    expansion("CEDIL", "."), expansion("cedil", "."),
    expansion("SUP1", "1"), expansion("sup1", "1"),
    expansion("ORDM", "."), expansion("ordm", "."),
    expansion("FRAC14", "1/4"), expansion("frac14", "1/4"),
    expansion("FRAC12", "1/2"), expansion("frac12", "1/2"),
    expansion("IQUEST", "?"), expansion("iquest", "?"),
    expansion("TRADE", "TM"), expansion("trade", "TM"),
};
// clang-format on

namespace {

// What the binary searches rely on.
template <size_t size>
constexpr bool isSorted(const tCharEntityMap (&table)[size], bool mayRepeat) {
  for (size_t i = 1; i < size; ++i) {
    const std::string_view before = table[i - 1].pEntity;
    const std::string_view name = table[i].pEntity;
    if (before > name || (before == name && !mayRepeat)) return false;
  }
  return true;
}

template <size_t size>
constexpr bool hasLengths(const tCharEntityMap (&table)[size]) {
  for (const auto& row : table) {
    if (std::string_view(row.pEntity).size() != row.esclen) return false;
  }
  return true;
}

constexpr std::string_view nameOf(const tCharEntityMap& row) { return {row.pEntity, row.esclen}; }
constexpr std::string_view nameOf(const tCharaEntityMap& row) {
  return {row.pesc, static_cast<size_t>(row.esclen)};
}

// What makes the match by prefix unambiguous.
template <class Row, size_t size>
constexpr bool hasNoPrefixes(const Row (&table)[size]) {
  for (const Row& one : table) {
    const std::string_view name = nameOf(one);
    for (const Row& other : table) {
      if (name.size() < nameOf(other).size() && nameOf(other).starts_with(name)) return false;
    }
  }
  return true;
}

// The capitalised name stands at the even index, with the same replacement.
constexpr bool isPaired(const tCharaEntityMap (&table)[60]) {
  for (size_t i = 0; i < 60; i += 2) {
    const std::string_view capitals = table[i].pesc;
    const std::string_view small = table[i + 1].pesc;
    if (capitals.size() != small.size()) return false;
    for (size_t k = 0; k < small.size(); ++k) {
      const bool letter = small[k] >= 'a' && small[k] <= 'z';
      if (capitals[k] != (letter ? small[k] - 'a' + 'A' : small[k])) return false;
    }
    if (std::string_view(table[i].pdesc) != table[i + 1].pdesc) return false;
  }
  return true;
}

static_assert(isSorted(charEntitySet, false) && hasLengths(charEntitySet));
static_assert(isSorted(charEntityIESet, true) && hasLengths(charEntityIESet));
static_assert(hasNoPrefixes(charEntityIESet) && hasNoPrefixes(charaentitymaps));
static_assert(isPaired(charaentitymaps));

}  // namespace
