# What an installation by hand has lies in one package each, and the packages have nothing else but their documents.
# shellcheck shell=bash
. "${BASH_SOURCE[0]%/*}/common.sh"

prefix=$KRCORE_BUILD/tests/package/prefix
installed=$(cd -- "$prefix" && find . ! -type d | sed 's,^\.,/usr,; s,/krmodel\.1$,&.gz,' | sort)
packed=$(for package in "$packages"/*.deb; do dpkg-deb --fsys-tarfile "$package" | tar --list; done |
    sed 's,^\.,,' | grep -v -e '/$' -e '^/usr/share/doc/' -e '^/usr/share/lintian/' | sort)
[ -n "$packed" ] || fail "the packages are empty"
diff <(echo "$installed") <(echo "$packed") || fail "< is installed by hand, > lies in packages"

for package in "$packages"/*.deb; do
    owners=$(dpkg-deb --contents "$package" | awk '{print $2}' | sort -u)
    [ "$owners" = root/root ] || fail "$package: files of $owners"
    modes=$(dpkg-deb --contents "$package" | awk '{print $1}' | sort -u | tr '\n' ' ')
    [[ $modes =~ ^(-rw-r--r-- |-rwxr-xr-x |drwxr-xr-x |lrwxrwxrwx )+$ ]] || fail "$package: modes $modes"
done
