# The example builds with CMake and with pkg-config against what was installed, and runs.
# shellcheck shell=bash
. "${BASH_SOURCE[0]%/*}/common.sh"
use_installed
work=$root.consumers
rm -rf -- "$work"
mkdir -p -- "$work"

cmake -S "$sources/examples" -B "$work" -DCMAKE_PREFIX_PATH="$root/usr" -DCMAKE_BUILD_TYPE=Debug
cmake --build "$work" --target StitchAndMeasure
grep -q "^KRCoreFileFormat_DIR:PATH=$root/usr/" "$work/CMakeCache.txt" || fail "CMake found other libraries"
"$work/StitchAndMeasure" "$sources/samples/gear.stl" "$work/gear.stl"

export PKG_CONFIG_PATH=$root/usr/$KRCORE_LIBDIR/pkgconfig
read -ra flags <<<"$(pkg-config --cflags --libs KRCoreFileFormat)"
g++ -std=c++17 "$sources/examples/StitchAndMeasure.cpp" -o "$work/by-pkg-config" "${flags[@]}"
"$work/by-pkg-config" "$sources/samples/gear.stl" "$work/gear-again.stl"
cmp "$work/gear.stl" "$work/gear-again.stl"
