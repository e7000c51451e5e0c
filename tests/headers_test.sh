#!/bin/sh
# Every public header compiles alone, from C++11 on, under every compiler there is, also with the
# headers' own folder as the include path: headers_test.sh INCLUDE_FOLDER
set -u
include=$1
failed=0
for compiler in g++ clang++; do
  if ! command -v $compiler >/dev/null 2>&1; then
    echo "$compiler is not here"
    continue
  fi
  for standard in 11 14 17 20 2b; do
    for path in "$include"/sgbk/*.h; do
      header=$(basename "$path")
      for form in "-I$include <sgbk/$header>" "-I$include/sgbk \"$header\""; do
        # Twice, for the include guard.
        printf '#include %s\n#include %s\n' "${form#* }" "${form#* }" |
          $compiler -std=c++$standard -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror \
            "${form%% *}" -x c++ -fsyntax-only - || { echo "FAILED: $compiler $standard $form"; failed=1; }
      done
    done
  done
done
exit $failed
