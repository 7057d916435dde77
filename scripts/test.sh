#!/usr/bin/env bash
# Installs what is missing, then builds and runs every test:
#   1. the plain build (ctest), with a valgrind memcheck of the codec and
#      provider tests;
#   2. AddressSanitizer + UndefinedBehaviorSanitizer (LeakSanitizer included);
#   3. ThreadSanitizer on the concurrency tests against somd;
#   4. every libFuzzer target briefly on its seed corpus (clang);
#   5. the benchmarks once, as a smoke test (no timing is judged);
#   6. the Debian packages: built, installed with dpkg -i (needs root), the
#      consumer test and somctl against the installed /usr copy, lintian, and
#      removed again, also when a step fails.
# Every configuration treats warnings as errors; ccache is used when installed.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
jobs=$(nproc)
common=(-G Ninja -DQELSOMIF_WERROR=ON)
command -v ccache >/dev/null && common+=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)

echo "== plain build"
cmake -S . -B build "${common[@]}" -DCMAKE_BUILD_TYPE=Debug >/dev/null
cmake --build build -j "$jobs"
(cd build && ctest --output-on-failure -j "$jobs")
echo "== valgrind memcheck (codec and provider tests)"
for t in codec_test provider_test records_test; do
  valgrind --quiet --error-exitcode=1 --leak-check=full --errors-for-leak-kinds=definite,indirect \
    "build/tests/$t" --gtest_brief=1
done

echo "== AddressSanitizer + UndefinedBehaviorSanitizer"
cmake -S . -B build-asan "${common[@]}" -DCMAKE_BUILD_TYPE=Debug -DQELSOMIF_SANITIZE=ON >/dev/null
cmake --build build-asan -j "$jobs"
(cd build-asan && ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 \
   UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 ctest --output-on-failure -j "$jobs")

echo "== ThreadSanitizer (concurrency against somd)"
cmake -S . -B build-tsan "${common[@]}" -DCMAKE_BUILD_TYPE=Debug -DQELSOMIF_TSAN=ON >/dev/null
cmake --build build-tsan -j "$jobs" --target reliability_test somd
TSAN_OPTIONS=halt_on_error=1 build-tsan/tests/reliability_test --gtest_filter='Concurrency*'

echo "== fuzz smoke (libFuzzer, clang)"
cmake -S . -B build-fuzz "${common[@]}" -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DQELSOMIF_FUZZ=ON -DQELSOMIF_BUILD_TESTS=OFF >/dev/null
cmake --build build-fuzz -j "$jobs"
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
for target in build-fuzz/fuzz/fuzz_*; do
  name=${target##*/fuzz_}
  mkdir -p "$scratch/$name"
  "$target" -max_total_time=4 -rss_limit_mb=2048 -artifact_prefix="$scratch/$name-" \
    "$scratch/$name" "fuzz/corpus/$name" 2>&1 | grep -E "^Done|ERROR" || true
  if ls "$scratch/$name-"* >/dev/null 2>&1; then echo "fuzz_$name found a crash"; exit 1; fi
done

echo "== benchmark smoke (one short pass; no timing is judged)"
build/bench/qel_bench --benchmark_min_time=0.001 \
  --benchmark_filter='/65536$|Schedule|Exchange_Small|Naming_Batched|Naming_Libpci' >/dev/null
echo "== Debian packages: build, install, consumer test, lintian, remove"
bash packaging/make-packages.sh build-pkg >/dev/null
packages=(qel-som-tools libqel-somif-dev libqel-somif1)
# --purge also removes the socket.conf that the tools package wrote.
remove_packages() { dpkg --purge "${packages[@]}" >/dev/null 2>&1 || true; }
trap 'remove_packages; rm -rf "$scratch"' EXIT
dpkg -i build-pkg/*.deb >/dev/null
bash tests/packaging/consumer_test.sh --installed /usr tests/packaging/consumer /usr/sbin/somd
test -f /usr/share/man/man1/somctl.1.gz && test -f /usr/share/man/man8/somd.8.gz
lintian --fail-on error build-pkg/*.deb
remove_packages
echo "all stages passed"
