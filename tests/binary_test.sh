#!/bin/sh
# Promises about the built libraries beside their ABI: binary_test.sh LIBSGBK LIBTABLES
set -u
library=$1
tables=$2
failed=0
fail() { echo "FAILED: $*" >&2; failed=1; }

# Nothing is read, printed or asked of the environment.
if nm -D --undefined-only "$library" | grep -wE \
  '(f?printf|puts|putc|fopen|fopen64|fread|fwrite|open|open64|read|write|getenv|setlocale|std::.*stream.*|_ZSt4c(in|out|err|log).*)(@.*)?$'; then
  fail "$library imports input, output or the environment"
fi
needed=$(readelf -d "$library" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' | LC_ALL=C sort | tr '\n' ' ')
case $needed in
  *libsgbk-tables.so.1*) ;;
  *) fail "$library does not ask for libsgbk-tables.so.1: $needed" ;;
esac
others=$(printf '%s' "$needed" | tr ' ' '\n' |
  grep -vE '^(libsgbk-tables\.so\.1|libstdc\+\+\.so\.6|libc\.so\.6|libgcc_s\.so\.1|libpthread\.so\.0|libm\.so\.6)?$')
[ -z "$others" ] || fail "$library needs $others"

for so in "$library" "$tables"; do
  readelf -lW "$so" | grep GNU_STACK | grep -q 'RW ' || fail "$so: the stack is executable"
done

# The tables are in read-only data.
[ "$(nm -D "$tables" | grep -c ' R _binary_.*_ctb_start$')" = 4 ] || fail "$tables can be written"

exit $failed
