#include "support/operations.h"

#include <cstdint>

#include "support/guarded_buffer.h"

namespace sgbk_test {
namespace {

EncodingConvertor& converter() { return *EncodingConvertor::getInstance(); }
int narrow(long n) { return static_cast<int>(n); }
const gchar_t* units(const char* p) { return reinterpret_cast<const gchar_t*>(p); }
gchar_t* units(char* p) { return reinterpret_cast<gchar_t*>(p); }

constexpr char kPairs[] = "41 20 0A 00 80 81 A1 A7 FF FD A3 B0 A4 40";
constexpr char kUtf8[] = "41 0A 80 BF C3 E4 B8 AD EF BB F0 9F";
constexpr char kHz[] = "7E 7B 7D 0A 3C 56 00 80 B0 2A 21";
constexpr char kUcs2[] = "41 00 FF FE 4E 2D D8 3D A0";
constexpr char kFold[] = "41 7A 20 09 2E 00 80 81 A1 A3 A4 A6 AB E7 FD FF B0 C1";
constexpr char kTrim[] = "A1 A3 EE FD B0 00 C1 A9 7F";

using Stream4 = int (EncodingConvertor::*)(const char*, int, char*, int);
using Units4 = int (EncodingConvertor::*)(const unsigned short*, int, char*, int);
using Array4 = int (EncodingConvertor::*)(const char*, gchar_t*, int, bool);

template <class Twin>
Operation stream(const char* name, const char* alphabet, Stream4 member, Twin twin) {
  return {name,
          Source::bytes,
          1,
          true,
          alphabet,
          [=](const char* src, long size, char* dest, long capacity) {
            return (converter().*member)(src, narrow(size), dest, narrow(capacity));
          },
          twin};
}

Operation ucs2(const char* name, Units4 member, bool doubleByte) {
  return {name,
          Source::units,
          1,
          true,
          kUcs2,
          [=](const char* src, long size, char* dest, long capacity) {
            return (converter().*member)(units(src), narrow(size / 2), dest, narrow(capacity));
          },
          [=](const std::string& src, Destination to) { return twinUcs2(doubleByte, src, to); }};
}

Operation array(const char* name, Array4 member, Array kind, bool ifcase) {
  return {name,
          Source::terminated,
          2,
          true,
          kPairs,
          [=](const char* src, long, char* dest, long capacity) {
            return (converter().*member)(src, units(dest), narrow(capacity), ifcase);
          },
          [=](const std::string& src, Destination to) { return twinArray(kind, src, to, ifcase); }};
}

template <class Call>
Operation fold(const char* name, Source source, Fold kind, bool ifcase, Call call) {
  return {name,
          source,
          1,
          true,
          kFold,
          [=](const char* src, long size, char* dest, long capacity) {
            return call(src, size, dest, narrow(capacity), ifcase);
          },
          [=](const std::string& src, Destination to) { return twinFold(kind, src, to, ifcase); }};
}

std::vector<Operation> all() {
  using E = EncodingConvertor;
  std::vector<Operation> list = {
      stream("b52sgbk", kPairs, &E::b52sgbk,
             [](const std::string& s, Destination to) { return twinPairs(Stream::big5, s, to); }),
      stream("t2sgbk", kPairs, &E::t2sgbk,
             [](const std::string& s, Destination to) { return twinPairs(Stream::gbk, s, to); }),
      stream("utf82sgbk", kUtf8, &E::utf82sgbk, twinUtf8),
      stream("hz2sgbk", kHz, &E::hz2sgbk, twinHz),
      stream("hzgb2gbk", kHz, &E::hzgb2gbk, twinHzToGbk),
      ucs2("uc2sgbk", &E::uc2sgbk, false),
      ucs2("uc2sgbk_DB", &E::uc2sgbk_DB, true),
  };
  const char* const names[][2] = {{"dbc2gchar", "dbc2gchar case"},
                                  {"t2sgchar", "t2sgchar case"},
                                  {"t2sgchar_cache", "t2sgchar_cache case"},
                                  {"sbc2dbc counted", "sbc2dbc counted case"},
                                  {"sbc2dbc", "sbc2dbc case"},
                                  {"gchar2big5", "gchar2big5 case"},
                                  {"decodelibpage", "decodelibpage case"}};
  for (const bool ifcase : {false, true}) {
    list.push_back(array(names[0][ifcase], &E::dbc2gchar, Array::dbc, ifcase));
    list.push_back(array(names[1][ifcase], &E::t2sgchar, Array::t2s, ifcase));
    list.push_back(array(names[2][ifcase], &E::t2sgchar_cache, Array::cache, ifcase));
    list.push_back(fold(names[3][ifcase], Source::bytes, Fold::counted, ifcase,
                        [](const char* src, long size, char* dest, int capacity, bool folds) {
                          return sbc2dbc(src, narrow(size), dest, capacity, folds);
                        }));
    list.push_back(fold(names[4][ifcase], Source::terminated, Fold::terminated, ifcase,
                        [](const char* src, long, char* dest, int capacity, bool folds) {
                          return E::sbc2dbc(src, dest, capacity, folds);
                        }));
    list.push_back(fold(names[5][ifcase], Source::terminated, Fold::big5, ifcase,
                        [](const char* src, long, char* dest, int capacity, bool folds) {
                          return converter().gchar2big5(src, dest, capacity, folds);
                        }));
    list.push_back({names[6][ifcase], Source::bytes, 1, true, kFold,
                    [=](const char* src, long size, char* dest, long capacity) {
                      return decodelibpage(src, static_cast<size_t>(size), dest,
                                           static_cast<size_t>(capacity < 0 ? 0 : capacity),
                                           ifcase);
                    },
                    [=](const std::string& s, Destination to) { return twinPage(s, to, ifcase); }});
  }
  for (const bool counted : {false, true}) {
    list.push_back(
        {counted ? "trimgPunc counted" : "trimgPunc", Source::terminatedUnits, 1, false, kTrim,
         [=](const char* src, long size, char* dest, long) {
           const auto length = static_cast<size_t>(size / 2);
           return static_cast<long>(counted ? trimgPunc(units(src), length, units(dest))
                                            : trimgPunc(units(src), units(dest)));
         },
         [=](const std::string& s, Destination to) { return twinTrim(counted, s, to); }});
  }
  return list;
}

}  // namespace

std::span<const Operation> operations() {
  static const std::vector<Operation> list = all();
  return list;
}

Outcome run(const Operation& operation, const std::string& src, Destination to) {
  constexpr std::size_t kMost = 1 << 20;
  static const GuardedBuffer input(kMost);
  static const GuardedBuffer output(4 * kMost);
  std::string text = src;
  if (operation.source == Source::terminated) text += '\0';
  const auto bytes = static_cast<std::size_t>(to.size > 0 ? to.size * operation.elementSize : 0);
  char* const dest = output.last(bytes);
  std::memset(dest, to.fill, bytes);
  const long result =
      operation.call(input.holding(text), static_cast<long>(src.size()), dest, to.size);
  return {result, std::string(dest, bytes)};
}

}  // namespace sgbk_test
