#!/bin/bash
# Promises about the built libraries:
#   binary_test.sh LIBSGBK LIBTABLES VERSION_SCRIPT [LIBTEXT TEXT_H]
set -u
library=$1 tables=$2 expected=$3 text=${4:-} failed=0
fail() { echo "FAILED: $*" >&2; failed=1; }

# Each listed name is exported, and no other one.
diff <(sed -nE 's/^ +"(.*)";$/\1/p; s/^ +(\w+);$/\1/p' "$expected" | LC_ALL=C sort -u) \
  <(nm -D --defined-only --format=posix "$library" | cut -d' ' -f1 | c++filt | LC_ALL=C sort -u) ||
  fail "$library does not export what $expected lists"

# The engine exports what its header declares.
[ -z "$text" ] || diff <(sed -n 's/^SGBK_API.*\b\(sgbk_[a-z_]*\)(.*/\1/p' "$5" | LC_ALL=C sort) \
  <(nm -D --defined-only --format=posix "$text" | cut -d' ' -f1 | LC_ALL=C sort) ||
  fail "$text does not export what $5 declares"

# Nothing is read, printed or asked of the environment.
if nm -D --undefined-only "$library" $text | grep -wE \
  '(f?printf|puts|putc|fopen|fopen64|fread|fwrite|open|open64|read|write|getenv|setlocale|std::.*stream.*|_ZSt4c(in|out|err|log).*)(@.*)?$'; then
  fail "$library $text imports input, output or the environment"
fi
needed=$(readelf -d "$library" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' |
  grep -vxE 'lib(stdc\+\+|c|gcc_s|pthread|m)\.so\.[0-9]+')
[ "$needed" = libsgbk-tables.so.1 ] || fail "$library needs $needed"

for so in "$library" "$tables" $text; do
  readelf -d "$so" | grep -q "SONAME.*\[$(basename "$so").1\]" || fail "$so: SONAME"
  readelf -lW "$so" | grep GNU_STACK | grep -q 'RW ' || fail "$so: the stack is executable"
done

# The table library: four objects of 131,072 bytes in read-only data, and nothing else.
objects=$(nm -DS --defined-only "$tables" | cut -d' ' -f2-)
wanted=$(printf '0000000000020000 R _binary_data_%s_ctb_start\n' big52sgbk gbk2big5 gbkt2s uc2sgbk)
[ "$objects" = "$wanted" ] || fail "$tables exports
$objects"

exit $failed
