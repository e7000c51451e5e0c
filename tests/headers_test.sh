#!/bin/sh
# Every public header compiles alone, from C++11 on, under every compiler there is, also with the
# headers' own folder as the include path: headers_test.sh INCLUDE_FOLDER
set -u
failed=0
for compiler in g++ clang++; do
  command -v $compiler >/dev/null || { echo "$compiler is not here"; continue; }
  for standard in 11 14 17 20 2b; do
    for path in "$1"/sgbk/*.h*; do
      for form in "$1 sgbk/${path##*/}" "$1/sgbk ${path##*/}"; do
        # Twice, for the include guard.
        $compiler -std=c++$standard -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror \
          -I"${form% *}" -include "${form#* }" -include "${form#* }" -x c++ -fsyntax-only /dev/null ||
          { echo "FAILED: $compiler $standard $form"; failed=1; }
      done
    done
  done
done
# The interface of the engine is C.
for compiler in gcc clang; do
  command -v $compiler >/dev/null || continue
  for standard in 99 11 17; do
    $compiler -std=c$standard -Wall -Wextra -Wpedantic -Werror -I"$1" -include sgbk/text.h \
      -x c -fsyntax-only /dev/null || { echo "FAILED: $compiler -std=c$standard"; failed=1; }
  done
done
exit $failed
