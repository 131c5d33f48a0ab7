# Sourced by the commands of this project: what they need from Debian, how it gets there, and how they build.
# shellcheck shell=bash

build_packages=(g++ cmake ninja-build pkg-config qtbase5-dev libeigen3-dev libboost-dev libcli11-dev
    libquazip1-qt5-dev libdeflate-dev libocct-data-exchange-dev libtbb-dev)
# shellcheck disable=SC2034 # used by those who source this file
package_packages=("${build_packages[@]}" dpkg-dev file)
# shellcheck disable=SC2034
test_packages=("${package_packages[@]}" libgtest-dev libgmock-dev qt5-image-formats-plugins locales
    groff-base zsh fish parallel doxygen lintian fakeroot shared-mime-info
    clang libclang-rt-14-dev)
# shellcheck disable=SC2034
coverage_packages=("${test_packages[@]}" clang-14 llvm-14 python3)
# shellcheck disable=SC2034
style_packages=("${test_packages[@]}" git clang-format clang-tidy)

is_installed() {
    [ "$(dpkg-query --show --showformat='${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

# As root, or with sudo that asks no password; fails where neither is to be had.
as_root() {
    local prefix=()
    [ "$(id -u)" = 0 ] || prefix=(sudo --non-interactive)
    "${prefix[@]}" "$@"
}

apt_get() {
    as_root env DEBIAN_FRONTEND=noninteractive apt-get --quiet --yes -o DPkg::Lock::Timeout=300 "$@"
}

# Installs the packages that are missing, without a question; does nothing and asks nobody when all are there.
install_missing() {
    local missing=() package
    for package in "$@"; do
        is_installed "$package" || missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    echo "Installing ${missing[*]}"
    local messages
    # A fresh system has no package lists, an old one has lists of versions that are gone.
    messages=$(apt_get install --no-install-recommends "${missing[@]}" 2>&1) && return
    messages=$(apt_get update 2>&1 && apt_get install --no-install-recommends "${missing[@]}" 2>&1) && return
    echo "$messages" >&2
    echo "These packages are needed and could not be installed: ${missing[*]}" >&2
    return 1
}

# build PRESET [CMAKE OPTION...] [-- TARGET...]: configures and builds what changed, in build/PRESET.
build() {
    local preset=$1 options=()
    shift
    while [ $# -gt 0 ] && [ "$1" != -- ]; do
        options+=("$1")
        shift
    done
    [ $# -eq 0 ] || shift
    local targets=("$@")
    [ ${#targets[@]} -gt 0 ] || targets=(all)
    local messages
    messages=$(cmake --preset "$preset" "${options[@]}" 2>&1) || { echo "$messages" >&2; return 1; }
    cmake --build --preset "$preset" --target "${targets[@]}"
}

# make_packages: writes the Debian packages to build/packages.
make_packages() {
    # Below lib/<architecture>, also where the build began before it was so.
    build release -UCMAKE_INSTALL_LIBDIR -- krmodel
    rm -rf -- build/packages
    local messages
    messages=$(cpack --config build/release/CPackConfig.cmake -B build/packages 2>&1) || { echo "$messages" >&2; return 1; }
}
