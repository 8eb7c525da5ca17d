#!/usr/bin/env bash
# Installs the package with the libraries of a build folder, where Debian's Python looks for packages below a prefix.
# Usage: install.sh BUILD_FOLDER PREFIX
set -euo pipefail
python=${PYTHON:-/usr/bin/python3}
wheels=$(mktemp -d)
trap 'rm -rf "$wheels"' EXIT
"$(dirname "$0")/make_wheel.sh" "$1" "$wheels" >/dev/null
target=$2/lib/$("$python" -c 'import sys; print("python%d.%d" % sys.version_info[:2])')/dist-packages
"$python" -m pip install --quiet --no-index --no-deps --upgrade --root-user-action=ignore --target "$target" "$wheels"/*.whl
echo "vekcv is in $target"
