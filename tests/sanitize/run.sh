#!/bin/sh
# Runs the whole suite of a sanitizer build (make test-sanitize). Every
# process, the tests and the programs they start, writes its sanitizer reports
# into BUILD/sanitizer-reports; any report fails the run, also one from a
# process whose test could not notice it (a server stopped by a signal, a
# child killed on purpose).
#   tests/sanitize/run.sh BUILD [JOBS]
set -eu
build=$(cd "$1" && pwd)
jobs=${2:-2}
here=$(cd "$(dirname "$0")" && pwd)
reports=$build/sanitizer-reports
rm -rf "$reports"
mkdir -p "$reports"

# Two frames per allocation: the leak checker judges a leak by the code that
# allocated it (see lsan.supp). To see deeper allocation stacks while
# debugging a report, run that test again with ASAN_OPTIONS=malloc_context_size=30.
export ASAN_OPTIONS="halt_on_error=1:detect_leaks=1:malloc_context_size=2:log_path=$reports/asan:${ASAN_OPTIONS:-}"
export UBSAN_OPTIONS="halt_on_error=1:print_stacktrace=1:log_path=$reports/ubsan:${UBSAN_OPTIONS:-}"
export LSAN_OPTIONS="suppressions=$here/lsan.supp:print_suppressions=0:${LSAN_OPTIONS:-}"

# Without GL, so that Mesa's software driver is not loaded: it leaks at exit
# and is unloaded before the leak check, which then cannot name it.
export QT_XCB_GL_INTEGRATION=none

status=0
(cd "$build" && ctest --output-on-failure -j "$jobs") || status=$?
for report in "$reports"/*; do
  [ -e "$report" ] || break
  echo "== sanitizer report $report"
  cat "$report"
  status=1
done
[ "$status" = 0 ] && echo "sanitizers: no report"
exit "$status"
