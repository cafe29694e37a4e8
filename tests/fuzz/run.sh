#!/bin/sh
# Runs every fuzz target of BUILD for SECONDS each, JOBS at a time, starting
# from its seed corpus in tests/fuzz/corpus/<target>. New inputs go to
# BUILD/corpus, never into the repository. A crash, a leak or undefined
# behaviour fails the run; the input is kept as BUILD/artifacts/<target>-*
# (add it to the seed corpus once it is fixed).
#   tests/fuzz/run.sh BUILD SECONDS [JOBS]
set -eu
build=$1
seconds=$2
jobs=${3:-1}
seeds=$(cd "$(dirname "$0")" && pwd)/corpus
mkdir -p "$build/artifacts" "$build/corpus"

targets=$(cd "$build" && ls fuzz_* | grep -v '\.log$')
echo "$targets" | xargs -P "$jobs" -I{} sh -c '
  build=$1 seconds=$2 seeds=$3 name=$4
  mkdir -p "$build/corpus/$name"
  if "$build/$name" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 \
       -artifact_prefix="$build/artifacts/$name-" "$build/corpus/$name" "$seeds/$name" > "$build/$name.log" 2>&1; then
    echo "$name: $(grep -m1 stat::number_of_executed_units "$build/$name.log" | tr -s " " | cut -d" " -f2) inputs in ${seconds} s, no failure"
  else
    echo "$name: FAILED"; tail -n 60 "$build/$name.log"; exit 255
  fi' sh "$build" "$seconds" "$seeds" {}
