# krmodel, as it was installed, reads a file of each format, and has all that belongs to it.
# shellcheck shell=bash
. "${BASH_SOURCE[0]%/*}/common.sh"
use_installed

for sample in gear.stl balloon.obj bolt.3mf bearing.step; do
    "$root/usr/bin/krmodel" info "$sources/samples/$sample" >/dev/null
done
# Of the library that is loaded for such files.
"$root/usr/bin/krmodel" info "$sources/samples/bearing.step" | grep -q '^  objects  *5$' || fail "not all of the bearing"

share=$root/usr/share
gzip --decompress --stdout "$share/man/man1/krmodel.1.gz" | grep -q '^\.SH EXIT STATUS' || fail "no manual page"
for file in bash-completion/completions/krmodel zsh/vendor-completions/_krmodel fish/vendor_completions.d/krmodel.fish \
    thumbnailers/krmodel.thumbnailer mime/packages/krmodel.xml doc/krmodel/copyright; do
    [ -s "$share/$file" ] || fail "no $file"
done
