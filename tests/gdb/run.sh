#!/bin/sh
# run.sh GDB HOST PRINTERS Described|Undescribed
# Status 77 and a reason where gdb can't be asked.
set -eu
gdb=$1
OXACORE_PRINTERS=$3 OXACORE_HOST=$4
OXACORE_FOLDER=$(mktemp -d)
trap 'rm -rf "$OXACORE_FOLDER"' EXIT
export OXACORE_PRINTERS OXACORE_HOST OXACORE_FOLDER

[ -x "$gdb" ] || { echo "There is no gdb here."; exit 77; }
"$gdb" -nx -batch -ex 'python import gdb.printing' 2>&1 | grep . && { echo "This gdb has no Python."; exit 77; }
"$gdb" -nx -batch -iex 'set auto-load no' -iex 'set debuginfod enabled off' -x "$(dirname "$0")/printers.py" "$2" 2>&1
