#!/usr/bin/env bash
# Puts a space after the commas in lists of parameters, which could not be broken into lines without it, checks that every
# function has its place in a page, and tells where the pages are. Usage: finish.sh HTML_FOLDER, in the root of the
# repository.
set -euo pipefail
sed -E -i ':again; s/(class="paramname">([a-zA-Z0-9]+, )*[a-zA-Z0-9]+),([a-zA-Z])/\1, \3/; t again' "$1"/group__*.html
declared=$(sed -nE 's/^VEKCV_API .*(vek(i|cv)[A-Za-z0-9_]+)\(.*/\1/p' include/vekcv.h | sort)
missing=$(comm -23 <(echo "$declared") <(grep -oh 'vek[A-Za-z0-9_]*' "$1"/group__*.html | sort -u))
[ -z "$missing" ] || { echo "No page tells of $missing" >&2; exit 1; }
echo "The manual of $(wc -l <<<"$declared") functions is $1/index.html"
