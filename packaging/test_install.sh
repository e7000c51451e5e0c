#!/bin/sh
# Installs a build tree into a prefix of its own, moves the prefix, and builds and runs the consumer
# against it by CMake and by pkg-config, shared and static.
# usage: test_install.sh BUILD_DIR CMAKE CXX COMPONENT...
set -eu

build=$1 cmake=$2 cxx=$3
shift 3
consumer=$(cd "$(dirname "$0")/consumer" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
unset LD_LIBRARY_PATH

needs() { readelf -d "$1" | grep NEEDED; }
fail() { echo "test_install: $*" >&2; exit 1; }

"$cmake" --install "$build" --prefix "$work/first" >"$work/install.log"
mv "$work/first" "$work/prefix"
prefix=$work/prefix
! grep -rIl "$work/first\|$build" "$prefix" || fail "the files above name a folder of this machine"

"$cmake" -G Ninja -S "$consumer" -B "$work/by-cmake" -DCMAKE_PREFIX_PATH="$prefix" \
  -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF >"$work/configure.log"
"$cmake" --build "$work/by-cmake" >"$work/build.log" || { cat "$work/build.log"; exit 1; }

export PKG_CONFIG_LIBDIR="$prefix/lib/pkgconfig"
mkdir "$work/by-pkg-config"
# shellcheck disable=SC2046  # the flags are words
"$cxx" "$consumer/consumer.cpp" -o "$work/by-pkg-config/consumer" \
  $(pkg-config --cflags --libs sgbk) -Wl,-rpath,"$prefix/lib"
# shellcheck disable=SC2046
"$cxx" -static "$consumer/consumer.cpp" -o "$work/by-pkg-config/consumer-static" \
  $(pkg-config --static --cflags --libs sgbk)
# shellcheck disable=SC2046
"${CC:-cc}" "$consumer/text_consumer.c" -o "$work/by-pkg-config/text-consumer" \
  $(pkg-config --cflags --libs sgbk-text) -Wl,-rpath,"$prefix/lib"
# shellcheck disable=SC2046
"${CC:-cc}" -static "$consumer/text_consumer.c" -o "$work/by-pkg-config/text-consumer-static" \
  $(pkg-config --static --cflags --libs sgbk-text)

for route in by-cmake by-pkg-config; do
  for kind in consumer consumer-static text-consumer text-consumer-static; do
    "$work/$route/$kind" || fail "$route: $kind fails"
  done
  needs "$work/$route/consumer" | grep -q 'libsgbk\.so\.1' || fail "$route: not linked to libsgbk"
  ! needs "$work/$route/consumer-static" | grep sgbk || fail "$route: consumer-static is not static"
done

# Another table library that the loader finds first takes the place of the installed one.
mkdir "$work/other"
for table in big52sgbk gbkt2s uc2sgbk gbk2big5; do
  echo "extern const char _binary_data_${table}_ctb_start[131072]; \
    const char _binary_data_${table}_ctb_start[131072] = {0};"
done >"$work/other/tables.c"
"${CC:-cc}" -shared -fPIC -Wl,-soname,libsgbk-tables.so.1 "$work/other/tables.c" \
  -o "$work/other/libsgbk-tables.so.1"
! LD_LIBRARY_PATH="$work/other" "$work/by-cmake/consumer" || fail "the other tables were not used"

# The documents of a package lead only to files of that package.
for component; do
  "$cmake" --install "$build" --component "$component" --prefix "$work/$component" >"$work/install.log"
  find "$work/$component" -name '*.md' | while read -r page; do
    grep -oP '\]\(\K[^):#]+(?=[#)])' "$page" | while read -r link; do
      [ -e "$(dirname "$page")/$link" ] || echo "$page: $link"
    done
  done
done >"$work/dead-links"
! grep . "$work/dead-links" || fail "the documents above link to what is not installed"

if [ -x "$prefix/bin/sgbk" ]; then
  "$prefix/bin/sgbk" --version >/dev/null || fail "the installed command does not start"
fi
