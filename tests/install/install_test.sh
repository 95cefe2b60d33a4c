#!/usr/bin/env bash
# install_test.sh <source tree> <build tree> <library folder> <version>
set -euo pipefail
source_tree=$1 build_tree=$2 library_folder=$3 version=$4

work=$build_tree/install_test
prefix=$work/moved
rm -rf "$work"
mkdir -p "$work/by_pkgconfig"

# Installed in one place and moved to another: what finds the library must not hold absolute paths.
"$CMAKE" --install "$build_tree" --prefix "$work/installed" >"$work/install.log"
mv "$work/installed" "$prefix"

echo "--- by find_package"
cp -r "$source_tree/examples" "$work/examples"
"$CMAKE" -S "$work/examples" -B "$work/by_find_package" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_BUILD_TYPE=Release
"$CMAKE" --build "$work/by_find_package"
"${CMAKE%cmake}ctest" --test-dir "$work/by_find_package" --output-on-failure --no-tests=error

echo "--- by pkg-config"
export PKG_CONFIG_PATH=$prefix/$library_folder/pkgconfig LD_LIBRARY_PATH=$prefix/$library_folder
[[ $(pkg-config --modversion korvenrg) == "$version" ]]
read -ra compile_flags < <(pkg-config --cflags korvenrg)
read -ra link_flags < <(pkg-config --libs korvenrg)
for source in "$work"/examples/*.c "$work"/examples/*.cpp; do
    program=$work/by_pkgconfig/$(basename "${source%.*}")
    case $source in
        *.c) "$CC" -std=c11 -pedantic-errors "${compile_flags[@]}" "$source" -o "$program" "${link_flags[@]}" -lm ;;
        *) "$CXX" -std=c++20 "${compile_flags[@]}" "$source" -o "$program" "${link_flags[@]}" ;;
    esac
    "$program"
done

echo "--- the native headers of every room, all together"
(cd "$prefix/include/korvenrg" && find . -name '*.h' ! -name korvenrg.h -printf '#include "%P"\n' | sort) >"$work/headers.cpp"
for room in $(cd "$source_tree/src" && find . -mindepth 1 -maxdepth 1 -type d ! -name exports -printf '%P\n'); do
    grep -q "\"$room/" "$work/headers.cpp" || { echo "no header of $room is installed"; exit 1; }
done
"$CXX" -std=c++20 -fsyntax-only "${compile_flags[@]}" "$work/headers.cpp"
