# The front door. CMake does the work (CMakePresets.json); this file sees to what it needs.
#
#   make demo           builds and runs the demonstration
#   make test           builds and runs the tests
#   make test-page      tries the page of yaxreg view in Chromium, which it installs
#   make check-PRESET   the tests of another preset: debug asan tsan coverage i686 armhf portable; or what
#                       is built to see that it can be: clang aarch64
#   make check-all      all of these
#   make coverage       the tests, then how much of each folder they reach, and what they do not that is not listed
#   make crash          the tests of crashes in full size, which takes about an hour
#   make fuzz           hostile inputs, a minute for each harness of fuzz/: TARGET=NAME for one, TIME=SECONDS
#   make soak           everything at once for an hour: processes, threads, kills, compaction: TIME=SECONDS
#   make bench          builds and runs the benchmarks
#   make bench-peers    measures the library beside other stores, and writes docs/performance.md
#   make packages       builds Debian's packages, looks at them with lintian and tries them
#   make test-packages  installs them into a clean system and tries them there
#   make reference      makes the reference of the public headers, a warning is an error
#   make format         formats all sources
#   make tidy           looks for defects with clang-tidy (.clang-tidy)
#   make lint           looks for defects with shellcheck and cppcheck
#   make update-abi     takes the symbols that libYAX.so exports over into the kept list
#   make update-pages   makes the kept manual page and completions of yaxreg anew
#   make clean          removes everything that was built

JOBS ?= $(shell nproc)
CHECKS := release debug asan tsan coverage i686 armhf portable
BUILDS := clang aarch64

NEEDS := g++ cmake
TOOL_NEEDS := libcli11-dev libedit-dev nlohmann-json3-dev
TEST_NEEDS := $(NEEDS) $(TOOL_NEEDS) googletest pkg-config bats bsdutils util-linux \
  file fish mypy python3-pytest zsh
NEEDS_i686 := g++-i686-linux-gnu
NEEDS_clang := clang-14
NEEDS_fuzz := clang-14
NEEDS_aarch64 := g++-aarch64-linux-gnu
NEEDS_armhf := g++-arm-linux-gnueabihf qemu-user-static

# CMake starts a make of its own; ours must not hand its flags down to it.
CMAKE := env -u MAKEFLAGS -u MFLAGS -u MAKELEVEL cmake
# The sanitizers want their part of the address space free, which randomised addresses do not promise.
# Not every container lets a process switch that off.
FIXED_ADDRESSES := setarch $(shell uname -m) -R
RUN_SANITIZED = $(shell $(FIXED_ADDRESSES) true 2>/dev/null && echo $(FIXED_ADDRESSES))
RUN_asan = $(RUN_SANITIZED)
RUN_tsan = $(RUN_SANITIZED)
RUN_fuzz = $(RUN_SANITIZED)

build = $(CMAKE) --preset $(1) && $(RUN_$(1)) $(CMAKE) --build --preset $(1) -j $(JOBS)

.PHONY: help demo test test-page packages test-packages reference crash fuzz soak bench bench-peers coverage check-all format tidy lint update-abi update-pages clean \
  $(CHECKS:%=check-%) $(BUILDS:%=check-%)

help:
	@sed -n 's/^#   //p' Makefile

# Large units and no pages: built in half the time. A compiler that warns of more is not stopped.
demo:
	@sh cmake/need-packages.sh $(NEEDS) $(TOOL_NEEDS)
	@sh cmake/run-quietly.sh build/demo/build.log "Building libYAX, its tool and its examples" sh -c '\
	  $(CMAKE) --preset demo -DCMAKE_UNITY_BUILD=ON -DCMAKE_UNITY_BUILD_BATCH_SIZE=12 \
	    -DYAX_WARNINGS_AS_ERRORS=OFF && \
	  $(CMAKE) --build --preset demo -j $(JOBS) --target yax_demo'
	@sh examples/demo/run.sh build/demo/examples build/demo/tools/yaxreg build/demo/house.svg

test: check-release

test-page:
	@sh cmake/need-packages.sh $(TEST_NEEDS) chromium
	@$(call build,release) --target yaxreg
	@ctest --preset release -R 'Yaxreg\.PageWorksInABrowser' --no-tests=error --verbose

$(CHECKS:%=check-%): check-%:
	@sh cmake/need-packages.sh $(TEST_NEEDS) $(NEEDS_$*)
	@$(call build,$*)
	@$(RUN_$*) ctest --preset $*

$(BUILDS:%=check-%): check-%:
	@sh cmake/need-packages.sh $(NEEDS) $(TOOL_NEEDS) $(NEEDS_$*)
	@$(call build,$*)
	@rm -rf build/$*/installed && cmake --install build/$* --prefix build/$*/installed >/dev/null
	@sh tests/build/check-installed.sh build/$*/installed

check-all:
	@for preset in $(BUILDS) $(CHECKS); do \
	  echo "== $$preset" && $(MAKE) --no-print-directory check-$$preset || exit; done

crash:
	@sh cmake/need-packages.sh $(TEST_NEEDS)
	@$(call build,release) --target yax_crash_tests yax_kill_tests yax_process_tests yaxreg_tests
	@YAX_CRASH_FULL=1 build/release/tests/yax_crash_tests
	@YAX_CRASH_FULL=1 build/release/tests/yax_kill_tests
	@YAX_CRASH_FULL=1 build/release/tests/yax_process_tests
	@YAX_CRASH_FULL=1 build/release/tests/yaxreg_tests --gtest_filter='SharedTool.*'

FUZZ_TARGETS := BackupFile Batches Calls Components Documents Faults Operations Patterns RegistryFile SharedObjects \
  SideFile Transactions
fuzz: TIME = 60
fuzz:
	@sh cmake/need-packages.sh $(NEEDS) $(TOOL_NEEDS) googletest $(NEEDS_fuzz)
	@$(call build,fuzz) --target fuzz_harnesses
	@sh fuzz/run.sh build/fuzz/fuzz tests/data/corpus $(TIME) $(or $(TARGET),$(FUZZ_TARGETS))

soak: TIME = 3600
soak:
	@sh cmake/need-packages.sh $(TEST_NEEDS)
	@$(call build,release) --target yax_process_tests yaxreg_tests yaxreg
	@sh tests/processes/soak.sh build/release $(TIME)

# dpkg-buildpackage starts a make of its own, too.
packages:
	@sh cmake/need-packages.sh $(NEEDS) $(TOOL_NEEDS) dpkg-dev debhelper dh-python doxygen lintian \
	  pkg-config python3-pytest
	@env -u MAKEFLAGS -u MFLAGS -u MAKELEVEL JOBS=$(JOBS) \
	  sh cmake/run-quietly.sh build/packages.log "Building the packages" sh packaging/make-packages.sh build/packages
	@tail -n 1 build/packages.log

test-packages: packages
	@sh cmake/need-packages.sh debootstrap
	@sh cmake/run-quietly.sh build/test-packages.log "Installing the packages into a clean system" \
	  sh packaging/test-packages.sh build/packages
	@tail -n 1 build/test-packages.log

reference:
	@sh cmake/need-packages.sh doxygen
	@sh docs/reference/test-reference.sh
	@sh docs/reference/make-reference.sh
	@echo "The reference is build/reference/html/index.html."

bench:
	@sh cmake/need-packages.sh $(NEEDS) libbenchmark-dev
	@$(call build,bench)
	@build/bench/bench/yax_bench
	@build/bench/bench/yax_bench_modes
	@build/bench/bench/yax_bench_sharing

# On the file system of this folder. Wants a machine that does nothing else.
bench-peers:
	@sh cmake/need-packages.sh $(NEEDS) libsqlite3-dev liblmdb-dev libtdb-dev libleveldb-dev
	@$(call build,bench) --target yax_bench_peers
	@cd build/bench && bench/yax_bench_peers --root $(CURDIR)

coverage: check-coverage
	@sh cmake/need-packages.sh gcovr
	@gcovr --delete --exclude-throw-branches --root . --filter framework/ --filter platform/ --filter registry/ --filter tools/ --filter yax/ \
	  --json build/coverage/coverage.json --txt build/coverage/coverage.txt build/coverage
	@python3 tests/coverage/report.py build/coverage/coverage.json tests/coverage/not-reached.txt

format:
	@sh cmake/need-packages.sh clang-format
	@find bench examples framework fuzz platform registry tests tools yax -name '*.h' -o -name '*.cpp' | xargs clang-format -i

# The sources that the release preset compiles; tests are left to the compilers' warnings.
tidy:
	@sh cmake/need-packages.sh $(TEST_NEEDS) clang-tidy
	@$(CMAKE) --preset release >/dev/null
	@sed -n 's|^ *"file": "$(CURDIR)/\(.*\)",*$$|\1|p' build/release/compile_commands.json | sort -u | \
	  grep -E '^(framework|platform|registry|tools|yax)/' | xargs -P $(JOBS) -n 4 clang-tidy -p build/release --quiet

# Scripts, and what cppcheck sees in the library that compilers do not. Left out: records that are filled by whoever
# makes them, calls of one's own virtual functions at the end, and a path that is taken to be longer than it is.
lint:
	@sh cmake/need-packages.sh shellcheck cppcheck
	@shellcheck -S warning .ci/run $$(git ls-files '*.sh')
	@cppcheck -j $(JOBS) --quiet --std=c++17 --language=c++ --error-exitcode=1 -I. \
	  --enable=warning,performance,portability --suppress=uninitMemberVar --suppress=uninitDerivedMemberVar \
	  --suppress=virtualCallInConstructor --suppress=arrayIndexOutOfBounds:registry/keytree/PathSearch.h \
	  framework platform registry yax

update-abi:
	@sh cmake/need-packages.sh $(NEEDS) $(TOOL_NEEDS)
	@$(call build,demo)
	@cmake -DUPDATE=ON -DNM=nm -DLIBRARY=build/demo/libYAX.so \
	  -DKEPT=tests/abi/exported-symbols.txt -P tests/abi/CheckExportedSymbols.cmake

update-pages:
	@sh cmake/need-packages.sh $(NEEDS) $(TOOL_NEEDS)
	@$(call build,demo) --target yaxreg_docs
	@build/demo/tools/yaxreg/yaxreg_docs tools/yaxreg/pages

clean:
	@rm -rf build
