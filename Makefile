# Thin wrapper over the CMake presets. `make demo` and `make test` are the two
# commands a newcomer needs; the others are what CI runs besides.

JOBS ?= $(shell nproc)
# Warnings are errors under CI, not on a developer's machine.
WERROR := $(if $(CI),ON,OFF)

.PHONY: demo test test-asan install-check bench deps clean

deps:
	@tools/install-deps.sh

demo: deps
	cmake --preset default -DKELM_WARNINGS_AS_ERRORS=$(WERROR)
	cmake --build --preset default -j $(JOBS) --target tesskit2d_demo
	build/default/examples/tesskit2d_demo

test: deps
	cmake --preset default -DKELM_WARNINGS_AS_ERRORS=$(WERROR)
	cmake --build --preset default -j $(JOBS)
	ctest --preset default -j $(JOBS)

test-asan: deps
	cmake --preset asan -DKELM_WARNINGS_AS_ERRORS=$(WERROR)
	cmake --build --preset asan -j $(JOBS)
	ctest --preset asan -j $(JOBS)

install-check: deps
	KELM_WARNINGS_AS_ERRORS=$(WERROR) tools/install-check.sh

bench: deps
	cmake --preset release
	cmake --build --preset release -j $(JOBS)
	build/release/bench/tesskit2d_bench

clean:
	rm -rf build
