// Kernels compiled as several ISA variants.
//
// A kernel is one plain loop nest, written once as an always-inlined body; the macro below compiles
// it again for wider registers and picks a variant at run time. All variants give the same bits:
// nothing is contracted, and no loop sums in an order that depends on the register width.
#ifndef VISTATRIM_NUMERIC_ISA_VARIANTS_H
#define VISTATRIM_NUMERIC_ISA_VARIANTS_H

namespace vistaTrim {

enum IsaVariant {
    IsaVariantPlain = 0, // whatever the build was made for
    IsaVariantSse42 = 1, // x86-64-v2
    IsaVariantAvx2 = 2,
    IsaVariantAvx512 = 3,
    IsaVariantCount = 4
};

const char* NameOf(IsaVariant variant); // "baseline", "SSE4.2", "AVX2", "AVX-512"; else ""
// True if this machine and this build can run the variant. Plain is always available.
bool IsaVariantAvailable(IsaVariant variant);
// The variant in use: the widest available, unless SelectIsaVariant chose another.
IsaVariant ActiveIsaVariant();
// For tests and benchmarks: every kernel uses this variant from now on. Not thread-safe.
void SelectIsaVariant(IsaVariant variant);

} // namespace vistaTrim

#define VISTATRIM_VARIANT_BODY static inline __attribute__((always_inline))

// Goes before a loop whose iterations are independent: arrays are identical or disjoint, never
// partly overlapping. Without it an in-place call may run the scalar tail.
#if defined(__clang__)
#define VISTATRIM_INDEPENDENT_STEPS _Pragma("clang loop vectorize(assume_safety)")
#else
#define VISTATRIM_INDEPENDENT_STEPS _Pragma("GCC ivdep")
#endif

// VISTATRIM_VARIANTS(Name, (parameters), (arguments)) defines `static void Name parameters`, which
// runs NameBody in the active variant. NameBody is a VISTATRIM_VARIANT_BODY that returns nothing.
#if defined(__x86_64__)
#define VISTATRIM_VARIANTS(Name, Parameters, Arguments)                                            \
    static void Name##Plain Parameters                                                             \
    {                                                                                              \
        Name##Body Arguments;                                                                      \
    }                                                                                              \
    __attribute__((target("sse4.2"))) static void Name##Sse42 Parameters                           \
    {                                                                                              \
        Name##Body Arguments;                                                                      \
    }                                                                                              \
    __attribute__((target("avx2"))) static void Name##Avx2 Parameters                              \
    {                                                                                              \
        Name##Body Arguments;                                                                      \
    }                                                                                              \
    __attribute__((                                                                                \
        target("avx512f,avx512bw,avx512dq,avx512vl"))) static void Name##Avx512 Parameters         \
    {                                                                                              \
        Name##Body Arguments;                                                                      \
    }                                                                                              \
    static void Name Parameters                                                                    \
    {                                                                                              \
        switch (ActiveIsaVariant()) {                                                              \
        case IsaVariantAvx512: Name##Avx512 Arguments; return;                                     \
        case IsaVariantAvx2: Name##Avx2 Arguments; return;                                         \
        case IsaVariantSse42: Name##Sse42 Arguments; return;                                       \
        default: Name##Plain Arguments; return;                                                    \
        }                                                                                          \
    }
#else
#define VISTATRIM_VARIANTS(Name, Parameters, Arguments)                                            \
    static void Name Parameters                                                                    \
    {                                                                                              \
        Name##Body Arguments;                                                                      \
    }
#endif

#endif
