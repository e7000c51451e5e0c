// The cases where a conversion is easily misread, a row each. tests/agreement_test.cpp covers the
// rest.

#include <gtest/gtest.h>

#include "support/hex.h"
#include "support/operations.h"

namespace sgbk_test {
namespace {

struct Row {
  const char* operation;
  const char* why;
  const char* src;
  long capacity;
  long result;
  const char* dest;  // its first bytes, a terminator included
};

constexpr Row kRows[] = {
    {"t2sgbk", "a last odd byte of room stays unused", "61 62 63", 5, 4, "A3 E1 A3 E2 5A"},
    {"t2sgbk", "80 and FF are dropped one at a time", "80 41 FF", 9, 2, "A3 C1 5A"},
    {"t2sgbk", "a lead byte takes the line end as its trail byte", "B0 0A 41", 9, 4, "A1 A1 A3 C1"},
    {"t2sgbk", "its own line end is a user-defined code", "FD A3 0A", 9, 4, "A1 A1 FD A3"},
    {"t2sgbk", "NUL and 01 keep values of their own", "00 01", 9, 4, "00 00 01 20 5A"},
    {"t2sgbk", "a lead byte alone at the end has no character", "B0 A1 C4", 9, 2, "B0 A1 5A"},
    {"b52sgbk", "a traditional character comes out simplified", "B0 EA", 9, 2, "B9 FA"},
    {"uc2sgbk", "an unmapped unit needs no room", "41 00 42 00 00 D8 43 00", 3, 3, "41 42 43"},
    {"uc2sgbk", "two bytes do not fit into one", "41 00 42 00 2D 4E 43 00", 3, 2, "41 42 5A"},
    {"uc2sgbk_DB", "the byte-order mark goes wherever it stands", "41 00 FF FE 42 00 FF FE", 9, 4,
     "A3 C1 A3 C2 5A"},
    {"utf82sgbk", "a bad second byte takes both letters with it", "E4 41 42", 9, 0, "5A"},
    {"utf82sgbk", "a two-byte lead takes whatever follows", "C3 41", 9, 0, "5A"},
    {"utf82sgbk", "a character cut off by a whole one", "E4 B8 E4 B8 AD", 9, 2, "D6 D0 5A"},
    {"utf82sgbk", "ASCII before two continuation bytes lost its top bit", "64 B8 AD", 9, 2,
     "D6 D0"},
    {"utf82sgbk", "a stray byte is dropped before any ASCII", "BF 41", 9, 2, "A3 C1 5A"},
    {"utf82sgbk", "and Latin-1 behind it, even unmapped", "41 80 42", 9, 6, "A3 C1 3F 3F A3 C2"},
    {"utf82sgbk", "ASCII inside a group does not count as seen", "C3 41 BF", 9, 0, "5A"},
    {"hz2sgbk", "a tilde and an unknown byte are dropped", "7E 78 41", 9, 2, "A3 C1 5A"},
    {"hzgb2gbk", "or kept", "7E 78 41", 9, 3, "7E 78 41"},
    {"hz2sgbk", "the same in GB mode", "7E 7B 3C 56 7E 7E 7D", 9, 2, "BC D6 5A"},
    {"hzgb2gbk", "where the second tilde may close it", "7E 7B 3C 56 7E 7E 7D 41", 9, 4,
     "BC D6 7E 41"},
    {"hzgb2gbk", "a pair may end in a line end or a tilde", "7E 7B 3C 0A 3C 7E 41 41", 9, 6,
     "BC 8A BC FE C1 C1"},
    {"hzgb2gbk", "half a character may be the last byte", "61 7E 7B 3C 56 7E 7D", 2, 2, "61 BC"},
    {"hz2sgbk", "8-bit pairs in ASCII mode are copied, undefined ones too", "AA A1 7E 7D", 9, 2,
     "AA A1 5A"},
    {"t2sgchar case", "five characters and the terminator", "41 20 62 0D 0A", 6, 5,
     "A3 E1 A1 A1 A3 E2 FD A3 FD A3 00 00"},
    {"t2sgchar", "no room for the terminator", "41 20 62 0D 0A", 5, -1,
     "A3 C1 A1 A1 A3 E2 FD A3 FD A3"},
    {"t2sgchar", "a full array fails on a byte that gives nothing", "41 80", 1, -1, "A3 C1"},
    {"t2sgchar_cache", "separators go where a character starts", "41 FD A1 42 B0 FD A1 41", 9, 4,
     "A3 C1 A3 C2"},
    {"dbc2gchar", "a lead byte does not run over the terminator", "B0", 4, 1, "B0 00 00 00 5A"},
    {"dbc2gchar case", "folding follows the mapping", "A6 A1 AA DC 41", 9, 3,
     "A6 C1 A1 A1 A3 E1 00 00"},
    {"sbc2dbc", "the pair tests come before the single byte", "78 20 20 09 79", 9, 4,
     "78 20 09 79 00 5A"},
    {"sbc2dbc counted", "a NUL is a character of counted text", "61 80 62 00 63", 9, 4,
     "61 62 00 63 00 5A"},
    {"sbc2dbc counted", "a lead byte alone at the end is dropped", "61 B0", 9, 1, "61 00 5A"},
    {"sbc2dbc", "the end is seen before the lack of room", "61 62 63", 4, 3, "61 62 63 00"},
    {"sbc2dbc", "the blank before a cut word stays", "68 65 6C 6C 6F 20 77 6F 72 6C 64", 11, 9,
     "68 65 6C 6C 6F 20 2E 2E 2E 00"},
    {"sbc2dbc", "no more than 16 bytes of it go",
     "41 61 61 61 61 61 61 61 61 61 61 61 61 61 61 61 61 61 61 61 61 61", 22, 5,
     "41 61 2E 2E 2E 00"},
    {"sbc2dbc", "dots of the text go before ours", "57 61 69 74 2E 2E 2E 2E 20 6D", 9, 7,
     "57 61 69 74 2E 2E 2E 00"},
    {"sbc2dbc", "a small buffer gets the dots that fit", "B0 A1 B0 A1", 3, 2, "2E 2E 00"},
    {"sbc2dbc", "or none", "61 62", 1, 0, "00"},
    {"gchar2big5", "the yen sign is a dollar here", "A3 A4 A1 E7 A1 AB", 9, 3, "24 24 7E 00"},
    {"gchar2big5", "a cut already when two bytes might not fit", "61 62 63 64 65 66 67", 8, 4,
     "61 2E 2E 2E 00"},
    {"gchar2big5 case", "Greek keeps its case", "A6 A1 A3 C1", 9, 3, "A3 44 61 00"},
    {"decodelibpage", "full-width markup only", "A3 BC 3C A3 A6", 14, 10,
     "26 6C 74 3B 3C 26 61 6D 70 3B 00"},
    {"decodelibpage", "no text of destsize - 2 bytes", "61 62", 4, -1, "61 62 5A 5A"},
    {"decodelibpage", "a reference at the limit", "A3 A6", 7, -1, "26 61 6D 70 3B 5A 5A"},
    {"decodelibpage", "the separator goes, the tab stays", "78 FE FF 79 20 09", 9, 4,
     "78 79 20 09 00"},
    {"decodelibpage", "no room to reserve two bytes in", "", 1, -1, "5A"},
    {"trimgPunc", "a run of nine marks and blanks shrinks to one",
     "B0 A1 A1 A3 A1 A3 A1 A3 A1 A3 A1 A3 A1 A3 A1 A3 A1 A1 A1 A3 B0 A2 00 00", 0, 4,
     "B0 A1 A1 A3 B0 A2 00 00 5A"},
    {"trimgPunc", "the line end splits a run of marks", "B0 A1 A1 A3 FD A3 A1 A3 B0 A2 00 00", 0, 6,
     "B0 A1 A1 A3 FD A3 A1 A3 B0 A2 00 00"},
    {"trimgPunc", "an unassigned code among the shapes is a blank, which does not",
     "B0 A1 A1 A3 A1 A3 A1 A3 A1 A3 A6 EC A1 A3 A1 A3 A1 A3 A1 A3 B0 A2 00 00", 0, 4,
     "B0 A1 A1 A3 B0 A2 00 00 5A"},
    {"trimgPunc counted", "an inner zero is dropped and splits runs",
     "B0 A1 A1 A1 00 00 A1 A1 B0 A2 00 00", 0, 5, "B0 A1 A1 A1 A1 A1 B0 A2 00 00 5A"},
};

TEST(TellingCases, ComeOutAsWritten) {
  ASSERT_EQ(EncodingConvertor::initializeInstance(nullptr), 0);
  for (const Row& row : kRows) {
    const Operation& operation = operationNamed(row.operation);
    const std::string src = fromHex(row.src);
    const long capacity = operation.capacity == Capacity::any
                              ? row.capacity
                              : static_cast<long>(src.size()) / operation.elementSize;
    const Outcome outcome = run(operation, src, {capacity, '\x5A'});
    EXPECT_EQ(outcome.result, row.result) << row.operation << ": " << row.why;
    const std::string expected = row.dest;
    EXPECT_EQ(toHex(outcome.dest).substr(0, expected.size()), expected)
        << row.operation << ": " << row.why;
  }
}

TEST(TellingCases, NoInputIsRead) {
  EncodingConvertor& converter = *EncodingConvertor::getInstance();
  const char* const nowhere = nullptr;
  char dest[8] = {};
  for (const int none : {0, -1}) {
    EXPECT_EQ(converter.t2sgbk(nowhere, none, dest, 8), 0);
    EXPECT_EQ(converter.utf82sgbk(nowhere, none, dest, 8), 0);
    EXPECT_EQ(converter.uc2sgbk(nullptr, none, dest, 8), 0);
    EXPECT_EQ(converter.uc2sgbk_DB(nullptr, none, dest, 8), 0);
    EXPECT_EQ(converter.hz2sgbk(nowhere, none, dest, 8), 0);
    EXPECT_EQ(converter.hzgb2gbk(nowhere, none, dest, 8), 0);
    EXPECT_EQ(sbc2dbc(nowhere, none, dest, 8, false), 0);
  }
  gchar_t unit = 7;
  EXPECT_EQ(trimgPunc(nullptr, 0, &unit), 1u);
  EXPECT_EQ(unit, 0);
}

}  // namespace
}  // namespace sgbk_test
