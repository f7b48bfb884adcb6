#!/bin/sh
# check-dumps.sh HOST
# Lets HOST (the program DumpHost) die in its ways, with each policy, and has a debugger find the place in the dump.
# Prints what it doesn't find; the status is 0 if it found all.
set -u
host=$1
open_dump=$(dirname "$0")/../../scripts/open-dump
folder=$(mktemp -d) || exit 1
trap 'rm -rf "$folder"' EXIT
passed=0
failed=0

# check WAY CONTENTS PATTERN...: each pattern has to be in what the debugger shows.
check() {
  way=$1
  contents=$2
  shift 2
  "$host" "$way" "$folder/dump" "$contents" >/dev/null 2>&1
  "$open_dump" "$folder/dump" "$host" >"$folder/shown" 2>&1
  for pattern in "$@"; do
    if grep -q -e "$pattern" "$folder/shown"; then
      passed=$((passed + 1))
    else
      failed=$((failed + 1))
      echo "$way, $contents: no \"$pattern\" in"
      head -n 20 "$folder/shown" | sed 's/^/    /'
    fi
  done
}

# The four policies.
for contents in 0 0x50 0x1a25 0x1826; do
  for way in main thread; do
    check $way $contents 'stop reason = signal SIGSEGV' \
      'frame #0: .*MeasureAndDie(where=0x0*, count=21) at DumpHost.cpp:' \
      'frame #1: .*RunSeries(depth=0) at DumpHost.cpp:' 'frame #3: .*RunSeries(depth=2) at DumpHost.cpp:' \
      '(int) doubled = 42' 'm_iChannel = 7, m_value = 3.25'
  done
  check main $contents 'frame #[0-9]*: .*main(argc=4,.* at DumpHost.cpp:'
  check overflow $contents 'stop reason = signal SIGSEGV' 'frame #0: .*OverflowTheStack(depth=.*) at DumpHost.cpp:' \
    'frame #9: .*OverflowTheStack(depth=[0-9]*) at DumpHost.cpp:'
  check null $contents 'stop reason = signal SIGSEGV' 'frame #1: .*ThroughNull() at DumpHost.cpp:'
  check exception $contents 'stop reason = signal SIGABRT' 'frame #0: .*RaiseUncaught(number=1) at DumpHost.cpp:'
done
echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ] && [ "$passed" -gt 0 ]
