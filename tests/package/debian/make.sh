# Makes the packages.
# shellcheck shell=bash
. "${BASH_SOURCE[0]%/*}/common.sh"

rm -rf -- "$packages"
mkdir -p -- "$packages"
if ! cpack --config "$KRCORE_BUILD/CPackConfig.cmake" -B "$packages" >"$packages.log" 2>&1; then
    cat -- "$packages.log" >&2
    fail "cpack did not make the packages"
fi
made=$(package_names | tr '\n' ' ')
[[ $made =~ ^'krmodel libkrcorefileformat-dev libkrcorefileformat'[0-9.]+' '$ ]] || fail "made: $made"
