# For people; the build itself is CMake's (CMakePresets.json).
#   make demo      what the program does, on a recording made for the purpose
#   make test      every test
# Each installs the Debian packages that it needs and that are missing.

PRESET ?= release
PREFIX ?= /usr/local
BUILD := build/$(PRESET)

.DEFAULT_GOAL := build
.PHONY: build demo test test-dev test-clang test-asan test-tsan install format check-format clean

build:
	scripts/install-deps.sh
	cmake --preset $(PRESET)
	cmake --build --preset $(PRESET)

demo: build
	scripts/demo.sh $(BUILD)

test: build
	ctest --preset $(PRESET)

# Debug build, warnings are errors.
test-dev:
	$(MAKE) test PRESET=dev

# The same under clang: no warning, every test.
test-clang:
	scripts/install-deps.sh check
	$(MAKE) test PRESET=clang

# Address and undefined-behaviour sanitizers.
test-asan:
	$(MAKE) test PRESET=asan

# Thread sanitizer.
test-tsan:
	$(MAKE) test PRESET=tsan

install: build
	cmake --install $(BUILD) --prefix $(PREFIX)

format:
	scripts/install-deps.sh check
	scripts/format.sh

check-format:
	scripts/install-deps.sh check
	scripts/format.sh --check

clean:
	rm -rf build
