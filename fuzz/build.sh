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
# The drawing control's picture loader, against Qt (not instrumented itself).
mkdir -p "$out/picture-corpus"
/usr/lib/qt6/libexec/moc -I "$root/src" "$root/src/imaging/ucscreen.h" -o "$out/moc_ucscreen.cpp"
clang++ -std=c++20 -g -O1 -fPIC -fsanitize=fuzzer,address,undefined -fno-sanitize-recover=undefined \
    -I "$root/src" $(pkg-config --cflags Qt6Widgets) "$root/fuzz/picture_loader_fuzzer.cpp" \
    "$root/src/imaging/ucscreen.cpp" "$out/moc_ucscreen.cpp" "$engine"/*.cpp \
    $(pkg-config --libs Qt6Widgets) -o "$out/picture_loader_fuzzer"
# Seed it with small pictures of several formats.
if command -v python3 >/dev/null; then
    python3 - "$out/picture-corpus" <<'PY'
import struct, sys, zlib
d = sys.argv[1]
def bmp(w, h):
    row = (w * 3 + 3) // 4 * 4
    pixels = lambda y: bytes(v for x in range(w) for v in (x * 40 % 256, y * 60 % 256, 90))
    data = b"".join(pixels(y) + b"\0" * (row - w * 3) for y in range(h))
    head = struct.pack("<IiiHHIIiiII", 40, w, h, 1, 24, 0, len(data), 0, 0, 0, 0)
    return b"BM" + struct.pack("<IHHI", 54 + len(data), 0, 0, 54) + head + data
def png(w, h):
    pixels = lambda y: bytes(v for x in range(w) for v in (x * 30 % 256, y * 50 % 256, 200, 255))
    raw = b"".join(b"\0" + pixels(y) for y in range(h))
    chunk = lambda t, b: struct.pack(">I", len(b)) + t + b + struct.pack(">I", zlib.crc32(t + b))
    head = struct.pack(">IIBBBBB", w, h, 8, 6, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", head) + chunk(b"IDAT", zlib.compress(raw))
            + chunk(b"IEND", b""))
open(d + "/a.bmp", "wb").write(bmp(5, 3))
open(d + "/b.png", "wb").write(png(7, 4))
open(d + "/c.ppm", "wb").write(b"P6 3 2 255\n" + bytes(range(18)))
open(d + "/d.xpm", "wb").write(b'/* XPM */\nstatic char *x[] = {"2 2 2 1", "a c #ff0000", "b c #0000ff", "ab", "ba"};\n')
PY
fi
echo "built $out/region_file_fuzzer, $out/filter_fuzzer and $out/picture_loader_fuzzer"
