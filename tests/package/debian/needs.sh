# The libraries that the installed files load, and the headers that a consumer includes, belong to the packages that ours
# depend on. This system has more.
# shellcheck shell=bash
. "${BASH_SOURCE[0]%/*}/common.sh"
use_installed

# of_others FILE...: the true names of those that were not installed by ours.
of_others() {
    realpath -- "$@" | grep -v "^$(realpath -- "$root")/" | sort -u
}

# files_of NAME...: all that the packages hold, under the names that files have since /lib is a link.
files_of() {
    dpkg-query --listfiles -- "$@" | sed -E 's,^/(s?bin|lib|lib64)/,/usr/\1/,' | sort -u
}

mapfile -t names < <(declared_packages)

mapfile -t loaded < <(find "$root/usr/bin" "$root/usr/$KRCORE_LIBDIR" -type f \( -name krmodel -o -name '*.so.*' \) \
    -exec ldd {} + | grep -o ' /[^ ]*' | sort -u)
mapfile -t loaded < <(of_others "${loaded[@]# }")
[ ${#loaded[@]} -gt 20 ] || fail "these cannot be all: ${loaded[*]}"
mapfile -t development < <(printf '%s\n' "${names[@]}" | grep -e '-dev$')
mapfile -t libraries < <(printf '%s\n' "${names[@]}" | grep -v -e '-dev$')
mapfile -t holders < <(with_dependencies "${libraries[@]}")
undeclared=$(comm -23 <(printf '%s\n' "${loaded[@]}") <(files_of "${holders[@]}"))
[ -z "$undeclared" ] || fail "loaded, but of no package that is depended on: $undeclared"

export PKG_CONFIG_PATH=$root/usr/$KRCORE_LIBDIR/pkgconfig
read -ra flags <<<"$(pkg-config --cflags KRCoreFileFormat)"
program=$sources/examples/StitchAndMeasure.cpp
mapfile -t included < <(g++ -std=c++17 "${flags[@]}" -M "$program" | tr -s ' \\\n' '\n' | grep '^/' | grep -v "^$program")
mapfile -t included < <(of_others "${included[@]}")
[ ${#included[@]} -gt 100 ] || fail "these cannot be all: ${included[*]}"
mapfile -t holders < <(with_dependencies "${development[@]}" g++)
undeclared=$(comm -23 <(printf '%s\n' "${included[@]}") <(files_of "${holders[@]}"))
[ -z "$undeclared" ] || fail "included, but of no package that is depended on: $undeclared"
