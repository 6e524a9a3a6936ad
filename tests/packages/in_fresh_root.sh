#!/bin/sh
# Run in a fresh Debian system by tools/try_packages: installs the packages in /packages over older
# ones, uses them as a newcomer would, removes them, and looks for what they leave behind.
set -eu
export DEBIAN_FRONTEND=noninteractive LC_ALL=C TERM=dumb
cd /tmp

fail() {
  printf 'try_packages: %s\n' "$*" >&2
  [ ! -s output ] || cat output >&2
  exit 1
}

# expect STATUS TEXT COMMAND...: runs a command, which must end with STATUS and print TEXT.
expect() {
  wanted=$1 text=$2 status=0
  shift 2
  "$@" >output 2>&1 || status=$?
  [ "$status" -eq "$wanted" ] || fail "'$*' ended with status $status instead of $wanted"
  [ -z "$text" ] || grep -qF -e "$text" output || fail "'$*' did not print '$text'"
}

install() { expect 0 "" apt-get install -qq --no-install-recommends "$@"; }

apt-get update -qq

echo "try_packages: upgrade"
install /packages/older/*.deb
install /packages/*.deb
version=$(dpkg-query -W -f '${Version}' orvdiff)
expect 0 "orvdiff $version" orvdiff --version
expect 0 "Xerces-C++" orvdiff --version -v
! ls /usr/lib/*/orvdiff/*-0.0.1.so 2>/dev/null || fail "the older version's module is still there"

echo "try_packages: the demo suite, without Python and poppler"
cp -r /usr/share/doc/orvdiff/examples/demo .
work=demo/server/work
expect 1 "3 pairs, same change" orvdiff verify --no-config -C $work -f html,mht,xhtml,ctx-metadata,csv ../suite
expect 2 "python-is-python3" orvdiff verify -C $work ../suite
expect 2 "65 pairs" orvdiff verify -C $work -q --record night ../suite
expect 0 "" orvdiff report -C $work night --html ../night.html
expect 0 "" test -s demo/server/night.html
expect 0 "Options:" orvdiff help verify  # no man: the help text

echo "try_packages: manual and completion"
install man-db bash-completion
expect 0 "--newer-than TIME|FILE" orvdiff help verify
expect 0 "verify report outputs against stored masters" man -f orvdiff
expect 0 "xhtml-png" bash -c '. /usr/share/bash-completion/bash_completion
  _completion_loader orvdiff
  COMP_WORDS=(orvdiff verify -f xhtml-) COMP_CWORD=3 COMP_LINE="orvdiff verify -f xhtml-" COMP_POINT=24
  compopt() { :; }
  _orvdiff && echo "${COMPREPLY[@]}"'

echo "try_packages: a program that uses the library"
install g++ pkg-config
# shellcheck disable=SC2046
expect 0 "" g++ -std=c++17 -Wall -Werror /packages/consumer/main.cpp -o consumer $(pkg-config --cflags --libs orvdiff)
expect 0 "" ./consumer
install cmake make
expect 0 "" cmake -S /packages/consumer -B build
expect 0 "" cmake --build build
expect 0 "" build/consumer

echo "try_packages: removal"
apt-get purge -qq -y orvdiff 'liborvdiff*' >/dev/null
left=$(find / -xdev \( -path /proc -o -path /packages -o -path /tmp \) -prune -o -iname '*orvdiff*' -print)
[ -z "$left" ] || fail "left behind: $left"
! dpkg-query -W -f '${Package} ${db:Status-Status}\n' '*orvdiff*' 2>/dev/null | grep -v not-installed ||
  fail "dpkg still knows the packages"
echo "try_packages: all is well"
