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

# Every installed header compiles by itself, with the installed ones alone.
cd "$prefix/include/zultav"
compile="$CXX ${CXXFLAGS:-} -std=c++20 -Wall -Wextra -Werror -I . -x c++"
find framework numbers -name '*.h' |
  xargs -P "$(nproc)" -I{} sh -c "echo '#include \"{}\"' | $compile -fsyntax-only -"

# A program may give its own things the names of our internal ones.
umbrellas=(framework/base/ZW4BASE.h framework/intervals/ZULTavIntervals.h
           framework/solver/ZULTavAbstractTypes.h framework/engine/ZULTavEngine.h
           framework/calculator/ZULTavCalculator.h
           framework/search/ZULTavUtilities.h numbers/ZULTavNumbers.h)
root=$source/../../..
grep -hoP '^(\w+ |\[\[\w+\]\] |template <[^>]*> |\w+::)*[&*]?\K[A-Za-z]\w+(?= [{:]|\(| final)' \
  "$root"/framework/*/detail/*.h "$root"/numbers/{,io/}detail/*.h \
  "$root"/framework/solver/{Arena,LocalCopy,SingleValue}.h |
  grep -vxE 'zultav|detail|static_assert|ZULTAV_\w+' | sort -u | sed 's/.*/template <int> struct &;/' >"$work/names.h"
[ "$(wc -l <"$work/names.h")" -gt 150 ]
printf '#include "%s"\n' "$work/names.h" "${umbrellas[@]}" >"$work/names.cpp"
$compile -fsyntax-only "$work/names.cpp"

# Only what the umbrellas offer is installed.
$compile -MM "$work/names.cpp" | tr -s ' \\' '\n' | grep -E '^(\./)?(framework|numbers)/' |
  sed 's|^\./||' | sort >"$work/offered"
find framework numbers -name '*.h' | sort | diff "$work/offered" -
