#!/usr/bin/env bash
# Installs what Lumivue needs on Debian 12, builds it, and then either starts
# the editor or runs every test.
#
#   scripts/setup.sh editor   install, build, start the editor
#   scripts/setup.sh test     install, build, run all tests (also under
#                             AddressSanitizer and UndefinedBehaviorSanitizer)
set -euo pipefail
cd "$(dirname "$0")/.."

# Every package the project needs, in one list.
PACKAGES=(
  build-essential cmake ninja-build ccache pkg-config
  qt6-base-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  libjpeg62-turbo-dev libpng-dev libtiff-dev libgif-dev libexiv2-dev
  libfreetype-dev libfontconfig-dev fonts-dejavu-core
  clang libclang-rt-14-dev
  xvfb xauth
)

install_packages() {
  local missing=()
  for p in "${PACKAGES[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "ok installed" || missing+=("$p")
  done
  if [ ${#missing[@]} -gt 0 ]; then
    echo "Installing: ${missing[*]}"
    local sudo=""
    [ "$(id -u)" -eq 0 ] || sudo="sudo"
    $sudo apt-get update -qq
    DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
  fi
}

build() {  # build DIR [cmake options...]
  local dir=$1; shift
  cmake -S . -B "$dir" -G Ninja "$@" >/dev/null
  cmake --build "$dir"
}

case "${1:-}" in
  editor)
    install_packages
    build build
    if [ -z "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
      echo "No display: starting the editor under xvfb-run." >&2
      exec xvfb-run -a ./build/lumivue "${@:2}"
    fi
    exec ./build/lumivue "${@:2}"
    ;;
  test)
    install_packages
    build build
    (cd build && QT_QPA_PLATFORM=offscreen ctest --output-on-failure)
    # The engine and its tests again, with the sanitizers.
    build build-asan -DCMAKE_BUILD_TYPE=Debug -DLUMIVUE_SANITIZE=ON -DLUMIVUE_BUILD_UI=OFF \
      -DLUMIVUE_BUILD_BENCH=OFF
    (cd build-asan && ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
      ctest --output-on-failure)
    # Reading under libFuzzer, a short run each: our own formats' readers,
    # whole files through the libraries into the image record, and the
    # parameter files. Picture targets are seeded with the shared test files
    # of their format and its damaged ones, when they are there; the curve
    # and parameter-file targets with the curve files in fuzz/seeds.
    CC=clang CXX=clang++ build build-fuzz -DCMAKE_BUILD_TYPE=RelWithDebInfo \
      -DLUMIVUE_BUILD_UI=OFF -DLUMIVUE_BUILD_TESTS=OFF -DLUMIVUE_BUILD_BENCH=OFF \
      -DLUMIVUE_BUILD_FUZZ=ON \
      -DCMAKE_CXX_FLAGS="-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=undefined"
    for target in build-fuzz/fuzz/*_fuzz; do
      name=$(basename "$target" _fuzz)
      corpus=$(mktemp -d)
      case $name in
        targa) seeds=../shared/testdata/tga extension=tga ;;
        jpeg) seeds=../shared/testdata/jpeg extension=jpg ;;
        tiff) seeds=../shared/testdata/tiff extension=tif ;;
        curve | paramfile) seeds=fuzz/seeds/curve extension= ;;
        *) seeds=../shared/testdata/$name extension=$name ;;
      esac
      [ -d "$seeds" ] || seeds=
      if [ -n "$extension" ]; then
        cp ../shared/testdata/corrupt/*."$extension" "$corpus"/ 2>/dev/null || true
      fi
      echo "Fuzzing $name for ${FUZZ_SECONDS:-20} s"
      # A crash's input lands in build-fuzz/, and its whole report is shown.
      if ! "$target" -max_total_time="${FUZZ_SECONDS:-20}" -rss_limit_mb=4096 \
          -print_final_stats=0 -artifact_prefix=build-fuzz/"$name"- \
          "$corpus" $seeds >build-fuzz/"$name".log 2>&1; then
        tail -n 60 build-fuzz/"$name".log
        exit 1
      fi
      tail -n 2 build-fuzz/"$name".log
      rm -rf "$corpus"
    done
    ;;
  *)
    echo "usage: scripts/setup.sh editor|test" >&2
    exit 2
    ;;
esac
