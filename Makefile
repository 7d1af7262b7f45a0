# Two commands do all the set-up: `make demo` and `make test`. CMake and Ninja do the work; people
# who know them can use the presets of CMakePresets.json instead.
PRESET ?= $(if $(CI),ci,release)
JOBS ?= $(shell nproc)
BUILD := build/$(PRESET)
LOG := build/$(PRESET).configure.log
SECONDS ?= 60
VERSION := $(shell sed -n 's/.*hwdef VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt)
PREFIX ?= /usr/local
SOURCES := git ls-files '*.h' '*.cpp' | grep -v '^examples/drivers/tree/'
BENCH := build/bench
BENCH_RUN = python3 -B benchmarks/tools/run.py --bin $(BENCH)/benchmarks --built examples/blinky/built \
    --cache $(BENCH)/corpus

.PHONY: help demo test asan asan-smoke tsan soak fuzz coverage valgrind build debug install deb abi abi-record docs pages lint format format-check tarball tarball-check \
    compilers bench bench-smoke \
    bench-build packages configure clean

help: ## List the targets
	@sed -n 's/^\([a-z][a-z-]*\):.*## /\1|/p' $(MAKEFILE_LIST) | while IFS='|' read -r name what; do \
	    printf '  make %-14s %s\n' "$$name" "$$what"; done

demo: configure ## Build containers from real design files, open, check and damage them
	@cmake --build --preset $(PRESET) -j $(JOBS) --target examples
	@sh examples/demo.sh $(BUILD)/examples

test: build ## Build and run every test
	cd $(BUILD) && ctest --output-on-failure -j $(JOBS) $(CTEST_FLAGS)

asan: ## Run every test, and fuzz a little, under the address and undefined-behaviour sanitizers
	@sh packaging/install-packages.sh packaging/debian-packages.txt packaging/fuzz-packages.txt
	@$(MAKE) --no-print-directory test PRESET=asan

asan-smoke: ## The part of asan that tests the zip layer and hostile containers, without gigabytes, and fuzzing
	@sh packaging/install-packages.sh packaging/debian-packages.txt packaging/fuzz-packages.txt
	@cmake --preset asan >/dev/null
	@cmake --build --preset asan -j $(JOBS) --target fuzzers \
	    tests_platform_iostreams tests_hostile
	cd build/asan && ctest --output-on-failure -j $(JOBS) \
	    -L '^(fuzz|tests_(platform_iostreams|hostile))$$' -E 'StoredSize|MemberSize|MemberOffset'

tsan: ## Run the tests with threads under the thread sanitizer
	@$(MAKE) --no-print-directory configure PRESET=tsan
	@cmake --build --preset tsan -j $(JOBS) --target tests_platform tests_reliability
	cd build/tsan && ctest --output-on-failure -j $(JOBS) -R '^(Threads|ComMsgMgr|HPAParamMgr|HUTEnv)\.'

soak: configure ## Open 100,000 and write 10,000 times in one process, which must not grow
	@cmake --build --preset $(PRESET) -j $(JOBS) --target tests_reliability
	HWDEF_SOAK_OPENS=100000 HWDEF_SOAK_WRITES=10000 $(BUILD)/tests/tests_reliability --gtest_filter='Soak.*'

fuzz: ## Fuzz each target for SECONDS=60 and keep what was found for the next run
	@sh packaging/install-packages.sh packaging/debian-packages.txt packaging/fuzz-packages.txt
	@cmake --preset asan >/dev/null
	@cmake --build --preset asan -j $(JOBS) --target fuzzers
	@sh tests/fuzz/run.sh build/asan/tests/fuzz $(SECONDS) $(JOBS)

coverage: ## Run every test and show which lines of the library none of them reaches
	@sh packaging/install-packages.sh packaging/debian-packages.txt packaging/coverage-packages.txt
	@cmake --preset coverage >/dev/null
	@cmake --build --preset coverage -j $(JOBS)
	@find build/coverage -name '*.gcda' -delete
	cd build/coverage && ctest --output-on-failure -j $(JOBS) -E "BomBomb|LongNames|DriverSources.areNotResolved|DriverSources.areWalkedOnce|Milliseconds|isOpenedWithAsMany|isGivenUpWhen"  # judged by time, which counting takes
	gcovr --root . --filter hwdef/ --filter platform/ --gcov-ignore-parse-errors --exclude-throw-branches \
	    --fail-under-line 95 build/coverage

valgrind: ## Run the tests under valgrind: no leak, no invalid access
	@sh packaging/install-packages.sh packaging/debian-packages.txt packaging/valgrind-packages.txt
	@$(MAKE) --no-print-directory build
	@sh tests/valgrind.sh $(BUILD)/tests $(JOBS)

build: configure ## Build the library, the examples and the tests (PRESET=release)
	@cmake --build --preset $(PRESET) -j $(JOBS)

debug: ## Build all without optimisation
	@$(MAKE) --no-print-directory build PRESET=debug

install: configure ## Install library, headers and command below PREFIX=/usr/local (DESTDIR= for packagers)
	@cmake -S . -B $(BUILD) -DCMAKE_INSTALL_PREFIX=$(PREFIX) >/dev/null  # places below /usr differ
	@$(MAKE) --no-print-directory build
	DESTDIR=$(DESTDIR) cmake --install $(BUILD) --prefix $(PREFIX)
	@[ -n "$(DESTDIR)" ] || [ "$$(id -u)" -ne 0 ] || ldconfig  # else no program would find the library

deb: packages ## Build the Debian packages into build/deb/debs
	-@sh packaging/install-packages.sh packaging/deb-packages.txt
	@sh packaging/make-debs.sh build/deb
	@! command -v lintian >/dev/null || lintian --fail-on error build/deb/debs/*.deb

abi: configure ## Compare the exported interface with the recorded one
	@cmake --build --preset $(PRESET) -j $(JOBS) --target hwdef >/dev/null
	@sh packaging/abi.sh $(VERSION) $(BUILD)/libhwdef.so.$(firstword $(subst ., ,$(VERSION)))

abi-record: configure ## Record the exported interface as it is now
	@cmake --build --preset $(PRESET) -j $(JOBS) --target hwdef >/dev/null
	@sh packaging/abi.sh $(VERSION) $(BUILD)/libhwdef.so.$(firstword $(subst ., ,$(VERSION))) record

docs: ## Make the HTML manual of the public headers; fails on a warning
	@sh packaging/install-packages.sh packaging/docs-packages.txt
	@sh packaging/docs.sh $(VERSION) build/docs

pages: configure ## Write anew what the pages take from the code
	@cmake --build --preset $(PRESET) -j $(JOBS) --target pages

lint: configure ## Judge the sources by .clang-tidy (LINT="hwdef tools" takes a part)
	@sh packaging/install-packages.sh packaging/lint-packages.txt
	@sh packaging/lint.sh $(BUILD) $(JOBS) $(LINT)

format: ## Write the sources as clang-format wants them
	@$(SOURCES) | xargs clang-format -i

format-check: ## Tell which sources clang-format would change
	@sh packaging/install-packages.sh packaging/lint-packages.txt
	@$(SOURCES) | xargs clang-format --dry-run --Werror

compilers: ## Build all with g++ and clang, optimised and not; a warning is a failure
	@sh packaging/install-packages.sh packaging/debian-packages.txt packaging/fuzz-packages.txt
	@for preset in ci gcc-debug clang clang-debug; do cmake --preset $$preset >/dev/null && \
	    cmake --build --preset $$preset -j $(JOBS) || exit 1; done

tarball: ## Pack the sources of this commit
	@mkdir -p build
	@git archive --prefix=hwdef-$(VERSION)/ -o build/hwdef-$(VERSION).tar.gz HEAD
	@echo build/hwdef-$(VERSION).tar.gz

tarball-check: tarball ## Build the packed sources, which need no git, and run the demo
	@rm -rf build/tarball && mkdir build/tarball
	@tar -C build/tarball -xzf build/hwdef-$(VERSION).tar.gz
	@$(MAKE) --no-print-directory -C build/tarball/hwdef-$(VERSION) demo

bench: bench-build ## Measure everything against other tools and write docs/performance.md (half an hour)
	@$(BENCH_RUN) --results $(BENCH)/results.json
	@python3 -B benchmarks/tools/report.py $(BENCH)/results.json benchmarks/performance.md.in docs/performance.md

bench-smoke: bench-build ## Run every benchmark once on a small corpus; only results are judged
	@$(BENCH_RUN) --small --results $(BENCH)/smoke.json
	@python3 -B benchmarks/tools/report.py $(BENCH)/smoke.json benchmarks/performance.md.in $(BENCH)/smoke.md >/dev/null

bench-build: packages
	@sh packaging/install-packages.sh packaging/benchmark-packages.txt
	@cmake -S . -B $(BENCH) -G Ninja -DCMAKE_BUILD_TYPE=Release -DHWDEF_BUILD_BENCHMARKS=ON \
	    -DHWDEF_BUILD_TESTS=OFF -DHWDEF_BUILD_EXAMPLES=OFF -DHWDEF_WERROR=$(if $(CI),ON,OFF) >/dev/null
	@cmake --build $(BENCH) -j $(JOBS) --target benchmarks

packages: ## Install the Debian packages that are missing
	@sh packaging/install-packages.sh

configure: packages
	@mkdir -p build
	@cmake --preset $(PRESET) >$(LOG) 2>&1 || { cat $(LOG); exit 1; }

clean: ## Remove all build trees
	rm -rf build
