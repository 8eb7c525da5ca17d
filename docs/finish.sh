#!/usr/bin/env bash
# Puts a space after the commas in lists of parameters, which could not be broken into lines without it, and tells where
# the pages are. Usage: finish.sh HTML_FOLDER
set -euo pipefail
sed -E -i ':again; s/(class="paramname">([a-zA-Z0-9]+, )*[a-zA-Z0-9]+),([a-zA-Z])/\1, \3/; t again' "$1"/group__*.html
echo "The manual is $1/index.html"
