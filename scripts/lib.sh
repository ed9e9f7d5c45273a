# Shared by the scripts: where the project is, and how its needs are installed.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"

# The whole set-up of a fresh Debian machine. Nothing is installed twice.
build_packages=(cmake ninja-build g++ ccache libcli11-dev nlohmann-json3-dev)
test_packages=(libgtest-dev libmpfr-dev libgmp-dev libboost-dev pkg-config locales)

as_root() {
  if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi
}

need_packages() {
  local missing=() package
  for package in "$@"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' ||
      missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  echo "Installing: ${missing[*]}"
  # Lists that cannot be brought up to date may serve as they are.
  as_root apt-get update -qq || true
  as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends \
    "${missing[@]}" >/dev/null
}

# What a 32-bit target needs beside the compiler: its own C and C++ libraries and the oracles.
need_m32_packages() {
  dpkg --print-foreign-architectures | grep -qx i386 || as_root dpkg --add-architecture i386
  need_packages g++-multilib googletest libmpfr-dev:i386 libgmp-dev:i386
}

# A locale whose decimal point is a comma: value syntax must not depend on it.
need_comma_locale() {
  locale -a | grep -qi '^de_DE\.utf-\?8$' && return 0
  as_root localedef -i de_DE -f UTF-8 de_DE.UTF-8
}

# configure_and_build PRESET [cmake option …]
configure_and_build() {
  local preset=$1
  shift
  cmake --preset "$preset" -DCMAKE_CXX_COMPILER_LAUNCHER="$(command -v ccache || true)" "$@" >/dev/null
  cmake --build "build/$preset"
}
