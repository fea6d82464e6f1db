// libFuzzer target for the filters: the bytes choose a filter, its parameters (any 32-bit
// values), a small image and a region. Whatever they say, the filter must read nothing past
// the guard pixels (ASan), leave the held image and every pixel outside the region as they
// were, and give a result of the image's own shape.

#include "imaging/engine/bit_filter.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

using namespace tolmar::imaging;

namespace {

class Bytes
{
public:
    Bytes(const uint8_t* data, std::size_t size) : m_data(data), m_size(size) {}
    uint8_t byte() { return m_pos < m_size ? m_data[m_pos++] : 0; }
    int32_t int32()
    {
        uint32_t v = 0;
        for (int i = 0; i < 4; ++i)
            v = v << 8 | byte();
        return static_cast<int32_t>(v);
    }
    // A parameter: mostly small, sometimes any 32-bit value.
    int32_t param()
    {
        const uint8_t kind = byte();
        if (kind < 192)
            return static_cast<int8_t>(byte());
        return int32();
    }
    float real() { return static_cast<float>(static_cast<int8_t>(byte())) / 32.0f; }

private:
    const uint8_t* m_data;
    std::size_t m_size;
    std::size_t m_pos = 0;
};

BitsBuffer runOne(cBitFilter& f, Bytes& in, uint8_t which)
{
    switch (which % 28) {
    case 0: return f.Soften(in.param(), in.byte() & 1);
    case 1: return f.Sharpen(in.param());
    case 2: return f.Emboss(in.param());
    case 3: return f.Engrave(in.param());
    case 4: return f.Contour(in.param(), in.int32());
    case 5: return f.Sketch(in.param(), in.byte() & 1, in.int32());
    case 6: return f.RankFilterN4(in.param());
    case 7: return f.RankFilterND(in.param());
    case 8: return f.Dissolve();
    case 9: return f.Pixelize(in.param());
    case 10: return f.Diffuse(in.param(), in.param());
    case 11: {
        const int32_t n = static_cast<int8_t>(in.byte()) % 9;
        std::vector<int32_t> k(std::size_t(n > 0 ? n * n : 0) + (in.byte() & 1));
        for (auto& v : k)
            v = in.param();
        MaskFilterArgs a{in.param(), in.param(), in.param(), in.byte() & 1, in.byte() & 1,
                         in.param(),  in.byte() & 1, in.byte() & 1};
        return f.MaskFilter(k, n, a);
    }
    case 12: return f.Bend(in.param(), in.byte() & 1);
    case 13: return f.Fold(in.param(), in.param(), in.byte() & 1);
    case 14: return f.Lens(in.real(), in.real(), in.real(), in.param());
    case 15: return f.Twirl(in.param(), in.param(), in.byte() & 1);
    case 16: return f.Waves(in.param(), in.param(), in.param());
    case 17: return f.Rotate(in.param() / 7.0, in.byte() & 1);
    case 18: return f.RotateSmooth(in.param() / 7.0);
    case 19: return f.Stretch(in.param(), in.param(), in.byte() & 1);
    case 20: return f.Flip(in.byte() & 1, in.byte() & 1);
    case 21: return f.Tile(in.param());
    case 22: return f.StuckiBW(in.param());
    case 23: return f.Halftone(in.param(), in.param(), in.param());
    case 24: return f.Reduction(in.param());
    case 25: {
        std::vector<PaletteEntry> pal(in.byte() % 6);
        for (auto& e : pal)
            e = {in.param(), in.param(), in.param()};
        f.SetPalette(pal);
        return f.PaletteApply();
    }
    case 26: return f.Lens(in.int32() / 1000.0f, in.int32() / 1000.0f, in.int32() / 1000.0f,
                           in.param());
    default: return f.Rotate(in.int32() / 3.0, true);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size)
{
    Bytes in(data, size);
    const uint8_t which = in.byte();
    const int32_t w = 1 + in.byte() % 24;
    const int32_t h = 1 + in.byte() % 24;
    // The region may reach past the image on every side, as a caller's may.
    const Rect r{in.byte() % 32 - 4, in.byte() % 32 - 4, in.byte() % 32 - 4, in.byte() % 32 - 4};
    const uint8_t shape = in.byte();
    const Region region = shape % 3 == 0   ? Region::fromRect(r)
                        : shape % 3 == 1 ? Region::fromEllipse(r)
                                          : Region::combine(Region::fromRect(r),
                                                            Region::fromEllipse({r.top, r.left,
                                                                                 r.bottom, r.right}),
                                                            CombineMode::Xor);
    BitsBuffer img(w, h);
    for (std::size_t i = 0; i < img.byteSize(); ++i)
        img.data()[i] = in.byte() ^ static_cast<uint8_t>(i * 37);
    cBitFilter f;
    f.Bits(img);
    f.BitsRegion(&region);
    const BitsBuffer out = runOne(f, in, which);
    if (!out.sameShape(img) || !(f.Bits() == img))
        __builtin_trap();
    for (int32_t y = img.lowY(); y <= img.highY(); ++y)
        for (int32_t x = img.lowX(); x <= img.highX(); ++x) {
            const bool mayChange = x >= 0 && y >= 0 && x < w && y < h && region.contains(x, y);
            if (!mayChange && std::memcmp(out.pixel(x, y), img.pixel(x, y), 4) != 0)
                __builtin_trap();
            if (out.pixel(x, y)[3] != img.pixel(x, y)[3])
                __builtin_trap();
        }
    return 0;
}
