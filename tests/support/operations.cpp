#include "support/operations.h"

#include <cstring>

#include "support/guarded_buffer.h"
#include "support/hex.h"

#ifdef SGBK_MEMORY_SANITIZER
#include <sanitizer/msan_interface.h>
#else
#define __msan_poison(start, size) static_cast<void>(start)
#define __msan_unpoison(start, size) static_cast<void>(start)
#endif

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
constexpr char kTrim[] = "A1 A3 A6 EE EC FD B0 00 C1";
constexpr char kNames[] = "61 6D 70 67 74 45 54 48 3B 00";

using Stream4 = int (EncodingConvertor::*)(const char*, int, char*, int);
using Units4 = int (EncodingConvertor::*)(const unsigned short*, int, char*, int);
using Array4 = int (EncodingConvertor::*)(const char*, gchar_t*, int, bool);

template <class Twin>
Operation stream(const char* name, const char* alphabet, Stream4 member, Twin twin) {
  return {name,
          Source::bytes,
          1,
          Capacity::any,
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
          Capacity::any,
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
          Capacity::any,
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
          Capacity::any,
          kFold,
          [=](const char* src, long size, char* dest, long capacity) {
            return call(src, size, dest, narrow(capacity), ifcase);
          },
          [=](const std::string& src, Destination to) { return twinFold(kind, src, to, ifcase); }};
}

template <class Call>
Operation entity(const char* name, Entity kind, Call call) {
  return {name,
          Source::terminated,
          1,
          Capacity::four,
          kNames,
          [=](const char* src, long, char* dest, long) { return call(src, dest); },
          [=](const std::string& src, Destination to) { return twinEntity(kind, src, to); }};
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
    list.push_back({names[6][ifcase], Source::bytes, 1, Capacity::any, kFold,
                    [=](const char* src, long size, char* dest, long capacity) {
                      return decodelibpage(src, static_cast<size_t>(size), dest,
                                           static_cast<size_t>(capacity < 0 ? 0 : capacity),
                                           ifcase);
                    },
                    [=](const std::string& s, Destination to) { return twinPage(s, to, ifcase); }});
  }
  for (const bool counted : {false, true}) {
    list.push_back(
        {counted ? "trimgPunc counted" : "trimgPunc", Source::terminatedUnits, 2,
         Capacity::asSource, kTrim,
         [=](const char* src, long size, char* dest, long) {
           const auto length = static_cast<size_t>(size / 2);
           return static_cast<long>(counted ? trimgPunc(units(src), length, units(dest))
                                            : trimgPunc(units(src), units(dest)));
         },
         [=](const std::string& s, Destination to) { return twinTrim(counted, s, to); }});
  }
  list.push_back({"sbctoLowercase", Source::terminatedUnits, 2, Capacity::asSource, kTrim,
                  [](const char* src, long size, char* dest, long) {
                    std::memcpy(dest, src, static_cast<size_t>(size));
                    E::sbctoLowercase(units(dest));
                    return 0L;
                  },
                  twinLowered});
  list.push_back(entity("decodeCharEntity", Entity::code,
                        [](const char* s, char*) -> long { return decodeCharEntity(s); }));
  list.push_back(
      entity("decodeIrregularCharEntity", Entity::codeOfPrefix, [](const char* src, char*) {
        size_t len = 99;
        const UINT16 code = decodeIrregularCharEntity(src, len);
        return together(code, static_cast<long>(len));
      }));
  list.push_back(entity("deEscHtml", Entity::text,
                        [](const char* src, char* dest) -> long { return deEscHtml(src, dest); }));
  list.push_back(entity("deEscHtml prefix", Entity::textOfPrefix, [](const char* src, char* dest) {
    const char* pscan = src;
    const int result = deEscHtml(src, dest, pscan);
    return together(result, pscan - src);
  }));
  return list;
}

}  // namespace

std::span<const Operation> operations() {
  static const std::vector<Operation> list = all();
  return list;
}

const Operation& operationNamed(const std::string& name) {
  for (const Operation& operation : operations()) {
    if (name == operation.name) return operation;
  }
  throw std::invalid_argument("no operation " + name);
}

Outcome run(const Operation& operation, const std::string& src, Destination to, Guard guard) {
  constexpr std::size_t kMost = 1 << 20;
  static const GuardedBuffer input(kMost);
  static const GuardedBuffer output(4 * kMost);
  const std::size_t terminator = operation.source == Source::terminated ? 1 : 0;
  const auto size = static_cast<std::size_t>(to.size > 0 ? to.size * operation.elementSize : 0);
  const bool behind = guard == Guard::behind;
  char* const text = behind ? input.last(src.size() + terminator) : input.first();
  char* const dest = behind ? output.last(size) : output.first();
  std::memcpy(text, src.c_str(), src.size() + terminator);
  std::memset(dest, to.fill, size);
  // For the memory sanitizer the destination holds nothing before the library writes there.
  __msan_poison(dest, size);
  const long result = operation.call(text, static_cast<long>(src.size()), dest, to.size);
  __msan_unpoison(dest, size);
  return {result, std::string(dest, size)};
}

std::string disagreement(const Operation& operation, const std::string& bytes, long capacity) {
  std::string src = bytes;
  if (operation.source == Source::units || operation.source == Source::terminatedUnits) {
    src.resize(src.size() / 2 * 2);
    if (operation.source == Source::terminatedUnits) src += std::string(2, '\0');
  }
  if (operation.capacity == Capacity::four) capacity = 4;
  if (operation.capacity == Capacity::asSource) {
    capacity = static_cast<long>(src.size()) / operation.elementSize;
  }
  for (const Guard guard : {Guard::behind, Guard::before}) {
    const Destination to{capacity, guard == Guard::behind ? '\x5A' : '\0'};
    const Outcome expected = operation.twin(src, to);
    const Outcome actual = run(operation, src, to, guard);
    if (actual == expected) continue;
    return std::string(operation.name) + ": " + toHex(src) + " into " + std::to_string(to.size) +
           "\n  gave " + std::to_string(actual.result) + ": " + toHex(actual.dest) + "\nand not " +
           std::to_string(expected.result) + ": " + toHex(expected.dest);
  }
  return {};
}

}  // namespace sgbk_test
