# Lintian knows what Debian asks of packages. Its warnings count too, and what is overridden says why beside it.
# shellcheck shell=bash
. "${BASH_SOURCE[0]%/*}/common.sh"

lintian --allow-root --fail-on error,warning --tag-display-limit 0 "$packages"/*.deb
