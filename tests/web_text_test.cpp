// Entities against a list by other makers, and the functions over them.

#include <gtest/gtest.h>
#include <libxml/HTMLparser.h>
#include <sgbk/support.h>

#include <cstring>
#include <string>

namespace {

TEST(Entities, HaveTheCodePointsThatLibxmlGivesThem) {
  for (const auto& entity : charEntitySet) {
    const auto* const name = reinterpret_cast<const xmlChar*>(entity.pEntity);
    const htmlEntityDesc* const known = htmlEntityLookup(name);
    ASSERT_NE(known, nullptr) << entity.pEntity;
    EXPECT_EQ(entity.uc, known->value) << entity.pEntity;
    EXPECT_EQ(decodeCharEntity(entity.pEntity), entity.uc) << entity.pEntity;
  }
  EXPECT_EQ(decodeCharEntity("lang"), 0x2329);
  for (const char* const unknown : {"", "AMP", "amp;", "zzz", "A", "#38", "apos"}) {
    EXPECT_EQ(decodeCharEntity(unknown), 0xFFFE) << unknown;
  }
}

TEST(Entities, AreRecognisedWithoutSemicolonByTheirBeginning) {
  for (const auto& entity : charEntityIESet) {
    for (const char* const behind : {"", ";", "x", "\xA3\xBB"}) {
      size_t len = 99;
      EXPECT_EQ(decodeIrregularCharEntity((entity.pEntity + std::string(behind)).c_str(), len),
                decodeCharEntity(entity.pEntity));
      EXPECT_EQ(len, entity.esclen);
    }
  }
  for (const char* const unknown : {"", "g", "nbsp", "cent", "pound;", "Amp", "&amp"}) {
    size_t len = 99;
    EXPECT_EQ(decodeIrregularCharEntity(unknown, len), 0xFFFE) << unknown;
    EXPECT_EQ(len, 0u) << unknown;
  }
}

TEST(Entities, ExpandToAscii) {
  const struct {
    const char* text;
    const char* whole;   // the expansion of exactly this name
    const char* prefix;  // of a name that begins the text
    long taken;
  } rows[] = {{"trade", "TM", "TM", 5}, {"COPY", "(C)", "(C)", 4}, {"Trade", "T", "", 0},
              {"amp;", "a", "&", 3},    {"notin;", "n", "-", 3},   {"nbsp;x", "n", " ", 4},
              {"xyz", "x", "", 0},      {"", "", "", 0},           {"frac12", "1/2", "1/2", 6}};
  for (const auto& row : rows) {
    char out[5] = "####";
    const std::string whole = row.whole;
    EXPECT_EQ(deEscHtml(row.text, out), whole.empty() ? 1 : static_cast<int>(whole.size()));
    EXPECT_EQ(out, whole) << row.text;
    char untouched[5] = "####";
    const char* pscan = row.text;
    EXPECT_EQ(deEscHtml(row.text, untouched, pscan), static_cast<int>(std::strlen(row.prefix)));
    EXPECT_EQ(pscan - row.text, row.taken);
    EXPECT_STREQ(untouched, row.taken != 0 ? row.prefix : "####") << row.text;
  }
}

TEST(Affixes, AgreeWithTheStandardLibrary) {
  const char* const strings[] = {"", "a", "b", "ab", "abc", "bc", "Bc", "abcabc", "\xB0\xA1"};
  for (const char* const one : strings) {
    for (const char* const other : strings) {
      EXPECT_EQ(startsWith(one, other), std::string(one).starts_with(other)) << one << other;
      EXPECT_EQ(endsWith(one, other), std::string(one).ends_with(other)) << one << other;
    }
    EXPECT_FALSE(startsWith(one, nullptr) || startsWith(nullptr, one));
    EXPECT_FALSE(endsWith(one, nullptr) || endsWith(nullptr, one));
  }
}

}  // namespace
