# The front door. `make` builds both widths, and every other target brings a fresh Debian machine with git, make and root
# (or sudo) to the end of what it names.
#   make            libraries for 64 and 32 bits and the tool, in build/x86_64 and build/i386
#   make test       all tests of both widths
#   make sanitize   the tests under sanitizers: addresses and undefined behaviour in both widths, data races
#   make sanitize-quick   less of it: the variant of 16-byte vectors in 64 bits, and data races in tests of threads only
#   make valgrind   the quick tests of the 64-bit library under valgrind, which sees values that were never set
#   make demo       the tool on the pictures of the repository, as build/demo/index.html
#   make bench      benchmarks and sizes of both widths, into docs/performance.md; PEER=1 compares with OpenCV,
#                   FILTER=text takes the exports whose names contain the text, QUICK=1 fewer sizes and rounds,
#                   RESUME=1 goes on with a run that was interrupted
#   make fuzz       calls all exports with random arguments for SECONDS=60; what it finds lies in build/fuzz
#   make docs       the manual of every function as pages: build/docs/html/index.html
#   make pictures   the pictures of README.md and docs/tool.md, in docs/pictures
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
	@bench/run.sh build/x86_64 build/i386 $(if $(FILTER),--filter $(FILTER)) $(if $(QUICK),--quick) \
	    $(if $(RESUME),--resume)
	@$(if $(PEER),cmake --build --preset x86_64 --target vekcv_detect_bench && \
	    build/x86_64/bench/detect/vekcv_detect_bench $(CASCADE) examples/pictures/astronaut.png)

docs:
	@cmake/packages.sh docs
	@rm -rf build/docs && mkdir -p build/docs
	@/usr/bin/python3 -B python/generate/names_page.py include/vekcv.h >build/docs/python.md
	@VEKCV_VERSION=$$(sed -n 's/^project(vekcv VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt) doxygen docs/Doxyfile
	@docs/finish.sh build/docs/html

pictures:
	@cmake/packages.sh build demo
	@cmake --preset x86_64 $(OPTIONS) >/dev/null && cmake --build --preset x86_64 --target $(DEMO_PROGRAMS)
	@docs/pictures.sh build/x86_64

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
	@OMP_WAIT_POLICY=passive build/fuzz/fuzz/vekcv_fuzz -max_total_time=$(SECONDS) -timeout=60 -entropic=0 \
	    -artifact_prefix=build/fuzz/ build/fuzz/corpus fuzz/corpus

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
