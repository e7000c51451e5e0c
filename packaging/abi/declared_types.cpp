// The members of EncodingConvertor by type, and the sizes of what callers hold. A compiler that
// takes this file takes a caller's code; tools that compare binaries do not see the result types
// of members.

#include <cstddef>
#include <type_traits>

#include "sgbk/EncodingConvertor.h"

namespace {

using Class = EncodingConvertor;
using Stream = int (Class::*)(const char*, int, char*, int);
using UnitStream = int (Class::*)(const unsigned short*, int, char*, int);
using Array = int (Class::*)(const char*, gchar_t*, int, bool);

template <class Expected, class... Members>
constexpr bool allAre(Members...) {
  return (std::is_same_v<Expected, Members> && ...);
}

static_assert(allAre<Stream>(&Class::t2sgbk, &Class::b52sgbk, &Class::utf82sgbk, &Class::hz2sgbk,
                             &Class::hzgb2gbk));
static_assert(allAre<UnitStream>(&Class::uc2sgbk, &Class::uc2sgbk_DB));
static_assert(allAre<Array>(&Class::t2sgchar, &Class::t2sgchar_cache, &Class::dbc2gchar));
static_assert(allAre<int (Class::*)(const char*, char*, int, bool)>(&Class::gchar2big5));
static_assert(allAre<gchar_t (Class::*)(unsigned short)>(&Class::getucgvalue));
static_assert(allAre<int (*)(const char*)>(&Class::initializeInstance));
static_assert(allAre<Class* (*)()>(&Class::getInstance));
static_assert(allAre<void (*)()>(&Class::clear));
static_assert(allAre<int (*)(const char*, char*, int, bool)>(&Class::sbc2dbc));
static_assert(allAre<void (*)(gchar_t*)>(&Class::sbctoLowercase));
static_assert(allAre<gchar_t (*)(gchar_t)>(&Class::gtoUppercase, &Class::gtoLowercase));

static_assert(std::has_virtual_destructor_v<Class> && !std::is_default_constructible_v<Class> &&
              !std::is_copy_constructible_v<Class> && !std::is_copy_assignable_v<Class>);
// The virtual destructor's pointer, four tables, four views.
static_assert(sizeof(Class) == 8 + 4 * 131072 + 4 * 8 && alignof(Class) == 8);

static_assert(std::is_same_v<gchar_t, unsigned short> && std::is_same_v<UINT16, unsigned short>);
static_assert(sizeof(charEntitySet) == 252 * 24 && offsetof(tCharEntityMap, esclen) == 16);
static_assert(sizeof(charaentitymaps) == 60 * 24 && offsetof(tCharaEntityMap, desclen) == 20);

}  // namespace
