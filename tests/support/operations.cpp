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

using E = EncodingConvertor;
using std::placeholders::_1, std::placeholders::_2;

E& converter() { return *E::getInstance(); }
int narrow(long n) { return static_cast<int>(n); }
const gchar_t* units(const char* p) { return reinterpret_cast<const gchar_t*>(p); }
gchar_t* units(char* p) { return reinterpret_cast<gchar_t*>(p); }

// The shapes that operations of a kind have in common.

template <class Twin>
Operation stream(const char* name, Text text, int (E::*member)(const char*, int, char*, int),
                 Twin twin) {
  const auto call = [=](const char* src, long size, char* dest, long capacity) {
    return (converter().*member)(src, narrow(size), dest, narrow(capacity));
  };
  return {name, text, Capacity::any, 1, call, twin};
}

Operation ucs2(const char* name, bool doubleByte,
               int (E::*member)(const unsigned short*, int, char*, int)) {
  const auto call = [=](const char* src, long size, char* dest, long capacity) {
    return (converter().*member)(units(src), narrow(size / 2), dest, narrow(capacity));
  };
  return {name, Text::ucs2, Capacity::any, 1, call, std::bind(twinUcs2, _1, _2, doubleByte)};
}

Operation array(const std::string& name, Array kind, bool ifcase,
                int (E::*member)(const char*, gchar_t*, int, bool)) {
  const auto call = [=](const char* src, long, char* dest, long capacity) {
    return (converter().*member)(src, units(dest), narrow(capacity), ifcase);
  };
  return {
      name, Text::terminated, Capacity::any, 2, call, std::bind(twinArray, _1, _2, kind, ifcase)};
}

template <class Call>
Operation fold(const std::string& name, Fold kind, bool ifcase, Call function) {
  const bool counted = kind == Fold::counted || kind == Fold::page;
  const auto call = [=](const char* src, long size, char* dest, long capacity) {
    return function(src, size, dest, narrow(capacity), ifcase);
  };
  return {name, counted ? Text::bytes : Text::terminated, Capacity::any, 1,
          call, std::bind(twinFold, _1, _2, kind, ifcase)};
}

template <class Call, class Twin>
Operation ofUnits(const char* name, Call function, Twin twin) {
  const auto call = [=](const char* src, long size, char* dest, long) {
    return static_cast<long>(function(units(src), static_cast<size_t>(size / 2), units(dest)));
  };
  return {name, Text::units, Capacity::asSource, 2, call, twin};
}

template <class Call>
Operation entity(const char* name, Entity kind, Call function) {
  const auto call = [=](const char* src, long, char* dest, long) { return function(src, dest); };
  return {name, Text::names, Capacity::four, 1, call, std::bind(twinEntity, _1, _2, kind)};
}

std::vector<Operation> all() {
  std::vector<Operation> list = {
      stream("b52sgbk", Text::bytes, &E::b52sgbk, std::bind(twinPairs, _1, _2, Stream::big5)),
      stream("t2sgbk", Text::bytes, &E::t2sgbk, std::bind(twinPairs, _1, _2, Stream::gbk)),
      stream("utf82sgbk", Text::utf8, &E::utf82sgbk, twinUtf8),
      stream("hz2sgbk", Text::hz, &E::hz2sgbk, twinHz),
      stream("hzgb2gbk", Text::hz, &E::hzgb2gbk, twinHzToGbk),
      ucs2("uc2sgbk", false, &E::uc2sgbk),
      ucs2("uc2sgbk_DB", true, &E::uc2sgbk_DB),
      ofUnits(
          "trimgPunc counted",
          [](auto src, size_t length, auto dest) { return trimgPunc(src, length, dest); },
          std::bind(twinTrim, _1, _2, true)),
      ofUnits(
          "trimgPunc", [](auto src, size_t, auto dest) { return trimgPunc(src, dest); },
          std::bind(twinTrim, _1, _2, false)),
      ofUnits(
          "sbctoLowercase",
          [](auto src, size_t length, auto dest) {
            E::sbctoLowercase(std::copy_n(src, length, dest) - length);
            return 0;
          },
          twinLowered),
      entity("decodeCharEntity", Entity::code,
             [](auto src, auto) { return together(decodeCharEntity(src), 0); }),
      entity("decodeIrregularCharEntity", Entity::codeOfPrefix,
             [](auto src, auto) {
               size_t len = 99;
               const UINT16 code = decodeIrregularCharEntity(src, len);
               return together(code, static_cast<long>(len));
             }),
      entity("deEscHtml", Entity::text,
             [](auto src, auto dest) { return together(deEscHtml(src, dest), 0); }),
      entity("deEscHtml prefix", Entity::textOfPrefix,
             [](auto src, auto dest) {
               const char* pscan = src;
               const int result = deEscHtml(src, dest, pscan);
               return together(result, pscan - src);
             }),
  };
  for (const bool ifcase : {false, true}) {
    const std::string mode = ifcase ? " case" : "";
    for (const Operation& operation : {
             array("dbc2gchar" + mode, Array::dbc, ifcase, &E::dbc2gchar),
             array("t2sgchar" + mode, Array::t2s, ifcase, &E::t2sgchar),
             array("t2sgchar_cache" + mode, Array::cache, ifcase, &E::t2sgchar_cache),
             fold(
                 "sbc2dbc counted" + mode, Fold::counted, ifcase,
                 [](auto src, long size, auto... to) { return sbc2dbc(src, narrow(size), to...); }),
             fold("sbc2dbc" + mode, Fold::terminated, ifcase,
                  [](auto src, long, auto... to) { return E::sbc2dbc(src, to...); }),
             fold("gchar2big5" + mode, Fold::big5, ifcase,
                  [](auto src, long, auto... to) { return converter().gchar2big5(src, to...); }),
             fold("decodelibpage" + mode, Fold::page, ifcase,
                  [](auto src, long size, auto dest, int capacity, bool folds) {
                    return decodelibpage(src, static_cast<size_t>(size), dest,
                                         static_cast<size_t>(std::max(capacity, 0)), folds);
                  }),
         }) {
      list.push_back(operation);
    }
  }
  return list;
}

}  // namespace

std::string Operation::alphabet() const {
  switch (text) {
    case Text::utf8: return fromHex("41 0A 80 BF C3 E4 B8 AD EF BB F0 9F");
    case Text::hz: return fromHex("7E 7B 7D 0A 3C 56 00 80 B0 2A 21");
    case Text::ucs2: return fromHex("41 00 FF FE 4E 2D D8 3D A0");
    case Text::units: return fromHex("A1 A3 A6 EE EC FD B0 00 C1");
    case Text::names: return fromHex("61 6D 70 67 74 45 54 48 3B 00");
    default: return fromHex("41 20 09 0A 2E 00 40 80 81 A1 A3 A4 A6 A7 AB B0 E7 FD FE FF");
  }
}

std::string Operation::randomCharacter(std::mt19937& random) const {
  // An ideograph in GBK as in Big5.
  const auto lead = static_cast<char>(0xB0 + random() % 0x48);
  const auto trail = static_cast<char>(0xA1 + random() % 0x5E);
  const auto continuation = [&] { return static_cast<char>(0x80 + random() % 0x40); };
  switch (text) {
    case Text::utf8:
      return {static_cast<char>(0xE4 + random() % 6), continuation(), continuation()};
    case Text::hz:
      return {'~', '{', static_cast<char>(lead & 0x7F), static_cast<char>(trail & 0x7F), '~', '}'};
    case Text::ucs2: return {trail, static_cast<char>(0x4E + random() % 0x50)};
    case Text::names:
      return random() % 2 != 0 ? charEntitySet[random() % 252].pEntity
                               : charaentitymaps[random() % 60].pesc;
    default: return {lead, trail};
  }
}

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
  const bool terminated = operation.text == Text::terminated || operation.text == Text::names;
  const std::size_t bytes = src.size() + (terminated ? 1 : 0);
  const auto size = static_cast<std::size_t>(to.size > 0 ? to.size * operation.elementSize : 0);
  const bool behind = guard == Guard::behind;
  char* const text = behind ? input.last(bytes) : input.first();
  char* const dest = behind ? output.last(size) : output.first();
  std::memcpy(text, src.c_str(), bytes);
  std::memset(dest, to.fill, size);
  // For the memory sanitizer the destination holds nothing before the library writes there.
  __msan_poison(dest, size);
  const long result = operation.call(text, static_cast<long>(src.size()), dest, to.size);
  __msan_unpoison(dest, size);
  return {result, std::string(dest, size)};
}

std::string disagreement(const Operation& operation, const std::string& bytes, long capacity) {
  std::string src = bytes;
  if (operation.readsUnits()) src.resize(src.size() / 2 * 2);
  if (operation.text == Text::units) src += std::string(2, '\0');
  if (operation.capacity == Capacity::four) capacity = 4;
  if (operation.capacity == Capacity::asSource) capacity = static_cast<long>(src.size()) / 2;
  for (const Guard guard : {Guard::behind, Guard::before}) {
    const Destination to{capacity, guard == Guard::behind ? '\x5A' : '\xC1'};
    const Outcome expected = operation.twin(src, to);
    const Outcome actual = run(operation, src, to, guard);
    if (actual == expected) continue;
    return operation.name + ": " + toHex(src) + " into " + std::to_string(to.size) + "\n  gave " +
           std::to_string(actual.result) + ": " + toHex(actual.dest) + "\nand not " +
           std::to_string(expected.result) + ": " + toHex(expected.dest);
  }
  return {};
}

}  // namespace sgbk_test
