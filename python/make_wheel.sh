#!/usr/bin/env bash
# Makes the wheel of the package with the libraries of a build folder. With a third argument it also makes a virtual
# environment there, next to Debian's packages, and installs the wheel into it, without a network.
# Usage: make_wheel.sh BUILD_FOLDER OUTPUT_FOLDER [ENVIRONMENT]
set -euo pipefail
python=${PYTHON:-/usr/bin/python3}
mkdir -p "$2"
build=$(realpath "$1") output=$(realpath "$2") environment=${3:+$(realpath -m "$3")}
cd "$(dirname "$0")"
rm -rf "$output"/{intermediate,*.whl}
mkdir "$output/intermediate"
VEKCV_LIBRARIES=$build "$python" -W ignore setup.py -q egg_info --egg-base "$output/intermediate" \
    build --build-base "$output/intermediate/build" \
    bdist_wheel --bdist-dir "$output/intermediate/wheel" --dist-dir "$output" >"$output/log.txt" 2>&1 ||
    { cat "$output/log.txt"; exit 1; }
[ -n "$environment" ] || { ls "$output"/*.whl; exit 0; }
rm -rf "$environment"
"$python" -m venv --system-site-packages "$environment"
"$environment/bin/pip" install --quiet --no-index --disable-pip-version-check "$output"/*.whl
