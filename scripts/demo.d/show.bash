# shellcheck shell=bash
# What every show uses.
set -euo pipefail

bold='' plain=''
[ ! -t 1 ] || bold=$'\033[1m' plain=$'\033[0m'
title() { printf '\n%s%s%s\n' "$bold" "$*" "$plain"; }
# Shows a command, runs it, and indents what it says.
show() {
  printf '  $ %s\n' "$*"
  { "$@" 2>&1 || printf '(exit status %d)\n' $?; } | sed 's/^/    /'
}
