# make run                  builds the command and reads an example scene
# make quick                builds and runs the unit and golden tests
# make test                 builds everything, with and without sanitizers, and runs every test; those of the library
#                           also for AArch64 in an emulator, and those of the Python package
# make python               builds sdist and wheel of the Python package in build/python/dist, installs the wheel in
#                           build/python/venv and tests it
# make python-docs          builds the documentation of the Python package in build/python/html
# make install              installs library, command and manual below PREFIX (default: /usr/local)
# make bench                measures the parts of the reader, and compares it with other libraries on generated files;
#                           make bench-python measures only the Python package and work on many files (10 minutes)
# make fuzz MINUTES=n       runs every fuzzer for n minutes
# make fuzz-python STEPS=n  takes n random steps on scenes in Python, under the sanitizers
# make lint                 runs clang-tidy and cppcheck
# make coverage             reports which lines and branches the tests reach
# make mutants N=n SEED=s   changes the sources in n random places and reports which changes no test detects
# make format, make goldens, make grammar: see CONTRIBUTING.md

LOCALES := $(CURDIR)/build/locales
MUTATOR := build/mutator
NODE_MODULES := $(CURDIR)/build/node_modules
CONFIGURE := cmake -DVRN_WARNINGS_AS_ERRORS=ON -DVRN_LOCALES=$(LOCALES) -DVRN_BENCHMARKS=OFF --log-level=WARNING

# Some tests mostly wait.
TEST_JOBS := $(shell echo $$(($$(nproc) + 1)))

.PHONY: run test python python-docs python-package test-big-endian quick install bench bench-reader bench-python bench-data fuzz fuzz-python lint coverage mutants packages checks format goldens grammar clean

run: packages
	@$(CONFIGURE) --preset release >/dev/null
	@cmake --build --preset release --target vrn_command
	build/release/vrn check examples/first_scene.vrn
	build/release/vrn info examples/first_scene.vrn

test: checks $(LOCALES)/de_DE.UTF-8 $(NODE_MODULES)
	$(CONFIGURE) --preset release
	cmake --build --preset release
	ctest --preset release -j$(TEST_JOBS)
	@$(MAKE) --no-print-directory python
	$(CONFIGURE) --preset asan
	cmake --build --preset asan
	ctest --preset asan -j$(TEST_JOBS)
	scripts/fuzz 2
	$(CONFIGURE) --preset tsan
	cmake --build --preset tsan
	build/tsan/tests/vrn_thread_tests
	@scripts/install-packages packages-aarch64.txt
	$(CONFIGURE) --preset aarch64
	cmake --build --preset aarch64
	ctest --preset aarch64 -j$(TEST_JOBS)

test-big-endian: checks
	@scripts/install-packages packages-s390x.txt
	$(CONFIGURE) --preset s390x
	cmake --build --preset s390x
	ctest --preset s390x -j$(TEST_JOBS)

# The tests compare the package with the command.
PYTHON := build/python/venv/bin/python
python: checks python-package $(NODE_MODULES)
	@$(CONFIGURE) --preset release >/dev/null
	@cmake --build --preset release --target vrn_command
	VRN=$(CURDIR)/build/release/vrn $(PYTHON) -m pytest --quiet --timeout 300 --ignore python/tests/farm --ignore python/tests/usd --ignore python/tests/third_parties python/tests
	cd python/tests/farm && VRN=$(CURDIR)/build/release/vrn $(CURDIR)/$(PYTHON) -m pytest --quiet
	cd python/tests/usd && $(CURDIR)/$(PYTHON) -m pytest --quiet --timeout 300
	cd python/tests/third_parties && $(CURDIR)/$(PYTHON) -m pytest --quiet

python-package: checks $(PYTHON)
	scripts/python-dist
	$(PYTHON) python/tests/interpreters.py build/python/wheelhouse
	$(PYTHON) -m pip install --quiet --force-reinstall --no-deps build/python/dist/vrn-*.whl

# A warning is an error.
python-docs: python-package
	$(PYTHON) -m sphinx --quiet --fail-on-warning --keep-going --conf-dir docs/python docs build/python/html

$(PYTHON): $(filter-out %-bench.txt,$(wildcard python/requirements*.txt))
	python3 -m venv build/python/venv
	$@ -m pip install --quiet $(addprefix --requirement ,$^)
	@touch $@

quick: checks $(LOCALES)/de_DE.UTF-8
	@$(CONFIGURE) --preset release >/dev/null
	@cmake --build --preset release --target vrn_tests
	LOCPATH=$(LOCALES) build/release/tests/vrn_tests --gtest_brief=1

# DESTDIR, if set, is prepended to the prefix.
PREFIX := /usr/local
install: packages
	@$(CONFIGURE) --preset release -DCMAKE_INSTALL_PREFIX=$(abspath $(PREFIX)) >/dev/null
	@cmake --build --preset release --target vrn_installed
	cmake --install build/release

packages:
	@scripts/install-packages

checks:
	@scripts/install-packages packages.txt packages-checks.txt

bench: bench-reader bench-python

bench-reader: bench-data
	build/release/bench_pieces --benchmark_min_time=0.05
	python3 bench/run.py build/release build/bench

# Both tables are printed, also if a figure of the first one misses its requirement.
bench-python: bench-data python-package
	$(PYTHON) -m pip install --quiet --requirement python/requirements-bench.txt
	cd build/bench && $(CURDIR)/$(PYTHON) $(CURDIR)/bench/python.py ../release . ; status=$$?; \
	  $(CURDIR)/$(PYTHON) $(CURDIR)/bench/farm.py ../release/vrn . && exit $$status

bench-data: packages
	@dpkg-query --show libsimdjson-dev libbenchmark-dev >/dev/null || \
	  (echo "make bench needs the packages libsimdjson-dev and libbenchmark-dev" >&2; exit 1)
	@$(CONFIGURE) --preset release -DVRN_BENCHMARKS=ON >/dev/null
	@cmake --build --preset release
	@cmp -s build/release/bench_generate build/bench/made_by || (mkdir -p build/bench && \
	  build/release/bench_generate build/bench && cp build/release/bench_generate build/bench/made_by)

MINUTES := 10
fuzz: checks
	$(CONFIGURE) --preset asan
	cmake --build --preset asan --target vrn_replays
	scripts/fuzz $$((60 * $(MINUTES)))

STEPS := 100000
fuzz-python: checks $(PYTHON)
	scripts/fuzz-python $(STEPS)

lint: checks
	@scripts/lint

coverage: checks $(LOCALES)/de_DE.UTF-8
	@$(CONFIGURE) --preset asan >/dev/null
	cmake --build --preset asan --target vrn_tests vrn_host_tests vrn_thread_tests vrn_check_tests vrn_replays
	ctest --preset asan -R '^coverage$$' --verbose

N := 100
SEED := 1
mutants: checks $(MUTATOR)
	@$(MUTATOR)/bin/python scripts/mutants --count $(N) --seed $(SEED)

# The Python environment with the mutation tool.
$(MUTATOR): scripts/requirements.txt
	python3 -m venv $@
	$@/bin/pip install --quiet --requirement $<
	@touch $@

# A compiled German locale in the build folder, which needs no root privileges.
$(LOCALES)/de_DE.UTF-8:
	@mkdir -p $(LOCALES)
	localedef -i de_DE -f UTF-8 $@.new
	mv $@.new $@

# The glTF validator for the tests of conversion, and a type checker for those of the Python package.
$(NODE_MODULES): tests/convert/package.json
	@command -v npm >/dev/null || (apt-get update -qq && apt-get install -qq -y --no-install-recommends npm)
	@mkdir -p build
	@cp $< build/package.json
	@cd build && npm install --no-package-lock --no-audit --no-fund --loglevel=error
	@touch $@

format:
	clang-format -i $$(git ls-files '*.h' '*.cpp')

# Overwrites the expected scenes and logs of tests/data, and the reports of tests/cli/golden.
goldens:
	VRN_UPDATE_GOLDENS=1 build/release/tests/vrn_tests --gtest_filter='*Golden*'
	VRN_UPDATE_GOLDENS=1 VRN=$(CURDIR)/build/release/vrn python3 tests/cli/test_check_types.py Reports

grammar:
	python3 scripts/grammar.py > docs/grammar.md

clean:
	rm -rf build
