#!/bin/sh
# The README's program compiles, runs and prints what its comment says:
# readme_test.sh README INCLUDE_FOLDER LIBSGBK LIBTABLES
set -eu
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
sed -n '/^```cpp$/,/^```$/p' "$1" | sed '/^```/d' >"$work/program.cpp"
promised=$(sed -n 's|.*fwrite.*// \(.*\), in GBK$|\1|p' "$work/program.cpp")
libraries=$(dirname "$3")
export LD_LIBRARY_PATH="$libraries:$(dirname "$4")"
c++ -std=c++11 -Wall -Wextra -Werror -I"$2" "$work/program.cpp" -L"$libraries" -lsgbk \
  -Wl,-rpath-link,"$(dirname "$4")" -o "$work/program"
printed=$("$work/program" | iconv -f GBK -t UTF-8)
[ -n "$promised" ] && [ "$printed" = "$promised" ] || { echo "FAILED: '$printed' is not '$promised'"; exit 1; }
