# The two commands a newcomer needs:
#   make demo   install what is missing, build, run the product
#   make test   install what is missing, build, run every test
BUILD_DIR ?= build
BUILD_TYPE ?= RelWithDebInfo
JOBS ?= $(shell nproc 2>/dev/null || echo 2)

SANITIZE_DIR ?= build-sanitize
FUZZ_DIR ?= build-fuzz
FUZZ_SECONDS ?= 600

.PHONY: all setup configure build test demo package translations clean test-sanitize setup-fuzz fuzz

all: build

setup:
	@sh tools/setup.sh

configure: setup
	cmake -S . -B $(BUILD_DIR) -DCMAKE_BUILD_TYPE=$(BUILD_TYPE)

build: configure
	cmake --build $(BUILD_DIR) -j $(JOBS)

test: build
	cd $(BUILD_DIR) && ctest --output-on-failure -j $(JOBS)

# The whole suite once more, built with AddressSanitizer and
# UndefinedBehaviorSanitizer in a folder of its own; any report fails it.
test-sanitize: setup
	cmake -S . -B $(SANITIZE_DIR) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DORVEX_SANITIZE=ON -DORVEX_BENCH=OFF
	cmake --build $(SANITIZE_DIR) -j $(JOBS)
	sh tests/sanitize/run.sh $(SANITIZE_DIR) $(JOBS)

# Every fuzz target for FUZZ_SECONDS (CI: 60), built with clang in its own folder.
setup-fuzz:
	@sh tools/setup.sh fuzz

fuzz: setup-fuzz
	cmake -S tests/fuzz -B $(FUZZ_DIR) -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=RelWithDebInfo
	cmake --build $(FUZZ_DIR) -j $(JOBS)
	sh tests/fuzz/run.sh $(FUZZ_DIR) $(FUZZ_SECONDS) $(JOBS)

# Extra host options: make demo DEMO_ARGS="--archive /tmp/my-archive"
demo: build
	@sh tools/demo.sh $(BUILD_DIR) $(DEMO_ARGS)

# The Debian package of the installed tree, in $(BUILD_DIR)/orvexworkbench_<version>_<arch>.deb.
package: build
	cmake --build $(BUILD_DIR) --target package

# Refreshes the catalogues from the sources; translate the new entries with
# Qt Linguist (linguist translations/orvexworkbench_de.ts) and commit them.
translations:
	lupdate -no-obsolete -locations none src -ts translations/orvexworkbench_de.ts
	lupdate -no-obsolete -locations none host -ts translations/orvexhost_de.ts
	lupdate -no-obsolete -locations none archive -ts translations/orvexarchive_de.ts
	lupdate -no-obsolete -locations none -pluralonly src -ts translations/orvexworkbench_en.ts
	lupdate -no-obsolete -locations none -pluralonly host -ts translations/orvexhost_en.ts

clean:
	rm -rf $(BUILD_DIR) $(SANITIZE_DIR) $(FUZZ_DIR)
