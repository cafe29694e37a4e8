# The two commands a newcomer needs:
#   make demo   install what is missing, build, run the product
#   make test   install what is missing, build, run every test
BUILD_DIR ?= build
BUILD_TYPE ?= RelWithDebInfo
JOBS ?= $(shell nproc 2>/dev/null || echo 2)

.PHONY: all setup configure build test demo package translations clean

all: build

setup:
	@sh tools/setup.sh

configure: setup
	cmake -S . -B $(BUILD_DIR) -DCMAKE_BUILD_TYPE=$(BUILD_TYPE)

build: configure
	cmake --build $(BUILD_DIR) -j $(JOBS)

test: build
	cd $(BUILD_DIR) && ctest --output-on-failure -j $(JOBS)

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
	rm -rf $(BUILD_DIR)
