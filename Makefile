# Entry points for people: each target configures, builds and runs by itself.
#   make demo   build and run the demo program
#   make test   build and run every test

BUILD_DIR ?= build
CMAKE_ARGS ?=
JOBS ?= $(shell nproc 2>/dev/null || echo 2)

.PHONY: all demo test deps configure clean

all: test

deps:
	@sh tools/install-deps.sh

configure: deps
	cmake -S . -B $(BUILD_DIR) -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	  -DPROPERTIES_WERROR=ON $(CMAKE_ARGS)

demo: configure
	cmake --build $(BUILD_DIR) -j $(JOBS) --target PropertiesDemo
	$(BUILD_DIR)/examples/PropertiesDemo

test: configure
	cmake --build $(BUILD_DIR) -j $(JOBS)
	ctest --test-dir $(BUILD_DIR) --output-on-failure -j $(JOBS)

clean:
	rm -rf $(BUILD_DIR)
