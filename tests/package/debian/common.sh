# Sourced by the tests of the packages, which are called with: where the packages are, where they get installed, and
# where the sources are.
# shellcheck shell=bash
# shellcheck disable=SC2034 # used by those who source this file
set -euo pipefail

packages=$1
root=$2
sources=$3
export LC_ALL=C
export PATH=$PATH:/usr/sbin:/sbin

fail() {
    echo "$*" >&2
    exit 1
}

# dpkg_in DIRECTORY ARGUMENT...: dpkg for what is installed there. Nothing of this system is touched: triggers would be
# run by programs that the directory does not have. This system may leave out manual pages; a test may not.
dpkg_in() {
    local directory=$1 as_root=()
    shift
    [ "$(id -u)" = 0 ] || as_root=(fakeroot)
    "${as_root[@]}" dpkg --root="$directory" --log="$directory.log" --no-triggers --path-include='*' "$@"
}

package_names() {
    local package
    for package in "$packages"/*.deb; do
        dpkg-deb --field "$package" Package
    done
}

# The names of the packages that ours say they need.
declared_packages() {
    local package
    for package in "$packages"/*.deb; do
        dpkg-deb --field "$package" Depends
    done | tr ',' '\n' | tr '|' '\n' | awk '{print $1}' | grep -v libkrcorefileformat | sort -u
}

# with_dependencies NAME...: these packages and all that they need, as far as they are installed.
with_dependencies() {
    local format names
    # shellcheck disable=SC2016 # dpkg-query expands it
    format='${db:Status-Status} ${binary:Package}\n'
    mapfile -t names < <(apt-cache depends --recurse --installed --no-recommends --no-suggests --no-conflicts \
        --no-breaks --no-replaces --no-enhances -o Dir::State::Lists=/nonexistent -o Dir::Cache::pkgcache= "$@" |
        grep -v '^[ |<]' | sort -u)
    # Of some names there is no package: they are virtual.
    dpkg-query --show --showformat="$format" "${names[@]}" 2>/dev/null | awk '$1 == "installed" {print $2}' | sort -u
}

# use_installed: programs that are started find the libraries that were installed.
use_installed() {
    export LD_LIBRARY_PATH=$root/usr/$KRCORE_LIBDIR
}
