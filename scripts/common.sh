# SPDX-License-Identifier: MIT
# Sourced by the other scripts: where the project is, and how missing packages come onto a Debian machine.

project=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$project" || exit 1

build_packages=(g++ cmake ninja-build ccache qt6-base-dev qt6-serialbus-dev qt6-serialport-dev libpugixml-dev libcli11-dev)
test_packages=(clang clang-format clang-tidy libclang-rt-dev libgtest-dev libgmock-dev libbenchmark-dev libxml2-utils python3 git iproute2
  libqt6opengl6-dev libqt6serialbus6-bin qt6-tools-dev qt6-l10n-tools xauth xvfb)

# Lets ccache see through precompiled headers.
export CCACHE_SLOPPINESS=pch_defines,time_macros

say() { printf '\n== %s\n' "$*"; }
die() { printf '%s\n' "$*" >&2; exit 1; }

# need_packages NAME...: installs those that are missing.
need_packages() {
  local missing=() name
  for name in "$@"; do
    dpkg-query -W -f '${Status}' "$name" 2>/dev/null | grep -q '^install ok installed$' || missing+=("$name")
  done
  [ ${#missing[@]} -eq 0 ] && return
  say "Installing ${missing[*]}"
  local root=()
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || die "Missing packages: ${missing[*]}. Install them as root: apt-get install ${missing[*]}"
    root=(sudo)
  fi
  "${root[@]}" apt-get update -q || die "apt-get update failed: check the network and /etc/apt/sources.list"
  "${root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends "${missing[@]}" ||
    die "apt-get could not install ${missing[*]}: see its message above"
}

# configure_and_build PRESET [TARGET...]
configure_and_build() {
  local preset=$1
  shift
  local launcher=()
  command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
  cmake --preset "$preset" "${launcher[@]}" >"$project/build-$preset.log" 2>&1 || {
    cat "$project/build-$preset.log" >&2
    die "CMake could not configure the preset $preset (see above)"
  }
  mkdir -p "$project/build/$preset"
  mv "$project/build-$preset.log" "$project/build/$preset/configure.log"
  cmake --build --preset "$preset" ${@:+--target "$@"} || die "The build of preset $preset failed (see above)"
}
