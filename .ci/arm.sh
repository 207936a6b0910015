#!/usr/bin/env bash
# The 32-bit ARM leg: cross-builds everything for arm-linux-gnueabihf (preset arm-linux)
# and runs the whole test suite under qemu-arm with the cross sysroot, then prints how
# many tests ran under emulation, then builds the armhf packages. Also keeps the
# Android build honest, which cannot be compiled here: the sources that go into it may
# use only what bionic offers at the API level of the android-armv7 preset.
# Environment: KESH_ARM_BUILD_DIR (default build/arm-linux), KESH_ARM_JOBS (default nproc).
set -euo pipefail
cd "$(dirname "$0")/.."

build=${KESH_ARM_BUILD_DIR:-build/arm-linux}
jobs=${KESH_ARM_JOBS:-$(nproc)}

install_packages() {
  local need=() pkg
  for pkg in cmake ninja-build g++-arm-linux-gnueabihf qemu-user googletest libhwy-dev nlohmann-json3-dev; do
    dpkg -s "$pkg" >/dev/null 2>&1 || need+=("$pkg")
  done
  if [ ${#need[@]} -gt 0 ]; then
    export DEBIAN_FRONTEND=noninteractive
    apt-get update -qq
    apt-get install -y -qq "${need[@]}"
  fi
}

# Functions and headers that glibc has and bionic lacks at API level 24, and that a
# change could easily bring in. Calls and includes are looked for in the sources that
# the Android build compiles (the tests are not among them).
check_bionic_subset() {
  local functions='pthread_(set|get)affinity_np|pthread_attr_setaffinity_np|getrandom|getentropy'
  functions+='|aligned_alloc|timespec_get|reallocarray|secure_getenv|pthread_cond_clockwait'
  functions+='|pthread_mutex_clocklock|sem_clockwait|memfd_create|glob|getloadavg|posix_spawnp?'
  functions+='|qsort_r|backtrace|backtrace_symbols|malloc_trim|strerrordesc_np|gnu_get_libc_version'
  local headers='execinfo|error|sys/random|gnu/libc-version|fts'
  local hits
  hits=$(grep -rnE --include='*.cc' --include='*.c' --include='*.h' \
           -e "(^|[^A-Za-z0-9_.>])($functions) *\\(" \
           -e "#include *<($headers)\\.h>" src emulator tools 2>/dev/null || true)
  if [ -n "$hits" ]; then
    echo "Not available to the Android build (bionic, API level 24):"
    echo "$hits"
    return 1
  fi
  echo "Android subset check: no glibc-only call or header in src/, emulator/, tools/"
}

# Numbers (as ctest numbers them) of the registered tests whose command runs a binary
# under qemu-arm; test names may hold blanks, numbers do not.
emulated_test_numbers() {
  local dir
  dir=$(mktemp -d)
  ctest --test-dir "$build" --show-only=json-v1 >"$dir/tests.json"
  cat >"$dir/numbers.cmake" <<'CMAKE'
file(READ ${json} doc)
string(JSON count LENGTH "${doc}" tests)
set(numbers "")
if(count GREATER 0)
  math(EXPR last "${count} - 1")
  foreach(i RANGE ${last})
    string(JSON program ERROR_VARIABLE no_command GET "${doc}" tests ${i} command 0)
    if(NOT no_command AND program MATCHES "qemu-arm$")
      math(EXPR number "${i} + 1")
      string(APPEND numbers "${number}\n")
    endif()
  endforeach()
endif()
file(WRITE ${out} "${numbers}")
CMAKE
  cmake -Djson="$dir/tests.json" -Dout="$dir/numbers.txt" -P "$dir/numbers.cmake"
  cat "$dir/numbers.txt"
  rm -rf "$dir"
}

install_packages
check_bionic_subset
scripts/fetch-target-packages.sh armhf build/target-packages-armhf libtinyxml2-9 libtinyxml2-dev

cmake --preset arm-linux -B "$build"
cmake --build "$build" -j "$jobs"

log=$(mktemp)
trap 'rm -f "$log"' EXIT
status=0
ctest --test-dir "$build" -j "$jobs" --output-on-failure --timeout 900 2>&1 | tee "$log" ||
  status=$?

# ctest's line per test: "  3/97 Test  #3: name ....   Passed    0.10 sec", the result
# also ***Failed, ***Skipped, ***Not Run, ***Timeout or ***Exception: ...
tally=$(awk 'NR == FNR { emulated[$1] = 1; next }
             match($0, /^ *[0-9]+\/[0-9]+ Test +#[0-9]+:/) {
               number = substr($0, RSTART, RLENGTH); sub(/.*#/, "", number); sub(/:$/, "", number)
               if (!(number in emulated) || index($0, "***Skipped") || index($0, "***Not Run")) next
               ran++
               if ($0 ~ /[. ]Passed +[0-9.]+ sec$/) passed++
             }
             END { printf "%d %d", ran, passed }' <(emulated_test_numbers) "$log")
read -r ran passed <<<"$tally"
echo "Tests run under emulation (qemu-arm, arm-linux-gnueabihf): $ran, of which $passed passed"
if [ "$ran" -eq 0 ]; then
  echo "No test ran under emulation"
  exit 1
fi

# The armhf packages, made like the native ones; CPack's Debian generator needs file.
# The cross compiler does not tell CMake the multiarch library folder.
dpkg -s file >/dev/null 2>&1 || apt-get install -y -qq file
scripts/build-packages.sh "${KESH_ARM_PACKAGE_DIR:-build/arm-package}" \
  --toolchain cmake/toolchains/arm-linux-gnueabihf.cmake -DCMAKE_INSTALL_LIBDIR=lib/arm-linux-gnueabihf
exit $status
