#include "support/operations.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

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

E& converter() { return *E::getInstance(); }
const gchar_t* units(const char* p) { return reinterpret_cast<const gchar_t*>(p); }
gchar_t* units(char* p) { return reinterpret_cast<gchar_t*>(p); }

auto ucs2(int (E::*member)(const unsigned short*, int, char*, int)) {
  return [=](const char* src, int size, auto... to) {
    return (converter().*member)(units(src), size / 2, to...);
  };
}

auto array(int (E::*member)(const char*, gchar_t*, int, bool), bool ifcase) {
  return [=](const char* src, int, char* dest, int capacity) {
    return (converter().*member)(src, units(dest), capacity, ifcase);
  };
}

template <class Function>
auto ofUnits(Function function) {
  return [=](const char* src, int size, char* dest, int) {
    return static_cast<long>(function(units(src), static_cast<size_t>(size / 2), units(dest)));
  };
}

std::vector<Operation> all() {
  std::vector<Operation> list = {
      {"b52sgbk", Text::bytes, [](auto... of) { return converter().b52sgbk(of...); }},
      {"t2sgbk", Text::bytes, [](auto... of) { return converter().t2sgbk(of...); }},
      {"utf82sgbk", Text::utf8, [](auto... of) { return converter().utf82sgbk(of...); }},
      {"hz2sgbk", Text::hz, [](auto... of) { return converter().hz2sgbk(of...); }},
      {"hzgb2gbk", Text::hz, [](auto... of) { return converter().hzgb2gbk(of...); }},
      {"uc2sgbk", Text::ucs2, ucs2(&E::uc2sgbk)},
      {"uc2sgbk_DB", Text::ucs2, ucs2(&E::uc2sgbk_DB)},
      {"trimgPunc counted", Text::units, ofUnits([](auto... of) { return trimgPunc(of...); })},
      {"trimgPunc", Text::units,
       ofUnits([](auto src, size_t, auto dest) { return trimgPunc(src, dest); })},
      {"sbctoLowercase", Text::units, ofUnits([](auto src, size_t length, auto dest) {
         E::sbctoLowercase(std::copy_n(src, length, dest) - length);
         return 0;
       })},
      {"decodeCharEntity", Text::names,
       [](auto src, auto...) { return together(decodeCharEntity(src), 0); }},
      {"decodeIrregularCharEntity", Text::names,
       [](auto src, auto...) {
         size_t len = 99;
         const UINT16 code = decodeIrregularCharEntity(src, len);
         return together(code, static_cast<long>(len));
       }},
      {"deEscHtml", Text::names,
       [](auto src, int, auto dest, int) { return together(deEscHtml(src, dest), 0); }},
      {"deEscHtml prefix", Text::names,
       [](auto src, int, auto dest, int) {
         const char* pscan = src;
         const int result = deEscHtml(src, dest, pscan);
         return together(result, pscan - src);
       }},
  };
  for (const bool ifcase : {false, true}) {
    const std::string mode = ifcase ? " case" : "";
    const std::vector<Operation> folding = {
        {"dbc2gchar" + mode, Text::array, array(&E::dbc2gchar, ifcase)},
        {"t2sgchar" + mode, Text::array, array(&E::t2sgchar, ifcase)},
        {"t2sgchar_cache" + mode, Text::array, array(&E::t2sgchar_cache, ifcase)},
        {"sbc2dbc counted" + mode, Text::bytes, [=](auto... of) { return sbc2dbc(of..., ifcase); }},
        {"sbc2dbc" + mode, Text::terminated,
         [=](auto src, int, auto... to) { return E::sbc2dbc(src, to..., ifcase); }},
        {"gchar2big5" + mode, Text::terminated,
         [=](auto src, int, auto... to) { return converter().gchar2big5(src, to..., ifcase); }},
        {"decodelibpage" + mode, Text::bytes,
         [=](auto src, int size, auto dest, int capacity) {
           return decodelibpage(src, static_cast<size_t>(size), dest,
                                static_cast<size_t>(std::max(capacity, 0)), ifcase);
         }},
    };
    list.insert(list.end(), folding.begin(), folding.end());
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

const std::vector<Operation>& operations() {
  static const std::vector<Operation> list = all();
  return list;
}

const Operation& operationNamed(const std::string& name) {
  const auto found = std::ranges::find(operations(), name, &Operation::name);
  return found != operations().end() ? *found : throw std::invalid_argument("no operation " + name);
}

Outcome run(const Operation& operation, const std::string& src, Destination to) {
  static thread_local const GuardedBuffer input(1 << 20);
  static thread_local const GuardedBuffer output(1 << 22);
  const std::size_t bytes = src.size() + (operation.isTerminated() ? 1 : 0);
  const auto size = static_cast<std::size_t>(std::max(to.size, 0) * operation.elementSize());
  char* const text = input.room(bytes, to.isAtFirst);
  char* const dest = output.room(size, to.isAtFirst);
  std::memcpy(text, src.c_str(), bytes);
  std::memset(dest, to.fill, size);
  // For the memory sanitizer the destination holds nothing before the library writes there.
  __msan_poison(dest, size);
  // No text at all is not read.
  const char* const given = bytes == 0 ? nullptr : text;
  const long result = operation.call(given, static_cast<int>(src.size()), dest, to.size);
  __msan_unpoison(dest, size);
  const std::size_t told = operation.leavesScratch() ? 2 * static_cast<std::size_t>(result) : size;
  return {result, std::string(dest, std::min(told, size))};
}

std::string disagreement(const Operation& operation, const std::string& bytes, int capacity) {
  std::string src = bytes;
  if (operation.readsUnits()) src.resize(src.size() / 2 * 2);
  // The last unit ends counted text whatever it is; a blank tempts the most.
  const char last = operation.name == "trimgPunc counted" ? '\xA1' : '\0';
  if (operation.text == Text::units) src += {last, last};
  if (operation.text == Text::names) capacity = 4;
  if (operation.text == Text::units) capacity = static_cast<int>(src.size()) / 2;
  for (const Destination to : {Destination{capacity, '\x5A'}, {capacity, '\xC1', true}}) {
    const Outcome expected = twin(operation.name, src, to);
    const Outcome actual = run(operation, src, to);
    if (actual == expected) continue;
    return operation.name + ": " + toHex(src) + " into " + std::to_string(to.size) + "\n  gave " +
           std::to_string(actual.result) + ": " + toHex(actual.dest) + "\nand not " +
           std::to_string(expected.result) + ": " + toHex(expected.dest);
  }
  return {};
}

}  // namespace sgbk_test
