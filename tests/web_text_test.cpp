// The contents of the entity tables, against a list by other makers where there is one, and the
// functions that tests/agreement_test.cpp does not reach.

#include <gtest/gtest.h>
#include <libxml/HTMLparser.h>
#include <sgbk/support.h>

#include <set>
#include <string>

namespace {

TEST(Entities, HaveTheCodePointsThatLibxmlGivesThem) {
  for (const auto& entity : charEntitySet) {
    const auto* const name = reinterpret_cast<const xmlChar*>(entity.pEntity);
    const htmlEntityDesc* const known = htmlEntityLookup(name);
    EXPECT_TRUE(known != nullptr && known->value == entity.uc) << entity.pEntity;
  }
}

TEST(Entities, WithoutSemicolonAreThoseOfLatin1ButFour) {
  std::multiset<std::string> expected = {"empty", "eacute", "ecirc", "egrave"};
  for (const auto& entity : charEntitySet) {
    if (entity.uc <= 0xFF) expected.insert(entity.pEntity);
  }
  for (const char* const missing : {"nbsp", "cent", "pound", "iexcl"}) expected.erase(missing);
  std::multiset<std::string> names;
  for (const auto& entity : charEntityIESet) names.insert(entity.pEntity);
  EXPECT_EQ(names, expected);
}

TEST(Entities, HaveTheseReplacements) {
  std::string lines;
  for (const auto& entity : charaentitymaps) {
    if (entity.pesc[0] >= 'a') lines += std::string(entity.pesc) + " " + entity.pdesc + "\n";
  }
  EXPECT_EQ(lines,
            "nbsp  \namp &\nlt <\ngt >\nquot \"\ncopy (C)\nldquo \"\nrdquo \"\npound $\ncurren O\n"
            "yen $\nbrvbar |\numl \"\nordf a\nnot -\ndeg .\nplusmn +/-\nsup2 2\nsup3 3\nacute '\n"
            "micro u\npara |\nmiddot .\ncedil .\nsup1 1\nordm .\nfrac14 1/4\nfrac12 1/2\niquest ?\n"
            "trade TM\n");
}

TEST(WebText, NoTextIsNotRead) {
  const char* pscan = "amp";
  EXPECT_EQ(deEscHtml(nullptr, nullptr, pscan), 0);
  gchar_t unit = 7;
  EXPECT_EQ(trimgPunc(nullptr, 0, &unit), 1u);
  EXPECT_EQ(unit, 0);
}

TEST(Affixes, AgreeWithTheStandardLibrary) {
  const char* const strings[] = {nullptr, "",   "a",  "b",      "ab",
                                 "abc",   "bc", "Bc", "abcabc", "\xB0\xA1"};
  for (const char* const one : strings) {
    for (const char* const other : strings) {
      const bool both = one != nullptr && other != nullptr;
      EXPECT_EQ(startsWith(one, other), both && std::string(one).starts_with(other));
      EXPECT_EQ(endsWith(one, other), both && std::string(one).ends_with(other));
    }
  }
}

}  // namespace
