# Entry points for people: each target configures, builds and runs by itself.
#   make demo   build and run the demo program
#   make test   build and run every test
#   make asan   every test under AddressSanitizer + UndefinedBehaviorSanitizer
#   make tsan   the concurrency tests under ThreadSanitizer

BUILD_DIR ?= build
CMAKE_ARGS ?=
JOBS ?= $(shell nproc 2>/dev/null || echo 2)

.PHONY: all demo test asan tsan deps configure clean

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

asan: deps
	cmake -S . -B build-asan -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	  -DPROPERTIES_WERROR=ON -DPROPERTIES_SANITIZE=address,undefined
	cmake --build build-asan -j $(JOBS)
	ctest --test-dir build-asan --output-on-failure -j $(JOBS)

# Only the tests that run threads: death tests and TSan do not mix well.
tsan: deps
	cmake -S . -B build-tsan -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	  -DPROPERTIES_WERROR=ON -DPROPERTIES_SANITIZE=thread \
	  -DPROPERTIES_BUILD_EXAMPLES=OFF
	cmake --build build-tsan -j $(JOBS) --target PropertiesTests
	TSAN_OPTIONS=halt_on_error=1 build-tsan/tests/PropertiesTests \
	  --gtest_filter='ConcurrencyTest.*:PropertiesTest.*:PropertyThreadGuardTest.*'

clean:
	rm -rf $(BUILD_DIR) build-asan build-tsan
