#!/usr/bin/env bash
# Installs the library into a scratch folder and builds and runs programs against it: the C and the C++ program of this
# folder and the example of the README, through pkg-config and through CMake.
# Usage: check_install.sh BUILD_FOLDER SOURCE_FOLDER [COMPILER_FLAG...]
set -euo pipefail
build=$1 source=$2
shift 2
flags="$*"
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
prefix=$scratch/prefix

cmake --install "$build" --prefix "$prefix" >"$scratch/install.log" || { cat "$scratch/install.log"; exit 1; }
export PKG_CONFIG_LIBDIR
PKG_CONFIG_LIBDIR=$(dirname "$(find "$prefix" -name vekcv.pc)")
libraries=$(pkg-config --variable=libdir vekcv)

# run_programs FOLDER. That of the README writes a grey picture of 640 x 480 pixels.
run_programs() {
    "$1/use_vekcv"
    "$1/use_vekcv_cpp"
    "$1/readme" >readme.pgm
    [ "$(head -n 1 readme.pgm)" = "P5 640 480 255" ] || { echo "The program of the README makes no picture"; exit 1; }
    [ "$(wc -c <readme.pgm)" = 307215 ] || { echo "The picture of the program of the README is not whole"; exit 1; }
}

echo "pkg-config"
pkg-config --validate vekcv
[ "$(pkg-config --modversion vekcv)" = 7.1.0 ]
mkdir "$scratch/programs"
cp "$source/test/library/use_vekcv.c" "$scratch/programs/"
cp "$source/test/library/use_vekcv.c" "$scratch/programs/use_vekcv_cpp.cpp"
sed -n '/^```c$/,/^```$/{/^```/d;p}' "$source/README.md" >"$scratch/programs/readme.c"
grep -q 'int main' "$scratch/programs/readme.c"
cd "$scratch/programs"
options=$(pkg-config --cflags --libs vekcv)
for program in use_vekcv.c readme.c; do
    # shellcheck disable=SC2086
    cc $flags -std=c99 -pedantic -Wall -Wextra -Werror "$program" $options -o "${program%.*}"
done
# shellcheck disable=SC2086
c++ $flags -std=c++20 -pedantic -Wall -Wextra -Werror use_vekcv_cpp.cpp $options -o use_vekcv_cpp
LD_LIBRARY_PATH=$libraries run_programs .

echo "CMake"
cp "$source/test/library/package.cmake" CMakeLists.txt
cmake -S . -B build -G Ninja -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_C_FLAGS="$flags" -DCMAKE_CXX_FLAGS="$flags" \
    >"$scratch/cmake.log" || { cat "$scratch/cmake.log"; exit 1; }
cmake --build build >"$scratch/build.log" || { cat "$scratch/build.log"; exit 1; }
run_programs build
