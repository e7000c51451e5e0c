#!/bin/sh
# Every public header compiles alone, from C++11 on, and that of the engine as C, under every compiler
# there is, also with the headers' own folder as the include path: headers_test.sh INCLUDE_FOLDER
set -u
cd "$1/sgbk" || exit
failed=0
for compiler in gcc clang; do
  command -v $compiler >/dev/null || { echo "$compiler is not here"; continue; }
  for standard in c++11 c++14 c++17 c++20 c++2b c99 c11 c17; do
    case $standard in
      c++*) language=c++ headers=$(echo *.h*) ;;
      *) language=c headers=text.h ;;
    esac
    for header in $headers; do
      for form in ".. sgbk/$header" ". $header"; do
        # Twice, for the include guard.
        $compiler -std=$standard -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror \
          -I"${form% *}" -include "${form#* }" -include "${form#* }" -x $language -fsyntax-only \
          /dev/null || { echo "FAILED: $compiler $standard $form"; failed=1; }
      done
    done
  done
done
exit $failed
