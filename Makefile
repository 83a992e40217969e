# SPDX-License-Identifier: BSD-3-Clause

# For people; the build itself is in CMake (CMakePresets.json).
#   make demo      what the program does, on a recording made for the purpose
#   make test      every test
#   make bench     speed and memory (docs/performance.md)
#   make screenshots   every window, light and dark, at 100 % and 200 %
#   make check-pages   pages of recordings in a browser
#   make site      the documentation as a site, build/site
#   make release   all that is passed on, build/release-artefacts (docs/releasing.md)
#   make test-windows, make windows-app, make package-windows, make check-windows-packages      docs/building-windows.md
#   make packages, make test-packages      Debian packages (docs/releasing.md)
# Each target installs the Debian packages that it needs if they are missing.

PRESET ?= release
PREFIX ?= /usr/local
FUZZ_SECONDS ?= 60
JOBS ?= $(shell nproc)
BUILD := build/$(PRESET)
ARTEFACTS := build/release-artefacts

.DEFAULT_GOAL := build
.PHONY: build demo test test-dev test-clang test-asan test-tsan test-tsan-engine fuzz soak coverage bench test-windows windows-app test-windows-app windows-packages package-windows check-windows-packages test-cluster screenshots check-pages site check-site tarball test-tarball artefacts check-artefacts release packages test-packages check-packages install format check-format check-tidy clean

build:
	scripts/install-deps.sh
	cmake --preset $(PRESET)
	cmake --build --preset $(PRESET)

# Builds only what it runs, so that the first look does not wait for the window and the tests.
demo:
	scripts/install-deps.sh
	cmake --preset $(PRESET)
	cmake --build --preset $(PRESET) --target stalwick-convert ord_synth
	scripts/demo.sh $(BUILD)

test: build
	ctest --preset $(PRESET) -j $(JOBS)

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

# The same for all code with threads except the window: the part that the check run has time for. Streams cut at
# every byte are conversions like any other and left to the other runs.
test-tsan-engine:
	scripts/install-deps.sh
	cmake --preset tsan-engine
	cmake --build --preset tsan-engine --target engine_tests writers_tests cli_tests stalwick-convert stalwick-inspect ord_synth
	ctest --preset tsan-engine -j $(JOBS) -L '^(engine|writers|cli)$$' -E '^StreamLength\.'

# Each fuzz target for FUZZ_SECONDS (docs/testing.md).
fuzz:
	scripts/install-deps.sh build test fuzz
	cmake --preset fuzz
	cmake --build --preset fuzz
	scripts/fuzz.sh build/fuzz $(FUZZ_SECONDS)

# Two thousand kills, thousands of other random numbers, ten minutes for each fuzz target (docs/testing.md).
soak: build
	scripts/soak.sh $(BUILD)
	$(MAKE) fuzz FUZZ_SECONDS=600

# Forty recordings through a Slurm on this machine, which the test starts and stops (docs/testing.md).
test-cluster:
	scripts/install-deps.sh build cluster
	cmake --preset $(PRESET)
	cmake --build --preset $(PRESET) --target stalwick-convert stalwick-inspect ord_synth
	tests/workflow/cluster_test.py $(BUILD)

# How much of ord/, writers/ and engine/ the tests run; the report is build/coverage/report.html.
coverage:
	scripts/install-deps.sh build test coverage
	cmake --preset coverage
	cmake --build --preset coverage
	ctest --preset coverage -j $(JOBS)
	scripts/coverage.sh build/coverage

# The engine, the command and their tests for Windows, run under wine, and the outputs of both
# systems compared. PRESET is the Linux build to compare with.
test-windows: build
	scripts/install-deps.sh windows
	STALWICK_HWY_SOURCE="$$(packaging/windows/fetch-highway.sh)" cmake --preset windows
	cmake --build --preset windows
	scripts/run-under-wine.sh --start
	ctest --preset windows -j $(JOBS)
	tests/windows/compare_test_names.py --linux $(BUILD) --windows build/windows
	tests/windows/compare_with_linux.py --linux $(BUILD) --windows build/windows

# The window for Windows; builds its Qt the first time (docs/building-windows.md).
windows-app:
	scripts/install-deps.sh build windows windows-app
	STALWICK_HWY_SOURCE="$$(packaging/windows/fetch-highway.sh)" \
	    STALWICK_QT_PREFIX="$$(packaging/windows/build-qt.sh)" cmake --preset windows-app
	cmake --build --preset windows-app $(addprefix --target ,$(WINDOWS_TARGETS))

# The window's tests under wine, on a separate display, and the window in use; pictures of it are in
# build/windows-app/window-pictures.
test-windows-app: windows-app
	scripts/with-display.sh ctest --preset windows-app --label-regex '^app$$'
	scripts/with-display.sh tests/windows/use_window.sh build/windows-app

# The zip with its SBOM and the installer, without building tests.
windows-packages: WINDOWS_TARGETS := stalwick stalwick-convert stalwick-inspect
windows-packages: windows-app
	scripts/install-deps.sh release
	cmake --preset $(PRESET)
	cmake --build --preset $(PRESET) --target command_page_files
	packaging/windows/package.sh build/windows-app $(BUILD)/tools/command_pages build/windows-packages

# The same, a test of the SBOM, and one that installs and removes the program under wine.
package-windows: windows-packages
	tests/release/sbom_test.py build/windows-packages/stalwick-*-windows-x64.spdx.json \
	    build/windows-packages/stalwick-*-windows-x64.zip build/windows-app
	cmake --build --preset $(PRESET) --target ord_synth
	packaging/windows/test-installer.sh build/windows-packages $(BUILD)/tools/ord_synth/ord_synth

# Makes them twice, elsewhere, and compares every byte.
check-windows-packages:
	scripts/install-deps.sh release
	rm -rf build/windows-reproducible
	packaging/release/check-reproducible.sh windows-packages build/windows-packages build/windows-reproducible

bench:
	scripts/install-deps.sh build test bench
	cmake --preset release -DSTALWICK_BUILD_BENCH=ON
	cmake --build --preset release --target stalwick-convert stalwick-inspect ord_synth decoder_bench floor decode window_bench
	build/release/bench/decoder_bench
	bench/compare.sh build/release
	bench/inspect.py build/release
	bench/window.sh build/release
	bench/memory.py build/release
	bench/python.py build/release
	bench/cluster.py build/release
	bench/regressions.py build/release/bench/ratios.json

screenshots:
	scripts/install-deps.sh build test screenshots
	cmake --preset $(PRESET)
	cmake --build --preset $(PRESET) --target window_screenshots ord_synth
	scripts/screenshots.sh $(BUILD)

# Pages of recordings in headless Chromium: nothing cut off, no accessibility rule broken.
check-pages:
	scripts/install-deps.sh build test pages
	cmake --preset $(PRESET)
	cmake --build --preset $(PRESET) --target stalwick-inspect ord_synth
	scripts/check-pages.sh $(BUILD)

# The documentation as pages for a browser, from a disk too: build/site/index.html (docs/releasing.md).
site:
	scripts/install-deps.sh build test site
	cmake --preset $(PRESET)
	cmake --build --preset $(PRESET) --target command_page_files
	tools/site/build.py $(BUILD)/tools/command_pages build/site
	tools/site/check.py build/site

# Each of its pages in headless Chromium, on a phone and a desktop, light and dark.
check-site: site
	scripts/install-deps.sh pages
	npm install --silent --no-audit --no-fund --prefix build/site-modules playwright-core@1 axe-core@4 > /dev/null
	node tests/site/check_site.mjs build/site-modules build/site-pictures build/site

# The commands for any Linux, linked statically, with notices and SBOM (docs/releasing.md).
tarball:
	scripts/install-deps.sh build test release
	cmake --preset static
	cmake --build --preset static
	packaging/release/make-tar.sh build/static $(ARTEFACTS)

# With only the archive, the commands return the same as those of a build; the SBOM lists their components.
test-tarball: tarball
	cmake --preset $(PRESET)
	cmake --build --preset $(PRESET) --target stalwick-convert stalwick-inspect ord_synth
	tests/release/tar_test.py $(ARTEFACTS)/stalwick-*-linux-*.tar.xz $(BUILD)
	tests/release/sbom_test.py $(ARTEFACTS)/stalwick-*-linux-*.spdx.json \
	    $(ARTEFACTS)/stalwick-*-linux-*.tar.xz build/static

# All that a release consists of and that is there or made here; release makes the Debian packages too.
artefacts:
	rm -rf $(ARTEFACTS)
	$(MAKE) tarball
	$(MAKE) site PRESET=static
	packaging/release/gather.sh build/site build/packages build/windows-packages $(ARTEFACTS)

# Builds them twice, elsewhere, and compares every byte.
check-artefacts:
	scripts/install-deps.sh release
	rm -rf build/reproducible
	packaging/release/check-reproducible.sh artefacts $(ARTEFACTS) build/reproducible

release:
	$(MAKE) packages
	$(MAKE) artefacts

# The Debian packages of the last commit, in build/packages (docs/releasing.md).
packages:
	scripts/install-deps.sh packages
	packaging/linux/build-packages.sh build/packages

# Installs, uses and removes them in a Debian root; makes them first if they are not of the last commit.
test-packages:
	[ "$$(cat build/packages/COMMIT 2> /dev/null)" = "$$(git rev-parse HEAD)" ] || $(MAKE) packages
	scripts/install-deps.sh build packages
	cmake --preset $(PRESET)
	cmake --build --preset $(PRESET) --target stalwick-convert ord_synth
	tests/packaging/packages_test.sh build/packages $(BUILD)

# Makes them again, in another directory, and compares every byte.
check-packages:
	[ "$$(cat build/packages/COMMIT 2> /dev/null)" = "$$(git rev-parse HEAD)" ] || $(MAKE) packages
	tests/packaging/same_packages.sh build/packages

install: build
	cmake --install $(BUILD) --prefix $(PREFIX)

format:
	scripts/install-deps.sh check
	scripts/format.sh

check-format:
	scripts/install-deps.sh check
	scripts/format.sh --check
	scripts/check-python.sh
	scripts/check-english.sh
	scripts/check-licenses.sh
	scripts/check-version.sh

# Reads clang's compile commands and builds nothing.
check-tidy:
	scripts/install-deps.sh build test check
	cmake --preset clang
	run-clang-tidy -p build/clang -quiet \
	    '$(CURDIR)/(cli|engine|logging|ord|outputs|page|platform|survey|writers)/.*\.cpp$$' > build/clang-tidy.txt 2>&1 || \
	    { grep -E '(warning|error): ' build/clang-tidy.txt; exit 1; }

clean:
	rm -rf build
