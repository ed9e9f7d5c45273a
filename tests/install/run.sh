# usage: run.sh BUILD_TREE WORK_DIRECTORY LIBRARY_SUBDIRECTORY
set -euo pipefail
build=$1 work=$2 libdir=$3
source=$(cd "$(dirname "$0")/consumer" && pwd)
prefix=$work/prefix

rm -rf "$prefix" "$work/cmake" "$work/pkgconfig"
cmake --install "$build" --prefix "$prefix" >/dev/null

cmake -S "$source" -B "$work/cmake" -DCMAKE_PREFIX_PATH="$prefix" \
  -DCMAKE_BUILD_TYPE=Debug >/dev/null
cmake --build "$work/cmake" >/dev/null
"$work/cmake/consumer" "$source/model.zul"

mkdir -p "$work/pkgconfig"
export PKG_CONFIG_PATH=$prefix/$libdir/pkgconfig
$CXX ${CXXFLAGS:-} -std=c++20 "$source/main.cpp" $(pkg-config --cflags --libs zultav) \
  -o "$work/pkgconfig/consumer"
"$work/pkgconfig/consumer" "$source/model.zul"

"$prefix/bin/zultav" solve "$source/model.zul"
