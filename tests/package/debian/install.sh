# Installs the packages: not where their dependencies are missing, but where they are, and no other package is.
# shellcheck shell=bash
. "${BASH_SOURCE[0]%/*}/common.sh"

# new_list DIRECTORY [NAME...]: a directory in which these packages of this system are said to be installed.
new_list() {
    local directory=$1 admin=$1/var/lib/dpkg name
    shift
    rm -rf -- "$directory"
    mkdir -p -- "$admin"/{info,updates,triggers}
    : >"$admin/status"
    [ $# -gt 0 ] || return 0
    dpkg-query --status -- "$@" >"$admin/status"
    for name in "$@"; do
        : >"$admin/info/$name.list"
    done
}

new_list "$root.empty"
if dpkg_in "$root.empty" --install "$packages"/*.deb >"$root.empty.messages" 2>&1; then
    fail "the packages can be installed where nothing is that they need"
fi
for name in libqt5core5a libocct-data-exchange- qtbase5-dev libeigen3-dev; do
    grep -q "depends on $name" "$root.empty.messages" || fail "dpkg does not miss $name"
done

mapfile -t names < <(declared_packages)
mapfile -t dependencies < <(with_dependencies "${names[@]}")
[ ${#dependencies[@]} -gt ${#names[@]} ] || fail "these are not all: ${dependencies[*]}"
new_list "$root" "${dependencies[@]}"
dpkg_in "$root" --install "$packages"/*.deb
