# Two commands do everything on a fresh machine: `make run` and `make test`. Both install what is missing with apt.

.PHONY: build package run test bench clean sanitizers

build:
	tools/install-packages build
	cmake --preset release
	cmake --build --preset release

# Opens the program; without a display, seals the bundled demo site on a private X server.
run: build
	tools/install-packages run
	tools/run build/release/quillox

sanitizers:
	cmake --preset sanitizers
	cmake --build --preset sanitizers

test:
	tools/install-packages build test
	$(MAKE) build sanitizers
	ctest --preset all

# build/package/quillox_VERSION_ARCHITECTURE.deb
package: build
	cmake --preset release -DCMAKE_INSTALL_PREFIX=/usr
	cmake --build --preset release
	cd build/release && cpack

bench: build
	tools/install-packages bench
	cmake --preset bench
	cmake --build --preset bench --target bare_window empty_window tap_decision site_rules usage_event usage_store update_check
	build/bench/benchmarks/tap_decision
	build/bench/benchmarks/site_rules
	build/bench/benchmarks/usage_event
	build/bench/benchmarks/usage_store
	build/bench/benchmarks/update_check
	/usr/bin/python3 benchmarks/hold_timing.py
	/usr/bin/python3 benchmarks/key_latency.py
	/usr/bin/python3 benchmarks/local_scheme.py
	/usr/bin/python3 benchmarks/recovery.py
	/usr/bin/python3 benchmarks/comeback.py
	/usr/bin/python3 benchmarks/session_start.py
	/usr/bin/python3 benchmarks/setup_start.py
	/usr/bin/python3 benchmarks/setup_frames.py
	/usr/bin/python3 benchmarks/first_paint.py

clean:
	rm -rf build
