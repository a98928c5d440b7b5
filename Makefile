# The two commands of the README:
#   make run   - set up, build, and run the main job on the embedded default archive
#   make test  - set up, build, and pass the tests (release build with warnings as
#                errors, then the same tests under address + undefined sanitizers)
JOBS ?= $(shell nproc 2>/dev/null || echo 2)
CMAKE_COMMON = -G Ninja -DHISTORICOS_TESTS=ON

.PHONY: run test deps build build-asan bench bench-pipeline clean

deps:
	@scripts/install-deps

build: deps
	cmake -S . -B build/release $(CMAKE_COMMON) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DHISTORICOS_WERROR=ON
	cmake --build build/release -j $(JOBS)

build-asan: deps
	cmake -S . -B build/asan $(CMAKE_COMMON) -DCMAKE_BUILD_TYPE=Debug -DHISTORICOS_WERROR=ON -DHISTORICOS_SANITIZE=ON
	cmake --build build/asan -j $(JOBS)

run: build
	build/release/historicos demo

test: build build-asan
	cd build/release && ctest --output-on-failure -j $(JOBS)
	cd build/asan && ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 ctest --output-on-failure -j $(JOBS)

bench: deps
	cmake -S . -B build/bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DHISTORICOS_TESTS=OFF -DHISTORICOS_BENCH=ON
	cmake --build build/bench -j $(JOBS)

# The order-lines pipeline against pandas on a million lines (minutes: the archive is made once).
bench-pipeline: build
	dpkg-query -W -f='$${Status}' python3-pandas 2>/dev/null | grep -q "install ok installed" || \
	  { apt-get update && DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends python3-pandas; }
	BENCH_DIR=build/bench/bench-pipeline bench/pipeline.sh build/release/historicos

clean:
	rm -rf build
