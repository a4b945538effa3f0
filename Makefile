# Kestrel Menu: the two commands are `make run` and `make test`.
# Both install what is missing (Debian 12), configure and build first.

BUILD      ?= build
ASAN_BUILD ?= build-asan
BENCH_BUILD?= build-bench
FUZZ_BUILD ?= build-fuzz
FUZZ_SECONDS ?= 300
CMAKE_FLAGS ?=
JOBS       ?= $(shell nproc)

.PHONY: all deps build run test test-asan bench fuzz install package format clean

all: build

deps:
	@scripts/install-deps.sh

build: deps
	@cmake -S . -B $(BUILD) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo $(CMAKE_FLAGS) >/dev/null
	@cmake --build $(BUILD) -j $(JOBS)

run: deps
	@cmake -S . -B $(BUILD) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo $(CMAKE_FLAGS) >/dev/null
	@cmake --build $(BUILD) -j $(JOBS) --target kestrel-menu
	@scripts/run.sh $(BUILD)/app/kestrel-menu $(BUILD)/screenshots

test: build
	@cd $(BUILD) && ctest --output-on-failure -j $(JOBS)

test-asan: deps
	@cmake -S . -B $(ASAN_BUILD) -G Ninja -DCMAKE_BUILD_TYPE=Debug -DKESTREL_SANITIZE=ON $(CMAKE_FLAGS) \
	    >/dev/null
	@cmake --build $(ASAN_BUILD) -j $(JOBS)
	@cd $(ASAN_BUILD) && ctest --output-on-failure -j $(JOBS)

bench: deps
	@cmake -S . -B $(BENCH_BUILD) -G Ninja -DCMAKE_BUILD_TYPE=Release -DKESTREL_BUILD_TESTS=OFF \
	    -DKESTREL_BUILD_BENCH=ON >/dev/null
	@cmake --build $(BENCH_BUILD) -j $(JOBS)
	@scripts/bench.sh $(BENCH_BUILD)

fuzz: deps
	@CC=clang CXX=clang++ cmake -S . -B $(FUZZ_BUILD) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	    -DKESTREL_BUILD_TESTS=OFF -DKESTREL_BUILD_FUZZ=ON >/dev/null
	@cmake --build $(FUZZ_BUILD) -j $(JOBS) --target fuzz_targets
	@scripts/fuzz.sh $(FUZZ_BUILD) $(FUZZ_SECONDS)

install: build
	@cmake --install $(BUILD)

package: build
	@cd $(BUILD) && cpack -G DEB >/dev/null && ls -1 $(CURDIR)/$(BUILD)/kestrel-menu*_*.*deb

format:
	@git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean:
	@rm -rf $(BUILD) $(ASAN_BUILD) $(BENCH_BUILD) $(FUZZ_BUILD)
