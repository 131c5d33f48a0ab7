#!/usr/bin/env bash
# Installs, uses and purges the packages in a Debian system that has nothing else:
# clean-root.sh PACKAGES DIRECTORY SOURCES
# The system is made in DIRECTORY, from where this one gets its packages; what it was made of is kept there for the next
# time. Needs to be root, to make a system and to run programs in it.
set -euo pipefail

packages=$1
directory=$2
sources=$3
base=$directory/base.tar
archives=$directory/archives
root=$directory/root

fail() {
    echo "clean-root: $*" >&2
    exit 1
}

step() {
    echo "== $1, after $SECONDS s"
}

[ "$(id -u)" = 0 ] || fail "only root can make a system and run programs in it"

make_base() {
    local suite list
    suite=$(. /etc/os-release && echo "$VERSION_CODENAME")
    for list in /etc/apt/sources.list.d/debian.sources /etc/apt/sources.list; do
        [ ! -s "$list" ] || break
    done
    [ -s "$list" ] || fail "this system does not say where it gets Debian's packages"
    rm -f -- "$base.part"
    # Whether a disk has it all when the power fails does not matter here.
    mmdebstrap --quiet --variant=apt --skip=cleanup/apt/lists --dpkgopt=force-unsafe-io \
        --aptopt='Binary::apt-get::APT::Keep-Downloaded-Packages "true"' "$suite" - "$list" >"$base.part"
    mv -- "$base.part" "$base"
}

unpack_base() {
    rm -rf -- "$root"
    mkdir -p -- "$root" "$archives"
    tar --extract --file="$base" --directory="$root"
    # No service is to be started for a test.
    printf '#!/bin/sh\nexit 101\n' >"$root/usr/sbin/policy-rc.d"
    chmod +x "$root/usr/sbin/policy-rc.d"
    mkdir "$root/try"
    cp -r -- "$packages"/*.deb "$sources/samples" "$sources/examples" "$root/try"
    find "$archives" -name '*.deb' -exec cp --target-directory="$root/var/cache/apt/archives" {} +
}

in_root() {
    chroot "$root" env --ignore-environment --chdir=/try PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 \
        DEBIAN_FRONTEND=noninteractive "$@"
}

# install NAME...: with what the packages declare, and with nothing that they only recommend.
install() {
    local log=$directory/apt.log
    if ! in_root apt-get --quiet --yes --no-install-recommends install "$@" >"$log" 2>&1; then
        # The lists that were kept may be older than what the servers have.
        in_root apt-get --quiet update >"$log" 2>&1 || true
        in_root apt-get --quiet --yes --no-install-recommends install "$@" >>"$log" 2>&1 || {
            tail --lines=30 "$log" >&2
            fail "cannot install $*"
        }
    fi
    cp --update --target-directory="$archives" "$root"/var/cache/apt/archives/*.deb
}

# package PATTERN: the file of a package, as the system sees it.
package() {
    # shellcheck disable=SC2206 # a pattern
    local files=("$root"/try/$1_*.deb)
    [ -e "${files[0]}" ] || fail "there is no package $1"
    echo "./${files[0]##*/}"
}

use_program() {
    local sample
    for sample in gear.stl balloon.obj bolt.3mf bearing.step; do
        in_root krmodel info "samples/$sample" >/dev/null
        in_root krmodel convert --quiet "samples/$sample" out.stl
        in_root krmodel preview --size 128x128 "samples/$sample" out.png
    done
    in_root krmodel info samples/bearing.step | grep -q '^  objects  *5$' || fail "not all of the bearing"
    in_root krmodel check samples/gear.stl
    in_root krmodel relief samples/medal.png medal.stl
}

look_around() {
    local file
    for file in man/man1/krmodel.1.gz bash-completion/completions/krmodel zsh/vendor-completions/_krmodel \
        fish/vendor_completions.d/krmodel.fish thumbnailers/krmodel.thumbnailer doc/krmodel/copyright; do
        [ -s "$root/usr/share/$file" ] || fail "no $file"
    done
    # What the triggers of other packages make of ours.
    [ -s "$root/usr/share/mime/model/step.xml" ] || fail "the types of files were not made known"
    in_root ldconfig -p | grep -q libKRCoreFileFormat || fail "the loader does not know the libraries"
    [ ! -e "$root/usr/bin/g++" ] || fail "this system is not clean"
}

build_consumers() {
    in_root cmake -S examples -B by-cmake >/dev/null
    in_root cmake --build by-cmake --target StitchAndMeasure >/dev/null
    in_root by-cmake/StitchAndMeasure samples/gear.stl by-cmake.stl
    # shellcheck disable=SC2016 # the shell that is started expands it
    in_root sh -c 'g++ -std=c++17 examples/StitchAndMeasure.cpp -o by-pkg-config \
        $(pkg-config --cflags --libs KRCoreFileFormat)'
    in_root ./by-pkg-config samples/gear.stl by-pkg-config.stl
    cmp "$root/try/by-cmake.stl" "$root/try/by-pkg-config.stl"
}

purge() {
    local left
    in_root apt-get --quiet --yes purge krmodel '^libkrcorefileformat' >"$directory/apt.log" 2>&1
    rm -rf -- "$root/try"
    left=$(cd -- "$root" && find . -xdev \( -iname '*krcore*' -o -iname '*krmodel*' \) ! -path './var/log/*')
    [ -z "$left" ] || fail "left behind: $left"
    [ ! -e "$root/usr/share/mime/model/step.xml" ] || fail "the types of files are still known"
    mkdir "$root/try"
    ! in_root ldconfig -p | grep KRCore || fail "the loader still knows the libraries"
    ! grep -i krcore "$root/var/lib/dpkg/status" || fail "dpkg still knows the packages"
}

mkdir -p -- "$directory"
if [ ! -e "$base" ]; then
    step "making a system"
    make_base
fi
step "unpacking it"
unpack_base
step "installing krmodel"
install "$(package krmodel)" "$(package 'libkrcorefileformat[0-9]*')"
step "using it"
use_program
look_around
step "installing the development files, and compilers"
install "$(package libkrcorefileformat-dev)" g++ cmake make pkg-config
step "building consumers"
build_consumers
step "purging"
purge
rm -rf -- "$root"
step "done"
