#!/bin/sh
# Builds the region file fuzzer by hand (it is not part of the normal build):
#   fuzz/build.sh && build-fuzz/region_file_fuzzer -max_total_time=120 build-fuzz/corpus
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
out="$root/build-fuzz"
mkdir -p "$out/corpus"
engine="$root/src/imaging/engine"
clang++ -std=c++20 -g -O1 -fsanitize=fuzzer,address,undefined -fno-sanitize-recover=undefined \
    -I "$root/src" \
    "$root/fuzz/region_file_fuzzer.cpp" "$engine/region.cpp" "$engine/bit_region.cpp" \
    "$engine/bits_buffer.cpp" -o "$out/region_file_fuzzer"
# Seed the corpus with one real file: a header and two rectangles.
printf '\040\000\000\000\001\000\000\000\002\000\000\000\040\000\000\000\000\000\000\000\000\000\000\000\012\000\000\000\012\000\000\000\000\000\000\000\000\000\000\000\005\000\000\000\005\000\000\000\005\000\000\000\005\000\000\000\012\000\000\000\012\000\000\000' \
    > "$out/corpus/seed.rgn"
echo "built $out/region_file_fuzzer"
