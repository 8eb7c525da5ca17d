# The front door. `make` builds both widths, and every other target brings a fresh Debian machine with git, make and root
# (or sudo) to the end of what it names.
#   make            libraries for 64 and 32 bits and the tool, in build/x86_64 and build/i386
#   make test       all tests of both widths
#   make sanitize   the tests under sanitizers: addresses and undefined behaviour in both widths, data races
#   make sanitize-quick   less of it: the variant of 16-byte vectors in 64 bits, and data races in tests of threads only
#   make valgrind   the quick tests of the 64-bit library under valgrind, which sees values that were never set
#   make demo       the tool on the pictures of the repository, as build/demo/index.html
#   make bench      benchmarks and sizes of both widths, into docs/performance.md; PEER=1 compares with OpenCV,
#                   FILTER=text takes the exports whose names contain the text, QUICK=1 fewer sizes and rounds
#   make fuzz       calls all exports with random arguments for SECONDS=60; what it finds lies in build/fuzz
#   make docs       the manual of every function as pages: build/docs/html/index.html
#   make pictures   the pictures of README.md, in docs/pictures
#   make python     the Python package as a wheel, in build/python
#   make cluster-demo   a picture of a gigapixel by two worker processes, one of which is killed
#   make install    into PREFIX (/usr/local); WIDTH=i386 for 32 bits, STATIC=1 for static libraries, PYTHON=1 for the
#                   Python package too
#   make format     formats the sources; make check-format tells what it would change
PREFIX ?= /usr/local
WIDTH ?= x86_64
WIDTHS := x86_64 i386
SECONDS ?= 60
WARNINGS_AS_ERRORS ?= OFF
# Without the tests, which need GoogleTest.
OPTIONS := -DVEKCV_WARNINGS_AS_ERRORS=$(WARNINGS_AS_ERRORS) -DVEKCV_BUILD_TESTS=OFF
DEMO_PROGRAMS := vek make_bent make_frames make_scene make_scratches make_small_frames
CASCADE := /usr/share/opencv4/haarcascades/haarcascade_frontalface_alt.xml
SOURCES = $(shell git ls-files '*.h' '*.cpp' '*.c')

.PHONY: all test sanitize sanitize-quick valgrind demo bench fuzz docs pictures python cluster-demo install format check-format clean
.DELETE_ON_ERROR:

all:
	@cmake/packages.sh build
	@for width in $(WIDTHS); do \
	    cmake --preset $$width $(OPTIONS) >/dev/null && cmake --build --preset $$width || exit 1; \
	done

test:
	@cmake/packages.sh build test python python-test
	@for width in $(WIDTHS); do \
	    cmake --preset $$width $(OPTIONS) -DVEKCV_BUILD_TESTS=ON -DVEKCV_BUILD_BENCHMARKS=ON >/dev/null && \
	    cmake --build --preset $$width || exit 1; \
	done
	@failed=0; \
	for width in $(WIDTHS); do \
	    ctest --preset $$width || failed=1; \
	done; exit $$failed

sanitize:
	@cmake/packages.sh build test clang
	@for preset in asan asan-i386 tsan; do \
	    cmake --preset $$preset $(OPTIONS) -DVEKCV_BUILD_TESTS=ON >/dev/null && \
	    cmake --build --preset $$preset && ctest --preset $$preset || exit 1; \
	done

sanitize-quick:
	@cmake/packages.sh build test clang
	@for preset in asan-ssse3 tsan; do \
	    cmake --preset $$preset $(OPTIONS) -DVEKCV_BUILD_TESTS=ON >/dev/null && \
	    cmake --build --preset $$preset || exit 1; \
	done
	@ctest --preset asan-ssse3 --exclude-regex 'standin|fuzz' && ctest --preset tsan --tests-regex '^(threads|frame|process)'

# Large images take minutes there and add nothing. Without AVX-512, which valgrind does not know.
valgrind:
	@cmake/packages.sh build test valgrind
	@cmake --preset x86_64 $(OPTIONS) -DVEKCV_BUILD_TESTS=ON >/dev/null && \
	    cmake --build --preset x86_64 --target vekcv_test
	@for features in ssse3 avx2; do \
	    VEKCORE_FEATURES=$$features VEKCORE_NUM_THREADS=1 valgrind -q --leak-check=full --error-exitcode=1 \
	        build/x86_64/test/vekcv_test --gtest_brief=1 --gtest_filter='-*Parallel*:Huge*' || exit 1; \
	done

demo:
	@cmake/packages.sh build demo
	@cmake --preset x86_64 $(OPTIONS) >/dev/null && cmake --build --preset x86_64 --target $(DEMO_PROGRAMS)
	@tools/demo/run.sh build/x86_64

bench:
	@cmake/packages.sh build bench $(if $(PEER),peer)
	@for width in $(WIDTHS); do \
	    cmake --preset $$width $(OPTIONS) -DVEKCV_BUILD_BENCHMARKS=ON >/dev/null && \
	    cmake --build --preset $$width --target vekcv_bench || exit 1; \
	done
	@bench/run.sh build/x86_64 build/i386 $(if $(FILTER),--filter $(FILTER)) $(if $(QUICK),--quick)
	@$(if $(PEER),cmake --build --preset x86_64 --target vekcv_detect_bench && \
	    build/x86_64/bench/detect/vekcv_detect_bench $(CASCADE) examples/pictures/astronaut.png)

docs:
	@cmake/packages.sh docs
	@rm -rf build/docs && mkdir -p build/docs
	@/usr/bin/python3 -B python/generate/names_page.py include/vekcv.h >build/docs/python.md
	@VEKCV_VERSION=$$(sed -n 's/^project(vekcv VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt) doxygen docs/Doxyfile
	@docs/finish.sh build/docs/html

# A part of the photograph of examples/pictures/camera.png, and straight lines.
DETAIL := crop=120:120:190:70,scale=240:240:flags=neighbor
GRID := color=white:s=480x360,drawgrid=w=40:h=40:t=3:c=black
pictures:
	@cmake/packages.sh build demo
	@cmake --preset x86_64 $(OPTIONS) >/dev/null && cmake --build --preset x86_64 --target $(DEMO_PROGRAMS)
	@build/x86_64/vek filter sobel-neg-vert examples/pictures/camera.png docs/pictures/derivative.jpg
	@build/x86_64/vek localcontrast examples/pictures/camera.png docs/pictures/local-contrast.jpg --window 5
	@build/x86_64/vek edges examples/pictures/camera.png docs/pictures/edges.png --low 100 --high 250
	@build/x86_64/vek detect $(CASCADE) examples/pictures/astronaut.png -o docs/pictures/faces.jpg
	@build/x86_64/vek morph blackhat examples/pictures/text.png docs/pictures/writing.png --element ellipse --size 9x9
	@build/x86_64/vek edges examples/pictures/coins.png build/coins-edges.png --low 1500 --high 3000 --aperture 5
	@build/x86_64/vek morph close build/coins-edges.png build/closed.png --element ellipse --size 5x5
	@build/x86_64/vek fillholes build/closed.png docs/pictures/regions.png
	@build/x86_64/vek segment examples/pictures/coins.png docs/pictures/objects.png --mask docs/pictures/regions.png
	@build/x86_64/tools/make_scratches examples/pictures/astronaut.png docs/pictures/scratched.jpg build/scratches.png
	@build/x86_64/tools/make_scratches examples/pictures/astronaut.png build/scratched.png build/scratches.png
	@build/x86_64/vek inpaint build/scratched.png build/scratches.png docs/pictures/restored.jpg
	@rm -rf build/pictures && mkdir -p $(addprefix build/pictures/,still moving masks trails small)
	@build/x86_64/tools/make_scene examples/pictures/camera.png examples/pictures/chelsea.png build/pictures/still 30 0
	@build/x86_64/tools/make_scene examples/pictures/camera.png examples/pictures/chelsea.png build/pictures/moving 30 3
	@build/x86_64/vek foreground build/pictures/still/*.png -o build/pictures/masks/%02d.png
	@build/x86_64/vek track build/pictures/moving/*.png -o build/pictures/trails/%02d.jpg
	@cp build/pictures/masks/15.png docs/pictures/foreground.png
	@cp build/pictures/trails/18.jpg docs/pictures/trails.jpg
	@ffmpeg -nostdin -v error -y -i build/pictures/still/frame-15.png -q:v 3 docs/pictures/frame.jpg
	@build/x86_64/tools/make_small_frames examples/pictures/camera.png build/pictures/small 16
	@build/x86_64/vek superres build/pictures/small/*.png -o build/pictures/large.png
	@ffmpeg -nostdin -v error -y -i build/pictures/large.png -vf $(DETAIL) docs/pictures/super-resolution.png
	@ffmpeg -nostdin -v error -y -i build/pictures/small/frame-01.png -vf scale=2*iw:-1:flags=bicubic,$(DETAIL) \
	    docs/pictures/enlarged.png
	@ffmpeg -nostdin -v error -y -f lavfi -i $(GRID) -frames:v 1 -pix_fmt gray build/pictures/grid.png
	@build/x86_64/tools/make_bent build/pictures/grid.png docs/pictures/bent.png
	@build/x86_64/vek undistort docs/pictures/bent.png docs/pictures/straightened.png --focal 400,400 --radial -0.25,0.05

python:
	@cmake/packages.sh build python
	@cmake --preset x86_64 $(OPTIONS) >/dev/null && cmake --build --preset x86_64 --target vekcv vekcore
	@python/make_wheel.sh build/x86_64 build/python build/python/venv

cluster-demo: python
	@cmake/packages.sh dask
	@build/python/venv/bin/python python/demo/cluster.py

fuzz:
	@cmake/packages.sh build clang
	@cmake --preset fuzz >/dev/null && cmake --build --preset fuzz
	@mkdir -p build/fuzz/corpus
	@build/fuzz/fuzz/vekcv_fuzz -max_total_time=$(SECONDS) -timeout=20 -entropic=0 -artifact_prefix=build/fuzz/ \
	    build/fuzz/corpus fuzz/corpus

install:
	@cmake/packages.sh build
	@cmake -S . -B build/install-$(WIDTH) -G Ninja -DCMAKE_BUILD_TYPE=Release -DVEKCV_BUILD_TESTS=OFF \
	    -DVEKCV_BUILD_TOOLS=$(if $(filter i386,$(WIDTH)),OFF,ON) -DBUILD_SHARED_LIBS=$(if $(STATIC),OFF,ON) \
	    -DCMAKE_INSTALL_PREFIX=$(PREFIX) $(if $(filter i386,$(WIDTH)),-DCMAKE_TOOLCHAIN_FILE=cmake/i386.cmake) >/dev/null
	@cmake --build build/install-$(WIDTH)
	@cmake --install build/install-$(WIDTH)
	@$(if $(PYTHON),cmake/packages.sh python && python/install.sh build/install-$(WIDTH) $(PREFIX))

format:
	@cmake/packages.sh format
	@clang-format -i $(SOURCES)

check-format:
	@cmake/packages.sh format
	@clang-format --dry-run --Werror $(SOURCES)

clean:
	@rm -rf build
