// Uses the installed library as a host does: through the umbrella header alone.
#include <cstdint>
#include <cstdio>
#include <vector>

#include "vistaTrim/vistaTrim.h"

int main()
{
    constexpr uint32_t kWidth = 640;
    constexpr uint32_t kHeight = 480;
    const int32_t channelOffsets[4] = {0, 1, 2, 3};
    std::vector<uint8_t> pixels(kWidth * kHeight * 3);
    for (size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = static_cast<uint8_t>(i * i / 977);

    vistaTrim::IImage* image = CreateImageObj(kHeight, kWidth, 3, channelOffsets, pixels.data());
    const vistaTrim::VistaTrimParameters defaults;
    vistaTrim::IVistaTrim* driver = CreateVistaTrimObj(image, &defaults);

    vistaTrim::ICropRects* list = nullptr;
    const vistaTrim::SuggestionParameters everything;
    ComputeCropSuggestions(driver, &list, &everything);
    uint32_t count = 0;
    {
        vistaTrim::SmartPtr<vistaTrim::CCropRects> held(static_cast<vistaTrim::CCropRects*>(list),
                                                        false);
        count = held->Count();
    }
    DestroyVistaTrimObj(driver);
    DestroyImageObj(image);

    std::printf("%s: %u candidates\n", VISTATRIM_VERSION_STRING, count);
    return count == 14501 ? 0 : 1;
}
