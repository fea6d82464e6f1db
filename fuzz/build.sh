#!/bin/sh
# Builds the fuzzers by hand (they are not part of the normal build):
#   fuzz/build.sh && build-fuzz/region_file_fuzzer -max_total_time=120 build-fuzz/corpus
#   build-fuzz/filter_fuzzer -max_total_time=120 build-fuzz/filter-corpus
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
mkdir -p "$out/filter-corpus"
clang++ -std=c++20 -g -O1 -fsanitize=fuzzer,address,undefined -fno-sanitize-recover=undefined \
    -I "$root/src" "$root/fuzz/filter_fuzzer.cpp" "$engine"/*.cpp -o "$out/filter_fuzzer"
echo "built $out/region_file_fuzzer and $out/filter_fuzzer"
