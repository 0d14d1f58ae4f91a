#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# run_qemu.sh QEMU [OPTIONS...] -- PROGRAM [ARGUMENTS...]
# Runs a program for a bare machine with semihosting. The exit status is the program's; QEMU keeps
# only 8 bits of it, a larger one is 255 here. QEMU_EXTRA adds options.
set -uo pipefail
command=()
while [ "$1" != -- ]; do
  command+=("$1")
  shift
done
shift
program=$1
semihosting=enable=on,target=native
case "${command[0]}" in *riscv*)
  command+=(-chardev stdio,id=console)
  semihosting+=,chardev=console
  ;;
esac
for argument; do semihosting+=,arg=${argument//,/,,}; done

errors=$(mktemp)
trap 'rm -f "$errors"' EXIT
# shellcheck disable=SC2086
"${command[@]}" ${QEMU_EXTRA-} -nographic -monitor none -serial none \
  -semihosting-config "$semihosting" -kernel "$program" </dev/null 2>"$errors"
status=$?
cat "$errors" >&2
reported=$(sed -n 's/^\[Board\] status \([0-9]*\),.*/\1/p' "$errors")
exit $((${reported:-$status} > 255 ? 255 : status))
