#!/usr/bin/env bash
# Installs the Debian packages that a task needs and that are missing. Usage: packages.sh TASK...
# Tasks: build (library and tool, both widths), test, demo, bench, peer (compared with in benchmarks), docs, clang (what
# sanitizers and the fuzz target need), valgrind, format, python (the wheel, and a virtual environment for it), dask
# (vekcv.dask, and what the demonstration of it needs), python-test (what tests and examples of the package need).
set -euo pipefail

declare -A packages=(
    [build]="g++ g++-multilib cmake ninja-build pkg-config libhwy-dev libpng-dev libturbojpeg0-dev libcli11-dev
        nlohmann-json3-dev libpugixml-dev"
    [test]="googletest binutils qemu-user ffmpeg opencv-data python3"
    [demo]="ffmpeg opencv-data"
    [bench]="libbenchmark-dev python3 python3-matplotlib"
    [peer]="libopencv-dev libopencv-objdetect-dev opencv-data"
    [docs]="doxygen python3-pycparser gcc"
    [clang]="clang libclang-rt-dev libomp-dev"
    [valgrind]="valgrind"
    [format]="clang-format"
    [python]="python3-dev python3-cffi python3-numpy python3-setuptools python3-wheel python3-venv python3-pip libffi-dev"
    [dask]="python3-dask python3-distributed python3-numpy"
    [python-test]="python3-pytest python3-scipy python3-dask python3-distributed python3-zarr python3-tifffile
        python3-imageio python3-nbconvert python3-ipykernel python3-matplotlib"
)

missing=()
for task in "$@"; do
    for package in ${packages[$task]}; do
        # Debian's binary package names may have provides; only "installed" counts.
        [ "$(dpkg-query -W -f '${Status}' "$package" 2>/dev/null)" = "install ok installed" ] || missing+=("$package")
    done
done
[ ${#missing[@]} -gt 0 ] || exit 0

echo "Installing: ${missing[*]}"
as_root=()
[ "$(id -u)" = 0 ] || as_root=(sudo)
export DEBIAN_FRONTEND=noninteractive
log=$(mktemp)
trap 'rm -f "$log"' EXIT
if ! { "${as_root[@]}" apt-get update -qq &&
    "${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"; } >"$log" 2>&1; then
    cat "$log"
    exit 1
fi
