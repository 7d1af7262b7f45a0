# Two commands do all the set-up: `make demo` and `make test`. CMake and Ninja do the work; people
# who know them can use the presets of CMakePresets.json instead.
PRESET ?= $(if $(CI),ci,release)
JOBS ?= $(shell nproc)
BUILD := build/$(PRESET)
LOG := build/$(PRESET).configure.log

.PHONY: help demo test asan build debug packages configure clean

help: ## List the targets
	@sed -n 's/^\([a-z][a-z-]*\):.*## /\1|/p' $(MAKEFILE_LIST) | while IFS='|' read -r name what; do \
	    printf '  make %-9s %s\n' "$$name" "$$what"; done

demo: configure ## Build containers from real design files, open, check and damage them
	@cmake --build --preset $(PRESET) -j $(JOBS) --target examples
	@sh examples/demo.sh $(BUILD)/examples

test: build ## Build and run every test
	cd $(BUILD) && ctest --output-on-failure -j $(JOBS)

asan: ## Build and run every test under the address and undefined-behaviour sanitizers
	@$(MAKE) --no-print-directory test PRESET=asan

build: configure ## Build the library, the examples and the tests (PRESET=release)
	@cmake --build --preset $(PRESET) -j $(JOBS)

debug: ## Build all without optimisation
	@$(MAKE) --no-print-directory build PRESET=debug

packages: ## Install the Debian packages that are missing
	@sh packaging/install-packages.sh

configure: packages
	@mkdir -p build
	@cmake --preset $(PRESET) >$(LOG) 2>&1 || { cat $(LOG); exit 1; }

clean: ## Remove all build trees
	rm -rf build
