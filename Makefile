# Every target installs what it needs and may be repeated. `make help` lists them.
.POSIX:
.SUFFIXES:
.PHONY: all help setup build test schemas demo fleet-demo arm size deb abi-baseline format check-format tidy asan tsan faults coverage fuzz bench count idle figures fleet-figures clean

SHELL = /bin/sh
JOBS = $$(nproc)
RELEASE = build/release
QUIET = --log-level=WARNING

all: build

help: ## this list
	@grep -hE '^[a-z-]+:.*## ' Makefile | sed 's/:.*## /\t/' | expand -t 16

setup: ## install the Debian packages that are missing
	@sh scripts/setup.sh

build: setup ## build the release into build/release
	@cmake -S . -B $(RELEASE) -G Ninja -DCMAKE_BUILD_TYPE=Release \
	  -DCMAKE_UNITY_BUILD=$${UNITY:-ON} $(QUIET) > /dev/null
	@cmake --build $(RELEASE) -j $(JOBS)

test: build ## build, and run every test
	@sh scripts/run_tests.sh $(RELEASE)
	@sh scripts/test_share.sh

schemas: build ## what zopctl prints for programs, against docs/schema, in every scenario
	@/usr/bin/python3 tests/schema/fits.py $(RELEASE) . all

demo: build ## read, update and dump simulated modems
	@sh scripts/demo.sh $(RELEASE)

fleet-demo: build ## a simulated fleet on real servers; DEVICES (10000), DAYS (7), EVERY (3600 s)
	@python3 scripts/fleet_demo.py $(RELEASE) $${DEVICES:-10000} $${DAYS:-7} $${EVERY:-3600}

arm: ## cross build for 32-bit ARM, and its tests under qemu
	@sh scripts/setup.sh arm
	@sh scripts/arm.sh

size: build arm ## sizes of the stripped module, and their limits
	@sh scripts/size.sh

deb: ## Debian packages of the committed sources, tried in a scratch root
	@sh scripts/setup.sh deb
	@sh scripts/deb.sh

abi-baseline: build ## record the library's interface again, after an intended change
	@sh scripts/abi.sh record $(RELEASE)/libzop_module.so.0

format: setup ## format the sources
	@git ls-files '*.cpp' '*.h' '*.c' | xargs clang-format -i

check-format: setup ## fail when a source is not formatted
	@git ls-files '*.cpp' '*.h' '*.c' | xargs clang-format --dry-run -Werror

tidy: setup ## static checks by cppcheck, gcc's analyzer, its linker and clang-tidy
	@sh scripts/cppcheck.sh
	@sh scripts/analyze.sh
	@sh scripts/odr.sh
	@sh scripts/tidy.sh

asan: setup ## tests under the address and undefined-behaviour sanitizers
	@sh scripts/sanitized_tests.sh address

tsan: setup ## tests under the thread sanitizer
	@sh scripts/sanitized_tests.sh thread

coverage: setup ## how much of the module the tests run: build/coverage/report.html
	@sh scripts/coverage.sh

fuzz: setup ## fuzz every target; FUZZ_SECONDS for each, 600 by default
	@sh scripts/fuzz.sh $${FUZZ_SECONDS:-600}

faults: setup ## try every function with every fault of the line; writes docs/faults.md
	@sh scripts/faults.sh

bench: setup ## benchmarks, compared with their floors
	@sh scripts/bench.sh $(RELEASE)

count: setup ## instructions of the hot roads on ARM, against bench/counts.txt; REASON="..." records
	@sh scripts/setup.sh arm
	@REASON="$(REASON)" sh scripts/count.sh

idle: build ## wake-ups of the module in a real minute without field testing, and in one with it
	@cmake --build $(RELEASE) --target idle_minute > /dev/null
	@$(RELEASE)/idle_minute > /dev/null

figures: bench ## the same as a page with plots, docs/figures.md
	@sh scripts/setup.sh figures
	@python3 scripts/figures.py $(RELEASE)/bench_programs.json $(RELEASE)/bench_module.json

fleet-figures: build ## both engines of a fleet with ROWS (1000000 10000000), written into docs/fleet.md
	@sh scripts/setup.sh figures
	@python3 scripts/fleet_figures.py $(RELEASE) $${ROWS:-1000000 10000000}

clean: ## remove everything that was built
	rm -rf build
