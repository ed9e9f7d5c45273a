# Shared by the scripts: where the project is, and how its needs are installed.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"

# The whole set-up of a fresh Debian machine. Nothing is installed twice.
build_packages=(cmake ninja-build g++ ccache libcli11-dev nlohmann-json3-dev)
test_packages=(libgtest-dev libmpfr-dev libgmp-dev libgecode-dev pkg-config locales)

need_packages() {
  local missing=() package
  for package in "$@"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' ||
      missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  local become=()
  [ "$(id -u)" -eq 0 ] || become=(sudo)
  echo "Installing: ${missing[*]}"
  "${become[@]}" apt-get update -qq
  DEBIAN_FRONTEND=noninteractive "${become[@]}" apt-get install -y -qq --no-install-recommends \
    "${missing[@]}" >/dev/null
}

# A locale whose decimal point is a comma: value syntax must not depend on it.
need_comma_locale() {
  locale -a | grep -qi '^de_DE\.utf-\?8$' && return 0
  local become=()
  [ "$(id -u)" -eq 0 ] || become=(sudo)
  "${become[@]}" localedef -i de_DE -f UTF-8 de_DE.UTF-8
}

# configure_and_build PRESET [cmake option …]
configure_and_build() {
  local preset=$1
  shift
  cmake --preset "$preset" -DCMAKE_CXX_COMPILER_LAUNCHER="$(command -v ccache || true)" "$@" >/dev/null
  cmake --build "build/$preset"
}
