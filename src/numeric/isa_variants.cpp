#include "numeric/isa_variants.h"

namespace vistaTrim {

namespace {

IsaVariant WidestAvailable()
{
    for (int variant = IsaVariantCount - 1; variant > IsaVariantPlain; --variant)
        if (IsaVariantAvailable(static_cast<IsaVariant>(variant)))
            return static_cast<IsaVariant>(variant);
    return IsaVariantPlain;
}

IsaVariant activeVariant = WidestAvailable();

} // namespace

const char* NameOf(IsaVariant variant)
{
    switch (variant) {
    case IsaVariantPlain: return "baseline";
    case IsaVariantSse42: return "SSE4.2";
    case IsaVariantAvx2: return "AVX2";
    case IsaVariantAvx512: return "AVX-512";
    case IsaVariantCount: break;
    }
    return "";
}

bool IsaVariantAvailable(IsaVariant variant)
{
#if defined(__x86_64__)
    // Static constructors of other files may call this before the runtime has detected the
    // processor.
    __builtin_cpu_init();
    switch (variant) {
    case IsaVariantPlain: return true;
    case IsaVariantSse42: return __builtin_cpu_supports("sse4.2") != 0;
    case IsaVariantAvx2: return __builtin_cpu_supports("avx2") != 0;
    case IsaVariantAvx512:
        return __builtin_cpu_supports("avx512f") != 0 && __builtin_cpu_supports("avx512bw") != 0 &&
               __builtin_cpu_supports("avx512dq") != 0 && __builtin_cpu_supports("avx512vl") != 0;
    default: return false;
    }
#else
    return variant == IsaVariantPlain;
#endif
}

IsaVariant ActiveIsaVariant()
{
    return activeVariant;
}

void SelectIsaVariant(IsaVariant variant)
{
    activeVariant = IsaVariantAvailable(variant) ? variant : IsaVariantPlain;
}

} // namespace vistaTrim
