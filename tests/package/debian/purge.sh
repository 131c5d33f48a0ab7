# Takes the packages away again: no file or directory of theirs stays.
# shellcheck shell=bash
. "${BASH_SOURCE[0]%/*}/common.sh"

mapfile -t names < <(package_names)
[ -e "$root/usr/bin/krmodel" ] || fail "nothing is installed"
dpkg_in "$root" --purge "${names[@]}"
left=$(find "$root" -mindepth 1 -path "$root/var" -prune -o -print)
[ -z "$left" ] || fail "left behind: $left"
left=$(find "$root/var" | grep -i -e krcore -e krmodel || true)
[ -z "$left" ] || fail "left behind: $left"
