# The short ways in; CMakePresets.json and scripts/ hold what they do.
#
# make run [ARGS=--once]   builds, and publishes a demo station's files from a simulated playout
# make desktop             the same with the windows of zeb, the operator's desktop program
# make test                builds, and runs every test
# make asan                the tests under the address and undefined-behaviour sanitizers
# make fuzz                each fuzz target for 30 seconds (SECONDS_EACH=n)
# make bench               the benchmarks, on a release build; ARGS=--write: also docs/performance.md; ARGS=--quick: do they work
# make format, make tidy   clang-format, clang-tidy
# make check               what must pass before a change goes in: format, includes, tests, sanitizers, benchmarks build, manual
# make install             builds a release and installs it below PREFIX (/usr/local)
# make manual              the manual as a web site (build/manual/site) and as man pages (build/manual/man)
# make deb                 the Debian packages zeb, zeb-desktop and zeb-doc, in build/deb
# make try-package         installs them in a clean root under systemd, and tries what can go wrong there (root only)
# make first-hour          the steps of the manual's start page, from the package to a title on a page (root only)
# make container           the container image zeb, with podman or docker
# make try-container       builds it on a clean root, and tries what can go wrong there (root only)
# make release             what a version is given out as: archive, packages, components, checksums
# make windows             zeb.exe, zebd.exe, zebctl.exe and the installer, cross-built, in build/windows; first their libraries (an hour, once)
# make test-windows        their tests under Wine
# make help                this list

MAKEFLAGS += --no-print-directory
JOBS ?= $(shell nproc)
SECONDS_EACH ?= 30
PREFIX ?= /usr/local

.PHONY: help programs run desktop test asan fuzz bench format tidy check install manual deb try-package first-hour release windows test-windows container try-container

help:
	@sed -n 's/^# \(make .*\)/\1/p' Makefile

build/%/build.ninja:
	@cmake --preset $* >/dev/null

# Without the tests, whose libraries `make run` does not install; scripts/test turns them on.
programs:
	@[ -f build/dev/build.ninja ] || cmake --preset dev -DZEB_TESTS=OFF >/dev/null
	@ninja -C build/dev -j$(JOBS) zebd zebctl zeb-labelserver

run:
	@scripts/setup
	@$(MAKE) programs
	@scripts/demo $(ARGS)

desktop:
	@scripts/setup desktop
	@[ -f build/dev/build.ninja ] || cmake --preset dev -DZEB_TESTS=OFF >/dev/null
	@ninja -C build/dev -j$(JOBS) zeb zebctl
	@scripts/demo --desktop $(ARGS)

test:
	@scripts/test

asan:
	@scripts/test asan

fuzz:
	@scripts/setup develop
	@$(MAKE) build/fuzz/build.ninja
	@ninja -C build/fuzz -j$(JOBS)
	@scripts/fuzz $(SECONDS_EACH)

bench:
	@scripts/setup develop
	@$(MAKE) build/release/build.ninja
	@ninja -C build/release -j$(JOBS)
	@scripts/bench $(ARGS)

format:
	@scripts/format

tidy:
	@scripts/tidy

check:
	@scripts/check

install:
	@scripts/setup
	@$(MAKE) build/release/build.ninja
	@ninja -C build/release -j$(JOBS) zebd zebctl zeb-labelserver \
	  $$(ninja -C build/release -t targets all | sed -n 's/^\(zeb\): .*/\1/p')
	@cmake --install build/release --prefix $(PREFIX)

manual:
	@scripts/setup manual
	@$(MAKE) programs
	@scripts/manual

deb:
	@scripts/deb

release:
	@scripts/release

first-hour:
	@scripts/first-hour

try-package:
	@scripts/try-package

container:
	@scripts/container

try-container:
	@scripts/try-container

windows:
	@scripts/windows/setup
	@scripts/windows/build zebd zebctl zeb
	@scripts/windows/installer

test-windows:
	@scripts/windows/test
