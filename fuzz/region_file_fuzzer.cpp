// libFuzzer target for the region file loader: whatever the bytes, loading must either
// give no region or a region that survives a save and reload unchanged, and drawing it
// must stay inside the target buffer.

#include "imaging/engine/bit_region.h"

#include <cstddef>
#include <cstdint>
#include <span>

using namespace tolmar::imaging;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size)
{
    cBitRegion sel;
    sel.Init(0, 0, 64, 48);
    sel.ZoomFactor(1.5f);
    if (!sel.LoadFromBytes(std::span<const uint8_t>(data, size))) {
        if (!sel.IsEmptyRegion() || sel.RegionScaled() != nullptr)
            __builtin_trap();
        return 0;
    }
    const Region& main = *sel.RegionMain();
    const auto again = cBitRegion::FromData(cBitRegion::ToData(main));
    if (!again || !(*again == main))
        __builtin_trap();
    int32_t l, t, r, b;
    if (!sel.BoundRect(l, t, r, b))
        __builtin_trap();
    (void)sel.PtInRegion(l, t);
    sel.Crop();
    sel.Offset(3, -2);
    sel.Invert();
    BitsBuffer target(16, 12);
    sel.DrawToBits(target, -1, 2);
    return 0;
}
